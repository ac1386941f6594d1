#include "start_failure.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <algorithm>

#include "hub_utilities.h"
#include "network.h"
#include "network_watch.h"
#include "registered_networks.h"
#include "screen_pieces.h"
#include "server_processes.h"

namespace {

/// Who listens where the network is to, in French; empty when nobody does or it cannot be told. The
/// network's own program says it, which would say the same in its terminal.
QString port_holder(const QDir& project, const QString& address) {
    QProcess python;
    python.start(QStringLiteral("python3"),
                 {project.filePath(project.dirName() + QStringLiteral("/hubs/processes.py")),
                  address, QStringLiteral("8000")});
    python.waitForFinished(5000);
    return QString::fromUtf8(python.readAllStandardOutput()).trimmed();
}

/// The last line that Django says of a project which it cannot load, or an empty text.
QString django_complaint(const QString& directory) {
    QProcess check;
    check.setWorkingDirectory(directory);
    check.start(QStringLiteral("python3"), {QStringLiteral("manage.py"), QStringLiteral("check")});
    if (!check.waitForFinished(20'000) || check.exitCode() == 0) {
        return {};
    }
    const QString said = QString::fromUtf8(check.readAllStandardError()).trimmed();
    return said.section(QLatin1Char('\n'), -1).left(300);
}

/// The end of what the terminal said, which the tool that opens it keeps.
QString terminal_words() {
    QFile file(qEnvironmentVariable("QUORVALE_TERMINAL_WORDS"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    file.seek(std::max<qint64>(0, file.size() - 400));
    return QString::fromUtf8(file.readAll()).trimmed();
}

}  // namespace

QString start_failure(const Network& network) {
    if (!has_project(network.path)) {
        return project_missing(network.path);
    }
    const std::string address = getIp();
    if (address.empty()) {
        return QStringLiteral(
            "Cette machine n'a pas d'adresse sur le réseau : vérifiez son câble ou son wifi.");
    }
    if (QStandardPaths::findExecutable(QStringLiteral("gnome-terminal")).isEmpty()) {
        return QStringLiteral("Le terminal, gnome-terminal, n'est pas installé.");
    }
    if (!find_server_processes(network.path).empty()) {
        return QStringLiteral("Il a démarré, mais ne répond pas à l'adresse http://%1:8000.")
            .arg(own_host(latin1_text(getIp())));
    }
    if (!is_entered(network.path)) {
        const QString words = terminal_words();
        return QStringLiteral("Son terminal ne s'est pas ouvert, ou il a été fermé.") +
               (words.isEmpty() ? QString() : QStringLiteral("\n\n") + words);
    }
    QString obstacle = port_obstacle(network);
    if (!obstacle.isEmpty()) {
        return obstacle;
    }
    const QString complaint = django_complaint(QFile::decodeName(network.path.c_str()));
    if (!complaint.isEmpty()) {
        return QStringLiteral("Django ne peut pas le charger : ") + complaint;
    }
    return QStringLiteral("Regardez ce que dit son terminal.");
}

QString port_obstacle(const Network& network) {
    const QString holder =
        port_holder(QDir(QFile::decodeName(network.path.c_str())), own_host(latin1_text(getIp())));
    return holder.isEmpty()
               ? QString()
               : QStringLiteral(
                     "Le port 8000 de cette machine est déjà pris, par %1. Arrêtez-le d'abord.")
                     .arg(holder);
}

QString loss_reason(const NetworkState& state) {
    if (!state.runs) {
        return QStringLiteral("Son serveur s'est arrêté, ou son terminal a été fermé.");
    }
    if (!is_reached_by_others(state.address)) {
        return QStringLiteral(
            "Cette machine n'a plus d'adresse sur le réseau local : vérifiez son câble ou son "
            "wifi.");
    }
    return QStringLiteral("Son serveur ne répond pas à l'adresse http://%1:8000.")
        .arg(state.address);
}
