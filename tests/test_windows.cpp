#include <QComboBox>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTextDocument>
#include <QUrl>
#include <QWindow>
#include <QtTest>
#include <algorithm>
#include <memory>

#include "../apps/client/client_controls.h"
#include "../apps/client/server_request.h"
#include "../apps/desk/creation_form.h"
#include "../apps/desk/network_menu.h"
#include "../apps/setup/setup_controls.h"
#include "applicationsetup.h"
#include "clientwindow.h"
#include "french_texts.h"
#include "held_keys.h"
#include "maximising_guard.h"
#include "network_jobs.h"
#include "network_list.h"
#include "networkselectionwindow.h"
#include "setupwindow.h"
#include "test_directory.h"

namespace {

const QString source_dir = QStringLiteral(SOURCE_DIR "/");

/// A working directory with the product's pictures and three networks.
class ProductDirectory : public TestDirectory {
public:
    ProductDirectory() {
        write(QStringLiteral("networks.data"),
              "Atelier|/srv/a|\nFor\xe9t du Nord|/srv/b c|\n|/srv/c|\n");
        fake_command(QStringLiteral("nmap"), "");
        for (const char* file : {"img", "runtime/vestrel.gif", "runtime/wifi.gif"}) {
            const QFileInfo original(source_dir + QString::fromLatin1(file));
            QFile::link(original.filePath(), path(original.fileName()));
        }
    }
};

/// A LAN of three servers, one of which has ended since it was found; another is beyond it.
class Lan : public ProductDirectory {
public:
    Lan() {
        fake_command(QStringLiteral("ifconfig"), "echo '  inet 192.0.2.10'\n");
        fake_command(QStringLiteral("nmap"),
                     "printf 'Nmap scan report for %s (192.0.2.%s)\\n' a 5 b 7 c 9\n");
        fake_command(QStringLiteral("curl"), R"sh(case "$*" in
            *--fail*.9:8000/_infos/kl/) exit 7;;
            *.5:8000/_infos/kl/) printf 'Atelier Nord';;
            *.7:8000/_infos/kl/) printf '\311cole';;
            *.9:8000/_infos/kl/) ;;
            *loin:80/_infos/kl/) printf '<Loin>';;
            *loin:8000/_infos/kl/) printf 'L&oin';;
            *) echo 'HTTP/1.1 200 OK';;
            esac)sh");
    }
};

/// Keeps the addresses that the desktop is asked to open, and what a window shows at that moment.
class Browser : public QObject {
    Q_OBJECT

public:
    explicit Browser(const QWidget& watched_window) : window(watched_window) {
        QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "open");
    }
    ~Browser() override {
        QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
    }
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    QStringList asked;
    QString seen;

public slots:
    void open(const QUrl& url) {
        asked << url.toString();
        seen = snapshot(window);
    }

private:
    const QWidget& window;
};

QString expected_snapshot(const QString& name) {
    QFile file(source_dir + QStringLiteral("tests/snapshots/") + name);
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

QList<QPushButton*> buttons(const QWidget& window, const char* name) {
    return window.findChildren<QPushButton*>(QLatin1String(name));
}

QPushButton* button(const QWidget& window, int number) {
    return window.findChildren<QPushButton*>().at(number);
}

/// Builds the screen of that name.
std::unique_ptr<QDialog> screen(const QString& name) {
    if (name == QStringLiteral("setup")) {
        return std::make_unique<SetupWindow>(nullptr);
    }
    if (name == QStringLiteral("search")) {
        return std::make_unique<ClientWindow>(nullptr);
    }
    auto selection = std::make_unique<NetworkSelectionWindow>(nullptr);
    if (name == QStringLiteral("home")) {
        return selection;
    }
    selection->clean_screen();
    if (name == QStringLiteral("loading")) {
        selection->loading_mode();
    } else if (name == QStringLiteral("ready")) {
        selection->network_started_mode(nullptr);
    } else {
        selection->new_network_mode();
    }
    return selection;
}

/// Types into a form's fields, saves, and returns why each field is refused.
QByteArray refusals(const QWidget& window, const QStringList& typed) {
    const auto fields = window.findChildren<QLineEdit*>();
    for (int i = 0; i < typed.size(); ++i) {
        if (!typed[i].isNull()) {
            fields[i]->setText(typed[i]);
        }
    }
    QTest::keyClick(fields.last(), Qt::Key_Return);
    QByteArray reasons;
    if (QTest::qWaitFor([&] { return fields[0]->isEnabled(); }, 60'000)) {
        for (const QLineEdit* field : fields) {
            reasons += field->accessibleDescription().toUtf8() + '|';
        }
    }
    return reasons;
}

/// Answers the next dialog of that name, which blocks the test's own loops.
void answer_dialog(const char* name, const std::function<void(QWidget& dialog)>& answer) {
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (dialog != nullptr && dialog->objectName() == QLatin1String(name)) {
            timer->deleteLater();
            timer->stop();
            answer(*dialog);
        }
    });
    timer->start(10);
}

/// Presses the button of that name when the next question is asked.
void answer_question(const char* button) {
    answer_dialog("question", [button](QWidget& question) {
        question.findChild<QPushButton*>(QLatin1String(button))->click();
    });
}

/// The product's style sheet, for as long as the test runs.
struct ProductStyle {
    ProductStyle() {
        QFile file(source_dir + QStringLiteral("runtime/style.qss"));
        file.open(QIODevice::ReadOnly);
        qApp->setStyleSheet(QString::fromLatin1(file.readAll()));
    }
    ~ProductStyle() {
        qApp->setStyleSheet(QString());
    }
};

/// The client's window in the LAN.
struct Client {
    Client() {
        new ClientControls(window);
        window.show();
    }

    void click(const char* name, int number = 0) {
        QTest::mouseClick(buttons(window, name)[number], Qt::LeftButton);
    }

    /// Whether it says so, and the browser was sent there.
    bool connected_to(const char* name, const char* address) const {
        const auto* label = window.findChild<QLabel*>(QStringLiteral("information"));
        return label != nullptr && label->text().contains(QString::fromUtf8(name)) &&
               label->text().contains(QLatin1String(address)) &&
               browser.asked.last() == QLatin1String(address);
    }

    Lan lan;
    ClientWindow window{nullptr};
    Browser browser{window};
};

/// The setup program on two networks, the second of which is chosen. The command that makes an
/// account keeps what it was asked and fails with the given status.
struct Setup {
    Setup() {
        QByteArray registry;
        for (const QString& name : {QStringLiteral("a"), QStringLiteral("b")}) {
            QDir().mkpath(name + QStringLiteral("/manage.py"));
            registry += name.toLatin1() + '|' + directory.path(name).toLocal8Bit() + "|\n";
        }
        directory.write(QStringLiteral("networks.data"), registry);
        directory.write(QStringLiteral("b/nom.txt"), "B");
        directory.fake_command(QStringLiteral("python3"),
                               "[ \"$3\" != liste ] || exec printf '%s\\tbo\\n' super standard\n"
                               "read -r line; echo \"${PWD##*/} $* $line\" > $WORK/asked\n"
                               "[ $(cat $WORK/status) != killed ] || kill -9 $$\n"
                               "echo Raison. >&2; exit $(cat $WORK/status)");
        window = std::make_unique<SetupWindow>(nullptr);
        new SetupControls(*window);
        window->show();
        choice().setCurrentIndex(1);
        QTest::mouseClick(last_button("add_button"), Qt::LeftButton);
    }

    QComboBox& choice() const {
        return *window->findChild<QComboBox*>(QStringLiteral("network_choice"));
    }
    QPushButton* last_button(const char* name) const {
        return buttons(*window, name).last();
    }
    QString result() const {
        const auto* label = window->findChild<QLabel*>(QStringLiteral("result"));
        return label->isVisible() ? label->text() : QString();
    }

    /// Adds an account. Returns why each field is refused, and what was asked of the command.
    QByteArray save(int role, const QByteArray& status, const QStringList& typed) const {
        directory.write(QStringLiteral("status"), status);
        window->findChild<QComboBox*>(QStringLiteral("role_list"))->setCurrentIndex(role);
        const QByteArray reasons = refusals(*window, typed);
        return reasons + directory.read(QStringLiteral("asked"));
    }

    TestDirectory directory;
    std::unique_ptr<SetupWindow> window;
};

const QStringList typed_account = {QStringLiteral(" anne"), QStringLiteral("Anne  Petit"),
                                   QStringLiteral("sésame"), QStringLiteral("sésame")};

}  // namespace

class TestWindows : public QObject {
    Q_OBJECT

private slots:
    void screens_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"home", "loading", "ready", "new_network", "setup", "search"}) {
            QTest::newRow(name) << QString::fromLatin1(name);
        }
    }
    void screens() {
        QFETCH(QString, name);
        const ProductDirectory directory;
        const auto window = screen(name);
        QCOMPARE(snapshot(*window), expected_snapshot(name));
        if (auto* selection = qobject_cast<NetworkSelectionWindow*>(window.get())) {
            selection->clean_screen();
            selection->remove_layouts(nullptr);
            QVERIFY(selection->layout() == nullptr);
            QVERIFY(selection->findChildren<QWidget*>().isEmpty());
        }
    }

    void start_sequence_data() {
        QTest::addColumn<QByteArray>("address");
        QTest::addColumn<QByteArray>("processes");
        QTest::addColumn<QString>("asked");
        QTest::newRow("runs") << QByteArray("192.0.2.10") << QByteArray("2")
                              << QStringLiteral("http://192.0.2.10:8000");
        QTest::newRow("no address")
            << QByteArray() << QByteArray("2") << QStringLiteral("http://:8000");
        QTest::newRow("does not run") << QByteArray("192.0.2.10") << QByteArray("1") << QString();
    }
    void start_sequence() {
        QFETCH(QByteArray, address);
        QFETCH(QByteArray, processes);
        QFETCH(QString, asked);
        const ProductDirectory directory;
        directory.fake_command(QStringLiteral("ifconfig"),
                               "echo ifconfig >> log; echo '  inet " + address + "'");
        directory.fake_command(
            QStringLiteral("ps"),
            "echo ps >> log; yes 'me 4 Tesquin runserver' | head -n " + processes);
        directory.fake_command(QStringLiteral("gnome-terminal"),
                               "printf '%s|' \"$@\" > $WORK/t; mv $WORK/t $WORK/called");
        const auto window = screen(QStringLiteral("home"));
        const Browser browser(*window);
        QElapsedTimer clock;
        clock.start();
        bool other_events = false;
        QTimer::singleShot(0, window.get(), [&other_events] { other_events = true; });
        QTest::mouseClick(button(*window, 1), Qt::LeftButton);

        QVERIFY(!other_events);  // a second click would start another network
        QCOMPARE(browser.asked.join(QLatin1Char(' ')), asked);
        QByteArray commands = "ifconfig\nps\n";
        if (asked.isEmpty()) {
            QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("loading")));
        } else {
            QCOMPARE(browser.seen,
                     QStringLiteral("[Accueil Quorvale] NetworkSelectionWindow 800x400 "
                                    "{ background: #fff;}\n"));
            QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("ready")));
            QVERIFY(clock.elapsed() >= 2000);
            commands += "ifconfig\n";
        }
        QCOMPARE(directory.read(QStringLiteral("log")), commands);
        QTRY_COMPARE(directory.read(QStringLiteral("called")),
                     "--|bash|-c|cd /srv/b c && python3 manage.py runserver " + address +
                         ":8000 ; exec bash|");
    }

    void background_of_the_ready_screen() {
        const ProductDirectory directory;
        const ProductStyle style;
        const QImage ready = screen(QStringLiteral("ready"))->grab().toImage();
        for (const QPoint& corner : {QPoint(0, 0), QPoint(799, 399)}) {
            QCOMPARE(ready.pixelColor(corner), QColor(0x33, 0x99, 0xff));
        }
    }

    void held_key_on_the_ready_screen() {
        ignore_held_return();
        const ProductDirectory directory;
        const auto window = screen(QStringLiteral("ready"));
        auto* access = window->findChild<QPushButton*>(QStringLiteral("access_button"));
        access->disconnect();
        const QSignalSpy pressed(access, &QPushButton::clicked);
        const struct {
            unsigned long when;
            QEvent::Type type;
            bool is_repeat;
        } events[] = {
            {1, QEvent::KeyPress, false},   {2, QEvent::KeyPress, true},
            {3, QEvent::KeyRelease, false}, {3, QEvent::KeyPress, false},  // X repeats so, too
            {4, QEvent::KeyRelease, false}, {5, QEvent::KeyPress, false},
            {6, QEvent::KeyRelease, false}, {7, QEvent::KeyPress, false}};
        for (const auto& [when, type, is_repeat] : events) {
            QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, {}, is_repeat);
            event.setTimestamp(when);
            QApplication::sendEvent(access, &event);
        }
        QCOMPARE(pressed.count(), 3);
    }

    void eight_whole_names() {
        const ProductDirectory directory;
        const ProductStyle style;
        const QFont system_font = QApplication::font();
        for (const char* family : {"Noto Sans", "DejaVu Sans"}) {
            QApplication::setFont(QFont(QString::fromLatin1(family)));
            int rows_of_text[2] = {};
            for (const int count : {1, 8}) {
                directory.write(QStringLiteral("networks.data"),
                                QByteArray("\xc9gypte|/d|\n").repeated(count));
                const auto window = screen(QStringLiteral("home"));
                window->show();
                const QImage look = button(*window, count - 1)->grab().toImage();
                for (int y = 0; y < look.height(); ++y) {
                    const QImage row = look.copy(look.width() / 4, y, look.width() / 2, 1);
                    rows_of_text[count / 8] += row != row.copy(0, 0, 1, 1).scaled(row.size());
                }
            }
            QCOMPARE(rows_of_text[1], rows_of_text[0]);
        }
        QApplication::setFont(system_font);
    }

    void many_networks() {
        const ProductDirectory directory;
        const ProductStyle style;
        QByteArray registry;
        for (int i = 0; i < 40; ++i) {
            registry +=
                (i % 2 == 0 ? "\xc9t\xe9 " : "Salle ") + QByteArray::number(i / 4) + "|/d|\n";
        }
        directory.write(QStringLiteral("networks.data"), registry);
        const auto window = screen(QStringLiteral("home"));
        window->show();
        NetworkList list(*window);
        QVector<NetworkEntry> entries;
        for (int i = 0; i < 40; ++i) {
            entries.push_back({list.buttons()[i]->text(), QStringLiteral("/d%1").arg(i), {}});
        }
        entries[7].name = QStringLiteral("Arts & Lettres");
        list.show_entries(entries);
        QCOMPARE(list.buttons()[7]->accessibleName(), QStringLiteral("Arts & Lettres"));
        QCOMPARE(list.buttons()[7]->text(), QStringLiteral("Arts && Lettres"));
        QVERIFY(list.buttons()[0]->accessibleName().endsWith(QStringLiteral("/d0")));
        list.focus(39);
        const QPushButton* last = list.buttons()[39];
        QVERIFY(last->height() >= 28);
        QTRY_COMPARE(window->childAt(last->mapTo(window.get(), last->rect().center())), last);

        auto* filter = window->findChild<QLineEdit*>(QStringLiteral("filter_field"));
        filter->setFocus();
        QTest::keyClicks(filter, QStringLiteral("TE 9"));
        for (int i = 0; i < 40; ++i) {
            QCOMPARE(list.buttons()[i]->isVisible(), i == 36 || i == 38);
        }
        QTest::keyClick(filter, Qt::Key_Return);
        QCOMPARE(window->focusWidget(), list.buttons()[36]);
        filter->setText(QStringLiteral("/D"));  // is shown where names are equal
        QVERIFY(list.buttons()[36]->isVisible() && !list.buttons()[7]->isVisible());
        QTest::keyClick(filter, Qt::Key_Escape);
        QVERIFY(list.buttons()[7]->isVisible() && window->isVisible());
    }

    void states_of_a_button() {
        const ProductDirectory directory;
        const ProductStyle style;
        const auto window = screen(QStringLiteral("home"));
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QPushButton* atelier = button(*window, 0);
        QList<QImage> looks;
        const auto looks_new = [&looks, atelier] {
            const QImage look = atelier->grab().toImage();
            const bool is_new = !looks.contains(look);
            looks << look;
            return is_new;
        };
        button(*window, 1)->setFocus();
        QVERIFY(looks_new());
        QTest::mouseMove(atelier);
        QTRY_VERIFY(atelier->underMouse());
        QVERIFY(looks_new());
        atelier->setDown(true);
        QVERIFY(looks_new());
        atelier->setDown(false);
        QTest::mouseMove(window.get(), QPoint(1, 1));
        QTRY_VERIFY(!atelier->underMouse());
        atelier->setFocus();
        QVERIFY(looks_new());
    }

    void application_setup() {
        const ProductDirectory directory;
        directory.write(QStringLiteral("style.qss"),
                        QByteArray("/* \0\xe9 */ QLabel { color: red; }", 31));
        const ApplicationSetup setup;
        QCOMPARE(qApp->styleSheet().mid(4), QStringLiteral("é */ QLabel { color: red; }"));
        qApp->setStyleSheet(QString());
        use_french_texts();
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"),
                 QStringLiteral("Annuler"));
    }

    void maximised_from_its_frame() {
        QWidget window;
        window.setFixedSize(300, 200);
        window.show();
        QWindow& handle = *window.windowHandle();
        new MaximisingGuard(window);
        const QSignalSpy widths(&handle, &QWindow::widthChanged);
        for (const int changes : {2, 4}) {  // as large as asked, then as before
            handle.setWindowStates(Qt::WindowMaximized);
            QTRY_COMPARE(widths.count(), changes);
            QVERIFY(widths[changes - 2][0].toInt() > 300);
            QTRY_COMPARE(handle.size(), QSize(300, 200));
            QCOMPARE(handle.windowStates(), Qt::WindowNoState);
            QCOMPARE(handle.maximumSize(), QSize(300, 200));
        }
    }

    void without_pictures() {
        const TestDirectory directory;
        directory.write(QStringLiteral("networks.data"), "");
        const ProductStyle style;
        const Output output = output_of([] {
            for (const char* name : {"home", "loading", "ready", "new_network", "setup"}) {
                const auto window = screen(QString::fromLatin1(name));
                ApplicationSetup::dress_window(*window);
                window->windowIcon().pixmap(16);  // as the desktop asks for it
                window->grab();
            }
        });
        QCOMPARE(output.out + output.err, QByteArray());  // QtTest prints Qt's warnings
    }

    void client_finds_and_opens() {
        const Lan lan;
        const auto window = screen(QStringLiteral("search"));
        QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("list")));
        const Browser browser(*window);
        QTest::mouseClick(button(*window, 1), Qt::LeftButton);
        QCOMPARE(browser.seen, expected_snapshot(QStringLiteral("list")));
        QCOMPARE(browser.asked, QStringList(QStringLiteral("http://192.0.2.7:8000")));
        QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("connected")));
    }

    void client_controls() {
        Client client;
        const ClientWindow& window = client.window;
        const QStringList& asked = client.browser.asked;
        client.click("network_button", 1);
        QVERIFY(asked.isEmpty());  // not before it has answered
        QTRY_VERIFY(client.connected_to("École", "http://192.0.2.7:8000"));
        client.click("access_button");
        QTRY_COMPARE(asked.size(), 2);
        QTRY_VERIFY(client.connected_to("École", "http://192.0.2.7:8000"));
        client.click("selection_button");
        QTRY_COMPARE(window.findChildren<QPushButton*>(QStringLiteral("network_button")).size(), 3);
        QCOMPARE(window.focusWidget(), button(window, 1));

        bool silent = false;
        answer_dialog("silence_message", [&silent](QWidget& message) {
            silent = true;
            message.close();
        });
        client.click("network_button", 2);
        QTRY_VERIFY(silent);
        QCOMPARE(asked.size(), 2);
        QTRY_VERIFY(window.findChild<QPushButton*>(QStringLiteral("again_button")) != nullptr);
        QTimer::singleShot(0, &window, [&] { client.click("again_button"); });
        QCOMPARE(QApplication::exec(), int(ClientControls::search_again));
    }

    void client_is_given_an_address() {
        Client client;
        answer_dialog("address_dialog", [](QWidget& dialog) {
            auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("address_field"));
            const auto* state = dialog.findChild<QLabel*>(QStringLiteral("address_state"));
            for (const auto& [typed, said] :
                 {std::make_pair("a b", "Ce n'est pas une adresse"), {"loin:80", "n'a répondu"}}) {
                field->setText(QLatin1String(typed));
                QTest::keyClick(field, Qt::Key_Return);
                QTRY_VERIFY(state->text().contains(QString::fromUtf8(said)));
            }
            field->setText(QStringLiteral("http://loin/"));
            QTest::keyClick(field, Qt::Key_Return);
        });
        client.click("other_button");
        QTRY_VERIFY(client.connected_to("L&amp;oin", "http://loin:8000"));
    }

    void client_finds_nothing() {
        const ProductDirectory directory;
        for (const int number : {0, 2, -1}) {
            ClientWindow window(nullptr);
            new ClientControls(window);
            window.show();
            QTimer::singleShot(0, &window, [&] {
                number < 0 ? window.reject() : button(window, number)->click();
            });
            QCOMPARE(QApplication::exec(), number == 0 ? int(ClientControls::search_again) : 0);
            QVERIFY(number == 0 || !window.isVisible());
        }
    }

    void server_addresses() {
        const std::pair<const char*, const char*> rows[] = {
            {" 192.0.2.7 ", "192.0.2.7:8000"},
            {"http://Salle-3.local:81/", "Salle-3.local:81"},
            {"192.0.2.256", ""},
            {"192.0.2", ""},
            {"a:0", ""},
            {"a:65536", ""},
            {"a;b", ""},
            {"-a", ""},
            {"a@b:1", ""},
            {"https://a", ""},
        };
        for (const auto& [typed, address] : rows) {
            QCOMPARE(server_address(QString::fromUtf8(typed)), QString::fromUtf8(address));
        }
    }

    void configuration() {
        const Setup setup;
        QCOMPARE(setup.window->findChild<QComboBox*>(QStringLiteral("role_list"))->currentIndex(),
                 1);
        QVERIFY(setup.window->findChild<QWidget*>(QStringLiteral("appearance_item"))->isHidden());
        setup.directory.write(QStringLiteral("b/nom.txt"), "C");
        emit setup.window->findChild<NetworkJobs*>()->done();
        QCOMPARE(setup.choice().currentText(), QStringLiteral("C"));
    }

    void refused_account_data() {
        QTest::addColumn<int>("role");
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<QByteArray>("reasons");
        QTest::addColumn<QString>("result");
        QStringList twice_typed = typed_account;
        twice_typed.last() = QStringLiteral("sesame");
        const auto row = [](const char* name, int role, const QByteArray& status,
                            const QStringList& typed, const QByteArray& reasons,
                            const char* result = "") {
            QTest::newRow(name) << role << status << typed << reasons << QString::fromUtf8(result);
        };
        const QByteArray account = " -- anne Anne Petit sésame\n";
        const QByteArray guest = "||||b manage.py compte invite" + account;
        row("nothing", 0, "0", {}, "Donnez un pseudo.|Donnez un nom.|Donnez un mot de passe.||");
        row("another password", 0, "0", twice_typed,
            "|||Les deux mots de passe ne sont pas les mêmes.|");
        row("password", 0, "3", typed_account, "||Raison.||b manage.py compte super" + account);
        row("pseudonym", 1, "4", typed_account, "Raison.||||b manage.py compte standard" + account);
        row("account", 2, "1", typed_account, guest, "Le compte n'a pas été ajouté. Raison.");
        row("killed", 2, "killed", typed_account, guest,
            "Le compte n'a pas été ajouté. Le programme python3 a été interrompu.");
        row("absent", 2, "absent", typed_account, "||||",
            "Le compte n'a pas été ajouté. Le programme python3 n'a pas pu être lancé.");
    }
    void refused_account() {
        QFETCH(int, role);
        QFETCH(QByteArray, status);
        QFETCH(QStringList, typed);
        QFETCH(QByteArray, reasons);
        QFETCH(QString, result);
        const Setup setup;
        if (status == "absent") {
            qputenv("PATH", "/nowhere");
        }
        QCOMPARE(setup.save(role, status, typed), reasons);
        QCOMPARE(setup.result(), result);
        QVERIFY(result.isEmpty() ||
                setup.window->focusWidget() == setup.last_button("save_button"));
    }

    void added_account() {
        const Setup setup;
        setup.save(2, "4", typed_account);
        bool asked = false;  // what is typed is not lost unasked
        answer_dialog("question", [&asked](QWidget& question) {
            const auto labels = question.findChildren<QLabel*>();
            asked = std::all_of(labels.begin(), labels.end(), [](const QLabel* label) {
                return label->text().isEmpty() || label->textFormat() == Qt::PlainText;
            });
            QTest::keyClick(&question, Qt::Key_Escape);
        });
        QTest::keyClick(setup.window.get(), Qt::Key_Escape);
        QVERIFY(asked && setup.window->isVisible());
        QCOMPARE(setup.save(2, "0", {}),
                 "||||b manage.py compte invite -- anne Anne Petit sésame\n");
        QCOMPARE(setup.result(), QStringLiteral("Le compte «\u00a0anne\u00a0» est ajouté au réseau "
                                                "«\u00a0B\u00a0»."));
        const QLineEdit& password = *setup.window->findChildren<QLineEdit*>().last();
        QVERIFY(password.text().isEmpty() && password.echoMode() == QLineEdit::Password);
        auto* back = setup.window->findChild<QPushButton*>(QStringLiteral("back_button"));
        QTest::mouseClick(back, Qt::LeftButton);
        QVERIFY(setup.window->findChild<QLabel*>(QStringLiteral("list_text")) != nullptr);  // reads
        QTest::keyClick(setup.window.get(), Qt::Key_Escape);
        QVERIFY(!setup.window->isVisible());
    }

    void accounts_of_a_network() {
        const TestDirectory directory;
        QDir().mkpath(QStringLiteral("a/manage.py"));
        directory.write(QStringLiteral("networks.data"),
                        "a|" + directory.path(QStringLiteral("a")).toLocal8Bit() + "|\n");
        directory.fake_command(QStringLiteral("python3"),
                               "[ \"$3\" != liste ] || exec cat $WORK/accounts\n"
                               "[ \"$3\" != mot-de-passe ] || mv $WORK/works $WORK/worked ||\n"
                               "{ printf 'Traceback:\\nErreur.\\n' >&2; exit 1; }\n"
                               "read -r line; echo \"$* $line\" >> $WORK/asked");
        directory.write(QStringLiteral("accounts"), "super\tanne\tA P\nstandard\tsuper\t\n");
        SetupWindow window(nullptr);
        new SetupControls(window);
        window.show();
        QTRY_COMPARE(buttons(window, "remove_button").size(), 2);
        QVERIFY(!buttons(window, "remove_button")[0]->isEnabled());  // of the last super-user
        QByteArray refused;
        answer_dialog("password_dialog", [&](QWidget& dialog) {
            const QStringList typed = {QStringLiteral("sésame"), QStringLiteral("sésame")};
            refused = refusals(dialog, typed);
            directory.write(QStringLiteral("works"), {});
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        QTest::mouseClick(buttons(window, "password_button")[0], Qt::LeftButton);
        QCOMPARE(refused, "Erreur.||");
        for (const char* answer : {"no_button", "yes_button"}) {
            answer_question(answer);
            QTest::mouseClick(buttons(window, "remove_button")[1], Qt::LeftButton);
            QTRY_VERIFY(qApp->findChildren<QTimer*>().isEmpty());  // it was asked
        }
        QTRY_COMPARE(directory.read(QStringLiteral("asked")),
                     "manage.py compte mot-de-passe -- anne sésame\n"
                     "manage.py compte supprimer -- super \n");
        QTRY_VERIFY(window.findChild<QWidget*>(QStringLiteral("accounts_page"))->isEnabled());
    }

    void jobs_of_a_network() {
        const TestDirectory directory;
        directory.write(QStringLiteral("networks.data"), "A|/a|\nArts && <u>Lettres|/b|\n");
        SetupWindow window(nullptr);
        new SetupControls(window);
        window.show();
        QTest::mouseClick(buttons(window, "sidebar_button").last(), Qt::LeftButton);
        QTRY_COMPARE(buttons(window, "remove_button").size(), 2);
        QStringList asked;
        answer_dialog("rename_dialog", [&asked](QWidget& dialog) {
            asked << dialog.findChild<QLabel*>()->text();
            dialog.findChild<QLineEdit*>()->setText(QStringLiteral("B"));
            dialog.close();
        });
        QTest::mouseClick(buttons(window, "rename_button").last(), Qt::LeftButton);
        answer_dialog("question", [&asked](QWidget& question) {
            asked << qobject_cast<QMessageBox*>(&question)->text();
            question.close();
        });
        QTest::mouseClick(buttons(window, "remove_button").last(), Qt::LeftButton);
        QCOMPARE(
            asked,
            QStringList(
                {QStringLiteral("<span>Nouveau nom de «\u00a0Arts &amp; &lt;u&gt;Lettres"
                                "\u00a0»\u00a0:</span>"),
                 QStringLiteral("Supprimer le réseau «\u00a0Arts & <u>Lettres\u00a0»\u00a0?")}));
        QVERIFY(window.findChild<QWidget*>(QStringLiteral("job_progress")) == nullptr);
    }

    void size_in_the_menu() {
        use_french_texts();
        const TestDirectory directory;
        directory.write(QStringLiteral("networks.data"),
                        "A|" + directory.path(QStringLiteral("a")).toLocal8Bit() + "|\n");
        QDir().mkpath(QStringLiteral("a/a/hubs"));
        directory.write(QStringLiteral("a/manage.py"), {});
        directory.write(QStringLiteral("a/a/settings.py"), QByteArray(5 << 20, '#'));
        QFile hollow(QStringLiteral("a/hollow"));
        QVERIFY(hollow.open(QIODevice::WriteOnly) && hollow.resize(1 << 30));
        NetworkSelectionWindow window(nullptr);
        NetworkJobs jobs(window);
        const auto* menu = new NetworkMenu(registered_networks()[0], false, jobs, window);
        QTRY_COMPARE_WITH_TIMEOUT(menu->actions().last()->text(),
                                  QStringLiteral("Taille sur le disque\u00a0: 5,0 Mio"), 60'000);
    }

    void refused_creation() {
        const TestDirectory directory;
        for (const char* part : {"settings.py", "urls.py", "ressources", "templates", "static"}) {
            directory.write(QLatin1String(part), {});
        }
        QFile::link(source_dir + QStringLiteral("runtime/hubs"), QStringLiteral("hubs"));
        directory.fake_command(QStringLiteral("django-admin"), "mkdir $2; touch $2/manage.py");
        directory.fake_command(QStringLiteral("cp"), "");
        directory.fake_command(QStringLiteral("diff"), "");
        directory.fake_command(QStringLiteral("python3"), R"(case $2 in
            migrate) ;;
            compte) echo Raison. >&2; exit $(cat $WORK/status) ;;
            *) exec /usr/bin/python3 "$@" ;;
            esac)");
        NetworkSelectionWindow window(nullptr);
        new CreationForm(window);
        window.show();
        const QString password = QStringLiteral("sésame");
        for (const auto& [status, reasons] :
             {std::make_pair("3", "|||Raison.||"),
              {"4", "||Raison.|||"},
              {"1", "Son administrateur n'a pas pu être créé.|||||"}}) {
            directory.write(QStringLiteral("status"), status);
            QCOMPARE(
                refusals(window,
                         {QStringLiteral("A"), {}, QStringLiteral("anne"), password, password}),
                QByteArray(reasons));
        }
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            QVERIFY(label->text() != QStringLiteral("Raison."));  // it was the reason before
        }
    }

    void creation_form() {
        const TestDirectory directory;
        NetworkSelectionWindow window(nullptr);
        new CreationForm(window);
        window.show();
        QCOMPARE(refusals(window, {}),
                 "Donnez-lui un nom.||Donnez un pseudo à l'administrateur.|"
                 "Donnez un mot de passe.||");
        QVERIFY(refusals(window, {QStringLiteral(" l'été "), {}, {}, QStringLiteral("a"), {}})
                    .endsWith("||Donnez un pseudo à l'administrateur.||Les deux mots de passe ne "
                              "sont pas les mêmes.|"));
        const auto fields = window.findChildren<QLineEdit*>();
        QCOMPARE(fields[1]->text(), QDir::current().filePath(QStringLiteral("l_ete")));
        QVERIFY(fields[3]->echoMode() == QLineEdit::Password &&
                fields[4]->echoMode() == QLineEdit::Password);
    }

    void leaving_the_creation_form() {
        const TestDirectory directory;
        NetworkSelectionWindow window(nullptr);
        const auto* form = new CreationForm(window);
        window.show();
        refusals(window, {QStringLiteral("A")});
        QSignalSpy left(form, &CreationForm::left);
        auto* back = window.findChild<QLabel*>(QStringLiteral("back_link"));
        QTest::mouseClick(back, Qt::RightButton);
        QCoreApplication::processEvents();
        QCOMPARE(left.count(), 0);
        for (const bool yes : {false, true}) {  // "Non" is the default
            int asked = 0;
            QTimer answer;
            connect(&answer, &QTimer::timeout, &window, [&asked, yes] {
                auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                if (question == nullptr) {
                    return;
                }
                ++asked;
                for (QAbstractButton* button : question->buttons()) {
                    if (yes && question->buttonRole(button) == QMessageBox::YesRole) {
                        button->setFocus();
                    }
                }
                QTest::keyClick(question->focusWidget(), Qt::Key_Return);
            });
            answer.start(10);
            QTest::mouseClick(back, Qt::LeftButton);
            QTest::mouseDClick(back, Qt::LeftButton);
            QTest::mouseRelease(back, Qt::LeftButton);
            QCoreApplication::processEvents();
            QCOMPARE(left.count(), yes ? 1 : 0);
            QCOMPARE(asked, 1);
        }
    }
};

QTEST_MAIN(TestWindows)
#include "test_windows.moc"
