#include "replication/ReplicaOpening.h"

#include "maintenance/BackupFile.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/RuntimeError.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

bool HasIdentity(const QString& path, const QString& identity)
{
    try {
        return LibraryIdentity(*DBEngine::OpenDatabase(path, DatabaseAccess::ReadOnly)) == identity;
    } catch (const RuntimeError&) {
        return false; // it is gone, or no library
    }
}

} // namespace

QStringList LibrariesOf(const QString& identity, const QStringList& known, const QStringList& besides)
{
    QStringList candidates = known;
    for (const QString& file : besides) {
        for (const QFileInfo& library : QFileInfo(file).absoluteDir().entryInfoList({u"*.qbd"_s}, QDir::Files))
            candidates << library.absoluteFilePath();
    }
    QStringList found;
    for (const QString& path : std::as_const(candidates)) {
        const QString canonical = QFileInfo(path).canonicalFilePath();
        if (!canonical.isEmpty() && !found.contains(canonical) && HasIdentity(canonical, identity))
            found << canonical;
    }
    return found;
}

QString OpenAgainQuestion(const QString& other)
{
    return u"This replica is open already, as '%1'.\nBoth would pass for the same child, and their mother takes "
           "changes from one of them only. Do you want to open it once more all the same?"_s.arg(
               QDir::toNativeSeparators(other));
}

RestoreResult OpenReplica(const QString& transferFile, const QString& target, RestoreOver over,
                          const QStringList& known, const std::function<bool(const QString& other)>& mayOpenAgain,
                          Work& work)
{
    return RestoreLibrary(transferFile, target, over, work, [&](Database& unpacked) {
        RefuseWhatIsNoReplica(unpacked);
        QStringList others = LibrariesOf(LibraryIdentity(unpacked), known, {transferFile, target});
        if (over == RestoreOver::Replace) // that one goes
            others.removeAll(QFileInfo(target).canonicalFilePath());
        if (!others.isEmpty() && !mayOpenAgain(others.first()))
            throw RuntimeError(
                ErrorNumber::DatabaseExists,
                u"This replica is open already, as '%1'. It was not opened again; nothing was changed."_s.arg(
                    QDir::toNativeSeparators(others.first())),
                u"OpenReplica"_s);
    });
}

} // namespace qb
