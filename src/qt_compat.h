#pragma once

#include <QLibraryInfo>
#include <QString>

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

/// The directory of the translations that Qt brings.
inline QString qt_translations_directory() {
#if QT_VERSION_MAJOR < 6
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}
