#include "text/RulePaint.h"

#include "platform/richtext/RtfPlainText.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

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

bool IsHeader(IRichTextBox& box, const QString& text, qsizetype begin, const QString& header)
{
    if (!QStringView(text).sliced(begin).startsWith(header))
        return false;
    Select(box, begin, header.size());
    return box.SelBold() == true;
}

/// The begin and the end of what lies between headers.
QList<std::pair<qsizetype, qsizetype>> PartsBetweenHeaders(IRichTextBox& box, const QString& text, const QString& header)
{
    QList<std::pair<qsizetype, qsizetype>> parts;
    qsizetype begin = 0;
    for (qsizetype at = text.indexOf(header); at >= 0; at = text.indexOf(header, at + 1)) {
        if ((at > 0 && text[at - 1] != u'\n') || !IsHeader(box, text, at, header))
            continue;
        parts.append({begin, at});
        const qsizetype end = text.indexOf(u'\r', at);
        begin = end < 0 ? text.size() : end;
    }
    parts.append({begin, text.size()});
    return parts;
}

void ClearLooks(IRichTextBox& box, const QString& text, const QString& header, quint32 color)
{
    Select(box, 0, text.size());
    box.SetSelFontName(CodeFont.Name);
    box.SetSelFontSize(CodeFont.Points);
    box.SetSelItalic(false);
    box.SetSelUnderline(false);
    for (const auto& [begin, end] : PartsBetweenHeaders(box, text, header)) {
        if (begin == end)
            continue;
        Select(box, begin, end - begin);
        box.SetSelBold(false);
        box.SetSelColor(color);
    }
}

} // namespace

QString HeaderBegin(const QString& commentIdentifier)
{
    return commentIdentifier + u"###############   "_s;
}

void PaintByRules(IRichTextBox& box, RuleScan& scan, const TokenColors& colors, const QString& header,
                  const std::function<void(int percent)>& progress)
{
    constexpr qsizetype LongestWithoutProgress = 3000;
    constexpr int Whole = 100;
    constexpr int Step = 5;
    const QString text = box.Text();
    const bool isLong = text.size() >= LongestWithoutProgress;
    if (isLong)
        progress(0);
    ClearLooks(box, text, header, colors[size_t(TokenKind::Text)]);
    int state = RuleScan::Begin;
    int told = 0;
    std::vector<Token> tokens;
    ForEachLine(text, [&](qsizetype begin, qsizetype length) {
        if (IsHeader(box, text, begin, header))
            return;
        state = scan.ScanLine(QStringView(text).sliced(begin, length), state, tokens);
        const int percent = int(begin * Whole / std::max<qsizetype>(1, text.size()));
        if (isLong && percent >= told + Step) {
            told = percent / Step * Step;
            progress(told);
        }
        for (const Token& token : tokens) {
            Select(box, begin + token.Begin, token.Length);
            box.SetSelColor(colors[size_t(token.Kind)]);
        }
    });
    if (isLong)
        progress(Whole);
    Select(box, 0, 0);
    box.SetSelColor(0);
}

void TakePaintOff(IRichTextBox& box, const QString& header)
{
    ClearLooks(box, box.Text(), header, AutomaticColor);
    Select(box, 0, 0);
}

} // namespace qb
