#include "network_menu.h"

#include <QDir>
#include <QFile>

#include "background_command.h"
#include "listed_network.h"
#include "network_jobs.h"

NetworkMenu::NetworkMenu(const RegisteredNetwork& shown, bool served, NetworkJobs& jobs,
                         QWidget& window)
    : QMenu(&window), network(shown) {
    setObjectName(QStringLiteral("network_menu"));
    // Later: the chosen action is triggered after the menu was hidden.
    connect(this, &QMenu::aboutToHide, this, &QObject::deleteLater);
    setAccessibleName(QStringLiteral("Menu de ") + network.name);
    addAction(QStringLiteral("Ouvrir la page"), this, &NetworkMenu::page_chosen)
        ->setEnabled(served);
    addAction(QStringLiteral("Arrêter"), this, &NetworkMenu::stop_chosen)->setEnabled(served);
    addSeparator();
    add_job(QStringLiteral("Ouvrir le dossier des fichiers"), jobs, &NetworkJobs::open_folder);
    add_job(QStringLiteral("Renommer…"), jobs, &NetworkJobs::rename);
    add_job(QStringLiteral("Copier vers…"), jobs, &NetworkJobs::copy);
    add_job(QStringLiteral("Supprimer…"), jobs, &NetworkJobs::remove);
    addSeparator();
    add_size();
}

void NetworkMenu::add_job(const QString& text, NetworkJobs& jobs, Job job) {
    // Queued: its dialog opens once the menu has gone.
    connect(
        addAction(text), &QAction::triggered, &jobs,
        [&jobs, job, network = network] { (jobs.*job)(network); }, Qt::QueuedConnection);
}

void NetworkMenu::add_size() {
    const QString text = QStringLiteral("Taille sur le disque : %1");
    QAction* size = addAction(text.arg(QStringLiteral("…")));
    size->setEnabled(false);
    const QStringList command{program_path("quorvale-network"), QStringLiteral("list"),
                              QStringLiteral("--"), QFile::decodeName(network.directory.c_str())};
    run_in_background(
        *this, command, QDir::currentPath(), {}, [this, size, text](int, const QString& said) {
            const auto listed = find_listed(said, network);
            size->setText(text.arg(listed ? listed->size : QStringLiteral("inconnue")));
        });
}
