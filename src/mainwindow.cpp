#include "mainwindow.h"

#include "ui_mainwindow.h"

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), ui(std::make_unique<Ui_MainWindow>()) {
    ui->setupUi(this);
}

// Here, where the form's class is known.
MainWindow::~MainWindow() = default;
