#include "command_line.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTranslator>
#include <iostream>

namespace {

const QString help_option = QStringLiteral("help");
const QString version_option = QStringLiteral("version");

/// Makes the parser's own texts French while it lives, even without Qt's translations.
class ParserTexts : public QTranslator {
public:
    ParserTexts() {
        QCoreApplication::installTranslator(this);
    }
    bool isEmpty() const override {
        return false;
    }
    QString translate(const char* context, const char* text, const char* /*disambiguation*/,
                      int /*n*/) const override {
        if (qstrcmp(context, "QCommandLineParser") != 0) {
            return {};
        }
        const std::pair<const char*, const char*> texts[] = {
            {"Usage: %1", "Usage : %1"},
            {"[options]", "[OPTION...]"},
            {"Options:", "Options :"},
            {"Arguments:", "Arguments :"},
            {"Unknown option '%1'.", "L'option « %1 » n'existe pas."},
            {"Unknown options: %1.", "Ces options n'existent pas : %1."},
            {"Missing value after '%1'.", "Il manque un mot après « %1 »."},
            {"Unexpected value after '%1'.", "L'option « %1 » ne prend pas de valeur."}};
        for (const auto& [english, french] : texts) {
            if (qstrcmp(text, english) == 0) {
                return QString::fromUtf8(french);
            }
        }
        return {};
    }
};

QString program_name() {
    return QFileInfo(QCoreApplication::arguments().constFirst()).fileName();
}

}  // namespace

CommandLine::CommandLine(const QString& purpose, const QString& statuses)
    : exit_statuses(statuses) {
    // Not one option a letter: any word with an "h" in it would ask for the help.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QLatin1Char('\n') + purpose);
    parser.addOption({{QStringLiteral("h"), help_option}, QStringLiteral("Affiche cette aide.")});
    parser.addOption({version_option, QStringLiteral("Affiche la version.")});
}

void CommandLine::add_argument(const QString& name, const QString& description) {
    parser.addPositionalArgument(name, description);
    required += name;
    ++max_arguments;
}

void CommandLine::add_optional_argument(const QString& name, const QString& description) {
    parser.addPositionalArgument(name, description, QStringLiteral("[%1]").arg(name));
    ++max_arguments;
}

void CommandLine::add_option(const QCommandLineOption& option) {
    parser.addOption(option);
}

bool CommandLine::answers(int argc, char** argv) {
    QStringList words;
    for (int i = 0; i < argc; ++i) {
        words += QString::fromUtf8(argv[i]);
    }
    // Without a misused option such as "--help=x"; unknown ones may be Qt's own.
    if (!parser.parse(words) && parser.unknownOptionNames().isEmpty()) {
        return false;
    }
    if (parser.isSet(help_option)) {
        const QCoreApplication application(argc, argv);  // the parser asks it for the name
        const ParserTexts texts;
        std::cout << help().toStdString();
        return true;
    }
    if (parser.isSet(version_option)) {
        std::cout << "Quorvale " << QUORVALE_VERSION << "\n";
        return true;
    }
    return false;
}

bool CommandLine::is_valid() {
    const ParserTexts texts;
    parser.parse(QCoreApplication::arguments());
    const QString reason = fault();
    if (reason.isEmpty()) {
        return true;
    }
    std::cerr << help().toStdString() << "\n"
              << program_name().toStdString() << " : " << reason.toStdString() << std::endl;
    return false;
}

QString CommandLine::argument(int index) const {
    return parser.positionalArguments().value(index);
}

bool CommandLine::has(const QString& option) const {
    return parser.isSet(option);
}

QString CommandLine::value(const QString& option) const {
    return parser.value(option);
}

QString CommandLine::help() const {
    QString text = parser.helpText();
    const QString path = QCoreApplication::arguments().constFirst();
    text.replace(text.indexOf(path), path.size(), program_name());
    if (!exit_statuses.isEmpty()) {
        text += QLatin1Char('\n') + exit_statuses;
    }
    return text;
}

QString CommandLine::fault() const {
    QString error = parser.errorText();
    if (!error.isEmpty()) {
        return error;
    }
    const QStringList options = parser.optionNames();
    for (const QString& option : options) {
        if (options.count(option) > 1) {
            return QStringLiteral("L'option « %1 » est donnée deux fois.").arg(option);
        }
        if (parser.values(option).contains(QString())) {
            return QStringLiteral("La valeur de l'option « %1 » est vide.").arg(option);
        }
    }
    const QStringList words = parser.positionalArguments();
    if (words.size() > max_arguments) {
        return QStringLiteral("Mot en trop : « %1 ».").arg(words[max_arguments]);
    }
    if (words.contains(QString())) {
        return QStringLiteral("Un mot est vide.");
    }
    if (words.size() < required.size()) {
        return QStringLiteral("Il manque %1.").arg(required[words.size()]);
    }
    return {};
}
