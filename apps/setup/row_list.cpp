#include "row_list.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "screen_pieces.h"

RowList::RowList(const char* name) : rows(new QVBoxLayout) {
    setObjectName(QLatin1String(name));
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setWidget(named("rows", new QWidget));
    widget()->setLayout(rows);
    rows->setContentsMargins(0, 0, 6, 0);
    rows->setAlignment(Qt::AlignTop);
}

void RowList::show_text(const QString& text) {
    clear();
    auto* label = named("list_text", new QLabel(text));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    rows->addWidget(label);
}

void RowList::clear() {
    while (QLayoutItem* item = rows->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();  // one of its buttons may be sending a signal
        delete item;
    }
}

void RowList::add_row(const QString& text, const QString& detail) {
    auto* row = named("row", new QWidget);
    last_row = new QHBoxLayout(row);
    last_row->setContentsMargins(0, 0, 0, 0);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    for (const QString& line : {text, detail}) {
        auto* label = new QLabel(line);
        label->setTextFormat(Qt::PlainText);
        label->setToolTip(line);
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        texts->addWidget(label);
        label->setVisible(!line.isEmpty());
    }
    last_row->addLayout(texts, 1);
    last_text = text;
    rows->addWidget(row);
}

QPushButton* RowList::add_button(const char* name, const QString& text) {
    auto* button = named(name, new QPushButton(text));
    button->setAutoDefault(false);
    button->setAccessibleDescription(last_text);
    last_row->addWidget(button);
    return button;
}
