#include <QApplication>
#include <QMessageBox>
#include <QTemporaryFile>

#include "applicationsetup.h"
#include "command_line.h"
#include "desk.h"
#include "french_texts.h"
#include "held_keys.h"

namespace {

/// Shows quorvale-start's message, which nobody would read when the desktop's menu started it. The
/// servers that are started later do not inherit it.
void show_notice() {
    const QString notice = qEnvironmentVariable("QUORVALE_NOTICE");
    qunsetenv("QUORVALE_NOTICE");
    if (notice.isEmpty()) {
        return;
    }
    auto* message = new QMessageBox(QMessageBox::Warning, QStringLiteral("Quorvale"), notice);
    message->setTextFormat(Qt::PlainText);
    message->setAttribute(Qt::WA_DeleteOnClose);
    message->show();
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line(
        QStringLiteral("Présente les réseaux de cette machine : on les crée, les démarre, les "
                       "ouvre et les\narrête."));
    if (line.answers(argc, argv)) {
        return 0;
    }
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quorvale.Quorvale"));
    const QApplication application(argc, argv);
    if (!line.is_valid()) {
        return usage_error;
    }
    const ApplicationSetup setup;
    use_french_texts();
    ignore_held_return();
    QTemporaryFile terminal_words;  // for the tool that opens terminals; shown when none opens
    if (terminal_words.open()) {
        qputenv("QUORVALE_TERMINAL_WORDS", QFile::encodeName(terminal_words.fileName()));
    }
    // Created here: from now on only its value changes, while threads that start commands read it.
    qputenv("QUORVALE_TERMINAL_TITLE", "Quorvale");
    Desk desk;
    desk.show_home({});
    show_notice();
    return QApplication::exec();
}
