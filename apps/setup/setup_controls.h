#pragma once

#include <QObject>
#include <vector>

#include "registered_networks.h"

class AccountForm;
class AccountsPage;
class NetworkJobs;
class NetworksPage;
class QComboBox;
class QPushButton;
class QStackedWidget;
class SetupWindow;
class SidebarButton;

/// Makes the sections of the configuration window work: the sidebar leads to the accounts of a
/// network, with the form that adds one, to the networks and to their directories. Belongs to the
/// window.
class SetupControls : public QObject {
public:
    explicit SetupControls(SetupWindow& shown);

protected:
    /// Keeps the window from closing while something is typed in the form, unless the operator
    /// confirms.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    /// Replaces the window's form by the pages, below the choice of a network.
    void build_pages();
    void add_section(const char* item, const QString& caption, int page);
    void show_page(int page);
    /// Reads the networks again, and keeps the chosen one if it is still there.
    void read_networks();
    void choose_network(int index);

    SetupWindow& window;
    std::vector<RegisteredNetwork> networks;  ///< in the order of the drop-down list
    QStackedWidget* pages;
    QWidget* choice_row;
    QComboBox* choice;
    AccountsPage* accounts;
    AccountForm* form;
    NetworkJobs* jobs;
    QVector<NetworksPage*> job_pages;
    QVector<QPair<SidebarButton*, int>> sections;
};
