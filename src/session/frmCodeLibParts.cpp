// The parts of the main window: panels, menus, toolbar and status bar, and how they are connected.

#include "panels/ctlFileDetails.h"
#include "panels/ctlSmartTreeView.h"
#include "panels/ui/NodeTreeView.h"
#include "platform/system/Prompts.h"
#include "platform/system/Trace.h"
#include "session/frmCodeLib.h"
#include "session/frmRelationshipDelete.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"
#include "session/ui/BrowserToolbar.h"
#include "session/ui/CodeToolbar.h"
#include "session/ui/FormatToolbar.h"
#include "text/WebPages.h"
#include "text/ctlCodeDetails.h"
#include "text/ui/CTextEdit.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QCursor>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct MenuRow {
    CommandRow::Place Place;
    const char* Name;
    const char* Caption;
};
constexpr MenuRow MenuRows[] = {
    {CommandRow::Place::File, "mnuFile", "&File"},
    {CommandRow::Place::Edit, "mnuEdit", "&Edit"},
    {CommandRow::Place::Item, "mnuItem", "&Item"},
    {CommandRow::Place::View, "mnuView", "&View"},
    {CommandRow::Place::Tools, "mnuTools", "&Tools"},
    {CommandRow::Place::Replication, "mnuReplication", "&Replication"},
    {CommandRow::Place::Help, "mnuHelp", "&Help"},
};

bool HasVisibleActions(const QMenu& menu)
{
    const QList<QAction*> actions = menu.actions();
    return std::any_of(actions.begin(), actions.end(),
                       [](const QAction* action) { return action->isVisible() && !action->isSeparator(); });
}

} // namespace

void frmCodeLib::MakePanels()
{
    tvCodeItems = new ctlSmartTreeView;
    tvCodeItems->setObjectName(u"tvCodeItems"_s);
    ctlCodeItemDetails = new ctlCodeDetails;
    ctlCodeItemDetails->setObjectName(u"ctlCodeItemDetails"_s);
    ctlCodeItemDetails->SetFileControl(*new ctlFileDetails(ctlCodeItemDetails));
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
    setCentralWidget(ctlResizer1);
}

QMenu* frmCodeLib::MenuOf(CommandRow::Place place)
{
    return m_menus.value(int(place));
}

QAction* frmCodeLib::MakeAction(const CommandRow& row)
{
    auto* action = new QAction(QString::fromLatin1(row.Caption), this);
    if (!*row.Caption)
        action->setSeparator(true);
    if (!*row.Name)
        return action;
    const QString name = QString::fromLatin1(row.Name);
    action->setObjectName(name);
    if (*row.Shortcut)
        action->setShortcut(QKeySequence(QString::fromLatin1(row.Shortcut)));
    connect(action, &QAction::triggered, this, [this, name] {
        Guarded(u"MainForm"_s, name, [&] { m_procedures.value(name)(); });
    });
    m_actions.insert(name, action);
    return action;
}

void frmCodeLib::MakeMenus()
{
    for (const MenuRow& row : MenuRows) {
        QMenu* menu = menuBar()->addMenu(QString::fromLatin1(row.Caption));
        menu->setObjectName(QString::fromLatin1(row.Name));
        m_menus.insert(int(row.Place), menu);
    }
    for (const CommandRow& row : Commands::Table()) {
        if (QMenu* menu = MenuOf(row.Where))
            menu->addAction(MakeAction(row));
    }
    QMenu* mnuEdit = MenuOf(CommandRow::Place::Edit);
    mnuEditCode = mnuEdit->addMenu(u"&Code"_s);
    mnuEditCode->setObjectName(u"mnuEditCode"_s);
    mnuFormat = mnuEdit->addMenu(u"F&ormat"_s);
    mnuFormat->setObjectName(u"mnuFormat"_s);
    mnuWebLinks = mnuEdit->addMenu(u"&Web Page"_s);
    mnuWebLinks->setObjectName(u"mnuWebLinks"_s);
    for (const CommandRow& row : Commands::Table()) {
        if (row.Where == CommandRow::Place::EditCode)
            mnuEditCode->addAction(MakeAction(row));
        if (row.Where == CommandRow::Place::WebLinks)
            mnuWebLinks->addAction(MakeAction(row));
    }
    connect(mnuEdit, &QMenu::aboutToShow, this, &frmCodeLib::mnuEdit_Click);
    connect(MenuOf(CommandRow::Place::Item), &QMenu::aboutToShow, this, &frmCodeLib::mnuItem_Click);
    m_actions[u"mnuAutoSaveItem"_s]->setCheckable(true);
    mnuFileDatabaseSelect = new QMenu(this);
    m_actions[u"mnuFileDatabaseSelect"_s]->setMenu(mnuFileDatabaseSelect);
    auto* mnuAddLink = new QMenu(this);
    for (const CommandRow& row : Commands::Table()) {
        if (row.Where == CommandRow::Place::AddLink)
            mnuAddLink->addAction(MakeAction(row));
    }
    m_actions[u"mnuAddLink"_s]->setMenu(mnuAddLink);
    m_actions[u"mnuViewTreeItem"_s]->setCheckable(true);
    m_actions[u"mnuViewStatusBar"_s]->setCheckable(true);
    connect(MenuOf(CommandRow::Place::File), &QMenu::aboutToShow, this, &frmCodeLib::mnuFile_Click);
}

void frmCodeLib::MakeToolbar()
{
    constexpr int ComboCharacters = 24;
    tlbMain = addToolBar(u"Main"_s);
    tlbMain->setObjectName(u"tlbMain"_s);
    tlbMain->setMovable(false);
    tlbMain->setContextMenuPolicy(Qt::PreventContextMenu);
    const int iconSize = style()->pixelMetric(QStyle::PM_ToolBarIconSize);
    tlbMain->setIconSize({iconSize, iconSize});
    cboDatabase = new QComboBox;
    cboDatabase->setObjectName(u"cboDatabase"_s);
    cboDatabase->setAccessibleName(u"Library"_s);
    cboDatabase->setEditable(true);
    cboDatabase->setDuplicatesEnabled(true); // Enter renames; it does not look for the same text
    cboDatabase->setInsertPolicy(QComboBox::NoInsert);
    cboDatabase->setCompleter(nullptr);
    cboDatabase->setMinimumContentsLength(ComboCharacters);
    tlbMain->addWidget(cboDatabase);
    tlbMain->addSeparator();
    AddToolbarActions(*tlbMain, CommandRow::Place::Toolbar);
    m_actions[u"SAVE"_s]->setCheckable(true);
}

void frmCodeLib::AddToolbarActions(QToolBar& toolbar, CommandRow::Place place)
{
    for (const CommandRow& row : Commands::Table()) {
        if (row.Where != place)
            continue;
        QAction* action = MakeAction(row);
        action->setProperty("key", action->objectName());
        toolbar.addAction(action);
        if (QWidget* button = toolbar.widgetForAction(action))
            button->setProperty("key", action->objectName());
    }
}

/// The toolbars of the second band: one for code, one for formatted text.
void frmCodeLib::MakeTextToolbars()
{
    tbrCode = new CodeToolbar(*ctlCodeItemDetails, [this] { return m_session.oCodeItem.get(); });
    AddToolbarActions(*tbrCode, CommandRow::Place::CodeToolbar);
    mnuEditCode->addSeparator();
    tbrCode->FillMenu(*mnuEditCode);
    tlbTextFormat = new FormatToolbar(*ctlCodeItemDetails);
    tbrBrowser = new BrowserToolbar(mnuWebLinks->actions());
    connect(tbrBrowser, &BrowserToolbar::AddressEntered, this, [this](const QString& text) { m_page->NavigateFromCombo(text); });
    for (QToolBar* toolbar : std::initializer_list<QToolBar*>{tbrCode, tlbTextFormat, tbrBrowser}) {
        toolbar->setIconSize(tlbMain->iconSize());
        CoolBar1->addWidget(toolbar);
    }
}

void frmCodeLib::MakeStatusBar()
{
    constexpr int ProgressWidth = 180;
    constexpr int Margin = 6;
    m_statusText = new QLabel;
    m_statusText->setObjectName(u"sbrMainPanel1"_s);
    m_statusText->setTextFormat(Qt::PlainText);
    m_itemDate = new QLabel;
    m_itemDate->setObjectName(u"sbrMainPanel2"_s);
    prgStatus = new QProgressBar;
    prgStatus->setObjectName(u"prgStatus"_s);
    prgStatus->setFixedWidth(ProgressWidth);
    prgStatus->setRange(0, 100);
    prgStatus->hide();
    m_statusText->setContentsMargins(Margin, 0, 0, 0);
    m_itemDate->setContentsMargins(0, 0, Margin, 0);
    statusBar()->setObjectName(u"sbrMain"_s);
    statusBar()->addWidget(m_statusText, 1);
    statusBar()->addPermanentWidget(prgStatus);
    statusBar()->addPermanentWidget(m_itemDate);
}

void frmCodeLib::ConnectPanels()
{
    connect(tvCodeItems, &ctlSmartTreeView::NodeClick, this, [this](TreeNode* node) { m_items->tvCodeItems_NodeClick(*node); });
    ConnectLinks();
    connect(tvCodeItems, &ctlSmartTreeView::NodeExpanded, this, [this](TreeNode* node) { m_tree->NodeExpanded(*node); });
    connect(tvCodeItems, &ctlSmartTreeView::NodeCollapsed, this, [this](TreeNode* node) { m_tree->NodeCollapsed(*node); });
    connect(tvCodeItems, &ctlSmartTreeView::TreePainted, this, [] { Trace("tree_painted"); });
    NodeTreeView* tree = tvCodeItems->Tree();
    connect(tree, &NodeTreeView::LabelEdited, this,
            [this](TreeNode* node, const QString& text) { m_items->AfterLabelEdit(*node, text); });
    connect(tree, &NodeTreeView::LabelEditEnded, this, [this](TreeNode* node) { m_items->LabelEditEnded(*node); });
    // What the menu does not allow for the item the key does not do either.
    const auto ifEnabled = [this](const QString& command, void (ItemCommands::*run)()) {
        return [this, command, run] {
            m_items->ItemMenuEdit();
            if (m_commands.Get(command).Enabled)
                ((*m_items).*run)();
        };
    };
    connect(tree, &NodeTreeView::DeletePressed, this, ifEnabled(u"mnuDeleteCode"_s, &ItemCommands::DeleteCodeItem));
    connect(tree, &NodeTreeView::InsertPressed, this, ifEnabled(u"mnuAddCode"_s, &ItemCommands::AddCode));
    connect(tree, &NodeTreeView::RightClicked, this, [this](TreeNode* node, const QPoint& place) {
        m_tree->TreeViewNodeClick(*node);
        MenuOf(CommandRow::Place::Item)->popup(place);
    });
    tree->SetDragFormat(ItemDrag::TreeClipboardFormat());
    tree->SetDragRules({.Start = [this](TreeNode& node) { return m_drag->Start(node); },
                        .Over = [this](const TreeNode* node, int y, int height) { return m_drag->Over(node, y, height); },
                        .Tick = [this] { m_drag->Tick(); },
                        .Drop = [this] { return m_drag->Drop(); },
                        .Complete = [this] { m_drag->Complete(); }});
    m_tree->ItemShown = [this] {
        m_items->ItemMenuEdit();
        m_linking->ShowLinks();
        tvCodeItems->UpdateDescription(m_session.oCodeItem ? m_session.oCodeItem->Description() : QString());
    };
    connect(cboDatabase, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            m_libraries->cboDatabase_Click();
    });
    connect(cboDatabase->lineEdit(), &QLineEdit::returnPressed, this,
            [this] { m_libraries->ChangeAlias(cboDatabase->currentText(), true); });
    connect(&m_commands, &Commands::Changed, this, &frmCodeLib::UpdateAction);
}

void frmCodeLib::ConnectLinks()
{
    m_commands.SetChecked(u"mnuViewTreeItem"_s, true);
    m_items->AddNewLinkToSelectedItem = [this](const QString& title) { m_linking->AddNewLinkToSelectedItem(title); };
    m_linking->AskRelationshipDelete = [this](LinkDirection direction) -> std::optional<LinkDirection> {
        frmRelationshipDelete dialog(this);
        dialog.DisplayRelationshipAndOptions(direction);
        dialog.exec();
        return dialog.Cancelled() ? std::nullopt : std::optional(dialog.Result());
    };
    m_linking->AskDirection = [this] { return AskLinkDirection(); };
    connect(tvCodeItems, &ctlSmartTreeView::LinkModeStarted, this, [this](LinkMode mode) { m_linking->CreateNewLink(mode); });
    connect(tvCodeItems, &ctlSmartTreeView::LinkModeEnded, this, [this] { m_linking->EndLinkMode(); });
    connect(tvCodeItems, &ctlSmartTreeView::LinkFollowed, this, &frmCodeLib::FollowLink);
    connect(tvCodeItems, &ctlSmartTreeView::LinkRemoveAsked, this, [this](qint64 item) { m_linking->DeleteLink(CLinks::KeyOf(item)); });
    connect(&tvCodeItems->Nodes(), &TreeNodes::modelAboutToBeReset, this, [this] { m_linking->EndLinkMode(); });
    connect(tvCodeItems, &ctlSmartTreeView::Shrinking, this, &frmCodeLib::tvCodeItems_Shrinking);
}

void frmCodeLib::FollowLink(qint64 item)
{
    if (tvCodeItems->Nodes().Find(item))
        return m_tree->GoToNode(NodeKey(item));
    Prompts::Current().MsgBox({.Text = u"The linked item is not in the library any more. The link can be removed."_s,
                               .Caption = ApplicationTitle,
                               .Icon = MsgBoxIcon::Information});
}

/// Which way a link is to lead, from a menu at the pointer.
std::optional<LinkDirection> frmCodeLib::AskLinkDirection()
{
    struct Choice {
        const char* Caption;
        const char* Image;
        LinkDirection Direction;
    };
    static constexpr Choice choices[] = {{"From the selected item to this one", "LINK_ONEWAY_TARGET", LinkDirection::Left},
                                         {"From this item to the selected one", "LINK_ONEWAY_SOURCE", LinkDirection::Right},
                                         {"Both ways", "LINK_TWOWAY", LinkDirection::Both}};
    QMenu menu(this);
    menu.setObjectName(u"mnuLinkDirection"_s);
    QHash<QAction*, LinkDirection> directions;
    for (const Choice& choice : choices)
        directions.insert(menu.addAction(IconNamed(QString::fromLatin1(choice.Image)), QString::fromLatin1(choice.Caption)), choice.Direction);
    const auto chosen = directions.constFind(menu.exec(QCursor::pos()));
    return chosen == directions.constEnd() ? std::nullopt : std::optional(*chosen);
}

/// The splitter follows the tree's own hiding: fixed at its small width, free again when it grows.
void frmCodeLib::tvCodeItems_Shrinking(bool shrinks)
{
    m_commands.SetChecked(u"mnuViewTreeItem"_s, !shrinks);
    if (shrinks) {
        if (tvCodeItems->maximumWidth() == QWIDGETSIZE_MAX)
            m_treeWidth = ctlResizer1->sizes().value(0);
        tvCodeItems->setFixedWidth(tvCodeItems->ShrunkWidth());
        ctlResizer1->setSizes({tvCodeItems->ShrunkWidth(), qMax(1, ctlResizer1->width() - tvCodeItems->ShrunkWidth())});
        return;
    }
    tvCodeItems->setMinimumWidth(0);
    tvCodeItems->setMaximumWidth(QWIDGETSIZE_MAX);
    if (m_treeWidth > 0)
        ctlResizer1->setSizes({m_treeWidth, qMax(1, ctlResizer1->width() - m_treeWidth)});
}

void frmCodeLib::ConnectDetails()
{
    connect(ctlCodeItemDetails, &ctlCodeDetails::CurrentViewChanged, this, &frmCodeLib::CurrentViewChanged);
    connect(ctlCodeItemDetails, &ctlCodeDetails::BeforeNavigate, tbrBrowser, &BrowserToolbar::SetAddress);
    connect(ctlCodeItemDetails, &ctlCodeDetails::BrowserCommandStateChange, this, [this](bool back, bool forward) {
        m_commands.SetEnabled(u"mnuWebGoBack"_s, back);
        m_commands.SetEnabled(u"mnuWebGoForward"_s, forward);
    });
    connect(ctlCodeItemDetails, &ctlCodeDetails::BrowserLinkHovered, statusBar(), [this](const QString& address) {
        address.isEmpty() ? statusBar()->clearMessage() : statusBar()->showMessage(address);
    });
    connect(ctlCodeItemDetails, &ctlCodeDetails::TextChanged, this, [this](DetailsTab tab) {
        const bool isCode = tab == DetailsTab::Code || tab == DetailsTab::Usage;
        for (const QString& name : {u"COLORIZE"_s, u"mnuColorize"_s})
            m_commands.SetEnabled(name, isCode || m_commands.Get(name).Enabled);
    });
    connect(ctlCodeItemDetails, &ctlCodeDetails::DefaultPagesMissing, this, [this](const QString& folder) {
        if (CurrentDatabase() && !CurrentDatabase()->IsReadOnly())
            Guarded(u"MainForm"_s, u"CreateDefaultHTMLItems"_s, [&] { CreateDefaultHTMLItems(folder); });
    });
    tmrStartTimer.setSingleShot(true);
    connect(&tmrStartTimer, &QTimer::timeout, this, &frmCodeLib::tmrStartTimer_Timer);
}

void frmCodeLib::CurrentViewChanged()
{
    const bool isLinks = ctlCodeItemDetails->CurrentView() == DetailsTab::Links;
    mnuWebLinks->setEnabled(isLinks);
    for (QAction* action : mnuWebLinks->actions()) // their keys are those of other tabs too
        action->setShortcutContext(isLinks ? Qt::WindowShortcut : Qt::WidgetShortcut);
    ShowTextToolbar();
    tvCodeItems->AutoHideTree(isLinks && m_session.moSettings && Settings().AutoHideTreeWhenBrowsing());
    if (isLinks)
        m_page->LinksTabShown();
}

/// The second band follows the tab.
void frmCodeLib::ShowTextToolbar()
{
    const std::optional<DetailsTab> tab = ctlCodeItemDetails->CurrentView();
    const bool isNotes = tab == DetailsTab::Notes;
    const bool isCode = tab == DetailsTab::Code || tab == DetailsTab::Usage;
    const bool isLinks = tab == DetailsTab::Links;
    CoolBar1->setCurrentWidget(isNotes ? static_cast<QWidget*>(tlbTextFormat) : isLinks ? static_cast<QWidget*>(tbrBrowser) : tbrCode);
    CoolBar1->setVisible(isLinks || (m_editingEnabled && (isNotes || isCode)));
    tbrCode->ForgetLastGo();
    tbrCode->UpdateSectionButtons(ctlCodeItemDetails->CurrentSection());
    tlbTextFormat->SetCommandsEnabled(m_editingEnabled && isNotes);
    MenuOf(CommandRow::Place::Edit)->setEnabled(m_editingEnabled && tab.has_value());
}

void frmCodeLib::EnableEditing(bool enabled)
{
    m_editingEnabled = enabled;
    ShowTextToolbar();
}

void frmCodeLib::mnuItem_Click()
{
    m_items->ItemMenuEdit();
}

void frmCodeLib::mnuEdit_Click()
{
    const std::optional<DetailsTab> tab = ctlCodeItemDetails->CurrentView();
    mnuEditCode->menuAction()->setVisible(tab == DetailsTab::Code || tab == DetailsTab::Usage);
    mnuFormat->menuAction()->setVisible(tab == DetailsTab::Notes);
    mnuWebLinks->menuAction()->setVisible(tab == DetailsTab::Links);
    tbrCode->UpdateMenu();
    UserTextBox* box = ctlCodeItemDetails->CurrentBox();
    CTextEdit edit;
    if (box)
        edit.Initialize(*box);
    m_commands.SetEnabled(u"mnuUndo"_s, box && edit.CanUndo());
    m_commands.SetEnabled(u"mnuRedo"_s, box && edit.CanRedo());
    m_commands.SetEnabled(u"mnuCopy"_s, box && edit.CanCopy());
    m_commands.SetEnabled(u"mnuCut"_s, box && edit.CanCopy() && !box->Locked());
    m_commands.SetEnabled(u"mnuClear"_s, box && edit.CanCopy() && !box->Locked());
    m_commands.SetEnabled(u"mnuPaste"_s, box && edit.CanPaste());
    m_actions[u"mnuUndo"_s]->setText(u"&Undo "_s + (box && edit.CanUndo() ? edit.TranslatedUndoType() : QString()));
    m_actions[u"mnuRedo"_s]->setText(u"&Redo "_s + (box && edit.CanRedo() ? edit.TranslatedRedoType() : QString()));
}

void frmCodeLib::EditCurrentBox(void (CTextEdit::*edit)())
{
    UserTextBox* box = ctlCodeItemDetails->CurrentBox();
    if (!box)
        return;
    CTextEdit commands;
    commands.Initialize(*box);
    (commands.*edit)();
}

/// What each command runs. A command without an entry here is not shown.
void frmCodeLib::ConnectCommands()
{
    const auto back = [this] {
        if (m_items->SaveItem()) // before the history moves
            m_tree->GoToNode(m_session.moHistory->PreviousInHistory());
    };
    const auto forward = [this] {
        if (m_items->SaveItem())
            m_tree->GoToNode(m_session.moHistory->NextInHistory());
    };
    const auto next = [this] {
        m_commands.Get(u"NEXT"_s).Icon == u"DOWN_RED"_s ? m_tree->FindNextConflictItem() : m_tree->MoveOnNextItem();
    };
    const auto previous = [this] {
        m_commands.Get(u"PREVIOUS"_s).Icon == u"UP_RED"_s ? m_tree->FindPreviousConflictItem() : m_tree->MoveOnPreviousItem();
    };
    m_procedures = {
        {u"mnuNewDatabase"_s, [this] { m_libraries->mnuNewDatabase_Click(); }},
        {u"mnuOpenDatabase"_s, [this] { m_libraries->mnuOpenDatabase_Click(); }},
        {u"mnuFileDatabaseSelect"_s, [] {}}, // opens its menu
        {u"mnuDatabaseListItem"_s, [this] { ShowDatabaseList(); }},
        {u"mnuNewAliasItem"_s, [this] { m_libraries->mnuNewAliasItem_Click(); }},
        {u"mnuRemoveDBItem"_s, [this] { m_libraries->mnuRemoveDBItem_Click(); }},
        {u"mnuExit"_s, [this] { close(); }},
        {u"mnuOptionsItem"_s, [this] { ShowOptions(frmSettings::GeneralPage); }},
        {u"mnuPreviousItem"_s, previous},
        {u"mnuNextItem"_s, next},
        {u"mnuBackItem"_s, back},
        {u"mnuForwardItem"_s, forward},
        {u"mnuViewStatusBar"_s,
         [this] {
             Settings().SetShowStatusBar(m_actions[u"mnuViewStatusBar"_s]->isChecked());
             Settings().Apply();
         }},
        {u"mnuViewRefresh"_s,
         [this] {
             if (!m_items->SaveItem())
                 return;
             m_tree->Refill();
             m_tree->SElectCodeItem(RootKey);
         }},
        {u"mnuCollapseBranchesItem"_s, [this] { m_tree->CollapseBranches(); }},
        {u"mnuViewErrorLog"_s, [this] { mnuViewErrorLog_Click(); }},
        {u"mnuBugReportItem"_s, [this] { mnuBugReportItem_Click(); }},
        {u"mnuAboutItem"_s, [this] { mnuAboutItem_Click(); }},
        {u"BACK"_s, back},
        {u"FORWARD"_s, forward},
        {u"PREVIOUS"_s, previous},
        {u"NEXT"_s, next},
    };
    ConnectItemCommands();
    ConnectEditCommands();
    for (auto action = m_actions.cbegin(); action != m_actions.cend(); ++action)
        UpdateAction(action.key());
}

void frmCodeLib::ConnectItemCommands()
{
    m_procedures.insert({
        {u"mnuKeepItem"_s, [this] { m_items->mnuKeepItem_Click(); }},
        {u"mnuAddCode"_s, [this] { m_items->AddCode(); }},
        {u"mnuNewSiblingItem"_s, [this] { m_items->mnuNewSiblingItem_Click(); }},
        {u"mnuRename"_s, [this] { m_items->mnuRename_Click(); }},
        {u"mnuDeleteCode"_s, [this] { m_items->DeleteCodeItem(); }},
        {u"mnuSaveItem"_s, [this] { m_items->mnuSaveItem_Click(); }},
        {u"mnuAutoSaveItem"_s, [this] { m_items->SetAutoSaveOn(!m_items->AutoSaveOn()); }},
        {u"mnuRemoveDeletedItems"_s, [this] { m_items->mnuRemoveDeletedItems_Click(); }},
        {u"NEW"_s, [this] { m_items->AddCode(); }},
        {u"SAVE"_s, [this] { SaveButtonClicked(); }},
        {u"DELETE"_s, [this] { m_items->DeleteCodeItem(); }},
        {u"mnuAddLink"_s, [] {}}, // opens its menu
    });
    const std::pair<const char*, LinkMode> modes[] = {
        {"mnuAddLinkOneWayFromSelItem", LinkMode::OneWayFrom},       {"mnuAddLinkToSelectedItem", LinkMode::OneWayTo},
        {"mnuAddLinkOneWayNewFromSelItem", LinkMode::OneWayNewFrom}, {"mnuAddLinkOneWayNewToSelItem", LinkMode::OneWayNewTo},
        {"mnuAddLinkTwoWayItem", LinkMode::TwoWay},                  {"mnuAddLinkTwoWayNew", LinkMode::TwoWayNew}};
    for (const auto& [name, mode] : modes)
        m_procedures.insert(QString::fromLatin1(name), [this, mode = mode] { m_linking->CreateNewLink(mode); });
}

void frmCodeLib::ConnectEditCommands()
{
    const auto colorize = [this] {
        ctlCodeItemDetails->ColorizeVisible();
        m_commands.SetEnabled(u"COLORIZE"_s, false);
        m_commands.SetEnabled(u"mnuColorize"_s, false);
    };
    m_procedures.insert({
        {u"mnuUndo"_s, [this] { EditCurrentBox(&CTextEdit::Undo); }},
        {u"mnuRedo"_s, [this] { EditCurrentBox(&CTextEdit::Redo); }},
        {u"mnuCut"_s, [this] { EditCurrentBox(&CTextEdit::Cut); }},
        {u"mnuCopy"_s, [this] { EditCurrentBox(&CTextEdit::Copy); }},
        {u"mnuPaste"_s, [this] { EditCurrentBox(&CTextEdit::Paste); }},
        {u"mnuClear"_s, [this] { EditCurrentBox(&CTextEdit::Clear); }},
        {u"mnuFindInText"_s, [this] { ctlCodeItemDetails->FindInText(); }},
        {u"mnuFindNext"_s, [this] { ctlCodeItemDetails->FindNextOccurance(); }},
        {u"mnuFindPrevious"_s, [this] { ctlCodeItemDetails->FindPreviousOccurance(); }},
        {u"mnuGoToLine"_s, [this] { ctlCodeItemDetails->GoToLine(); }},
        {u"mnuColorize"_s, colorize},
        {u"COLORIZE"_s, colorize},
    });
    ConnectViewCommands();
    m_procedures.insert({
        {u"mnuWebGoBack"_s, [this] { ctlCodeItemDetails->GoBack(); }},
        {u"mnuWebGoForward"_s, [this] { ctlCodeItemDetails->GoForward(); }},
        {u"mnuWebStop"_s, [this] { ctlCodeItemDetails->BrowserStop(); }},
        {u"mnuWebReload"_s, [this] { ctlCodeItemDetails->Reload(); }},
        {u"mnuWebHome"_s, [this] { m_page->DisplayDefaultHTMLPage(); }},
    });
    for (const QString& name : {u"mnuWebGoBack"_s, u"mnuWebGoForward"_s})
        m_commands.SetEnabled(name, false);
    // The boxes have these keys themselves; here they are only shown.
    const std::pair<const char*, QKeySequence::StandardKey> keys[] = {
        {"mnuUndo", QKeySequence::Undo}, {"mnuRedo", QKeySequence::Redo},   {"mnuCut", QKeySequence::Cut},
        {"mnuCopy", QKeySequence::Copy}, {"mnuPaste", QKeySequence::Paste}, {"mnuClear", QKeySequence::Delete}};
    for (const auto& [name, key] : keys) {
        QAction* action = m_actions[QLatin1StringView(name)];
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
    }
}

/// How texts are seen; the user's choices are kept.
void frmCodeLib::ConnectViewCommands()
{
    constexpr int ZoomStep = 10;
    constexpr int ActualSize = 100;
    const auto zoomTo = [this](int percent) { ctlCodeItemDetails->SetZoom(percent); };
    m_procedures.insert({
        {u"mnuFilterTree"_s, [this] { tvCodeItems->StartFilter(); }},
        {u"mnuViewTreeItem"_s, [this] { tvCodeItems->SetTreeHidden(!tvCodeItems->TreeHidden()); }},
        {u"mnuViewZoomIn"_s, [this, zoomTo] { zoomTo(ctlCodeItemDetails->Zoom() + ZoomStep); }},
        {u"mnuViewZoomOut"_s, [this, zoomTo] { zoomTo(ctlCodeItemDetails->Zoom() - ZoomStep); }},
        {u"mnuViewZoomReset"_s, [zoomTo] { zoomTo(ActualSize); }},
        {u"mnuViewLineNumbers"_s, [this] { SwitchTextView(u"mnuViewLineNumbers"_s, &ctlCodeDetails::SetLineNumbers); }},
        {u"mnuViewWordWrap"_s, [this] { SwitchTextView(u"mnuViewWordWrap"_s, &ctlCodeDetails::SetWordWrap); }},
    });
    for (const QString& name : {u"mnuViewLineNumbers"_s, u"mnuViewWordWrap"_s})
        m_actions[name]->setCheckable(true);
}

void frmCodeLib::SwitchTextView(const QString& entry, void (ctlCodeDetails::*set)(bool))
{
    const bool on = m_actions[entry]->isChecked();
    m_commands.SetChecked(entry, on);
    (ctlCodeItemDetails->*set)(on);
}

void frmCodeLib::ConnectHistory()
{
    const CHistory* history = m_session.moHistory.get();
    const auto enable = [this](const QString& button, const QString& entry, bool enabled) {
        return [this, button, entry, enabled] {
            m_commands.SetEnabled(button, enabled);
            m_commands.SetEnabled(entry, enabled);
        };
    };
    connect(history, &CHistory::FirstHistoryItem, this, enable(u"BACK"_s, u"mnuBackItem"_s, false));
    connect(history, &CHistory::HistoryItemAdded, this, enable(u"BACK"_s, u"mnuBackItem"_s, true));
    connect(history, &CHistory::HistoryMovedBack, this, enable(u"FORWARD"_s, u"mnuForwardItem"_s, true));
    connect(history, &CHistory::HistoryMovedForward, this, enable(u"BACK"_s, u"mnuBackItem"_s, true));
    connect(history, &CHistory::LastHistoryItem, this, enable(u"FORWARD"_s, u"mnuForwardItem"_s, false));
}

void frmCodeLib::UpdateAction(const QString& name)
{
    QAction* action = m_actions.value(name);
    if (!action)
        return;
    const Commands::State& state = m_commands.Get(name);
    action->setEnabled(state.Enabled);
    action->setVisible(state.Visible && (action->isSeparator() || m_procedures.contains(name)));
    if (action->isCheckable())
        action->setChecked(state.Checked);
    action->setIcon(state.Icon.isEmpty() ? QIcon() : IconNamed(state.Icon));
    action->setStatusTip(state.Tip);
    if (action->property("key").isValid())
        action->setToolTip(state.Tip);
    for (QMenu* menu : std::as_const(m_menus)) {
        if (menu->actions().contains(action))
            menu->menuAction()->setVisible(HasVisibleActions(*menu));
    }
}

void frmCodeLib::EnableMenus(bool enabled)
{
    for (const CommandRow::Place place : {CommandRow::Place::Item, CommandRow::Place::View, CommandRow::Place::Tools,
                                          CommandRow::Place::Replication})
        MenuOf(place)->setEnabled(enabled);
    for (const QString& entry : {u"mnuNewAliasItem"_s, u"mnuRemoveDBItem"_s})
        m_commands.SetEnabled(entry, enabled);
}

void frmCodeLib::mnuFile_Click()
{
    mnuFileDatabaseSelect->clear();
    for (int i = 0; i < cboDatabase->count(); ++i) {
        QString caption = cboDatabase->itemText(i);
        QAction* entry = mnuFileDatabaseSelect->addAction(caption.replace(u'&', u"&&"_s));
        entry->setObjectName(u"mnuDatabaseName%1"_s.arg(i));
        entry->setCheckable(true);
        entry->setChecked(i == cboDatabase->currentIndex());
        connect(entry, &QAction::triggered, this, [this, i] { SetComboIndex(i); });
    }
    m_commands.SetEnabled(u"mnuFileDatabaseSelect"_s, cboDatabase->count() > 0);
}

} // namespace qb
