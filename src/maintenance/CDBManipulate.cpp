#include "maintenance/CDBManipulate.h"

#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryRestore.h"
#include "maintenance/PhasedWork.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "support/ErrorRoutine.h"

#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"CDBManipulate"_s;

} // namespace

bool MayReplaceDatabase()
{
    return Prompts::Current().MsgBox(
               {.Text = u"A database with the same name already exist in the application folder. \r\nDo you want to "
                        "replace the current database with the restored one?\r\nIf you select 'No', then a number will "
                        "be added to the name of the database being copyed and operation will proceed."_s,
                .Caption = u"Replace Current Database?"_s,
                .Buttons = MsgBoxButtons::YesNo,
                .Icon = MsgBoxIcon::Exclamation,
                .Default = MsgBoxResult::No})
           == MsgBoxResult::Yes;
}

bool CDBManipulate::BackUp(const QString& sourceDB, const QString& backupFile)
{
    m_damage.clear();
    return Guarded(
        ModuleName, u"BackUp"_s,
        [&] { return RunUnlessCancelled([&] { m_damage = BackUpLibrary(sourceDB, backupFile, {}, m_work).Damage; }); },
        false);
}

bool CDBManipulate::Restore(QString& targetDB, const QString& sourceFile, bool force, bool noCopy)
{
    return Guarded(
        ModuleName, u"Restore"_s,
        [&] {
            bool isDone = false;
            return RunUnlessCancelled([&] { isDone = RestoreOrRefuse(targetDB, sourceFile, force, noCopy); }) && isDone;
        },
        false);
}

bool CDBManipulate::RestoreOrRefuse(QString& targetDB, const QString& sourceFile, bool force, bool noCopy)
{
    const bool isReplica = sourceFile.endsWith(u".qbr"_s, Qt::CaseInsensitive);
    if (!QFileInfo(QFileInfo(targetDB).absolutePath()).isWritable()) {
        Prompts::Current().MsgBox({.Text = u"Can't create the file in the required directory. The target directory "
                                           "is read only."_s,
                                   .Caption = u"File access error"_s,
                                   .Icon = MsgBoxIcon::Critical});
        return false;
    }
    const bool asks = !noCopy && (force || !sourceFile.isEmpty()) && QFileInfo::exists(targetDB);
    const RestoreOver over = !asks || MayReplaceDatabase() ? RestoreOver::Replace : RestoreOver::Number;
    if (sourceFile.isEmpty()) {
        targetDB = CompleteUnpacked(targetDB, m_work).Library;
        return true;
    }
    targetDB = RestoreLibrary(sourceFile, targetDB, over, m_work, [isReplica](Database& unpacked) {
                   if (isReplica)
                       RefuseWhatIsNoReplica(unpacked);
               }).Library;
    if (isReplica && QFileInfo(sourceFile) != QFileInfo(targetDB))
        QFile::remove(sourceFile); // it is the library now
    return true;
}

} // namespace qb
