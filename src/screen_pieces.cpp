#include "screen_pieces.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QMovie>
#include <QPalette>
#include <QPushButton>
#include <QSignalMapper>
#include <memory>

#include "network.h"

QString latin1_text(const std::string& bytes) {
    return QString::fromLatin1(bytes.data(), static_cast<int>(bytes.size()));
}

void clear_layout(QWidget& window) {
    QLayout* layout = window.layout();
    if (layout == nullptr) {
        return;
    }
    while (const auto item = std::unique_ptr<QLayoutItem>(layout->takeAt(0))) {
        delete item->widget();
    }
    delete layout;
}

QLabel* animated_label(const QString& file, const QSize& size) {
    auto* label = new QLabel;
    auto* movie = new QMovie(file, QByteArray(), label);
    label->setFixedSize(size);
    label->setMovie(movie);
    movie->setScaledSize(size);
    movie->start();
    return label;
}

QWidget* centred_animation(const QString& file, const QSize& size) {
    QLabel* animation = named("animation", animated_label(file, size));
    animation->setAlignment(Qt::AlignCenter);
    animation->setStyleSheet(QStringLiteral("text-align:center;"));

    auto* box = new QWidget;
    auto* layout = new QHBoxLayout(box);
    layout->addWidget(animation);
    layout->setAlignment(Qt::AlignCenter);
    return box;
}

QLabel* status_label(const QString& text, const QString& style) {
    auto* label = new QLabel(text);
    label->setStyleSheet(style);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QWidget* button_row(const std::vector<RowButton>& buttons) {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    for (const auto& [name, text, style] : buttons) {
        auto* button = named(name, new QPushButton(text));
        button->setStyleSheet(style);
        layout->addWidget(button);
    }
    return row;
}

QWidget* form_panel(const std::vector<std::pair<QString, QWidget*>>& rows,
                    const QString& save_text) {
    auto* panel = named("form", new QWidget);
    auto* grid = new QGridLayout(panel);
    int row = 1;
    for (const auto& [label, field] : rows) {
        auto* caption = new QLabel(label);
        caption->setObjectName(field->objectName() + QStringLiteral("_label"));
        caption->setBuddy(field);  // screen readers take the field's name from it
        grid->addWidget(caption, row, 1);
        grid->addWidget(field, row, 2);
        ++row;
    }
    auto* save = named("save_button", new QPushButton(save_text));
    save->setStyleSheet(QStringLiteral("background:#333;color:#fff;margin-top:15px;padding:5px;"));
    grid->addWidget(save, row, 2);
    return panel;
}

void set_flat_background(QWidget& window, const QString& colour) {
    QLinearGradient gradient(0, 0, 0, window.height());
    gradient.setColorAt(0.0, QColor(colour));
    QPalette palette;
    palette.setBrush(QPalette::Window, QBrush(gradient));
    window.setAutoFillBackground(true);
    window.setPalette(palette);
}

void add_network_buttons(const std::vector<Network*>& networks, QBoxLayout& column, QWidget& window,
                         const char* slot) {
    auto* mapper = named("network_mapper", new QSignalMapper(&window));
    int index = 0;
    for (const Network* network : networks) {
        auto* button = named("network_button", new QPushButton(latin1_text(network->name)));
        QObject::connect(button, SIGNAL(clicked()), mapper, SLOT(map()));
        mapper->setMapping(button, index++);
        button->setProperty("class", QStringLiteral("net-btn"));
        column.addWidget(button);
    }
    // Not mapped(int), which Qt 5 emits before mappedInt(int): the slot deletes the button, which
    // the mapper would then look up once more.
    QObject::connect(mapper, SIGNAL(mappedInt(int)), &window, slot);
}
