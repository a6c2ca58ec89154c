// The welcome page, and the browser of the Links tab.

#include "platform/dao/Database.h"
#include "platform/system/Prompts.h"
#include "platform/system/Shell.h"
#include "store/Library.h"
#include "support/Addresses.h"
#include "support/ErrorRoutine.h"
#include "text/ui/ctlCodeDetails.h"
#include "web/LocalPages.h"
#include "web/WebPages.h"
#include "web/ui/BrowserView.h"
#include "web/ui/BusyLogo.h"
#include "web/ui/LocalPage.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>

namespace qb {

using namespace Qt::StringLiterals;

// The welcome page

void ctlCodeDetails::DisplayWelcomePage()
{
    const QString folder = m_htmlFolder;
    if (qb::DefaultPagesMissing(folder))
        Q_EMIT DefaultPagesMissing(folder);
    WelcomeBrowserNavigate(WelcomePage);
}

void ctlCodeDetails::WelcomeBrowserNavigate(const QString& page)
{
    webWelcome->ShowPage(m_htmlFolder, page, BuiltInPage(page));
}

void ctlCodeDetails::ShowWelcomeFacts(Library* library)
{
    webWelcome->setVisible(library);
    if (!library) {
        m_facts->setText(u"No library is open. The File menu makes a new one or adds an existing one."_s);
        return;
    }
    DisplayWelcomePage();
    const qint64 items = library->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong();
    m_facts->setText(u"%1\n%2 items, %3"_s.arg(QDir::toNativeSeparators(library->Name()), QLocale().toString(items),
                                               QLocale().formattedDataSize(QFileInfo(library->Name()).size())));
}

void ctlCodeDetails::OpenAddress(const QString& address)
{
    constexpr int LongestShown = 500; // characters of an address
    if (address.startsWith("local://"_L1, Qt::CaseInsensitive) && IsLocalPage(UrlOfAddress(address)))
        return Navigate(address);
    const AddressAnswer answer = AnswerAddress(address);
    if (answer == AddressAnswer::Refuse) {
        Prompts::Current().MsgBox({.Text = u"'%1' is not opened: it would start a program, or is no address."_s.arg(
                                       address.left(LongestShown)),
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Exclamation});
        return;
    }
    const auto isWanted = [&] {
        return Prompts::Current().MsgBox(
                   {.Text = u"This link leads to\n%1\nDo you wish to open it?"_s.arg(address.left(LongestShown)),
                    .Caption = u"Open Link"_s,
                    .Buttons = MsgBoxButtons::YesNo,
                    .Icon = MsgBoxIcon::Question,
                    .Default = MsgBoxResult::No})
               == MsgBoxResult::Yes;
    };
    if (answer == AddressAnswer::Ask && !isWanted())
        return;
    if (!OpenTarget(address))
        Prompts::Current().MsgBox({.Text = u"No application could be started for '%1'."_s.arg(address),
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Information});
}

// The browser

void ctlCodeDetails::ConnectBrowser()
{
    connect(webLinks, &BrowserView::BeforeNavigate, this, [this](const QUrl& url) {
        const bool isWeb = url.scheme() == u"http"_s || url.scheme() == u"https"_s;
        imgLabel->SetBusy(isWeb);
        Q_EMIT BeforeNavigate(AddressText(url));
    });
    connect(webLinks, &BrowserView::DocumentComplete, imgLabel, [this] { imgLabel->SetBusy(false); });
    connect(webLinks, &BrowserView::CommandStateChange, this, &ctlCodeDetails::BrowserCommandStateChange);
    connect(webLinks, &BrowserView::ProgressChange, this, &ctlCodeDetails::BrowserProgressChange);
    connect(webLinks, &BrowserView::LinkHovered, this, &ctlCodeDetails::BrowserLinkHovered);
    connect(webLinks, &BrowserView::OpenOutside, this, &ctlCodeDetails::OpenAddress);
}

void ctlCodeDetails::Navigate(const QString& address)
{
    const QUrl url = UrlOfAddress(address);
    if (IsAddress(url))
        webLinks->Navigate(url, m_htmlFolder);
    else
        webLinks->TellNowhere(address, u"it is none."_s);
}

void ctlCodeDetails::GoBack()
{
    webLinks->GoBack();
}

void ctlCodeDetails::GoForward()
{
    webLinks->GoForward();
}

void ctlCodeDetails::BrowserStop()
{
    webLinks->BrowserStop();
    imgLabel->SetBusy(false);
}

void ctlCodeDetails::Reload()
{
    webLinks->Reload();
}

} // namespace qb
