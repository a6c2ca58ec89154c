#include "finder/QuickPreview.h"

#include "finder/FindRequest.h"
#include "panels/TreeNodes.h"
#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/Library.h"
#include "support/ErrorRoutine.h"
#include "text/RulePaint.h"
#include "text/TextBurden.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"QuickPreviews"_s;
const QString GoneNotice = u"This item is not in the library any more."_s;

/// One text of the snapshot that a search went through.
QString SearchedText(const FindRequest& request, qint64 item, const FindPlace& place)
{
    const FindSnapshot& texts = *request.Texts();
    const std::optional<FindSnapshot::Place> at = texts.Find(item);
    if (!at)
        return {};
    const FindSegment& segment = texts.SegmentOf(*at);
    for (const SegmentPart& part : segment.PartsOfItem(at->Item)) {
        if (part.Field == place.Field && part.Piece == place.Piece && part.Source == place.Source)
            return QString::fromUtf8(segment.TextOf(segment.ChunkOfItem(at->Item), part));
    }
    return {};
}

void Mark(const FindMatcher& matcher, QuickPreview& preview)
{
    constexpr size_t MostMarks = 500;
    preview.Marks = RangesIn(preview.Content.Text(), matcher, MostMarks);
}

/// What a folder has to show: what stands in it.
QString ChildTitles(const TreeNodes& nodes, qint64 item)
{
    constexpr size_t MostChildren = 200;
    const TreeNode* node = nodes.Find(item);
    QStringList titles;
    for (size_t i = 0; node && i < std::min(node->Children.size(), MostChildren); ++i)
        titles << node->Children[i]->Text();
    return titles.join(u"\r\n"_s);
}

} // namespace

void QuickPreviews::Forget()
{
    m_formatter.reset();
}

CTextFormat& QuickPreviews::Formatter()
{
    if (!m_formatter) {
        m_formatter = std::make_unique<CTextFormat>();
        m_formatter->ColorizeInit(*m_host.OpenLibrary());
    }
    return *m_formatter;
}

/// The columns of one row, read at once; nothing when there is none.
std::optional<QuickPreviews::Texts> QuickPreviews::Read(qint64 item)
{
    Library* library = m_host.OpenLibrary();
    if (!library || item == 0)
        return std::nullopt;
    Statement row = library->Query(u"SELECT Title, Description, Code, Example, Notes FROM Items WHERE ID = ?"_s,
                                   {item});
    if (!row.Step())
        return std::nullopt;
    return Texts{.Title = row.Text(0),
                 .Description = row.Text(1),
                 .Code = row.Text(2),
                 .Usage = row.Text(3),
                 .Notes = row.Text(4),
                 .Unsaved = m_host.UnsavedCode(item)};
}

QuickPreview QuickPreviews::Of(const QuickRow& row, const FindRequest* request)
{
    if (row.What == QuickRow::Kind::Line)
        return OfLine(row);
    if (row.Item == 0)
        return {};
    QuickPreview failed;
    failed.Notice = u"The item can't be read."_s;
    return Guarded(
        ModuleName, u"Of"_s,
        [&] {
            const std::optional<Texts> texts = Read(row.Item);
            if (!texts) {
                QuickPreview gone;
                gone.Notice = GoneNotice;
                return gone;
            }
            QuickPreview preview = row.Place && request && request->Texts() ? OfHit(row, *texts, *request)
                                                                            : OfItem(row, *texts);
            preview.Title = texts->Title;
            return preview;
        },
        failed);
}

/// The text that tells most of an item, of those that it has.
QuickPreview QuickPreviews::OfItem(const QuickRow& row, const Texts& texts)
{
    QuickPreview preview;
    const bool hasCode = texts.Unsaved ? !texts.Unsaved->Text().isEmpty() : !texts.Code.isEmpty();
    if (hasCode || !texts.Usage.isEmpty()) {
        preview.Caption = hasCode ? u"Code"_s : u"Usage"_s;
        ShowCode(texts, hasCode ? texts.Code : texts.Usage, preview);
        return preview;
    }
    const std::pair<QString, QString> others[] = {{u"Notes"_s, texts.Notes},
                                                  {u"Description"_s, texts.Description},
                                                  {u"Items below"_s, ChildTitles(m_host.Nodes(), row.Item)}};
    for (const auto& [caption, text] : others) {
        if (text.isEmpty())
            continue;
        preview.Caption = caption;
        ShowPlain(text, preview);
        return preview;
    }
    preview.Notice = u"The item has no texts yet."_s;
    return preview;
}

/// The text that holds the place, with all that was found in it marked.
QuickPreview QuickPreviews::OfHit(const QuickRow& row, const Texts& texts, const FindRequest& request)
{
    QuickPreview preview;
    preview.Caption = row.Mark.section(u' ', 0, 0);
    switch (row.Place->Field) {
    case FindField::Title:
        return OfItem(row, texts);
    case FindField::Code:
    case FindField::Usage: {
        const bool isCode = row.Place->Field == FindField::Code;
        ShowCode(texts, isCode ? texts.Code : texts.Usage, preview);
        break;
    }
    case FindField::Notes:
        ShowPlain(texts.Notes, preview);
        break;
    default:
        preview.Caption = row.Mark;
        ShowPlain(SearchedText(request, row.Item, *row.Place).replace(u'\n', u"\r\n"_s), preview);
    }
    preview.Line = row.Place->Line;
    Mark(request.Matcher(), preview);
    return preview;
}

QuickPreview QuickPreviews::OfLine(const QuickRow& row)
{
    QuickPreview preview;
    std::optional<ShownCode> code = m_host.CurrentCode();
    if (!code)
        return preview;
    Formatter().SetItemLanguage(code->Content.Document().Language());
    preview.Title = code->Title;
    preview.Caption = u"Line %1"_s.arg(row.Line);
    preview.Content = std::move(code->Content);
    preview.Rules = Formatter().Rules();
    preview.Line = row.Line;
    return preview;
}

/// As the box of the item would show it.
void QuickPreviews::ShowCode(const Texts& texts, const QString& rtf, QuickPreview& preview)
{
    const bool isUnsaved = texts.Unsaved && preview.Caption == u"Code"_s;
    if (const QString reason = isUnsaved ? QString() : WhyTooLarge(BurdenOf(rtf), TextForm::Code); !reason.isEmpty())
        return preview.Content.SetText(PlainBegin(rtf, reason));
    const QString ofCode = texts.Unsaved ? texts.Unsaved->Document().Language() : LanguageInRtf(texts.Code);
    Formatter().SetItemLanguage(ofCode.isEmpty() ? LanguageInRtf(texts.Usage) : ofCode);
    if (isUnsaved)
        preview.Content = *texts.Unsaved;
    else
        preview.Content.SetTextRTF(rtf);
    preview.Rules = Formatter().Rules();
    if (preview.Rules)
        TakePaintOff(preview.Content);
}

void QuickPreviews::ShowPlain(const QString& stored, QuickPreview& preview) const
{
    const QString reason = WhyTooLarge(BurdenOf(stored), TextForm::Code);
    preview.Content.SetText(reason.isEmpty() ? PlainTextFromRtf(stored) : PlainBegin(stored, reason));
}

/// All of it, however large; colours only where they cost no time.
RichText QuickPreviews::CodeOf(const QuickRow& row)
{
    return Guarded(
        ModuleName, u"CodeOf"_s,
        [&] {
            const std::optional<Texts> texts = Read(row.Item);
            if (!texts)
                return RichText();
            RichText code;
            if (texts->Unsaved)
                code = *texts->Unsaved;
            else
                code.SetTextRTF(texts->Code);
            const bool isTooLarge = !WhyTooLarge(BurdenOf(texts->Code), TextForm::Code).isEmpty();
            Formatter().SetItemLanguage(code.Document().Language());
            if (Formatter().Rules() && !isTooLarge)
                Formatter().ColorizeCode(code);
            return code;
        },
        RichText());
}

} // namespace qb
