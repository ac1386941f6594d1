#pragma once

#include "background_command.h"
#include "registered_networks.h"

/// Runs the command `compte` of a network's own project, which manages its accounts, with a
/// password on its standard input, as `run_in_background` does.
void run_account_command(QObject& owner, const RegisteredNetwork& network,
                         const QStringList& arguments, const QString& password,
                         const CommandEnd& ended);
