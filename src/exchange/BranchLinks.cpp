#include "exchange/BranchLinks.h"

#include "store/Library.h"

namespace qb {

using namespace Qt::StringLiterals;

void AddBranchLink(Library& library, qint64 from, qint64 to, const QString& note, Date added, Date now)
{
    constexpr qint64 Unknown = -1;
    Recordset row = library.OpenRecordset(u"ItemLinks"_s, u"ID = 0"_s);
    row.AddNew();
    row.Set(u"ItemID"_s, from);
    row.Set(u"LinkItemID"_s, to);
    if (library.IsChildReplica()) {
        row.Set(u"MotherItemID"_s, Unknown);
        row.Set(u"MotherLinkItemID"_s, Unknown);
    }
    row.Set(u"Note"_s, note);
    row.Set(u"DateAdded"_s, added);
    row.Set(u"DateUpdated"_s, now);
    row.Update();
}

} // namespace qb
