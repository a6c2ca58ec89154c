#include "text/ui/LiveColours.h"

#include "support/ui/Colors.h"
#include "text/RulePaint.h"

#include <QTextDocument>
#include <QTextLayout>
#include <algorithm>

namespace qb {

void LiveColours::SetRules(std::shared_ptr<RuleScan> scan)
{
    m_lines.Reset(std::move(scan), m_document.blockCount());
    if (!IsOn() && m_anyShown)
        TakeColoursOff();
}

void LiveColours::TakeColoursOff()
{
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        if (!block.layout()->formats().isEmpty())
            block.layout()->clearFormats();
    }
    m_anyShown = false;
}

void LiveColours::SetColors(const TokenColors& colors)
{
    for (const TokenKindRow& row : TokenKindRows) {
        QTextCharFormat& format = m_formats[size_t(row.Kind)];
        format = QTextCharFormat();
        if (row.Kind != TokenKind::Text)
            format.setForeground(ColorOf(colors[size_t(row.Kind)]));
    }
}

void LiveColours::Loaded()
{
    m_lines.Reset(Rules(), m_document.blockCount());
    m_anyShown = false; // the blocks are new
}

void LiveColours::Changed(int position, int added)
{
    const int first = m_document.findBlock(position).blockNumber();
    const QTextBlock lastBlock = m_document.findBlock(std::min(position + added, m_document.characterCount() - 1));
    const int now = (lastBlock.isValid() ? lastBlock.blockNumber() : m_document.blockCount() - 1) - first + 1;
    const int before = now - (m_document.blockCount() - m_lines.LineCount());
    if (before < 1 || first < 0)
        Loaded();
    else
        m_lines.LinesChanged(first, before, now);
}

bool LiveColours::IsHeader(const QTextBlock& block) const
{
    return ReadsLikeHeader(block.text()) && block.begin() != block.end()
           && block.begin().fragment().charFormat().fontWeight() == QFont::Bold;
}

QList<QTextLayout::FormatRange> LiveColours::FormatsOf(const QTextBlock& block)
{
    constexpr int LongestLine = 20000; // more pieces in one line than an eye or the layout can take
    QList<QTextLayout::FormatRange> formats;
    const auto textOf = [this](int line) {
        const QTextBlock other = m_document.findBlockByNumber(line);
        return IsHeader(other) ? QString() : other.text(); // a header opens nothing
    };
    const std::vector<Token>& tokens = m_lines.TokensOf(block.blockNumber(), textOf);
    if (block.length() > LongestLine)
        return formats;
    formats.reserve(qsizetype(tokens.size()));
    for (const Token& token : tokens)
        formats.append({token.Begin, token.Length, m_formats[size_t(token.Kind)]});
    return formats;
}

bool LiveColours::Show(int firstLine, int lines, int& dirtyBegin, int& dirtyEnd)
{
    bool changed = false;
    QTextBlock block = m_document.findBlockByNumber(firstLine);
    for (int i = 0; i < lines && block.isValid(); ++i, block = block.next()) {
        const QList<QTextLayout::FormatRange> formats = FormatsOf(block);
        if (formats == block.layout()->formats())
            continue;
        block.layout()->setFormats(formats);
        if (!changed)
            dirtyBegin = block.position();
        dirtyEnd = block.position() + block.length();
        changed = m_anyShown = true;
    }
    return changed;
}

} // namespace qb
