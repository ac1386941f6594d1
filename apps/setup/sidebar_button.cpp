#include "sidebar_button.h"

#include <QEvent>
#include <QLabel>

SidebarButton::SidebarButton(QWidget& covered, const QString& shown_caption)
    : QPushButton(&covered), item(covered), caption(shown_caption) {
    setObjectName(QStringLiteral("sidebar_button"));
    setAccessibleName(caption);
    setCheckable(true);
    setAutoExclusive(false);
    setAutoDefault(false);
    setCursor(Qt::PointingHandCursor);
    setStyleSheet(
        QStringLiteral("QPushButton { background: transparent; border: 2px solid transparent; "
                       "border-radius: 6px; padding: 0; margin: 0; }"
                       "QPushButton:hover { border-color: #b9d6ee; }"
                       "QPushButton:focus { border-color: #0b3c66; }"));
    item.installEventFilter(this);
    setGeometry(item.rect());
    connect(this, &QPushButton::toggled, this, &SidebarButton::show_state);
    show_state(false);
}

bool SidebarButton::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        setGeometry(item.rect());
        raise();
    }
    return QPushButton::eventFilter(object, event);
}

void SidebarButton::show_state(bool checked) {
    item.findChild<QLabel*>(QStringLiteral("caption"))
        ->setText(QStringLiteral("<div style='color:%1;text-align:center;'> %2 </div>")
                      .arg(checked ? QStringLiteral("#0072c6") : QStringLiteral("black"), caption));
}
