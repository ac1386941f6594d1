#include "python_output.h"

#include <QProcess>

QByteArray output_of_python(const QStringList& arguments, int timeout) {
    QProcess python;
    python.start(QStringLiteral("python3"), arguments);
    if (!python.waitForFinished(timeout) || python.exitCode() != 0) {
        return {};
    }
    return python.readAllStandardOutput();
}
