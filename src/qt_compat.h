#pragma once

#include <QSignalMapper>

#if QT_VERSION_MAJOR < 6
#include <QTextCodec>
#endif

/// What the Qt releases that we build with call differently.

/// The signal by which a signal mapper sends its integer, for string-based `connect`.
inline const char* mapped_signal() {
#if QT_VERSION_MAJOR < 6
    return SIGNAL(mapped(int));
#else
    return SIGNAL(mappedInt(int));
#endif
}

/// Makes UTF-8 the codec of file names and of the command line, whatever the locale says. Qt 6
/// has no other on Linux.
inline void use_utf8_locale_codec() {
#if QT_VERSION_MAJOR < 6
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}
