#include "network_creation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <iostream>

#include "hub_utilities.h"
#include "network_names.h"
#include "registry_writer.h"

namespace {

const char* const template_parts[] = {"settings.py", "urls.py",   "hubs",
                                      "ressources",  "templates", "static"};

/// The first part of the template that the directory lacks or hides, or an empty text.
QString missing_template_part(const QDir& directory) {
    for (const char* part : template_parts) {
        // Readable, too: Django makes some parts of its own, where a failed copy is not missed.
        if (!QFileInfo(directory, QString::fromLatin1(part)).isReadable()) {
            return QString::fromLatin1(part);
        }
    }
    return {};
}

/// The first part of the template whose copy in the directory is not whole, or an empty text.
QString part_not_copied(const QString& directory) {
    for (const char* part : template_parts) {
        QString name = QString::fromLatin1(part);
        const QStringList trees = {QStringLiteral("-rq"), name, directory + name};
        if (QProcess::execute(QStringLiteral("diff"), trees) != 0) {
            return name;
        }
    }
    return {};
}

/// Says on standard error why the network was not created.
CreationStatus fail(const QString& name, const QString& reason) {
    std::cerr << "Réseau « " << name.toStdString() << " » : " << reason.toStdString() << std::endl;
    return not_created;
}

/// Makes the project with its display name. Returns why that failed, or an empty text.
QString make_project(const QString& name, const QDir& project) {
    const QString directory = project.dirName();
    create_new_network(directory.toStdString(), directory.toStdString());
    if (!project.exists(QStringLiteral("manage.py"))) {
        return QStringLiteral("le projet Django n'a pas pu être créé.");
    }
    const QString missing = part_not_copied(project.filePath(directory) + QLatin1Char('/'));
    if (!missing.isEmpty()) {
        return QStringLiteral("« %1 » n'a pas pu être copié du modèle.").arg(missing);
    }
    QFile name_file(project.filePath(QStringLiteral("nom.txt")));
    const QByteArray line = name.toUtf8() + '\n';
    if (!name_file.open(QIODevice::WriteOnly) || name_file.write(line) != line.size() ||
        !name_file.flush()) {
        return QStringLiteral("son nom n'a pas pu être écrit dans nom.txt.");
    }
    return {};
}

/// Runs a command of the project's manage.py with a text on its standard input. Returns its exit
/// status, 1 when it has none.
int manage(const QDir& project, const QStringList& arguments, const QByteArray& input) {
    QProcess command;
    command.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    command.setWorkingDirectory(project.absolutePath());
    command.start(QStringLiteral("python3"), QStringList(QStringLiteral("manage.py")) + arguments);
    command.write(input);
    command.closeWriteChannel();
    const bool ended = command.waitForFinished(-1) && command.exitStatus() == QProcess::NormalExit;
    return ended ? command.exitCode() : 1;
}

/// Makes everything but the line in the registry.
CreationStatus make_network(const NewNetwork& wanted, const QString& name, const QDir& project) {
    const QString reason = make_project(name, project);
    if (!reason.isEmpty()) {
        return fail(name, reason);
    }
    const QStringList migration = {QStringLiteral("migrate"), QStringLiteral("--verbosity"),
                                   QStringLiteral("0")};
    if (manage(project, migration, {}) != 0) {
        return fail(name, QStringLiteral("sa base de données n'a pas pu être préparée."));
    }
    if (wanted.administrator.isEmpty()) {
        return created_whole;
    }
    const QStringList account = {QStringLiteral("compte"), QStringLiteral("super"),
                                 QStringLiteral("--"), wanted.administrator};
    const int status = manage(project, account, wanted.password + '\n');
    if (status == password_refused || status == pseudonym_refused) {
        return static_cast<CreationStatus>(status);
    }
    return status == 0 ? created_whole
                       : fail(name, QStringLiteral("son administrateur n'a pas pu être créé."));
}

}  // namespace

QString creation_refusal(const QString& name, const QString& directory) {
    if (name.isEmpty()) {
        return QStringLiteral("donnez-lui un nom.");
    }
    const QFileInfo registry(QStringLiteral("networks.data"));
    if (registry.exists() && !(registry.isFile() && registry.isReadable())) {
        return QStringLiteral(
            "il n'a pas pu être enregistré : networks.data n'est pas un fichier lisible.");
    }
    const QString missing = missing_template_part(QDir::current());
    if (!missing.isEmpty()) {
        return QStringLiteral("« %1 », une partie du modèle, manque ici ou n'est pas lisible.")
            .arg(missing);
    }
    if (is_recorded(registry_name(name))) {
        return QStringLiteral("un réseau de ce nom est déjà enregistré dans networks.data.");
    }
    const QFileInfo project(directory);
    if (project.exists() || project.isSymLink()) {
        return QStringLiteral("un fichier ou un répertoire « %1 » existe déjà ici.").arg(directory);
    }
    const QRegularExpression plain_path(QStringLiteral(R"(^[\w/.,:@%+=-]+$)"),
                                        QRegularExpression::UseUnicodePropertiesOption);
    if (!plain_path.match(QDir::currentPath()).hasMatch()) {
        return QStringLiteral(
            "le chemin de ce répertoire contient un espace ou un caractère que le terminal ne "
            "prendrait pas tel quel.");
    }
    return {};
}

CreationStatus create_and_record_network(const NewNetwork& wanted) {
    const QString name = wanted.name.simplified();
    const QSet<QString> taken = python_names();
    if (taken.isEmpty()) {
        return fail(name, QStringLiteral("python3 n'a pas pu être lancé pour vérifier le nom."));
    }
    QLockFile turn(QStringLiteral("creation.lock"));
    turn.setStaleLockTime(0);  // a creation may take its time; a dead program's lock is taken over
    if (!turn.lock()) {
        return fail(name, QStringLiteral("rien ne peut être écrit dans ce répertoire."));
    }
    QDir project(QDir::current().filePath(directory_name(name, taken)));
    const QString reason = creation_refusal(name, project.dirName());
    if (!reason.isEmpty()) {
        return fail(name, reason);
    }

    CreationStatus status = make_network(wanted, name, project);
    if (status == created_whole) {
        std::string recorded = registry_name(name);
        if (recorded.empty()) {
            recorded = project.dirName().toStdString();
        }
        const QByteArray directory = QFile::encodeName(project.absolutePath());
        if (record_hub_network(recorded, directory.toStdString()) != 0) {
            status = not_created;
        }
    }
    if (status != created_whole) {
        project.removeRecursively();
        return status;
    }
    std::cout << "Le réseau « " << name.toStdString() << " » est créé dans le répertoire "
              << QFile::encodeName(project.absolutePath()).toStdString() << "." << std::endl;
    return status;
}
