#include "session/DatabaseTools.h"

#include "maintenance/BackupRotation.h"
#include "maintenance/CDBManipulate.h"
#include "maintenance/Compaction.h"
#include "maintenance/ContentCheck.h"
#include "maintenance/PhasedWork.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "session/FileDialogs.h"
#include "session/ItemTree.h"
#include "session/LibraryList.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;
const QString BackupFilter = u"KT Quillbase Backup File|*.qbb"_s;

void Tell(const QString& text, const QString& caption, MsgBoxIcon icon)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = icon});
}

bool IsWanted(const QString& text, const QString& caption, std::optional<MsgBoxResult> byDefault = {})
{
    return Prompts::Current().MsgBox({.Text = text,
                                      .Caption = caption,
                                      .Buttons = MsgBoxButtons::YesNo,
                                      .Icon = MsgBoxIcon::Question,
                                      .Default = byDefault})
           == MsgBoxResult::Yes;
}

/// What the settings know only of a library that is open. The changes of others must not go with those of the session.
bool IsShared(const QString& library)
{
    if (!QFileInfo::exists(library))
        return false;
    try {
        return DBEngine::OpenDatabase(library, DatabaseAccess::ReadOnly)
            ->QueryValue(u"SELECT SharedDatabase FROM Properties"_s)
            .ToBoolean();
    } catch (const RuntimeError&) {
        return false; // what is wrong with it is said when it is copied or opened
    }
}

/// Where a backup is to go; empty when the user cancelled.
QString AskForTarget(const QString& backupFile)
{
    const QString whole = backupFile.endsWith(u".001"_s) ? TakeExtensionOff(backupFile) : backupFile; // of volumes
    const QString name = fnExtractPathOrFileName(whole, PathPart::BaseName) + u".qbd"_s;
    if (!IsWanted(u"Do you want to select a path, where to put the restored database and all coherent files?\r\nIf you "
                  "select 'No', then the database will be restored to the KT Quillbase install location."_s,
                  u"Restore Location"_s, MsgBoxResult::No))
        return ApplicationFolder() + name;
    return GetFileName(true, u"Choose path and name of the restored database"_s, u"KT Quillbase Database|*.qbd"_s,
                       name);
}

} // namespace

DatabaseTools::DatabaseTools(SessionState& session, Commands& commands, LibraryList& libraries, ItemTree& tree)
    : m_session(session), m_commands(commands), m_libraries(libraries), m_tree(tree)
{
    m_commands.Register(u"mnuDBToolsBackupItem"_s, this, &DatabaseTools::mnuDBToolsBackupItem_Click);
    m_commands.Register(u"mnuDBToolsRestoreItem"_s, this, &DatabaseTools::mnuDBToolsRestoreItem_Click);
    m_commands.Register(u"mnuToolDatabaseRepair"_s, [] {}); // messages name it, and there has never been such a tool
    m_commands.Register(u"mnuUndoThisSessionChanges"_s, this, &DatabaseTools::mnuUndoThisSessionChanges_Click);
    m_commands.SetEnabled(u"mnuUndoThisSessionChanges"_s, false);
}

QString DatabaseTools::ProposedBackup() const
{
    return QFileInfo(RotatingName({}, m_session.CurrentDatabasePath, Clock::Today().Day())).fileName();
}

/// The library that was closed, with the item that was shown.
bool DatabaseTools::OpenAgain()
{
    if (!m_libraries.SetupDBConnection()) {
        m_libraries.ShowNoLibrary();
        return false;
    }
    m_tree.OpenItem();
    return true;
}

bool DatabaseTools::BackUp(const QString& library, const QString& backupFile)
{
    bool isDone = false;
    Watched(u"Backup"_s, [&](Work& work) {
        CDBManipulate manipulate(work);
        isDone = manipulate.BackUp(library, backupFile);
        m_damage = manipulate.Damage();
    });
    if (isDone)
        RememberCheck(backupFile, m_damage.empty());
    return isDone;
}

bool DatabaseTools::BackUpDatabase(const QString& backupFile)
{
    m_libraries.CloseDatabase();
    const bool isDone = BackUp(m_session.CurrentDatabasePath, backupFile);
    OpenAgain();
    return isDone;
}

void DatabaseTools::mnuDBToolsBackupItem_Click()
{
    const QString file = GetFileName(true, u"Select destination folder and file name of the new backup file"_s,
                                     BackupFilter, ProposedBackup());
    if (file.isEmpty() || !m_tree.SaveItem())
        return;
    if (BackUpDatabase(file)) {
        Tell(u"Current database seccessfully backed up to "_s + QDir::toNativeSeparators(file), u"DB Backed Up"_s,
             MsgBoxIcon::Information);
        OfferToBringBack();
    } else {
        Tell(u"Program couldn't back up your database. It might be opened by another user."_s,
             u"Operation Unseccessfull"_s, MsgBoxIcon::Exclamation);
    }
}

QString DatabaseTools::DamageText(const std::vector<LibraryFault>& damage, const QString& end)
{
    return u"Not all in the library is as it was written:\r\n\r\n"_s + LinesOf(damage)
           + u"\r\nThe backup has it as it is. "_s + end;
}

void DatabaseTools::OfferToBringBack()
{
    if (!m_damage.empty()
        && IsWanted(DamageText(m_damage, u"Do you want to bring it back from an earlier one?"_s),
                    u"Damage in the Library"_s))
        m_commands.Run(u"mnuBackupsItem"_s);
}

void DatabaseTools::mnuDBToolsRestoreItem_Click()
{
    const QString file = GetFileName(false, u"Select a back-up file to restore database from"_s, BackupFilter);
    if (!file.isEmpty())
        RestoreBackup(file);
}

void DatabaseTools::RestoreBackup(const QString& backupFile)
{
    QString target = AskForTarget(backupFile);
    if (target.isEmpty())
        return;
    const bool isOpenOne = QFileInfo(target) == QFileInfo(m_session.CurrentDatabasePath) && m_session.CurrentDatabase;
    if (isOpenOne && !m_tree.SaveItem())
        return;
    if (isOpenOne)
        m_libraries.CloseDatabase();
    bool isDone = false;
    Watched(u"Restore"_s, [&](Work& work) { isDone = CDBManipulate(work).Restore(target, backupFile, false, false); });
    if (!isDone) {
        if (isOpenOne)
            OpenAgain();
        return;
    }
    if (IsWanted(
            u"The selected database was successfully restored.\r\n\r\nDo you want the restored database to replace the "
            "one currently selected in the list?"_s,
            u"Confirm"_s))
        m_libraries.ForgetLibrary(m_session.CurrentDatabasePath);
    m_libraries.SelectDatabase(target);
}

void DatabaseTools::MakeStartOfSessionCopy()
{
    const bool isWanted = m_session.moSettings->DBEnableSessionUndo() && !IsShared(m_session.CurrentDatabasePath);
    m_commands.SetEnabled(u"mnuUndoThisSessionChanges"_s, isWanted);
    Guarded(ModuleName, u"MakeStartOfSessionCopy"_s, [] { RemoveSessionCopy(); });
    if (!isWanted)
        return;
    if (m_session.CurrentDatabasePath.isEmpty())
        Tell(u"Cannot find the last opened database : "_s, ApplicationTitle, MsgBoxIcon::Information);
    else
        m_commands.SetEnabled(u"mnuUndoThisSessionChanges"_s, Guarded(ModuleName, u"MakeStartOfSessionCopy"_s, [this] {
                                  MakeSessionCopy(m_session.CurrentDatabasePath);
                              }));
}

void DatabaseTools::mnuUndoThisSessionChanges_Click()
{
    if (!QFileInfo::exists(SessionCopyPath()))
        return;
    const QString library = m_session.CurrentDatabasePath;
    if (const QString why = WhyNotUndone(library); !why.isEmpty())
        return Tell(why + u" Nothing was changed."_s, ApplicationTitle, MsgBoxIcon::Information);
    m_libraries.CloseDatabase();
    Guarded(ModuleName, u"mnuUndoThisSessionChanges"_s, [&] {
        Watched(u"Undo This Session's Changes"_s,
                [&](Work& work) { RunUnlessCancelled([&] { UndoSession(library, work); }); });
    });
    if (!m_libraries.SetupDBConnection())
        return m_libraries.ShowNoLibrary();
    m_libraries.NewHistory();
    m_libraries.ShowLibrary();
}

} // namespace qb
