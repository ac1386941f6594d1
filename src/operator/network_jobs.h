#pragma once

#include <QObject>

#include "registered_networks.h"

class QWidget;

/// What an operator does with whole networks, for the controls of a window: asks for what a job
/// needs, has `quorvale-network` do it while a dialog offers to cancel it, and shows the outcome.
/// Belongs to the window.
class NetworkJobs : public QObject {
    Q_OBJECT

public:
    explicit NetworkJobs(QWidget& shown);

    /// Opens the folder of the files that the network offers.
    void open_folder(const RegisteredNetwork& network);
    void rename(const RegisteredNetwork& network);
    void copy(const RegisteredNetwork& network);
    /// Moves the network to the desktop's bin, once the operator has confirmed it.
    void remove(const RegisteredNetwork& network);
    void restore();

signals:
    /// A job has succeeded: the registry may have changed.
    void done();

private:
    /// Runs the program, while a dialog shows the text `doing`.
    void run(const QStringList& arguments, const QString& doing);
    void say(bool succeeded, const QString& text);

    QWidget& window;
};
