#pragma once

#include <QScrollArea>

class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

/// A list that scrolls, of rows of text with buttons.
class RowList : public QScrollArea {
public:
    explicit RowList(const char* name);

    /// Shows a text in place of the rows.
    void show_text(const QString& text);
    void clear();
    /// Adds a row of two lines of text, which are plain; the second may be empty.
    void add_row(const QString& text, const QString& detail);
    /// Adds a button to the last row, and returns it. A screen reader says the row's text after the
    /// button's.
    QPushButton* add_button(const char* name, const QString& text);

private:
    QVBoxLayout* rows;
    QHBoxLayout* last_row = nullptr;
    QString last_text;
};
