#pragma once

class QLineEdit;
class QString;
class QWidget;

/// The state of a form that `form_panel` built: what is wrong with its fields, and whether it is
/// busy with what was typed.

/// Shows why a field's contents were refused, one reason per line: the first line beside the field,
/// all of them in its tool tip and to a screen reader. The first field refused gets the focus; a
/// text that was refused is selected.
void refuse_field(QWidget& field, const QString& reason);

/// Refuses a password that is missing or differs from its confirmation. Returns whether it is fit
/// to be sent.
bool check_password(QLineEdit& password, QLineEdit& confirmation);

/// Clears the reasons shown for all fields of a form.
void clear_refusals(const QWidget& form);

/// Makes a form busy, or ready again: a busy form takes no input, and its window has the busy
/// cursor.
void set_form_busy(QWidget& form, bool busy);
