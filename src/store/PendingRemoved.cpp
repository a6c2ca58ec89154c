#include "store/PendingRemoved.h"

#include "platform/system/FileLock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/StoredFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Table = u"own_PendingRemoved"_s;
const QString FolderPrefix = u".event-"_s;
const QString StampForm = u"yyyy-MM-dd HHmmss"_s;

bool IsMark(const QString& text)
{
    static const QRegularExpression mark(u"^[0-9a-f]{32}\\z"_s);
    return mark.match(text).hasMatch();
}

std::vector<PendingRemoved> ReadNotes(Database& library)
{
    std::vector<PendingRemoved> notes;
    if (!library.TableExists(Table))
        return notes;
    Statement rows = library.Query(u"SELECT Mark, Name FROM %1 ORDER BY rowid"_s.arg(Table));
    while (rows.Step())
        notes.push_back({rows.Text(0), rows.Text(1)});
    return notes;
}

void Forget(Database& library, const QString& mark)
{
    Transaction transaction(library);
    if (library.TableExists(Table)) {
        library.Execute(u"DELETE FROM %1 WHERE Mark = ?"_s.arg(Table), {mark});
        if (library.QueryValue(u"SELECT 1 FROM "_s + Table).IsNull())
            library.Execute(u"DROP TABLE "_s + Table);
    }
    transaction.Commit();
}

/// What has got its name already is not there any more. Renamed, not linked: of a link that fails in its middle both
/// names would stay.
void MoveFiles(const QString& libraryPath, const PendingRemoved& pending)
{
    const QString folder = RemovedFolderOf(libraryPath);
    const QString from = PendingRemovedFolder(libraryPath, pending.Mark);
    bool isMoved = true;
    for (const QString& extension : {RemovedItemsExtension, RemovedIndexExtension}) {
        const QString file = from + PendingRemovedName + extension;
        const QString place = folder + pending.Name + extension;
        isMoved = isMoved && (!IsPlainFile(file) || (!QFileInfo::exists(place) && RenameFile(file, place)));
    }
    // What a power cut leaves has the names before the note goes.
    if (!isMoved || !SyncFolder(folder))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"What was removed can't be put into '%1' now."_s.arg(QDir::toNativeSeparators(folder)),
                           u"PendingRemoved"_s);
}

/// Folders of events that no note is about, and nobody is at work on.
void RemoveUnnoted(Database& library)
{
    const QDir folder(RemovedFolderOf(library.Name()));
    for (const QString& name : folder.entryList({FolderPrefix + u'*'}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        const QString mark = name.mid(FolderPrefix.size());
        const FileLock lock(folder.filePath(name), FileLock::Target::Existing);
        if (!IsMark(mark) || !lock.IsHeld())
            continue;
        if (!IsRemovedNoted(library, mark)) // who noted it did so before letting go of the lock
            DeleteFolder(folder.filePath(name));
    }
}

/// The stamps of all that lies in the folder, or will.
QSet<QString> TakenStamps(Database& library)
{
    const QDir folder(RemovedFolderOf(library.Name()));
    QStringList names = folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System, QDir::Unsorted);
    for (const PendingRemoved& note : ReadNotes(library))
        names << note.Name;
    QSet<QString> stamps;
    for (const QString& name : std::as_const(names))
        stamps.insert(name.left(StampForm.size()));
    return stamps;
}

} // namespace

QString RemovedFolderOf(const QString& libraryPath)
{
    return fnExtractPathOrFileName(libraryPath, PathPart::Folder)
           + fnExtractPathOrFileName(libraryPath, PathPart::BaseName) + u"_Removed/"_s;
}

QString PendingRemovedFolder(const QString& libraryPath, const QString& mark)
{
    return RemovedFolderOf(libraryPath) + FolderPrefix + mark + u'/';
}

QString FreeRemovedName(Database& library, Date moment, const QString& kind)
{
    const QSet<QString> taken = TakenStamps(library);
    QDateTime at(moment.Day(), moment.Time());
    while (taken.contains(at.toString(StampForm)))
        at = at.addSecs(1);
    return at.toString(StampForm) + u' ' + kind;
}

bool IsRemovedName(const QString& name)
{
    static const QRegularExpression form(u"^\\d{4}-\\d\\d-\\d\\d \\d{6} [a-z ]{1,40}\\z"_s);
    return form.match(name).hasMatch();
}

void NotePendingRemoved(Database& library, const PendingRemoved& pending)
{
    library.Execute(u"CREATE TABLE IF NOT EXISTS %1 (Mark TEXT, Name TEXT)"_s.arg(Table));
    library.Execute(u"INSERT INTO %1 VALUES (?, ?)"_s.arg(Table), {pending.Mark, pending.Name});
}

bool IsRemovedNoted(Database& library, const QString& mark)
{
    const std::vector<PendingRemoved> notes = ReadNotes(library);
    return std::any_of(notes.begin(), notes.end(), [&mark](const PendingRemoved& note) { return note.Mark == mark; });
}

void PlacePendingRemoved(Database& library, const PendingRemoved& pending)
{
    MoveFiles(library.Name(), pending);
    Forget(library, pending.Mark);
}

void FinishPendingRemoved(Database& library)
{
    try {
        if (library.IsReadOnly())
            return;
        for (const PendingRemoved& note : ReadNotes(library)) {
            if (!IsMark(note.Mark) || !IsRemovedName(note.Name)) { // not this program's
                Forget(library, note.Mark);
                continue;
            }
            const QString folder = PendingRemovedFolder(library.Name(), note.Mark);
            const FileLock lock(folder, FileLock::Target::Existing);
            if (lock.IsHeld())
                MoveFiles(library.Name(), note);
            if (lock.IsHeld() || lock.Result() == FileLock::State::Missing)
                Forget(library, note.Mark);
        }
        RemoveUnnoted(library);
    } catch (const RuntimeError&) {
        // The note is still there: another opening will find the library free, or the disk with room.
    }
}

} // namespace qb
