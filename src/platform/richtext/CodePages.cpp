#include "platform/richtext/CodePages.h"

#include "platform/system/TextEncoding.h"

#include <QStringDecoder>
#include <algorithm>

namespace qb {

namespace {

constexpr int WesternCodePage = 1252;
constexpr int SymbolCodePage = 42;

struct CharSetRow {
    int CharSet;
    int CodePage;
};
constexpr CharSetRow CharSets[] = {
    {0, WesternCodePage}, {1, WesternCodePage}, {2, SymbolCodePage}, {77, 10000}, {128, 932},  {129, 949},  {130, 1361},
    {134, 936},           {136, 950},           {161, 1253},         {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256},
    {186, 1257},          {204, 1251},          {222, 874},          {238, 1250}, {254, 437},  {255, 850},
};

struct EncodingRow {
    int CodePage;
    const char* Name; ///< as converters know it
};
constexpr EncodingRow Encodings[] = {
    {437, "IBM437"},        {850, "IBM850"},        {874, "windows-874"},   {932, "Shift_JIS"},
    {936, "GBK"},           {949, "windows-949"},   {950, "Big5"},          {1250, "windows-1250"},
    {1251, "windows-1251"}, {1253, "windows-1253"}, {1254, "windows-1254"}, {1255, "windows-1255"},
    {1256, "windows-1256"}, {1257, "windows-1257"}, {1258, "windows-1258"}, {1361, "Johab"},
    {10000, "macintosh"},   {65001, "UTF-8"},
};

} // namespace

int CodePageOfCharSet(int charSet)
{
    const auto* row = std::find_if(std::begin(CharSets), std::end(CharSets),
                                   [charSet](const CharSetRow& one) { return one.CharSet == charSet; });
    return row == std::end(CharSets) ? WesternCodePage : row->CodePage;
}

bool IsLeadByte(int codePage, uchar byte)
{
    switch (codePage) {
    case 932:
        return (byte >= 0x81 && byte <= 0x9f) || (byte >= 0xe0 && byte <= 0xfc);
    case 936:
    case 949:
    case 950:
    case 1361:
        return byte >= 0x81 && byte <= 0xfe;
    default:
        return false;
    }
}

QString DecodeCodePage(const QByteArray& bytes, int codePage)
{
    const auto* row = std::find_if(std::begin(Encodings), std::end(Encodings),
                                   [codePage](const EncodingRow& one) { return one.CodePage == codePage; });
    if (row != std::end(Encodings)) {
        QStringDecoder decoder(row->Name);
        if (decoder.isValid())
            return decoder(bytes);
    }
    return FromWindows1252(bytes);
}

} // namespace qb
