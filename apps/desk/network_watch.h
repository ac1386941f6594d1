#pragma once

#include <QNetworkAccessManager>
#include <QStringList>
#include <QTimer>
#include <functional>
#include <set>

#include "network.h"

class QNetworkReply;
class QThreadPool;

/// What can be seen of a network at one moment.
struct NetworkState {
    QString address;       ///< the machine's own, as the programs find it; may be empty
    bool runs = false;     ///< a process serves it
    bool opened = false;   ///< a process stands in its directory: its terminal is there
    bool ended = false;    ///< its terminal has a plain shell that was not there at first
    bool answers = false;  ///< it answers at that address, by its own name
    QStringList names{};   ///< at which it is reached on the LAN, with their port
    int visitors = 0;      ///< machines that came within the last five minutes
};

/// Returns this machine's address as the programs find it; empty when it has none. Runs commands.
QString own_address();

/// Returns the host at which this machine reaches a network of its own: its address, or where
/// networks are served without one.
QString own_host(const QString& address);

/// Returns the web address of the page that a network of this machine serves there.
QString own_page(const QString& address);

/// Whether other machines reach that address.
bool is_reached_by_others(const QString& address);

/// Looks at one network of this machine again and again: at its processes, and whether its server
/// answers. The window's thread does not wait for it.
class NetworkWatch : public QObject {
    Q_OBJECT

public:
    /// Looks from now on, three times a second until set_calm(), on threads of the pool. Plain
    /// shells that were in the network's directory before do not count as its terminal's. The
    /// network is copied.
    NetworkWatch(const Network& watched, std::set<pid_t> shells, QThreadPool& pool,
                 QObject* parent);

    /// Looks every two seconds from now on.
    void set_calm();

signals:
    void looked(const NetworkState& state);

private:
    void look();
    void ask();
    QNetworkReply* get(const QUrl& page);
    void judge(QNetworkReply& reply);
    void read_name(const std::function<void()>& done);
    void ask_details(const QUrl& page);
    void report();

    const Network network;
    const std::set<pid_t> old_shells;
    NetworkState state;
    QByteArray own_name;  ///< that its server has to answer; empty until that was read
    QNetworkAccessManager web;
    QTimer timer;
    QThreadPool& threads;
};
