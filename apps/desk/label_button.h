#pragma once

#include <QObject>

class QLabel;

/// Makes a label work as a button: it is pressed by a click, Return or Space, is reached with Tab
/// and has a border while it is focused. Belongs to the label.
class LabelButton : public QObject {
    Q_OBJECT

public:
    explicit LabelButton(QLabel& shown);

signals:
    /// Queued, so that a slot may delete the label.
    void pressed();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void press();

    QLabel& label;
    bool is_pressed = false;  ///< until the signal is sent, further clicks are ignored
};
