#pragma once

#include <QObject>

class QLabel;

/// Makes a label work as a button: it is pressed by a click, by Return and by Space, is reached
/// with Tab and has a border while it is focused. Belongs to the label.
class LabelButton : public QObject {
    Q_OBJECT

public:
    explicit LabelButton(QLabel& shown);

signals:
    /// Queued, so that the label may be deleted by it.
    void pressed();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void press();

    QLabel& label;
    bool is_pressed = false;  ///< until the signal is sent, further clicks are ignored
};
