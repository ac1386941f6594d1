#pragma once

#include <QByteArray>
#include <QLibraryInfo>
#include <QString>

#if QT_VERSION_MAJOR < 6
#include <QTextCodec>
#else
#include <QStringDecoder>
#endif

/// The differences between Qt 5 and Qt 6.

/// Makes UTF-8 the codec of file names and of the command line, whatever the locale says. On Linux,
/// Qt 6 has no other.
inline void use_utf8_locale_codec() {
#if QT_VERSION_MAJOR < 6
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}

/// Returns the directory of Qt's own translations.
inline QString qt_translations_directory() {
#if QT_VERSION_MAJOR < 6
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}

/// Returns the text of a file that was written in an editor: UTF-8, with or without a byte order
/// mark, or else Windows-1252. A UTF-8 character that is cut off at the end is dropped.
inline QString text_of_file(const QByteArray& bytes) {
#if QT_VERSION_MAJOR < 6
    QTextCodec::ConverterState state;
    QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 ? text
                                   : QTextCodec::codecForName("Windows-1252")->toUnicode(bytes);
#else
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (!utf8.hasError()) {
        return text;
    }
    QStringDecoder windows("Windows-1252");
    return windows.isValid() ? windows(bytes) : QString::fromLatin1(bytes);
#endif
}
