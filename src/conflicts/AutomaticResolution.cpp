#include "conflicts/AutomaticResolution.h"

#include "platform/richtext/Rtf.h"
#include "platform/system/RuntimeError.h"
#include "store/CDBCreate.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QStringList RichColumns = {u"Code"_s, u"Example"_s, u"Notes"_s};

/// Conflicts whose columns and files are the same, whatever their rich texts are. Files are compared in both
/// directions, so that none of two of one name is lost.
const QString Candidates = u"SELECT i.ID, i.Title, %1, coalesce(i.ItemStatus, 0) <> coalesce(t.ItemStatus, 0), "
                           "coalesce(i.ItemRating, 0) <> coalesce(t.ItemRating, 0), "
                           "coalesce(i.HTMLPage, 0) <> coalesce(t.HTMLPage, 0), "
                           "coalesce(i.ParentID, 0) <> coalesce(t.ParentID, 0) "
                           "FROM TempItems t JOIN Items i ON i.ID = t.ID "
                           "WHERE coalesce(i.HTMLLastUpdated, 0) = coalesce(t.HTMLLastUpdated, 0) AND %2 "
                           "AND (SELECT count(*) FROM Files f WHERE f.CodeID = t.ID) "
                           "= (SELECT count(*) FROM TempFiles f WHERE f.CodeID = t.ID) "
                           "AND NOT EXISTS (SELECT 1 FROM Files f WHERE f.CodeID = t.ID AND NOT EXISTS "
                           "(SELECT 1 FROM TempFiles g WHERE g.CodeID = t.ID AND %3)) "
                           "AND NOT EXISTS (SELECT 1 FROM TempFiles f WHERE f.CodeID = t.ID AND NOT EXISTS "
                           "(SELECT 1 FROM Files g WHERE g.CodeID = t.ID AND %3))"_s;
const QString SameFile = u"g.Title IS f.Title AND g.DateAdded IS f.DateAdded AND coalesce(g.Description, '') = "
                         "coalesce(f.Description, '')"_s;

/// Letters count as they are, although the columns compare without case: what coalesce gives does not.
QString SameText(const QString& column)
{
    return u"coalesce(i.%1, '') = coalesce(t.%1, '')"_s.arg(column);
}

QString CandidatesStatement()
{
    QStringList rich;
    for (const QString& column : RichColumns)
        rich << SameText(column);
    QStringList plain;
    for (const QString& column : {u"Title"_s, u"Description"_s, u"Info"_s})
        plain << SameText(column);
    return Candidates.arg(rich.join(u", "_s), plain.join(u" AND "_s), SameFile);
}

bool IsSamePlainText(Library& library, qint64 item, const QString& column)
{
    Statement row = library.Query(
        u"SELECT i.%1, t.%1 FROM Items i JOIN TempItems t ON t.ID = i.ID WHERE i.ID = ?"_s.arg(column), {item});
    return row.Step() && PlainTextFromRtf(row.Text(0)) == PlainTextFromRtf(row.Text(1));
}

/// Conflicts that are none. Rich texts are read for those only that differ in nothing else.
std::vector<SettledConflict> FindSettled(Library& library)
{
    struct Candidate {
        SettledConflict Conflict;
        QStringList Unequal; ///< columns of rich text
    };
    std::vector<Candidate> candidates;
    Statement row = library.Query(CandidatesStatement());
    while (row.Step()) {
        Candidate& candidate = candidates.emplace_back();
        candidate.Conflict = {.Item = row.Long(0), .Title = row.Text(1), .Dropped = {}};
        for (int i = 0; i < RichColumns.size(); ++i) {
            if (row.Long(2 + i) == 0)
                candidate.Unequal << RichColumns[i];
        }
        const QStringList others{u"status"_s, u"rating"_s, u"page flag"_s, u"place"_s};
        for (int i = 0; i < others.size(); ++i) {
            if (row.Long(5 + i) != 0)
                candidate.Conflict.Dropped << others[i];
        }
    }
    std::vector<SettledConflict> settled;
    for (Candidate& candidate : candidates) {
        const bool isSame = std::all_of(candidate.Unequal.begin(), candidate.Unequal.end(), [&](const QString& column) {
            return IsSamePlainText(library, candidate.Conflict.Item, column);
        });
        if (!candidate.Unequal.isEmpty())
            candidate.Conflict.Dropped.prepend(u"looks"_s);
        if (isSame)
            settled.push_back(std::move(candidate.Conflict));
    }
    return settled;
}

QString ListOf(const std::vector<SettledConflict>& settled, bool onlyWithLoss)
{
    QStringList ids;
    for (const SettledConflict& conflict : settled) {
        if (!onlyWithLoss || !conflict.Dropped.isEmpty())
            ids << QString::number(conflict.Item);
    }
    return ids.join(u", "_s);
}

void Remove(Library& library, const std::vector<SettledConflict>& settled, DiscardedVersions& discarded)
{
    if (const QString lost = ListOf(settled, true); !lost.isEmpty())
        discarded.AddTemporary(
            u"r.ID IN (%1)"_s.arg(lost), {},
            u"The other version says the same, and differs in looks, status, rating or place only"_s);
    const QString all = ListOf(settled, false);
    library.Execute(u"DELETE FROM TempFiles WHERE CodeID IN (%1)"_s.arg(all));
    library.Execute(u"DELETE FROM TempHTMLFiles WHERE ItemIDRef IN (%1)"_s.arg(all));
    library.Execute(u"DELETE FROM TempItems WHERE ID IN (%1)"_s.arg(all));
}

} // namespace

QString SummaryOf(const AutomaticResolution& resolution)
{
    if (resolution.Settled.empty())
        return {};
    const auto kept = std::count_if(resolution.Settled.begin(), resolution.Settled.end(),
                                    [](const SettledConflict& one) { return !one.Dropped.isEmpty(); });
    const QString summary = resolution.Settled.size() == 1
                                ? u"1 conflict resolved automatically"_s
                                : u"%1 conflicts resolved automatically"_s.arg(resolution.Settled.size());
    if (kept == 0)
        return summary;
    return summary
           + u"; %1 of the other versions %2 in the removed items"_s.arg(QString::number(kept),
                                                                         kept == 1 ? u"is"_s : u"are"_s);
}

AutomaticResolution ResolveAutomatically(Library& library, const DiscardInto& discardInto)
{
    if (!library.TableExists(u"TempItems"_s))
        return {};
    const std::unique_ptr<DiscardedVersions> discarded = discardInto(library, DiscardKind::Decided);
    AutomaticResolution result;
    Transaction transaction(library);
    result.Settled = FindSettled(library);
    if (!result.Settled.empty())
        Remove(library, result.Settled, *discarded);
    result.Remaining = library.QueryValue(u"SELECT count(*) FROM TempItems"_s).ToLong();
    discarded->Note();
    transaction.Commit();
    discarded->Place();
    return result;
}

qint64 DiscardAllConflicts(Library& library, const DiscardInto& discardInto)
{
    if (!library.TableExists(u"TempItems"_s))
        return 0;
    const std::unique_ptr<DiscardedVersions> discarded = discardInto(library, DiscardKind::AllDiscarded);
    Transaction transaction(library);
    const qint64 count = library.QueryValue(u"SELECT count(*) FROM TempItems"_s).ToLong();
    if (count > 0)
        discarded->AddTemporary(u"1"_s, {}, u"All conflicts were discarded"_s);
    if (library.TableExists(u"TempHTMLFiles"_s))
        library.Execute(u"DELETE FROM TempHTMLFiles"_s);
    if (!CDBCreate().RemoveTemporaryTablesFromMainDB(library))
        throw RuntimeError(ErrorNumber::Engine, u"The conflicts could not be discarded; nothing was changed."_s,
                           u"DiscardAllConflicts"_s);
    discarded->Note();
    transaction.Commit();
    discarded->Place();
    return count;
}

bool AutomaticResolveProblems(Library& library, AutomaticResolution* result, const DiscardInto& discardInto)
{
    return Guarded(
        u"frmConflicts"_s, u"AutomaticResolveProblems"_s,
        [&] {
            AutomaticResolution found = ResolveAutomatically(library, discardInto);
            const bool remain = found.Remaining > 0;
            if (result)
                *result = std::move(found);
            return remain;
        },
        true);
}

} // namespace qb
