#include <sys/stat.h>

#include <QDir>
#include <QProcess>
#include <QtTest>

#include "network_names.h"
#include "test_directory.h"

namespace {

QString program(const char* name) {
    return QStringLiteral(BUILD_DIR "/") + QString::fromLatin1(name);
}

struct Run {
    int status;
    QByteArray out;
    QByteArray err;
};

Run run(const QString& command, const QStringList& arguments) {
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(command, arguments);
    process.waitForFinished(-1);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

/// Puts the network template into the working directory.
void place_template() {
    run(QStringLiteral("sh"),
        {QStringLiteral("-c"),
         QStringLiteral("cd " SOURCE_DIR "/runtime && cp -r settings.py urls.py hubs "
                        "ressources templates static \"$0\""),
         QDir::currentPath()});
}

}  // namespace

class TestPrograms : public QObject {
    Q_OBJECT

private slots:
    void start_up_order() {
        const TestDirectory directory;
        directory.fake_command(QStringLiteral("xdg-open"),
                               "echo \"$*\" > $WORK/t && mv $WORK/t $WORK/asked\n");
        const QString fifo = directory.path(QStringLiteral("networks.data"));
        QCOMPARE(mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
        QProcess process;
        process.start(program("quorvale"), QStringList());
        // The program waits for the registry's first line: no window is there yet.
        QTRY_COMPARE(directory.read(QStringLiteral("asked")), QByteArray("quorvale.local:8000\n"));
        QFile writer(fifo);
        QVERIFY(writer.open(QIODevice::WriteOnly));
        writer.write("A|/d/a|\n");
        writer.close();
        QByteArray out;
        QTRY_VERIFY((out.append(process.readAllStandardOutput()), out.startsWith("A|/d/a|\n")));
        QCOMPARE(process.state(), QProcess::Running);
        process.terminate();
        QVERIFY(process.waitForFinished());
    }

    void help() {
        for (const char* name : {"quorvale-client", "quorvale-setup", "quorvale-django",
                                 "quorvale-new", "quorvale-stop", "quorvale-desk"}) {
            const Run help = run(program(name), {QStringLiteral("--help")});
            QVERIFY2(help.status == 0 && help.err.isEmpty(), name);
            QVERIFY2(help.out.startsWith(QByteArray("Usage\u00a0: ") + name), name);
        }
    }

    void stop() {
        const TestDirectory directory;
        directory.write(QStringLiteral("networks.data"),
                        "A|" + directory.path(QStringLiteral("a")).toUtf8() + "|\nB|" +
                            directory.path(QStringLiteral("b")).toUtf8() + "|\nB2|/none|\n");
        for (const QString& name : {QStringLiteral("a"), QStringLiteral("b")}) {
            QDir().mkdir(name);
            directory.write(name + QStringLiteral("/nom.txt"), "Réseau " + name.toUtf8() + "\n");
            directory.write(name + QStringLiteral("/manage.py"),
                            "import time\nopen('on', 'w')\ntime.sleep(60)\n");
        }
        QProcess servers;
        const auto start = [&] {
            QFile::remove(QStringLiteral("a/on"));
            QFile::remove(QStringLiteral("b/on"));
            servers.start(
                QStringLiteral("bash"),
                {QStringLiteral("-c"),
                 QStringLiteral(
                     "for d in a b; do (cd $d; exec python3 manage.py runserver) & done; wait")});
            return QTest::qWaitFor(
                [] {
                    return QFile::exists(QStringLiteral("a/on")) &&
                           QFile::exists(QStringLiteral("b/on"));
                },
                20000);
        };
        const auto stopped = [&](const QStringList& names, int status, const QByteArray& out,
                                 const QByteArray& err) {
            const Run result = run(program("quorvale-stop"), names);
            return result.status == status && result.out == out && result.err == err;
        };
        const QByteArray a = "Le réseau «\u00a0Réseau a\u00a0» est arrêté.\n";
        const QByteArray b = "Le réseau «\u00a0Réseau b\u00a0» est arrêté.\n";
        QVERIFY(start());
        QVERIFY(stopped({QStringLiteral("c")}, 1, "",
                        "Aucun réseau ne s'appelle «\u00a0c\u00a0» ici.\n"));
        QVERIFY(stopped({QStringLiteral("Réseau b")}, 0, b, ""));
        QVERIFY(stopped({QStringLiteral("b")}, 1, "", "Rien n'a été arrêté.\n"));
        QVERIFY(stopped({QStringLiteral("a")}, 0, a, ""));
        QVERIFY(servers.waitForFinished());
        QVERIFY(start());
        QVERIFY(stopped({}, 0, a + b, ""));
        QVERIFY(stopped({}, 1, "", "Rien n'a été arrêté.\n"));
        QVERIFY(servers.waitForFinished());
    }

    void misuse() {
        for (const char* name : {"quorvale-django", "quorvale-new", "quorvale-stop"}) {
            const Run misused =
                run(program(name), {QStringLiteral("a"), QStringLiteral("b"), QString()});
            QCOMPARE(misused.status, 2);
            QVERIFY2(misused.err.startsWith(QByteArray("Usage\u00a0: ") + name), name);
        }
    }

    void new_network() {
        const TestDirectory directory;
        place_template();
        const Run creation = run(program("quorvale-new"), {QStringLiteral("Atelier")});
        QCOMPARE(creation.err, QByteArray());
        QCOMPARE(creation.status, 0);
        QCOMPARE(directory.read(QStringLiteral("networks.data")),
                 "Atelier|" + QDir::currentPath().toUtf8() + "/Atelier|\n");
        for (const char* part :
             {"manage.py", "db.sqlite3", "Atelier/settings.py", "Atelier/urls.py", "Atelier/hubs",
              "Atelier/ressources", "Atelier/templates", "Atelier/static"}) {
            QVERIFY2(QFile::exists(QStringLiteral("Atelier/") + QString::fromLatin1(part)), part);
        }
    }

    void new_network_refused_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QByteArray>("reason");
        const auto row = [](const char* label, const char* name, const QByteArray& before,
                            const QByteArray& reason) {
            QTest::newRow(label) << QString::fromUtf8(name) << QString::fromUtf8(before) << reason;
        };
        row("blank", " ", "true", "donnez-lui un nom");
        row("dangling link", "Forge", "ln -s nowhere Forge", "existe déjà");
        row("recorded", "Été & Cœur", "printf '\\311t\\351 && Coeur|/d|' > networks.data",
            "déjà enregistré");
        row("missing part", "Forge", "rm -r static", "manque ici");
        row("part not copied", "Forge",
            R"(printf '#!/bin/sh\n[ "$1" = urls.py ] || exec /usr/bin/cp "$@"\n' > bin/cp
               chmod +x bin/cp)",
            "n'a pas pu être copié");
        const char* const parts = "settings.py urls.py hubs ressources templates static";
        for (const char* folder : {"a b", "a;b"}) {
            const QByteArray quoted = QByteArray("'") + folder + "'";
            row(folder, "Forge",
                "mkdir " + quoted + "; cp -r " + parts + " " + quoted + "; cd " + quoted,
                "ne prendrait pas tel quel");
        }
        row("no database", "Forge", "echo 1/0 >> settings.py", "base de données");
        row("no account", "Forge", "rm hubs/management/commands/compte.py", "administrateur");
        row("no django-admin", "Forge",
            "printf '#!/bin/false\n' > bin/django-admin; "
            "chmod +x bin/django-admin",
            "n'a pas pu être créé");
    }
    /// Nothing is left of what was made.
    void new_network_refused() {
        QFETCH(QString, name);
        QFETCH(QString, before);
        QFETCH(QByteArray, reason);
        const TestDirectory directory;
        place_template();
        const Run creation =
            run(QStringLiteral("sh"),
                {QStringLiteral("-c"),
                 before + QStringLiteral("\nfiles=$(ls -A); \"$0\" --admin anne \"$1\"; status=$?\n"
                                         "[ \"$(ls -A)\" = \"$files\" ] && exit $status"),
                 program("quorvale-new"), name});
        QCOMPARE(creation.status, 1);
        QVERIFY2(creation.err.contains(reason), creation.err.constData());
        QVERIFY(!directory.read(QStringLiteral("networks.data")).contains("/Forge|"));
    }

    void derived_names() {
        const TestDirectory directory;
        place_template();
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
        };
        for (const auto& [display, name, recorded] : rows) {
            QCOMPARE(directory_name(QString::fromUtf8(display), taken), QString::fromUtf8(name));
            QCOMPARE(registry_name(QString::fromUtf8(display)), std::string(recorded));
        }
    }

    /// With accents, and with the reasons why the administrator is refused.
    void new_network_with_administrator() {
        const TestDirectory directory;
        place_template();
        const auto create = [](const char* pseudonym, const char* password) {
            return run(
                QStringLiteral("sh"),
                {QStringLiteral("-c"), QStringLiteral("echo \"$0\" | \"$@\""),
                 QString::fromLatin1(password), program("quorvale-new"), QStringLiteral("--admin"),
                 QString::fromLatin1(pseudonym), QStringLiteral("Été")});
        };
        QCOMPARE(create("anne", "court").status, 3);
        QCOMPARE(create("anne/", "Tres-Long-77").status, 4);
        const Run creation = create("-h", "Tres-Long-77");
        QVERIFY2(creation.status == 0 && creation.err.isEmpty(), creation.err.constData());
        QCOMPARE(directory.read(QStringLiteral("Ete/nom.txt")), QByteArray("Été\n"));
        QCOMPARE(directory.read(QStringLiteral("networks.data")),
                 "\311t\351|" + QDir::currentPath().toUtf8() + "/Ete|\n");
    }
};

QTEST_GUILESS_MAIN(TestPrograms)
#include "test_programs.moc"
