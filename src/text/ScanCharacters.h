#pragma once

#include <QChar>

namespace qb {

// Kinds of characters that scans of source texts tell apart.

/// A blank or a tab; no end of a line, and no other space.
inline bool IsBlank(QChar character)
{
    return character == u' ' || character == u'\t';
}

/// A digit of ASCII.
inline bool IsDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// A digit of a hexadecimal number, of either case.
inline bool IsHexDigit(QChar character)
{
    return IsDigit(character) || (character >= u'a' && character <= u'f') || (character >= u'A' && character <= u'F');
}

/// A letter or digit of ASCII.
inline bool IsAlphanumeric(QChar character)
{
    return IsDigit(character) || (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

/// The bracket that closes one; any other character closes itself.
inline QChar ClosingOf(QChar opener)
{
    switch (opener.unicode()) {
    case u'(':
        return u')';
    case u'[':
        return u']';
    case u'{':
        return u'}';
    case u'<':
        return u'>';
    default:
        return opener;
    }
}

} // namespace qb
