#include <csignal>

#include <QDir>
#include <QProcess>
#include <QtTest>

#include "djangomanager.h"
#include "network.h"
#include "server_processes.h"
#include "test_directory.h"

namespace {

/// A terminal that notes how it was called, one argument a line, all at once.
const char* const terminal = "printf '%s\\n' \"$0\" \"$@\" > $WORK/t && mv $WORK/t $WORK/called\n";

/// Waits for the fake terminal, which runs on its own, and returns its arguments.
QByteArray terminal_call(const TestDirectory& directory) {
    const QString called = QStringLiteral("called");
    if (!QTest::qWaitFor([&] { return QFile::exists(directory.path(called)); }, 20000)) {
        return "never called";
    }
    QByteArray call = directory.read(called);
    return call.replace(QFile::encodeName(directory.path(QStringLiteral("bin/"))), "");
}

}  // namespace

class TestServerProcesses : public QObject {
    Q_OBJECT

private slots:
    void launch() {
        const QByteArray with_address =
            "cd /srv/a b && python3 manage.py runserver 10.0.0.7:8000 ; exec bash";
        const QByteArray without = "cd /srv/a b && python3 manage.py runserver :8000 ; exec bash";
        for (const auto& [report, command] :
             {std::make_pair("  inet 10.0.0.7  x", with_address), std::make_pair("", without)}) {
            const TestDirectory directory;
            directory.fake_command(QStringLiteral("ifconfig"),
                                   "echo '" + QByteArray(report) + "'\n");
            directory.fake_command(QStringLiteral("gnome-terminal"), terminal);
            int result = -1;
            const Output output =
                output_of([&result] { result = Network("A", "/srv/a b", "").launch(); });
            QCOMPARE(result, 0);
            QCOMPARE(output.out + output.err, QByteArray());
            QCOMPARE(terminal_call(directory), "gnome-terminal\n--\nbash\n-c\n" + command + "\n");
        }
    }

    void running_check_data() {
        QTest::addColumn<QByteArray>("processes");
        QTest::addColumn<int>("expected");
        QTest::addColumn<QByteArray>("found");
        const QByteArray others =
            "root 1 0.0 /sbin/init\nme 7 0.0 python3 manage.py runserver\nme 8 0.1 ls /Tesquin\n";
        const QByteArray shell = "me 41 0.0 sh -c ps aux |grep Tesquin|grep runserver|awk\n";
        const QByteArray server = "me 52 0.1 bash -c cd /srv/Tesquin/a && python3 x runserver\n";
        QTest::newRow("none at all") << others << 0 << QByteArray();
        QTest::newRow("no server") << others + shell << 0 << QByteArray("41\n");
        QTest::newRow("one server") << shell + server + others << 1 << QByteArray("41\n52\n");
        QTest::newRow("two servers") << server + shell + server << 1 << QByteArray("52\n41\n52\n");
    }
    void running_check() {
        QFETCH(QByteArray, processes);
        QFETCH(QByteArray, found);
        const TestDirectory directory;
        directory.write(QStringLiteral("processes"), processes);
        directory.write(QStringLiteral("net_hub_tmp.lo"), "an earlier check's\n");
        directory.fake_command(QStringLiteral("ps"), "[ \"$*\" = aux ] && cat processes\n");
        QTEST(Network().is_launched(), "expected");
        QCOMPARE(directory.read(QStringLiteral("net_hub_tmp.lo")), found);

        // The answer stays the same where the file cannot be written.
        QFile::remove(QStringLiteral("net_hub_tmp.lo"));
        QDir().mkdir(QStringLiteral("net_hub_tmp.lo"));
        QTEST(Network().is_launched(), "expected");
    }

    void server_that_is_stopped_data() {
        QTest::addColumn<QByteArray>("server");
        QTest::addColumn<bool>("terminal_ends");
        QTest::addColumn<QByteArray>("command");
        const QByteArray launch = "cd $0 && python3 manage.py runserver 10.0.0.7:8000 ; exec bash";
        QTest::newRow("ends at once") << QByteArray() << true << launch;
        QTest::newRow("deaf") << QByteArray("for s in 2, 15: signal.signal(s, signal.SIG_IGN)\n")
                              << true << launch;
        QTest::newRow("in the operator's shell")
            << QByteArray() << false << QByteArray("cd $0; python3 manage.py runserver; exec cat");
    }
    void server_that_is_stopped() {
        QFETCH(QByteArray, server);
        QFETCH(QByteArray, command);
        const TestDirectory directory;
        for (const QString& name : {QStringLiteral("a"), QStringLiteral("b")}) {
            QDir().mkdir(name);
            // Django's server is two processes.
            directory.write(name + QStringLiteral("/manage.py"),
                            "import os, signal, time\n" + server +
                                "os.fork()\nopen(str(os.getpid()), 'w')\ntime.sleep(60)\n");
        }
        QFile::link(QStringLiteral("a"), QStringLiteral("link"));
        QProcess terminal;
        QProcess other;
        for (const auto& [process, name] : {std::make_pair(&terminal, QStringLiteral("a")),
                                            std::make_pair(&other, QStringLiteral("b"))}) {
            process->start(QStringLiteral("bash"),
                           {QStringLiteral("-c"), QString::fromLatin1(command).replace(
                                                      QStringLiteral("$0"), directory.path(name))});
            QTRY_COMPARE(QDir(name).entryList(QDir::Files).size(), 3);
        }
        QVERIFY(find_server_processes(directory.path({}).toStdString()).empty());
        QCOMPARE(find_server_processes("link").size(), std::size_t(2));
        QVERIFY(stop_server("link"));
        QVERIFY(find_server_processes("a").empty());
        QTEST(terminal.waitForFinished(500), "terminal_ends");
        QCOMPARE(find_server_processes("b").size(), std::size_t(2));
        QVERIFY(stop_server("b"));
        other.kill();
        terminal.kill();
        QVERIFY(other.waitForFinished() &&
                (terminal.state() == QProcess::NotRunning || terminal.waitForFinished()));
    }

    void launcher_with_a_terminal() {
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("gnome-terminal"),
                               terminal + QByteArray("echo $$ > pid\n"));
        int result = -1;
        const Output output = output_of([&result] { result = DjangoManager().launch("/a b"); });
        QCOMPARE(result, 0);
        QCOMPARE(output.err, QByteArray());
        QCOMPARE(terminal_call(directory),
                 QByteArray("gnome-terminal\n--\nbash\n-c\n"
                            "cd /a b && python3 manage.py runserver; exec bash\n"));
        QTRY_VERIFY(directory.read(QStringLiteral("pid")).endsWith('\n'));
        QCOMPARE(output.out, "Le serveur Django a été lancé dans un nouveau terminal (PID " +
                                 directory.read(QStringLiteral("pid")).trimmed() + ").\n");
    }

    void launcher_that_fails_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QByteArray>("err");
        QTest::newRow("no terminal")
            << QStringLiteral("PATH= exec $0 /d") << 0
            << QByteArray("Le serveur Django a été lancé dans un nouveau terminal (PID ")
            << QByteArray("Erreur : impossible de lancer le terminal.\n");
        // A limit on processes does not hold for root: another user is given the open program, the
        // way to which may be closed to them. And it keeps a leak check from starting.
        QTest::newRow("no process")
            << QStringLiteral(
                   "[ $(id -u) != 0 ] || user='setpriv --reuid=65534 --clear-groups'; "
                   "ASAN_OPTIONS=detect_leaks=0 exec $user prlimit --nproc=0 "
                   "/proc/self/fd/3 /d 3<$0")
            << 1 << QByteArray() << QByteArray("Erreur : impossible de forker.\n");
    }
    void launcher_that_fails() {
        QFETCH(QString, command);
        QFETCH(QByteArray, out);
        const TestDirectory directory;
        QProcess process;
        process.setStandardErrorFile(directory.path(QStringLiteral("err")));
        process.start(QStringLiteral("sh"), {QStringLiteral("-c"), command,
                                             QStringLiteral(BUILD_DIR "/quorvale-django")});
        QVERIFY(process.waitForFinished());
        QTEST(process.exitCode(), "status");
        QFETCH(QByteArray, err);
        // The child may speak last; and a count of lines that ran has no place to go to.
        QTRY_COMPARE(directory.read(QStringLiteral("err")).left(err.size()), err);
        const QByteArray said = process.readAllStandardOutput();
        QCOMPARE(said.left(out.size()), out);
        QCOMPARE(said.count('\n'), out.isEmpty() ? 0 : 1);
    }
};

QTEST_GUILESS_MAIN(TestServerProcesses)
#include "test_server_processes.moc"
