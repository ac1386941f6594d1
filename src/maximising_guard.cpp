#include "maximising_guard.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

MaximisingGuard::MaximisingGuard(QWidget& guarded)
    : QObject(guarded.windowHandle()), window(guarded), handle(*guarded.windowHandle()) {
    patience.setSingleShot(true);
    patience.setInterval(1000);  // should the compositor not answer, or not show it
    connect(&patience, &QTimer::timeout, this, &MaximisingGuard::go_back);
    connect(&handle, &QWindow::windowStateChanged, this, &MaximisingGuard::fit_compositor);
    handle.installEventFilter(this);
}

void MaximisingGuard::fit_compositor(Qt::WindowState asked_by_frame) {
    if (asked_by_frame == Qt::WindowMaximized) {
        is_asked = true;
        handle.setMaximumSize(QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
        patience.start();
    }
}

void MaximisingGuard::go_back() {
    patience.stop();
    if (is_large) {
        is_large = false;
        handle.setWindowStates(Qt::WindowNoState);
    } else {
        handle.setMaximumSize(window.maximumSize());
    }
}

bool MaximisingGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::UpdateRequest && is_large) {
        go_back();
    }
    if (event->type() != QEvent::WindowStateChange) {
        return QObject::eventFilter(watched, event);
    }
    // The compositor's answer, or its own wish.
    const bool maximised = handle.windowStates().testFlag(Qt::WindowMaximized);
    if (!maximised) {
        is_large = false;
        go_back();
    } else if (is_asked) {
        is_asked = false;
        is_large = true;
        patience.start();
        handle.requestUpdate();  // comes when it is on the screen
    }
    return maximised;  // no state of the window, and not the frame's wish
}
