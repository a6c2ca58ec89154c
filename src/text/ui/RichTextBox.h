#pragma once

#include "text/ui/RichTextBoxOf.h"

#include <QTextEdit>

namespace qb {

/// The box for formatted text: lists, alignments, links and pictures are shown.
class RichTextBox : public RichTextBoxOf<QTextEdit> {
    Q_OBJECT

public:
    explicit RichTextBox(const RtfFont& font = CodeFont, QWidget* parent = nullptr);

    /// Addresses in the text can be clicked, and look so. The text itself is not changed by that.
    void SetAutoURLDetect(bool detects);

Q_SIGNALS:
    /// A link was opened by the menu, or by a click, with Ctrl unless the box is locked. @p target is as the text
    /// names it, and nobody has checked it.
    void LinkActivated(const QString& target);
    /// An address that was detected was clicked, with Ctrl if @p isOutside.
    void AddressClicked(const QString& address, bool isOutside);
    /// The wheel was turned with Ctrl: 1 for larger, -1 for smaller. The box itself stays as it is.
    void ZoomAsked(int steps);

protected:
    void ActivateLink(const QString& target) override { Q_EMIT LinkActivated(target); }
    void ZoomWanted(int steps) override { Q_EMIT ZoomAsked(steps); }
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QString AddressAt(const QPoint& place) const;
    void PaintAddresses(QPaintEvent* event);
    void PaintListMarks(QPaintEvent* event);
    int ListNumberOf(const QTextBlock& block) const;

    bool m_detectsAddresses = false;
    QPoint m_pressed; ///< where the mouse was pressed last
};

} // namespace qb
