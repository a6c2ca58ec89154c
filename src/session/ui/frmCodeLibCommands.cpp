// The commands of the main window: what each runs, and how menus and buttons follow its state.

#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/CodeToolbar.h"
#include "session/ui/frmCodeLib.h"
#include "support/ui/Icons.h"
#include "text/ui/CTextEdit.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QStatusBar>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

bool HasVisibleActions(const QMenu& menu)
{
    const QList<QAction*> actions = menu.actions();
    return std::any_of(actions.begin(), actions.end(),
                       [](const QAction* action) { return action->isVisible() && !action->isSeparator(); });
}

} // namespace

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
    mnuFormat->menuAction()->setVisible(tab == DetailsTab::Notes || tab == DetailsTab::Files);
    if (auto* mnuFiles = findChild<QMenu*>(u"mnuFiles"_s))
        mnuFiles->menuAction()->setVisible(tab == DetailsTab::Files);
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
    m_commands.SetEnabled(u"mnuPaste"_s, box && edit.CanPaste() && !box->Locked());
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
            m_tree->GoBack();
    };
    const auto forward = [this] {
        if (m_items->SaveItem())
            m_tree->GoToNode(m_session.moHistory->NextInHistory());
    };
    const auto next = [this] {
        m_commands.Get(u"NEXT"_s).Icon == u"DOWN_RED"_s ? m_tree->FindNextConflictItem() : m_tree->MoveOnNextItem();
    };
    const auto previous = [this] {
        m_commands.Get(u"PREVIOUS"_s).Icon == u"UP_RED"_s ? m_tree->FindPreviousConflictItem()
                                                          : m_tree->MoveOnPreviousItem();
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
             if (!Settings().ApplyOrTakeBack())
                 m_actions[u"mnuViewStatusBar"_s]->setChecked(Settings().ShowStatusBar());
         }},
        {u"mnuViewRefresh"_s,
         [this] {
             if (m_items->SaveItem())
                 m_tree->Reload();
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
    // They are meant for the item that is shown, not for one that a link mode has come to.
    const auto ofShownItem = [this](void (ItemCommands::*run)()) {
        return [this, run] {
            m_linking->CancelLinkMode();
            ((*m_items).*run)();
        };
    };
    m_procedures.insert({
        {u"mnuKeepItem"_s, [this] { m_items->mnuKeepItem_Click(); }},
        {u"mnuAddCode"_s, ofShownItem(&ItemCommands::AddCode)},
        {u"mnuNewSiblingItem"_s, ofShownItem(&ItemCommands::mnuNewSiblingItem_Click)},
        {u"mnuRename"_s, ofShownItem(&ItemCommands::mnuRename_Click)},
        {u"mnuDeleteCode"_s, ofShownItem(&ItemCommands::DeleteCodeItem)},
        {u"mnuSaveItem"_s, [this] { m_items->mnuSaveItem_Click(); }},
        {u"mnuAutoSaveItem"_s, [this] { m_items->SetAutoSaveOn(!m_items->AutoSaveOn()); }},
        {u"mnuRemoveDeletedItems"_s, [this] { m_items->mnuRemoveDeletedItems_Click(); }},
        {u"NEW"_s, ofShownItem(&ItemCommands::AddCode)},
        {u"SAVE"_s, [this] { SaveButtonClicked(); }},
        {u"DELETE"_s, ofShownItem(&ItemCommands::DeleteCodeItem)},
        {u"mnuAddLink"_s, [] {}}, // opens its menu
    });
    const std::pair<const char*, LinkMode> modes[] = {{"mnuAddLinkOneWayFromSelItem", LinkMode::OneWayFrom},
                                                      {"mnuAddLinkToSelectedItem", LinkMode::OneWayTo},
                                                      {"mnuAddLinkOneWayNewFromSelItem", LinkMode::OneWayNewFrom},
                                                      {"mnuAddLinkOneWayNewToSelItem", LinkMode::OneWayNewTo},
                                                      {"mnuAddLinkTwoWayItem", LinkMode::TwoWay},
                                                      {"mnuAddLinkTwoWayNew", LinkMode::TwoWayNew}};
    for (const auto& [name, mode] : modes)
        m_procedures.insert(QString::fromLatin1(name), [this, mode = mode] { m_linking->CreateNewLink(mode); });
}

void frmCodeLib::ConnectEditCommands()
{
    const auto colorize = [this] { ctlCodeItemDetails->ColorizeVisible(); };
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
    for (const CommandRow::Place place :
         {CommandRow::Place::Item, CommandRow::Place::View, CommandRow::Place::Tools, CommandRow::Place::Replication})
        MenuOf(place)->setEnabled(enabled);
    for (const QString& entry : {u"mnuNewAliasItem"_s, u"mnuRemoveDBItem"_s})
        m_commands.SetEnabled(entry, enabled);
    ShowLibraryState();
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
