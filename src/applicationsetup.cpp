#include "applicationsetup.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <QPalette>
#include <QWidget>

#include "maximising_guard.h"
#include "qt_compat.h"

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
}

void ApplicationSetup::show_first_window(QWidget& window) {
    const char* const variable = "QT_XCB_GL_INTEGRATION";
    const bool chosen_by_operator = qEnvironmentVariableIsSet(variable);
    if (!chosen_by_operator) {
        qputenv(variable, "none");
    }
    window.show();
    if (QGuiApplication::platformName().startsWith(QStringLiteral("wayland"))) {
        new MaximisingGuard(window);
    }
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
