#include "networks_page.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include "background_command.h"
#include "row_list.h"
#include "screen_pieces.h"

namespace {

QString title(const QString& text) {
    return QStringLiteral("<div style='font-size:24px;font-weight:bold;'>%1</div>").arg(text);
}

}  // namespace

NetworksPage::NetworksPage(Kind shown_kind, NetworkJobs& shown_jobs)
    : kind(shown_kind), jobs(shown_jobs), list(new RowList("job_list")) {
    auto* page = new QVBoxLayout(this);
    if (kind == Kind::directories) {
        page->addWidget(new QLabel(title(QStringLiteral("Répertoires des réseaux"))));
        page->addWidget(list, 1);
        return;
    }
    page->addWidget(new QLabel(title(QStringLiteral("Réseaux de cette machine"))));
    page->addWidget(list, 1);
    auto* restore =
        named("restore_button", new QPushButton(QStringLiteral("Restaurer une copie…")));
    page->addWidget(restore, 0, Qt::AlignLeft);
    connect(restore, &QPushButton::clicked, &jobs, &NetworkJobs::restore);
}

void NetworksPage::read() {
    delete reading;
    reading = new QObject(this);
    list->show_text(QStringLiteral("Lecture des réseaux…"));
    run_in_background(*reading,
                      {QCoreApplication::applicationDirPath() + QStringLiteral("/quorvale-network"),
                       QStringLiteral("list")},
                      QDir::currentPath(), {}, [this](int status, const QString& said) {
                          if (status == 0) {
                              show_networks(said);
                          } else {
                              list->show_text(said.section(QLatin1Char('\n'), -1));
                          }
                      });
}

void NetworksPage::show_networks(const QString& listed) {
    list->clear();
    const std::vector<RegisteredNetwork> networks = registered_networks();
    for (const QString& line : listed.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        for (const RegisteredNetwork& network : networks) {
            if (QFile::decodeName(network.directory.c_str()) == fields.value(1)) {
                add_network(network, fields);
                break;
            }
        }
    }
    if (networks.empty()) {
        list->show_text(QStringLiteral("Il n'y a pas encore de réseau."));
    }
}

void NetworksPage::add_network(const RegisteredNetwork& network, const QStringList& fields) {
    const auto add = [&](const char* name, const QString& text,
                         void (NetworkJobs::*job)(const RegisteredNetwork&)) {
        connect(list->add_button(name, text), &QPushButton::clicked, &jobs,
                [this, network, job] { (jobs.*job)(network); });
    };
    if (kind == Kind::directories) {
        list->add_row(network.name, fields.value(1));
        add("folder_button", QStringLiteral("Ouvrir le dossier"), &NetworkJobs::open_folder);
        add("copy_button", QStringLiteral("Copier vers…"), &NetworkJobs::copy);
        return;
    }
    list->add_row(network.name, QStringLiteral("%1, %2").arg(
                                    fields.value(3),
                                    QLocale().formattedDataSize(fields.value(2).toLongLong(), 1)));
    add("rename_button", QStringLiteral("Renommer…"), &NetworkJobs::rename);
    add("remove_button", QStringLiteral("Supprimer…"), &NetworkJobs::remove);
}
