#include "network_watch.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QProcess>
#include <QUrl>
#include <algorithm>
#include <stdexcept>

#include "hub_utilities.h"
#include "server_processes.h"

namespace {

/// The name that the network's server is to answer, by the network's own program; empty without it.
QByteArray name_by_project(const QDir& project) {
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

QString own_address() {
    try {
        return QString::fromStdString(getIp());
    } catch (const std::runtime_error&) {  // this time, no command could be started
        return {};
    }
}

std::set<pid_t> shells_in(const std::string& directory) {
    const std::vector<pid_t> shells = find_plain_shells(directory);
    return {shells.begin(), shells.end()};
}

}  // namespace

QString own_host(const QString& address) {
    return address.isEmpty() ? QStringLiteral("127.0.0.1") : address;
}

bool is_reached_by_others(const QString& address) {
    return !address.isEmpty() && !address.startsWith(QStringLiteral("127."));
}

NetworkWatch::NetworkWatch(const Network& watched, QObject* parent)
    : QObject(parent),
      network(watched),
      old_shells(shells_in(watched.path)),
      processes([this] { look_at_processes(); }) {
    web.setProxy(QNetworkProxy::NoProxy);
    timer.setSingleShot(true);
    timer.setInterval(500);
    connect(&timer, &QTimer::timeout, &processes, [this] { processes.start(); });
    connect(&processes, &QThread::finished, this, &NetworkWatch::ask);
    processes.start();
}

void NetworkWatch::set_calm() {
    timer.setInterval(2000);
}

void NetworkWatch::look_at_processes() {
    state = {};
    state.address = own_address();
    state.runs = !find_server_processes(network.path).empty();
    const std::set<pid_t> shells = shells_in(network.path);
    state.ended = !state.runs && !std::includes(old_shells.begin(), old_shells.end(),
                                                shells.begin(), shells.end());
    state.opened = state.runs || is_entered(network.path);
}

void NetworkWatch::ask() {
    if (!state.runs) {
        report();
        return;
    }
    QNetworkRequest request(
        QUrl(QStringLiteral("http://%1:8000/_infos/kl/").arg(own_host(state.address))));
    request.setTransferTimeout(5000);
    QNetworkReply* reply = web.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        judge(*reply);
    });
}

void NetworkWatch::judge(QNetworkReply& reply) {
    const QByteArray name = reply.read(1000).trimmed();
    if (reply.error() != QNetworkReply::NoError || name.isEmpty()) {
        report();
        return;
    }
    if (name != own_name) {  // it may have been renamed
        own_name = name_by_project(QDir(QFile::decodeName(network.path.c_str())));
    }
    state.answers = name == own_name;
    QNetworkRequest request(reply.url().resolved(QUrl(QStringLiteral("/_infos/etat/"))));
    request.setTransferTimeout(5000);
    QNetworkReply* details = web.get(request);
    connect(details, &QNetworkReply::finished, this, [this, details] {
        details->deleteLater();
        const QJsonObject told = QJsonDocument::fromJson(details->read(10'000)).object();
        for (const QVariant& held : told.value(QStringLiteral("names")).toArray().toVariantList()) {
            state.names << held.toString();
        }
        state.visitors = told.value(QStringLiteral("visitors")).toInt();
        report();
    });
}

void NetworkWatch::report() {
    timer.start();
    emit looked(state);
}
