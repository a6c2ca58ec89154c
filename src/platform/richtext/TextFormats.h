#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <array>
#include <vector>

namespace qb {

/// Colours have red in the low byte. This one stands for "as the surroundings have it".
inline constexpr quint32 AutomaticColor = 0xff000000;

/// How a paragraph stands.
enum class TextAlignment : quint8 { Left = 0, Right = 1, Center = 2, Justified = 3 };

/// What stands before a paragraph.
enum class ListKind : quint8 { None = 0, Bullet, Decimal, LowerLetter, UpperLetter, LowerRoman, UpperRoman };

/// A font as a text names it. The family is the word of the file format ("roman", "modern").
struct FontInfo {
    QString Name;
    QString Family = QStringLiteral("nil");
    int CharSet = 0; ///< number of the character set of bytes in this font
    friend bool operator==(const FontInfo&, const FontInfo&) = default;
};

/// The look of characters. Font, Picture and Link are indexes into the tables of the document.
struct CharFormat {
    quint32 Color = AutomaticColor;
    quint32 BackColor = AutomaticColor;
    quint32 Picture = 0; ///< 0: none; otherwise the character stands for a picture
    quint32 Link = 0;    ///< 0: none
    quint16 Font = 0;
    quint16 HalfPoints = 20;
    quint8 Bold : 1 = 0;
    quint8 Italic : 1 = 0;
    quint8 Underline : 1 = 0;
    quint8 Strike : 1 = 0;
    quint8 Protected : 1 = 0;

    friend bool operator==(const CharFormat&, const CharFormat&) = default;
};

/// The look of a paragraph. Lengths are in twips, a twentieth of a point.
struct ParagraphFormat {
    qint32 LeftIndent = 0;
    qint32 FirstIndent = 0; ///< of the first line, beyond LeftIndent
    qint32 RightIndent = 0;
    quint32 Tabs = 0; ///< index into the document's tab stops; 0: none of its own
    quint16 ListStart = 1;
    TextAlignment Alignment = TextAlignment::Left;
    ListKind List = ListKind::None;
    quint8 ListLevel = 0;

    friend bool operator==(const ParagraphFormat&, const ParagraphFormat&) = default;
};

/// A picture inside a text, kept as it came.
struct TextPicture {
    enum Kind { Png, Jpeg } Type = Png;
    QByteArray Bytes;
    int WidthGoal = 0; ///< twips; 0: not said
    int HeightGoal = 0;
    friend bool operator==(const TextPicture&, const TextPicture&) = default;
};

/// By all that the comparisons above look at; ValuePool finds values by them.
size_t qHash(const FontInfo& font, size_t seed = 0);
size_t qHash(const CharFormat& format, size_t seed = 0);
size_t qHash(const ParagraphFormat& format, size_t seed = 0);
size_t qHash(const TextPicture& picture, size_t seed = 0);

/// Distinct values by number, each kept once.
template <class T>
class ValuePool {
public:
    /// @p first gets number 0, which documents take for the default or for "none".
    explicit ValuePool(const T& first) { Number(first); }

    /// The number of @p value, which is added when it is new.
    quint32 Number(const T& value)
    {
        for (const quint32 recent : m_recent) {
            if (recent < m_values.size() && m_values[recent] == value)
                return recent;
        }
        const auto found = m_numbers.constFind(value);
        if (found != m_numbers.constEnd())
            return Remember(*found);
        m_values.push_back(value);
        const quint32 number = quint32(m_values.size() - 1);
        m_numbers.insert(value, number);
        return Remember(number);
    }
    const T& operator[](quint32 number) const { return m_values[number]; }
    size_t Count() const { return m_values.size(); }

private:
    quint32 Remember(quint32 number)
    {
        m_oldest = (m_oldest + 1) % m_recent.size();
        return m_recent[m_oldest] = number;
    }

    std::vector<T> m_values;
    QHash<T, quint32> m_numbers;
    std::array<quint32, 4> m_recent{}; ///< a text goes to and fro between a few looks
    size_t m_oldest = 0;
};

} // namespace qb
