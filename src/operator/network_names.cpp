#include "network_names.h"

#include <QRegularExpression>
#include <QStringList>

#include "network_template.h"
#include "python_output.h"
#include "screen_pieces.h"

namespace {

const int python_timeout = 30'000;  // milliseconds

}  // namespace

QString clean_name(QString text) {
    static const QRegularExpression unfit(QStringLiteral(R"([\x00-\x1f\x7f-\x9f]+)"));
    text = text.replace(unfit, QStringLiteral(" ")).simplified();
    // UTF-16 has two units for some characters.
    return QString::fromStdU32String(text.toStdU32String().substr(0, max_name_length)).trimmed();
}

QString without_accents(QString text) {
    // Letters that do not decompose into a plain one and a mark.
    const std::pair<QString, QString> letters[] = {
        {QStringLiteral("œ"), QStringLiteral("oe")}, {QStringLiteral("Œ"), QStringLiteral("Oe")},
        {QStringLiteral("æ"), QStringLiteral("ae")}, {QStringLiteral("Æ"), QStringLiteral("Ae")},
        {QStringLiteral("ß"), QStringLiteral("ss")}, {QStringLiteral("ø"), QStringLiteral("o")},
        {QStringLiteral("Ø"), QStringLiteral("O")},  {QStringLiteral("ł"), QStringLiteral("l")},
        {QStringLiteral("Ł"), QStringLiteral("L")}};
    for (const auto& [letter, plain] : letters) {
        text.replace(letter, plain);
    }
    static const QRegularExpression mark(QStringLiteral(R"(\p{Mn})"));
    return text.normalized(QString::NormalizationForm_KD).remove(mark);
}

QSet<QString> python_names() {
    const QString program = QStringLiteral(
        "import keyword, pkgutil, sys; sys.path.remove(''); print(*keyword.kwlist, "
        "*sys.stdlib_module_names, *(module.name for module in pkgutil.iter_modules()))");
    const QByteArray output = output_of_python({QStringLiteral("-c"), program}, python_timeout);
    const QStringList names =
        QString::fromUtf8(output).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return {names.begin(), names.end()};
}

QString directory_name(const QString& display_name, const QSet<QString>& reserved) {
    static const QRegularExpression others(QStringLiteral("[^A-Za-z0-9]+"));
    const int longest = 60;
    QString name = without_accents(display_name).replace(others, QStringLiteral(" "));
    name = name.simplified().left(longest).trimmed().replace(QLatin1Char(' '), QLatin1Char('_'));
    if (name.isEmpty()) {
        name = QStringLiteral("Reseau");
    } else if (name.at(0).isDigit()) {
        name.prepend(QStringLiteral("Reseau_"));
    }
    return reserved.contains(name) ? name + QStringLiteral("_reseau") : name;
}

std::string registry_name(const QString& display_name) {
    return output_of_python({template_directory() + QStringLiteral("hubs/names.py"), display_name},
                            python_timeout)
        .toStdString();
}

QString shown_name(const std::string& recorded) {
    return latin1_text(recorded).replace(QStringLiteral("&&"), QStringLiteral("&"));
}
