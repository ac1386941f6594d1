#pragma once

#include <QString>

/// Asks the desktop to open an address. The outcome is ignored.
///
/// Goes through Qt once the application object exists; before that, when Qt opens nothing, through
/// a detached `xdg-open`.
void open_url(const QString& address);
