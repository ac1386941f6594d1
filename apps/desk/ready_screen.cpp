#include "ready_screen.h"

#include <QBoxLayout>
#include <QFontMetrics>
#include <QLabel>
#include <QMovie>
#include <QProcess>
#include <QPushButton>

#include "background_command.h"
#include "network_watch.h"
#include "networkselectionwindow.h"
#include "screen_pieces.h"

namespace {

/// A label of the panel: text that can be selected and copied.
QLabel* panel_label(const char* name, const char* style) {
    auto* label = named(name, new QLabel);
    label->setStyleSheet(QStringLiteral("color: #0b3c66; ") + QLatin1String(style));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QString visitors_text(int count) {
    return count < 2 ? QStringLiteral("%1 visiteur ces cinq dernières minutes").arg(count)
                     : QStringLiteral("%1 visiteurs ces cinq dernières minutes").arg(count);
}

}  // namespace

ReadyScreen::ReadyScreen(NetworkSelectionWindow& shown, const QString& network_name)
    : window(shown) {
    window.clean_screen();
    window.network_started_mode(nullptr);
    window.setWindowTitle(QStringLiteral("Quorvale : ") + network_name);
    status = window.findChild<QLabel*>(QStringLiteral("ready_label"));
    setParent(status);
    status->setStyleSheet(QStringLiteral("color: white; font-size: 22px; font-weight: bold;"));
    delete window.findChild<QLabel*>(QStringLiteral("information"));

    animation = window.findChild<QWidget*>(QStringLiteral("ready_animation"));
    animation->layout()->setContentsMargins(0, 0, 0, 0);
    auto* picture = animation->findChild<QLabel*>(QStringLiteral("animation"));
    picture->setFixedSize(64, 64);
    picture->movie()->setScaledSize(picture->size());

    window.layout()->setAlignment({});
    window.layout()->setSpacing(8);
    add_buttons();
    add_panel();
    show_name(network_name);
    show_waiting(QStringLiteral("Démarrage…"));
}

QPushButton* ReadyScreen::add_button(QHBoxLayout& row, const char* object_name,
                                     const QString& text) {
    auto* button = named(object_name, new QPushButton(text));
    button->setStyleSheet(access->styleSheet());
    row.addWidget(button);
    return button;
}

void ReadyScreen::add_buttons() {
    access = window.findChild<QPushButton*>(QStringLiteral("access_button"));
    QWidget* row = access->parentWidget();
    auto* layout = static_cast<QHBoxLayout*>(row->layout());
    restart = add_button(*layout, "restart_button", QStringLiteral("Redémarrer"));
    auto* list = add_button(*layout, "list_button", QStringLiteral("Liste des Réseaux"));
    window.layout()->setAlignment(row, Qt::AlignHCenter);
    connect(access, &QPushButton::clicked, this, &ReadyScreen::access_pressed);
    connect(window.findChild<QPushButton*>(QStringLiteral("stop_button")), &QPushButton::clicked,
            this, &ReadyScreen::stop_pressed);
    connect(restart, &QPushButton::clicked, this, &ReadyScreen::restart_pressed);
    connect(list, &QPushButton::clicked, this, &ReadyScreen::list_pressed);
}

void ReadyScreen::add_panel() {
    auto* panel = named("network_panel", new QWidget);
    panel->setAttribute(Qt::WA_StyledBackground);
    panel->setStyleSheet(
        QStringLiteral("#network_panel { background: white; border-radius: 12px; }"));
    auto* row = new QHBoxLayout(panel);
    auto* column = new QVBoxLayout;
    column->setSpacing(4);
    row->addLayout(column, 1);
    name = panel_label("network_name", "font-size: 22px; font-weight: bold;");
    address = panel_label("network_address", "font-weight: bold;");
    address->setWordWrap(false);
    names = panel_label("network_names", "font-size: 16px;");
    details = panel_label("network_details", "font-size: 16px;");
    for (QLabel* label : {name, address, names, details}) {
        column->addWidget(label);
    }
    code = named("network_code", new QLabel);
    code->setAccessibleName(QStringLiteral("Code de l'adresse"));
    code->setAlignment(Qt::AlignCenter);
    row->addWidget(code);
    static_cast<QVBoxLayout*>(window.layout())->addWidget(panel, 1);
}

void ReadyScreen::show_name(const QString& whole) {
    // On one line: a second one would push the address out of the panel. The title has all of it.
    name->ensurePolished();
    name->setText(name->fontMetrics().elidedText(whole, Qt::ElideMiddle, text_width()));
    name->setAccessibleName(whole);
}

int ReadyScreen::text_width() const {
    const int code_and_margins = 260;
    return window.width() - code_and_margins;
}

void ReadyScreen::show_waiting(const QString& what) {
    status->setText(what);
    set_lost(false);
    animation->hide();  // its check mark says that all is well
    details->clear();
}

void ReadyScreen::show_answering(const NetworkState& state) {
    const bool reached = is_reached_by_others(state.address);
    status->setText(reached ? QStringLiteral("Votre Serveur est Pret")
                            : QStringLiteral("Visible de cette machine seulement"));
    set_lost(false);
    set_address(own_page(state.address));
    names->setText(reached ? state.names.join(QStringLiteral("   ")) : QString());
    names->setVisible(!names->text().isEmpty());
    details->setText(reached ? visitors_text(state.visitors)
                             : QStringLiteral("Cette machine n'a pas d'adresse sur le réseau "
                                              "local\u00a0: vérifiez son câble ou son wifi."));
    code->setVisible(reached);
}

void ReadyScreen::show_lost(const QString& reason) {
    status->setText(QStringLiteral("Le réseau ne répond plus"));
    details->setText(reason);
    names->hide();
    code->hide();
    set_lost(true);
}

void ReadyScreen::set_lost(bool lost) {
    animation->setVisible(!lost);
    access->setVisible(!lost);
    const bool changed = restart->isHidden() == lost;
    restart->setVisible(lost);
    if (changed) {
        (lost ? restart : access)->setFocus();  // never to what stops the network
    }
}

void ReadyScreen::set_address(const QString& url) {
    if (address->text() == url) {
        return;
    }
    address->setText(url);
    // As large as there is room for beside the code.
    const int room = text_width();
    QFont font = address->font();
    font.setBold(true);
    int size = 48;
    do {
        font.setPixelSize(--size);
    } while (size > 12 && QFontMetrics(font).horizontalAdvance(url) > room);
    address->setStyleSheet(
        QStringLiteral("color: #0b3c66; font-weight: bold; font-size: %1px;").arg(size));
    draw_code(url + QLatin1Char('/'));
}

void ReadyScreen::draw_code(const QString& url) {
    coded_url = url;
    auto* python = new QProcess(this);
    connect(python, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this, python, url] {
                python->deleteLater();
                QImage modules;  // one pixel per module; null without segno
                if (url != coded_url || !modules.loadFromData(python->readAllStandardOutput())) {
                    return;
                }
                const qreal scale = code->devicePixelRatioF();
                const int module = 170 / modules.width();
                const int side = qRound(module * scale) * modules.width();
                QPixmap picture = QPixmap::fromImage(modules.scaled(side, side));
                picture.setDevicePixelRatio(scale);
                code->setPixmap(picture);
            });
    connect(python, &QProcess::errorOccurred, python, [python](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            python->deleteLater();
        }
    });
    end_with_owner(*python, *this);
    python->start(QStringLiteral("python3"),
                  {QStringLiteral("-c"),
                   QStringLiteral("import segno, sys; segno.make(sys.argv[1], micro=False).save("
                                  "sys.stdout.buffer, kind='png', scale=1, border=3)"),
                   url});
}
