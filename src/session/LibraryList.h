#pragma once

#include "platform/system/Hook.h"
#include "session/Commands.h"
#include "session/SessionState.h"
#include "session/ShellView.h"
#include "text/ItemDetailsView.h"

#include <QString>
#include <functional>
#include <optional>

namespace qb {

class ItemTree;

/// The list of libraries and the one that is open. The list is kept in the user's settings and
/// written at once after every change; every opening of a library goes through
/// SetupDBConnection.
class LibraryList {
public:
    /// Registers the commands on libraries and their list. Nothing is read or opened yet. Everything must outlive
    /// this.
    LibraryList(SessionState& session, ShellView& shell, ItemDetailsView& details, Commands& commands, ItemTree& tree);

    /// Fixes the library to open, and makes the first one on the first start.
    void GetLastDBName();
    /// Reads the list and fills the combo box.
    void CreateDBArray();
    /// Opens and validates CurrentDatabasePath, or asks for a library. False: none is open.
    bool SetupDBConnection();
    /// Reads what the library says of its language and its part in replication.
    void UpdateGlobalSynchronizationVariables();
    /// Opens the library of that place in the list.
    bool ChangeDatabase(int index);
    /// Makes a library; a file that stands there is replaced once the new one is complete.
    bool CreateNewDatabase(const QString& path, LanguageType type, const QString& languageFile);
    /// Adds and opens a library; an empty path asks for one. With @p known it is in the list.
    void SelectDatabase(QString path, bool known = false);
    /// Renames the open library in the list, after a question if @p ask.
    void ChangeAlias(const QString& alias, bool ask);
    void EnableControls(bool enabled);
    /// Closes the open library.
    void CloseDatabase();
    /// Reads the tree of the open library anew.
    void ShowLibrary();
    void ShowNoLibrary();

    // Commands
    void mnuNewDatabase_Click();
    void mnuOpenDatabase_Click() { SelectDatabase({}); }
    void mnuNewAliasItem_Click();
    void mnuRemoveDBItem_Click();
    /// The combo box shows another entry.
    void cboDatabase_Click();

    /// The place of a path in the list, an empty path meaning the current one.
    std::optional<int> FindCurrentDBArrayIndex(const QString& path = {}) const;
    /// The name by which a library is shown: its alias, or its file name.
    QString AliasOf(const QString& path) const;

    /// The path of the library in the program's folder.
    static QString DefaultLibraryPath();

    /// Takes a library off the list, if it is there.
    void ForgetLibrary(const QString& path);

    /// Starts a new trail of visited items, as each change of library does.
    void NewHistory();

    /// Called for a new library of a self-defined language: its words are to be entered.
    std::function<void()> DisplayKeywordDefiner;
    /// Makes a library of a transfer file; its path, empty where there is none.
    Hook<QString(const QString& file)> UnpackReplica;
    /// A library was opened, and is not shown yet.
    Hook<void()> DatabaseOpened;
    /// The open library is about to be closed.
    Hook<void()> DatabaseClosing;
    /// What the library says of its part in replication was read anew.
    Hook<void()> ReplicationRead;
    /// Another library is open and shown.
    Hook<void()> LibraryShown;

private:
    /// While it lives, changes of the combo box are the program's own.
    class ComboGuard {
    public:
        explicit ComboGuard(LibraryList& list) : m_flag(list.DontRespondToCombo), m_before(m_flag) { m_flag = true; }
        ~ComboGuard() { m_flag = m_before; }
        ComboGuard(const ComboGuard&) = delete;
        ComboGuard& operator=(const ComboGuard&) = delete;

    private:
        bool& m_flag;
        bool m_before;
    };

    bool OpenCurrent();
    bool OpenFirstPresent();
    bool FallBackToDefaultLibrary();
    void ReportOpenError(const RuntimeError& error);
    void SetComboToPresentDB();
    bool SetFirstDBPresent();
    void SaveDatabasesToSettings();
    /// Saves a setting; a failure is reported and costs nothing but the setting.
    void SaveUsedDatabasesList(const QString& path);
    std::optional<QString> AskForAlias(const QString& path);
    void ShowAsInterim(const QString& path);
    void AddToList(const QString& path, const QString& alias);
    void RemoveDatabaseFromList(int index);
    static QString IdentityOf(const QString& path);
    void DeleteFromDisk(const QString& path);
    void EnableDBToolsMenu();

    SessionState& m_session;
    ShellView& m_shell;
    ItemDetailsView& m_details;
    Commands& m_commands;
    ItemTree& m_tree;
    bool DontRespondToCombo = false;
    bool m_inComboClick = false;
    std::vector<LibraryEntry> m_storedList; ///< what the list was when it was read or stored last
};

} // namespace qb
