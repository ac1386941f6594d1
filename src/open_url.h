#pragma once

#include <QString>

/// Asks the desktop to open an address, and goes on whatever becomes of it.
///
/// Through Qt when the application object exists; before, when Qt opens nothing, by a detached
/// `xdg-open`.
void open_url(const QString& address);
