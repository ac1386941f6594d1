#pragma once

#include <QString>
#include <string>
#include <utility>
#include <vector>

class Network;
class QBoxLayout;
class QLabel;
class QSize;
class QWidget;

/// The pieces that several screens are built from. Widgets are returned without a parent: the
/// layout that takes them in gives them to its window.

/// Style sheet of the windows' white pages. It reaches every widget of the page.
inline constexpr char white_page_style[] = " background: #fff;";

/// The text of a byte string, each byte taken as one Latin-1 character.
QString latin1_text(const std::string& bytes);

/// Deletes the window's layout and every widget placed directly in it, with all that these hold.
/// Does nothing when the window has no layout.
void clear_layout(QWidget& window);

/// A label of a fixed size (pixels) that plays an animation file at that size. The label owns the
/// animation. A missing file leaves the label empty.
QLabel* animated_label(const QString& file, const QSize& size);

/// The same, centred in a box of its own.
QWidget* centred_animation(const QString& file, const QSize& size);

/// A centred line of text with a style sheet of its own.
QLabel* status_label(const QString& text, const QString& style);

/// Buttons side by side, each given as its text and its style sheet.
QWidget* button_row(const std::vector<std::pair<QString, QString>>& buttons);

/// A form: one row a pair of label text and field, then a save button under the fields.
QWidget* form_panel(const std::vector<std::pair<QString, QWidget*>>& rows,
                    const QString& save_text);

/// Fills the window's background with one colour, by palette: a style sheet on the window would
/// reach its children too.
void set_flat_background(QWidget& window, const QString& colour);

/// Adds one button of the class "net-btn" a network to the column, in order. A click on button i
/// calls the window's slot, given as SLOT(name(int)), with i; the mapper in between belongs to the
/// window.
void add_network_buttons(const std::vector<Network*>& networks, QBoxLayout& column, QWidget& window,
                         const char* slot);
