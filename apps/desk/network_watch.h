#pragma once

#include <QNetworkAccessManager>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <set>

#include "network.h"

class QNetworkReply;
class QThreadPool;

/// What is known of a network at one moment.
struct NetworkState {
    QString address;       ///< the machine's own, as the programs find it; may be empty
    bool runs = false;     ///< a process serves it
    bool opened = false;   ///< a process runs in its directory: its terminal is open
    bool ended = false;    ///< none serves it, and its terminal shows a new plain shell
    bool answers = false;  ///< it answers at that address, with its own name
    QStringList names{};   ///< host names at which it is reached on the LAN, with the port
    int visitors = 0;      ///< machines that came within the last five minutes
};

/// Returns this machine's address as the programs find it; empty when it has none. Runs commands;
/// may be called on any thread.
QString own_address();

/// Returns the host at which this machine reaches a network of its own: its address, or the
/// loopback one when it has none.
QString own_host(const QString& address);

/// Returns the web address of the page that a network of this machine serves there.
QString own_page(const QString& address);

/// Returns whether other machines reach that address.
bool is_reached_by_others(const QString& address);

/// Polls one network of this machine: its processes, and whether its server answers. Never blocks
/// the thread of the window.
class NetworkWatch : public QObject {
    Q_OBJECT

public:
    /// Polls from now on, a quarter of a second after each answer, on threads of the pool.
    /// The plain shells given, which were in the network's directory before its launch, do not
    /// count as its terminal's. The network is copied.
    NetworkWatch(const Network& watched, std::set<pid_t> shells, QThreadPool& pool,
                 QObject* parent);

    /// Waits two seconds between polls from now on.
    void slow_down();

signals:
    void polled(const NetworkState& state);

private:
    void poll();
    void ask_name();
    QNetworkReply* get(const QUrl& page);
    /// Compares the name that the server has answered with the network's own.
    void check_name(QNetworkReply& reply);
    void read_own_name(const std::function<void()>& done);
    void ask_details(const QUrl& page);
    void report();

    const Network network;
    const std::set<pid_t> old_shells;
    NetworkState state;
    QByteArray own_name;  ///< the name that its server should answer; empty until it was read
    QNetworkAccessManager web;
    QTimer timer;
    QThreadPool& threads;
};
