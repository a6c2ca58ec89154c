#pragma once

#include "text/CTextFormat.h"

namespace qb {

/// The commands of a panel on the selection in its box for formatted text.
class FormatCommands {
public:
    /// What is read is what CTextFormat has last known of the selection. A change is made in the box that the panel
    /// has given it, locked or not: that is looked at by whoever calls. Sizes are in points, alignments are those of
    /// TextAlignment, a colour has red in the low byte. A change that fails is reported, one of the indent is not.
    bool Bold() const { return mFT.Bold(); }
    void SetBold(bool on) { mFT.SetBold(on); }
    bool Italic() const { return mFT.Italic(); }
    void SetItalic(bool on) { mFT.SetItalic(on); }
    bool Underline() const { return mFT.Underline(); }
    void SetUnderline(bool on) { mFT.SetUnderline(on); }
    bool Bullets() const { return mFT.Bullets(); }
    void SetBullets(bool on) { mFT.SetBullets(on); }
    int Alignment() const { return mFT.Alignment(); }
    void SetAlignment(int alignment) { mFT.SetAlignment(alignment); }
    void IncreaseIndent() { mFT.IncreaseIndent(); }
    void DecreaseIndent() { mFT.DecreaseIndent(); }
    QString FontName() const { return mFT.Font(); }
    void SetFontName(const QString& name) { mFT.SetFont(name); }
    int FontSize() const { return mFT.Size(); }
    void SetFontSize(int points) { mFT.SetSize(points); }
    void SetFontColor(quint32 color) { mFT.SetColor(color); }

protected:
    CTextFormat mFT;
};

} // namespace qb
