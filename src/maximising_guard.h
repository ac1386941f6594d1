#pragma once

#include <QObject>
#include <QTimer>

class QWidget;
class QWindow;

/// Undoes a maximisation: under Wayland, Qt's own frame offers it even to a window of a fixed size.
///
/// A compositor may end a program that answers with another size than it asked for, and goes back
/// only from what was drawn: until it has shown the window once, the window has that size.
class MaximisingGuard : public QObject {
public:
    /// Guards a top-level window that has been shown. Its QWindow takes ownership: the desk
    /// exchanges all children of its window.
    explicit MaximisingGuard(QWidget& guarded);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fit_compositor(Qt::WindowState asked_by_frame);
    void go_back();

    QWidget& window;
    QWindow& handle;
    QTimer patience;
    bool is_asked = false;
    bool is_large = false;
};
