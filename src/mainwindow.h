#pragma once

#include <QMainWindow>
#include <memory>

class Ui_MainWindow;

/// An empty application window, laid out by the designer form "mainwindow.ui": 800 x 600 pixels at
/// first, resizable, with an empty central area, menu bar and status bar.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent);
    ~MainWindow() override;

private:
    std::unique_ptr<Ui_MainWindow> ui;  ///< the form; its widgets are children of the window
};
