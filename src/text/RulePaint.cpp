#include "text/RulePaint.h"

#include "platform/richtext/RtfPlainText.h"
#include "store/LanguageDefinition.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString HeaderMark = u"###############   "_s;

void Select(IRichTextBox& box, qsizetype begin, qsizetype length)
{
    box.SetSelStart(begin);
    box.SetSelLength(length);
}

/// Calls @p visit with begin and length of each line, its end left out.
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

bool IsHeader(IRichTextBox& box, const QString& text, qsizetype begin, qsizetype length)
{
    if (!ReadsLikeHeader(QStringView(text).sliced(begin, length)))
        return false;
    Select(box, begin, 1);
    return box.SelBold() == true;
}

/// The begin and the end of what lies between headers.
QList<std::pair<qsizetype, qsizetype>> PartsBetweenHeaders(IRichTextBox& box, const QString& text)
{
    QList<std::pair<qsizetype, qsizetype>> parts;
    qsizetype from = 0;
    for (qsizetype at = text.indexOf(HeaderMark); at >= 0; at = text.indexOf(HeaderMark, at + 1)) {
        const qsizetype begin = at == 0 ? 0 : text.lastIndexOf(u'\n', at - 1) + 1;
        const qsizetype found = text.indexOf(u'\r', at);
        const qsizetype end = found < 0 ? text.size() : found;
        if (begin < from || !IsHeader(box, text, begin, end - begin))
            continue;
        parts.append({from, begin});
        from = end;
    }
    parts.append({from, text.size()});
    return parts;
}

void ClearLooks(IRichTextBox& box, const QString& text, quint32 color)
{
    Select(box, 0, text.size());
    box.SetSelFontName(CodeFont.Name);
    box.SetSelFontSize(CodeFont.Points);
    box.SetSelItalic(false);
    box.SetSelUnderline(false);
    for (const auto& [begin, end] : PartsBetweenHeaders(box, text)) {
        if (begin == end)
            continue;
        Select(box, begin, end - begin);
        box.SetSelBold(false);
        box.SetSelColor(color);
    }
}

} // namespace

bool ReadsLikeHeader(QStringView line)
{
    const qsizetype mark = line.indexOf(HeaderMark);
    return mark > 0 && mark <= LongestCommentMark;
}

void PaintByRules(IRichTextBox& box, RuleScan& scan, const TokenColors& colors, Work& work)
{
    constexpr qsizetype LongestWithoutProgress = 3000;
    constexpr int Whole = 100;
    constexpr int Step = 5;
    const QString text = box.Text();
    const bool isLong = text.size() >= LongestWithoutProgress;
    if (isLong)
        work.Advance(0, Whole);
    ClearLooks(box, text, colors[size_t(TokenKind::Text)]);
    int state = RuleScan::Begin;
    int told = 0;
    std::vector<Token> tokens;
    ForEachLine(text, [&](qsizetype begin, qsizetype length) {
        if (IsHeader(box, text, begin, length))
            return;
        state = scan.ScanLine(QStringView(text).sliced(begin, length), state, tokens);
        const int percent = int(begin * Whole / std::max<qsizetype>(1, text.size()));
        if (isLong && percent >= told + Step) {
            told = percent / Step * Step;
            work.Advance(told, Whole);
        }
        for (const Token& token : tokens) {
            Select(box, begin + token.Begin, token.Length);
            box.SetSelColor(colors[size_t(token.Kind)]);
        }
    });
    if (isLong)
        work.Advance(Whole, Whole);
    Select(box, 0, 0);
    box.SetSelColor(0);
}

void TakePaintOff(IRichTextBox& box)
{
    ClearLooks(box, box.Text(), AutomaticColor);
    Select(box, 0, 0);
}

} // namespace qb
