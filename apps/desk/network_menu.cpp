#include "network_menu.h"

#include <QCoreApplication>
#include <QLocale>
#include <QProcess>

#include "background_command.h"
#include "network_jobs.h"

NetworkMenu::NetworkMenu(const RegisteredNetwork& shown, bool served, NetworkJobs& jobs,
                         QWidget& window)
    : QMenu(&window), network(shown) {
    setObjectName(QStringLiteral("network_menu"));
    // Not at once: an action is sent after the menu has gone.
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
    const RegisteredNetwork& copied = network;
    QAction* action = addAction(text);
    // Queued: its dialog is to stand alone, without the menu.
    connect(
        action, &QAction::triggered, &jobs, [&jobs, job, copied] { (jobs.*job)(copied); },
        Qt::QueuedConnection);
}

void NetworkMenu::add_size() {
    QAction* size = addAction(QStringLiteral("Taille sur le disque : …"));
    size->setEnabled(false);
    auto* program = new QProcess(this);
    connect(
        program, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
        [this, size, program] {
            const QByteArray own = QByteArray::fromStdString(network.directory);
            for (const QByteArray& line : program->readAllStandardOutput().split('\n')) {
                const QList<QByteArray> fields = line.split('\t');
                if (fields.size() >= 3 && fields[1] == own) {
                    size->setText(QStringLiteral("Taille sur le disque : %1")
                                      .arg(QLocale().formattedDataSize(fields[2].toLongLong(), 1)));
                }
            }
        });
    end_with_owner(*program, *this);  // closed before it is known
    program->start(QCoreApplication::applicationDirPath() + QStringLiteral("/quorvale-network"),
                   {QStringLiteral("list")});
}
