#include "removed/RemovedEvent.h"

#include "platform/system/Clock.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "removed/RemovedRetention.h"
#include "removed/RemovedWriter.h"
#include "store/SideFolders.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

namespace qb {

using namespace Qt::StringLiterals;

RemovedEvent::RemovedEvent(Library& library, RemovalKind kind, QString what)
    : m_library(library), m_header{kind, std::move(what), library.Identity(), Clock::Now()}
{
}

RemovedEvent::~RemovedEvent()
{
    m_writer.reset();
    const bool mayCount = m_state == State::Noted && IsNoteThere();
    if (m_folder.isEmpty() || m_state == State::Placed || mayCount)
        return;
    DeleteFolder(m_folder);
}

/// Also where nobody can tell.
bool RemovedEvent::IsNoteThere() const
{
    try {
        return m_library.InTransaction() || IsRemovedNoted(m_library, m_pending.Mark);
    } catch (const RuntimeError&) {
        return true;
    }
}

RemovedWriter& RemovedEvent::Open()
{
    if (m_state != State::Open)
        throw RuntimeError(ErrorNumber::InvalidCall, u"What is removed was noted already."_s, u"RemovedEvent"_s);
    if (m_writer)
        return *m_writer;
    ClaimFolder(RemovedFolderOf(m_library.Name()), m_library.Identity());
    m_pending.Mark = QUuid::createUuid().toString(QUuid::Id128);
    m_folder = PendingRemovedFolder(m_library.Name(), m_pending.Mark);
    // Nobody else makes it; but before it is locked, another process takes it for a dead one's and removes it.
    constexpr int Tries = 10;
    for (int i = 0; i < Tries && !m_lock.IsHeld(); ++i) {
        QDir().mkdir(m_folder);
        m_lock = FileLock(m_folder, FileLock::Target::Existing);
    }
    if (!m_lock.IsHeld())
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"Nothing can be written in '%1', where the library keeps what is removed. Nothing was "
                           "changed."_s.arg(QDir::toNativeSeparators(RemovedFolderOf(m_library.Name()))),
                           u"RemovedEvent"_s);
    m_writer = std::make_unique<RemovedWriter>(m_library, m_folder, m_header);
    return *m_writer;
}

int RemovedEvent::Add(const RemovedRows& rows, const QString& reason)
{
    const int added = Open().AddItems(rows, reason, RemovedPart::Item);
    m_count += added;
    return added;
}

int RemovedEvent::AddFiles(const RemovedRows& rows, const QString& reason)
{
    const int added = Open().AddFiles(rows, reason, RemovedPart::File);
    m_count += added;
    return added;
}

int RemovedEvent::AddDescriptions(const RemovedRows& rows, const QString& reason)
{
    const int added = Open().AddFiles(rows, reason, RemovedPart::Description);
    m_count += added;
    return added;
}

int RemovedEvent::AddPages(const RemovedRows& rows, const QString& reason)
{
    const int added = Open().AddItems(rows, reason, RemovedPart::Page);
    m_count += added;
    return added;
}

int RemovedEvent::Count() const
{
    return m_count;
}

void RemovedEvent::Note()
{
    if (IsEmpty())
        return;
    Open().Close();
    m_writer.reset();
    const QString removed = RemovedFolderOf(m_library.Name());
    FlushNames(removed);
    FlushNames(QFileInfo(m_library.Name()).absolutePath()); // which may have got that folder
    m_pending.Name = FreeRemovedName(m_library, m_header.Moment, NameOf(m_header.Kind));
    NotePendingRemoved(m_library, m_pending);
    m_state = State::Noted;
}

void RemovedEvent::Place()
{
    if (m_state != State::Noted || m_library.InTransaction())
        return; // the next opening does it, if there is something to do
    m_state = State::Placed;
    try {
        PlacePendingRemoved(m_library, m_pending);
        DeleteFolder(m_folder);
        PruneRemoved(m_library.Name(), ReadRetention(), Clock::Now());
    } catch (const RuntimeError&) {
        // The library knows of it still: the next opening finds it free, or the disk with room.
    }
}

} // namespace qb
