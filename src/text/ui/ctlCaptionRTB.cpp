#include "text/ui/ctlCaptionRTB.h"

#include "web/LocalPages.h"
#include "web/ui/BrowserView.h"

#include <QLabel>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

ctlCaptionRTB::ctlCaptionRTB(QWidget* parent)
    : QWidget(parent), lblCaption(new QLabel), m_places(new QStackedWidget), rtbText(new RichTextBox),
      Picture1(new QWidget), WebBrowserView(new BrowserView)
{
    constexpr int CaptionMargin = 4;
    lblCaption->setObjectName(u"lblCaption"_s);
    lblCaption->setTextFormat(Qt::PlainText);
    lblCaption->setMargin(CaptionMargin);
    lblCaption->setBuddy(rtbText);
    rtbText->setObjectName(u"rtbText"_s);
    Picture1->setObjectName(u"Picture1"_s);
    WebBrowserView->setObjectName(u"WebBrowser"_s);
    auto* picture = new QVBoxLayout(Picture1);
    picture->setContentsMargins(0, 0, 0, 0);
    picture->addWidget(WebBrowserView);
    m_places->addWidget(rtbText);
    m_places->addWidget(Picture1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(lblCaption);
    layout->addWidget(m_places, 1);
}

QString ctlCaptionRTB::Caption() const
{
    return lblCaption->text();
}

void ctlCaptionRTB::SetCaption(const QString& caption)
{
    lblCaption->setText(caption);
}

int ctlCaptionRTB::CaptionHeight() const
{
    return lblCaption->minimumHeight() > 0 ? lblCaption->minimumHeight() : lblCaption->sizeHint().height();
}

void ctlCaptionRTB::SetCaptionHeight(int height)
{
    lblCaption->setFixedHeight(height);
}

void ctlCaptionRTB::SetTextBackColor(const QColor& color)
{
    m_backColor = color;
    ShowBackground();
}

void ctlCaptionRTB::SetFontRTB(const RtfFont& font)
{
    m_font = font;
    rtbText->SetDefaultFont(font);
}

bool ctlCaptionRTB::ShowBrowser() const
{
    return m_places->currentWidget() == Picture1;
}

void ctlCaptionRTB::SetShowBrowser(bool show)
{
    m_showBrowser = show;
    ShowPlace();
}

void ctlCaptionRTB::SetSubstitute(QWidget* widget)
{
    m_substitute = widget;
    m_places->addWidget(widget);
}

void ctlCaptionRTB::SetShowSubstitute(bool show)
{
    m_showSubstitute = show && m_substitute;
    ShowPlace();
}

void ctlCaptionRTB::ShowPlace()
{
    m_places->setCurrentWidget(m_showBrowser ? Picture1 : m_showSubstitute ? m_substitute : rtbText);
}

void ctlCaptionRTB::Navigate(const QString& address, const QString& folder)
{
    WebBrowserView->Navigate(UrlOfAddress(address), folder);
}

void ctlCaptionRTB::SetShowInactive(bool show)
{
    m_showInactive = show;
    ShowBackground();
}

void ctlCaptionRTB::SetInactiveColor(const QColor& color)
{
    m_inactiveColor = color;
    ShowBackground();
}

void ctlCaptionRTB::SetInactive(bool inactive)
{
    rtbText->setEnabled(!inactive);
    ShowBackground();
}

/// A colour that is not set leaves the system's own.
void ctlCaptionRTB::ShowBackground()
{
    QPalette colors;
    if (m_backColor.isValid())
        colors.setColor(QPalette::Base, m_backColor);
    if (m_showInactive && m_inactiveColor.isValid())
        colors.setColor(QPalette::Disabled, QPalette::Base, m_inactiveColor);
    rtbText->setPalette(colors);
}

} // namespace qb
