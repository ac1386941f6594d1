#include "network_creation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <iostream>

#include "hub_utilities.h"
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

/// Asks Python itself, which knows best what it takes for a name. Returns 0 when it is one and 3
/// when it is none, else Python has not answered.
int check_identifier(const QString& name) {
    const QString program = QStringLiteral(
        "import keyword, sys; name = sys.argv[1]; sys.exit(3 * (not (name.isascii() and "
        "name.isidentifier()) or keyword.iskeyword(name)))");
    return QProcess::execute(QStringLiteral("python3"), {QStringLiteral("-c"), program, name});
}

/// Why no network of that name can be created here, or an empty text.
QString refusal(const QString& name) {
    const int answer = check_identifier(name);
    if (answer == 3) {
        return QStringLiteral(
            "le nom doit être un identifiant Python : des lettres sans accent, des chiffres et « _ "
            "», sans chiffre au début.");
    }
    if (answer != 0) {
        return QStringLiteral("python3 n'a pas pu être lancé pour vérifier le nom.");
    }
    const QFileInfo project(name);
    if (project.exists() || project.isSymLink()) {
        return QStringLiteral("un fichier ou un répertoire de ce nom existe déjà ici.");
    }
    const QFileInfo registry(QStringLiteral("networks.data"));
    if (registry.exists() && !(registry.isFile() && registry.isReadable())) {
        return QStringLiteral(
            "il n'a pas pu être enregistré : networks.data n'est pas un fichier lisible.");
    }
    if (is_recorded(name.toStdString())) {
        return QStringLiteral("un réseau de ce nom est déjà enregistré dans networks.data.");
    }
    const QString missing = missing_template_part(QDir::current());
    if (!missing.isEmpty()) {
        return QStringLiteral("« %1 », une partie du modèle, manque ici ou n'est pas lisible.")
            .arg(missing);
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

int fail(const QString& name, const QString& reason) {
    std::cerr << "Réseau « " << name.toStdString() << " » : " << reason.toStdString() << std::endl;
    return 1;
}

}  // namespace

int create_and_record_network(const std::string& name) {
    const QString project_name = QFile::decodeName(name.c_str());
    const QString reason = refusal(project_name);
    if (!reason.isEmpty()) {
        return fail(project_name, reason);
    }

    create_new_network(name, name);
    const QDir project(project_name);
    if (!project.exists(QStringLiteral("manage.py"))) {
        return fail(project_name, QStringLiteral("le projet Django n'a pas pu être créé."));
    }
    const QString missing = part_not_copied(project.filePath(project_name) + QLatin1Char('/'));
    if (!missing.isEmpty()) {
        return fail(project_name,
                    QStringLiteral("« %1 » n'a pas pu être copié du modèle.").arg(missing));
    }

    const QByteArray directory = QFile::encodeName(project.absolutePath());
    if (record_hub_network(name, directory.toStdString()) != 0) {
        return 1;
    }
    QProcess migration;
    migration.setProcessChannelMode(QProcess::ForwardedChannels);
    migration.setWorkingDirectory(project.absolutePath());
    migration.start(QStringLiteral("python3"),
                    {QStringLiteral("manage.py"), QStringLiteral("migrate"),
                     QStringLiteral("--verbosity"), QStringLiteral("0")});
    if (!migration.waitForFinished(-1) || migration.exitCode() != 0) {
        return fail(project_name, QStringLiteral("sa base de données n'a pas pu être préparée."));
    }
    return 0;
}
