#include "maximising_guard.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

MaximisingGuard::MaximisingGuard(QWidget& guarded)
    : QObject(guarded.windowHandle()), window(guarded), handle(*guarded.windowHandle()) {
    timeout.setSingleShot(true);
    timeout.setInterval(1000);  // the compositor may never answer, or never show it
    connect(&timeout, &QTimer::timeout, this, &MaximisingGuard::restore);
    connect(&handle, &QWindow::windowStateChanged, this, &MaximisingGuard::allow_maximising);
    handle.installEventFilter(this);
}

void MaximisingGuard::allow_maximising(Qt::WindowState asked_by_frame) {
    if (asked_by_frame == Qt::WindowMaximized) {
        is_asked = true;
        handle.setMaximumSize(QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
        timeout.start();
    }
}

void MaximisingGuard::restore() {
    timeout.stop();
    if (is_maximised) {
        is_maximised = false;
        handle.setWindowStates(Qt::WindowNoState);
    } else {
        handle.setMaximumSize(window.maximumSize());
    }
}

bool MaximisingGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::UpdateRequest && is_maximised) {
        restore();
    }
    if (event->type() != QEvent::WindowStateChange) {
        return QObject::eventFilter(watched, event);
    }
    // The compositor's answer, or its own request.
    const bool maximised = handle.windowStates().testFlag(Qt::WindowMaximized);
    if (!maximised) {
        is_maximised = false;
        restore();
    } else if (is_asked) {
        is_asked = false;
        is_maximised = true;
        timeout.start();
        handle.requestUpdate();  // arrives once it is on the screen
    }
    return maximised;  // neither the window nor the frame is to learn of it
}
