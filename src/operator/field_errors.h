#pragma once

class QString;
class QWidget;

/// What is wrong with the fields of a form that `form_panel` built stands beside them.

/// Says why a field's contents were refused, a reason a line: the first one stands beside the
/// field, all are its tool tip and its description to a screen reader. The first field refused gets
/// the focus.
void refuse_field(QWidget& field, const QString& reason);

/// Takes back everything that was said in a form.
void accept_fields(const QWidget& form);
