#include "networks_page.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "background_command.h"
#include "row_list.h"
#include "screen_pieces.h"
#include "section_title.h"

NetworksPage::NetworksPage(Kind shown_kind, NetworkJobs& shown_jobs)
    : kind(shown_kind), jobs(shown_jobs), list(new RowList("job_list")) {
    auto* page = new QVBoxLayout(this);
    if (kind == Kind::directories) {
        page->addWidget(new QLabel(section_title(QStringLiteral("Répertoires des réseaux"))));
        page->addWidget(list, 1);
        return;
    }
    page->addWidget(new QLabel(section_title(QStringLiteral("Réseaux de cette machine"))));
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
    run_in_background(*reading, {program_path("quorvale-network"), QStringLiteral("list")},
                      QDir::currentPath(), {}, [this](int status, const QString& said) {
                          if (status == 0) {
                              show_networks(said);
                          } else {
                              list->show_text(last_line(said));
                          }
                      });
}

void NetworksPage::show_networks(const QString& listed) {
    list->clear();
    const std::vector<RegisteredNetwork> networks = registered_networks();
    for (const RegisteredNetwork& network : networks) {
        if (const auto found = find_listed(listed, network)) {
            add_network(network, *found);
        }
    }
    if (networks.empty()) {
        list->show_text(QStringLiteral("Il n'y a pas encore de réseau."));
    }
}

void NetworksPage::add_network(const RegisteredNetwork& network, const ListedNetwork& listed) {
    const auto add = [&](const char* name, const QString& text,
                         void (NetworkJobs::*job)(const RegisteredNetwork&)) {
        connect(list->add_button(name, text), &QPushButton::clicked, &jobs,
                [this, network, job] { (jobs.*job)(network); });
    };
    if (kind == Kind::directories) {
        list->add_row(network.name, QFile::decodeName(network.directory.c_str()));
        add("folder_button", QStringLiteral("Ouvrir le dossier"), &NetworkJobs::open_folder);
        add("copy_button", QStringLiteral("Copier vers…"), &NetworkJobs::copy);
        return;
    }
    list->add_row(network.name, QStringLiteral("%1, %2").arg(listed.state, listed.size));
    add("rename_button", QStringLiteral("Renommer…"), &NetworkJobs::rename);
    add("remove_button", QStringLiteral("Supprimer…"), &NetworkJobs::remove);
}
