#include "platform/richtext/ListMark.h"

namespace qb {

namespace {

constexpr char16_t BulletCharacter = 0x2022;

/// a, b, ... z, aa, bb, ...
QString Letters(int number)
{
    constexpr int alphabet = 26;
    return QString(1 + (number - 1) / alphabet, QChar(u'a' + (number - 1) % alphabet));
}

QString RomanNumber(int number)
{
    struct Roman {
        int Value;
        const char* Letters;
    };
    static constexpr Roman romans[] = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"},
                                       {90, "xc"},  {50, "l"},   {40, "xl"}, {10, "x"},   {9, "ix"},
                                       {5, "v"},    {4, "iv"},   {1, "i"}};
    QString text;
    for (const Roman& roman : romans) {
        for (; number >= roman.Value; number -= roman.Value)
            text += QLatin1StringView(roman.Letters);
    }
    return text;
}

int LongestCount(ListKind kind)
{
    constexpr int lastWithLetters = 26 * 4; // zzzz
    constexpr int lastRoman = 3999;
    return kind == ListKind::LowerLetter || kind == ListKind::UpperLetter ? lastWithLetters : lastRoman;
}

} // namespace

QString ListMark(ListKind kind, int number)
{
    if (kind > ListKind::Decimal && (number < 1 || number > LongestCount(kind)))
        kind = ListKind::Decimal; // letters that go on and on tell nobody anything
    switch (kind) {
    case ListKind::None:
        return {};
    case ListKind::Bullet:
        return QString(QChar(BulletCharacter));
    case ListKind::LowerLetter:
        return Letters(number) + u'.';
    case ListKind::UpperLetter:
        return Letters(number).toUpper() + u'.';
    case ListKind::LowerRoman:
        return RomanNumber(number) + u'.';
    case ListKind::UpperRoman:
        return RomanNumber(number).toUpper() + u'.';
    case ListKind::Decimal:
        break;
    }
    return QString::number(number) + u'.';
}

} // namespace qb
