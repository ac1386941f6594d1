#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;

/// What stands on the screen while the client searches: the animation, and for how long already.
/// Escape, a click anywhere and the close button close it.
class WaitWindow : public QDialog {
public:
    WaitWindow();

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    void show_seconds();

    QElapsedTimer elapsed;
    QLabel* seconds;  ///< belongs to the layout
};
