#include "platform/richtext/TextFormats.h"

namespace qb {

size_t qHash(const FontInfo& font, size_t seed)
{
    return qHashMulti(seed, font.Name, font.Family, font.CharSet);
}

size_t qHash(const CharFormat& format, size_t seed)
{
    const quint32 flags = quint32(format.Bold) | quint32(format.Italic) << 1 | quint32(format.Underline) << 2
                          | quint32(format.Strike) << 3 | quint32(format.Protected) << 4;
    return qHashMulti(seed, format.Color, format.BackColor, format.Picture, format.Link,
                      quint32(format.Font) << 16 | format.HalfPoints, flags);
}

size_t qHash(const ParagraphFormat& format, size_t seed)
{
    return qHashMulti(seed, format.LeftIndent, format.FirstIndent, format.RightIndent, format.Tabs, format.ListStart,
                      quint8(format.Alignment), quint8(format.List), format.ListLevel);
}

size_t qHash(const TextPicture& picture, size_t seed)
{
    return qHashMulti(seed, int(picture.Type), picture.Bytes, picture.WidthGoal, picture.HeightGoal);
}

} // namespace qb
