#include "open_url.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QUrl>

void open_url(const QString& address) {
    const QUrl url(address);
    if (QCoreApplication::instance() == nullptr) {
        QProcess::startDetached(QStringLiteral("xdg-open"), {url.toString()});
        return;
    }
    QDesktopServices::openUrl(url);
}
