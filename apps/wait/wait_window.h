#pragma once

#include <QDialog>
#include <QElapsedTimer>

class QLabel;

/// The window shown while the client searches: an animation, and for how long the search has run.
/// Its button, Escape and the frame's close button close it.
class WaitWindow : public QDialog {
public:
    WaitWindow();

private:
    void show_seconds();

    QElapsedTimer elapsed;
    QLabel* seconds;  ///< belongs to the layout
};
