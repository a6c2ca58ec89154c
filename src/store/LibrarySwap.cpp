#include "store/LibrarySwap.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RunBeside.h"
#include "platform/system/RuntimeError.h"
#include "store/Checksums.h"
#include "store/Library.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Something of the library that gets another in its place, or none.
struct Part {
    QString Name; ///< without a folder
    QString Mark; ///< of what takes its place, by which that is known wherever it lies; "-": nothing does
};

const QString Nothing = u"-"_s;

/// A folder that takes another one's place holds this file until all parts are there.
const QString FolderMark = u".swap-mark"_s;

/// A stage that holds this file is complete: what it names is to be put in place.
const QString ReadyName = u"ready"_s;

QString StagePrefix(const QString& library)
{
    return u'.' + QFileInfo(library).fileName() + u".swap-"_s;
}

[[noreturn]] void Fail(const QString& path, const QString& what)
{
    throw RuntimeError(
        ErrorNumber::PathAccess,
        u"'%1' %2: %3."_s.arg(QDir::toNativeSeparators(path), what, QString::fromLocal8Bit(std::strerror(errno))),
        u"LibrarySwap"_s);
}

bool Exists(const QString& path)
{
    struct stat state {};
    return ::lstat(QFile::encodeName(path).constData(), &state) == 0;
}

/// A folder's is the file in it, a database's the sum of its contents: both are the same in a copy of the stage.
QString MarkOf(const QString& path)
{
    if (!Exists(path))
        return Nothing;
    if (QFileInfo(path).isDir())
        return QFileInfo::exists(path + u'/' + FolderMark) ? FolderMark : u"none"_s;
    return QString::number(ChecksumOfFile(path));
}

/// Lets two names change what they stand for, in one step where the file system can do that; @p aside is a free name
/// for where it can't. False with errno, and nothing changed or all of it undone again.
bool Exchange(const QString& one, const QString& other, const QString& aside)
{
    const QByteArray left = QFile::encodeName(one);
    const QByteArray right = QFile::encodeName(other);
    if (::renameat2(AT_FDCWD, left.constData(), AT_FDCWD, right.constData(), RENAME_EXCHANGE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return false;
    if (!RenameFile(other, aside))
        return false;
    if (RenameFile(one, other))
        return true;
    const int error = errno;
    RenameFile(aside, other);
    errno = error;
    return false;
}

/// The work on one stage whose parts are to be put in place, by who made it or who finds it.
class Placing {
public:
    Placing(const QString& folder, const QString& stage, std::vector<Part> parts)
        : m_folder(folder), m_stage(stage), m_parts(std::move(parts))
    {
    }

    /// Each part that is not in its place yet gets there. False with errno when one can't.
    bool Forward()
    {
        for (const Part& part : m_parts) {
            if (!Place(part))
                return false;
            m_done.push_back(&part);
        }
        SyncFolder(m_folder);
        for (const Part& part : m_parts)
            QFile::remove(There(part) + u'/' + FolderMark);
        return true;
    }

    /// Takes back what Forward() has done; false when something stays.
    bool Back()
    {
        bool isBack = true;
        for (auto part = m_done.rbegin(); part != m_done.rend(); ++part)
            isBack = TakeBack(**part) && isBack;
        return isBack;
    }

private:
    QString There(const Part& part) const { return m_folder + part.Name; }
    QString New(const Part& part) const { return m_stage + u"new/"_s + part.Name; }
    QString Old(const Part& part) const { return m_stage + u"old/"_s + part.Name; }

    bool Place(const Part& part) const
    {
        if (part.Mark == Nothing)
            return !Exists(There(part)) || RenameFile(There(part), Old(part));
        if (MarkOf(New(part)) != part.Mark)
            return true; // it is there already
        return Exists(There(part)) ? Exchange(New(part), There(part), Old(part)) : RenameFile(New(part), There(part));
    }

    bool TakeBack(const Part& part) const
    {
        if (part.Mark == Nothing)
            return !Exists(Old(part)) || RenameFile(Old(part), There(part));
        if (Exists(New(part))) // the old one, in exchange
            return Exchange(New(part), There(part), Old(part));
        if (!RenameFile(There(part), New(part)))
            return false;
        return !Exists(Old(part)) || RenameFile(Old(part), There(part));
    }

    QString m_folder; ///< ends in a separator, as m_stage
    QString m_stage;
    std::vector<Part> m_parts;
    std::vector<const Part*> m_done;
};

QByteArray Written(const std::vector<Part>& parts)
{
    QByteArray text;
    for (const Part& part : parts)
        text += part.Mark.toUtf8() + ' ' + part.Name.toUtf8() + '\n';
    return text;
}

/// What a library has beside others in its folder. A stage may have come with a stranger's library; no other name is
/// taken from it.
QStringList NamesOf(const QString& library)
{
    const QString file = QFileInfo(library).fileName();
    return {file + u"-journal"_s, QFileInfo(FilesFolderOf(library).chopped(1)).fileName(),
            QFileInfo(HTMLFolderOf(library).chopped(1)).fileName(), file};
}

std::vector<Part> ReadParts(const QString& stage, const QString& library)
{
    const QStringList names = NamesOf(library);
    std::vector<Part> parts;
    QFile file(stage + ReadyName);
    if (!file.open(QIODevice::ReadOnly))
        return parts;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const qsizetype blank = line.indexOf(' ');
        const QString name = QString::fromUtf8(line.mid(blank + 1));
        if (blank > 0 && names.contains(name))
            parts.push_back({name, QString::fromUtf8(line.left(blank))});
    }
    return parts;
}

void WriteMark(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        Fail(path, u"can't be written"_s);
}

/// What a stage has for each place of a library, in the order in which they get there; its folders are marked.
std::vector<Part> MakeParts(const QString& made, const QString& library, LibrarySwap::Parts parts)
{
    const auto part = [&made](const QString& name) { return Part{name, MarkOf(made + name)}; };
    const QString file = QFileInfo(library).fileName();
    // The journal of the old database must be gone before another one stands under its name.
    std::vector<Part> all{{file + u"-journal"_s, Nothing}};
    if (parts == LibrarySwap::Parts::WithFolders) {
        for (const QString& folder : {FilesFolderOf(library), HTMLFolderOf(library)}) {
            const QString name = QFileInfo(folder.chopped(1)).fileName();
            if (QFileInfo(made + name).isDir())
                WriteMark(made + name + u'/' + FolderMark);
            all.push_back(part(name));
        }
    }
    all.push_back(part(file));
    if (all.back().Mark == Nothing)
        throw RuntimeError(ErrorNumber::Internal, u"There is no new library to put in place."_s, u"LibrarySwap"_s);
    return all;
}

/// Without the file that says it is complete a stage is nothing but what may be deleted.
void Discard(const QString& stage)
{
    QFile::remove(stage + ReadyName);
    DeleteFolder(QDir::cleanPath(stage));
}

} // namespace

LibrarySwap::LibrarySwap(const QString& library) : m_library(QFileInfo(library).absoluteFilePath())
{
    const QString folder = QFileInfo(m_library).absolutePath() + u'/';
    do {
        m_stage = folder + StagePrefix(m_library) + QUuid::createUuid().toString(QUuid::Id128) + u'/';
        if (!QDir().mkdir(m_stage))
            Fail(folder, u"can't be written"_s);
        m_lock = FileLock(m_stage, FileLock::Target::Existing, FileLock::Forever);
    } while (!m_lock.IsHeld() && !QFileInfo::exists(m_stage)); // another process took it for a dead one
    for (const QString& name : {u"new"_s, u"old"_s, u"scratch"_s}) {
        if (!QDir().mkdir(m_stage + name)) {
            const int error = errno;
            Discard(m_stage);
            errno = error;
            Fail(folder, u"can't be written"_s);
        }
    }
}

LibrarySwap::~LibrarySwap()
{
    if (!QFileInfo::exists(m_stage + ReadyName)) // else the next opening completes the library
        Discard(m_stage);
    m_lock.Release();
}

QString LibrarySwap::NewLibrary() const
{
    return m_stage + u"new/"_s + QFileInfo(m_library).fileName();
}

void LibrarySwap::PutInPlace(Parts parts, Work& work)
{
    std::vector<Part> all;
    const auto prepare = [&] {
        all = MakeParts(m_stage + u"new/"_s, m_library, parts);
        DeleteFolder(m_stage + u"scratch"_s);
        SyncFileSystem(m_stage);
    };
    RunBeside(prepare, [&work] { work.Pulse(); });
    if (const QString why = ReplaceContents(m_stage + ReadyName, Written(all)); !why.isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be replaced: %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(m_library), why),
            u"LibrarySwap"_s);
    SyncFolder(m_stage);
    Placing placing(QFileInfo(m_library).absolutePath() + u'/', m_stage, all);
    if (!placing.Forward()) {
        const int error = errno;
        if (placing.Back())
            QFile::remove(m_stage + ReadyName);
        errno = error;
        Fail(m_library, u"can't be replaced"_s);
    }
    Discard(m_stage);
}

void FinishSwap(const QString& library)
{
    QStringList marks; // of a swap that could not remove them, unless one is under way
    for (const QString& of : {FilesFolderOf(library), HTMLFolderOf(library)}) {
        if (QFileInfo::exists(of + FolderMark))
            marks << of + FolderMark;
    }
    bool isUnderWay = false;
    const QString folder = QFileInfo(library).absolutePath() + u'/';
    const QString prefix = StagePrefix(library);
    for (const QString& name : QDir(folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        if (!name.startsWith(prefix))
            continue;
        const QString stage = folder + name + u'/';
        constexpr std::chrono::seconds Patience{10};
        const bool isReady = QFileInfo::exists(stage + ReadyName);
        const FileLock lock(stage, FileLock::Target::Existing, isReady ? Patience : Patience * 0);
        if (!lock.IsHeld()) { // somebody is at it
            isUnderWay = true;
            continue;
        }
        if (Placing placing(folder, stage, ReadParts(stage, library)); !placing.Forward())
            Fail(library, u"was being replaced when the program ended, which can't be completed"_s);
        Discard(stage);
    }
    for (const QString& mark : std::as_const(marks)) {
        if (!isUnderWay)
            QFile::remove(mark);
    }
}

} // namespace qb
