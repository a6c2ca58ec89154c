#include "platform/system/StagedFiles.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "platform/system/RunBeside.h"
#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString StagePrefix = u".unpacking-"_s;

[[noreturn]] void Fail(const QString& path, const QString& why)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"'%1' can't be written: %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(path), why),
                       u"StagedFiles"_s);
}

QString SystemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// Gives a file a name more, or another where the file system knows but one for a file.
bool NameToo(const QString& file, const QString& name)
{
    const QByteArray from = QFile::encodeName(file);
    const QByteArray to = QFile::encodeName(name);
    return ::link(from.constData(), to.constData()) == 0 || std::rename(from.constData(), to.constData()) == 0;
}

} // namespace

StagedFiles::StagedFiles(const QString& folder) : m_folder(QDir::cleanPath(QFileInfo(folder).absoluteFilePath()) + u'/')
{
    if (folder.isEmpty()) // which would be the topmost one
        Fail(folder, u"it is no folder"_s);
    QStringList missing;
    for (QString path = QDir::cleanPath(m_folder); !QFileInfo::exists(path) && !path.isEmpty();
         path = QFileInfo(path).path())
        missing.prepend(path);
    for (const QString& path : std::as_const(missing)) {
        if (!QDir().mkdir(path)) {
            const QString why = SystemReason();
            RemoveMade();
            Fail(path, why);
        }
        m_made << path;
    }
    RemoveDeadStages();
    MakeStage();
}

void StagedFiles::MakeStage()
{
    do {
        m_stage = m_folder + StagePrefix + QUuid::createUuid().toString(QUuid::Id128) + u'/';
        if (!QDir().mkdir(m_stage)) {
            const QString why = SystemReason();
            RemoveMade();
            Fail(m_folder, why);
        }
        m_lock = FileLock(m_stage, FileLock::Target::Existing, FileLock::Forever);
    } while (!m_lock.IsHeld() && !QFileInfo::exists(m_stage)); // another process took it for a dead one
}

void StagedFiles::RemoveDeadStages() const
{
    const QString stages = StagePrefix + u"[0-9a-f]"_s.repeated(32);
    for (const QString& name : QDir(m_folder).entryList({stages}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        if (const FileLock lock(m_folder + name, FileLock::Target::Existing); lock.IsHeld())
            DeleteFolder(m_folder + name);
    }
}

StagedFiles::~StagedFiles()
{
    if (m_complete || TakeBack())
        DeleteFolder(QDir::cleanPath(m_stage));
    else // it has the only copy of a file, which nobody may sweep away
        QDir().rename(m_stage,
                      m_folder + u"Files that could not be put back "_s + QUuid::createUuid().toString(QUuid::Id128));
    m_lock.Release();
    if (!m_complete)
        RemoveMade();
}

QString StagedFiles::PathFor(const QString& name)
{
    m_files << name;
    const QString path = m_stage + u"new/"_s + name;
    if (!QDir().mkpath(QFileInfo(path).path()))
        Fail(m_folder + name, SystemReason());
    return path;
}

QString StagedFiles::Scratch()
{
    const QString path = m_stage + u"scratch/"_s;
    if (!QDir().mkpath(path))
        Fail(m_folder, SystemReason());
    return path;
}

void StagedFiles::Flush(Work& work) const
{
    RunBeside([this] { SyncFileSystem(m_stage); }, [&work] { work.Pulse(); });
}

int StagedFiles::PutInPlace(bool keepExisting, Work& work)
{
    int kept = 0;
    if (!m_files.isEmpty())
        Flush(work);
    for (const QString& name : std::as_const(m_folders))
        MakeFolders(name);
    for (const QString& name : std::as_const(m_files)) {
        if (const qsizetype slash = name.lastIndexOf(u'/'); slash > 0)
            MakeFolders(name.left(slash));
        kept += Move(name, keepExisting) ? 0 : 1;
    }
    m_complete = true;
    return kept;
}

void StagedFiles::PutInPlaceAsFolder(const QString& name, Work& work)
{
    const QString made = m_stage + u"new"_s;
    const QString target = m_folder + name;
    if (!QDir().mkpath(made))
        Fail(target, SystemReason());
    Flush(work);
    if (std::rename(QFile::encodeName(made).constData(), QFile::encodeName(target).constData()) != 0)
        Fail(target, SystemReason());
    m_complete = true;
}

/// Makes the folders of a relative name, none of which may be a link: it would lead elsewhere.
void StagedFiles::MakeFolders(const QString& name)
{
    QString path = m_folder;
    for (const QString& part : name.split(u'/')) {
        path += part;
        const QFileInfo info(path);
        if (info.isSymLink())
            Fail(path, u"a link stands there, which may lead elsewhere"_s);
        if (info.exists() && !info.isDir())
            Fail(path, u"a file stands there"_s);
        if (!info.exists()) {
            if (!QDir().mkdir(path))
                Fail(path, SystemReason());
            m_made << path;
        }
        path += u'/';
    }
}

/// False when the file that is there was left.
bool StagedFiles::Move(const QString& name, bool keepExisting)
{
    const QString target = m_folder + name;
    const QFileInfo there(target);
    const bool isOccupied = there.exists() || there.isSymLink();
    if (isOccupied && keepExisting)
        return false;
    if (const QString what = WhyNoPlainFile(target); !what.isEmpty() && !there.isSymLink())
        Fail(target, what + u" stands there"_s);
    if (isOccupied) { // it keeps its name until the new one takes it, so that it can't get lost
        const QString saved = m_stage + u"old-%1"_s.arg(m_moved.size());
        if (!NameToo(target, saved))
            Fail(target, SystemReason());
        m_moved.push_back({target, saved});
    }
    if (std::rename(QFile::encodeName(m_stage + u"new/"_s + name).constData(), QFile::encodeName(target).constData())
        != 0)
        Fail(target, SystemReason());
    if (!isOccupied)
        m_moved.push_back({target, {}});
    return true;
}

/// False when a file could not be put back.
bool StagedFiles::TakeBack()
{
    bool isBack = true;
    for (auto moved = m_moved.rbegin(); moved != m_moved.rend(); ++moved) {
        if (moved->Saved.isEmpty())
            QFile::remove(moved->Target);
        else if (std::rename(QFile::encodeName(moved->Saved).constData(), QFile::encodeName(moved->Target).constData())
                 != 0)
            isBack = false;
    }
    return isBack;
}

void StagedFiles::RemoveMade()
{
    for (auto path = m_made.rbegin(); path != m_made.rend(); ++path)
        QDir().rmdir(*path); // unless somebody has put something there
}

} // namespace qb
