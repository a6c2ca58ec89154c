#include "maintenance/LibraryRestore.h"

#include "maintenance/CDBManipulate.h"
#include "maintenance/LibraryCheck.h"
#include "maintenance/PhasedWork.h"
#include "maintenance/StatementPulse.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/Library.h"
#include "store/LibrarySwap.h"
#include "store/LibraryUse.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <utility>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"Restore"_s;

// Ends of the phases, in parts of a thousand of the whole.
constexpr qint64 Unpacked = 450;
constexpr qint64 Exported = 750;
constexpr qint64 Compacted = 900;

/// Extension with its dot, as names of libraries are taken apart.
QString ExtensionOf(const QString& path)
{
    return QFileInfo(path).fileName().mid(fnExtractPathOrFileName(path, PathPart::BaseName).size());
}

/// Writes what is in an unpacked backup out into the folders of the new library, and makes its database.
RestoreResult Complete(const QString& unpacked, LibrarySwap& swap, PhasedWork& work,
                       const std::function<void(Database&)>& inspect = {})
{
    RestoreResult result;
    const QString library = swap.NewLibrary();
    for (const QString& folder : {FilesFolderOf(library), HTMLFolderOf(library)}) {
        if (!QDir().mkpath(folder))
            throw RuntimeError(ErrorNumber::PathAccess, u"Can't create the file in the required directory."_s,
                               Procedure);
    }
    QMap<QString, qint64> rows;
    {
        const std::unique_ptr<Database> database = DBEngine::OpenDatabase(unpacked);
        RefuseWhatIsNoBackup(*database);
        if (inspect)
            inspect(*database);
        CDBManipulate contents(work);
        contents.Use(*database);
        contents.ExpectBytes(BytesOfTable(*database, u"Files"_s) + BytesOfTable(*database, u"HTMLFiles"_s));
        contents.ExportAllHTMLFiles(HTMLFolderOf(library));
        contents.ExportAllItemFiles(FilesFolderOf(library));
        // It does not outlive the work, whose failure takes it away.
        database->Execute(u"PRAGMA synchronous = OFF"_s);
        database->QueryValue(u"PRAGMA journal_mode = OFF"_s);
        database->QueryValue(u"PRAGMA secure_delete = OFF"_s);
        result.Files = database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong();
        result.Pages = database->QueryValue(u"SELECT count(*) FROM HTMLFiles"_s).ToLong();
        const QString identity = LibraryIdentity(*database);
        for (const QString& folder : {FilesFolderOf(library), HTMLFolderOf(library)})
            ClaimFolder(folder, identity);
        RunPulsed(*database, work, [&database] {
            Transaction transaction(*database);
            database->DeleteTableDef(u"HTMLFiles"_s);
            database->DeleteField(u"Files"_s, u"File"_s);
            transaction.Commit();
        });
        for (const QString& table : database->TableNames())
            rows.insert(table, database->QueryValue(u"SELECT count(*) FROM "_s + Quoted(table)).ToLong());
    }
    work.Begin(Compacted);
    DBEngine::CompactDatabase(unpacked, library, work,
                              DBEngine::Copy::Passing); // it is flushed when it is put in place
    work.Begin(PhasedWork::Whole);
    const std::unique_ptr<Database> made = DBEngine::OpenDatabase(library, DatabaseAccess::ReadOnly);
    for (auto table = rows.begin(); table != rows.end(); ++table) {
        if (made->QueryValue(u"SELECT count(*) FROM "_s + Quoted(table.key())).ToLong() != table.value())
            throw RuntimeError(ErrorNumber::Corrupt, u"The restored library is not what is in the backup."_s,
                               Procedure);
    }
    RefuseDamaged(*made, work);
    result.Items = rows.value(u"Items"_s);
    return result;
}

/// Folders that stand there without their library may be somebody's: they get names of their own, and the former ones
/// back when the library does not come.
class FoldersAside {
public:
    FoldersAside() = default;
    void Set(const QString& library)
    {
        for (const QString& folder : {FilesFolderOf(library).chopped(1), HTMLFolderOf(library).chopped(1)}) {
            if (!QFileInfo::exists(folder) || QDir().rmdir(folder))
                continue;
            const QString aside = NumberedPath(folder);
            if (!RenameFile(folder, aside))
                throw RuntimeError(
                    ErrorNumber::PathAccess,
                    u"The folder '%1' is in the way. Nothing was changed."_s.arg(QDir::toNativeSeparators(folder)),
                    Procedure);
            m_folders.emplace_back(folder, aside);
        }
    }
    ~FoldersAside()
    {
        for (const auto& [folder, aside] : m_folders)
            RenameFile(aside, folder);
    }
    FoldersAside(const FoldersAside&) = delete;
    FoldersAside& operator=(const FoldersAside&) = delete;

    void Keep() { m_folders.clear(); }

private:
    std::vector<std::pair<QString, QString>> m_folders; ///< and their names aside
};

/// Another library of this name but for the extension would lose its folders.
void RefuseFoldersOfOthers(const QString& library)
{
    const QFileInfo own(library);
    for (const QFileInfo& other : own.absoluteDir().entryInfoList(QDir::Files)) {
        if (other.fileName() == own.fileName()
            || FilesFolderOf(other.absoluteFilePath()) != FilesFolderOf(own.absoluteFilePath()))
            continue;
        QFile file(other.filePath());
        if (file.open(QIODevice::ReadOnly) && file.read(15) == "SQLite format 3")
            throw RuntimeError(
                ErrorNumber::DatabaseExists,
                u"'%1' can't be restored: the library '%2' has the same name but for the extension, and would share "
                "its folders. Choose another name; nothing was changed."_s.arg(QDir::toNativeSeparators(library),
                                                                               other.fileName()),
                Procedure);
    }
}

void RefuseUnwritableFolder(const QString& target)
{
    const QFileInfo folder(QFileInfo(target).absolutePath());
    if (!folder.isDir() || !folder.isWritable())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"Can't create the file in the required directory. The target directory is read only."_s,
                           Procedure);
}

} // namespace

QString NumberedLibrary(const QString& library)
{
    const QString base = fnExtractPathOrFileName(library, PathPart::Folder)
                         + fnExtractPathOrFileName(library, PathPart::BaseName);
    QString numbered = library;
    for (int number = 1; QFileInfo::exists(numbered); ++number)
        numbered = base + QString::number(number) + ExtensionOf(library);
    return numbered;
}

RestoreResult RestoreLibrary(const QString& backupFile, const QString& target, RestoreOver over, Work& work,
                             const std::function<void(Database&)>& inspect)
{
    const QString wanted = QFileInfo(target).absoluteFilePath();
    RefuseUnwritableFolder(wanted);
    FinishSwap(wanted);
    const QString library = over == RestoreOver::Number ? NumberedLibrary(wanted) : wanted;
    FinishSwap(library);
    const bool replaces = QFileInfo::exists(library);
    if (replaces && over == RestoreOver::Refuse)
        throw RuntimeError(ErrorNumber::DatabaseExists,
                           u"'%1' exists already. Nothing was changed."_s.arg(QDir::toNativeSeparators(library)),
                           Procedure);
    RefuseFoldersOfOthers(library);
    const SoleUse sole(library, Procedure);
    PhasedWork phases(work);
    LibrarySwap swap(library);
    phases.Begin(Unpacked);
    phases.Say(u"Unpacking Database..."_s, 25);
    const QString unpacked = UnpackBackup(backupFile, QDir::cleanPath(swap.Scratch()), phases);
    phases.Say(u"Unpacking Database..."_s, 50);
    phases.Begin(Exported);
    phases.Say(u"Copying Database..."_s, 75);
    RestoreResult result = Complete(unpacked, swap, phases, inspect);
    FoldersAside aside;
    if (replaces)
        KeepNoMoreRightsThan(library, swap.NewLibrary());
    else
        aside.Set(library);
    swap.PutInPlace(LibrarySwap::Parts::WithFolders, phases);
    aside.Keep();
    phases.Say({}, 101);
    result.Library = library;
    return result;
}

RestoreResult CompleteUnpacked(const QString& target, Work& work)
{
    const QString library = QFileInfo(target).absoluteFilePath();
    const SoleUse sole(library, Procedure);
    PhasedWork phases(work);
    LibrarySwap swap(library);
    const QString copy = swap.Scratch() + QFileInfo(library).fileName();
    phases.Begin(Unpacked);
    DBEngine::CompactDatabase(library, copy, phases, DBEngine::Copy::Passing);
    phases.Begin(Exported);
    RestoreResult result = Complete(copy, swap, phases);
    FoldersAside aside;
    aside.Set(library);
    swap.PutInPlace(LibrarySwap::Parts::WithFolders, phases);
    aside.Keep();
    phases.Say({}, 101);
    result.Library = library;
    return result;
}

} // namespace qb
