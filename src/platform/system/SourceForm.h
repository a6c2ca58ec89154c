#pragma once

#include <QByteArray>
#include <QString>

namespace qb {

/// How a text stood in the file that it came from, in a few words such as "utf-16le-bom w": its encoding, with
/// "-bom" where a mark stood before it, and its line ends: "n", "r" or "w" (both), or, where they differ, how many of
/// which follow each other ("n12w1n7"). Empty for what is usual, UTF-8 without a mark and with line feeds, and for
/// what could not be had back by it. @p text is what the bytes were decoded to.
QString SourceFormOf(const QByteArray& bytes, const QString& text);

/// The bytes of a text, whose lines end with CR LF, in such a form; what its encoding lacks is written as UTF-8, and
/// where it has other lines by now, all ends are those that most had. Any text is taken for a form; what makes no
/// sense in it counts as what is usual.
QByteArray EncodeSource(const QString& text, const QString& form);

} // namespace qb
