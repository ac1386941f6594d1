#include "network_list.h"

#include <QApplication>
#include <QFontInfo>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "network_names.h"
#include "screen_pieces.h"

namespace {

QString folded(const QString& text) {
    return without_accents(text).toCaseFolded();
}

/// A scroll area without a background of its own: the page's shows through.
QScrollArea* bare_scroll_area() {
    auto* area = named("network_scroll", new QScrollArea);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(new QWidget);
    area->widget()->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    return area;
}

}  // namespace

NetworkList::NetworkList(QWidget& window)
    : QObject(window.findChild<QWidget*>(QStringLiteral("network_list"))),
      entries(window.findChildren<QPushButton*>(QStringLiteral("network_button")).toVector()),
      texts(entries.size()),
      scroll(bare_scroll_area()) {
    window.layout()->setAlignment({});  // the list takes all the height that is left
    auto* column = static_cast<QVBoxLayout*>(static_cast<QWidget*>(parent())->layout());
    column->setContentsMargins(9, 0, 9, 0);
    rows = new QGridLayout(scroll->widget());
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setVerticalSpacing(4);
    rows->setColumnStretch(0, 1);
    for (int i = 0; i < entries.size(); ++i) {
        entries[i]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        rows->addWidget(entries[i], i, 0);
        texts[i].name = entries[i]->text();
    }
    free_row = static_cast<int>(entries.size());
    rows->setRowStretch(free_row, 1);
    if (entries.size() >= filtered_from) {
        add_filter(*column);
    }
    column->addWidget(scroll, 1);
    const int letter = QFontInfo(QApplication::font()).pixelSize();
    for (QPushButton* button : std::as_const(entries)) {
        // Not earlier: the style of its new place would overwrite it.
        button->setMinimumHeight(std::max(28, static_cast<int>(std::ceil(2.2 * letter))));
    }
    scroll->viewport()->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now != nullptr && scroll->widget()->isAncestorOf(now)) {
            scroll->ensureWidgetVisible(now, 0, 4);
        }
    });
}

const QVector<QPushButton*>& NetworkList::buttons() const {
    return entries;
}

void NetworkList::add_filter(QVBoxLayout& column) {
    filter = named("filter_field", new QLineEdit);
    filter->setPlaceholderText(QStringLiteral("Filtrer"));
    filter->setAccessibleName(QStringLiteral("Filtrer"));
    filter->setClearButtonEnabled(true);
    filter->installEventFilter(this);
    connect(filter, &QLineEdit::textChanged, this, &NetworkList::show_matching);
    // Beside the list's caption, where it takes no height from the list.
    auto* caption = column.parentWidget()->findChild<QWidget*>(QStringLiteral("list_caption"));
    column.removeWidget(caption);
    auto* row = new QHBoxLayout;
    row->addWidget(caption);
    row->addWidget(filter, 1);
    column.addLayout(row);
}

void NetworkList::show_matching(const QString& typed) {
    const QString wanted = folded(typed.simplified());
    for (int i = 0; i < entries.size(); ++i) {
        const bool matches = folded(texts[i].name).contains(wanted) ||
                             folded(shown_detail(texts[i])).contains(wanted);
        for (const int column : {0, 1}) {
            if (QLayoutItem* item = rows->itemAtPosition(i, column)) {
                item->widget()->setVisible(matches);
            }
        }
    }
    scroll->ensureVisible(0, 0);
}

void NetworkList::focus_first() {
    for (QPushButton* button : std::as_const(entries)) {
        if (!button->isHidden()) {
            button->setFocus();
            return;
        }
    }
}

void NetworkList::focus(int entry) {
    entries[entry]->setFocus();
    // Again once everything is laid out and shown: a hidden widget cannot take the focus.
    QMetaObject::invokeMethod(
        this,
        [this, entry] {
            entries[entry]->setFocus();
            scroll->ensureWidgetVisible(entries[entry], 0, 4);
        },
        Qt::QueuedConnection);
}

void NetworkList::show_entries(const QVector<NetworkEntry>& shown) {
    if (texts != shown) {
        texts = shown;
        set_captions();
    }
}

QString NetworkList::shown_detail(const NetworkEntry& entry) const {
    const auto same =
        std::count_if(texts.begin(), texts.end(),
                      [&entry](const NetworkEntry& other) { return other.name == entry.name; });
    return same > 1 ? entry.detail : QString();
}

void NetworkList::set_captions() {
    for (int i = 0; i < entries.size(); ++i) {
        set_caption(i);
    }
}

void NetworkList::set_caption(int entry) {
    const NetworkEntry& text = texts[entry];
    const QString between = QStringLiteral("   ");
    QString detail = shown_detail(text);
    if (!detail.isEmpty()) {
        detail.prepend(between);
    }
    const QString mark = text.mark.isEmpty() ? QString() : between + text.mark;
    QPushButton& button = *entries[entry];
    const QFontMetrics letters = button.fontMetrics();
    const int border_and_padding = 28;
    const int room = button.width() - border_and_padding - letters.horizontalAdvance(mark);
    const QString end = letters.elidedText(detail, Qt::ElideMiddle, room * 2 / 3);
    const QString name =
        letters.elidedText(text.name, Qt::ElideRight, room - letters.horizontalAdvance(end));
    const QString all = text.name + detail + mark;
    const QString caption = name + end + mark;
    button.setText(QString(caption).replace(QLatin1Char('&'), QStringLiteral("&&")));
    button.setAccessibleName(all);
    button.setToolTip(caption == all ? QString() : all);
}

void NetworkList::add_beside(int entry, QWidget* widget) {
    rows->addWidget(widget, entry, 1);
    QWidget::setTabOrder(entries[entry], widget);
}

void NetworkList::add_below(QWidget* widget) {
    rows->setRowStretch(free_row, 0);
    rows->addWidget(widget, free_row++, 0, 1, 2);
    rows->setRowStretch(free_row, 1);
}

bool NetworkList::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Resize && object == scroll->viewport()) {
        QMetaObject::invokeMethod(this, &NetworkList::set_captions, Qt::QueuedConnection);
    } else if (event->type() == QEvent::KeyPress && object == filter) {
        const int key = static_cast<const QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Down) {
            focus_first();  // the dialog would press its first button, even one that is filtered
                            // out
            return true;
        }
        if (key == Qt::Key_Escape && !filter->text().isEmpty()) {
            filter->clear();
            return true;
        }
    }
    return QObject::eventFilter(object, event);
}
