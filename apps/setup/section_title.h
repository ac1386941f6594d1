#pragma once

#include <QString>

/// The rich text of the large title over a section of the configuration window.
inline QString section_title(const QString& text) {
    return QStringLiteral("<div style='font-size:24px;font-weight:bold;'>%1</div>").arg(text);
}
