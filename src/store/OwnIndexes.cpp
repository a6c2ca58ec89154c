#include "store/OwnIndexes.h"

#include "platform/dao/Database.h"
#include "store/Checksums.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct OwnIndex {
    QLatin1StringView Table;
    QLatin1StringView Name;
    QLatin1StringView Columns; ///< parted by commas
};
constexpr OwnIndex OwnIndexes[] = {
    {"Items"_L1, "Tree"_L1, "ParentID,Title,Description"_L1},
    {"Items"_L1, "LastChanged"_L1, "LastChanged"_L1},
};

constexpr OwnIndex ReplicaIndexes[] = {
    {"Items"_L1, "Dates"_L1, "LastChanged,Created,HTMLLastUpdated"_L1},
};

/// Of the time when it stood among the indexes of the table's definition.
const QString FormerTree = u"Tree"_s;

bool IsMissing(Database& library, const OwnIndex& index)
{
    const QStringList made = library.OwnIndexNames(index.Table);
    return !made.contains(index.Name, Qt::CaseInsensitive);
}

void Append(Database& library, const OwnIndex& index)
{
    library.AppendOwnIndex(index.Table, {.Name = index.Name, .Fields = QString(index.Columns).split(u',')});
}

} // namespace

void MakeOwnIndexes(Database& library)
{
    const bool isComplete = std::none_of(std::begin(OwnIndexes), std::end(OwnIndexes),
                                         [&library](const OwnIndex& index) { return IsMissing(library, index); });
    const bool hasFormer = library.GetTableDef(u"Items"_s).FindIndex(FormerTree) != nullptr;
    if (isComplete && !hasFormer && library.TableExists(u"own_Checksums"_s))
        return;
    Transaction transaction(library);
    MakeChecksumTable(library);
    if (hasFormer)
        library.DeleteIndex(u"Items"_s, FormerTree);
    for (const OwnIndex& index : OwnIndexes) {
        if (IsMissing(library, index))
            Append(library, index);
    }
    transaction.Commit();
}

void MakeReplicaIndexes(Database& library)
{
    for (const OwnIndex& index : ReplicaIndexes) {
        if (IsMissing(library, index))
            Append(library, index);
    }
}

void CompleteOwnIndexes(Database& library)
{
    try {
        if (!library.IsReadOnly())
            MakeOwnIndexes(library);
    } catch (const RuntimeError&) {
        // A full disk, or another program that is writing: the library works without, only slower.
    }
}

} // namespace qb
