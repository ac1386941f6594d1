#include "start_failure.h"

#include <QFile>
#include <QStandardPaths>
#include <algorithm>

#include "background_command.h"
#include "background_work.h"
#include "network.h"
#include "network_watch.h"
#include "python_output.h"
#include "registered_networks.h"
#include "screen_pieces.h"
#include "server_processes.h"

namespace {

/// Who holds the network's port, in French; empty when nobody does or it cannot be told. It is the
/// network's own program that is asked, so that the terminal shows the same.
QString port_holder(const std::string& directory, const QString& host) {
    const QString package = package_of(directory);
    if (package.isEmpty()) {
        return {};
    }
    const QStringList arguments{package + QStringLiteral("/hubs/processes.py"), host,
                                QStringLiteral("8000")};
    return QString::fromUtf8(output_of_python(arguments, 5000)).trimmed();
}

/// The reason for the failure, if it shows without Django; else an empty text.
QString visible_failure(const Network& network) {
    if (!has_project(network.path)) {
        return project_missing(network.path);
    }
    const QString address = own_address();
    if (address.isEmpty()) {
        return QStringLiteral(
            "Cette machine n'a pas d'adresse sur le réseau : vérifiez son câble ou son wifi.");
    }
    const ProjectProcesses processes = find_processes(network.path);
    if (!processes.servers.empty()) {
        return QStringLiteral("Il a démarré, mais ne répond pas à l'adresse %1.")
            .arg(own_page(address));
    }
    if (!processes.any) {
        const QString words = terminal_words();
        return QStringLiteral("Son terminal ne s'est pas ouvert, ou il a été fermé.") +
               (words.isEmpty() ? QString() : QStringLiteral("\n\n") + words);
    }
    return port_obstacle(network);
}

}  // namespace

void find_start_failure(QThreadPool& threads, QObject& context, const Network& network,
                        const std::function<void(const QString&)>& found) {
    const auto told_by_django = [found](int status, const QString& said) {
        const int refused = 1;  // any other status is that of `timeout`
        found(status == refused
                  ? QStringLiteral("Django ne peut pas le charger : ") + last_line(said).left(300)
                  : QStringLiteral("Regardez ce que dit son terminal."));
    };
    const auto told = [&context, found, told_by_django,
                       directory = network.path](const QString& reason) {
        if (!reason.isEmpty()) {
            found(reason);
            return;
        }
        const QStringList check{QStringLiteral("timeout"), QStringLiteral("20"),
                                QStringLiteral("python3"), QStringLiteral("manage.py"),
                                QStringLiteral("check")};
        run_in_background(context, check, QFile::decodeName(directory.c_str()), {}, told_by_django);
    };
    work_in_background(
        threads, context, [network] { return visible_failure(network); }, told);
}

QString terminal_words() {
    QFile file(qEnvironmentVariable("QUORVALE_TERMINAL_WORDS"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    file.seek(std::max<qint64>(0, file.size() - 400));
    return QString::fromUtf8(file.readAll()).trimmed();
}

QString terminal_obstacle() {
    return QStandardPaths::findExecutable(QStringLiteral("gnome-terminal")).isEmpty()
               ? QStringLiteral("Le terminal, gnome-terminal, n'est pas installé.")
               : QString();
}

QString port_obstacle(const Network& network) {
    const QString holder = port_holder(network.path, own_host(own_address()));
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
    return QStringLiteral("Son serveur ne répond pas à l'adresse %1.").arg(own_page(state.address));
}
