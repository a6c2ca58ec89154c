#include "session/ui/LibraryFind.h"

#include "finder/ui/FindHitView.h"
#include "finder/ui/FindResultsView.h"
#include "finder/ui/frmFind.h"
#include "finder/ui/frmReplace.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlFileDetails.h"
#include "platform/system/Prompts.h"
#include "session/ui/CommandFaces.h"
#include "support/ui/WorkProgress.h"
#include "text/ui/FoundMarks.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QComboBox>
#include <QMainWindow>
#include <QToolBar>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

LibraryFind::LibraryFind(const Parts& parts)
    : m_parts(parts), m_service(parts.Texts), m_search(m_service), m_hits(m_search), m_results(*this),
      m_finding(m_search, m_results, *this)
{
    constexpr std::chrono::milliseconds Rest{400};   // after which the window has come up
    constexpr std::chrono::milliseconds Quiet{1500}; // after changes of the tree
    m_opening.setSingleShot(true);
    m_opening.setInterval(Rest);
    m_updating.setSingleShot(true);
    m_updating.setInterval(Quiet);
    connect(&m_opening, &QTimer::timeout, this, [this] { Service(); });
    connect(&m_updating, &QTimer::timeout, &m_service, &FindService::Update);
    RegisterCommands();
    FollowResults();
    FollowLibrary();
}

LibraryFind::~LibraryFind()
{
    delete m_dialog;
}

void LibraryFind::RegisterCommands()
{
    const auto add = [this](const QString& name, const std::function<void()>& run) {
        m_parts.Registry.Register(name, run);
    };
    for (const QString& name : {u"mnuFullTextFind"_s, u"FIND"_s})
        add(name, std::bind_front(&LibraryFind::FullTextFind, this));
    add(u"mnuFindNextOccurance"_s, std::bind_front(&FindResults::FindNextOccurance, &m_results));
    add(u"mnuFindPreviousOccurance"_s, std::bind_front(&FindResults::FindPreviousOccurance, &m_results));
    add(u"QUICK_LIST"_s, std::bind_front(&FindResults::SetSearchResultViewType, &m_results, FindResults::QuickList));
    add(u"DETAIL_LIST"_s, std::bind_front(&FindResults::SetSearchResultViewType, &m_results, FindResults::DetailList));
    add(u"mnuOpenFindResult"_s, [this] { m_results.OpenRow(m_results.SelectedRow()); });
    add(u"mnuFindSingleClick"_s, [this] {
        m_results.SetSearchResultSingleClick(!m_results.SearchResultSingleClick());
        ShowViewType();
    });
    add(u"mnuClearFindResults"_s, std::bind_front(&FindResults::ClearFindResults, &m_results));
    add(u"mnuUndoReplace"_s, std::bind_front(&LibraryFind::UndoReplace, this));
    m_parts.Registry.SetEnabled(u"mnuUndoReplace"_s, false);
    ShowViewType();
}

/// The panel tells what was looked for; commands on results wait for some.
void LibraryFind::FollowResults()
{
    connect(&m_results, &FindResults::ViewTypeChanged, this, &LibraryFind::ShowViewType);
    connect(&m_results, &FindResults::KeywordChanged, this, [this] {
        m_parts.Panel.SetFindMode(m_results.FindMode());
        m_parts.Panel.SetSearchKeyword(m_results.SearchKeyword());
    });
    connect(&m_results, &FindResults::ResultsShown, this, [this] {
        m_parts.Panel.SetDisplayedTab(int(BookmarkTab::FindResults));
        ShowPanel();
    });
    const auto enable = [this] {
        for (const QString& name : {u"mnuFindNextOccurance"_s, u"mnuFindPreviousOccurance"_s, u"mnuOpenFindResult"_s,
                                    u"mnuClearFindResults"_s})
            m_parts.Registry.SetEnabled(name, m_results.rowCount() > 0);
    };
    connect(&m_results, &QAbstractItemModel::modelReset, this, enable);
    enable();
}

/// What this program changes is read soon, so that the next search need not do it.
void LibraryFind::FollowLibrary()
{
    connect(&m_parts.Details.Editor(), &ItemEditor::Saved, this, [this] {
        if (m_service.IsOpen() && m_parts.Session.oCodeItem)
            m_service.Saved({m_parts.Session.oCodeItem->Key().toLongLong()});
    });
    const auto update = [this] {
        if (m_service.IsOpen())
            m_updating.start();
    };
    connect(&m_parts.Nodes, &QAbstractItemModel::rowsInserted, this, update);
    connect(&m_parts.Nodes, &QAbstractItemModel::rowsRemoved, this, update);
    connect(&m_parts.Nodes, &QAbstractItemModel::dataChanged, this,
            [this, update](const QModelIndex& first, const QModelIndex& last) {
                for (int row = first.row(); row <= last.row(); ++row) {
                    if (const TreeNode* node = m_parts.Nodes.NodeAt(first.siblingAtRow(row)); node && !node->IsRoot())
                        m_results.SetTitle(node->Id, node->Text());
                }
                update();
            });
}

void LibraryFind::MakeFaces(CommandFaces& faces)
{
    m_faces = &faces;
    m_view = new FindResultsView(m_results);
    auto* tbrSearch = new QToolBar(u"Find Results"_s);
    tbrSearch->setObjectName(u"tbrSearch"_s);
    tbrSearch->setIconSize(m_parts.Panel.BookmarkToolbar()->iconSize());
    tbrSearch->setContentsMargins(0, 0, 0, 0);
    tbrSearch->addWidget(m_view->SearchWords());
    faces.FillToolbar(*tbrSearch, CommandRow::Place::SearchToolbar);
    static constexpr std::pair<const char*, const char*> keys[] = {{"mnuFindNextOccurance", "NEXT"},
                                                                   {"mnuFindPreviousOccurance", "PREVIOUS"}};
    for (const auto& [name, key] : keys) {
        QAction* action = faces.Action(QLatin1StringView(name));
        tbrSearch->addAction(action);
        action->setProperty("key", QString::fromLatin1(key));
        tbrSearch->widgetForAction(action)->setProperty("key", QString::fromLatin1(key));
    }
    m_view->addActions(faces.MakeActions(CommandRow::Place::SearchMenu));
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_parts.Panel.SetFindControl(m_view, tbrSearch);
    ShowViewType();
}

void LibraryFind::ShowViewType()
{
    const bool isQuick = m_results.SearchResultViewType() == FindResults::QuickList;
    m_parts.Registry.SetChecked(u"QUICK_LIST"_s, isQuick);
    m_parts.Registry.SetChecked(u"DETAIL_LIST"_s, !isQuick);
    m_parts.Registry.SetChecked(u"mnuFindSingleClick"_s, m_results.SearchResultSingleClick());
}

void LibraryFind::ReadLayout(const WindowLayout& layout)
{
    const bool isDetailed = layout.Number(WindowLayout::SearchResultsViewType) == FindResults::DetailList;
    m_results.SetSearchResultViewType(isDetailed ? FindResults::DetailList : FindResults::QuickList);
    m_results.SetSearchResultSingleClick(layout.Flag(WindowLayout::FindResultsSingleClick));
    ShowViewType();
}

void LibraryFind::WriteLayout(WindowLayout& layout) const
{
    layout.SetNumber(WindowLayout::SearchResultsViewType, m_results.SearchResultViewType());
    layout.SetFlag(WindowLayout::FindResultsSingleClick, m_results.SearchResultSingleClick());
}

// The library

void LibraryFind::LibraryOpened()
{
    const QString& path = m_parts.Session.CurrentDatabase->Name();
    if (path != m_library) {
        m_results.ClearFindResults();
        m_search.Stop();
        m_replaced.Forget();
        m_parts.Registry.SetEnabled(u"mnuUndoReplace"_s, false);
        if (m_dialog)
            m_dialog->hide();
    }
    m_library = path;
    m_opening.start();
}

void LibraryFind::LibraryClosing()
{
    m_opening.stop();
    m_updating.stop();
    m_service.Close();
}

FindService& LibraryFind::Service()
{
    m_opening.stop();
    if (!m_service.IsOpen() && m_parts.Session.CurrentDatabase)
        m_service.Open(m_parts.Session.CurrentDatabase->Name());
    return m_service;
}

void LibraryFind::FullTextFind()
{
    if (!m_parts.Session.CurrentDatabase)
        return;
    Service();
    if (!m_dialog) {
        m_dialog = new frmFind(m_search, m_hits, m_finding, &m_parts.Window);
        for (const QString& name : {u"mnuFindNextOccurance"_s, u"mnuFindPreviousOccurance"_s})
            m_dialog->addAction(m_faces->Action(name)); // their keys hold there too
        connect(m_dialog, &frmFind::ReplaceAsked, this, &LibraryFind::ReplaceFound);
        m_dialog->UnsavedItem = [this] {
            const ItemEditor& editor = m_parts.Details.Editor();
            const bool isChanged = editor.Changed(ItemText::Code) || editor.Changed(ItemText::Notes)
                                   || editor.Changed(ItemText::Usage);
            return isChanged && m_parts.Session.oCodeItem ? m_parts.Session.oCodeItem->Title() : QString();
        };
    }
    m_dialog->Hits()->Colours().SetLibrary(*m_parts.Session.CurrentDatabase);
    m_dialog->Hits()->Colours().SetPalette(m_parts.Details.Editor().Formatter().Palette());
    const qint64 item = CurrentItem();
    m_dialog->SetItem(item, item != 0 ? m_parts.Session.oCodeItem->Title() : QString());
    m_dialog->SetMayReplace(m_parts.Session.MayWrite());
    m_dialog->Open(m_parts.Details.SelText());
}

// Replacing

/// What is typed is saved before, as the changes are those of what the library holds.
void LibraryFind::ReplaceFound()
{
    if (!m_parts.Session.MayWrite() || m_search.Hits().empty() || !m_parts.Tree.SaveItem())
        return;
    FindQuery query = m_search.Query();
    query.Fields &= ReplaceFields;
    std::vector<qint64> items;
    for (const FindHit& hit : m_search.Hits())
        items.push_back(hit.Id);
    ReplacePlan plan;
    {
        WorkProgress work(m_dialog, u"Replace"_s);
        if (!plan.Collect(*m_parts.Session.CurrentDatabase, items, FindMatcher(query), m_dialog->Replacement(), work))
            return;
    }
    frmReplace dialog(plan, query.Text, m_dialog->Replacement(), m_dialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    try {
        m_replaced.Replace(*m_parts.Session.CurrentDatabase, plan.Chosen());
    } catch (const RuntimeError& error) {
        Prompts::Current().MsgBox(
            {.Text = error.Description(), .Caption = u"Replace"_s, .Icon = MsgBoxIcon::Exclamation});
    }
    ShowAnew();
}

void LibraryFind::UndoReplace()
{
    if (!m_replaced.CanUndo() || !m_parts.Tree.SaveItem())
        return;
    const ReplaceUndo::Outcome outcome = m_replaced.Undo(*m_parts.Session.CurrentDatabase);
    ShowAnew();
    Prompts::Current().MsgBox({.Text = outcome.Text(), .Caption = u"Undo Replace"_s, .Icon = MsgBoxIcon::Information});
}

/// Titles, the item that is shown and what was found are as the library has them now.
void LibraryFind::ShowAnew()
{
    m_parts.Registry.SetEnabled(u"mnuUndoReplace"_s, m_replaced.CanUndo());
    const qint64 item = CurrentItem();
    const int tab = CurrentTab();
    m_parts.Tree.Reload();
    if (item != 0 && m_parts.Nodes.Find(item)) {
        m_parts.Tree.ShowItem(item);
        ShowTab(tab);
    }
    m_search.Again();
}

// The window, as the find sees it

qint64 LibraryFind::CurrentItem() const
{
    const CCodeItem* item = m_parts.Session.oCodeItem.get();
    return item && m_parts.Details.CurrentView() ? item->Key().toLongLong() : 0;
}

/// The item may be one that another program has added since the tree was read, or has removed.
bool LibraryFind::OpenItem(qint64 item)
{
    if (item == CurrentItem())
        return true;
    Library& library = *m_parts.Session.CurrentDatabase;
    const bool isThere = library.QueryValue(u"SELECT count(*) FROM Items WHERE ID = ?"_s, {item}).ToLong() > 0;
    if (isThere != (m_parts.Nodes.Find(item) != nullptr) && m_parts.Tree.SaveItem())
        m_parts.Tree.Reload();
    if (!m_parts.Nodes.Find(item)) {
        Prompts::Current().MsgBox({.Text = u"The item is not in the library any more."_s,
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Information});
        return false;
    }
    m_parts.Tree.GoToNode(NodeKey(item));
    return CurrentItem() == item;
}

int LibraryFind::CurrentTab() const
{
    return m_parts.Details.CurrentTab();
}

void LibraryFind::ShowTab(int tab)
{
    m_parts.Details.SetCurrentView(DetailsTab(tab));
}

/// The page of the files is gone through by the descriptions of all of them.
bool LibraryFind::FindOnPage(const QString& keyword, const FindMatcher& matcher, bool forward, From from)
{
    if (m_parts.Details.CurrentView() != DetailsTab::Files)
        return m_parts.Details.Found().GoTo(matcher, forward, from == From::Caret);
    if (from == From::Edge)
        m_parts.Files.SelectFirstItem();
    return forward ? m_parts.Files.SearchNextOccurence(keyword) : m_parts.Files.SearchPreviousOccurence(keyword);
}

void LibraryFind::GoToPlace(const FindMatcher& matcher, qsizetype place)
{
    m_parts.Details.Found().GoToNumber(matcher, place);
}

void LibraryFind::ShowFile(qint64 file)
{
    m_parts.Files.SelectFile(file);
}

void LibraryFind::MarkPlaces(const FindMatcher* matcher)
{
    m_parts.Details.Found().SetMatcher(matcher);
}

} // namespace qb
