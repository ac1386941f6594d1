#pragma once

#include <QString>
#include <functional>

class QObject;

/// Returns the address that an operator typed, as host:port: a host name or an IPv4 address, with
/// or without a port, even as a web address. Empty for any other text.
QString server_address(const QString& typed);

/// Asks the server at an address, host:port, for its name, within the time limits of the search and
/// without blocking the windows. `told` is called once, with the name (which may be empty) or, when
/// no Quorvale server answers there, with a null text; never after the owner was destroyed.
void ask_server(QObject& owner, const QString& address,
                const std::function<void(const QString& name)>& told);
