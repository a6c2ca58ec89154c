#include "store/PageChanges.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RunBeside.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/SideFolders.h"
#include "store/StoredFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QUuid>
#include <algorithm>
#include <chrono>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u".changing-pages-"_s;
const QString ChangesName = u"changes"_s;   ///< of the file with a line for each change, its item and its kind
const QString DoneName = u"done"_s;         ///< of that with the items whose change is in its place
const QString NotedTable = u"PageChange"_s; ///< under which the library notes the last change of each item's page
const QString PageSuffix = u".htm"_s;
const QString NewName = u"new/"_s; ///< the folder of what is made, under its own names
const QString OldName = u"old/"_s; ///< that of what has left its place

constexpr const char* DoneWord = "done";
constexpr const char* KindNames[] = {"add", "replace", "delete"}; // in the order of PageChanges::Kind

[[noreturn]] void Fail(const QString& what)
{
    throw RuntimeError(ErrorNumber::PathAccess, what, u"PageChanges"_s);
}

bool IsThere(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// The mark of the last change that was committed; empty when none is known.
QString NotedMark(Database& library, qint64 item)
{
    const std::optional<NotedChecksums> noted = ReadChecksums(library, NotedTable, item);
    return noted && noted->IsWhole && !noted->Sums.isEmpty() ? noted->Sums.firstKey() : QString();
}

/// What lies in the place of a file that arrives is somebody else's, and stays under another name.
bool MoveInto(const QString& from, const QString& place)
{
    if (IsThere(place)) {
        const QFileInfo there(place);
        const QString kept = NumberedPath(there.absoluteDir().filePath(u"found "_s + there.fileName()));
        if (!RenameFile(place, kept))
            return false;
    }
    return RenameFile(from, place);
}

/// The files that were made for the folder of a page. No link is followed, on neither side.
bool AddFiles(const QString& made, const QString& place)
{
    if (!QFileInfo(made).isDir())
        return true;
    if (QFileInfo(place).isSymLink() || !QDir().mkpath(place))
        return false;
    QDirIterator files(made, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        const QString target = place + file.mid(made.size());
        if (!QDir().mkpath(QFileInfo(target).absolutePath()) || !MoveInto(file, target))
            return false;
    }
    return true;
}

/// The old folder leaves its place once, also when this is the second try: a new one may stand there then.
bool TakeOldFolder(const QString& place, const QString& made, const QString& old)
{
    if (IsThere(old))
        return true;
    if (IsThere(place))
        return RenameFile(place, old);
    return !IsThere(made) || QDir().mkdir(old);
}

/// What a change makes of the files; may be begun anew after any of its steps. False when one can't be done.
bool Place(const QString& root, const QString& folder, const PageChanges::Change& change)
{
    const QString number = QString::number(change.Item);
    const QString made = folder + NewName + number, old = folder + OldName + number, place = root + number;
    if (change.How == PageChanges::Kind::Delete && IsThere(place + PageSuffix)
        && !RenameFile(place + PageSuffix, old + PageSuffix))
        return false;
    if (change.How == PageChanges::Kind::Add && !AddFiles(made, place))
        return false;
    if (change.How != PageChanges::Kind::Add && !TakeOldFolder(place, made, old))
        return false;
    if (change.How == PageChanges::Kind::Replace && IsThere(made) && !RenameFile(made, place))
        return false;
    // The page comes last: where it is, all of it is.
    return change.How == PageChanges::Kind::Delete || !IsThere(made + PageSuffix)
           || RenameFile(made + PageSuffix, place + PageSuffix);
}

/// The item 0 where it is none.
PageChanges::Change ReadChange(const QByteArray& line)
{
    const QList<QByteArray> words = line.trimmed().split(' ');
    const auto* kind = std::find(std::begin(KindNames), std::end(KindNames), words.value(1));
    if (words.size() != 2 || kind == std::end(KindNames))
        return {};
    return {words[0].toLongLong(), PageChanges::Kind(kind - std::begin(KindNames))};
}

/// Folders and files, no links or what else a stranger may have put there.
bool IsOfThisProgram(const QString& folder)
{
    for (const QString& name : {NewName.chopped(1), OldName.chopped(1)}) {
        const QFileInfo info(folder + name);
        if (info.isSymLink() || (info.exists() && !info.isDir()))
            return false;
    }
    for (const QString& name : {ChangesName, DoneName}) {
        if (IsThere(folder + name) && !IsPlainFile(folder + name))
            return false;
    }
    return true;
}

/// None of a file that is missing. A list that can't be read is no empty one: nothing may be done by it. Raises
/// RuntimeError 75.
QList<QByteArray> LinesOf(const QString& path)
{
    constexpr qint64 Longest = 1 << 28; // millions of changes
    if (!IsThere(path))
        return {};
    QFile file(path);
    QByteArray text;
    if (const QString why = file.open(QIODevice::ReadOnly) ? ReadAll(file, text, Longest) : file.errorString();
        !why.isEmpty())
        Fail(u"'%1' can't be read: %2; its pages were left as they are."_s.arg(QDir::toNativeSeparators(path), why));
    return text.split('\n');
}

/// Why a line can't be put behind the others, in the system's words; empty when it is there. One of which a full disk
/// took but a part is no line, and does not become part of the next.
QString AddLine(const QString& path, qint64 item, const char* word)
{
    const QByteArray line = '\n' + QByteArray::number(item) + ' ' + word + '\n';
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        return file.errorString();
    return WriteAll(file, line.constData(), line.size());
}

QByteArray DoneLine(qint64 item)
{
    return QByteArray::number(item) + ' ' + DoneWord;
}

/// The changes of a folder that count, and are not in their places. Raises RuntimeError 75 when they can't be read.
std::vector<PageChanges::Change> PendingIn(Database& library, const QString& folder, const QString& mark)
{
    std::vector<PageChanges::Change> pending;
    if (!IsOfThisProgram(folder))
        return pending;
    const QList<QByteArray> done = LinesOf(folder + DoneName);
    const QSet<QByteArray> isDone(done.begin(), done.end());
    for (const QByteArray& line : LinesOf(folder + ChangesName)) {
        const PageChanges::Change change = ReadChange(line);
        if (change.Item > 0 && !isDone.contains(DoneLine(change.Item)) && NotedMark(library, change.Item) == mark)
            pending.push_back(change);
    }
    return pending;
}

/// Without the list nothing is begun anew, whatever is left; so that goes first.
bool RemoveDone(const QString& folder)
{
    const QString list = folder + ChangesName;
    return (!IsThere(list) || QFile::remove(list)) && DeleteFolder(folder);
}

/// Puts changes in their places; those for which that can't be done are returned.
QStringList PutAllInPlace(const QString& root, const QString& folder, const std::vector<PageChanges::Change>& changes)
{
    if (!changes.empty())
        QDir().mkpath(folder + OldName);
    QStringList waiting;
    for (const PageChanges::Change& change : changes) {
        if (!Place(root, folder, change))
            waiting << QString::number(change.Item);
        else
            AddLine(folder + DoneName, change.Item, DoneWord); // or it is tried once more
    }
    if (waiting.isEmpty())
        RemoveDone(folder); // or at the next opening: nothing in it is needed
    return waiting;
}

/// Of changes that nobody is at work on, whose folder is locked by the caller. False when one has to wait.
bool Finish(Library& library, const QString& folder, const QString& mark)
{
    try {
        return PutAllInPlace(library.HTMLFolder(), folder, PendingIn(library, folder, mark)).isEmpty();
    } catch (const RuntimeError& error) {
        if (error.Number() != ErrorNumber::PathAccess)
            throw;
        return false;
    }
}

QString FolderOfMark(const Library& library, const QString& mark)
{
    return library.HTMLFolder() + Prefix + mark + u'/';
}

} // namespace

PageChanges::PageChanges(Library& library) : m_library(library), m_root(library.HTMLFolder())
{
    if (!HasChecksumTable(library))
        throw RuntimeError(ErrorNumber::NotADatabase,
                           u"The library has a table of another program where changes of pages are noted; nothing was "
                           "changed."_s,
                           u"PageChanges"_s);
    ClaimFolder(m_root, library.Identity());
    do {
        m_mark = QUuid::createUuid().toString(QUuid::Id128);
        m_folder = FolderOfMark(library, m_mark);
        if (!QDir().mkdir(m_folder))
            Fail(u"The folder of web pages '%1' can't be written; nothing was changed."_s.arg(
                QDir::toNativeSeparators(m_root)));
        m_lock = FileLock(m_folder, FileLock::Target::Existing, FileLock::Forever);
    } while (!m_lock.IsHeld() && !QFileInfo::exists(m_folder)); // another process took it for a dead one
    if (!QDir().mkdir(m_folder + NewName)) {
        DeleteFolder(m_folder);
        Fail(u"The folder of web pages '%1' can't be written; nothing was changed."_s.arg(
            QDir::toNativeSeparators(m_root)));
    }
}

PageChanges::~PageChanges()
{
    if (!m_folder.isEmpty())
        DeleteFolder(m_folder);
}

QString PageChanges::Folder() const
{
    return m_folder + NewName;
}

QString PageChanges::PageFile(qint64 item)
{
    m_made.insert(item);
    return Folder() + QString::number(item) + PageSuffix;
}

QString PageChanges::PageFolder(qint64 item) const
{
    return Folder() + QString::number(item) + u'/';
}

void PageChanges::Bind(qint64 item, Kind kind, Flush flush, Work& work)
{
    SettlePage(m_library, item);
    if (kind == Kind::Add && QFileInfo(m_root + QString::number(item)).isSymLink())
        Fail(u"The folder '%1' of the page is a link, which may lead elsewhere; nothing was changed."_s.arg(
            QDir::toNativeSeparators(m_root + QString::number(item))));
    if (const QString why = AddLine(m_folder + ChangesName, item, KindNames[size_t(kind)]); !why.isEmpty())
        Fail(u"The page can't be written: %1; nothing was changed."_s.arg(why));
    m_bound.push_back({item, kind});
    if (flush == Flush::Now)
        RunBeside([this] { SyncFileSystem(m_folder); }, [&work] { work.Pulse(); });
    WriteChecksums(m_library, NotedTable, item, 0, {{m_mark, 0}});
}

void PageChanges::RenumberItems(const NewItemNumber& newNumber)
{
    for (const qint64 item : m_made) {
        if (const QString page = PageFile(item); QFileInfo::exists(page))
            qb::RenumberItems(page, newNumber);
    }
}

void PageChanges::BindAll(Kind kind, Work& work)
{
    for (const qint64 item : m_made)
        Bind(item, kind, item == *m_made.rbegin() ? Flush::Now : Flush::Later, work);
}

void PageChanges::PutInPlace()
{
    const QString folder = std::exchange(m_folder, {}); // where this fails it stays for the next opening
    const QStringList waiting = PutAllInPlace(m_root, folder, m_bound);
    if (waiting.isEmpty())
        return;
    const bool isOne = waiting.size() == 1;
    Fail(u"The %1 %2 stored, but could not be put in %3 yet: this is done when the library is opened next."_s.arg(
        (isOne ? u"page of item "_s : u"pages of the items "_s) + waiting.join(u", "_s), isOne ? u"is"_s : u"are"_s,
        isOne ? u"its place"_s : u"their places"_s));
}

void SettlePage(Library& library, qint64 item)
{
    constexpr std::chrono::seconds Patience(10);
    const QString mark = NotedMark(library, item);
    const QString folder = FolderOfMark(library, mark);
    if (mark.isEmpty() || !QFileInfo::exists(folder))
        return;
    const FileLock lock(folder, FileLock::Target::Existing, Patience);
    if (lock.Result() == FileLock::State::Missing || (lock.IsHeld() && Finish(library, folder, mark)))
        return;
    Fail(u"The page of item %1 is being changed by another program, or can't be put in its place; nothing was "
         "changed."_s.arg(item));
}

bool IsPagePending(Library& library, qint64 item)
{
    const QString mark = NotedMark(library, item);
    return !mark.isEmpty() && QFileInfo::exists(FolderOfMark(library, mark));
}

bool IsOfUnboundChanges(Database& library, const QString& entry)
{
    const QFileInfo folder(entry);
    if (!folder.isDir() || !folder.fileName().startsWith(Prefix))
        return false;
    return PendingIn(library, entry + u'/', folder.fileName().mid(Prefix.size())).empty();
}

void FinishPageChanges(Library& library)
{
    const QDir root(library.HTMLFolder());
    for (const QString& name : root.entryList({Prefix + u'*'}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        const QString folder = root.filePath(name) + u'/';
        const FileLock lock(folder, FileLock::Target::Existing);
        if (lock.IsHeld())
            Finish(library, folder, name.mid(Prefix.size()));
    }
}

void ForgetPageChanges(Library& library, qint64 item)
{
    ForgetChecksums(library, NotedTable, item);
}

} // namespace qb
