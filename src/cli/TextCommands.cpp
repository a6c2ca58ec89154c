// The commands on rich text.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/Input.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "platform/richtext/HtmlWriter.h"
#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/TextEncoding.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "store/ShippedLanguages.h"
#include "support/ErrorRoutine.h"
#include "text/CTextFormat.h"
#include "text/Marks.h"

#include <QFileInfo>
#include <algorithm>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

/// Colours one text of an item; an empty one stays empty.
QString Colorized(CTextFormat& format, const QString& stored)
{
    RichText box;
    box.SetTextRTF(stored);
    if (box.Text().isEmpty())
        return {};
    format.ColorizeCode(box);
    return box.TextRTF();
}

struct ItemTexts {
    QString Code;
    QString Usage;
    bool operator==(const ItemTexts&) const = default;
};

ItemTexts TextsOf(CCodeItem& item)
{
    return {item.Code(), item.Example()};
}

/// Long texts take seconds, in which others may work: the library is locked when the colours are there.
/// False when the item has got other texts in the meantime.
bool SaveColours(Library& database, qint64 id, const ItemTexts& texts, const ItemTexts& coloured)
{
    Transaction transaction(database);
    RequireChange(database, id, {ItemChange::EditUnasked});
    CCodeItem item;
    item.Initialise(database, QString::number(id));
    item.SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, StandingOf(database, id)));
    if (item.ReadFailed() || TextsOf(item) != texts)
        return false;
    item.SetCode(coloured.Code);
    item.SetExample(coloured.Usage);
    item.SetItemChanged(true);
    if (!item.Commit())
        return false;
    transaction.Commit();
    return true;
}

int ColorizeItem(const Arguments& arguments)
{
    constexpr int Tries = 20;
    const bool save = arguments.Has(u"save"_s);
    const auto database = OpenLibrary(arguments.Positional(0),
                                      save ? DBEngine::Access::ReadWrite : DBEngine::Access::ReadOnly);
    const qint64 id = arguments.Id(1);
    CTextFormat format;
    format.ColorizeInit(*database);
    for (int i = 0; i < Tries; ++i) {
        RequireItem(*database, id);
        if (save)
            RequireChange(*database, id, {ItemChange::EditUnasked});
        CCodeItem item;
        item.Initialise(*database, QString::number(id));
        const ItemTexts texts = TextsOf(item);
        const QString language = LanguageInRtf(texts.Code);
        format.SetItemLanguage(language.isEmpty() ? LanguageInRtf(texts.Usage) : language);
        const ItemTexts coloured{Colorized(format, texts.Code), Colorized(format, texts.Usage)};
        if (HandledErrorCount() > 0)
            return 1;
        if (!save) {
            if (arguments.Json())
                Print(QJsonObject{{u"id"_s, id}, {u"code"_s, coloured.Code}, {u"usage"_s, coloured.Usage}});
            else
                Print(coloured.Code);
            return 0;
        }
        if (SaveColours(*database, id, texts, coloured))
            return 0;
        if (HandledErrorCount() > 0)
            return 1;
    }
    throw RuntimeError(ErrorNumber::InUse, u"The item %1 is changed all the time; nothing was coloured."_s.arg(id),
                       u"colorize"_s);
}

int ColorizeFile(const Arguments& arguments)
{
    const QString languageName = arguments.Value(u"language"_s);
    if (!IsLanguageName(languageName))
        throw UsageError{u"Unknown language '%1'; `quillbase-cli languages` lists them."_s.arg(languageName)};
    if (int(arguments.Has(u"rtf"_s)) + int(arguments.Has(u"html"_s)) + int(arguments.Has(u"marks"_s)) != 1)
        throw UsageError{u"Give one of --rtf, --html and --marks."_s};
    const LanguageDefinition language = LanguageNamed(languageName);
    const QString name = arguments.Positional(0);
    const auto text = DecodeText(ReadInput(name), FallbackEncoding::Windows1252);
    if (!text)
        throw RuntimeError(ErrorNumber::ValueNotAllowed, u"'%1' is no text."_s.arg(name), u"colorize"_s);
    if (arguments.Has(u"marks"_s)) {
        const auto rules = std::make_shared<LanguageRules>(language.Rules, language.ColouredWords, language.PlainWords);
        if (!rules->Paints())
            throw RuntimeError(ErrorNumber::InvalidCall, u"The language '%1' has no rules."_s.arg(language.Language),
                               u"colorize"_s);
        RuleScan scan(rules);
        Print(MarkedText(*text, scan));
        return 0;
    }
    CTextFormat format;
    format.SetLanguage(language);
    RichText box;
    box.SetText(*text);
    format.ColorizeCode(box);
    Print(arguments.Has(u"rtf"_s) ? box.TextRTF() : WriteHtml(box.Document(), QFileInfo(name).fileName()));
    return HandledErrorCount() > 0 ? 1 : 0;
}

} // namespace

int Colorize(const QStringList& words)
{
    const bool file = std::any_of(words.begin(), words.end(),
                                  [](const QString& word) { return word.startsWith("--language"_L1); });
    const QList<Arguments::Option> options =
        file ? QList<Arguments::Option>{{"language", "name"}, {"rtf", ""}, {"html", ""}, {"marks", ""}}
             : QList<Arguments::Option>{{"save", ""}};
    const Arguments arguments(words, options, file ? 1 : 2);
    return file ? ColorizeFile(arguments) : ColorizeItem(arguments);
}

int RtfToText(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const QByteArray bytes = ReadInput(arguments.Positional(0));
    // Bytes beyond ASCII, which the format does not know, are those of the usual code page.
    const QString text = PlainTextFromRtf(FromWindows1252(bytes)).replace("\r\n"_L1, "\n"_L1);
    if (arguments.Json())
        Print(QJsonObject{{u"text"_s, text}});
    else
        Print(text);
    return 0;
}

} // namespace qb::cli
