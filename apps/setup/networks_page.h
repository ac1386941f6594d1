#pragma once

#include <QWidget>

#include "network_jobs.h"

class RowList;

/// The networks of the registry, with the jobs of their lives: as wholes, or their directories.
class NetworksPage : public QWidget {
public:
    enum class Kind { networks, directories };

    NetworksPage(Kind shown_kind, NetworkJobs& shown_jobs);

    /// Reads the networks anew.
    void read();

private:
    void show_networks(const QString& listed);
    void add_network(const RegisteredNetwork& network, const QStringList& fields);

    Kind kind;
    NetworkJobs& jobs;
    RowList* list;
    QObject* reading = nullptr;  ///< owns the command that lists; belongs to the page
};
