#pragma once

#include "text/ui/RichTextBox.h"

#include <QColor>
#include <QWidget>

class QLabel;
class QStackedWidget;

namespace qb {

class BrowserView;

/// A rich text box under a caption, with a browser that can take its place. What it does not say
/// itself the box does: its properties of the same names are the box's.
class ctlCaptionRTB : public QWidget {
    Q_OBJECT

public:
    explicit ctlCaptionRTB(QWidget* parent = nullptr);

    QString Caption() const;
    void SetCaption(const QString& caption);
    /// In pixels.
    int CaptionHeight() const;
    void SetCaptionHeight(int height);
    /// The background of the box.
    QColor TextBackColor() const { return m_backColor; }
    void SetTextBackColor(const QColor& color);
    /// The font of text that has none of its own.
    RtfFont FontRTB() const { return m_font; }
    void SetFontRTB(const RtfFont& font);

    /// Whether the browser stands in the box's place.
    bool ShowBrowser() const;
    void SetShowBrowser(bool show);
    /// Shows an address in the browser; pages of the library are those of @p folder.
    void Navigate(const QString& address, const QString& folder);

    /// A widget of the owner's that can take the box's place while no browser stands there; it is this one's from now
    /// on.
    void SetSubstitute(QWidget* widget);
    void SetShowSubstitute(bool show);

    /// Whether the box has InactiveColor for its background while it is disabled.
    bool ShowInactive() const { return m_showInactive; }
    void SetShowInactive(bool show);
    QColor InactiveColor() const { return m_inactiveColor; }
    void SetInactiveColor(const QColor& color);
    /// Disables the box, or enables it again.
    void SetInactive(bool inactive);

    // The box's own
    RichTextBox* RtbText() const { return rtbText; }
    QString Text() const { return rtbText->Text(); }
    void SetText(const QString& text) { rtbText->SetText(text); }
    QString TextRTF() const { return rtbText->TextRTF(); }
    void SetTextRTF(const QString& rtf) { rtbText->SetTextRTF(rtf); }
    qsizetype SelStart() const { return rtbText->SelStart(); }
    void SetSelStart(qsizetype position) { rtbText->SetSelStart(position); }
    qsizetype SelLength() const { return rtbText->SelLength(); }
    void SetSelLength(qsizetype length) { rtbText->SetSelLength(length); }
    QString SelText() const { return rtbText->SelText(); }
    bool SetSelText(const QString& text) { return rtbText->SetSelText(text); }
    QString SelRTF() const { return rtbText->SelRTF(); }
    bool SetSelRTF(const QString& rtf) { return rtbText->SetSelRTF(rtf); }
    std::optional<quint32> SelColor() const { return rtbText->SelColor(); }
    void SetSelColor(quint32 color) { rtbText->SetSelColor(color); }
    std::optional<bool> SelBold() const { return rtbText->SelBold(); }
    void SetSelBold(bool on) { rtbText->SetSelBold(on); }
    std::optional<bool> SelItalic() const { return rtbText->SelItalic(); }
    void SetSelItalic(bool on) { rtbText->SetSelItalic(on); }
    std::optional<bool> SelUnderline() const { return rtbText->SelUnderline(); }
    void SetSelUnderline(bool on) { rtbText->SetSelUnderline(on); }
    std::optional<QString> SelFontName() const { return rtbText->SelFontName(); }
    void SetSelFontName(const QString& name) { rtbText->SetSelFontName(name); }
    std::optional<double> SelFontSize() const { return rtbText->SelFontSize(); }
    void SetSelFontSize(double points) { rtbText->SetSelFontSize(points); }
    bool Locked() const { return rtbText->Locked(); }
    void SetLocked(bool locked) { rtbText->SetLocked(locked); }

private:
    void ShowBackground();
    void ShowPlace();

    QLabel* lblCaption;
    QStackedWidget* m_places;
    RichTextBox* rtbText;
    QWidget* Picture1; ///< holds the browser
    BrowserView* WebBrowserView;
    QWidget* m_substitute = nullptr;
    bool m_showBrowser = false;
    bool m_showSubstitute = false;
    RtfFont m_font = CodeFont;
    QColor m_backColor;
    QColor m_inactiveColor;
    bool m_showInactive = false;
};

} // namespace qb
