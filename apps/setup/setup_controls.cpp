#include "setup_controls.h"

#include <QComboBox>
#include <QEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QStackedWidget>

#include "account_form.h"
#include "accounts_page.h"
#include "network_jobs.h"
#include "networks_page.h"
#include "question.h"
#include "screen_pieces.h"
#include "setupwindow.h"
#include "sidebar_button.h"

namespace {

enum Page { accounts_page, form_page, networks_page, directories_page };

}  // namespace

SetupControls::SetupControls(SetupWindow& shown)
    : QObject(&shown),
      window(shown),
      pages(new QStackedWidget),
      choice_row(new QWidget),
      choice(named("network_choice", new QComboBox)),
      accounts(new AccountsPage),
      form(new AccountForm(shown)),
      jobs(new NetworkJobs(shown)) {
    build_pages();
    window.findChild<QWidget*>(QStringLiteral("appearance_item"))->hide();  // it has no settings
    add_section("users_item", QStringLiteral("Utilisateurs"), accounts_page);
    add_section("directories_item", QStringLiteral("Repertoires"), directories_page);
    add_section("networks_item", QStringLiteral("Réseaux"), networks_page);
    connect(choice, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &SetupControls::choose_network);
    connect(accounts, &AccountsPage::add_requested, this, [this] {
        show_page(form_page);
        form->start();
    });
    connect(form, &AccountForm::left, this, [this] { show_page(accounts_page); });
    connect(jobs, &NetworkJobs::done, this, [this] {
        read_networks();
        show_page(pages->currentIndex());
    });
    window.installEventFilter(this);
    read_networks();
    show_page(accounts_page);
    // A large font needs more room than the window has.
    window.setFixedSize(window.size().expandedTo(window.sizeHint()));
}

void SetupControls::build_pages() {
    auto* form_section = window.findChild<QWidget*>(QStringLiteral("users_section"));
    auto* panel = named("section_panel", new QWidget);
    panel->setStyleSheet(QStringLiteral(
        "#section_panel, #section_panel QStackedWidget > QWidget, QScrollArea, #rows, #row "
        "{ background: #fff; } QLabel { color: #333; } "
        "QPushButton:disabled { color: #8a949e; border-color: #c9d0d6; }"));
    delete window.layout()->replaceWidget(form_section, panel);

    auto* row = new QHBoxLayout(choice_row);
    row->setContentsMargins(10, 0, 10, 0);
    auto* label = new QLabel(QStringLiteral("Réseau :"));
    label->setBuddy(choice);
    row->addWidget(label);
    row->addWidget(choice, 1);

    pages->addWidget(accounts);
    pages->addWidget(form_section);
    for (const auto kind : {NetworksPage::Kind::networks, NetworksPage::Kind::directories}) {
        job_pages.push_back(new NetworksPage(kind, *jobs));
        pages->addWidget(job_pages.last());
    }
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 6, 0, 0);
    column->addWidget(choice_row);
    column->addWidget(pages, 1);
}

void SetupControls::add_section(const char* item, const QString& caption, int page) {
    auto* button = new SidebarButton(*window.findChild<QWidget*>(QLatin1String(item)), caption);
    connect(button, &QPushButton::clicked, this, [this, page] { show_page(page); });
    sections.push_back({button, page});
}

void SetupControls::show_page(int page) {
    for (const auto& [button, its_page] : std::as_const(sections)) {
        button->setChecked(its_page == page || (its_page == accounts_page && page == form_page));
    }
    choice_row->setVisible(networks.size() > 1 && page <= form_page);
    choice_row->setEnabled(page == accounts_page);
    if (page == accounts_page) {
        choose_network(choice->currentIndex());
    } else if (page != form_page) {
        job_pages[page - networks_page]->read();
    }
    pages->setCurrentIndex(page);
}

void SetupControls::read_networks() {
    // Found again by its directory: it may have been renamed, and others may have its name.
    const int old_index = choice->currentIndex();
    const std::string chosen =
        old_index < 0 ? std::string() : networks[static_cast<std::size_t>(old_index)].directory;
    networks = registered_networks();
    const QSignalBlocker quiet(choice);
    choice->clear();
    int index = networks.empty() ? -1 : 0;
    for (const RegisteredNetwork& network : networks) {
        if (network.directory == chosen) {
            index = choice->count();
        }
        choice->addItem(network.name);
        choice->setItemData(choice->count() - 1, QFile::decodeName(network.directory.c_str()),
                            Qt::ToolTipRole);
    }
    choice->setCurrentIndex(index);
}

void SetupControls::choose_network(int index) {
    const RegisteredNetwork network =
        index < 0 ? RegisteredNetwork{} : networks[static_cast<std::size_t>(index)];
    accounts->show_network(network);
    form->set_network(network);
}

bool SetupControls::eventFilter(QObject* object, QEvent* event) {
    const bool closing = event->type() == QEvent::Close ||
                         (event->type() == QEvent::KeyPress &&
                          static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Escape);
    if (object == &window && closing && form->has_input() &&
        !confirmed(&window, QStringLiteral("Fermer sans ajouter le compte ?"),
                   QStringLiteral("Ce qui est écrit dans le formulaire sera perdu."))) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(object, event);
}
