#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QProcess>
#include <QtTest>
#include <csignal>
#include <functional>

#include "djangomanager.h"
#include "network.h"
#include "server_processes.h"
#include "test_directory.h"

class TestServerProcesses : public QObject {
    Q_OBJECT

private slots:
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

    void launcher() {
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("gnome-terminal"),
                               "printf '%s|' $$ \"$@\" > $WORK/t; mv $WORK/t $WORK/called");
        int result = -1;
        const Output output = output_of([&result] { result = DjangoManager().launch("/a b"); });
        QCOMPARE(result, 0);
        QCOMPARE(output.err, QByteArray());
        QTRY_VERIFY(QFile::exists(QStringLiteral("called")));
        const QByteArray call = directory.read(QStringLiteral("called"));
        const QByteArray pid = call.left(call.indexOf('|'));
        QCOMPARE(call, pid + "|--|bash|-c|cd /a b && python3 manage.py runserver; exec bash|");
        QCOMPARE(output.out,
                 "Le serveur Django a été lancé dans un nouveau terminal (PID " + pid + ").\n");
    }

    /// The process that was to become the terminal ends: it is not a second one of the program.
    void no_terminal() {
        const std::pair<std::function<void()>, QByteArray> rows[] = {
            {[] { DjangoManager().launch("/d"); }, "Erreur : impossible de lancer le terminal.\n"},
            {[] { Network().launch(); }, ""},
        };
        while (waitpid(-1, nullptr, 0) > 0) {  // the terminals of the tests before
        }
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("ifconfig"), "");
        qputenv("PATH", QFile::encodeName(directory.path(QStringLiteral("bin"))));
        for (const auto& [launch, complaint] : rows) {
            const pid_t self = getpid();
            int status = 0;
            const Output output = output_of([&, &action = launch] {
                action();
                if (getpid() != self) {
                    _exit(2);
                }
                waitpid(-1, &status, 0);
            });
            QCOMPARE(WEXITSTATUS(status), 1);
            QVERIFY(output.err.endsWith(complaint));
        }
    }
};

QTEST_GUILESS_MAIN(TestServerProcesses)
#include "test_server_processes.moc"
