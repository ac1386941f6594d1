#pragma once

class QLineEdit;
class QString;
class QWidget;

/// The state of a form that `form_panel` built: what is wrong with its fields, and whether it is
/// busy with what was typed.

/// Says why a field's contents were refused, one reason per line: the first stands beside the
/// field, all of them are in the reason's tool tip and in what a screen reader says of the field.
/// The first field refused gets the focus; a text that was refused is selected.
void refuse_field(QWidget& field, const QString& reason);

/// Refuses a password that is missing, or that its confirmation does not repeat. Returns whether
/// there is one that can be sent.
bool check_password(QLineEdit& password, QLineEdit& confirmation);

/// Clears everything that was said about the fields of a form.
void accept_fields(const QWidget& form);

/// A busy form takes no input, and its window has the busy cursor.
void set_form_busy(QWidget& form, bool busy);
