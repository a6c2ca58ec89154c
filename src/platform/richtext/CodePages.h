#pragma once

#include <QByteArray>
#include <QString>

namespace qb {

/// The Windows code page of a font's character set number.
int CodePageOfCharSet(int charSet);

/// True for the first byte of a character of two bytes in that code page.
bool IsLeadByte(int codePage, uchar byte);

/// The text of bytes in a code page; one that is not known reads as 1252.
QString DecodeCodePage(const QByteArray& bytes, int codePage);

} // namespace qb
