#pragma once

class QString;
class QWidget;

/// Asks, in the message box "question" over a window, before something that cannot be taken back.
/// Returns true for "Oui" only: "Non" is the default, and what Escape answers. Texts are plain.
bool confirmed(QWidget* window, const QString& question, const QString& consequence);
