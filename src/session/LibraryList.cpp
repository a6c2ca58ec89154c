#include "session/LibraryList.h"

#include "config/Remembered.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "session/FileDialogs.h"
#include "session/ItemTree.h"
#include "session/RulesOffer.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "store/SideFolders.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

MsgBoxResult MsgBox(const QString& text, const QString& caption, MsgBoxIcon icon)
{
    return Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = icon});
}

} // namespace

LibraryList::LibraryList(SessionState& session, ShellView& shell, ItemDetailsView& details, Commands& commands,
                         ItemTree& tree)
    : m_session(session), m_shell(shell), m_details(details), m_commands(commands), m_tree(tree)
{
    m_commands.Register(u"mnuNewDatabase"_s, this, &LibraryList::mnuNewDatabase_Click);
    m_commands.Register(u"mnuOpenDatabase"_s, this, &LibraryList::mnuOpenDatabase_Click);
    m_commands.Register(u"mnuNewAliasItem"_s, this, &LibraryList::mnuNewAliasItem_Click);
    m_commands.Register(u"mnuRemoveDBItem"_s, this, &LibraryList::mnuRemoveDBItem_Click);
}

QString LibraryList::DefaultLibraryPath()
{
    return ApplicationFolder() + u"QBLib.qbd"_s;
}

void LibraryList::GetLastDBName()
{
    Guarded(ModuleName, u"GetLastDBName"_s, [this] {
        QString path = Remembered(Memory::LastDB);
        if (path.isEmpty()) {
            path = DefaultLibraryPath();
            Remember(Memory::LastDB, path);
            if (!QFileInfo::exists(path))
                CreateNewDatabase(path, LanguageType::VB, {});
        }
        m_session.CurrentDatabasePath = QFileInfo::exists(path) ? path : QString();
    });
}

// Opening

bool LibraryList::SetupDBConnection()
{
    return Guarded(
        ModuleName, u"SetupDBConnection"_s,
        [this] {
            CloseDatabase();
            if (m_session.CurrentDatabasePath.isEmpty()) {
                SelectDatabase({});
                return m_session.CurrentDatabase != nullptr;
            }
            if (!OpenCurrent())
                return false;
            UpdateGlobalSynchronizationVariables();
            if (!m_session.CurrentDatabase->IsReadOnly())
                Guarded(ModuleName, u"FinishPendingFiles"_s, [this] {
                    FinishPendingFiles(*m_session.CurrentDatabase);
                    FinishPendingPages(*m_session.CurrentDatabase);
                });
            if (!m_session.moSettings)
                m_session.moSettings = std::make_unique<CSettings>([this] { return m_session.CurrentDatabase.get(); });
            m_session.moSettings->InitializeDatabaseProperties();
            DatabaseOpened();
            OfferRules(*m_session.CurrentDatabase);
            m_details.FormatingInitialize(*m_session.CurrentDatabase);
            EnableDBToolsMenu();
            if (const QString foreign = WhoseFoldersAreForeign(*m_session.CurrentDatabase); !foreign.isEmpty())
                MsgBox(foreign, ApplicationTitle, MsgBoxIcon::Exclamation);
            m_shell.SetComboToolTip(u"Currently selected database: "_s + AliasOf(m_session.CurrentDatabasePath));
            return true;
        },
        false);
}

void LibraryList::CloseDatabase()
{
    m_details.TreeReplaced(); // it and the item refer to the database
    DatabaseClosing();
    m_session.oCodeItem.reset();
    m_session.CurrentItemKey.clear(); // so that a click on its node opens it anew
    m_tree.ForgetProblems();
    if (m_session.moSettings)
        m_session.moSettings->ClosePropertiesRS();
    m_session.CurrentDatabase.reset();
}

bool LibraryList::OpenCurrent()
{
    for (;;) {
        try {
            m_session.CurrentDatabase = Library::Open(m_session.CurrentDatabasePath);
            return true;
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::FileNotFound) {
                ReportOpenError(error);
                return m_session.CurrentDatabase != nullptr; // one that can only be read is open now
            }
            if (!OpenFirstPresent())
                return false;
        }
    }
}

/// Says why a library was not opened; one that can't be written to is opened for reading.
void LibraryList::ReportOpenError(const RuntimeError& error)
{
    const QString caption = u"Invalid Database"_s;
    if (error.Number() == ErrorNumber::NotADatabase) {
        MsgBox(u"The database you are trying to open is not a KT Quillbase database!"_s, caption,
               MsgBoxIcon::Exclamation);
        return;
    }
    if (error.Number() == ErrorNumber::CannotOpen) {
        try {
            m_session.CurrentDatabase = Library::Open(m_session.CurrentDatabasePath, DBEngine::Access::ReadOnly);
            MsgBox(error.Description() + u"\nThe library is opened for reading only."_s, ApplicationTitle,
                   MsgBoxIcon::Information);
            return;
        } catch (const RuntimeError&) {
            // It can't be read either: the first reason is the one to be shown.
        }
    }
    MsgBox(error.Description(), caption, MsgBoxIcon::Exclamation);
}

/// The library of the current path is gone: takes it off the list and makes the first that is
/// left the current one. False when there is no library to go on with.
bool LibraryList::OpenFirstPresent()
{
    MsgBox(u"The database "_s + AliasOf(m_session.CurrentDatabasePath)
               + u" could not be found in the set location. It will be removed from the list and the first valid "
                 "database in your list will be selected."_s,
           u"Database Not Found"_s, MsgBoxIcon::Exclamation);
    const ComboGuard guard(*this);
    if (const auto index = FindCurrentDBArrayIndex())
        RemoveDatabaseFromList(*index);
    SaveDatabasesToSettings();
    return SetFirstDBPresent() || FallBackToDefaultLibrary();
}

bool LibraryList::FallBackToDefaultLibrary()
{
    m_session.CurrentDatabasePath.clear();
    const QString path = DefaultLibraryPath();
    // A library that stands there, though it is not in the list, is somebody's work.
    if (!QFileInfo::exists(path) && !CreateNewDatabase(path, LanguageType::VB, {})) {
        MsgBox(u"No KT Quillbase Library database found.\nYou will have to connect a database to this program manually "
               "using the File menu."_s,
               u"No Database Found"_s, MsgBoxIcon::Exclamation);
        return false;
    }
    m_session.CurrentDatabasePath = path;
    m_shell.SetComboText(AliasOf(path));
    return true;
}

void LibraryList::UpdateGlobalSynchronizationVariables()
{
    Guarded(ModuleName, u"UpdateGlobalSynchronizationVariables"_s, [this] {
        Database& database = *m_session.CurrentDatabase;
        const Recordset properties = database.OpenRecordset(u"Properties"_s);
        m_shell.SetStatusText(properties.IsEmpty() ? QString() : properties[u"LanguageUsed"_s].ToText());
        m_session.CurrentDatabase->ReadReplica();
        ReplicationRead();
    });
}

void LibraryList::EnableDBToolsMenu()
{
    m_commands.SetStanding(StandingOf(m_session));
}

void LibraryList::EnableControls(bool enabled)
{
    m_commands.EnableMainToolbar(enabled);
    m_shell.SetItemDate({}, {});
    if (!enabled)
        m_shell.SetStatusText({});
    m_tree.ShowNoItem(enabled);
    m_shell.EnableMenus(enabled);
    for (const QString& name : {u"BACK"_s, u"FORWARD"_s, u"mnuBackItem"_s, u"mnuForwardItem"_s, u"PRINT"_s,
                                u"mnuFilePrint"_s, u"mnuMailItem"_s})
        m_commands.SetEnabled(name, false);
}

void LibraryList::NewHistory()
{
    m_session.moHistory = std::make_unique<CHistory>();
    m_tree.FollowHistory();
}

void LibraryList::ShowLibrary()
{
    m_tree.Refill();
    EnableControls(true);
    LibraryShown();
}

/// No library is left to go on with: nothing of one may be shown, or worked on. The combo box shows none either, so
/// that any can be chosen.
void LibraryList::ShowNoLibrary()
{
    m_session.CurrentDatabasePath.clear();
    m_shell.SetComboText({});
    m_tree.ClearTreeView();
    EnableControls(false);
}

bool LibraryList::ChangeDatabase(int index)
{
    return Guarded(
        ModuleName, u"ChangeDatabase"_s,
        [&] {
            if (index >= 0 && size_t(index) < m_session.DatabaseList.size())
                m_session.CurrentDatabasePath = m_session.DatabaseList[size_t(index)].Path;
            if (!SetupDBConnection())
                return false;
            NewHistory();
            ShowLibrary();
            Remember(Memory::LastDB, m_session.CurrentDatabasePath);
            return true;
        },
        false);
}

void LibraryList::SelectDatabase(QString path, bool known)
{
    Guarded(ModuleName, u"SelectDatabase"_s, [&] {
        if (path.isEmpty())
            path = GetFileName(false, u"Select a Quillbase Library Database"_s, u"KT Quillbase Files|*.qbd;*.qbr"_s);
        if (path.isEmpty())
            return;
        if (!m_tree.SaveItem())
            return;
        const bool isReplica = path.mid(path.lastIndexOf(u'.')).compare(u".qbr"_s, Qt::CaseInsensitive) == 0;
        if (isReplica)
            path = UnpackReplica(path);
        if (path.isEmpty())
            return;
        const QString before = m_session.CurrentDatabasePath;
        m_session.CurrentDatabasePath = QFileInfo(path).absoluteFilePath();
        if (SetupDBConnection()) {
            if (!known)
                SaveUsedDatabasesList(m_session.CurrentDatabasePath);
            NewHistory();
            ShowLibrary();
        } else {
            m_session.CurrentDatabasePath = before;
            if (before.isEmpty() || !SetupDBConnection()) {
                ShowNoLibrary();
                return;
            }
            SetComboToPresentDB();
            m_tree.OpenItem(); // the item that was shown is the current one again
        }
        Remember(Memory::LastDB, m_session.CurrentDatabasePath);
    });
}

bool LibraryList::SetFirstDBPresent()
{
    if (m_session.DatabaseList.empty())
        return false;
    m_session.CurrentDatabasePath = m_session.DatabaseList.front().Path;
    m_shell.SetComboIndex(0);
    return true;
}

void LibraryList::cboDatabase_Click()
{
    if (m_inComboClick || DontRespondToCombo)
        return;
    m_inComboClick = true;
    const int index = m_shell.ComboIndex();
    if (!m_tree.SaveItem()) {
        SetComboToPresentDB();
    } else if (!ChangeDatabase(index)) {
        MsgBox(u"No valid database was found."_s, u"Database Not Found"_s, MsgBoxIcon::Exclamation);
        if (const auto place = FindCurrentDBArrayIndex())
            RemoveDatabaseFromList(*place);
        ShowNoLibrary();
        SaveDatabasesToSettings();
    }
    if (m_session.CurrentDatabase)
        m_shell.SetComboToolTip(u"Currently selected database: "_s + AliasOf(m_session.CurrentDatabasePath));
    m_inComboClick = false;
}

} // namespace qb
