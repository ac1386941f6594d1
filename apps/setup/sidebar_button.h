#pragma once

#include <QPushButton>

/// Makes an item of the sidebar, a picture over its caption, a checkable button. Covers the item
/// and belongs to it.
class SidebarButton : public QPushButton {
public:
    /// `caption` is the item's name on the screen and to a screen reader.
    SidebarButton(QWidget& covered, const QString& caption);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void show_state(bool checked);

    QWidget& item;
    QString caption;
};
