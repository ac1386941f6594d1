#include "maximising_guard.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

MaximisingGuard::MaximisingGuard(QWidget& guarded)
    : QObject(&guarded), window(guarded), handle(*guarded.windowHandle()) {
    patience.setSingleShot(true);
    patience.setInterval(1000);  // GNOME's compositor refuses without an answer
    connect(&patience, &QTimer::timeout, this, &MaximisingGuard::restore_size);
    connect(&handle, &QWindow::windowStateChanged, this, &MaximisingGuard::fit_compositor);
    handle.installEventFilter(this);
}

void MaximisingGuard::fit_compositor(Qt::WindowState asked_by_frame) {
    if (asked_by_frame == Qt::WindowMaximized) {
        handle.setMaximumSize(QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
        patience.start();
    }
}

void MaximisingGuard::restore_size() {
    handle.setMaximumSize(window.maximumSize());
}

bool MaximisingGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::WindowStateChange) {
        return QObject::eventFilter(watched, event);
    }
    // The compositor's answer, or its own wish.
    if (!handle.windowStates().testFlag(Qt::WindowMaximized)) {
        restore_size();
        return false;
    }
    if (patience.isActive()) {
        patience.stop();
        QTimer::singleShot(0, &handle, [this] { handle.setWindowStates(Qt::WindowNoState); });
    }
    return true;  // no state of the window, and not the frame's wish
}
