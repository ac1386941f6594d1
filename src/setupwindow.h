#pragma once

#include <QDialog>

/// The configuration dialog, 800 x 400 pixels: a sidebar that shows the four sections, and the
/// users' section with its form for a super-user. A display: nothing typed is read or kept.
class SetupWindow : public QDialog {
    Q_OBJECT

public:
    explicit SetupWindow(QWidget* parent);
    ~SetupWindow() override = default;
};
