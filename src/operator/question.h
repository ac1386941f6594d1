#pragma once

class QString;
class QWidget;

/// Asks, in the message box "question" over a window, before something that cannot be undone.
/// Returns true for its "yes_button" only: "no_button" is the default, and what Escape presses.
/// Texts are plain.
bool confirmed(QWidget* window, const QString& question, const QString& consequence);
