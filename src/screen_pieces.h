#pragma once

#include <QLatin1String>
#include <QString>
#include <string>
#include <utility>
#include <vector>

class Network;
class QBoxLayout;
class QLabel;
class QSize;
class QWidget;

/// The pieces that several screens are built from. Widgets are returned without a parent; the
/// layout to which they are added gives them its own.

/// Style sheet of the windows' white pages. It reaches every widget of the page.
inline constexpr char white_page_style[] = " background: #fff;";

/// Gives a widget the name under which style sheets and the programs find it. Returns the widget.
template <typename Object>
Object* named(const char* name, Object* widget) {
    widget->setObjectName(QLatin1String(name));
    return widget;
}

/// The text of a byte string, each byte taken as one Latin-1 character.
QString latin1_text(const std::string& bytes);

/// Deletes the window's layout and every widget placed directly in it, with all that these hold.
/// Does nothing when the window has no layout.
void clear_layout(QWidget& window);

/// A label of a fixed size (pixels) that plays an animation file at that size. The label owns the
/// animation. A missing file leaves the label empty.
QLabel* animated_label(const QString& file, const QSize& size);

/// The same, named "animation", centred in a box of its own.
QWidget* centred_animation(const QString& file, const QSize& size);

/// A centred line of text with a style sheet of its own.
QLabel* status_label(const QString& text, const QString& style);

struct RowButton {
    const char* name;  ///< its object name
    QString text;
    QString style;  ///< its style sheet
};

/// Buttons side by side.
QWidget* button_row(const std::vector<RowButton>& buttons);

/// The widget "form": a row for each pair of label text and field, then the button "save_button"
/// under the fields. The label is named after its field: "name_field_label" for "name_field".
QWidget* form_panel(const std::vector<std::pair<QString, QWidget*>>& rows,
                    const QString& save_text);

/// Fills the window's background with one colour, by palette: a style sheet on the window would
/// reach its children too.
void set_flat_background(QWidget& window, const QString& colour);

/// Adds a button "network_button" of the class "net-btn" to the column for each network, in order.
/// A click on button i calls the window's slot, given as SLOT(name(int)), with i; the mapper in
/// between, "network_mapper", belongs to the window.
void add_network_buttons(const std::vector<Network*>& networks, QBoxLayout& column, QWidget& window,
                         const char* slot);
