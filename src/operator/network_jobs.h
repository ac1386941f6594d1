#pragma once

#include <QObject>

#include "registered_networks.h"

class QWidget;

/// The jobs of a network's life, for the controls of a window: asks what a job needs, has
/// `quorvale-network` do it behind a dialog that can cancel it, and says how it went. Belongs to
/// the window.
class NetworkJobs : public QObject {
    Q_OBJECT

public:
    explicit NetworkJobs(QWidget& shown);

    /// Opens the folder of the files that the network offers.
    void open_folder(const RegisteredNetwork& network);
    void rename(const RegisteredNetwork& network);
    void copy(const RegisteredNetwork& network);
    /// Moves the network to the desktop's bin, after a question.
    void remove(const RegisteredNetwork& network);
    void restore();

signals:
    /// A job was done: the registry may have changed.
    void done();

private:
    /// Runs the program, while the dialog says what it is `doing`.
    void run(const QStringList& arguments, const QString& doing);
    void say(bool succeeded, const QString& text);

    QWidget& window;
};
