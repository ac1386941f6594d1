#include "network_watch.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QUrl>
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "background_work.h"
#include "hub_utilities.h"
#include "python_output.h"
#include "registered_networks.h"
#include "server_processes.h"

namespace {

/// The name that the network's server should answer, as the network's own program gives it; empty
/// without that program.
QByteArray name_by_project(const std::string& directory) {
    const QString package = package_of(directory);
    if (package.isEmpty()) {
        return {};
    }
    return output_of_python({package + QStringLiteral("/hubs/names.py")}, 5000);
}

NetworkState state_of_processes(const std::string& directory, const std::set<pid_t>& old_shells) {
    NetworkState state;
    state.address = own_address();
    const ProjectProcesses processes = find_processes(directory);
    const std::set<pid_t>& shells = processes.plain_shells;
    state.runs = !processes.servers.empty();
    state.ended = !state.runs && !std::includes(old_shells.begin(), old_shells.end(),
                                                shells.begin(), shells.end());
    state.opened = processes.any;
    return state;
}

}  // namespace

QString own_address() {
    try {
        return QString::fromStdString(getIp());
    } catch (const std::runtime_error&) {  // this time, no command could be started
        return {};
    }
}

QString own_host(const QString& address) {
    return address.isEmpty() ? QStringLiteral("127.0.0.1") : address;
}

QString own_page(const QString& address) {
    return QStringLiteral("http://%1:8000").arg(own_host(address));
}

bool is_reached_by_others(const QString& address) {
    return !address.isEmpty() && !address.startsWith(QStringLiteral("127."));
}

NetworkWatch::NetworkWatch(const Network& watched, std::set<pid_t> shells, QThreadPool& pool,
                           QObject* parent)
    : QObject(parent), network(watched), old_shells(std::move(shells)), threads(pool) {
    web.setProxy(QNetworkProxy::NoProxy);
    timer.setSingleShot(true);
    timer.setInterval(250);
    connect(&timer, &QTimer::timeout, this, &NetworkWatch::poll);
    read_own_name([] {});  // while the server comes up
    poll();
}

void NetworkWatch::slow_down() {
    timer.setInterval(2000);
}

void NetworkWatch::poll() {
    work_in_background(
        threads, *this,
        [directory = network.path, shells = old_shells] {
            return state_of_processes(directory, shells);
        },
        [this](const NetworkState& seen) {
            state = seen;
            ask_name();
        });
}

void NetworkWatch::ask_name() {
    if (!state.runs) {
        report();
        return;
    }
    QNetworkReply* reply = get(QUrl(own_page(state.address) + QStringLiteral("/_infos/kl/")));
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        check_name(*reply);
    });
}

QNetworkReply* NetworkWatch::get(const QUrl& page) {
    QNetworkRequest request(page);
    request.setTransferTimeout(5000);
    // As a new visitor does: a connection kept open is served even where no new one is accepted.
    request.setRawHeader("Connection", "close");
    return web.get(request);
}

void NetworkWatch::check_name(QNetworkReply& reply) {
    const QByteArray name = reply.read(1000).trimmed();
    if (reply.error() != QNetworkReply::NoError || name.isEmpty()) {
        report();
        return;
    }
    const QUrl page = reply.url().resolved(QUrl(QStringLiteral("/_infos/etat/")));
    if (name == own_name) {
        state.answers = true;
        ask_details(page);
        return;
    }
    read_own_name([this, name, page] {  // it may have been renamed
        state.answers = name == own_name;
        ask_details(page);
    });
}

void NetworkWatch::read_own_name(const std::function<void()>& done) {
    work_in_background(
        threads, *this, [directory = network.path] { return name_by_project(directory); },
        [this, done](const QByteArray& name) {
            own_name = name;
            done();
        });
}

void NetworkWatch::ask_details(const QUrl& page) {
    QNetworkReply* details = get(page);
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
    emit polled(state);
}
