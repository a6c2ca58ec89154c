#include "store/LibraryUse.h"

#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds Patience{1000}; // while another process only looks

QString Beside(const QString& library, const QString& suffix)
{
    const QFileInfo info(library);
    return info.absolutePath() + u"/."_s + info.fileName() + suffix;
}

QString AloneName(const QString& library)
{
    return Beside(library, u".alone"_s);
}

[[noreturn]] void RaiseInUse(const QString& library, const QString& by, const QString& procedure)
{
    throw RuntimeError(ErrorNumber::InUse,
                       u"The library '%1' is %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(library), by),
                       procedure);
}

/// Whether somebody has the library open. The marks of dead processes go.
bool IsOpen(const QString& library)
{
    const QFileInfo pattern(Beside(library, u".open-"_s));
    bool isOpen = false;
    for (const QString& name : pattern.dir().entryList(QDir::Files | QDir::Hidden)) {
        if (!name.startsWith(pattern.fileName()))
            continue;
        FileLock lock(pattern.dir().filePath(name), FileLock::Target::Existing);
        isOpen = isOpen || lock.IsBusy();
        lock.RemoveFile();
    }
    return isOpen;
}

} // namespace

void RefuseWhileAlone(const QString& library)
{
    FileLock alone(AloneName(library), FileLock::Target::Existing, Patience);
    if (alone.IsBusy())
        RaiseInUse(library, u"being compacted, restored or brought back by another process; try again later"_s,
                   u"RefuseWhileAlone"_s);
    alone.RemoveFile(); // of a dead process
}

OpenMark::OpenMark(const QString& library)
{
    IsOpen(library); // which removes the marks of dead processes
    m_lock = FileLock(Beside(library, u".open-"_s + QUuid::createUuid().toString(QUuid::Id128)), FileLock::Target::Own);
    // In this order: who wants the library for himself asks in the other one, so that one of both is noticed.
    RefuseWhileAlone(library);
}

SoleUse::SoleUse(const QString& library, const QString& procedure)
    : m_lock(AloneName(library), FileLock::Target::Own, Patience)
{
    if (m_lock.IsBusy())
        RaiseInUse(library, u"being compacted, restored or brought back by another process"_s, procedure);
    if (!m_lock.IsHeld())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"Nothing can be written in the folder '%1'. Nothing was changed."_s.arg(
                               QDir::toNativeSeparators(QFileInfo(library).absolutePath())),
                           procedure);
    if (IsOpen(library))
        RaiseInUse(library, u"open, in this program or another one; close it there first"_s, procedure);
}

} // namespace qb
