#pragma once

#include <QWidget>

#include "listed_network.h"
#include "network_jobs.h"

class RowList;

/// The networks of the registry, each with the actions for it as a whole or, on a page of the other
/// kind, for its directory.
class NetworksPage : public QWidget {
public:
    enum class Kind { networks, directories };

    NetworksPage(Kind shown_kind, NetworkJobs& shown_jobs);

    /// Reads the networks again.
    void read();

private:
    void show_networks(const QString& listed);
    void add_network(const RegisteredNetwork& network, const ListedNetwork& listed);

    Kind kind;
    NetworkJobs& jobs;
    RowList* list;
    QObject* reading = nullptr;  ///< owns the command that lists them; belongs to the page
};
