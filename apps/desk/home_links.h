#pragma once

class NetworkSelectionWindow;

/// Adds, below the picture of the home screen, the buttons that open the guide, the client and the
/// configuration, each only where it is installed.
void add_home_links(NetworkSelectionWindow& window);
