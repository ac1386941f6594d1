#pragma once

#include <QDeadlineTimer>
#include <QNetworkAccessManager>
#include <QTimer>

#include "network.h"

class QNetworkReply;

/// Looks whether the server of a network answers at this machine's address with the network's
/// name, until it does or half a minute has gone; a terminal that
/// has not opened by then is given up after nine seconds. Sends one signal, once.
class StartWatch : public QObject {
    Q_OBJECT

public:
    /// Watches from now on. The network is copied.
    StartWatch(const Network& watched, QObject* parent);

signals:
    void answered();
    void gave_up();

private:
    void look();
    void judge(QNetworkReply& reply);
    bool is_its_name(const QByteArray& name) const;

    const Network network;
    QNetworkAccessManager web;
    QTimer timer;
    const QDeadlineTimer deadline;
    const QDeadlineTimer terminal_deadline;
};
