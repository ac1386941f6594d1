#include "form_state.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>

namespace {

const int field_column = 2;
const int reason_column = 3;

QGridLayout* grid_of(const QWidget& form) {
    return qobject_cast<QGridLayout*>(form.layout());
}

QLabel* reason_at(const QGridLayout& grid, int row) {
    QLayoutItem* item = grid.itemAtPosition(row, reason_column);
    return item == nullptr ? nullptr : qobject_cast<QLabel*>(item->widget());
}

/// Lets drop-down lists, whose texts are long, extend into the reasons' column.
void make_room(QGridLayout& grid) {
    for (int row = 0; row < grid.rowCount(); ++row) {
        QLayoutItem* item = grid.itemAtPosition(row, field_column);
        if (item != nullptr && qobject_cast<QLineEdit*>(item->widget()) == nullptr) {
            grid.addWidget(item->widget(), row, field_column, 1, 2);
        }
    }
}

QLabel* add_reason(QGridLayout& grid, int row) {
    auto* reason = new QLabel;
    reason->setWordWrap(true);
    reason->setFixedWidth(180);
    reason->setStyleSheet(QStringLiteral("color:#b00020;font-size:12px;"));
    grid.addWidget(reason, row, reason_column);
    return reason;
}

bool shows_reason(const QGridLayout& grid) {
    for (int row = 0; row < grid.rowCount(); ++row) {
        const QLabel* reason = reason_at(grid, row);
        if (reason != nullptr && !reason->text().isEmpty()) {
            return true;
        }
    }
    return false;
}

}  // namespace

void refuse_field(QWidget& field, const QString& reason) {
    QGridLayout* grid = grid_of(*field.parentWidget());
    int row = 0;
    int column = 0;
    int row_span = 0;
    int column_span = 0;
    grid->getItemPosition(grid->indexOf(&field), &row, &column, &row_span, &column_span);
    if (!shows_reason(*grid)) {
        field.setFocus();
    }
    QLabel* label = reason_at(*grid, row);
    if (label == nullptr) {
        make_room(*grid);
        label = add_reason(*grid, row);
    }
    label->setText(reason.section(QLatin1Char('\n'), 0, 0));
    label->setToolTip(reason);
    field.setAccessibleDescription(reason);
    if (auto* line = qobject_cast<QLineEdit*>(&field)) {
        line->selectAll();
    }
}

bool check_password(QLineEdit& password, QLineEdit& confirmation) {
    if (password.text().isEmpty()) {
        refuse_field(password, QStringLiteral("Donnez un mot de passe."));
        return false;
    }
    if (password.text() != confirmation.text()) {
        refuse_field(confirmation, QStringLiteral("Les deux mots de passe ne sont pas les mêmes."));
        return false;
    }
    return true;
}

void clear_refusals(const QWidget& form) {
    const QGridLayout* grid = grid_of(form);
    for (int row = 0; row < grid->rowCount(); ++row) {
        if (QLabel* reason = reason_at(*grid, row)) {
            reason->clear();
            grid->itemAtPosition(row, field_column)->widget()->setAccessibleDescription({});
        }
    }
}

void set_form_busy(QWidget& form, bool busy) {
    form.setEnabled(!busy);
    if (busy) {
        form.window()->setCursor(Qt::BusyCursor);
    } else {
        form.window()->unsetCursor();
    }
}
