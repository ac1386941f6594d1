#include "start_watch.h"

#include <QDir>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QProcess>
#include <QUrl>

#include "hub_utilities.h"
#include "screen_pieces.h"
#include "server_processes.h"

namespace {

const int patience = 30'000;  // milliseconds, for the whole start
const int terminal_patience = 9'000;
const int pause = 500;

/// The name that the network's server is to answer, by the network's own program; empty without it.
QByteArray own_name(const QDir& project) {
    for (const QString& package : project.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString program = project.filePath(package + QStringLiteral("/hubs/names.py"));
        if (QFile::exists(program)) {
            QProcess python;
            python.start(QStringLiteral("python3"), {program});
            return python.waitForFinished(5000) ? python.readAllStandardOutput() : QByteArray();
        }
    }
    return {};
}

}  // namespace

StartWatch::StartWatch(const Network& watched, QObject* parent)
    : QObject(parent), network(watched), deadline(patience), terminal_deadline(terminal_patience) {
    web.setProxy(QNetworkProxy::NoProxy);
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &StartWatch::look);
    timer.start(0);
}

void StartWatch::look() {
    if (deadline.hasExpired()) {
        emit gave_up();
        return;
    }
    if (find_server_processes(network.path).empty()) {
        if (terminal_deadline.hasExpired() && !is_entered(network.path)) {
            emit gave_up();
            return;
        }
        timer.start(pause);
        return;
    }
    QNetworkRequest request(QUrl(latin1_text("http://" + getIp() + ":8000/_infos/kl/")));
    request.setTransferTimeout(5000);
    QNetworkReply* reply = web.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        judge(*reply);
    });
}

void StartWatch::judge(QNetworkReply& reply) {
    const bool done = reply.error() == QNetworkReply::NoError;
    if (done && is_its_name(reply.read(1000).trimmed())) {
        emit answered();
        return;
    }
    timer.start(pause);
}

bool StartWatch::is_its_name(const QByteArray& name) const {
    const QDir project(QString::fromStdString(network.path));
    const QByteArray expected = own_name(QDir(QFile::decodeName(network.path.c_str())));
    return !expected.isEmpty() && name == expected;
}
