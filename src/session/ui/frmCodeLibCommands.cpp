// The commands of the main window itself, and its menus.

#include "panels/ui/ctlSmartTreeView.h"
#include "session/ui/CodeToolbar.h"
#include "session/ui/frmCodeLib.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

void frmCodeLib::EnableEditing(bool enabled)
{
    m_editingEnabled = enabled;
    ShowTextToolbar();
}

void frmCodeLib::mnuEdit_Click()
{
    const std::optional<DetailsTab> tab = ctlCodeItemDetails->CurrentView();
    const auto show = [](QMenu* menu, bool shown) { menu->menuAction()->setVisible(shown); };
    show(m_faces->MenuOf(CommandRow::Place::EditCode), tab == DetailsTab::Code || tab == DetailsTab::Usage);
    show(m_faces->MenuOf(CommandRow::Place::EditFormat), tab == DetailsTab::Notes || tab == DetailsTab::Files);
    show(mnuFiles, tab == DetailsTab::Files);
    show(m_faces->MenuOf(CommandRow::Place::WebLinks), tab == DetailsTab::Links);
    tbrCode->UpdateMenu();
    m_edit->ShowState();
}

/// What concerns the window alone; the collaborators of the session have registered theirs.
void frmCodeLib::RegisterCommands()
{
    m_commands.Register(u"mnuFileDatabaseSelect"_s, [] {}); // opens its menu
    m_commands.Register(u"mnuExit"_s, this, &frmCodeLib::close);
    m_commands.Register(u"mnuOptionsItem"_s, [this] { ShowOptions(frmSettings::GeneralPage); });
    m_commands.Register(u"mnuViewStatusBar"_s, [this] {
        Settings().SetShowStatusBar(!Settings().ShowStatusBar());
        Settings().ApplyOrTakeBack();
    });
    m_printing->TypedTexts = std::bind_front(&ctlCodeDetails::Unsaved, ctlCodeItemDetails);
    m_edit->LibraryLanguage = [this] {
        return CurrentDatabase() ? CurrentDatabase()->QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText()
                                 : QString();
    };
    m_commands.Register(u"mnuFilterTree"_s, tvCodeItems, &ctlSmartTreeView::StartFilter);
    m_commands.Register(u"mnuViewTreeItem"_s, [this] { tvCodeItems->SetTreeHidden(!tvCodeItems->IsShrunk()); });
    m_commands.Register(u"SAVE"_s, &m_saveClicks, &ClickCounter::Click);
}

void frmCodeLib::ConnectMenus()
{
    const auto opens = [this](CommandRow::Place place, const auto& run) {
        connect(m_faces->MenuOf(place), &QMenu::aboutToShow, this, run);
    };
    opens(CommandRow::Place::File, &frmCodeLib::mnuFile_Click);
    opens(CommandRow::Place::Edit, &frmCodeLib::mnuEdit_Click);
    opens(CommandRow::Place::Item, std::bind_front(&ItemCommands::ItemMenuEdit, m_items.get()));
    // The boxes have these keys themselves; here they are only shown.
    static constexpr std::pair<const char*, QKeySequence::StandardKey> keys[] = {
        {"mnuUndo", QKeySequence::Undo}, {"mnuRedo", QKeySequence::Redo},   {"mnuCut", QKeySequence::Cut},
        {"mnuCopy", QKeySequence::Copy}, {"mnuPaste", QKeySequence::Paste}, {"mnuClear", QKeySequence::Delete}};
    for (const auto& [name, key] : keys) {
        QAction* action = m_faces->Action(QLatin1StringView(name));
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
    }
}

/// The entries of the menu Edit that work on a text wait for one; the filter needs none.
void frmCodeLib::EnableMenus(bool enabled)
{
    for (const CommandRow::Place place : {CommandRow::Place::Item, CommandRow::Place::View})
        m_faces->MenuOf(place)->setEnabled(enabled);
    for (const QString& entry : {u"mnuNewAliasItem"_s, u"mnuRemoveDBItem"_s, u"mnuDBToolsBackupItem"_s})
        m_commands.SetEnabled(entry, enabled);
    ShowLibraryState();
}

void frmCodeLib::mnuFile_Click()
{
    QMenu* mnuFileDatabaseSelect = m_faces->Action(u"mnuFileDatabaseSelect"_s)->menu();
    mnuFileDatabaseSelect->clear();
    const QComboBox* cboDatabase = m_shell->Libraries();
    for (int i = 0; i < cboDatabase->count(); ++i) {
        QString caption = cboDatabase->itemText(i);
        QAction* entry = mnuFileDatabaseSelect->addAction(caption.replace(u'&', u"&&"_s));
        entry->setObjectName(u"mnuDatabaseName%1"_s.arg(i));
        entry->setCheckable(true);
        entry->setChecked(i == cboDatabase->currentIndex());
        connect(entry, &QAction::triggered, this, std::bind_front(&WindowShell::SetComboIndex, m_shell, i));
    }
    m_commands.SetEnabled(u"mnuFileDatabaseSelect"_s, cboDatabase->count() > 0);
}

} // namespace qb
