#include "account_command.h"

#include <QFile>

void run_account_command(QObject& owner, const RegisteredNetwork& network,
                         const QStringList& arguments, const QString& password,
                         const CommandEnd& ended) {
    const QStringList command = {QStringLiteral("python3"), QStringLiteral("manage.py"),
                                 QStringLiteral("compte")};
    run_in_background(owner, command + arguments, QFile::decodeName(network.directory.c_str()),
                      password.toUtf8(), ended);
}
