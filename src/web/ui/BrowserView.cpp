#include "web/ui/BrowserView.h"

#include "support/Addresses.h"
#include "web/LocalPages.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

BrowserView::BrowserView(QWidget* parent) : QWidget(parent), m_layout(new QStackedLayout)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(m_layout, 1);
}

BrowserView::~BrowserView() = default;

void BrowserView::MakeBrowser()
{
    if (std::exchange(m_tried, true))
        return;
    QString reason;
    m_browser = MakeWebBrowser(reason);
    if (!m_browser) {
        m_noBrowser = MakeExcuse("lblNoBrowser",
                                 u"Web pages can't be shown here: %1\n\nInstall Qt WebEngine "
                                 "(libqt6webenginewidgets6), or open the page in your own browser."_s.arg(reason),
                                 u"&Open in Browser"_s, &BrowserView::OpenWanted);
        m_layout->addWidget(m_noBrowser);
        return;
    }
    m_layout->addWidget(m_browser->Widget());
    ConnectBrowser();
}

void BrowserView::ConnectBrowser()
{
    m_browser->IsWebKeptOut = [] { return !WebAccess::WhyKeptOut().isEmpty(); };
    m_browser->KeptOut = std::bind_front(&BrowserView::KeepOut, this);
    m_browser->BeforeNavigate = [this](const QUrl& url) {
        HideNowhere();
        m_layout->setCurrentWidget(m_browser->Widget());
        m_shown = url;
        Q_EMIT BeforeNavigate(url);
    };
    m_browser->LoadFailed = [this](const QUrl& url, const QString& why) {
        TellNowhere(AddressText(url), ReasonInWords(why));
    };
    m_browser->Died = std::bind_front(&BrowserView::TellDead, this);
    m_browser->CommandStateChange = [this](bool back, bool forward) { Q_EMIT CommandStateChange(back, forward); };
    m_browser->ProgressChange = [this](int percent) { Q_EMIT ProgressChange(percent); };
    m_browser->DocumentComplete = [this](const QUrl& url) { Q_EMIT DocumentComplete(url); };
    m_browser->LinkHovered = [this](const QString& address) { Q_EMIT LinkHovered(address); };
    m_browser->Gestured = std::bind_front(&GestureRule::Gesture, &m_gestures);
    m_browser->OpenOutside = [this](const QUrl& url) {
        if (m_gestures.Take())
            Q_EMIT OpenOutside(url.toString());
    };
    m_browser->LoadFile = [this](const QUrl& url) {
        if (m_gestures.Take())
            Q_EMIT LoadFile(url);
    };
    m_browser->OpenItem = [this](qint64 item) {
        if (m_gestures.Take())
            Q_EMIT ItemAsked(item);
    };
    m_browser->IsKnownPage = [this](const QUrl& url) { return m_pages.contains(url); };
}

/// A page of plain text with a button that does what helps.
QWidget* BrowserView::MakeExcuse(const char* name, const QString& text, const QString& button,
                                 void (BrowserView::*pressed)())
{
    auto* excuse = new QWidget;
    auto* label = new QLabel(text);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    auto* help = new QPushButton(button);
    connect(help, &QPushButton::clicked, this, pressed);
    auto* layout = new QVBoxLayout(excuse);
    layout->addStretch();
    layout->addWidget(label);
    layout->addWidget(help, 0, Qt::AlignCenter);
    layout->addStretch();
    return excuse;
}

void BrowserView::OpenWanted()
{
    Q_EMIT OpenOutside(m_wanted.toString());
}

/// It is not loaded again unasked: it might die of itself, again and again.
void BrowserView::TellDead()
{
    if (!m_dead) {
        m_dead = MakeExcuse("lblDead", u"This page has stopped working, and was closed."_s, u"&Load Again"_s,
                            &BrowserView::Reload);
        m_layout->addWidget(m_dead);
    }
    m_layout->setCurrentWidget(m_dead);
}

void BrowserView::KeepOut(const QUrl& url)
{
    if (!m_keptOut) {
        m_keptOut = MakeExcuse("lblKeptOut", {}, u"&Open in Browser"_s, &BrowserView::OpenWanted);
        m_layout->addWidget(m_keptOut);
    }
    m_wanted = url;
    m_keptOut->findChild<QLabel*>(u"lblKeptOut"_s)
        ->setText(u"Pages from the web are not shown here: %1.\n\n%2"_s.arg(WebAccess::WhyKeptOut(),
                                                                            ShownAddress(url.toDisplayString())));
    m_layout->setCurrentWidget(m_keptOut);
}

void BrowserView::ApplyWebAccess()
{
    if (!m_browser || WebAccess::WhyKeptOut().isEmpty()
        || AnswerNavigation({}, m_shown, NavigationCause::Asked, Web::KeptOut) != NavigationAnswer::KeepOut)
        return;
    m_browser.reset(); // hidden, it would go on
    m_tried = false;
    KeepOut(m_shown);
}

void BrowserView::Navigate(const QUrl& url, const QString& folder)
{
    HideNowhere();
    m_gestures.Gesture();
    const Web web = WebAccess::WhyKeptOut().isEmpty() ? Web::Shown : Web::KeptOut;
    const NavigationAnswer answer = AnswerNavigation({}, url, NavigationCause::Asked, web);
    if (answer == NavigationAnswer::KeepOut)
        return KeepOut(url);
    MakeBrowser();
    m_wanted = IsLocalPage(url) ? QUrl::fromLocalFile(QDir::cleanPath(folder + url.path())) : url;
    if (!m_browser)
        return m_layout->setCurrentWidget(m_noBrowser);
    m_browser->SetPages(folder);
    if (answer == NavigationAnswer::Show || answer == NavigationAnswer::LoadFile)
        m_browser->Navigate(url); // which decides about files, as for each link
    else if (answer == NavigationAnswer::OpenOutside)
        Q_EMIT OpenOutside(url.toString());
}

void BrowserView::ShowAsPage(const QUrl& url, const QString& folder)
{
    m_pages.insert(url);
    Navigate(url, folder);
}

void BrowserView::TellNowhere(const QString& address, const QString& reason)
{
    constexpr int Margin = 6;
    if (!m_nowhere) {
        m_nowhere = new QLabel;
        m_nowhere->setObjectName(u"lblNowhere"_s);
        m_nowhere->setTextFormat(Qt::PlainText);
        m_nowhere->setWordWrap(true);
        m_nowhere->setMargin(Margin);
        m_nowhere->setTextInteractionFlags(Qt::TextSelectableByMouse);
        static_cast<QVBoxLayout*>(layout())->insertWidget(0, m_nowhere);
    }
    m_nowhere->setText(reason.isEmpty() ? u"The address “%1” leads nowhere."_s.arg(address)
                                        : u"The address “%1” leads nowhere: %2"_s.arg(address, reason));
    m_nowhere->show();
}

void BrowserView::HideNowhere()
{
    if (m_nowhere)
        m_nowhere->hide();
}

void BrowserView::GoBack()
{
    if (m_browser)
        m_browser->GoBack();
}

void BrowserView::GoForward()
{
    if (m_browser)
        m_browser->GoForward();
}

void BrowserView::BrowserStop()
{
    if (m_browser)
        m_browser->Stop();
}

void BrowserView::Reload()
{
    if (m_browser)
        m_browser->Reload();
}

} // namespace qb
