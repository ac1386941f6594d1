#pragma once

#include <QtGlobal>

#if QT_VERSION_MAJOR < 6
#include <QTextCodec>
#endif

/// What the Qt releases that we build with call differently.

/// Makes UTF-8 the codec of file names and of the command line, whatever the locale says. Qt 6
/// has no other on Linux.
inline void use_utf8_locale_codec() {
#if QT_VERSION_MAJOR < 6
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}
