#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace qb {

/// The character of a byte in the Windows code page 1252. The five bytes that the page leaves
/// open stand for the control characters of the same number.
QChar FromWindows1252(uchar byte);
QString FromWindows1252(const QByteArray& bytes);
/// The bytes of a text in the Windows code page 1252; "?" for characters that it lacks.
QByteArray ToWindows1252(const QString& text);

/// How bytes that are not marked as Unicode and are no valid UTF-8 are read.
enum class FallbackEncoding { None, Latin1, Windows1252 };

/// The text of a source file: UTF-8, with or without a byte order mark, or UTF-16 or UTF-32 with
/// one. Nothing when the bytes are no text in these encodings nor in @p fallback, or hold NUL
/// characters, as binary files do.
std::optional<QString> DecodeText(const QByteArray& bytes, FallbackEncoding fallback = FallbackEncoding::None);

} // namespace qb
