#pragma once

#include <string>
#include <vector>

class Network;

/// Host of the LAN server that is opened at start-up and named on the ready and connected screens.
inline constexpr char default_lan_host[] = "quorvale.local";

/// Runs a shell command line, unchanged, and returns its standard output less one final line feed.
///
/// Blocks until the command has ended. The exit status is ignored: a command that fails
/// returns what it wrote, usually nothing. A NUL byte hides the bytes after it, up to the next line
/// feed or the next 127-byte piece of a long line.
/// Throws `std::runtime_error`, with "Oh Oh" on standard output, when the command cannot be
/// started.
std::string exec_cmd(std::string command);

/// Returns the machine's own IPv4 address, the one that `ifconfig` lists last beside the
/// loopback's, or an empty string. Nothing is cached. Throws what `exec_cmd` throws.
std::string getIp();

/// Appends a new record for each line of "networks.data" (working directory) that has a name and
/// a directory; the records belong to the caller. The list is not cleared first.
///
/// Echoes every line on standard output. A line with fewer than two fields is reported on standard
/// error and skipped; a file that cannot be opened is reported there, too.
void read_hub_networks(std::vector<Network*>* networks);

/// Turns one registry line, name|directory| without its line feed, into a new record that belongs
/// to the caller; returns null when the line has fewer than two fields. A field ends at its bar:
/// text after the last bar, and fields after the second, are ignored.
Network* split_hub_networks_file(std::string line);

/// Lists the hosts that `nmap` reports up on the /24 subnet of the own address, in its order. An
/// entry is empty for a host without a reverse name. Prints nothing. Throws what `exec_cmd` throws.
std::vector<std::string> fetch_networks();

/// Returns the lines of a text, empty ones included; a final line feed adds no empty entry.
std::vector<std::string> splitLines(const std::string& text);

/// Lists the servers of the subnet, as host:8000, in the order of `fetch_networks`: the hosts that
/// answer 200 OK there. Prints nothing. Throws what `exec_cmd` throws.
///
/// Blocks until `nmap` and then one `curl` per host have ended; sets no time limit.
std::vector<std::string> find_servers();

/// Asks each server, given as host:8000, for its display name. Returns one name per server, its
/// words joined by single spaces, or an empty text where the server gave none. Throws what
/// `exec_cmd` throws.
///
/// Asks twice: the first answer is returned, the second written to standard output, with no
/// separator and no flush.
std::vector<std::string> find_servers_names(std::vector<std::string> servers);

/// Makes a network's Django project: `django-admin startproject` for `path`, then the template of
/// the working directory (settings.py, urls.py, hubs, ressources, templates, static) copied into
/// path/name/. Returns 0 in every case; the commands' complaints go to standard error.
///
/// Both texts reach the shell unquoted. Blocks until the last command has ended. Does not add the
/// network to the registry.
int create_new_network(std::string name, std::string path);
