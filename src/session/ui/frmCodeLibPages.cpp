// The web page of the item in the main window, and what is loaded from the web.

#include "components/ui/WindowPages.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlFileDetails.h"
#include "session/ui/BrowserToolbar.h"
#include "session/ui/CommandFaces.h"
#include "session/ui/frmCodeLib.h"
#include "text/ui/ctlCodeDetails.h"
#include "web/LinkItems.h"
#include "web/OpenedPages.h"
#include "web/ui/WebBrowser.h"
#include "web/ui/frmDownloads.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

void frmCodeLib::ConnectPages()
{
    m_page->Address = std::bind_front(&BrowserToolbar::Address, tbrBrowser);
    m_page->Reload = std::bind_front(&ctlCodeDetails::Reload, ctlCodeItemDetails);
    m_page->RowChanged = [this] {
        m_tree->ShowKeptDate();
        ctlBookMarkList->ShowItem();
    };
    m_commands.Register(u"mnuWebOpenedBrowsers"_s, tbrBrowser, &BrowserToolbar::OpenedExplorersPopup);
    connect(ctlCodeItemDetails, &ctlCodeDetails::LoadFile, this, [this](const QUrl& url) { m_downloads->Load(url); });
    connect(ctlCodeItemDetails, &ctlCodeDetails::ItemAsked, m_tree.get(), &ItemTree::FollowLink);
    m_page->SetComponents(MakePageComponents(
        this,
        {.Items =
             [this] { return CurrentDatabase() ? LinkableItemsOf(*CurrentDatabase()) : std::vector<LinkableItem>(); },
         .Palette =
             [this] { return TokenPalette::FromTexts(Settings().RuleColoursLight(), Settings().RuleColoursDark()); }}));
    ConnectDownloads();
}

void frmCodeLib::ConnectDownloads()
{
    m_downloads = std::make_unique<PageDownloads>(m_session, &MakeFileFetch);
    m_downloads->Show = [this](InetFileLoad& component) {
        m_downloadWindow = new frmDownloads(component, this);
        m_downloadWindow->setAttribute(Qt::WA_DeleteOnClose);
    };
    m_downloads->MayClose = [this] { return !m_downloadWindow || m_downloadWindow->MayClose(); };
    m_downloads->IsBusy = [this] { return m_shell->IsWorking() || QApplication::activeModalWidget(); };
    m_downloads->Watched = m_tools->Watched;
    m_downloads->FilesStored = [this](qint64 item) { m_storedFiles->FilesAdded(QString::number(item)); };
    m_downloads->GoToItem = [this](qint64 item) { m_tree->GoToNode(NodeKey(item)); };
    m_downloads->ShowAsPage = std::bind_front(&ctlCodeDetails::ShowAsPage, ctlCodeItemDetails);
}

void frmCodeLib::InitializeAutoURLDetection()
{
    ctlCodeItemDetails->SetAutoURLDetect(true);
}

void frmCodeLib::UninitializeAutoURLDetection()
{
    ctlCodeItemDetails->SetAutoURLDetect(false);
}

} // namespace qb
