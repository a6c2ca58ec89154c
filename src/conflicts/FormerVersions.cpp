#include "conflicts/FormerVersions.h"

#include "replication/MergedFiles.h"
#include "support/ErrorRoutine.h"

#include <QTemporaryDir>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// What the child had from its mother; or what was new in the child, and numbered by her. What was in conflict then was
/// not the same for both, and of an item that she has brought back there is but a notice without a date.
const QString Version =
    u"SELECT Title, Description, Info, Code, Notes, Example, CodeHeaders, UsageHeaders, ItemStatus, "
    "ItemRating FROM Items WHERE MotherRecordID = ? AND coalesce(ConflictItem, 0) = 0 AND "
    "LastChanged IS NOT NULL ORDER BY IDChanged DESC"_s;

/// An answer that is unpacked when it is asked for the first time.
class FormerAnswer {
public:
    explicit FormerAnswer(const QString& library) : m_library(library) {}

    std::optional<BaseVersion> Find(qint64 item)
    {
        if (!m_folder) {
            m_folder.emplace();
            Guarded(u"FormerVersions"_s, u"Find"_s,
                    [this] { m_database = OpenFormerAnswer(m_library, m_folder->path()); });
        }
        if (!m_database)
            return std::nullopt;
        Statement row = m_database->Query(Version, {item});
        return row.Step() ? std::optional(VersionIn(row)) : std::nullopt;
    }

private:
    static BaseVersion VersionIn(Statement& row)
    {
        return {.Title = row.Text(0),
                .Description = row.Text(1),
                .Info = row.Text(2),
                .Code = row.Text(3),
                .Notes = row.Text(4),
                .Usage = row.Text(5),
                .CodeHeaders = quint8(row.Long(6)),
                .UsageHeaders = quint8(row.Long(7)),
                .Status = qint32(row.Long(8)),
                .Rating = qint32(row.Long(9))};
    }

    QString m_library;
    std::optional<QTemporaryDir> m_folder;
    std::unique_ptr<Database> m_database;
};

} // namespace

FindBaseVersion FormerVersionsOf(Library& library)
{
    return [answer = std::make_shared<FormerAnswer>(library.Name())](qint64 item) { return answer->Find(item); };
}

} // namespace qb
