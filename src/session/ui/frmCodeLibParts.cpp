// The parts of the main window: panels, menus, toolbar and status bar, and how they are connected.

#include "panels/ui/NodeTreeView.h"
#include "panels/ui/ctlBookmarks.h"
#include "panels/ui/ctlFileDetails.h"
#include "panels/ui/ctlSmartTreeView.h"
#include "platform/system/Prompts.h"
#include "platform/system/Trace.h"
#include "session/FileDialogs.h"
#include "session/ui/BrowserToolbar.h"
#include "session/ui/CodeToolbar.h"
#include "session/ui/FilesToolbar.h"
#include "session/ui/FormatToolbar.h"
#include "session/ui/LanguageButton.h"
#include "session/ui/frmCodeLib.h"
#include "session/ui/frmRelationshipDelete.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"
#include "text/ui/CTextEdit.h"
#include "text/ui/ctlCodeDetails.h"
#include "web/WebPages.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Which way a link is to lead, from a menu at the pointer.
std::optional<LinkDirection> AskLinkDirection(QWidget* window)
{
    struct Choice {
        const char* Caption;
        const char* Image;
        LinkDirection Direction;
    };
    static constexpr Choice choices[] = {
        {"From the selected item to this one", "LINK_ONEWAY_TARGET", LinkDirection::Left},
        {"From this item to the selected one", "LINK_ONEWAY_SOURCE", LinkDirection::Right},
        {"Both ways", "LINK_TWOWAY", LinkDirection::Both}};
    QMenu menu(window);
    menu.setObjectName(u"mnuLinkDirection"_s);
    QHash<QAction*, LinkDirection> directions;
    for (const Choice& choice : choices)
        directions.insert(
            menu.addAction(IconNamed(QString::fromLatin1(choice.Image)), QString::fromLatin1(choice.Caption)),
            choice.Direction);
    const auto chosen = directions.constFind(menu.exec(QCursor::pos()));
    return chosen == directions.constEnd() ? std::nullopt : std::optional(*chosen);
}

} // namespace

void frmCodeLib::MakePanels()
{
    tvCodeItems = new ctlSmartTreeView;
    tvCodeItems->setObjectName(u"tvCodeItems"_s);
    ctlCodeItemDetails = new ctlCodeDetails;
    ctlCodeItemDetails->setObjectName(u"ctlCodeItemDetails"_s);
    m_storedFiles = new ctlFileDetails(ctlCodeItemDetails);
    ctlCodeItemDetails->SetFileControl(*m_storedFiles);
    ctlResizer1 = new QSplitter;
    ctlResizer1->setObjectName(u"ctlResizer1"_s);
    ctlResizer1->addWidget(tvCodeItems);
    CoolBar1 = new QStackedWidget;
    CoolBar1->setObjectName(u"CoolBar1"_s);
    CoolBar1->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    CoolBar1->hide();
    auto* right = new QWidget;
    auto* rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->setSpacing(0);
    rightLayout->addWidget(CoolBar1);
    rightLayout->addWidget(ctlCodeItemDetails, 1);
    ctlResizer1->addWidget(right);
    ctlResizer1->setChildrenCollapsible(false);
    ctlResizer1->setStretchFactor(1, 1);
    ctlBookMarkList = new ctlBookmarks;
    ctlBookMarkList->setObjectName(u"ctlBookMarkList"_s);
    ctlBookMarkList->setMaximumHeight(WindowLayout::HighestBookmarks / WindowLayout::TwipsPerPixel);
    ctlResizer2 = new QSplitter(Qt::Vertical);
    ctlResizer2->setObjectName(u"ctlResizer2"_s);
    ctlResizer2->addWidget(ctlResizer1);
    ctlResizer2->addWidget(ctlBookMarkList);
    ctlResizer2->setChildrenCollapsible(false);
    ctlResizer2->setStretchFactor(0, 1);
    setCentralWidget(ctlResizer2);
}

void frmCodeLib::MakeToolbar()
{
    tlbMain = addToolBar(u"Main"_s);
    tlbMain->setObjectName(u"tlbMain"_s);
    tlbMain->setMovable(false);
    tlbMain->setContextMenuPolicy(Qt::PreventContextMenu);
    const int iconSize = style()->pixelMetric(QStyle::PM_ToolBarIconSize);
    tlbMain->setIconSize({iconSize, iconSize});
    tlbMain->addWidget(m_shell->Libraries());
    tlbMain->addSeparator();
    m_faces->FillToolbar(*tlbMain, CommandRow::Place::Toolbar);
}

/// The toolbars of the second band: one for code, one for formatted text.
void frmCodeLib::MakeTextToolbars()
{
    tbrCode = new CodeToolbar(*ctlCodeItemDetails, [this] { return m_session.oCodeItem.get(); });
    m_faces->FillToolbar(*tbrCode, CommandRow::Place::CodeToolbar);
    QMenu* mnuEditCode = m_faces->MenuOf(CommandRow::Place::EditCode);
    mnuEditCode->addSeparator();
    tbrCode->FillMenu(*mnuEditCode);
    tlbTextFormat = new FormatToolbar(*ctlCodeItemDetails);
    tbrBrowser = new BrowserToolbar(m_faces->MenuOf(CommandRow::Place::WebLinks)->actions());
    connect(tbrBrowser, &BrowserToolbar::AddressEntered, this,
            std::bind_front(&ItemWebPage::NavigateFromCombo, m_page.get()));
    tbrBrowser->AddressWidth = [this](int left) {
        constexpr int Twips = WindowLayout::TwipsPerPixel;
        return m_layout.AddressWidth(width() * Twips, left * Twips) / Twips;
    };
    mnuFiles = m_faces->MenuOf(CommandRow::Place::Edit)->addMenu(u"Stored &Files"_s);
    mnuFiles->setObjectName(u"mnuFiles"_s);
    tbrFiles = new FilesToolbar(*m_storedFiles, *mnuFiles);
    m_formatBand = new QWidget;
    auto* band = new QHBoxLayout(m_formatBand);
    band->setContentsMargins(0, 0, 0, 0);
    band->setSpacing(0);
    band->addWidget(tbrFiles);
    band->addWidget(tlbTextFormat, 1);
    for (QToolBar* toolbar : std::initializer_list<QToolBar*>{tbrCode, tlbTextFormat, tbrBrowser, tbrFiles})
        toolbar->setIconSize(tlbMain->iconSize());
    for (QWidget* page : std::initializer_list<QWidget*>{tbrCode, m_formatBand, tbrBrowser})
        CoolBar1->addWidget(page);
}

void frmCodeLib::ConnectPanels()
{
    connect(tvCodeItems, &ctlSmartTreeView::NodeClick, this,
            [this](TreeNode* node) { m_items->tvCodeItems_NodeClick(*node); });
    ConnectLinks();
    connect(tvCodeItems, &ctlSmartTreeView::NodeExpanded, this,
            [this](TreeNode* node) { m_tree->NodeExpanded(*node); });
    connect(tvCodeItems, &ctlSmartTreeView::NodeCollapsed, this,
            [this](TreeNode* node) { m_tree->NodeCollapsed(*node); });
    connect(tvCodeItems, &ctlSmartTreeView::TreePainted, this, [] { Trace("tree_painted"); });
    NodeTreeView* tree = tvCodeItems->Tree();
    connect(tree, &NodeTreeView::LabelEdited, this,
            [this](TreeNode* node, const QString& text) { m_items->AfterLabelEdit(*node, text); });
    connect(tree, &NodeTreeView::LabelEditEnded, this,
            [this](TreeNode* node, bool cancelled) { m_items->LabelEditEnded(*node, cancelled); });
    connect(tree, &NodeTreeView::DeletePressed, this, std::bind_front(&Commands::Run, &m_commands, u"mnuDeleteCode"_s));
    connect(tree, &NodeTreeView::InsertPressed, this, std::bind_front(&Commands::Run, &m_commands, u"mnuAddCode"_s));
    connect(tree, &NodeTreeView::RightClicked, this, [this](TreeNode* node, const QPoint& place) {
        m_tree->TreeViewNodeClick(*node);
        m_faces->MenuOf(CommandRow::Place::Item)->popup(place);
    });
    tree->SetDragFormat(ItemDrag::TreeClipboardFormat());
    tree->SetDragRules({.Start = std::bind_front(&ItemDrag::Start, m_drag.get()),
                        .Over = std::bind_front(&ItemDrag::Over, m_drag.get()),
                        .Tick = std::bind_front(&ItemDrag::Tick, m_drag.get()),
                        .Drop = std::bind_front(&ItemDrag::Drop, m_drag.get()),
                        .Complete = std::bind_front(&ItemDrag::Complete, m_drag.get())});
    m_tree->ItemShown = [this] {
        m_items->ItemMenuEdit();
        ShowStatusOfItem();
        ShowLibraryState();
        m_linking->ShowLinks();
        m_page->ShowCommands();
        tvCodeItems->UpdateDescription(ctlCodeItemDetails->Description());
        ctlBookMarkList->SetItemText(m_session.oCodeItem ? m_session.oCodeItem->Title() : QString());
    };
    connect(m_shell, &WindowShell::LibraryChosen, this,
            std::bind_front(&LibraryList::cboDatabase_Click, m_libraries.get()));
    connect(m_shell, &WindowShell::AliasEntered, this,
            [this](const QString& alias) { m_libraries->ChangeAlias(alias, true); });
    m_shell->MenusEnabled = std::bind_front(&frmCodeLib::EnableMenus, this);
    m_shell->EditingEnabled = std::bind_front(&frmCodeLib::EnableEditing, this);
    connect(&m_commands, &Commands::Changed, tvCodeItems, [this](const QString& name) {
        if (name == u"LINK_MODE"_s || name == u"LINK_REMOVE"_s)
            tvCodeItems->EnableLinking(m_commands.Get(u"LINK_MODE"_s).Enabled,
                                       m_commands.Get(u"LINK_REMOVE"_s).Enabled);
    });
}

void frmCodeLib::ConnectLinks()
{
    m_commands.SetChecked(u"mnuViewTreeItem"_s, true);
    m_items->AddNewLinkToSelectedItem = std::bind_front(&ItemLinking::AddNewLinkToSelectedItem, m_linking.get());
    m_linking->AskRelationshipDelete = [this](LinkDirection direction) -> std::optional<LinkDirection> {
        frmRelationshipDelete dialog(this);
        dialog.DisplayRelationshipAndOptions(direction);
        dialog.exec();
        return dialog.Cancelled() ? std::nullopt : std::optional(dialog.Result());
    };
    m_endLinkMode = new QShortcut(Qt::Key_Escape, this);
    m_endLinkMode->setEnabled(false);
    connect(m_endLinkMode, &QShortcut::activated, this, std::bind_front(&ItemLinking::CancelLinkMode, m_linking.get()));
    m_linking->ShowHint = [this](const QString& hint) {
        m_shell->ShowHint(hint);
        m_endLinkMode->setEnabled(!hint.isEmpty());
    };
    m_linking->LinksChanged = std::bind_front(&ctlBookmarks::ShowItem, ctlBookMarkList);
    m_linking->AddNewLinkToList = std::bind_front(&ctlBookmarks::AddNewLinkToList, ctlBookMarkList);
    m_linking->UpdateItemLinkInList = std::bind_front(&ctlBookmarks::UpdateItemLinkInList, ctlBookMarkList);
    m_items->LibraryHasGone = std::bind_front(&frmCodeLib::ShowLibraryState, this);
    m_items->CancelLinkMode = std::bind_front(&ItemLinking::CancelLinkMode, m_linking.get());
    m_linking->AskDirection = [this] { return AskLinkDirection(this); };
    connect(tvCodeItems, &ctlSmartTreeView::LinkModeStarted, this,
            std::bind_front(&ItemLinking::CreateNewLink, m_linking.get()));
    connect(tvCodeItems, &ctlSmartTreeView::LinkModeEnded, this,
            std::bind_front(&ItemLinking::CancelLinkMode, m_linking.get()));
    connect(tvCodeItems, &ctlSmartTreeView::LinkTargetChosen, this,
            [this](TreeNode* node) { m_linking->LinkTargetChosen(*node); });
    connect(tvCodeItems, &ctlSmartTreeView::LinkFollowed, m_tree.get(), &ItemTree::FollowLink);
    connect(tvCodeItems, &ctlSmartTreeView::LinkRemoveAsked, this,
            [this](qint64 item) { m_linking->DeleteLink(CLinks::KeyOf(item)); });
    connect(&tvCodeItems->Nodes(), &TreeNodes::modelAboutToBeReset, this,
            std::bind_front(&ItemLinking::EndLinkMode, m_linking.get()));
    connect(tvCodeItems, &ctlSmartTreeView::Shrinking, this, [this](bool shrinks) {
        m_commands.SetChecked(u"mnuViewTreeItem"_s, !shrinks);
        m_places->TreeShrinks(shrinks);
    });
}

void frmCodeLib::ConnectDetails()
{
    connect(ctlCodeItemDetails, &ctlCodeDetails::CurrentViewChanged, this, &frmCodeLib::CurrentViewChanged);
    connect(ctlCodeItemDetails, &ctlCodeDetails::BeforeNavigate, tbrBrowser, &BrowserToolbar::SetAddress);
    connect(ctlCodeItemDetails, &ctlCodeDetails::BrowserLinkHovered, statusBar(), [this](const QString& address) {
        address.isEmpty() ? statusBar()->clearMessage() : statusBar()->showMessage(address);
    });
    ItemEditor& editor = ctlCodeItemDetails->Editor();
    connect(&editor, &ItemEditor::ItemLanguageChanged, this, &frmCodeLib::ShowLanguage);
    connect(m_shell->Language(), &LanguageButton::Chosen, &editor, &ItemEditor::SetItemLanguage);
    connect(ctlCodeItemDetails, &ctlCodeDetails::DefaultPagesMissing, this, [this](const QString& folder) {
        if (CurrentDatabase() && !CurrentDatabase()->IsReadOnly())
            Guarded(u"MainForm"_s, u"CreateDefaultHTMLItems"_s, [&] { CreateDefaultHTMLItems(folder); });
    });
    // A long work lets the window paint, and a dialog may hold a transaction; not in the middle of these.
    m_saveClicks.IsBusy = [this] { return m_shell->IsWorking() || QApplication::activeModalWidget(); };
    connect(&m_saveClicks, &ClickCounter::Clicked, this, [this](int clicks) {
        m_items->SaveButtonClicked(clicks); // one saves, two switch auto-save
        moSettings_SettingsUpdated();
    });
}

void frmCodeLib::ConnectFiles()
{
    m_storedFiles->RequestFileNames = &GetFileNames;
    m_storedFiles->RequestSaveFileName = [](const QString& title, const QString& name) {
        return GetFileName(true, title, u"All Files|*"_s, name);
    };
    m_storedFiles->RequestShowImportFilesDialog = [this] { return Settings().ShowImportFilesDialog(); };
    m_storedFiles->SetShowImportFilesDialog = [this](bool show) {
        Settings().SetShowImportFilesDialog(show);
        Settings().ApplyOrTakeBack();
    };
    connect(m_storedFiles, &ctlFileDetails::PreviewShown, this, [this](bool shown) {
        Settings().SetViewFilePreview(shown);
        Settings().ApplyOrTakeBack();
    });
    connect(m_storedFiles, &ctlFileDetails::Progress, m_shell, &WindowShell::ShowProgress);
    connect(m_storedFiles, &ctlFileDetails::StatusText, statusBar(), [this](const QString& text) {
        constexpr int Shown = 10'000; // milliseconds
        statusBar()->showMessage(text.simplified(), Shown);
    });
    connect(m_storedFiles, &ctlFileDetails::FilesChanged, ctlCodeItemDetails,
            std::bind_front(&ctlCodeDetails::SetFilesEnabled, ctlCodeItemDetails));
    connect(&m_commands, &Commands::Changed, this, [this](const QString& name) {
        if (name == u"SAVE"_s && m_session.moSettings)
            UpdateAskToSaveFileDescChanges();
    });
}

void frmCodeLib::CurrentViewChanged()
{
    const bool isLinks = ctlCodeItemDetails->CurrentView() == DetailsTab::Links;
    QMenu* mnuWebLinks = m_faces->MenuOf(CommandRow::Place::WebLinks);
    mnuWebLinks->setEnabled(isLinks);
    for (QAction* action : mnuWebLinks->actions()) // their keys are those of other tabs too
        action->setShortcutContext(isLinks ? Qt::WindowShortcut : Qt::WidgetShortcut);
    ShowTextToolbar();
    m_edit->ShowColorizeState();
    ShowLanguage();
    m_bookmarks->HideWhileBrowsing(isLinks && m_session.moSettings && Settings().AutoHideBookmarksWhenBrowsing());
    tvCodeItems->AutoHideTree(isLinks && m_session.moSettings && Settings().AutoHideTreeWhenBrowsing());
    if (isLinks)
        m_page->LinksTabShown();
}

/// The language of the code that is shown, in the status bar.
void frmCodeLib::ShowLanguage()
{
    const std::optional<DetailsTab> tab = ctlCodeItemDetails->CurrentView();
    const bool isCode = CurrentDatabase() && (tab == DetailsTab::Code || tab == DetailsTab::Usage);
    LanguageButton* language = m_shell->Language();
    language->setVisible(isCode);
    if (!isCode)
        return;
    language->setEnabled(!ctlCodeItemDetails->Locked());
    language->ShowLanguage(ctlCodeItemDetails->ItemLanguage(),
                           CurrentDatabase()->QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText());
}

/// The second band follows the tab.
void frmCodeLib::ShowTextToolbar()
{
    const std::optional<DetailsTab> tab = ctlCodeItemDetails->CurrentView();
    const bool isFiles = tab == DetailsTab::Files;
    const bool hasFormat = isFiles || tab == DetailsTab::Notes;
    const bool isCode = tab == DetailsTab::Code || tab == DetailsTab::Usage;
    const bool isLinks = tab == DetailsTab::Links;
    CoolBar1->setCurrentWidget(hasFormat ? m_formatBand : isLinks ? static_cast<QWidget*>(tbrBrowser) : tbrCode);
    CoolBar1->setVisible(isLinks || isFiles || (m_editingEnabled && (hasFormat || isCode)));
    tbrFiles->setVisible(isFiles);
    tlbTextFormat->setVisible(m_editingEnabled);
    tbrCode->ForgetLastGo();
    tbrCode->UpdateSectionButtons(ctlCodeItemDetails->CurrentSection());
    tlbTextFormat->SetCommandsEnabled(m_editingEnabled && hasFormat && !ctlCodeItemDetails->Locked());
    m_faces->MenuOf(CommandRow::Place::Edit)->setEnabled(m_editingEnabled);
}

} // namespace qb
