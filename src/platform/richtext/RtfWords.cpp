#include "platform/richtext/RtfWords.h"

#include "platform/richtext/TextFormats.h"

#include <algorithm>
#include <iterator>

namespace qb {

namespace {

using Is = RtfCategory;
using Sets = RtfTarget;

struct Row {
    QStringView Word;
    RtfMeaning Means;
};

constexpr Row Rows[] = {
    {u"b", {Is::Flag, Sets::Bold}},
    {u"i", {Is::Flag, Sets::Italic}},
    {u"ul", {Is::Flag, Sets::Underline}},
    {u"uld", {Is::Flag, Sets::Underline}},
    {u"uldb", {Is::Flag, Sets::Underline}},
    {u"ulw", {Is::Flag, Sets::Underline}},
    {u"ulnone", {Is::Fixed, Sets::Underline, 0}},
    {u"strike", {Is::Flag, Sets::Strike}},
    {u"striked", {Is::Flag, Sets::Strike}},
    {u"protect", {Is::Flag, Sets::Protect}},
    {u"cf", {Is::Number, Sets::Color, 0}},
    {u"cb", {Is::Number, Sets::BackColor, 0}},
    {u"highlight", {Is::Number, Sets::BackColor, 0}},
    {u"chcbpat", {Is::Number, Sets::BackColor, 0}},
    {u"f", {Is::Number, Sets::Font, 0}},
    {u"fs", {Is::Number, Sets::HalfPoints, 24, 1, 3276}},
    {u"plain", {Is::Act, Sets::Plain}},
    {u"pard", {Is::Act, Sets::ResetParagraph}},
    {u"ql", {Is::Fixed, Sets::Alignment, int(TextAlignment::Left)}},
    {u"qr", {Is::Fixed, Sets::Alignment, int(TextAlignment::Right)}},
    {u"qc", {Is::Fixed, Sets::Alignment, int(TextAlignment::Center)}},
    {u"qj", {Is::Fixed, Sets::Alignment, int(TextAlignment::Justified)}},
    {u"li", {Is::Number, Sets::LeftIndent, 1}},
    {u"fi", {Is::Number, Sets::FirstIndent, 1}},
    {u"ri", {Is::Number, Sets::RightIndent, 1}},
    {u"tx", {Is::Number, Sets::TabStop, 1}},
    {u"par", {Is::Act, Sets::Paragraph}},
    {u"sect", {Is::Act, Sets::Paragraph}},
    {u"page", {Is::Act, Sets::Line}},
    {u"line", {Is::Act, Sets::Line}},
    {u"cell", {Is::Act, Sets::Cell}},
    {u"nestcell", {Is::Act, Sets::Cell}},
    {u"row", {Is::Act, Sets::Row}},
    {u"nestrow", {Is::Act, Sets::Row}},
    {u"intbl", {Is::Act, Sets::InTable}},
    {u"tab", {Is::Symbol, Sets::Character, u'\t'}},
    {u"emdash", {Is::Symbol, Sets::Character, 0x2014}},
    {u"endash", {Is::Symbol, Sets::Character, 0x2013}},
    {u"emspace", {Is::Symbol, Sets::Character, 0x2003}},
    {u"enspace", {Is::Symbol, Sets::Character, 0x2002}},
    {u"qmspace", {Is::Symbol, Sets::Character, 0x2005}},
    {u"bullet", {Is::Symbol, Sets::Character, 0x2022}},
    {u"lquote", {Is::Symbol, Sets::Character, 0x2018}},
    {u"rquote", {Is::Symbol, Sets::Character, 0x2019}},
    {u"ldblquote", {Is::Symbol, Sets::Character, 0x201c}},
    {u"rdblquote", {Is::Symbol, Sets::Character, 0x201d}},
    {u"zwj", {Is::Symbol, Sets::Character, 0x200d}},
    {u"zwnj", {Is::Symbol, Sets::Character, 0x200c}},
    {u"ltrmark", {Is::Symbol, Sets::Character, 0x200e}},
    {u"rtlmark", {Is::Symbol, Sets::Character, 0x200f}},
    {u"u", {Is::Number, Sets::CodeUnit, 1}},
    {u"uc", {Is::Number, Sets::FallbackLength, 1, 0, 16}},
    {u"ansicpg", {Is::Number, Sets::CodePage, 1}},
    {u"pc", {Is::Fixed, Sets::CodePage, 437}},
    {u"pca", {Is::Fixed, Sets::CodePage, 850}},
    {u"mac", {Is::Fixed, Sets::CodePage, 10000}},
    {u"deff", {Is::Number, Sets::DefaultFont, 0}},
    {u"fcharset", {Is::Number, Sets::FontCharSet, 0}},
    {u"fnil", {Is::Act, Sets::FontFamily}},
    {u"froman", {Is::Act, Sets::FontFamily}},
    {u"fswiss", {Is::Act, Sets::FontFamily}},
    {u"fmodern", {Is::Act, Sets::FontFamily}},
    {u"fscript", {Is::Act, Sets::FontFamily}},
    {u"fdecor", {Is::Act, Sets::FontFamily}},
    {u"ftech", {Is::Act, Sets::FontFamily}},
    {u"fbidi", {Is::Act, Sets::FontFamily}},
    {u"red", {Is::Number, Sets::Red, 1}},
    {u"green", {Is::Number, Sets::Green, 1}},
    {u"blue", {Is::Number, Sets::Blue, 1}},
    {u"pnlvlblt", {Is::Fixed, Sets::ListKind, int(ListKind::Bullet)}},
    {u"pnlvlbody", {Is::Fixed, Sets::ListKind, int(ListKind::Decimal)}},
    {u"pnlvl", {Is::Fixed, Sets::ListKind, int(ListKind::Decimal)}},
    {u"pndec", {Is::Fixed, Sets::ListKind, int(ListKind::Decimal)}},
    {u"pnlcltr", {Is::Fixed, Sets::ListKind, int(ListKind::LowerLetter)}},
    {u"pnucltr", {Is::Fixed, Sets::ListKind, int(ListKind::UpperLetter)}},
    {u"pnlcrm", {Is::Fixed, Sets::ListKind, int(ListKind::LowerRoman)}},
    {u"pnucrm", {Is::Fixed, Sets::ListKind, int(ListKind::UpperRoman)}},
    {u"pnstart", {Is::Number, Sets::ListStart, 1, 0, 32767}},
    {u"ls", {Is::Number, Sets::ListNumber, 1}},
    {u"ilvl", {Is::Number, Sets::ListLevel, 1, 0, 8}},
    {u"list", {Is::Act, Sets::BeginList}},
    {u"listlevel", {Is::Act, Sets::BeginListLevel}},
    {u"levelnfc", {Is::Number, Sets::LevelKind, 1}},
    {u"levelnfcn", {Is::Number, Sets::LevelKind, 1}},
    {u"listid", {Is::Number, Sets::ListId, 1}},
    {u"listoverride", {Is::Act, Sets::Nothing}},
    {u"pngblip", {Is::Fixed, Sets::PictureKind, TextPicture::Png}},
    {u"jpegblip", {Is::Fixed, Sets::PictureKind, TextPicture::Jpeg}},
    {u"wmetafile", {Is::Fixed, Sets::PictureKind, UnknownPicture}},
    {u"emfblip", {Is::Fixed, Sets::PictureKind, UnknownPicture}},
    {u"dibitmap", {Is::Fixed, Sets::PictureKind, UnknownPicture}},
    {u"picwgoal", {Is::Number, Sets::PictureWidth, 1, 0, INT_MAX}},
    {u"pichgoal", {Is::Number, Sets::PictureHeight, 1, 0, INT_MAX}},
    {u"fonttbl", {Is::Destination, Sets::FontTable}},
    {u"colortbl", {Is::Destination, Sets::ColorTable}},
    {u"listtable", {Is::Destination, Sets::ListTable}},
    {u"listoverridetable", {Is::Destination, Sets::ListOverrides}},
    {u"pict", {Is::Destination, Sets::Picture}},
    {u"fldinst", {Is::Destination, Sets::FieldInstruction}},
    {u"fldrslt", {Is::Destination, Sets::FieldResult}},
    {u"pn", {Is::Destination, Sets::Numbering}},
    {u"qblang", {Is::Destination, Sets::Language}},
    {u"qbsource", {Is::Destination, Sets::SourceForm}},
    {u"shppict", {Is::Destination, Sets::Body}},
    {u"shptxt", {Is::Destination, Sets::Body}},
    {u"stylesheet", {Is::Destination, Sets::Skip}},
    {u"info", {Is::Destination, Sets::Skip}},
    {u"header", {Is::Destination, Sets::Skip}},
    {u"headerl", {Is::Destination, Sets::Skip}},
    {u"headerr", {Is::Destination, Sets::Skip}},
    {u"headerf", {Is::Destination, Sets::Skip}},
    {u"footer", {Is::Destination, Sets::Skip}},
    {u"footerl", {Is::Destination, Sets::Skip}},
    {u"footerr", {Is::Destination, Sets::Skip}},
    {u"footerf", {Is::Destination, Sets::Skip}},
    {u"pntext", {Is::Destination, Sets::Skip}},
    {u"listtext", {Is::Destination, Sets::Skip}},
    {u"pntxtb", {Is::Destination, Sets::Skip}},
    {u"pntxta", {Is::Destination, Sets::Skip}},
    {u"nonshppict", {Is::Destination, Sets::Skip}},
    {u"objdata", {Is::Destination, Sets::Skip}},
    {u"objclass", {Is::Destination, Sets::Skip}},
    {u"objname", {Is::Destination, Sets::Skip}},
    {u"generator", {Is::Destination, Sets::Skip}},
    {u"annotation", {Is::Destination, Sets::Skip}},
    {u"atnid", {Is::Destination, Sets::Skip}},
    {u"atnauthor", {Is::Destination, Sets::Skip}},
    {u"xe", {Is::Destination, Sets::Skip}},
    {u"tc", {Is::Destination, Sets::Skip}},
    {u"template", {Is::Destination, Sets::Skip}},
    {u"filetbl", {Is::Destination, Sets::Skip}},
    {u"revtbl", {Is::Destination, Sets::Skip}},
    {u"rsidtbl", {Is::Destination, Sets::Skip}},
    {u"leveltext", {Is::Destination, Sets::Skip}},
    {u"levelnumbers", {Is::Destination, Sets::Skip}},
    {u"listname", {Is::Destination, Sets::Skip}},
};

} // namespace

int RtfMeaning::ValueOf(bool hasNumber, int number) const
{
    if (Is == RtfCategory::Flag)
        return !hasNumber || number != 0;
    if (Is == RtfCategory::Number && hasNumber)
        return std::clamp(number, Least, Most);
    return Value;
}

const QHash<QStringView, RtfMeaning>& RtfWords()
{
    static const QHash<QStringView, RtfMeaning> words = [] {
        QHash<QStringView, RtfMeaning> table;
        table.reserve(qsizetype(std::size(Rows)));
        for (const Row& row : Rows)
            table.insert(row.Word, row.Means);
        return table;
    }();
    return words;
}

} // namespace qb
