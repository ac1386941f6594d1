#pragma once

#include <QObject>
#include <QTimer>

class QWidget;
class QWindow;

/// Undoes a maximisation: under Wayland, Qt's own frame offers it even to a window of a fixed size.
///
/// A compositor may disconnect a program that answers with a size other than the one it asked for,
/// and undoes a maximisation only once it was drawn. So the window takes the size of the screen
/// until it was shown with it once.
class MaximisingGuard : public QObject {
public:
    /// Guards a top-level window that has been shown. Belongs to its QWindow, since the desk
    /// replaces all children of its window.
    explicit MaximisingGuard(QWidget& guarded);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void allow_maximising(Qt::WindowState asked_by_frame);
    void restore();

    QWidget& window;
    QWindow& handle;
    QTimer timeout;
    bool is_asked = false;      ///< the frame has asked to be maximised
    bool is_maximised = false;  ///< and the compositor has agreed
};
