#include "panels/ui/ctlBookmarks.h"

#include "panels/ui/BookmarkView.h"
#include "panels/ui/ElidedLabel.h"
#include "panels/ui/ItemInfoPage.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QStackedWidget>
#include <QTabBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlBookmarks"_s;

struct TabRow {
    const char* Title;
    const char* Image;
};
/// In the order of BookmarkTab.
constexpr TabRow TabRows[] = {
    {"Bookmarks", "bookmarks-panel"},
    {"Find Results", "edit-find"},
    {"Info", "INFO"},
};

constexpr int Gap = 6;

QToolBar* MakeToolBar(const QString& name, const QString& title, int iconSize)
{
    auto* toolbar = new QToolBar(title);
    toolbar->setObjectName(name);
    toolbar->setIconSize({iconSize, iconSize});
    toolbar->setContentsMargins(0, 0, 0, 0);
    return toolbar;
}

} // namespace

ctlBookmarks::ctlBookmarks(QWidget* parent)
    : QWidget(parent), m_tabs(new QTabBar), m_caption(new ElidedLabel(u"lblCaption"_s)),
      m_itemText(new ElidedLabel(u"lblItemText"_s)), lblLocked(new ElidedLabel(u"lblLocked"_s)),
      m_pages(new QStackedWidget), lvBookMarks(new BookmarkView(m_list.Rows())), m_infoPage(new ItemInfoPage(m_info))
{
    MakeTabs();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(MakeHeader());
    layout->addWidget(m_pages, 1);
    connect(m_tabs, &QTabBar::currentChanged, this, [this](int tab) {
        ShowTab();
        Q_EMIT TabChanged(tab);
    });
    connect(lvBookMarks, &BookmarkView::CurrentChanged, this, &ctlBookmarks::SelectionChanged);
    connect(lvBookMarks, &BookmarkView::BookmarkActivated, this, [this] { Q_EMIT BookmarkOpened(SelectedItem()); });
    connect(&m_info, &ItemInfo::Shown, this, &ctlBookmarks::ShowItem);
    connect(&m_info, &ItemInfo::Changed, this, &ctlBookmarks::ShowItem);
    connect(&m_info, &ItemInfo::LockChanged, this, [this] {
        lblLocked->setText(m_info.LockedText());
        ShowTab();
    });
    connect(m_infoPage, &ItemInfoPage::ChildrenAsked, this, &ctlBookmarks::ChildrenAsked);
    connect(m_infoPage->Links(), &LinkNotes::LinkFollowed, this, &ctlBookmarks::LinkFollowed);
    connect(m_infoPage->Links(), &LinkNotes::LinkRemoveAsked, this, &ctlBookmarks::LinkRemoveAsked);
    ShowTab();
}

void ctlBookmarks::MakeTabs()
{
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    tbrBookmarks = MakeToolBar(u"tbrBookmarks"_s, u"Bookmarks"_s, size);
    tbrInfo = MakeToolBar(u"tbrInfo"_s, u"Info"_s, size);
    m_tabs->setObjectName(u"tbsBookmarks"_s);
    m_tabs->setAccessibleName(u"Bookmarks, find results and info"_s);
    m_tabs->setDocumentMode(true);
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    m_tabs->setIconSize({size, size});
    for (const TabRow& row : TabRows)
        m_tabs->addTab(IconNamed(QString::fromLatin1(row.Image)), QString::fromLatin1(row.Title));
    m_tabs->setTabVisible(int(BookmarkTab::FindResults), false); // until there is something that finds
    m_pages->addWidget(lvBookMarks);
    m_pages->addWidget(new QWidget);
    m_pages->addWidget(m_infoPage);
    m_toolbars = {tbrBookmarks, nullptr, tbrInfo};
}

QWidget* ctlBookmarks::MakeHeader()
{
    auto* header = new QWidget;
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(0, 0, Gap, 0);
    layout->setSpacing(Gap);
    m_caption->setForegroundRole(QPalette::PlaceholderText);
    QFont bold = m_itemText->font();
    bold.setBold(true);
    m_itemText->setFont(bold);
    m_itemText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout->addWidget(m_tabs);
    layout->addWidget(m_caption, 2);
    layout->addWidget(m_itemText, 2);
    layout->addWidget(lblLocked, 2);
    layout->addWidget(tbrBookmarks);
    layout->addWidget(tbrInfo);
    return header;
}

void ctlBookmarks::SetFindControl(QWidget* page, QToolBar* toolbar)
{
    const int tab = int(BookmarkTab::FindResults);
    QWidget* before = m_pages->widget(tab);
    m_pages->insertWidget(tab, page);
    m_pages->removeWidget(before);
    delete before;
    m_toolbars[tab] = toolbar;
    if (toolbar)
        tbrInfo->parentWidget()->layout()->addWidget(toolbar);
    m_tabs->setTabVisible(tab, true);
    ShowTab();
}

// The library

void ctlBookmarks::Initialise(Library& library)
{
    m_library = &library;
    m_info.SetLibrary(&library);
    m_list.Initialise(library);
    UpdateDatabaseInfo();
}

void ctlBookmarks::Terminate()
{
    m_library = nullptr;
    m_info.SetLibrary(nullptr);
    m_list.Terminate();
    m_facts = {};
    m_itemText->clear();
    ShowFacts();
}

void ctlBookmarks::UpdateDatabaseInfo()
{
    UpdateReplicationInfo();
    UpdateDatabaseSize();
}

void ctlBookmarks::UpdateReplicationInfo()
{
    if (!m_library)
        return;
    Guarded(ModuleName, u"UpdateReplicationInfo"_s, [this] {
        const Date backedUp = m_facts.LastBackedUp;
        m_facts = ReadLibraryFacts(*m_library);
        m_facts.LastBackedUp = backedUp;
    });
    ShowFacts();
}

void ctlBookmarks::UpdateDatabaseSize()
{
    if (!m_library)
        return;
    m_facts.Size = QFileInfo(m_library->Name()).size();
    ShowFacts();
}

void ctlBookmarks::ShowFacts()
{
    m_infoPage->ShowFacts(m_facts, m_library != nullptr);
}

// Tabs

int ctlBookmarks::DisplayedTab() const
{
    return m_tabs->currentIndex();
}

void ctlBookmarks::SetDisplayedTab(int tab)
{
    if (tab >= 0 && tab < m_tabs->count() && m_tabs->isTabVisible(tab))
        m_tabs->setCurrentIndex(tab);
}

void ctlBookmarks::ShowTab()
{
    const int tab = DisplayedTab();
    m_pages->setCurrentIndex(tab);
    for (int i = 0; i < int(m_toolbars.size()); ++i) {
        if (m_toolbars[i])
            m_toolbars[i]->setVisible(i == tab);
    }
    const bool isInfo = tab == int(BookmarkTab::Info);
    m_itemText->setVisible(isInfo);
    lblLocked->setVisible(isInfo && m_info.Locked());
    ShowCaption();
}

void ctlBookmarks::ShowCaption()
{
    m_caption->setText(PanelCaption(BookmarkTab(DisplayedTab()), m_searchKeyword, m_findMode));
}

void ctlBookmarks::SetSearchKeyword(const QString& keyword)
{
    m_searchKeyword = keyword;
    ShowCaption();
}

void ctlBookmarks::SetFindMode(int mode)
{
    m_findMode = mode;
    ShowCaption();
}

// Bookmarks

void ctlBookmarks::RemoveBookMark()
{
    m_list.RemoveBookMark(SelectedBookmark());
}

void ctlBookmarks::FindBookmark(qint64 item)
{
    lvBookMarks->Select(m_list.Rows().FindBookmark(item));
}

void ctlBookmarks::SelectBookmark(qint64 bookmark)
{
    lvBookMarks->Select(m_list.Rows().IndexOfKey(BookmarkTree::KeyOfBookmark(bookmark)));
}

qint64 ctlBookmarks::SelectedBookmark() const
{
    return m_list.Rows().BookmarkAt(lvBookMarks->currentIndex());
}

qint64 ctlBookmarks::SelectedGroup() const
{
    return m_list.Rows().GroupAt(lvBookMarks->currentIndex());
}

qint64 ctlBookmarks::SelectedItem() const
{
    return m_list.Rows().ItemAt(lvBookMarks->currentIndex());
}

void ctlBookmarks::SetBookmarkSingleClick(bool single)
{
    m_singleClick = single;
    lvBookMarks->SetSingleClick(single);
}

// Info

void ctlBookmarks::InitialiseItem(CCodeItem* item, bool fixed)
{
    disconnect(m_statusUpdated);
    if (item)
        m_statusUpdated = connect(item, &CCodeItem::StatusUpdated, this, &ctlBookmarks::m_oCodeItem_StatusUpdated);
    m_info.InitialiseItem(item, fixed);
}

void ctlBookmarks::SetItemText(const QString& text)
{
    m_itemText->setText(text);
}

void ctlBookmarks::EnableInfoTabItemInfo(bool enabled)
{
    m_infoPage->EnableItem(enabled);
}

void ctlBookmarks::m_oCodeItem_StatusUpdated(qint32 status)
{
    if (m_info.ShowsCurrent())
        m_infoPage->ShowStatus(status);
}

void ctlBookmarks::ShowItem()
{
    Guarded(ModuleName, u"InitialiseItem"_s, [this] { m_infoPage->ShowItem(); });
}

void ctlBookmarks::AddNewLinkToList(const CLink& link)
{
    if (m_info.ShowsCurrent())
        m_infoPage->Links()->AddNewLinkToList(link);
}

void ctlBookmarks::UpdateItemLinkInList(const CLink& link)
{
    if (m_info.ShowsCurrent())
        m_infoPage->Links()->UpdateItemLinkInList(link);
}

} // namespace qb
