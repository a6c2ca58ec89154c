#include "session/Synchronizing.h"

#include "config/CSettings.h"
#include "maintenance/PhasedWork.h"
#include "platform/system/Prompts.h"
#include "replication/MergedFiles.h"
#include "replication/ReplicaList.h"
#include "session/FileDialogs.h"
#include "session/ItemTree.h"
#include "session/LibraryList.h"
#include "session/Replicas.h"
#include "support/ErrorRoutine.h"

#include <QDir>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"MainForm"_s;
const QString Procedure = u"mnuDBToolsSynchronizeItme_Click"_s;

void Tell(const QString& text, const QString& caption, MsgBoxIcon icon)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = icon});
}

} // namespace

Synchronizing::Synchronizing(SessionState& session, ShellView& shell, Commands& commands, LibraryList& libraries,
                             ItemTree& tree, Replicas& replicas)
    : m_session(session), m_shell(shell), m_commands(commands), m_libraries(libraries), m_tree(tree),
      m_replicas(replicas)
{
    m_commands.Register(u"mnuDBToolsSynchronizeItem"_s, this, &Synchronizing::mnuDBToolsSynchronizeItem_Click);
    m_commands.Register(u"mnuSynchronizationReportsItem"_s, this, &Synchronizing::mnuSynchronizationReportsItem_Click);
    m_commands.Register(u"mnuHandOutAgainItem"_s, this, &Synchronizing::mnuHandOutAgainItem_Click);
}

void Synchronizing::mnuDBToolsSynchronizeItem_Click()
{
    if (!m_tree.SaveItem() || !ResolvePendingConflicts())
        return;
    const QString file = GetFileName(false, u"Select a synchronization file"_s, u"Quillbase Synchro File|*.qbs"_s);
    if (file.isEmpty() || !IsWanted(file))
        return;
    SyncResult result;
    const bool isTold = !Guarded(
        ModuleName, Procedure,
        [&] {
            try {
                result = TakeIn(file, false);
            } catch (const RuntimeError& error) {
                if (!IsCancellation(error))
                    throw;
                return false;
            }
            return true;
        },
        false);
    const bool hasConflicts = result.Done && ShowMerged();
    if (result.Result == 0 && !isTold)
        Tell(u"It is not possible to synchronize the current database with the file selected."_s,
             u"Synchronization not possible"_s, MsgBoxIcon::Critical);
    if (result.Done)
        TellStep(result, file, hasConflicts);
}

/// What the file would do is shown before, unless the user has switched that off. A file that can't be taken in is told
/// by the synchronization itself.
bool Synchronizing::IsWanted(const QString& file)
{
    if (!m_session.moSettings->PreviewSynchronization())
        return true;
    SyncResult preview;
    try {
        preview = TakeIn(file, true);
    } catch (const RuntimeError& error) {
        return !IsCancellation(error);
    }
    if (!preview.Done)
        return preview.Result == 0;
    bool showAgain = true;
    const bool isWanted = ShowPreview(preview.Report, showAgain);
    if (!showAgain) {
        m_session.moSettings->SetPreviewSynchronization(false);
        m_session.moSettings->ApplyOrTakeBack();
    }
    return isWanted;
}

SyncResult Synchronizing::TakeIn(const QString& file, bool isPreview)
{
    SyncResult result;
    std::optional<RuntimeError> failure;
    Watched(isPreview ? u"Look at Changes"_s : u"Synchronize"_s, [&](Work& work) {
        try {
            result = Synchronize(*m_session.CurrentDatabase, file, {.Preview = isPreview}, work);
        } catch (const RuntimeError& error) {
            failure = error; // told when the work is no longer shown
        }
    });
    if (failure)
        throw *failure;
    return result;
}

/// Whatever was shown of the library may be another now.
bool Synchronizing::ShowMerged()
{
    const QString shown = m_session.CurrentItemKey;
    m_libraries.CloseDatabase();
    if (m_libraries.SetupDBConnection()) {
        m_tree.Reload();
        const bool isThere = !m_session.CurrentDatabase
                                  ->QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {shown.mid(1).toLongLong()})
                                  .IsNull();
        if (isThere)
            m_tree.GoToNode(shown);
    } else {
        m_libraries.ShowNoLibrary();
    }
    m_libraries.UpdateGlobalSynchronizationVariables();
    m_replicas.UpdateMenuReplicationState();
    return m_tree.CheckIfConflictsStillOccur();
}

void Synchronizing::TellStep(const SyncResult& result, const QString& file, bool hasConflicts)
{
    const QString name = QDir::toNativeSeparators(file);
    m_shell.SetStatusText(result.Report.Summary());
    if (result.Result == 1) {
        Tell(u"Current child database have been seccessfully synchronized with %1.\r\nAll restriction on the child "
             "database have been removed until you generate a new synchronization file."_s.arg(name),
             u"Step 3 of 3 - Synchronization Complete"_s, MsgBoxIcon::Information);
        return;
    }
    Tell(u"Current database have been seccessfully synchronized with %1.\r\n\r\nTo be able to work with the child "
         "database, which this synchronization file was created from, you first have to synchronize back the above "
         "mentioned file with the originating child database!!!"_s.arg(name),
         u"Step 2 of 3 complete - Mother database successfully synchronized"_s, MsgBoxIcon::Information);
    if (hasConflicts)
        Tell(
            u"There are some conflicting items after the synchronization.\r\nPlease be aware, that you have to resolve "
            "all conflicts before you will be able to synchronize the mother database again with this or any other "
            "replica."_s,
            u"Conflicts have occured"_s, MsgBoxIcon::Exclamation);
}

void Synchronizing::mnuSynchronizationReportsItem_Click()
{
    Guarded(ModuleName, u"mnuSynchronizationReportsItem_Click"_s,
            [this] { ShowReports(ReadReports(*m_session.CurrentDatabase)); });
}

void Synchronizing::mnuHandOutAgainItem_Click()
{
    Guarded(ModuleName, u"mnuHandOutAgainItem_Click"_s, [this] {
        const std::vector<ChildLine> children = ChildrenOf(*m_session.CurrentDatabase);
        QStringList names;
        for (const ChildLine& child : children)
            names << (child.Description.isEmpty() ? child.Identity : child.Description);
        const std::optional<size_t> chosen = ChooseChild(names);
        if (!chosen)
            return;
        const QString file = GetFileName(true, u"Select destination folder and file name of the synchronization file"_s,
                                         u"Quillbase Synchro Files|*.qbs"_s, names[qsizetype(*chosen)] + u".qbs"_s);
        if (!file.isEmpty())
            HandOutAgain(*m_session.CurrentDatabase, children[*chosen].Identity, file);
    });
}

} // namespace qb
