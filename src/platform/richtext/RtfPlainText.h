#pragma once

#include <QByteArray>
#include <QString>

namespace qb {

/// The font that a text without formatting is written in.
struct RtfFont {
    QString Name;
    int Points = 10;
};

/// The font in which code and usage texts are kept.
inline const RtfFont CodeFont{QStringLiteral("Courier New"), 10};

/// Writes @p text without formatting as an RTF string: ASCII only, one paragraph a line (a line
/// ends with CR LF, LF or CR), every other character kept. An empty text gives an empty string.
QString RtfFromPlainText(const QString& text, const RtfFont& font);

/// The plain text of an RTF string, lines ended by CR LF. A text that is no RTF is taken as it
/// is. Never fails: what can't be understood is passed over, what can be read is kept.
QString PlainTextFromRtf(const QString& rtf);

} // namespace qb
