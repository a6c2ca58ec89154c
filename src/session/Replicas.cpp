#include "session/Replicas.h"

#include "maintenance/CDBManipulate.h"
#include "maintenance/PhasedWork.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaOpening.h"
#include "session/FileDialogs.h"
#include "session/ItemTree.h"
#include "session/LibraryList.h"
#include "support/ErrorRoutine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;

MsgBoxResult Tell(const QString& text, const QString& caption, MsgBoxIcon icon,
                  MsgBoxButtons buttons = MsgBoxButtons::OkOnly, std::optional<MsgBoxResult> byDefault = {})
{
    return Prompts::Current().MsgBox(
        {.Text = text, .Caption = caption, .Buttons = buttons, .Icon = icon, .Default = byDefault});
}

/// Runs a command; that the user has ended it is no error.
template <class Body>
bool UnlessCancelled(const QString& procedure, Body&& body)
{
    return Guarded(
        ModuleName, procedure,
        [&] {
            try {
                return body();
            } catch (const RuntimeError& error) {
                if (IsCancellation(error))
                    return false;
                throw;
            }
        },
        false);
}

/// Where a transfer file is to be unpacked, under its name there; empty when the user cancelled.
QString AskForPlace(const QString& file)
{
    if (QFileInfo(QFileInfo(file).absolutePath()) == QFileInfo(ApplicationFolder()))
        return file;
    const MsgBoxResult moves = Tell(
        u"Would you like to move the database to a different location before it will be unpacked and connected?\r\nIf "
        "you select 'No', then the database will remain in its current directory and necessary directories will be "
        "also created there."_s,
        u"Target Database Location"_s, MsgBoxIcon::Question, MsgBoxButtons::YesNoCancel);
    if (moves == MsgBoxResult::Cancel)
        return {};
    if (moves == MsgBoxResult::No)
        return file;
    return GetFileName(true, u"Select Target Directory and File Name"_s, u"KT Quillbase Replica File|*.qbr"_s,
                       QFileInfo(file).fileName());
}

} // namespace

Replicas::Replicas(SessionState& session, ShellView& shell, Commands& commands, LibraryList& libraries, ItemTree& tree)
    : m_session(session), m_shell(shell), m_commands(commands), m_libraries(libraries), m_tree(tree)
{
    m_commands.Register(u"mnuDBToolsCreateReplicaItem"_s, this, &Replicas::mnuDBToolsCreateReplicaItem_Click);
    m_commands.Register(u"mnuDBToolsExportChangesItem"_s, this, &Replicas::mnuDBToolsExportChangesItem_Click);
    m_commands.Register(u"mnuExportAgainItem"_s, this, &Replicas::mnuExportAgainItem_Click);
    m_commands.Register(u"mnuDBToolsForgetReplicaItem"_s, this, &Replicas::DisplayReplicaList);
    m_libraries.UnpackReplica = std::bind_front(&Replicas::OpenTransferFile, this);
}

QString Replicas::BaseName() const
{
    return fnExtractPathOrFileName(m_session.CurrentDatabasePath, PathPart::BaseName);
}

void Replicas::UpdateMenuReplicationState()
{
    m_tree.ShowStanding();
}

// Children

void Replicas::mnuDBToolsCreateReplicaItem_Click()
{
    const QString file = GetFileName(true,
                                     u"Select destination folder and file name of the new replica transfer file"_s,
                                     u"KT Quillbase Library Replica|*.qbr"_s, BaseName() + u"Replica.qbr"_s);
    if (file.isEmpty() || !m_tree.SaveItem())
        return;
    const std::shared_ptr<void> waiting = m_shell.WaitCursor();
    const QString library = m_session.CurrentDatabasePath;
    m_libraries.CloseDatabase();
    bool isDone = false;
    Watched(u"Create Replica"_s, [&](Work& work) { isDone = CreateChildDB(library, file, work); });
    if (m_libraries.SetupDBConnection())
        m_tree.OpenItem();
    else
        m_libraries.ShowNoLibrary();
    if (isDone) {
        m_shell.SetStatusText(u"Replica successfully created"_s);
        Tell(u"Database replica seccessfully created at %1."_s.arg(QDir::toNativeSeparators(file)),
             u"Replica Created"_s, MsgBoxIcon::Information);
    } else {
        m_shell.SetStatusText(u"Replica creation unsuccessful"_s);
        Tell(u"Program couldn't create replica. The database might be opened by another user."_s,
             u"Operation Unseccessfull"_s, MsgBoxIcon::Exclamation);
    }
}

QString Replicas::OpenTransferFile(const QString& file)
{
    const QString place = AskForPlace(QFileInfo(file).absoluteFilePath());
    if (place.isEmpty())
        return {};
    return Unpack(file, fnExtractPathOrFileName(place, PathPart::Folder)
                            + fnExtractPathOrFileName(place, PathPart::BaseName) + u".qbd"_s);
}

/// The transfer file goes once its library is whole: it is that now.
QString Replicas::Unpack(const QString& file, const QString& target)
{
    QStringList known;
    for (const LibraryEntry& entry : m_session.DatabaseList)
        known << entry.Path;
    const auto mayOpenAgain = [](const QString& other) {
        return Tell(OpenAgainQuestion(other), u"Replica Opened Again"_s, MsgBoxIcon::Exclamation, MsgBoxButtons::YesNo,
                    MsgBoxResult::No)
               == MsgBoxResult::Yes;
    };
    QString library;
    UnlessCancelled(u"OpenTransferFile"_s, [&] {
        const bool isFree = !QFileInfo::exists(target);
        const RestoreOver over = isFree || MayReplaceDatabase() ? RestoreOver::Replace : RestoreOver::Number;
        Watched(u"Open Replica"_s,
                [&](Work& work) { library = OpenReplica(file, target, over, known, mayOpenAgain, work).Library; });
        QFile::remove(file);
        return true;
    });
    return library;
}

void Replicas::DisplayReplicaList()
{
    Guarded(ModuleName, u"DisplayReplicaList"_s, [this] {
        ShowReplicaList(*m_session.CurrentDatabase);
        m_libraries.UpdateGlobalSynchronizationVariables();
        UpdateMenuReplicationState();
    });
}

// Changes

std::optional<ExportedChanges> Replicas::Export(const QString& file, ExportAgain again)
{
    std::optional<ExportedChanges> changes;
    std::optional<RuntimeError> failure;
    Watched(u"Export Changes"_s, [&](Work& work) {
        try {
            changes = WriteChanges(*m_session.CurrentDatabase, file, again, work);
        } catch (const RuntimeError& error) {
            failure = error; // told when the work is no longer shown
        }
    });
    if (failure)
        throw *failure;
    return changes;
}

void Replicas::ExportChanges(ExportAgain again)
{
    const QString procedure = u"mnuDBToolsExportChangesItem_Click"_s;
    const QString file = GetFileName(true, u"Select destination folder and file name of the new backup file"_s,
                                     u"Quillbase Synchro Files|*.qbs"_s, BaseName() + u"SynchroFile.qbs"_s);
    if (file.isEmpty() || !m_tree.SaveItem())
        return;
    bool isCancelled = false;
    std::optional<ExportedChanges> changes;
    Guarded(ModuleName, procedure, [&] {
        try {
            changes = Export(file, again);
        } catch (const RuntimeError& error) {
            isCancelled = IsCancellation(error);
            if (!isCancelled)
                throw;
        }
    });
    if (isCancelled)
        return;
    if (!changes) {
        Tell(u"Synchronization file was not created."_s, u"Error"_s, MsgBoxIcon::Critical);
        return;
    }
    m_libraries.UpdateGlobalSynchronizationVariables();
    UpdateMenuReplicationState();
    Tell(
        u"Synchronization file was seccesfully created at %1.\r\nThis is the first step in three step process. Now "
        "please use the newly created synchronization file to synchronize changes made in the currently opened replica "
        "database with the mother database."_s.arg(QDir::toNativeSeparators(file)),
        u"Step 1 of 3 - Synchronization file created"_s, MsgBoxIcon::Information);
    if (const QString missing = changes->Counts.MissingText(); !missing.isEmpty())
        Tell(missing, u"Missing Contents"_s, MsgBoxIcon::Exclamation);
}

} // namespace qb
