#include "printing/ItemGatherer.h"

#include "find/PageText.h"
#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/TextEncoding.h"
#include "printing/PrintInk.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/ItemStatus.h"
#include "store/Library.h"
#include "store/StoredFiles.h"
#include "support/DateFormatCustom.h"
#include "text/RulePaint.h"
#include "text/TextBurden.h"

#include <QFile>
#include <QSet>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TabWidth = 4; ///< in characters

[[noreturn]] void RaiseUnreadable(const QString& title, qint64 id, const QString& reason)
{
    throw RuntimeError(ErrorNumber::FileNotFound,
                       u"The item '%1' (%2) can't be read%3. Nothing was printed."_s.arg(
                           title, QString::number(id), reason.isEmpty() ? QString() : u": "_s + reason),
                       u"ItemGatherer"_s);
}

/// A character that would part or garble a line is shown as its picture.
QChar Printable(QChar character)
{
    constexpr char16_t FirstPicture = 0x2400;
    constexpr char16_t PictureOfDelete = 0x2421;
    constexpr char16_t PictureOfLineEnd = 0x2424;
    if (character < u' ')
        return QChar(char16_t(FirstPicture + character.unicode()));
    if (character == QChar(0x7f))
        return QChar(PictureOfDelete);
    const bool partsLines = character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
    return partsLines ? QChar(PictureOfLineEnd) : character;
}

/// The line with tabs as blanks; its spans move along.
PrintedLine Expanded(QStringView line, std::vector<PrintedSpan> spans)
{
    PrintedLine printed;
    printed.Text.reserve(line.size());
    std::vector<int> places(size_t(line.size()) + 1);
    for (qsizetype i = 0; i < line.size(); ++i) {
        places[size_t(i)] = int(printed.Text.size());
        if (line[i] == u'\t')
            printed.Text += QString(TabWidth - printed.Text.size() % TabWidth, u' ');
        else
            printed.Text += Printable(line[i]);
    }
    places.back() = int(printed.Text.size());
    for (PrintedSpan& span : spans) {
        const int end = places[size_t(span.Begin + span.Length)];
        span.Begin = places[size_t(span.Begin)];
        span.Length = end - span.Begin;
    }
    printed.Spans = std::move(spans);
    return printed;
}

/// Calls @p visit with begin and length of each line of a text whose lines end with CR LF.
template <class Visit>
void ForEachLine(const QString& text, Visit&& visit)
{
    for (qsizetype begin = 0; begin <= text.size();) {
        const qsizetype found = text.indexOf(u'\r', begin);
        const qsizetype end = found < 0 ? text.size() : found;
        visit(begin, end - begin);
        begin = end + 2;
    }
}

/// The looks that a line was given.
std::vector<PrintedSpan> SpansOfLooks(const RichTextDocument& document, qsizetype begin, qsizetype length)
{
    std::vector<PrintedSpan> spans;
    for (auto run = document.Runs().RunAt(begin); run != document.Runs().End() && run->first < begin + length; ++run) {
        const auto next = std::next(run);
        const qsizetype from = std::max(begin, run->first);
        const qsizetype to = next == document.Runs().End() ? begin + length : std::min(begin + length, next->first);
        const CharFormat& look = document.Format(run->second);
        const quint32 color = InkFor(look.Color);
        if (to > from && (color != 0 || look.Bold || look.Italic))
            spans.push_back({int(from - begin), int(to - from), color, look.Bold != 0, look.Italic != 0});
    }
    return spans;
}

std::vector<PrintedSpan> SpansOfTokens(const std::vector<Token>& tokens)
{
    std::vector<PrintedSpan> spans;
    for (const Token& token : tokens)
        spans.push_back({token.Begin, token.Length, InkColors()[size_t(token.Kind)], IsBoldInk(token.Kind),
                         IsItalicInk(token.Kind)});
    return spans;
}

bool HasColours(const RichTextDocument& document)
{
    for (auto run = document.Runs().RunAt(0); run != document.Runs().End(); ++run) {
        const CharFormat& look = document.Format(run->second);
        if (look.Color != AutomaticColor && look.Color != 0 && !look.Bold)
            return true;
    }
    return false;
}

PrintedCode CodeByRules(const RichTextDocument& document, RuleScan& scan)
{
    PrintedCode code;
    const QString& text = document.Text();
    std::vector<Token> tokens;
    int state = RuleScan::Begin;
    ForEachLine(text, [&](qsizetype begin, qsizetype length) {
        const QStringView line = QStringView(text).sliced(begin, length);
        if (ReadsLikeHeader(line) && document.FormatAt(begin).Bold)
            return code.push_back(Expanded(line, SpansOfLooks(document, begin, length)));
        state = scan.ScanLine(line, state, tokens);
        code.push_back(Expanded(line, SpansOfTokens(tokens)));
    });
    return code;
}

/// What a line end at the end of a file leaves is no line on paper.
PrintedCode WithoutLastEmptyLine(PrintedCode code)
{
    if (code.size() > 1 && code.back().Text.isEmpty())
        code.pop_back();
    return code;
}

QString TextOfPageFile(const QString& path)
{
    QFile file(path);
    if (!IsPlainFile(path))
        return {};
    QByteArray bytes;
    const QString reason = file.open(QIODevice::ReadOnly) ? ReadAll(file, bytes) : file.errorString();
    if (!reason.isEmpty())
        throw RuntimeError(ErrorNumber::FileNotFound,
                           u"The page '%1' can't be read: %2. Nothing was printed."_s.arg(path, reason),
                           u"ItemGatherer"_s);
    return TextOfPage(DecodeText(bytes, FallbackEncoding::Windows1252).value_or(QString()));
}

std::vector<PrintedLink> LinksOf(CCodeItem& item)
{
    std::vector<PrintedLink> links;
    for (const std::shared_ptr<CLink>& link : item.Links().All()) {
        if (link->Direction == LinkDirection::None)
            continue; // it was removed, and only waits to be written
        using Leads = PrintedLink::Leads;
        const Leads leads = link->Direction == LinkDirection::Both    ? Leads::BothWays
                            : link->Direction == LinkDirection::Right ? Leads::Here
                                                                      : Leads::There;
        links.push_back({leads, link->LinkedItemId, link->LinkedItemTitle, link->Note});
    }
    return links;
}

std::vector<PrintedFile> FilesOf(CCodeItem& item)
{
    std::vector<PrintedFile> files;
    for (const std::shared_ptr<CPrintFile>& file : item.PrintFiles())
        files.push_back({file->Title(), file->Size(), PlainTextFromRtf(file->Description()), file->OrigDateTime(),
                         file->DateAdded()});
    return files;
}

qsizetype CharactersOf(const PrintedItem& item)
{
    qsizetype count = item.Description.size() + item.Info.size() + item.Notes.Length() + item.PlainNotes.size()
                      + item.PageText.size();
    for (const PrintedCode* code : {&item.Code, &item.Usage}) {
        for (const PrintedLine& line : *code)
            count += line.Text.size() + qsizetype(line.Spans.size() * sizeof(PrintedSpan) / sizeof(QChar));
    }
    return count;
}

} // namespace

ItemGatherer::ItemGatherer(Library& library, PrintParts parts) : m_library(library), m_parts(parts)
{
    m_format.ColorizeInit(library);
    m_language = library.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText();
}

PrintedItem ItemGatherer::Gather(qint64 id)
{
    RequireItem(m_library, id);
    CCodeItem item;
    item.Initialise(m_library, QString::number(id));
    item.ReadWhole();
    item.PrintFiles().InitializeItemFilesList(m_library, id);
    return Gather(item, m_library.HTMLFolder() + QString::number(id) + u".htm"_s);
}

PrintedItem ItemGatherer::Gather(CCodeItem& item, const QString& pagePath, const UnsavedTexts& typed)
{
    PrintedItem printed;
    printed.Id = item.Key().toLongLong();
    printed.Title = item.Title();
    printed.Path = PathOf(item.ParentKey().toLongLong());
    if (Has(PrintPart::About)) {
        printed.Description = item.Description();
        printed.Info = item.Info();
    }
    AddTexts(printed, item, typed);
    if (Has(PrintPart::Files))
        printed.Files = FilesOf(item);
    if (Has(PrintPart::Links))
        printed.Links = LinksOf(item);
    if (Has(PrintPart::Page) && item.HTMLPage())
        printed.PageText = TextOfPageFile(pagePath);
    if (item.ReadFailed())
        RaiseUnreadable(printed.Title, printed.Id, {});
    printed.Characters = CharactersOf(printed);
    return printed;
}

void ItemGatherer::AddTexts(PrintedItem& printed, CCodeItem& item, const UnsavedTexts& typed)
{
    const QString code = typed.Code ? *typed.Code : item.Code();
    const QString usage = typed.Usage ? *typed.Usage : item.Example();
    QString language = LanguageInRtf(code);
    if (language.isEmpty())
        language = LanguageInRtf(usage);
    m_format.SetItemLanguage(language);
    if (Has(PrintPart::Code))
        printed.Code = CodeOf(code);
    if (Has(PrintPart::Usage))
        printed.Usage = CodeOf(usage);
    if (Has(PrintPart::Notes))
        AddNotes(printed, typed.Notes ? *typed.Notes : item.Notes());
    if (Has(PrintPart::About))
        AddFacts(printed, item,
                 code.isEmpty() && usage.isEmpty() ? QString()
                 : language.isEmpty()              ? m_language
                                                   : language);
}

/// By the rules of its language, or as it was painted. Where it was not, a copy is painted for its colours alone: that
/// may spell words another way, and what is printed is what is stored.
PrintedCode ItemGatherer::CodeOf(const QString& rtf)
{
    RichText text;
    text.SetTextRTF(rtf);
    if (text.Text().isEmpty())
        return {};
    if (const std::shared_ptr<RuleScan> scan = m_format.Rules())
        return WithoutLastEmptyLine(CodeByRules(text.Document(), *scan));
    RichText painted = text;
    if (!HasColours(text.Document()))
        m_format.ColorizeCode(painted);
    const bool fits = painted.Text().size() == text.Text().size();
    PrintedCode code;
    ForEachLine(text.Text(), [&](qsizetype begin, qsizetype length) {
        code.push_back(Expanded(QStringView(text.Document().Text()).sliced(begin, length),
                                SpansOfLooks(fits ? painted.Document() : text.Document(), begin, length)));
    });
    return WithoutLastEmptyLine(std::move(code));
}

void ItemGatherer::AddNotes(PrintedItem& printed, const QString& rtf) const
{
    if (WhyTooLarge(BurdenOf(rtf), TextForm::Formatted).isEmpty())
        ReadRtf(rtf, printed.Notes);
    else
        printed.PlainNotes = PlainTextFromRtf(rtf);
}

void ItemGatherer::AddFacts(PrintedItem& printed, CCodeItem& item, const QString& language) const
{
    const auto add = [&printed](const QString& caption, const QString& value) {
        if (!value.isEmpty())
            printed.Facts << caption + u' ' + value;
    };
    const auto day = [](Date date) { return date.IsNone() ? QString() : DateFormatCustom(date, u"d mmm yyyy"_s); };
    const qint32 rating = item.ItemRating();
    add(u"Language"_s, language);
    add(u"Status"_s, NameOfStatus(item.ItemStatus()));
    add(u"Rating"_s, rating >= 1 && rating <= BestRating ? u"%1 of 5"_s.arg(rating / 2.0) : QString());
    add(u"Created"_s, day(item.Created()));
    add(u"Changed"_s, day(item.LastChanged()));
}

/// The titles from the top down to an item; a cycle in damaged rows is walked once.
QStringList ItemGatherer::PathOf(qint64 id)
{
    struct Step {
        qint64 Item;
        QString Title;
    };
    std::vector<Step> unknown; // upwards
    QSet<qint64> seen;
    while (id > 0 && !m_paths.contains(id) && !seen.contains(id)) {
        seen.insert(id);
        Statement row = m_library.Query(u"SELECT ParentID, Title FROM Items WHERE ID = ?"_s, {id});
        if (!row.Step())
            break;
        unknown.push_back({id, row.Text(1)});
        id = row.Long(0);
    }
    QStringList path = m_paths.value(id);
    for (auto step = unknown.rbegin(); step != unknown.rend(); ++step) {
        path << step->Title;
        m_paths.insert(step->Item, path);
    }
    return path;
}

} // namespace qb
