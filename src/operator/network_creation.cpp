#include "network_creation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <iostream>

#include "file_lock.h"
#include "hub_utilities.h"
#include "network_names.h"
#include "network_template.h"
#include "registry_file.h"
#include "registry_writer.h"

namespace {

const char* const template_parts[] = {"settings.py", "urls.py",   "hubs",
                                      "ressources",  "templates", "static"};

/// Returns the first part of the template that is missing or unreadable in the directory, or an
/// empty text.
QString missing_template_part(const QDir& directory) {
    for (const char* part : template_parts) {
        // Readable, too: Django creates some of the parts itself, which would hide a failed copy.
        if (!QFileInfo(directory, QString::fromLatin1(part)).isReadable()) {
            return QString::fromLatin1(part);
        }
    }
    return {};
}

/// Returns the first part of the template that was not copied whole, or an empty text.
QString part_not_copied(const QString& directory) {
    for (const char* part : template_parts) {
        QString name = QString::fromLatin1(part);
        const QStringList trees = {QStringLiteral("-rq"), template_directory() + name,
                                   directory + name};
        if (QProcess::execute(QStringLiteral("diff"), trees) != 0) {
            return name;
        }
    }
    return {};
}

/// Clears the staging directory, where a network is made, and links the template's parts there.
/// Returns whether all are there.
bool prepare_staging(QDir& staging) {
    // Links that cannot be removed, on a full disk, do no harm.
    staging.removeRecursively();
    bool whole = QDir().mkdir(staging.path());
    for (const char* part : template_parts) {
        const QString name = QString::fromLatin1(part);
        const QString target = QDir::current().absoluteFilePath(template_directory() + name);
        whole = whole && QFile::link(target, staging.filePath(name));
    }
    return whole;
}

/// Says on standard error why the network was not created.
CreationStatus fail(const QString& name, const QString& reason) {
    std::cerr << "Réseau « " << name.toStdString() << " » : " << reason.toStdString() << std::endl;
    return not_created;
}

/// Lays the contents of a copy over a project. Returns whether all of them are there.
bool lay_over(const QString& contents, const QDir& project) {
    const QDir package(project.filePath(project.dirName()));
    const QDir copied(contents + QStringLiteral("/paquet"));
    for (const QString& folder : {QStringLiteral("ressources"), QStringLiteral("depots")}) {
        QDir(package.filePath(folder)).removeRecursively();
        if (copied.exists(folder) &&
            !QDir().rename(copied.filePath(folder), package.filePath(folder))) {
            return false;
        }
    }
    const auto copy = [](const QString& from, const QString& to) {
        return QProcess::execute(QStringLiteral("cp"),
                                 {QStringLiteral("-rT"),
                                  QStringLiteral("--preserve=mode,timestamps"), from, to}) == 0;
    };
    return copy(contents + QStringLiteral("/projet"), project.path()) &&
           copy(copied.path(), package.path());
}

bool write_name(const QString& name, const QDir& project) {
    QFile file(project.filePath(QStringLiteral("nom.txt")));
    const QByteArray line = name.toUtf8() + '\n';
    return file.open(QIODevice::WriteOnly) && file.write(line) == line.size() && file.flush();
}

/// Creates the project with its display name. Returns why that failed, or an empty text.
QString make_project(const NewNetwork& wanted, const QString& name, QDir& staging,
                     const QDir& project) {
    if (!prepare_staging(staging)) {
        return QStringLiteral("rien ne peut être écrit dans ce répertoire.");
    }
    const QString work = QDir::currentPath();
    const std::string directory = project.dirName().toStdString();
    QDir::setCurrent(staging.path());
    create_new_network(directory, directory);
    QDir::setCurrent(work);
    if (!project.exists(QStringLiteral("manage.py"))) {
        return QStringLiteral("le projet Django n'a pas pu être créé.");
    }
    const QString missing = part_not_copied(project.filePath(project.dirName()) + QLatin1Char('/'));
    if (!missing.isEmpty()) {
        return QStringLiteral("« %1 » n'a pas pu être copié du modèle.").arg(missing);
    }
    if (!wanted.contents.isEmpty() && !lay_over(wanted.contents, project)) {
        return QStringLiteral("ses fichiers n'ont pas pu être repris de la copie.");
    }
    if (!write_name(name, project)) {
        return QStringLiteral("son nom n'a pas pu être écrit dans nom.txt.");
    }
    return {};
}

/// Runs a command of the project's manage.py with a text on its standard input. Returns its exit
/// status, or 1 if it was killed or could not be started.
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

/// Creates everything but the line in the registry.
CreationStatus make_network(const NewNetwork& wanted, const QString& name, QDir& staging,
                            const QDir& project) {
    const QString reason = make_project(wanted, name, staging, project);
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

/// Moves a network that was made to its place and adds its line to the registry. Returns whether it
/// has both; if not, it has neither, and the reason was printed.
bool place_and_record(const QString& name, const QString& made, QDir& project) {
    if (!QDir().rename(made, project.path())) {
        fail(name, QStringLiteral("il n'a pas pu être mis à sa place."));
        return false;
    }
    // A power cut must not leave a recorded network with empty files.
    QProcess::execute(QStringLiteral("sync"), {QStringLiteral("-f"), project.path()});
    std::string recorded = registry_name(name);
    if (recorded.empty()) {
        recorded = project.dirName().toStdString();
    }
    const QByteArray directory = QFile::encodeName(project.absolutePath());
    if (record_hub_network(recorded, directory.toStdString()) == 0) {
        return true;
    }
    project.removeRecursively();
    return false;
}

/// The directory of a network. That of a copy may be taken by the network that was copied.
QString wanted_directory(const NewNetwork& wanted, const QString& name,
                         const QSet<QString>& reserved) {
    const QString directory = directory_name(name, reserved);
    QString candidate = directory;
    for (int number = 2; !wanted.contents.isEmpty() && QFileInfo::exists(candidate); ++number) {
        candidate = QStringLiteral("%1_%2").arg(directory).arg(number);
    }
    return candidate;
}

}  // namespace

QString creation_refusal(const QString& name, const QString& directory) {
    if (name.isEmpty()) {
        return QStringLiteral("donnez-lui un nom.");
    }
    const QFileInfo registry(QString::fromLatin1(registry_file));
    if (registry.exists() && !(registry.isFile() && registry.isReadable())) {
        return QStringLiteral(
            "il n'a pas pu être enregistré : networks.data n'est pas un fichier lisible.");
    }
    const QString missing = missing_template_part(QDir(template_directory()));
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
    // apps/network/adoption.py has the same rule.
    static const QRegularExpression plain_path(QStringLiteral(R"(\A[\p{L}\p{N}_/.,:@%+=-]+\z)"));
    if (!plain_path.match(QDir::currentPath()).hasMatch()) {
        return QStringLiteral(
            "le chemin de ce répertoire contient un espace ou un caractère que le terminal ne "
            "prendrait pas tel quel.");
    }
    return {};
}

CreationStatus create_and_record_network(const NewNetwork& wanted) {
    const QString name = clean_name(wanted.name);
    const QSet<QString> reserved = python_names();
    if (reserved.isEmpty()) {
        return fail(name, QStringLiteral("python3 n'a pas pu être lancé pour vérifier le nom."));
    }
    const FileLock turn(".creation.lock");
    if (!turn.take()) {
        return fail(name, QStringLiteral("rien ne peut être écrit dans ce répertoire."));
    }
    QDir project(QDir::current().filePath(wanted_directory(wanted, name, reserved)));
    const QString reason = creation_refusal(name, project.dirName());
    if (!reason.isEmpty()) {
        return fail(name, reason);
    }

    QDir staging(QDir::current().filePath(QStringLiteral(".creation")));
    const QDir made(staging.filePath(project.dirName()));
    CreationStatus status = make_network(wanted, name, staging, made);
    if (status == created_whole && !place_and_record(name, made.path(), project)) {
        status = not_created;
    }
    staging.removeRecursively();
    if (status != created_whole) {
        return status;
    }
    std::cout << "Le réseau « " << name.toStdString() << " » est créé dans le répertoire "
              << QFile::encodeName(project.absolutePath()).toStdString() << "." << std::endl;
    return status;
}
