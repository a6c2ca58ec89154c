#pragma once

#include "platform/richtext/RichText.h"
#include "text/ui/RichTextLook.h"

#include <QTextBlock>

class QTextDocument;

namespace qb {

/// Keeps a text document of the window like a RichText. The RichText is what counts: each change
/// is made there first and then shown. Only what the text document does by itself, undo and redo,
/// is read back. A line end counts as two positions there and as one here.
class RichTextPage {
public:
    /// Both outlive it. The text document shows nothing of the text before Load.
    RichTextPage(RichText& text, QTextDocument& document);

    /// The text document's position for one of the text's, and back. A position within a line end
    /// is shown before it.
    int ToDocument(qsizetype position) const;
    qsizetype FromDocument(int position) const;

    /// Shows all of the text anew; what could be undone is gone.
    void Load(const QPalette& palette, int dotsPerInch);
    /// Shows what has come into the text in the place of a range. Single letters that come or go
    /// may join the step of undo before them.
    void ShowReplaced(qsizetype position, qsizetype oldLength, qsizetype newLength, bool joinsSteps);
    void ShowFormats(qsizetype begin, qsizetype end);
    void ShowParagraphs(qsizetype begin, qsizetype end);
    /// Shows a text that differs from this one in spelling and looks, but not in its lengths, as
    /// one step that can be undone.
    void ShowRepainted(const RichTextDocument& old);
    /// Takes over what the text document has changed by itself.
    void TakeBack(int position, int added);

    /// The format of the paragraph of a block.
    const ParagraphFormat& ParagraphOf(const QTextBlock& block) const;

private:
    void InsertAll(QTextCursor& cursor);
    void InsertRuns(QTextCursor& cursor, qsizetype begin, qsizetype end);
    void AddPictures(qsizetype begin, qsizetype end);
    QString Shown(qsizetype begin, qsizetype end) const;
    void MarkStandIns(qsizetype begin, qsizetype end);

    RichText& m_text;
    QTextDocument& m_document;
    RichTextLook m_look;
};

} // namespace qb
