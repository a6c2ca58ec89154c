#include "platform/richtext/RtfWords.h"

#include "platform/richtext/TextFormats.h"

namespace qb {

using Action = RtfAction;

const QHash<QStringView, RtfMeaning>& RtfWords()
{
    static const QHash<QStringView, RtfMeaning> words{
        {u"b", {Action::Bold}}, {u"i", {Action::Italic}}, {u"ul", {Action::Underline}}, {u"uld", {Action::Underline}},
        {u"uldb", {Action::Underline}}, {u"ulw", {Action::Underline}}, {u"ulnone", {Action::NoUnderline}},
        {u"strike", {Action::Strike}}, {u"striked", {Action::Strike}}, {u"protect", {Action::Protect}},
        {u"cf", {Action::Color}}, {u"cb", {Action::BackColor}}, {u"highlight", {Action::BackColor}},
        {u"chcbpat", {Action::BackColor}}, {u"f", {Action::Font}}, {u"fs", {Action::Size}}, {u"plain", {Action::Plain}},
        {u"pard", {Action::ResetParagraph}}, {u"ql", {Action::AlignLeft}}, {u"qr", {Action::AlignRight}},
        {u"qc", {Action::AlignCenter}}, {u"qj", {Action::Justify}}, {u"li", {Action::LeftIndent}},
        {u"fi", {Action::FirstIndent}}, {u"ri", {Action::RightIndent}}, {u"tx", {Action::TabStop}},
        {u"par", {Action::Paragraph}}, {u"sect", {Action::Paragraph}}, {u"page", {Action::Line}}, {u"line", {Action::Line}},
        {u"cell", {Action::Cell}}, {u"nestcell", {Action::Cell}}, {u"row", {Action::Row}}, {u"nestrow", {Action::Row}},
        {u"intbl", {Action::InTable}}, {u"tab", {Action::Character, u'\t'}}, {u"emdash", {Action::Character, 0x2014}},
        {u"endash", {Action::Character, 0x2013}}, {u"emspace", {Action::Character, 0x2003}},
        {u"enspace", {Action::Character, 0x2002}}, {u"qmspace", {Action::Character, 0x2005}},
        {u"bullet", {Action::Character, 0x2022}}, {u"lquote", {Action::Character, 0x2018}},
        {u"rquote", {Action::Character, 0x2019}}, {u"ldblquote", {Action::Character, 0x201c}},
        {u"rdblquote", {Action::Character, 0x201d}}, {u"zwj", {Action::Character, 0x200d}},
        {u"zwnj", {Action::Character, 0x200c}}, {u"ltrmark", {Action::Character, 0x200e}},
        {u"rtlmark", {Action::Character, 0x200f}}, {u"u", {Action::Unicode}}, {u"uc", {Action::FallbackLength}},
        {u"ansicpg", {Action::CodePage}}, {u"pc", {Action::CodePage, 437}}, {u"pca", {Action::CodePage, 850}},
        {u"mac", {Action::CodePage, 10000}}, {u"deff", {Action::DefaultFont}}, {u"fcharset", {Action::FontCharSet}},
        {u"fnil", {Action::FontFamily}}, {u"froman", {Action::FontFamily}}, {u"fswiss", {Action::FontFamily}},
        {u"fmodern", {Action::FontFamily}}, {u"fscript", {Action::FontFamily}}, {u"fdecor", {Action::FontFamily}},
        {u"ftech", {Action::FontFamily}}, {u"fbidi", {Action::FontFamily}}, {u"red", {Action::Red}},
        {u"green", {Action::Green}}, {u"blue", {Action::Blue}}, {u"pnlvlblt", {Action::BulletLevel}},
        {u"pnlvlbody", {Action::NumberLevel}}, {u"pnlvl", {Action::NumberLevel}}, {u"pndec", {Action::NumberKind, int(ListKind::Decimal)}},
        {u"pnlcltr", {Action::NumberKind, int(ListKind::LowerLetter)}}, {u"pnucltr", {Action::NumberKind, int(ListKind::UpperLetter)}},
        {u"pnlcrm", {Action::NumberKind, int(ListKind::LowerRoman)}}, {u"pnucrm", {Action::NumberKind, int(ListKind::UpperRoman)}},
        {u"pnstart", {Action::NumberStart}}, {u"ls", {Action::ListNumber}}, {u"ilvl", {Action::ListLevel}},
        {u"list", {Action::List}}, {u"listlevel", {Action::ListLevelBegin}}, {u"levelnfc", {Action::LevelKind}},
        {u"levelnfcn", {Action::LevelKind}}, {u"listid", {Action::ListId}}, {u"listoverride", {Action::Override}},
        {u"pngblip", {Action::Png}}, {u"jpegblip", {Action::Jpeg}}, {u"wmetafile", {Action::OtherPicture}},
        {u"emfblip", {Action::OtherPicture}}, {u"dibitmap", {Action::OtherPicture}}, {u"picwgoal", {Action::PictureWidth}},
        {u"pichgoal", {Action::PictureHeight}}, {u"fonttbl", {Action::BeginFontTable}}, {u"colortbl", {Action::BeginColorTable}},
        {u"listtable", {Action::BeginListTable}}, {u"listoverridetable", {Action::BeginListOverrides}},
        {u"pict", {Action::BeginPicture}}, {u"fldinst", {Action::BeginFieldInstruction}},
        {u"fldrslt", {Action::BeginFieldResult}}, {u"pn", {Action::BeginNumbering}}, {u"qblang", {Action::BeginLanguage}}, {u"shppict", {Action::BeginBody}},
        {u"shptxt", {Action::BeginBody}}, {u"stylesheet", {Action::BeginSkip}}, {u"info", {Action::BeginSkip}},
        {u"header", {Action::BeginSkip}}, {u"headerl", {Action::BeginSkip}}, {u"headerr", {Action::BeginSkip}},
        {u"headerf", {Action::BeginSkip}}, {u"footer", {Action::BeginSkip}}, {u"footerl", {Action::BeginSkip}},
        {u"footerr", {Action::BeginSkip}}, {u"footerf", {Action::BeginSkip}}, {u"pntext", {Action::BeginSkip}},
        {u"listtext", {Action::BeginSkip}}, {u"pntxtb", {Action::BeginSkip}}, {u"pntxta", {Action::BeginSkip}},
        {u"nonshppict", {Action::BeginSkip}}, {u"objdata", {Action::BeginSkip}}, {u"objclass", {Action::BeginSkip}},
        {u"objname", {Action::BeginSkip}}, {u"generator", {Action::BeginSkip}}, {u"annotation", {Action::BeginSkip}},
        {u"atnid", {Action::BeginSkip}}, {u"atnauthor", {Action::BeginSkip}}, {u"xe", {Action::BeginSkip}},
        {u"tc", {Action::BeginSkip}}, {u"template", {Action::BeginSkip}}, {u"filetbl", {Action::BeginSkip}},
        {u"revtbl", {Action::BeginSkip}}, {u"rsidtbl", {Action::BeginSkip}}, {u"leveltext", {Action::BeginSkip}},
        {u"levelnumbers", {Action::BeginSkip}}, {u"listname", {Action::BeginSkip}},
    };
    return words;
}

} // namespace qb
