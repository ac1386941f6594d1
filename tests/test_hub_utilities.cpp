#include <sys/resource.h>
#include <unistd.h>

#include <QDir>
#include <QtTest>
#include <csignal>
#include <memory>
#include <stdexcept>

#include "hub_utilities.h"
#include "network.h"
#include "workbench.h"

namespace {

using Records = std::vector<Network*>;

/// Lowers a soft limit of this process for a while.
class Limit {
public:
    Limit(__rlimit_resource limited, rlim_t value) : resource(limited) {
        getrlimit(resource, &old_limit);
        rlimit limit = old_limit;
        limit.rlim_cur = value;
        setrlimit(resource, &limit);
    }
    ~Limit() {
        setrlimit(resource, &old_limit);
    }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    __rlimit_resource resource;
    rlimit old_limit{};
};

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

}  // namespace

class TestHubUtilities : public QObject {
    Q_OBJECT

private slots:
    void command_output_data() {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray long_line(1000, 'x');
        QTest::newRow("nothing") << QByteArray("true") << QByteArray();
        QTest::newRow("one line feed") << QByteArray("printf 'abc\\n'") << QByteArray("abc");
        QTest::newRow("two line feeds") << QByteArray("printf 'abc\\n\\n'") << QByteArray("abc\n");
        QTest::newRow("no line feed") << QByteArray("printf abc") << QByteArray("abc");
        QTest::newRow("CR LF") << QByteArray("printf 'abc\\r\\n'") << QByteArray("abc\r");
        QTest::newRow("long line") << QByteArray("echo " + long_line) << long_line;
        QTest::newRow("NUL hides the rest of its line")
            << QByteArray(R"(printf 'ab\0cd\nef\n')") << QByteArray("abef");
        QTest::newRow("NUL hides the rest of its piece")
            << QByteArray("printf '\\0%0200d' 0") << QByteArray(74, '0');
        QTest::newRow("failing") << QByteArray("echo a; exit 3") << QByteArray("a");
        QTest::newRow("missing") << QByteArray("no-such-command 2>&-") << QByteArray();
    }
    void command_output() {
        QFETCH(QByteArray, command);
        QTEST(QByteArray::fromStdString(exec_cmd(command.toStdString())), "expected");
    }

    void command_that_cannot_start() {
        QByteArray message;
        const Output output = output_of([&message] {
            // One descriptor is left, a pipe takes two; with none, sanitizers would stop us.
            const int next = dup(STDIN_FILENO);
            close(next);
            try {
                const Limit one_descriptor(RLIMIT_NOFILE, static_cast<rlim_t>(next) + 1);
                exec_cmd("true");
            } catch (const std::runtime_error& error) {
                message = error.what();
            }
        });
        QCOMPARE(message, QByteArray("Erreur lors de l'exécution de la commande."));
        QCOMPARE(output.out, QByteArray("Oh Oh"));
    }

    void own_address_data() {
        QTest::addColumn<QByteArray>("report");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray loopback = "lo: flags\n   inet 127.0.0.1  netmask 255.0.0.0\n";
        const QByteArray first = "eth0:\n   inet 192.0.2.7  netmask x\n   inet6 fe80::1  scope\n";
        QTest::newRow("loopback only") << loopback << QByteArray();
        QTest::newRow("one") << first + loopback << QByteArray("192.0.2.7");
        QTest::newRow("last of two")
            << first + "wlan0:\n   inet 198.51.100.4  x\n" + loopback << QByteArray("198.51.100.4");
    }
    void own_address() {
        QFETCH(QByteArray, report);
        const Workbench bench;
        bench.write(QStringLiteral("report"), report);
        bench.stand_in(QStringLiteral("ifconfig"), "cat report\n");
        QTEST(QByteArray::fromStdString(getIp()), "expected");
    }

    void registry_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("records");
        QTest::addColumn<QByteArray>("skipped");
        const auto row = [](const char* name, const QByteArray& file, const QByteArray& records,
                            const QByteArray& skipped = QByteArray()) {
            QTest::newRow(name) << file << records << skipped;
        };
        row("empty", "", "");
        row("two", "A|/d/a|\nB|/d/b|\n", "A|/d/a|\nB|/d/b|\n");
        row("more fields", "A|/d/a|x|y|rest\n", "A|/d/a|\n");
        row("CR LF", "A|/d/a|\r\n", "A|/d/a|\n");
        row("blanks", "A | /d/a |\n", "A | /d/a |\n");
        row("empty name", "|/d/a|\n", "|/d/a|\n");
        row("no last line feed", "A|/d/a|\nB|/d/b|", "A|/d/a|\nB|/d/b|\n");
        row("every byte", QByteArray("\xef\xbb\xbf\xc3\xa9\x00\xff|/d\t|\n", 13),
            QByteArray("\xef\xbb\xbf\xc3\xa9\x00\xff|/d\t|\n", 13));
        row("too few fields", "A|/d/a\n\nno bars\nB|/d/b|\n", "B|/d/b|\n", "1,2,3");
    }
    void registry() {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, skipped);
        const Workbench bench;
        bench.write(QStringLiteral("networks.data"), file);
        Records networks = {new Network("there", "before", "")};
        const Output output = output_of([&networks] { read_hub_networks(&networks); });

        QFETCH(QByteArray, records);
        QCOMPARE(taken(networks), "there|before|\n" + records);
        QCOMPARE(output.out,
                 file.isEmpty() || file.endsWith('\n') ? file : QByteArray(file + '\n'));
        QByteArrayList numbers;
        for (const QByteArray& line : output.err.split('\n')) {
            numbers << line.mid(21).split(' ').first();
        }
        numbers.removeLast();
        QCOMPARE(numbers.join(','), skipped);
    }

    void registry_that_cannot_be_read() {
        const Workbench bench;
        Records networks;
        const QByteArray complaint = "Impossible d'ouvrir le fichier JSON.\n";
        Output output = output_of([&networks] { read_hub_networks(&networks); });
        QCOMPARE(output.err, complaint);
        QCOMPARE(output.out, QByteArray());
        QVERIFY(networks.empty());

        QDir().mkdir(QStringLiteral("networks.data"));
        output = output_of([&networks] { read_hub_networks(&networks); });
        QVERIFY(networks.empty());
        QCOMPARE(record_hub_network("A", "/d/a"), 1);
    }

    void registry_of_many_lines() {
        const Workbench bench;
        QByteArray file;
        for (int i = 0; i < 100000; ++i) {
            file += "n" + QByteArray::number(i) + "|/d/" + QByteArray::number(i) + "|\n";
        }
        bench.write(QStringLiteral("networks.data"), file);
        Records networks;
        QCOMPARE(output_of([&networks] { read_hub_networks(&networks); }).out, file);
        QCOMPARE(taken(networks), file);
    }

    void recording_data() {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("directory");
        QTest::addColumn<QByteArray>("after");
        const auto row = [](const char* label, const char* before, const char* name,
                            const char* directory, const char* after) {
            QTest::newRow(label) << QByteArray(before) << QByteArray(name) << QByteArray(directory)
                                 << QByteArray(after);
        };
        row("first", "", "A", "/d/a", "A|/d/a|\n");
        row("next", "A|/d/a|\n", "É t", "/d/b", "A|/d/a|\nÉ t|/d/b|\n");
        row("missing line feed", "A|/d/a|", "B", "/d/b", "A|/d/a|\nB|/d/b|\n");
        row("bar", "A|/d/a|", "B|", "/d/b", nullptr);
        row("line feed", "A|/d/a|", "B", "/d\n/b", nullptr);
        row("empty name", "A|/d/a|", "", "/d/b", nullptr);
        row("empty directory", "A|/d/a|", "B", "", nullptr);
    }
    void recording() {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, directory);
        QFETCH(QByteArray, after);
        const Workbench bench;
        bench.write(QStringLiteral("networks.data"), before);
        int result = -1;
        const Output output = output_of(
            [&] { result = record_hub_network(name.toStdString(), directory.toStdString()); });
        QCOMPARE(result, after.isNull() ? 1 : 0);
        QCOMPARE(output.err.count('\n'), result);
        QCOMPARE(bench.read(QStringLiteral("networks.data")), after.isNull() ? before : after);
        QCOMPARE(is_recorded(name.toStdString()), !after.isNull());
    }

    void recording_on_a_full_disk() {
        const Workbench bench;
        const QByteArray before = QByteArray(2000, 'n') + "|/d|\n";
        bench.write(QStringLiteral("networks.data"), before);
        std::signal(SIGXFSZ, SIG_IGN);
        int result = -1;
        {
            const Limit small_files(RLIMIT_FSIZE, 2010);
            result = record_hub_network("A", "/directory");
        }
        QCOMPARE(result, 1);
        QCOMPARE(bench.read(QStringLiteral("networks.data")), before);
        QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden),
                 QStringList(QStringLiteral("networks.data")));
    }

    void lines_of_a_text() {
        QCOMPARE(joined(splitLines("a\n\nb\n")), QByteArray("<a><><b>"));
        QCOMPARE(joined(splitLines("a\nb")), QByteArray("<a><b>"));
        QCOMPARE(joined(splitLines("")), QByteArray());
    }

    void discovery() {
        const Workbench bench;
        bench.stand_in(QStringLiteral("ifconfig"), "echo '  inet 192.0.2.10  netmask x'\n");
        bench.stand_in(QStringLiteral("nmap"), R"(echo "nmap $*" >> log
            echo 'Starting Nmap'
            echo 'Nmap scan report for atelier (192.0.2.5)'
            echo 'Nmap scan report for 192.0.2.6'
            echo 'Nmap scan report for forge (192.0.2.9)')");
        bench.stand_in(QStringLiteral("curl"), R"(echo "curl $*" >> log
            case "$*" in
                *http://:8000/) exit 3;;
                *192.0.2.5*kl/) printf '  Atelier\n  du\tNord\n\n';;
                *192.0.2.9*kl/) printf 'Forg\351';;
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
        QCOMPARE(names, QByteArray("<Atelier du Nord><Forg\xe9>"));
        QCOMPARE(output.out, QByteArray("Atelier du NordForg\xe9"));
        QCOMPARE(bench.read(QStringLiteral("log")),
                 QByteArray("nmap -sn 192.0.2.10/24\n"
                            "curl --silent --head http://192.0.2.5:8000/\n"
                            "curl --silent --head http://:8000/\n"
                            "curl --silent --head http://192.0.2.9:8000/\n"
                            "curl -s http://192.0.2.5:8000/_infos/kl/\n"
                            "curl -s http://192.0.2.5:8000/_infos/kl/\n"
                            "curl -s http://192.0.2.9:8000/_infos/kl/\n"
                            "curl -s http://192.0.2.9:8000/_infos/kl/\n"));
    }

    void discovery_without_an_address() {
        const Workbench bench;
        bench.stand_in(QStringLiteral("ifconfig"), "true\n");
        bench.stand_in(QStringLiteral("nmap"), "echo \"nmap $*\" >> log\n");
        bench.stand_in(QStringLiteral("curl"), "echo curl >> log\n");
        QVERIFY(find_servers().empty());
        QVERIFY(find_servers_names({}).empty());
        QCOMPARE(bench.read(QStringLiteral("log")), QByteArray("nmap -sn /24\n"));
    }

    void project_creation() {
        const Workbench bench;
        bench.stand_in(QStringLiteral("django-admin"), "echo \"django-admin $*\" >> log; exit 1\n");
        bench.stand_in(QStringLiteral("cp"), "echo \"cp $*\" >> log\n");
        QCOMPARE(create_new_network("reseau1", "atelier"), 0);
        QCOMPARE(bench.read(QStringLiteral("log")),
                 QByteArray("django-admin startproject atelier\n"
                            "cp settings.py atelier/reseau1/\n"
                            "cp urls.py atelier/reseau1/\n"
                            "cp -r hubs/ atelier/reseau1/\n"
                            "cp -r ressources/ atelier/reseau1/\n"
                            "cp -r templates/ atelier/reseau1/\n"
                            "cp -r static/ atelier/reseau1/\n"));
    }
};

QTEST_GUILESS_MAIN(TestHubUtilities)
#include "test_hub_utilities.moc"
