#include "store/PageChanges.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RunBeside.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <algorithm>
#include <chrono>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u".changing-pages-"_s;
const QString ItemName = u"item"_s;         ///< of the file that tells the item and the kind
const QString NotedTable = u"PageChange"_s; ///< under which the library notes the last change of each item's page
const QString PageSuffix = u".htm"_s;

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
        const QString kept = NumberedName(u"found "_s + there.fileName(), [&there](const QString& name) {
            return IsThere(there.absoluteDir().filePath(name));
        });
        if (!RenameFile(place, there.absoluteDir().filePath(kept)))
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

/// The old folder leaves its place once, also when this is the second try.
bool TakeOldFolder(const QString& place, const QString& old)
{
    if (IsThere(old))
        return true;
    return IsThere(place) ? RenameFile(place, old) : QDir().mkdir(old);
}

/// What a change makes of the files; may be begun anew after any of its steps. False when one can't be done.
bool Place(const QString& root, const QString& folder, qint64 item, PageChanges::Kind kind)
{
    const QString made = folder + u"new/page"_s;
    const QString place = root + QString::number(item);
    if (kind == PageChanges::Kind::Delete && IsThere(place + PageSuffix)
        && !RenameFile(place + PageSuffix, folder + u"old"_s + PageSuffix))
        return false;
    if (kind == PageChanges::Kind::Add && !AddFiles(made, place))
        return false;
    if (kind != PageChanges::Kind::Add && !TakeOldFolder(place, folder + u"old"_s))
        return false;
    if (kind == PageChanges::Kind::Replace && IsThere(made) && !RenameFile(made, place))
        return false;
    // The page comes last: where it is, all of it is.
    return kind == PageChanges::Kind::Delete || !IsThere(made + PageSuffix)
           || RenameFile(made + PageSuffix, place + PageSuffix);
}

struct Bound {
    qint64 Item = 0; ///< 0: the change was not to count yet
    PageChanges::Kind Kind = PageChanges::Kind::Add;
};

Bound ReadBound(const QString& folder)
{
    constexpr qint64 Longest = 60;
    QFile file(folder + ItemName);
    QByteArray text;
    if (!file.open(QIODevice::ReadOnly) || !ReadAll(file, text, Longest).isEmpty())
        return {};
    const QList<QByteArray> words = text.trimmed().split(' ');
    const auto* kind = std::find(std::begin(KindNames), std::end(KindNames), words.value(1));
    if (words.size() != 2 || kind == std::end(KindNames))
        return {};
    return {words[0].toLongLong(), PageChanges::Kind(kind - std::begin(KindNames))};
}

/// What is bound no more is not begun anew, whatever is left of it.
bool Unbind(const QString& folder)
{
    return QFile::remove(folder + ItemName);
}

/// The folders of the single changes.
QStringList ChangesIn(const QString& folder)
{
    QStringList changes;
    for (const QString& name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks))
        changes << folder + name + u'/';
    return changes;
}

bool Counts(Database& library, const Bound& bound, const QString& mark)
{
    return bound.Item > 0 && NotedMark(library, bound.Item) == mark;
}

/// Of changes that nobody is at work on, whose folder is locked by the caller. False when one has to wait.
bool Finish(Library& library, const QString& folder, const QString& mark)
{
    bool isDone = true;
    for (const QString& change : ChangesIn(folder)) {
        const Bound bound = ReadBound(change);
        if (Counts(library, bound, mark))
            isDone = Place(library.HTMLFolder(), change, bound.Item, bound.Kind) && Unbind(change) && isDone;
    }
    return isDone && DeleteFolder(folder);
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
}

PageChanges::~PageChanges()
{
    if (!m_folder.isEmpty())
        DeleteFolder(m_folder);
}

QString PageChanges::FolderOf(qint64 item) const
{
    return m_folder + QString::number(item) + u'/';
}

QString PageChanges::Folder(qint64 item)
{
    const QString made = FolderOf(item) + u"new/"_s;
    if (!QDir().mkpath(made))
        Fail(u"The folder of web pages '%1' can't be written; nothing was changed."_s.arg(
            QDir::toNativeSeparators(m_root)));
    m_made.insert(item);
    return made;
}

void PageChanges::Bind(qint64 item, Kind kind, Flush flush, Work& work)
{
    SettlePage(m_library, item);
    if (kind == Kind::Add && QFileInfo(m_root + QString::number(item)).isSymLink())
        Fail(u"The folder '%1' of the page is a link, which may lead elsewhere; nothing was changed."_s.arg(
            QDir::toNativeSeparators(m_root + QString::number(item))));
    Folder(item); // what is to go has none yet
    const QByteArray bound = QByteArray::number(item) + ' ' + KindNames[size_t(kind)];
    QFile file(FolderOf(item) + ItemName);
    const bool isOpen = file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
    if (const QString why = isOpen ? WriteAll(file, bound.constData(), bound.size()) : file.errorString();
        !why.isEmpty())
        Fail(u"The page can't be written: %1; nothing was changed."_s.arg(why));
    file.close();
    m_bound.push_back({item, kind});
    if (flush == Flush::Now)
        RunBeside([this] { SyncFileSystem(m_folder); }, [&work] { work.Pulse(); });
    WriteChecksums(m_library, NotedTable, item, 0, {{m_mark, 0}});
}

void PageChanges::BindAll(Kind kind, Work& work)
{
    for (const qint64 item : m_made)
        Bind(item, kind, item == *m_made.rbegin() ? Flush::Now : Flush::Later, work);
}

void PageChanges::PutInPlace()
{
    const QString folder = std::exchange(m_folder, {}); // where this fails it stays for the next opening
    QStringList waiting;
    for (const BoundChange& change : m_bound) {
        const QString made = folder + QString::number(change.Item) + u'/';
        if (!Place(m_root, made, change.Item, change.Of))
            waiting << QString::number(change.Item);
        else
            Unbind(made); // or at the next opening: nothing in it is needed
    }
    if (waiting.isEmpty()) {
        DeleteFolder(folder);
        return;
    }
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
    const QStringList changes = ChangesIn(entry + u'/');
    return std::none_of(changes.begin(), changes.end(), [&](const QString& change) {
        return Counts(library, ReadBound(change), folder.fileName().mid(Prefix.size()));
    });
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
