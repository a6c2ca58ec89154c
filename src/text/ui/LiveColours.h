#pragma once

#include "text/LineColours.h"
#include "text/TokenPalette.h"

#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextLayout>

class QTextDocument;

namespace qb {

/// Colours the lines of a text document as they are seen: the colours lie over the text, so that
/// they are no part of it, of its undo or of what is stored.
class LiveColours {
public:
    /// @p document outlives it. Nothing is coloured before SetRules.
    explicit LiveColours(QTextDocument& document) : m_document(document) {}

    /// By what is coloured; null: nothing is. The headers of sections keep their look.
    void SetRules(std::shared_ptr<RuleScan> scan);
    const std::shared_ptr<RuleScan>& Rules() const { return m_lines.Scan(); }
    bool IsOn() const { return bool(Rules()); }
    /// The colours of each kind on a background of that darkness.
    void SetColors(const TokenColors& colors);

    /// The document holds another text.
    void Loaded();
    /// The document has changed from a position on; so many characters have come in.
    void Changed(int position, int added);
    /// Colours lines that lack it. True when a line's colours have changed, in which case the
    /// document has to be told that it is dirty from @p dirtyBegin up to @p dirtyEnd.
    bool Show(int firstLine, int lines, int& dirtyBegin, int& dirtyEnd);

private:
    QList<QTextLayout::FormatRange> FormatsOf(const QTextBlock& block);
    bool IsHeader(const QTextBlock& block) const;
    void TakeColoursOff();

    QTextDocument& m_document;
    LineColours m_lines;
    std::array<QTextCharFormat, TokenKindCount> m_formats;
    bool m_anyShown = false;
};

} // namespace qb
