#include "removed/MergeUndo.h"

#include "exchange/PageNames.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"
#include "store/LibrarySwap.h"
#include "store/LibraryUse.h"
#include "store/PendingReplica.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QUuid>
#include <limits>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 MostInMemory = qint64(32) << 20; // bytes that a transaction writes

const QString Procedure = u"MergeUndo"_s;
const QString Form = u"quillbase-undo-1"_s;
const QString FormerLibrary = u"library.qbd"_s;
const QString FormerFile = u"former.qbs"_s;
const QString StateName = u"state.json"_s;

QString UndoFolderOf(const QString& library)
{
    return fnExtractPathOrFileName(library, PathPart::Folder) + fnExtractPathOrFileName(library, PathPart::BaseName)
           + u"_Undo/"_s;
}

QString LastOf(const QString& library)
{
    return UndoFolderOf(library) + u"last/"_s;
}

[[noreturn]] void Fail(const QString& why, long number = ErrorNumber::PathAccess)
{
    throw RuntimeError(number, why + u" Nothing was changed."_s, Procedure);
}

/// The same contents under a further name, as a copy where there can be but one.
void NameToo(const QString& source, const QString& target)
{
    QDir().mkpath(QFileInfo(target).absolutePath());
    if (::link(QFile::encodeName(source).constData(), QFile::encodeName(target).constData()) != 0)
        CopyFileContents(source, target);
}

/// All plain files below a folder, by their paths in it.
QStringList FilesBelow(const QString& folder)
{
    QStringList files;
    QDirIterator all(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString path = all.next();
        if (IsPlainFile(path))
            files << path.mid(folder.size());
    }
    return files;
}

/// What of the rows tells whether anything was changed. The moment of the last opening, and what the program has for
/// itself, are no changes.
QString FingerprintOf(Database& library)
{
    struct Sums {
        QLatin1StringView Table;
        QLatin1StringView Columns; ///< parted by commas
    };
    constexpr Sums Tables[] = {
        {"Items"_L1, "ID,ParentID,LastChanged,HTMLLastUpdated,HTMLPage,ItemStatus,ItemRating"_L1},
        {"Files"_L1, "ID,CodeID,DateAdded,LastUpdated,FileSize"_L1},
        {"ItemLinks"_L1, "ItemID,LinkItemID,DateAdded,DateUpdated"_L1},
        {"BookmarkGroups"_L1, "ID,length(\"Group\")"_L1},
        {"Bookmarks"_L1, "ID,CodeID,BookmarkGroup,length(Description)"_L1},
        {"Keywords"_L1, "length(Keyword)"_L1},
        {"ChildCopies"_L1, "LastSynchronized"_L1},
        {"DeletedItems"_L1, "ItemID,DateDeleted"_L1},
        {"DeletedFiles"_L1, "ItemID,DateDeleted"_L1},
        {"DeletedItemLinks"_L1, "ItemID,LinkItemID,DateDeleted"_L1},
        {"ReplicaLog"_L1, "RecordID,Moment,RowDate"_L1},
    };
    QStringList all;
    for (const Sums& sums : Tables) {
        if (!library.TableExists(sums.Table))
            continue;
        QStringList columns{u"count(*)"_s};
        for (const QString& column : QString(sums.Columns).split(u','))
            columns << u"total(%1)"_s.arg(column);
        Statement row = library.Query(u"SELECT %1 FROM %2"_s.arg(columns.join(u", "_s), sums.Table));
        row.Step();
        for (int i = 0; i < row.ColumnCount(); ++i)
            all << QString::number(row.Column(i).ToDouble(), 'f', 0);
    }
    return all.join(u' ');
}

/// What is known of the last merge.
struct State {
    QString Library; ///< identity
    UndoableMerge Merge;
    QString Fingerprint;
    QSet<qint64> Pages;
};

std::optional<State> ReadState(const QString& library)
{
    QFile file(LastOf(library) + StateName);
    QByteArray bytes;
    constexpr qint64 Most = 64 << 20;
    if (!IsPlainFile(file.fileName()) || !file.open(QIODevice::ReadOnly) || !ReadAll(file, bytes, Most).isEmpty())
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(bytes).object();
    if (object[u"form"_s].toString() != Form)
        return std::nullopt;
    State state{.Library = object[u"library"_s].toString(),
                .Merge = {Date::FromSeconds(object[u"moment"_s].toInteger()), object[u"file"_s].toString()},
                .Fingerprint = object[u"fingerprint"_s].toString(),
                .Pages = {}};
    for (const QJsonValue& page : object[u"pages"_s].toArray())
        state.Pages.insert(page.toInteger());
    return state;
}

QString WhyNot(const QString& path, Database& library)
{
    const std::optional<State> state = ReadState(path);
    if (!state || !IsPlainFile(LastOf(path) + FormerLibrary))
        return u"Nothing was put aside before the last synchronization of this library."_s;
    if (state->Library != LibraryIdentity(library))
        return u"What was put aside is of another library of this name."_s;
    if (state->Fingerprint != FingerprintOf(library))
        return u"The library was changed since the last synchronization, which can't be undone any more."_s;
    return {};
}

/// Folders with what a library had, for its former database.
class FormerFolders {
public:
    FormerFolders(const QString& library, const QString& made, const QSet<qint64>& pages)
        : m_last(LastOf(library)), m_library(library), m_made(made), m_pages(pages),
          m_database(DBEngine::OpenDatabase(made, DatabaseAccess::ReadOnly))
    {
    }

    void Make(Work& work)
    {
        work.Say(u"Stored files..."_s, 30);
        MakeFiles();
        work.Say(u"Pages..."_s, 60);
        MakePages();
    }

private:
    void MakeFiles()
    {
        const QString kept = m_last + u"files/"_s;
        const QString now = FilesFolderOf(m_library);
        const QString made = FilesFolderOf(m_made);
        if (!QFileInfo(now).isDir() && !QFileInfo(kept).isDir())
            return;
        QDir().mkpath(made);
        Statement rows = m_database->Query(u"SELECT ID, Title FROM Files"_s);
        while (rows.Step()) {
            const QString name = StoredFilePath(QString(), rows.Long(0), rows.Text(1));
            const QString source = IsPlainFile(kept + name) ? kept + name : now + name;
            if (!name.isEmpty() && IsPlainFile(source))
                NameToo(source, made + name);
        }
        // What is no row's is not the merge's: it stays, but for the files that came with it.
        const auto isOfRow = [](const QString& name) { return name.contains(u" - "_s) && name.front().isDigit(); };
        for (const QString& name : FilesBelow(now)) {
            if (!isOfRow(name) && !QFile::exists(made + name))
                NameToo(now + name, made + name);
        }
    }

    void MakePages()
    {
        const QString kept = m_last + u"pages/"_s;
        const QString now = HTMLFolderOf(m_library);
        const QString made = HTMLFolderOf(m_made);
        if (!QFileInfo(now).isDir() && !QFileInfo(kept).isDir())
            return;
        QDir().mkpath(made);
        for (const QString& name : FilesBelow(now)) {
            const qint64 item = ItemOf(name);
            if (item == 0 || (!m_pages.contains(item) && IsItem(item)))
                NameToo(now + name, made + name);
        }
        for (const QString& name : FilesBelow(kept))
            NameToo(kept + name, made + name);
    }

    /// Whose page a file belongs to; 0: nobody's.
    static qint64 ItemOf(const QString& name)
    {
        const qsizetype slash = name.indexOf(u'/');
        return (slash < 0 && name.endsWith(u".htm"_s) ? name.chopped(4) : name.left(qMax(slash, qsizetype(0))))
            .toLongLong();
    }

    bool IsItem(qint64 id) { return !m_database->QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {id}).IsNull(); }

    QString m_last;
    QString m_library;
    QString m_made;
    const QSet<qint64>& m_pages;
    std::unique_ptr<Database> m_database;
};

/// The former synchronization file, which takes the place of the present one once the library has that of the present
/// library: what notes it is in the library that comes back, and the next opening writes the file if this one can't.
class FormerSynchronizationFile {
public:
    FormerSynchronizationFile(const QString& former, const QString& place, const QString& library)
        : m_former(former), m_place(place)
    {
        m_comesBack = !place.isEmpty() && IsPlainFile(former) && QFileInfo(QFileInfo(place).absolutePath()).isDir();
        if (!m_comesBack)
            return;
        const QString trial = InterimName(place); // whether there is a way to write it
        try {
            CopyFileContents(former, trial);
        } catch (const RuntimeError&) {
            QFile::remove(trial);
            throw;
        }
        QFile::remove(trial);
        const auto made = DBEngine::OpenDatabase(library);
        Transaction transaction(*made);
        NotePendingReplica(*made, {.File = place, .Kept = former});
        transaction.Commit();
    }
    /// The library is in its place. Raises RuntimeError 75 when the file has to wait for the next opening.
    void PutInPlace(const QString& library) const
    {
        const auto open = Library::Open(library); // which does it
        if (m_comesBack && open->TableExists(u"own_PendingReplica"_s))
            Fail(u"The synchronization was undone, but '%1' can't be replaced. The next opening of the library tries "
                 "it again."_s.arg(QDir::toNativeSeparators(m_place)));
    }

private:
    QString m_former;
    QString m_place;
    bool m_comesBack = false;
};

void RemoveDead(const QDir& folder)
{
    for (const QString& name : folder.entryList({u".new-*"_s}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        const FileLock lock(folder.filePath(name), FileLock::Target::Existing);
        if (lock.IsHeld())
            DeleteFolder(folder.filePath(name));
    }
}

} // namespace

/// A copy that shares its blocks where the file system can do that. By a process of its own: to open the file of a
/// database in this one, and close it, would take the engine's locks away.
class CopyAside {
public:
    CopyAside(const QString& source, const QString& target) : m_source(source)
    {
        m_process.start(u"cp"_s, {u"--reflink=auto"_s, u"--"_s, source, target});
    }
    ~CopyAside()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    CopyAside(const CopyAside&) = delete;
    CopyAside& operator=(const CopyAside&) = delete;

    void Wait()
    {
        constexpr int Forever = -1;
        const bool isDone = m_process.waitForFinished(Forever) || m_process.state() == QProcess::NotRunning;
        if (!isDone || m_process.exitStatus() != QProcess::NormalExit || m_process.exitCode() != 0
            || m_process.error() == QProcess::FailedToStart)
            Fail(u"'%1' can't be copied for the undo of the synchronization: %2"_s.arg(
                QDir::toNativeSeparators(m_source),
                QString::fromLocal8Bit(m_process.readAllStandardError()).trimmed()));
    }

private:
    QString m_source;
    QProcess m_process;
};

MergeUndo::MergeUndo(Library& library) : m_library(library) {}

MergeUndo::~MergeUndo()
{
    m_copy.reset();
    LetWritesGo();
    if (!m_folder.isEmpty())
        DeleteFolder(m_folder);
}

bool MergeUndo::IsWanted()
{
    return BooleanFromText(GetSetting(SettingsApplication, u"Settings"_s, u"UndoSynchronization"_s, BooleanText(true)));
}

void MergeUndo::PutAside(const QString& file)
{
    const QString root = UndoFolderOf(m_library.Name());
    ClaimFolder(root, m_library.Identity());
    RemoveDead(QDir(root));
    m_folder = root + u".new-"_s + QUuid::createUuid().toString(QUuid::Id128) + u'/';
    if (!QDir().mkdir(m_folder))
        Fail(u"'%1' can't be written."_s.arg(QDir::toNativeSeparators(root)));
    m_lock = FileLock(m_folder, FileLock::Target::Existing);
    m_file = file.isEmpty() ? QString() : QFileInfo(file).absoluteFilePath();
    try {
        if (IsPlainFile(m_file))
            CopyAside(m_file, m_folder + FormerFile).Wait();
        m_copy = std::make_unique<CopyAside>(m_library.Name(), m_folder + FormerLibrary);
    } catch (const RuntimeError&) {
        m_copy.reset();
        DeleteFolder(m_folder);
        m_folder.clear();
        throw;
    }
}

void MergeUndo::HoldWrites(qint64 bytes)
{
    if (bytes > MostInMemory)
        WaitForCopy();
    if (!m_copy)
        return;
    SetSpillSize(std::numeric_limits<int>::max());
    m_isHolding = true;
}

/// How many pages the engine holds before it writes some ahead of the commit, if its cache is not larger. "OFF" would
/// count from the next transaction on only.
void MergeUndo::SetSpillSize(int pages)
{
    m_library.QueryValue(u"PRAGMA main.cache_spill = %1"_s.arg(pages));
}

void MergeUndo::LetWritesGo()
{
    if (!std::exchange(m_isHolding, false))
        return;
    try {
        SetSpillSize(1);
    } catch (const RuntimeError&) {
        // What is written in memory is written all the same, by the commit.
    }
}

void MergeUndo::WaitForCopy()
{
    if (!m_copy)
        return;
    m_copy->Wait();
    m_copy.reset();
    KeepNoMoreRightsThan(m_library.Name(), m_folder + FormerLibrary);
    LetWritesGo();
}

void MergeUndo::KeepFile(const QString& path)
{
    if (!m_folder.isEmpty() && IsPlainFile(path) && !QFile::exists(m_folder + u"files/"_s + QFileInfo(path).fileName()))
        NameToo(path, m_folder + u"files/"_s + QFileInfo(path).fileName());
}

void MergeUndo::KeepPage(qint64 item)
{
    if (m_folder.isEmpty() || m_pages.contains(item))
        return;
    m_pages.insert(item);
    for (const QString& path : PageFilesOf(m_library, item))
        NameToo(m_library.HTMLFolder() + path, m_folder + u"pages/"_s + path);
}

void MergeUndo::Complete()
{
    if (m_folder.isEmpty())
        return;
    try {
        QJsonArray pages;
        for (const qint64 page : std::as_const(m_pages))
            pages.append(page);
        const QJsonObject state{
            {u"form"_s, Form},   {u"library"_s, m_library.Identity()},         {u"moment"_s, Clock::Now().Seconds()},
            {u"file"_s, m_file}, {u"fingerprint"_s, FingerprintOf(m_library)}, {u"pages"_s, pages}};
        const QString why = ReplaceContents(m_folder + StateName, QJsonDocument(state).toJson());
        const QString last = LastOf(m_library.Name());
        if (!why.isEmpty() || !DeleteFolder(last) || !RenameFile(m_folder.chopped(1), last.chopped(1)))
            return;
        m_folder.clear();
        SyncFolder(UndoFolderOf(m_library.Name()));
    } catch (const RuntimeError&) {
        // The synchronization is done; it only can't be undone.
    }
}

std::optional<UndoableMerge> LastMergeOf(const QString& library)
{
    const std::optional<State> state = ReadState(library);
    return state ? std::optional(state->Merge) : std::nullopt;
}

QString WhyMergeNotUndone(const QString& library)
{
    return WhyNot(library, *DBEngine::OpenDatabase(library, DatabaseAccess::ReadOnly));
}

void UndoMerge(const QString& library, Work& work)
{
    const QString path = QFileInfo(library).absoluteFilePath();
    Library::Open(path); // what a dead process left comes to its end first
    std::optional<SoleUse> sole(std::in_place, path, Procedure);
    if (const QString why = WhyMergeNotUndone(path); !why.isEmpty())
        Fail(why, ErrorNumber::FileNotFound);
    const State state = *ReadState(path);
    work.Say(u"Undoing the synchronization..."_s, 1);
    LibrarySwap swap(path);
    CopyFileContents(LastOf(path) + FormerLibrary, swap.NewLibrary());
    KeepNoMoreRightsThan(path, swap.NewLibrary());
    FormerFolders(path, swap.NewLibrary(), state.Pages).Make(work);
    const FormerSynchronizationFile file(LastOf(path) + FormerFile, state.Merge.File, swap.NewLibrary());
    swap.PutInPlace(LibrarySwap::Parts::WithFolders);
    sole.reset();
    file.PutInPlace(path);
    DeleteFolder(LastOf(path));
    work.Say({}, 100);
}

} // namespace qb
