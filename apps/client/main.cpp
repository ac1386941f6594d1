#include <QApplication>
#include <memory>

#include "applicationsetup.h"
#include "client_controls.h"
#include "clientwindow.h"
#include "command_line.h"
#include "french_texts.h"
#include "held_keys.h"
#include "search_wait.h"

namespace {

/// The window after its search, on the screen.
std::unique_ptr<ClientWindow> searched_window() {
    const SearchWait wait;
    auto window = std::make_unique<ClientWindow>(nullptr);
    ApplicationSetup::dress_window(*window);
    ApplicationSetup::show_first_window(*window);
    return window;
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line(
        QStringLiteral("Cherche les serveurs Quorvale du réseau local et ouvre dans le navigateur "
                       "celui qu'on\nchoisit."));
    if (line.answers(argc, argv)) {
        return 0;
    }
    QGuiApplication::setDesktopFileName(QStringLiteral("org.quorvale.Client"));
    const QApplication application(argc, argv);
    if (!line.is_valid()) {
        return usage_error;
    }
    const ApplicationSetup setup;
    use_french_texts();
    ignore_held_return();
    int status = 0;
    do {
        const std::unique_ptr<ClientWindow> window = searched_window();
        new ClientControls(*window);
        status = QApplication::exec();
    } while (status == ClientControls::search_again);
    return status;
}
