#pragma once

#include "text/ui/RichTextBoxOf.h"

#include <QTextEdit>

namespace qb {

/// The box for formatted text: lists, alignments, links and pictures are shown.
class RichTextBox : public RichTextBoxOf<QTextEdit> {
    Q_OBJECT

public:
    explicit RichTextBox(const RtfFont& font = CodeFont, QWidget* parent = nullptr);

Q_SIGNALS:
    /// A link was opened by the menu, or by a click, with Ctrl unless the box is locked. @p target is as the text
    /// names it, and nobody has checked it.
    void LinkActivated(const QString& target);
    /// The wheel was turned with Ctrl: 1 for larger, -1 for smaller. The box itself stays as it is.
    void ZoomAsked(int steps);

protected:
    void ActivateLink(const QString& target) override { Q_EMIT LinkActivated(target); }
    void ZoomWanted(int steps) override { Q_EMIT ZoomAsked(steps); }
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void PaintListMarks(QPaintEvent* event);
    int ListNumberOf(const QTextBlock& block) const;
};

} // namespace qb
