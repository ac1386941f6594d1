#pragma once

#include <QObject>
#include <QSet>
#include <QVector>

class NetworkSelectionWindow;
class QLabel;
class QLineEdit;
class QPushButton;

/// Makes the new-network form of a window work: shows it, checks what is typed, and has
/// `quorvale-new`, from beside this program, create the network while the window goes on. Belongs
/// to the window.
class CreationForm : public QObject {
    Q_OBJECT

public:
    /// Replaces the window's screen by the form.
    explicit CreationForm(NetworkSelectionWindow& shown);

    bool is_busy() const;
    /// Returns whether the form may be left; asks the operator when something typed would be lost.
    bool may_leave();
    /// Emits left(), if the form may be left.
    void leave();

signals:
    void left();
    /// The network is in the registry under that name, its bytes as Latin-1 characters.
    void created(const QString& registered_name);

private:
    enum Field { name, path, pseudonym, password, confirmation };

    QString typed_name() const;
    void show_path();
    void save();
    bool check();
    void refuse(Field field, const QString& reason);
    void create();
    void end_creation(int status, const QString& said);
    void set_busy(bool now_busy);

    NetworkSelectionWindow& window;
    QVector<QLineEdit*> fields;
    QPushButton* save_button = nullptr;
    QString save_text;
    QLabel* back_link = nullptr;
    QSet<QString> reserved_names;
    bool refused = false;  ///< a field, by the check that runs
    bool busy = false;     ///< creating the network
};
