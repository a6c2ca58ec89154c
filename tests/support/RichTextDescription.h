#pragma once

#include "platform/richtext/RichTextDocument.h"

#include <QStringList>
#include <algorithm>
#include <random>

namespace qb::test {

/// A picture of the smallest kind.
inline const QByteArray SmallPng = QByteArray::fromHex(
    "89504e470d0a1a0a0000000d4948445200000001000000010806"
    "0000001f15c4890000000d49444154789c6360000002000100ffff03000006000557"
    "bfabd40000000049454e44ae426082");

inline QString DescribeFormat(const RichTextDocument& document, const CharFormat& format)
{
    const FontInfo& font = document.Font(format.Font);
    QStringList words{font.Name, font.Family, QString::number(font.CharSet), QString::number(format.HalfPoints)};
    const auto add = [&words](bool on, const char* word) {
        if (on)
            words << QString::fromLatin1(word);
    };
    add(format.Bold, "bold");
    add(format.Italic, "italic");
    add(format.Underline, "underline");
    add(format.Strike, "strike");
    add(format.Protected, "protected");
    if (format.Color != AutomaticColor)
        words << QStringLiteral("color %1").arg(format.Color, 6, 16, QLatin1Char('0'));
    if (format.BackColor != AutomaticColor)
        words << QStringLiteral("back %1").arg(format.BackColor, 6, 16, QLatin1Char('0'));
    if (format.Link != 0)
        words << QStringLiteral("link ") + document.Link(format.Link);
    if (format.Picture != 0) {
        const TextPicture& picture = document.Picture(format.Picture);
        words
            << QStringLiteral("picture %1 %2x%3 ").arg(int(picture.Type)).arg(picture.WidthGoal).arg(picture.HeightGoal)
                   + QString::fromLatin1(picture.Bytes.toHex());
    }
    return words.join(QLatin1Char(','));
}

inline QString DescribeParagraph(const RichTextDocument& document, const ParagraphFormat& format)
{
    QString text = QStringLiteral("align %1 left %2 first %3 right %4")
                       .arg(int(format.Alignment))
                       .arg(format.LeftIndent)
                       .arg(format.FirstIndent)
                       .arg(format.RightIndent);
    for (const qint32 stop : document.TabStops(format.Tabs))
        text += QStringLiteral(" tab %1").arg(stop);
    if (format.List != ListKind::None)
        text += QStringLiteral(" list %1").arg(int(format.List));
    if (format.List > ListKind::Bullet)
        text += QStringLiteral(" from %1").arg(format.ListStart);
    if (format.ListLevel != 0)
        text += QStringLiteral(" level %1").arg(format.ListLevel);
    return text;
}

/// All that is to be seen of a document, in words: the text, the looks of its characters by
/// stretches, the stand of each paragraph. Two documents that are alike have the same description.
inline QStringList Describe(const RichTextDocument& document)
{
    const QString& text = document.Text();
    QStringList list{text};
    QString last;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QString format = DescribeFormat(document, document.FormatAt(at));
        if (format != last)
            list << QStringLiteral("%1: %2").arg(at).arg(format);
        last = format;
    }
    qsizetype begin = 0;
    for (bool more = true; more;) {
        list << QStringLiteral("paragraph at %1: ").arg(begin)
                    + DescribeParagraph(document, document.ParagraphAt(begin));
        const qsizetype end = text.indexOf(QLatin1Char('\n'), begin);
        more = end >= 0;
        begin = end + 1;
    }
    return list;
}

/// The description without the looks of line ends, which show nothing by themselves.
inline QStringList DescribeWithoutLineEnds(const RichTextDocument& document)
{
    RichTextDocument copy = document;
    const quint32 lineEnd = copy.NumberOf(CharFormat{.Font = copy.NumberOfFont({.Name = QStringLiteral("line end")})});
    for (qsizetype at = copy.Text().indexOf(QLatin1Char('\r')); at >= 0;
         at = copy.Text().indexOf(QLatin1Char('\r'), at + 1))
        copy.SetFormat(at, at + 2, lineEnd);
    return Describe(copy);
}

/// What the first two lines that differ say, or nothing.
inline QByteArray FirstDifference(const QStringList& actual, const QStringList& expected)
{
    for (qsizetype i = 0; i < std::max(actual.size(), expected.size()); ++i) {
        if (i >= actual.size() || i >= expected.size() || actual[i] != expected[i])
            return "is:     " + actual.value(i).toUtf8() + "\nwanted: " + expected.value(i).toUtf8();
    }
    return {};
}

/// Numbers that are the same on every run and every machine.
class Dice {
public:
    explicit Dice(quint32 seed) : m_engine(seed) {}

    /// From 0 up to @p sides - 1.
    int Roll(qsizetype sides) { return int(m_engine() % quint32(sides)); }
    bool OneIn(int chances) { return Roll(chances) == 0; }
    template <class List>
    auto PickOf(const List& list)
    {
        return list[Roll(qsizetype(std::size(list)))];
    }

private:
    std::mt19937 m_engine;
};

} // namespace qb::test
