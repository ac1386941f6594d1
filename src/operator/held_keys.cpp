#include "held_keys.h"

#include <QApplication>
#include <QKeyEvent>

namespace {

class HeldReturnFilter : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        return is_repeat(*event) || QObject::eventFilter(object, event);
    }

private:
    bool is_repeat(const QEvent& event) {
        if (event.type() != QEvent::KeyPress && event.type() != QEvent::KeyRelease) {
            return false;
        }
        const auto& key = static_cast<const QKeyEvent&>(event);
        if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) {
            return false;
        }
        if (event.type() == QEvent::KeyRelease) {
            released = key.timestamp();
            return false;
        }
        // X sends each repeat as a release and a press at the same time. Qt recognises the pair
        // only when both have arrived.
        return key.isAutoRepeat() || (released != 0 && key.timestamp() == released);
    }

    quint64 released = 0;  ///< when, in milliseconds of the display's clock; 0 where it has none
};

}  // namespace

void ignore_held_return() {
    qApp->installEventFilter(new HeldReturnFilter(qApp));
}
