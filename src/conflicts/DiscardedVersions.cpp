#include "conflicts/DiscardedVersions.h"

#include "removed/RemovedEvent.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Keeps them beside the library, as everything that is removed.
class RemovedVersions : public DiscardedVersions {
public:
    RemovedVersions(Library& library, DiscardKind kind)
        : m_event(library,
                  kind == DiscardKind::Decided ? RemovalKind::ConflictDecided : RemovalKind::ConflictsDiscarded,
                  kind == DiscardKind::Decided ? u"A conflict was decided"_s : u"All conflicts were discarded"_s)
    {
    }

    void AddTemporary(const QString& where, const Values& parameters, const QString& reason) override
    {
        m_event.Add(RemovedRows::InColumns(MainSchema, where, parameters, u"Temp"_s), reason);
    }
    void AddOwn(qint64 item, const QString& reason) override
    {
        m_event.Add(RemovedRows::OfLibrary(u"r.ID = ?"_s, {item}), reason);
    }
    void Note() override { m_event.Note(); }
    void Place() override { m_event.Place(); }

private:
    RemovedEvent m_event;
};

} // namespace

DiscardInto IntoRemovedItems()
{
    return [](Library& library, DiscardKind kind) { return std::make_unique<RemovedVersions>(library, kind); };
}

} // namespace qb
