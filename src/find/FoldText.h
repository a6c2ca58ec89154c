#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

namespace qb {

/// What is made the same before texts are compared, character by character.
enum class Folding : quint8 {
    None = 0,
    Case = 1,    ///< capitals become small letters
    Accents = 2, ///< letters lose their marks
    All = 3
};
constexpr bool Folds(Folding folding, Folding part)
{
    return (quint8(folding) & quint8(part)) != 0;
}

/// What a character becomes; 0 when nothing is left of it. A character never becomes several.
char32_t FoldedCharacter(char32_t character, Folding folding);

/// Whether the character is part of words: letters with their marks, digits, the underscore.
bool IsWordCharacter(char32_t character);

/// The character that begins at @p at of a text in UTF-8, which moves behind it. What is no UTF-8 is one character a
/// byte,
/// U+FFFD.
char32_t NextCharacter(QByteArrayView utf8, qsizetype& at);
/// The character that ends before @p at.
char32_t CharacterBefore(QByteArrayView utf8, qsizetype at);
void AppendUtf8(char32_t character, QByteArray& out);

/// Adds a text to the end of @p out as it is folded; with @p origins, the place in @p utf8 that each byte came from.
void AppendFolded(QByteArrayView utf8, Folding folding, QByteArray& out, std::vector<quint32>* origins = nullptr);

bool IsAscii(QByteArrayView text);
/// Folding the case of the text makes ASCII of characters that are none, as of the Kelvin sign.
bool FoldsIntoAscii(QByteArrayView utf8);

} // namespace qb
