#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QMovie>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QtTest>
#include <memory>

#include "clientwindow.h"
#include "mainwindow.h"
#include "networkselectionwindow.h"
#include "setupwindow.h"
#include "test_directory.h"

namespace {

const QString source_dir = QStringLiteral(SOURCE_DIR "/");

/// A working directory with the product's pictures.
class ProductDirectory : public TestDirectory {
public:
    ProductDirectory() {
        QFile::link(source_dir + QStringLiteral("img"), path(QStringLiteral("img")));
        for (const char* file : {"vestrel.gif", "wifi.gif", "style.qss"}) {
            const QString name = QString::fromLatin1(file);
            QFile::link(source_dir + QStringLiteral("runtime/") + name, path(name));
        }
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
    QStringList seen;

public slots:
    void open(const QUrl& url) {
        asked << url.toString();
        seen = snapshot(window);
    }

private:
    const QWidget& window;
};

QStringList expected_snapshot(const QString& name) {
    QFile file(source_dir + QStringLiteral("tests/snapshots/") + name);
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}

QPushButton* button(const QWidget& window, const char* text) {
    for (auto* candidate : window.findChildren<QPushButton*>()) {
        if (candidate->text() == QString::fromUtf8(text)) {
            return candidate;
        }
    }
    return nullptr;
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

const char* const registry = "Atelier|/srv/a|\nFor\xe9t du Nord|/srv/b|\n|/srv/c|\n";

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
        const auto fill = [](const TestDirectory& directory) {
            directory.write(QStringLiteral("networks.data"), registry);
            directory.fake_command(QStringLiteral("nmap"), "true\n");
        };
        {
            const ProductDirectory directory;
            fill(directory);
            const auto window = screen(name);
            QCOMPARE(snapshot(*window), expected_snapshot(name));

            // The buttons of these screens have no action yet, but for the networks'.
            const Browser browser(*window);
            for (auto* candidate : window->findChildren<QPushButton*>()) {
                if (!candidate->property("class").isValid()) {
                    candidate->click();
                }
            }
            QCOMPARE(snapshot(*window), expected_snapshot(name));
            QCOMPARE(directory.read(QStringLiteral("networks.data")), QByteArray(registry));
            QVERIFY(browser.asked.isEmpty());

            QPointer<QMovie> movie;
            for (const auto* label : window->findChildren<QLabel*>()) {
                movie = label->movie() != nullptr ? label->movie() : movie.data();
            }
            auto* selection = qobject_cast<NetworkSelectionWindow*>(window.get());
            if (selection != nullptr) {
                selection->clean_screen();
                selection->remove_layouts(nullptr);
                QVERIFY(selection->layout() == nullptr);
                QVERIFY(selection->findChildren<QWidget*>().isEmpty());
                QVERIFY(movie.isNull());
            }
        }
        // Without the pictures, all the rest stands.
        const TestDirectory directory;
        fill(directory);
        QStringList expected = expected_snapshot(name);
        expected.replaceInStrings(QStringLiteral(" picture"), QStringLiteral(" empty"))
            .replaceInStrings(QStringLiteral(" running"), QStringLiteral(" stopped"));
        QCOMPARE(snapshot(*screen(name)), expected);
    }

    void start_sequence_data() {
        QTest::addColumn<QByteArray>("address");
        QTest::addColumn<int>("processes");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QByteArray>("commands");
        QTest::newRow("found running")
            << QByteArray("192.0.2.10") << 2 << QStringLiteral("http://192.0.2.10:8000")
            << QByteArray("ifconfig\nps\nifconfig\n");
        QTest::newRow("no own address") << QByteArray() << 2 << QStringLiteral("http://:8000")
                                        << QByteArray("ifconfig\nps\nifconfig\n");
        QTest::newRow("not found running")
            << QByteArray("192.0.2.10") << 1 << QString() << QByteArray("ifconfig\nps\n");
    }
    void start_sequence() {
        QFETCH(QByteArray, address);
        QFETCH(int, processes);
        QFETCH(QString, asked);
        const ProductDirectory directory;
        directory.write(QStringLiteral("networks.data"), registry);
        directory.fake_command(QStringLiteral("ifconfig"),
                               "echo ifconfig >> log; echo '  inet " + address + "'\n");
        directory.fake_command(QStringLiteral("ps"),
                               "echo ps >> log; yes 'me 4 Tesquin runserver' | head -n " +
                                   QByteArray::number(processes) + "\n");
        directory.fake_command(QStringLiteral("gnome-terminal"),
                               "echo \"$4\" > $WORK/t && mv $WORK/t $WORK/command\n");
        const auto window = screen(QStringLiteral("home"));
        const Browser browser(*window);
        QElapsedTimer clock;
        clock.start();
        QTest::mouseClick(button(*window, "Forét du Nord"), Qt::LeftButton);

        QCOMPARE(browser.asked.join(QLatin1Char(' ')), asked);
        if (asked.isEmpty()) {
            QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("loading")));
        } else {
            const QStringList cleared = {
                QStringLiteral("[Accueil Quorvale] NetworkSelectionWindow 800x400 "
                               "{ background: #fff;}"),
                QString()};
            QCOMPARE(browser.seen, cleared);
            QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("ready")));
            QVERIFY(clock.elapsed() >= 2000);
        }
        QTEST(directory.read(QStringLiteral("log")), "commands");
        QTRY_COMPARE(directory.read(QStringLiteral("command")),
                     "cd /srv/b && python3 manage.py runserver " + address + ":8000 ; exec bash\n");
    }

    void style_sheet_and_background() {
        const ProductDirectory directory;
        directory.write(QStringLiteral("networks.data"), registry);
        qApp->setStyleSheet(QString::fromLatin1(directory.read(QStringLiteral("style.qss"))));
        const QImage ready = screen(QStringLiteral("ready"))->grab().toImage();
        for (const QPoint& corner :
             {QPoint(0, 0), QPoint(799, 0), QPoint(0, 399), QPoint(799, 399)}) {
            QCOMPARE(ready.pixelColor(corner), QColor(0x33, 0x99, 0xff));
        }
        // On a white page and on a palette's, a network's button shows its state.
        for (const char* page_style : {" background: #fff;", ""}) {
            const auto window = screen(QStringLiteral("home"));
            window->setStyleSheet(QString::fromLatin1(page_style));
            window->show();
            window->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(window.get()));
            QPushButton* atelier = button(*window, "Atelier");
            QList<QImage> states;
            const auto add_state = [&states, atelier] { states << atelier->grab().toImage(); };
            button(*window, "")->setFocus();
            add_state();
            QTest::mouseMove(atelier);
            QTRY_VERIFY(atelier->underMouse());
            add_state();
            atelier->setDown(true);
            add_state();
            atelier->setDown(false);
            QTest::mouseMove(window.get(), QPoint(1, 1));
            QTRY_VERIFY(!atelier->underMouse());
            atelier->setFocus();
            add_state();
            for (int i = 0; i < states.size(); ++i) {
                QCOMPARE(states.indexOf(states[i]), i);
            }
        }
        qApp->setStyleSheet(QString());
    }

    void client_finds_and_opens() {
        const ProductDirectory directory;
        directory.fake_command(QStringLiteral("ifconfig"), "echo '  inet 192.0.2.10'\n");
        directory.fake_command(QStringLiteral("nmap"),
                               "printf 'Nmap scan report for %s (192.0.2.%s)\\n' a 5 b 7 c 9\n");
        directory.fake_command(QStringLiteral("curl"), R"sh(case "$*" in
            *.5:8000/_infos/kl/) printf 'Atelier Nord';;
            *.7:8000/_infos/kl/) printf '\311cole';;
            *.9:8000/_infos/kl/) ;;
            *) echo 'HTTP/1.1 200 OK';;
            esac)sh");
        const auto window = screen(QStringLiteral("search"));
        QCOMPARE(snapshot(*window), expected_snapshot(QStringLiteral("list")));

        const Browser browser(*window);
        QTest::mouseClick(button(*window, "École"), Qt::LeftButton);
        QCOMPARE(browser.asked, QStringList(QStringLiteral("http://192.0.2.7:8000")));
        QCOMPARE(browser.seen, expected_snapshot(QStringLiteral("list")));
        QStringList connected = expected_snapshot(QStringLiteral("connected"));
        connected.replaceInStrings(QStringLiteral(" { background: #fff;}"), QString());
        QCOMPARE(snapshot(*window), connected);
    }

    void designer_window() {
        MainWindow window(nullptr);
        QCOMPARE(window.objectName() + window.windowTitle(),
                 QStringLiteral("MainWindowMainWindow"));
        QCOMPARE(window.size(), QSize(800, 600));
        window.resize(640, 480);
        QCOMPARE(window.size(), QSize(640, 480));
    }
};

QTEST_MAIN(TestWindows)
#include "test_windows.moc"
