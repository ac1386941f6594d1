#pragma once

#include <QFile>
#include <QStringList>
#include <QTranslator>

class QWidget;

/// What every program of ours does to its `QApplication` before the first window: UTF-8 as the
/// locale codec, the style sheet "style.qss" of the working directory, and the first translation
/// found for the user's interface languages.
///
/// Create one on the stack after the application object and keep it until the event loop has ended.
/// A missing style sheet or translation is passed over in silence.
class ApplicationSetup {
public:
    ApplicationSetup();

    /// Gives a top-level window, not yet shown, the product's icon and a frame with minimise and
    /// close buttons only.
    static void dress_window(QWidget& window);

    /// Shows a program's first window. Qt would load OpenGL for it, which no window of ours uses
    /// and which is half of the start: it is told not to, by a variable of the environment that is
    /// as before on return, so that nothing started later inherits it.
    static void show_first_window(QWidget& window);

private:
    void apply_style_sheet();
    /// A dark theme's light links would be lost on the white pages, which no style sheet can mend.
    static void darken_links();
    void install_translation();

    QFile style_file;
    QTranslator translator;
    QStringList languages;
};
