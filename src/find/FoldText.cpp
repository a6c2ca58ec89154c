#include "find/FoldText.h"

#include <QChar>
#include <QString>
#include <algorithm>
#include <array>
#include <cstring>

namespace qb {

namespace {

constexpr char32_t Broken = 0xfffd;

char32_t WithoutMarks(char32_t character)
{
    if (QChar::category(character) == QChar::Mark_NonSpacing)
        return 0;
    // A syllable of Hangul is a character of its own, no letter with marks.
    if (QChar::script(character) == QChar::Script_Hangul)
        return character;
    char32_t base = 0;
    const QString decomposed = QString::fromUcs4(&character, 1).normalized(QString::NormalizationForm_D);
    for (const char32_t part : decomposed.toUcs4()) {
        if (QChar::category(part) == QChar::Mark_NonSpacing)
            continue;
        if (base != 0)
            return character; // there is more to it than marks
        base = part;
    }
    return base;
}

char32_t Fold(char32_t character, Folding folding)
{
    if (Folds(folding, Folding::Accents))
        character = WithoutMarks(character);
    return Folds(folding, Folding::Case) ? QChar::toCaseFolded(character) : character;
}

/// What most characters become, worked out once.
using Table = std::array<char32_t, 0x10000>;
const Table& TableOf(Folding folding)
{
    static const auto make = [](Folding wanted) {
        auto table = std::make_unique<Table>();
        for (char32_t character = 0; character < table->size(); ++character)
            (*table)[character] = QChar::isSurrogate(character) ? character : Fold(character, wanted);
        return table;
    };
    static const std::unique_ptr<Table> tables[] = {make(Folding::Case), make(Folding::Accents), make(Folding::All)};
    return *tables[size_t(folding) - 1];
}

bool IsContinuation(char byte)
{
    return (uchar(byte) & 0xc0u) == 0x80u;
}

struct Lead {
    int More;       ///< bytes behind it
    uchar Bits;     ///< of the character in it
    char32_t Least; ///< a smaller character has a shorter form
};
Lead LeadOf(uchar byte)
{
    if (byte >= 0xc2 && byte < 0xe0)
        return {1, uchar(byte & 0x1fu), 0x80};
    if (byte >= 0xe0 && byte < 0xf0)
        return {2, uchar(byte & 0x0fu), 0x800};
    if (byte >= 0xf0 && byte < 0xf5)
        return {3, uchar(byte & 0x07u), 0x10000};
    return {0, 0, 0};
}

} // namespace

char32_t FoldedCharacter(char32_t character, Folding folding)
{
    if (folding == Folding::None)
        return character;
    return character < std::tuple_size_v<Table> ? TableOf(folding)[character] : Fold(character, folding);
}

bool IsWordCharacter(char32_t character)
{
    if (character < 128)
        return (character >= U'a' && character <= U'z') || (character >= U'A' && character <= U'Z')
               || (character >= U'0' && character <= U'9') || character == U'_';
    return character != Broken && (QChar::isLetterOrNumber(character) || QChar::isMark(character));
}

char32_t NextCharacter(QByteArrayView utf8, qsizetype& at)
{
    const auto first = uchar(utf8[at++]);
    if (first < 0x80)
        return first;
    const Lead lead = LeadOf(first);
    if (lead.More == 0 || at + lead.More > utf8.size())
        return Broken;
    char32_t character = lead.Bits;
    for (int i = 0; i < lead.More; ++i) {
        if (!IsContinuation(utf8[at + i]))
            return Broken;
        character = character << 6 | (uchar(utf8[at + i]) & 0x3fu);
    }
    if (character < lead.Least || character > 0x10ffff || QChar::isSurrogate(character))
        return Broken;
    at += lead.More;
    return character;
}

char32_t CharacterBefore(QByteArrayView utf8, qsizetype at)
{
    constexpr int Longest = 4;
    qsizetype begin = at - 1;
    while (begin > 0 && at - begin < Longest && IsContinuation(utf8[begin]))
        --begin;
    qsizetype behind = begin;
    const char32_t character = NextCharacter(utf8.first(at), behind);
    return behind == at ? character : Broken;
}

void AppendUtf8(char32_t character, QByteArray& out)
{
    if (character < 0x80) {
        out.append(char(character));
    } else if (character < 0x800) {
        out.append(char(0xc0u | character >> 6));
        out.append(char(0x80u | (character & 0x3fu)));
    } else if (character < 0x10000) {
        out.append(char(0xe0u | character >> 12));
        out.append(char(0x80u | (character >> 6 & 0x3fu)));
        out.append(char(0x80u | (character & 0x3fu)));
    } else {
        out.append(char(0xf0u | character >> 18));
        out.append(char(0x80u | (character >> 12 & 0x3fu)));
        out.append(char(0x80u | (character >> 6 & 0x3fu)));
        out.append(char(0x80u | (character & 0x3fu)));
    }
}

void AppendFolded(QByteArrayView utf8, Folding folding, QByteArray& out, std::vector<quint32>* origins)
{
    for (qsizetype at = 0; at < utf8.size();) {
        const qsizetype begin = at;
        const qsizetype before = out.size();
        const char32_t folded = FoldedCharacter(NextCharacter(utf8, at), folding);
        if (folded != 0 || utf8[begin] == '\0')
            AppendUtf8(folded, out);
        if (origins)
            origins->insert(origins->end(), size_t(out.size() - before), quint32(begin));
    }
}

bool IsAscii(QByteArrayView text)
{
    const char* at = text.data();
    const char* end = at + text.size();
    for (; end - at >= 8; at += 8) {
        quint64 eight = 0;
        std::memcpy(&eight, at, sizeof eight);
        if (eight & 0x8080808080808080u)
            return false;
    }
    return std::all_of(at, end, [](char byte) { return uchar(byte) < 0x80; });
}

bool FoldsIntoAscii(QByteArrayView utf8)
{
    for (qsizetype at = 0; at < utf8.size();) {
        const char32_t character = NextCharacter(utf8, at);
        if (character >= 0x80 && FoldedCharacter(character, Folding::Case) < 0x80)
            return true;
    }
    return false;
}

} // namespace qb
