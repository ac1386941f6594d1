#include "background_command.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

void run_in_background(QObject& owner, const QStringList& command, const QString& directory,
                       const QByteArray& line, const CommandEnd& ended) {
    auto* process = new QProcess(&owner);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PYTHONUTF8"), QStringLiteral("1"));
    process->setProcessEnvironment(environment);
    process->setWorkingDirectory(directory);
    const QString name = QFileInfo(command.first()).fileName();
    QObject::connect(process, &QProcess::errorOccurred, &owner, [=](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            process->deleteLater();
            ended(1, not_started(name));
        }
    });
    QObject::connect(
        process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &owner,
        [=](int status, QProcess::ExitStatus how) {
            process->deleteLater();
            const bool succeeded = how == QProcess::NormalExit && status == 0;
            const QByteArray said =
                succeeded ? process->readAllStandardOutput() : process->readAllStandardError();
            if (how == QProcess::NormalExit) {
                ended(status, QString::fromUtf8(said).trimmed());
            } else {
                ended(1, QStringLiteral("Le programme %1 a été interrompu.").arg(name));
            }
        });
    end_with_owner(*process, owner);
    process->start(command.first(), command.mid(1));
    process->write(line + '\n');
    process->closeWriteChannel();
}

void end_with_owner(QProcess& process, QObject& owner) {
    QObject::connect(&owner, &QObject::destroyed, &process, [&process, &owner] {
        const int milliseconds_to_end = 2000;
        QObject::disconnect(&process, nullptr, &owner, nullptr);
        process.terminate();
        process.waitForFinished(milliseconds_to_end);
    });
}

QString not_started(const QString& program) {
    return QStringLiteral("Le programme %1 n'a pas pu être lancé.").arg(program);
}

QString program_path(const char* name) {
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(name);
}

QString last_line(const QString& said) {
    return said.section(QLatin1Char('\n'), -1);
}
