#include "publishing/CodeColours.h"

#include "platform/richtext/RichText.h"
#include "text/RulePaint.h"

#include <QSignalBlocker>
#include <algorithm>

namespace qb {

namespace {

/// The headers of sections are bold.
bool IsHeader(const RichTextDocument& document, qsizetype begin, QStringView line)
{
    return ReadsLikeHeader(line) && document.FormatAt(begin).Bold;
}

std::vector<CodePiece> ByRules(const RichTextDocument& document, RuleScan& scan)
{
    std::vector<CodePiece> pieces;
    std::vector<Token> tokens;
    const QStringView text(document.Text());
    int state = RuleScan::Begin;
    for (qsizetype begin = 0; begin <= text.size();) {
        const qsizetype found = text.indexOf(u'\r', begin);
        const qsizetype end = found < 0 ? text.size() : found;
        const QStringView line = text.sliced(begin, end - begin);
        if (IsHeader(document, begin, line)) {
            pieces.push_back({.Begin = begin, .Length = line.size(), .IsHeader = true});
        } else {
            state = scan.ScanLine(line, state, tokens);
            for (const Token& token : tokens)
                pieces.push_back({.Begin = begin + token.Begin, .Length = token.Length, .Kind = token.Kind});
        }
        begin = end + 2;
    }
    return pieces;
}

/// A copy that is painted: what would correct the spelling of a word is passed by.
class PaintedCopy : public RichText {
public:
    explicit PaintedCopy(const RichTextDocument& document) { Document() = document; }
    bool SetSelText(const QString& /*text*/) override
    {
        SetSelStart(SelStart() + SelLength()); // where the insertion point stands behind a text that was put in
        return true;
    }
};

std::vector<CodePiece> ByWords(const RichTextDocument& document, CTextFormat& format)
{
    PaintedCopy copy(document);
    {
        const QSignalBlocker noProgress(&format);
        format.ColorizeCode(copy);
    }
    std::vector<CodePiece> pieces;
    const RichTextDocument& painted = copy.Document();
    const RunMap& runs = painted.Runs();
    for (auto run = runs.RunAt(0); run != runs.End() && run->first < painted.Length(); ++run) {
        const auto next = std::next(run);
        const qsizetype end = next == runs.End() ? painted.Length() : std::min(painted.Length(), next->first);
        const CharFormat& look = painted.Format(run->second);
        const quint32 color = look.Color == 0 ? AutomaticColor : look.Color;
        if (look.Bold || color != AutomaticColor)
            pieces.push_back(
                {.Begin = run->first, .Length = end - run->first, .IsHeader = look.Bold != 0, .Color = color});
    }
    return pieces;
}

} // namespace

std::vector<CodePiece> CodeColours::PiecesOf(const RichTextDocument& document, const QString& language)
{
    Format().SetItemLanguage(language);
    return PiecesOf(document);
}

std::vector<CodePiece> CodeColours::PiecesOf(const RichTextDocument& document)
{
    if (document.Text().isEmpty())
        return {};
    const std::shared_ptr<RuleScan> scan = Format().Rules();
    return scan ? ByRules(document, *scan) : ByWords(document, Format());
}

} // namespace qb
