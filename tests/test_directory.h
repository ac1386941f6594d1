#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <QWidget>
#include <functional>

/// A working directory of a test's own, made current for its life, with a folder for fake commands
/// first on PATH.
class TestDirectory {
public:
    TestDirectory();
    ~TestDirectory();

    void write(const QString& file, const QByteArray& contents) const;
    /// The file's contents, or nothing when it is not there.
    QByteArray read(const QString& file) const;
    /// A shell script that is called in a command's place. The working directory is $WORK.
    void fake_command(const QString& command, const QByteArray& script) const;
    QString path(const QString& file) const;

private:
    QTemporaryDir directory;
    QString old_directory;
    QByteArray old_path;
};

struct Output {
    QByteArray out;  ///< what came on standard output
    QByteArray err;  ///< what came on standard error
};

/// What an action, run in this process, writes on the standard streams.
Output output_of(const std::function<void()>& action);

/// A window as text, one widget a line: title, size, style sheet, and its widgets in layout order
/// with what an operator can tell of them; the style sheets of single widgets are left out. Values
/// that are Qt's defaults are left out.
QString snapshot(const QWidget& window);
