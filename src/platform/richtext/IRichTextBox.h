#pragma once

#include "platform/richtext/TextFormats.h"

#include <QList>
#include <QString>
#include <optional>

namespace qb {

/// The operations of a rich text box, with or without a window. Positions count from 0, a CR LF as
/// two. Reading a property of a selection of mixed state gives nothing. Writing text into a
/// protected range, or anything while the box is locked by its user interface, is refused; code
/// lifts a protection by SetSelProtected(false) first.
class IRichTextBox {
public:
    virtual ~IRichTextBox() = default;

    /// The whole text without its looks: lines end with CR LF, and a picture is one object replacement character.
    /// Setting it drops all looks and protections, and puts the insertion point at the begin.
    virtual QString Text() const = 0;
    virtual void SetText(const QString& text) = 0;
    /// The whole text as RTF; reading takes plain text for what it is.
    virtual QString TextRTF() const = 0;
    virtual void SetTextRTF(const QString& rtf) = 0;

    /// The begin of the selection; the insertion point when that is empty.
    virtual qsizetype SelStart() const = 0;
    /// Moves the insertion point; the selection is empty then.
    virtual void SetSelStart(qsizetype position) = 0;
    virtual qsizetype SelLength() const = 0;
    virtual void SetSelLength(qsizetype length) = 0;

    /// The selected text in the form of Text(); empty when nothing is selected.
    virtual QString SelText() const = 0;
    /// Replaces the selection; the insertion point stands behind the new text. False when the
    /// range is protected, and nothing is changed.
    virtual bool SetSelText(const QString& text) = 0;
    virtual QString SelRTF() const = 0;
    virtual bool SetSelRTF(const QString& rtf) = 0;

    // Characters of the selection; with an empty one, what is typed next
    virtual std::optional<quint32> SelColor() const = 0;
    virtual void SetSelColor(quint32 color) = 0;
    virtual std::optional<bool> SelBold() const = 0;
    virtual void SetSelBold(bool on) = 0;
    virtual std::optional<bool> SelItalic() const = 0;
    virtual void SetSelItalic(bool on) = 0;
    virtual std::optional<bool> SelUnderline() const = 0;
    virtual void SetSelUnderline(bool on) = 0;
    virtual std::optional<bool> SelProtected() const = 0;
    virtual void SetSelProtected(bool on) = 0;
    virtual std::optional<QString> SelFontName() const = 0;
    virtual void SetSelFontName(const QString& name) = 0;
    /// In points.
    virtual std::optional<double> SelFontSize() const = 0;
    virtual void SetSelFontSize(double points) = 0;

    // Paragraphs of the selection; lengths in twips
    virtual std::optional<bool> SelBullet() const = 0;
    virtual void SetSelBullet(bool on) = 0;
    virtual int BulletIndent() const = 0;
    virtual void SetBulletIndent(int twips) = 0;
    virtual std::optional<TextAlignment> SelAlignment() const = 0;
    virtual void SetSelAlignment(TextAlignment alignment) = 0;
    virtual std::optional<int> SelIndent() const = 0;
    virtual void SetSelIndent(int twips) = 0;

    enum class Direction { Forward, Backward };
    enum class Members { Of, NotOf };

    /// Moves the insertion point to the nearest character of the set (or, negated, outside it):
    /// before it going forward, behind it going backward; to the end or the begin without one.
    void UpTo(QStringView set, Direction direction, Members members = Members::Of);
    /// Extends the selection from the insertion point as long as characters are of the set (or,
    /// negated, outside it).
    void Span(QStringView set, Direction direction, Members members = Members::Of);
    /// Looks for a text between two positions (-1: the end), selects it and returns its position,
    /// or -1 and no change.
    qsizetype Find(const QString& what, qsizetype begin = 0, qsizetype end = -1, bool matchCase = false,
                   bool wholeWord = false);
    /// All places of a text, none within another.
    QList<qsizetype> FindAll(const QString& what, bool matchCase = false, bool wholeWord = false) const;

protected:
    /// The text without a copy, for the searches above.
    virtual const QString& TextView() const = 0;
};

} // namespace qb
