#include "store/PageChange.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <chrono>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u".changing-page-"_s;
const QString ItemName = u"item"_s;         ///< of the file that tells the item and the kind
const QString NotedTable = u"PageChange"_s; ///< under which the library notes the last change of each item's page
const QString PageSuffix = u".htm"_s;

constexpr const char* KindNames[] = {"add", "replace", "delete"}; // in the order of PageChange::Kind

[[noreturn]] void Fail(const QString& what)
{
    throw RuntimeError(ErrorNumber::PathAccess, what, u"PageChange"_s);
}

bool IsThere(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// The mark of the last change that was committed; empty when none is known.
QString NotedMark(Library& library, qint64 item)
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
bool Place(const QString& root, const QString& folder, qint64 item, PageChange::Kind kind)
{
    const QString made = folder + u"new/page"_s;
    const QString place = root + QString::number(item);
    if (kind == PageChange::Kind::Delete && IsThere(place + PageSuffix)
        && !RenameFile(place + PageSuffix, folder + u"old"_s + PageSuffix))
        return false;
    if (kind == PageChange::Kind::Add && !AddFiles(made, place))
        return false;
    if (kind != PageChange::Kind::Add && !TakeOldFolder(place, folder + u"old"_s))
        return false;
    if (kind == PageChange::Kind::Replace && IsThere(made) && !RenameFile(made, place))
        return false;
    // The page comes last: where it is, all of it is.
    return kind == PageChange::Kind::Delete || !IsThere(made + PageSuffix)
           || RenameFile(made + PageSuffix, place + PageSuffix);
}

struct Bound {
    qint64 Item = 0; ///< 0: the change was not to count yet
    PageChange::Kind Kind = PageChange::Kind::Add;
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
    return {words[0].toLongLong(), PageChange::Kind(kind - std::begin(KindNames))};
}

/// What is bound no more is not begun anew, whatever is left of it; so that goes first.
bool RemoveDone(const QString& folder)
{
    return QFile::remove(folder + ItemName) && DeleteFolder(folder);
}

/// Of a change that nobody is at work on, whose folder is locked by the caller. False when it has to wait.
bool Finish(Library& library, const QString& folder, const QString& mark)
{
    const Bound bound = ReadBound(folder);
    const bool counts = bound.Item > 0 && NotedMark(library, bound.Item) == mark;
    if (!counts)
        return DeleteFolder(folder);
    return Place(library.HTMLFolder(), folder, bound.Item, bound.Kind) && RemoveDone(folder);
}

QString FolderOf(const Library& library, const QString& mark)
{
    return library.HTMLFolder() + Prefix + mark + u'/';
}

} // namespace

PageChange::PageChange(Library& library, qint64 item) : m_library(library), m_item(item), m_root(library.HTMLFolder())
{
    if (!HasChecksumTable(library))
        throw RuntimeError(ErrorNumber::NotADatabase,
                           u"The library has a table of another program where changes of pages are noted; nothing was "
                           "changed."_s,
                           u"PageChange"_s);
    ClaimFolder(m_root, library.Identity());
    do {
        m_mark = QUuid::createUuid().toString(QUuid::Id128);
        m_folder = FolderOf(library, m_mark);
        if (!QDir().mkdir(m_folder))
            Fail(u"The folder of web pages '%1' can't be written; nothing was changed."_s.arg(
                QDir::toNativeSeparators(m_root)));
        m_lock = FileLock(m_folder, FileLock::Target::Existing, FileLock::Forever);
    } while (!m_lock.IsHeld() && !QFileInfo::exists(m_folder)); // another process took it for a dead one
    if (!QDir().mkpath(Folder())) {
        DeleteFolder(m_folder);
        Fail(u"The folder of web pages '%1' can't be written; nothing was changed."_s.arg(
            QDir::toNativeSeparators(m_root)));
    }
}

PageChange::~PageChange()
{
    if (!m_folder.isEmpty())
        DeleteFolder(m_folder);
}

void PageChange::Bind(Kind kind)
{
    SettlePage(m_library, m_item);
    m_kind = kind;
    if (kind == Kind::Add && QFileInfo(m_root + QString::number(m_item)).isSymLink())
        Fail(u"The folder '%1' of the page is a link, which may lead elsewhere; nothing was changed."_s.arg(
            QDir::toNativeSeparators(m_root + QString::number(m_item))));
    const QByteArray bound = QByteArray::number(m_item) + ' ' + KindNames[size_t(kind)];
    if (const QString why = ReplaceContents(m_folder + ItemName, bound); !why.isEmpty())
        Fail(u"The page can't be written: %1; nothing was changed."_s.arg(why));
    SyncFileSystem(m_folder);
    WriteChecksums(m_library, NotedTable, m_item, 0, {{m_mark, 0}});
}

void PageChange::PutInPlace()
{
    const QString folder = std::exchange(m_folder, {}); // where this fails it stays for the next opening
    if (!Place(m_root, folder, m_item, m_kind))
        Fail(u"The page of item %1 is stored, but could not be put in its place yet: this is done when the library is "
             "opened next."_s.arg(m_item));
    RemoveDone(folder); // or at the next opening: nothing in it is needed
}

void SettlePage(Library& library, qint64 item)
{
    constexpr std::chrono::seconds Patience(10);
    const QString mark = NotedMark(library, item);
    const QString folder = FolderOf(library, mark);
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
    return !mark.isEmpty() && QFileInfo::exists(FolderOf(library, mark));
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
