#pragma once

#include <QSignalMapper>
#include <QTextCodec>

/// What the Qt releases that we build with call differently.

/// The signal by which a signal mapper sends its integer, for string-based `connect`.
inline const char* mapped_signal() {
    return SIGNAL(mapped(int));
}

/// Makes UTF-8 the codec of file names and of the command line, whatever the locale says.
inline void use_utf8_locale_codec() {
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}
