#pragma once

#include "platform/richtext/RichTextDocument.h"

#include <QPalette>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <unordered_map>

namespace qb {

/// How the formats of a rich text look on a screen: the text document's formats for those of a
/// RichTextDocument, each of which carries the number that it stands for. On a dark background,
/// colours that could not be read there are shown lighter; the text keeps its own.
class RichTextLook {
public:
    /// For one background, that of @p palette, which gives the colour of links, too. @p document outlives it.
    RichTextLook(const RichTextDocument& document, const QPalette& palette, int dotsPerInch);

    /// The look for the number of a format of the document; 0 is the text's own. Made at the first call and kept: the
    /// reference holds as long as this object.
    const QTextCharFormat& CharLook(quint32 number);
    const QTextBlockFormat& BlockLook(quint32 number);

    /// The format that a look stands for; 0, the text's own, for one that is not from here.
    static quint32 NumberOf(const QTextFormat& format) { return quint32(format.intProperty(NumberProperty)); }
    /// The name under which a text document knows a picture.
    static QString PictureName(quint32 picture);
    /// The size on the screen of lengths in twips.
    double Pixels(int twips) const;
    /// A text's colour as it is shown on this background.
    static QColor ColorOn(const QColor& background, quint32 color);

private:
    static constexpr int NumberProperty = QTextFormat::UserProperty + 1;

    QTextCharFormat MakeCharLook(const CharFormat& format) const;
    QTextBlockFormat MakeBlockLook(const ParagraphFormat& format) const;

    const RichTextDocument* m_document;
    QPalette m_palette;
    int m_dotsPerInch;
    std::unordered_map<quint32, QTextCharFormat> m_chars;
    std::unordered_map<quint32, QTextBlockFormat> m_blocks;
};

} // namespace qb
