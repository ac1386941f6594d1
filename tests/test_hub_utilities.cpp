#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QScopeGuard>
#include <QtTest>
#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <stdexcept>

#include "background_command.h"
#include "djangomanager.h"
#include "hub_utilities.h"
#include "listed_network.h"
#include "network.h"
#include "network_names.h"
#include "registered_networks.h"
#include "registry_writer.h"
#include "server_processes.h"
#include "test_directory.h"

namespace {

using namespace std::string_literals;
using Records = std::vector<Network*>;

/// Runs an action under a lowered soft limit of this process.
void with_limit(__rlimit_resource resource, rlim_t value, const std::function<void()>& action) {
    rlimit old_limit{};
    getrlimit(resource, &old_limit);
    rlimit limit = old_limit;
    limit.rlim_cur = value;
    setrlimit(resource, &limit);
    const auto restore = qScopeGuard([&] { setrlimit(resource, &old_limit); });
    action();
}

/// The records as the registry lines that they came from, then deletes them.
QByteArray taken(Records& records) {
    std::string lines;
    for (const Network* network : records) {
        lines += network->name + "|" + network->path + "|" + network->address + "\n";
    }
    qDeleteAll(records);
    records.clear();
    return QByteArray::fromStdString(lines);
}

QByteArray joined(const std::vector<std::string>& texts) {
    std::string lines;
    for (const std::string& text : texts) {
        lines += "<" + text + ">";
    }
    return QByteArray::fromStdString(lines);
}

bool fork_is_refused = false;

}  // namespace

/// In place of the C library's, for the whole test.
extern "C" pid_t fork() noexcept {
    return fork_is_refused ? -1 : _Fork();
}

class TestHubUtilities : public QObject {
    Q_OBJECT

private slots:
    void command_output() {
        const QByteArray long_line(1000, 'x');
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"printf 'abc\\n\\n'", "abc\n"},
            {"printf abc", "abc"},
            {"printf 'abc\\r\\n'", "abc\r"},
            {"echo " + long_line, long_line},
            {R"(printf 'ab\0cd\nef\n')", "abef"},           // a NUL hides the rest of its line
            {"printf '\\0%0200d' 0", QByteArray(74, '0')},  // or of its piece of a long line
            {"no-such-command 2>&-", ""},
            {"printf x; exec >&-; sleep 0.2; touch ended", "x"},
        };
        const TestDirectory directory;
        for (const auto& [command, output] : rows) {
            const std::string actual = exec_cmd(command.toStdString());
            QCOMPARE(command + "\n" + QByteArray::fromStdString(actual), command + "\n" + output);
        }
        QVERIFY(QFile::exists(QStringLiteral("ended")));
    }

    void command_that_cannot_start() {
        QByteArray message;
        const Output output = output_of([&message] {
            // One descriptor is left, a pipe takes two; with none, sanitizers would stop us.
            const int next = dup(STDIN_FILENO);
            close(next);
            try {
                with_limit(RLIMIT_NOFILE, static_cast<rlim_t>(next) + 1, [] { exec_cmd("true"); });
            } catch (const std::runtime_error& error) {
                message = error.what();
            }
        });
        QCOMPARE(message, QByteArray("Erreur lors de l'exécution de la commande."));
        QCOMPARE(output.out, QByteArray("Oh Oh"));
    }

    void running_check_that_cannot_start() {
        const TestDirectory directory;
        int running = -1;
        const int next = dup(STDIN_FILENO);
        close(next);
        // Three descriptors: the file of the numbers is opened first, then a pipe takes two.
        with_limit(RLIMIT_NOFILE, static_cast<rlim_t>(next) + 2,
                   [&] { running = Network().is_launched(); });
        QCOMPARE(running, 1);  // the operator looks at the network's terminal
    }

    void refused_fork() {
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("gnome-terminal"), "exit 3");
        int statuses[2] = {-1, -1};
        fork_is_refused = true;
        const Output output = output_of([&statuses] {
            statuses[0] = DjangoManager().launch("/d/a");
            statuses[1] = Network("A", "/d/a", "").launch();
        });
        fork_is_refused = false;
        QCOMPARE(output.err, QByteArray("Erreur : impossible de forker.\n"));
        QCOMPARE(statuses[0], 1);
        QCOMPARE(statuses[1], 0);
    }

    void own_address() {
        const QByteArray loopback = "lo: flags\n   inet 127.0.0.1  netmask 255.0.0.0\n";
        const QByteArray first = "eth0:\n   inet 192.0.2.7  netmask x\n   inet6 fe80::1  scope\n";
        const std::pair<QByteArray, std::string> rows[] = {
            {loopback, ""},
            {first + loopback, "192.0.2.7"},
            {first + "wlan0:\n   inet 198.51.100.4  x\n" + loopback, "198.51.100.4"},
        };
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("ifconfig"), "cat report\n");
        for (const auto& [report, address] : rows) {
            directory.write(QStringLiteral("report"), report);
            QCOMPARE(getIp(), address);
        }
    }

    void registry() {
        const auto file = QByteArray::fromStdString(
            "A|/d/a|\n"
            "too few|fields\n"
            "\n"
            " B | /d/b |x|rest\r\n"
            "|/d/c|\n"
            "\xef\xbb\xbf\xc3\xa9\x00\xff|/d\t|"s);
        const TestDirectory directory;
        directory.write(QStringLiteral("networks.data"), file);
        Records networks = {new Network("there", "before", "")};
        const Output output = output_of([&networks] { read_hub_networks(&networks); });
        QCOMPARE(taken(networks),
                 QByteArray::fromStdString("there|before|\n"
                                           "A|/d/a|\n"
                                           " B | /d/b |\n"
                                           "|/d/c|\n"
                                           "\xef\xbb\xbf\xc3\xa9\x00\xff|/d\t|\n"s));
        QCOMPARE(output.out, file + '\n');
        const QByteArrayList complaints = output.err.split('\n');
        QCOMPARE(complaints.size(), 3);
        QVERIFY(complaints[0].startsWith("networks.data, ligne 2 "));
        QVERIFY(complaints[1].startsWith("networks.data, ligne 3 "));
        QFile::remove(QStringLiteral("networks.data"));
        QCOMPARE(output_of([&networks] { read_hub_networks(&networks); }).err,
                 QByteArray("Impossible d'ouvrir le fichier JSON.\n"));
    }

    void recording() {
        const struct {
            QByteArray before;
            std::string name;
            std::string project;
            QByteArray after;  ///< the contents before, when the network is refused
        } rows[] = {
            {"A|/d/a|\n", "É t", "/d/b", "A|/d/a|\nÉ t|/d/b|\n"},
            {"A|/d/a|", "B", "/d/b", "A|/d/a|\nB|/d/b|\n"},
            {"", "A", "/d/a", "A|/d/a|\n"},
            {"A|/d/a|", "B|", "/d/b", "A|/d/a|"},
            {"A|/d/a|", "B", "/d\n/b", "A|/d/a|"},
            {"A|/d/a|", "", "/d/b", "A|/d/a|"},
            {"A|/d/a|", "B", "", "A|/d/a|"},
            {"A|/d/a|\nB|/d|", "A", "/d/b", "A|/d/a|\nB|/d|"},
        };
        for (const auto& row : rows) {
            const TestDirectory directory;
            directory.write(QStringLiteral("networks.data"), row.before);
            int result = -1;
            const Output output =
                output_of([&] { result = record_hub_network(row.name, row.project); });
            QCOMPARE(directory.read(QStringLiteral("networks.data")), row.after);
            QCOMPARE(result, row.after == row.before ? 1 : 0);
            QCOMPARE(output.err.count('\n'), result);
        }
    }

    void a_command_clears_up_when_its_owner_goes() {
        const TestDirectory directory;
        auto owner = std::make_unique<QObject>();
        const QString script = QStringLiteral(
            "trap 'touch cleared; exit' TERM; touch begun; while :; do sleep 0.05; done");
        bool called = false;
        run_in_background(*owner, {QStringLiteral("sh"), QStringLiteral("-c"), script},
                          QDir::currentPath(), {}, [&](int, const QString&) { called = true; });
        QTRY_VERIFY(QFile::exists(QStringLiteral("begun")));
        owner.reset();
        QVERIFY(QFile::exists(QStringLiteral("cleared")));
        QVERIFY(!called);
    }

    void recording_takes_turns() {
        const TestDirectory directory;
        QFile other(QStringLiteral(".networks.lock"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        QCOMPARE(flock(other.handle(), LOCK_EX), 0);
        auto result =
            std::async(std::launch::async, [] { return record_hub_network("A", "/second"); });
        QVERIFY(result.wait_for(std::chrono::milliseconds(300)) == std::future_status::timeout);
        directory.write(QStringLiteral("networks.data"), "A|/first|\n");
        other.close();
        QCOMPARE(result.get(), 1);
        QCOMPARE(directory.read(QStringLiteral("networks.data")), QByteArray("A|/first|\n"));
    }

    void recording_on_a_full_disk() {
        const TestDirectory directory;
        const QByteArray before = QByteArray(2000, 'n') + "|/d|\n";
        directory.write(QStringLiteral("networks.data"), before);
        std::signal(SIGXFSZ, SIG_IGN);
        int result = -1;
        with_limit(RLIMIT_FSIZE, 2010, [&] { result = record_hub_network("A", "/directory"); });
        QCOMPARE(result, 1);
        QCOMPARE(directory.read(QStringLiteral("networks.data")), before);
        QCOMPARE(QDir().entryList(QDir::Files), QStringList(QStringLiteral("networks.data")));
    }

    void running_check() {
        const QByteArray others =
            "me 7 0.0 python3 manage.py runserver\nme 8 0.1 ls /Tesquin\n"
            "me 41 0.0 sh -c ps aux |grep Tesquin|grep runserver|awk\n";
        const QByteArray server = "me 52 0.1 bash -c cd /srv/Tesquin/a && python3 x runserver\n";
        const struct {
            QByteArray processes;
            int running;
            QByteArray found;
        } rows[] = {
            {"", 0, ""},
            {others, 0, "41\n"},
            {others + server, 1, "41\n52\n"},
            {server + others + server, 1, "52\n41\n52\n"},
        };
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("ps"), "[ \"$*\" = aux ] && cat processes");
        for (const auto& row : rows) {
            directory.write(QStringLiteral("processes"), row.processes);
            QCOMPARE(Network().is_launched(), row.running);
            QCOMPARE(directory.read(QStringLiteral("net_hub_tmp.lo")), row.found);
        }
        // The answer stays the same where the file cannot be written.
        QFile::remove(QStringLiteral("net_hub_tmp.lo"));
        QDir().mkdir(QStringLiteral("net_hub_tmp.lo"));
        QCOMPARE(Network().is_launched(), 1);
    }

    void names_of_a_network() {
        const TestDirectory directory;
        QFile::link(QStringLiteral(SOURCE_DIR "/runtime/hubs"), QStringLiteral("hubs"));
        const QSet<QString> taken = python_names();
        const char* const rows[][3] = {
            {"L'été & Cœur  n°3|", "L_ete_Coeur_n_3", "L'\351t\351 && Coeur n\2603"},
            {"1er étage", "Reseau_1er_etage", "1er \351tage"},
            {"-h;touch b", "h_touch_b", "-h;touch b"},
            {"Łódź…", "Lodz", "L\363dz..."},
            {"***", "Reseau", "***"},
            {"json", "json_reseau", "json"},
            {"class", "class_reseau", "class"},
            {"django", "django_reseau", "django"},
            {"hubs", "hubs", "hubs"},
        };
        for (const auto& [display, name, recorded] : rows) {
            QCOMPARE(directory_name(QString::fromUtf8(display), taken), QString::fromUtf8(name));
            QCOMPARE(registry_name(QString::fromUtf8(display)), std::string(recorded));
        }
        QCOMPARE(directory_name(QString(300, QLatin1Char('n')), taken).size(), 60);
    }

    /// The template's own rule is tested by the same table.
    void server_command_lines() {
        QFile table(QStringLiteral(SOURCE_DIR "/tests/server_command_lines"));
        QVERIFY(table.open(QIODevice::ReadOnly));
        while (!table.atEnd()) {
            const QByteArray line = table.readLine().trimmed();
            std::vector<std::string> words;
            for (const QByteArray& word : line.split('|').mid(1)) {
                words.push_back(word.toStdString());
            }
            QVERIFY2(is_server_command(words) == line.startsWith("yes"), line.constData());
        }
    }

    void display_names() {
        const TestDirectory directory;
        directory.write(QStringLiteral("networks.data"), "A|a|\n&&\t|b|\nlost|\n|/d//c/|\n");
        QDir().mkdir(QStringLiteral("a"));
        const QByteArray long_name = QByteArray("\u00e9").repeated(600);
        const std::pair<QByteArray, QString> rows[] = {
            {"\xef\xbb\xbf \r\n\n  L'\u00e9t\u00e9  \r\nx", QStringLiteral("L'été")},
            {"\xc9t\xe9 \x9c\n", QStringLiteral("Été œ")},
            {"a" + long_name, QLatin1Char('a') + QString(99, QChar(0xe9))},
            {QByteArray(98, 'a') + "\U0001F600\U0001F601\U0001F602",
             QString(98, QLatin1Char('a')) + QStringLiteral("😀😁")},
            {"\x07\nA\x1b[1mB\n", QStringLiteral("A [1mB")},
            {"\xc9t\xe9\x81\n", QStringLiteral("Été")},
            {" \n", QStringLiteral("A")},
        };
        for (const auto& [contents, name] : rows) {
            directory.write(QStringLiteral("a/nom.txt"), contents);
            const auto networks = registered_networks();
            QCOMPARE(networks[0].name, name);
            QCOMPARE(networks[1].name, QStringLiteral("&"));
            QCOMPARE(networks[2].name, QStringLiteral("c"));
        }
        QFile::remove(QStringLiteral("a/nom.txt"));
        QCOMPARE(mkfifo("a/nom.txt", 0600), 0);
        QCOMPARE(registered_networks()[0].name, QStringLiteral("A"));
    }

    void list_of_networks() {
        const QString output = QStringLiteral("A\t/d/a\t2048\ten marche\nB\t/d/b\t0\tabsent");
        const std::pair<std::string, QString> rows[] = {{"/d/b", QStringLiteral("absent")},
                                                        {"/d//a/", QStringLiteral("en marche")},
                                                        {"/d", {}}};
        for (const auto& [directory, state] : rows) {
            const auto found = find_listed(output, {QStringLiteral("A"), directory});
            QCOMPARE(found ? found->state : QString(), state);
        }
    }

    void discovery() {
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("ifconfig"), "echo '  inet 192.0.2.10  netmask x'\n");
        directory.fake_command(QStringLiteral("nmap"), R"(echo "nmap $*" >> log
            echo 'Starting Nmap'
            echo 'Nmap scan report for atelier (192.0.2.5)'
            echo 'Nmap scan report for 192.0.2.6'
            echo 'Nmap scan report for forge (192.0.2.9)')");
        directory.fake_command(QStringLiteral("curl"), R"(echo "curl $*" >> log
            case "$*" in
                *http://:8000/) exit 3;;
                *192.0.2.5*kl/) printf '  Atelier\n  du\tNord\n\n';;
                *192.0.2.9*kl/) printf '$(touch b) `touch b` ; touch b \351';;
                *192.0.2.5*) printf 'HTTP/1.0 404 Not Found\r\n\r\n';;
                *) printf 'HTTP/1.1 200 OK\r\nServer: x\r\n\r\n';;
            esac)");
        QByteArray servers;
        QByteArray names;
        const Output output = output_of([&] {
            servers = joined(find_servers());
            names = joined(find_servers_names({"192.0.2.5:8000", "192.0.2.9:8000"}));
        });
        QCOMPARE(servers, QByteArray("<192.0.2.9:8000>"));
        QCOMPARE(names, QByteArray("<Atelier du Nord><$(touch b) `touch b` ; touch b \xe9>"));
        QCOMPARE(output.out, names.replace('<', "").replace('>', ""));
        QVERIFY(!QFile::exists(QStringLiteral("b")));
        QCOMPARE(directory.read(QStringLiteral("log")),
                 QByteArray("nmap -sn 192.0.2.10/24\n"
                            "curl --silent --head http://192.0.2.5:8000/\n"
                            "curl --silent --head http://:8000/\n"
                            "curl --silent --head http://192.0.2.9:8000/\n"
                            "curl -s http://192.0.2.5:8000/_infos/kl/\n"
                            "curl -s http://192.0.2.5:8000/_infos/kl/\n"
                            "curl -s http://192.0.2.9:8000/_infos/kl/\n"
                            "curl -s http://192.0.2.9:8000/_infos/kl/\n"));
    }
};

QTEST_GUILESS_MAIN(TestHubUtilities)
#include "test_hub_utilities.moc"
