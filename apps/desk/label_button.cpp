#include "label_button.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPointer>

namespace {

bool presses(const QEvent& event) {
    if (event.type() == QEvent::MouseButtonRelease) {
        return static_cast<const QMouseEvent&>(event).button() == Qt::LeftButton;
    }
    if (event.type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent&>(event).key();
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
}

}  // namespace

LabelButton::LabelButton(QLabel& shown) : QObject(&shown), label(shown) {
    label.setFocusPolicy(Qt::StrongFocus);
    label.setCursor(Qt::PointingHandCursor);
    label.setStyleSheet(
        QStringLiteral("QLabel { border: 2px solid transparent; }"
                       "QLabel:focus { border-color: #0b3c66; border-radius: 4px; }"));
    label.installEventFilter(this);
}

bool LabelButton::eventFilter(QObject* object, QEvent* event) {
    if (!label.isEnabled() || !presses(*event)) {
        return QObject::eventFilter(object, event);
    }
    if (!is_pressed) {
        is_pressed = true;
        QMetaObject::invokeMethod(this, &LabelButton::press, Qt::QueuedConnection);
    }
    return true;
}

void LabelButton::press() {
    const QPointer<LabelButton> self(this);
    emit pressed();
    if (self) {
        is_pressed = false;
    }
}
