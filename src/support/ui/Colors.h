#pragma once

#include <QColor>

namespace qb {

// Colours of texts and settings are numbers with red in the low byte.

inline QColor ColorOf(quint32 number)
{
    return QColor(int(number & 0xff), int(number >> 8 & 0xff), int(number >> 16 & 0xff));
}

inline quint32 ColorNumber(const QColor& color)
{
    return quint32(color.red()) | quint32(color.green()) << 8 | quint32(color.blue()) << 16;
}

} // namespace qb
