#include "french_texts.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include "qt_compat.h"

void use_french_texts() {
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    auto* texts = new QTranslator(QCoreApplication::instance());
    if (texts->load(QStringLiteral("qtbase_fr"), qt_translations_directory())) {
        QCoreApplication::installTranslator(texts);
    }
}
