#pragma once

#include <QMenu>

#include "registered_networks.h"

class NetworkJobs;

/// The menu of one network of the list. Deletes itself once it is closed.
class NetworkMenu : public QMenu {
    Q_OBJECT

public:
    /// The jobs must outlive the menu; `served` says whether the network is in service.
    NetworkMenu(const RegisteredNetwork& shown, bool served, NetworkJobs& jobs, QWidget& window);

signals:
    void page_chosen();
    void stop_chosen();

private:
    using Job = void (NetworkJobs::*)(const RegisteredNetwork&);

    void add_job(const QString& text, NetworkJobs& jobs, Job job);
    /// Adds a line that says the network's size on the disk, as soon as it is known.
    void add_size();

    const RegisteredNetwork network;
};
