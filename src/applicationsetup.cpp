#include "applicationsetup.h"

#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QLocale>
#include <QPalette>
#include <QTimer>
#include <QWidget>

#include "qt_compat.h"

namespace {

/// Undoes a maximisation: under Wayland, Qt's own frame offers it even to a window of a fixed size.
class MaximisingGuard : public QObject {
public:
    explicit MaximisingGuard(QWidget& guarded) : QObject(&guarded), window(guarded) {
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::WindowStateChange && window.isMaximized()) {
            QTimer::singleShot(0, &window, &QWidget::showNormal);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget& window;
};

}  // namespace

ApplicationSetup::ApplicationSetup()
    : style_file(QStringLiteral("style.qss")), languages(QLocale::system().uiLanguages()) {
    use_utf8_locale_codec();
    apply_style_sheet();
    darken_links();
    install_translation();
}

void ApplicationSetup::dress_window(QWidget& window) {
    const QString icon_file = QStringLiteral("img/zandrel_logo.svg");
    if (QFile::exists(icon_file)) {  // Qt warns on standard error about a missing icon
        window.setWindowIcon(QIcon(icon_file));
    }
    window.setWindowFlags(Qt::Window | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    new MaximisingGuard(window);
}

void ApplicationSetup::show_first_window(QWidget& window) {
    const char* const variable = "QT_XCB_GL_INTEGRATION";
    const bool chosen_by_operator = qEnvironmentVariableIsSet(variable);
    if (!chosen_by_operator) {
        qputenv(variable, "none");
    }
    window.show();
    if (!chosen_by_operator) {
        qunsetenv(variable);
    }
}

void ApplicationSetup::apply_style_sheet() {
    if (!style_file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QByteArray style_sheet = style_file.readAll();
    // With an explicit size: Qt 5's fromLatin1(QByteArray) stops at a NUL byte.
    qApp->setStyleSheet(QString(QLatin1String(style_sheet.constData(), style_sheet.size())));
}

void ApplicationSetup::darken_links() {
    QPalette palette;
    palette.setColor(QPalette::Link, Qt::blue);
    QApplication::setPalette(palette);
}

void ApplicationSetup::install_translation() {
    for (const QString& language : std::as_const(languages)) {
        const QString base_name = QStringLiteral("TesquinGUI_") + QLocale(language).name();
        if (translator.load(QStringLiteral(":/i18n/") + base_name)) {
            QCoreApplication::installTranslator(&translator);
            return;
        }
    }
}
