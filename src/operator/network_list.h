#pragma once

#include <QObject>
#include <QString>
#include <QVector>

class QGridLayout;
class QLineEdit;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

/// The texts of an entry of a list of networks.
struct NetworkEntry {
    QString name;
    QString detail{};  ///< an address, for instance: shown where two names are equal
    QString mark{};    ///< shown after the name; may be empty

    bool operator==(const NetworkEntry& other) const {
        return name == other.name && detail == other.detail && mark == other.mark;
    }
};

/// Lets the network list of a window hold any number of networks: the buttons scroll, and are large
/// enough to be read and clicked in the desktop's own font. From ten networks on, there is a
/// "filter_field": only those stay whose name, or detail where it is shown, contains what is typed,
/// whatever the accents and the case. Belongs to the window's "network_list".
class NetworkList : public QObject {
public:
    static constexpr int filtered_from = 10;

    /// Takes over the "network_button"s of the window's screen.
    explicit NetworkList(QWidget& window);

    /// Returns the buttons in their order.
    const QVector<QPushButton*>& buttons() const;

    /// Sets the texts of the buttons, in their order. A name is elided where there is no room for
    /// it; it is whole in the tool tip and to a screen reader.
    void show_entries(const QVector<NetworkEntry>& shown);

    /// Puts a widget at the right of a button.
    void add_beside(int entry, QWidget* widget);

    /// Puts a widget below all entries and what was put there before; it scrolls with them.
    void add_below(QWidget* widget);

    /// Gives the focus to a button, and scrolls to it.
    void focus(int entry);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void add_filter(QVBoxLayout& column);
    void show_matching(const QString& typed);
    void focus_first();
    /// Returns an entry's detail if another has the same name, or an empty text.
    QString shown_detail(const NetworkEntry& entry) const;
    void set_captions();
    void set_caption(int entry);

    QVector<QPushButton*> entries;
    QVector<NetworkEntry> texts;
    QGridLayout* rows;
    int free_row = 0;  ///< the first row below everything that was added
    QScrollArea* scroll;
    QLineEdit* filter = nullptr;
};
