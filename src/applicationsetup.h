#pragma once

#include <QFile>
#include <QStringList>
#include <QTranslator>

class QWidget;

/// What each of our programs sets up in its `QApplication` before the first window: UTF-8 as the
/// locale codec, the style sheet "style.qss" of the working directory, and the first translation
/// found for the user's interface languages.
///
/// Create one on the stack after the application object and keep it until the event loop has ended.
/// A missing style sheet or translation is ignored.
class ApplicationSetup {
public:
    ApplicationSetup();

    /// Gives a top-level window that is not yet shown the product's icon, and a frame with minimise
    /// and close buttons only.
    static void dress_window(QWidget& window);

    /// Shows a program's first window without loading OpenGL, which no window of ours uses and
    /// which would take half of the start-up time. Qt is told by an environment variable, restored
    /// on return so that nothing started later inherits it.
    static void show_first_window(QWidget& window);

private:
    void apply_style_sheet();
    /// Makes links blue: the light ones of a dark theme could not be read on the white pages, and
    /// style sheets do not reach links.
    static void darken_links();
    void install_translation();

    QFile style_file;
    QTranslator translator;
    QStringList languages;
};
