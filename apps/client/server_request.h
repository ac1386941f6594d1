#pragma once

#include <QString>
#include <functional>

class QObject;

/// Returns the address, as host:port, that an operator typed: a name or an IPv4 address, with a
/// port or without, also as a web address. Empty for any other text.
QString server_address(const QString& typed);

/// Asks the server at an address, host:port, for its name, within the limits of the search, without
/// blocking the windows. `told` is called once, with the name (which may be empty) or, when no
/// Quorvale server answers there, with a null text; never once the owner is destroyed.
void ask_server(QObject& owner, const QString& address,
                const std::function<void(const QString& name)>& told);
