// A bare dialog of the home screen's size, with as many widgets as the home screen has with the
// number of networks that is given as the argument: the start of the application is measured
// against it.
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int networks = arguments.size() > 1 ? arguments[1].toInt() : 0;

    QDialog window;
    window.setWindowTitle(QStringLiteral("Bare"));
    window.setFixedSize(800, 400);
    auto* container = new QWidget;
    auto* container_layout = new QHBoxLayout(container);
    auto* right_column = new QWidget;
    auto* right_layout = new QVBoxLayout(right_column);
    auto* list_panel = new QWidget;
    auto* list_layout = new QVBoxLayout(list_panel);
    container_layout->addWidget(new QLabel(QStringLiteral("picture")));
    container_layout->addWidget(right_column);
    right_layout->addWidget(new QLabel(QStringLiteral("banner")));
    right_layout->addWidget(list_panel);
    list_layout->addWidget(new QLabel(QStringLiteral("new")));
    list_layout->addWidget(new QLabel(QStringLiteral("list")));
    for (int i = 0; i < networks; ++i) {
        list_layout->addWidget(new QPushButton(QStringLiteral("network%1").arg(i)));
    }
    auto* page = new QVBoxLayout(&window);
    page->addWidget(container);
    window.show();
    return QApplication::exec();
}
