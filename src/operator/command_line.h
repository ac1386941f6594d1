#pragma once

#include <QCommandLineParser>
#include <QString>

/// A program's command line: what it may hold, its help and its version, all in French. A word that
/// begins with "-" is an option; "--" ends the options.
class CommandLine {
public:
    /// `purpose` says what the program does, `statuses` what its exit statuses mean, both in whole
    /// lines.
    explicit CommandLine(const QString& purpose, const QString& statuses = {});

    /// Arguments are added in their order; none may be empty.
    void add_argument(const QString& name, const QString& description);
    /// Comes after those that are required.
    void add_optional_argument(const QString& name, const QString& description);
    void add_option(const QCommandLineOption& option);

    /// Returns true, with the answer on standard output, when the help or the version is asked for.
    /// Needs neither a display nor an application object: programs with windows call it before
    /// they create theirs.
    bool answers(int argc, char** argv);
    /// Returns whether the words that the application object has left are valid; if not, prints the
    /// help and what is wrong on standard error.
    bool is_valid();

    /// Returns argument `index`, from 0, or an empty text.
    QString argument(int index) const;
    bool has(const QString& option) const;
    QString value(const QString& option) const;

private:
    QString help() const;
    /// Returns what is wrong with the line that was parsed last, or an empty text.
    QString fault() const;

    QCommandLineParser parser;
    QStringList required;
    int max_arguments = 0;
    QString exit_statuses;
};

/// Exit status of every program for a command line that is not valid.
inline constexpr int usage_error = 2;
