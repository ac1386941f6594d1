#pragma once

/// Makes a button that is pressed by Return be pressed once while the key is held down: its page
/// would be opened at each repeat. Call it once, after the application object is created, which
/// then owns what does this.
void ignore_held_return();
