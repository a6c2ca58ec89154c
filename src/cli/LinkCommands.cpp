// Links between items.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "store/CCodeItem.h"
#include "store/ItemRules.h"
#include "support/ErrorRoutine.h"

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

/// An item that is there; raises an error else.
std::unique_ptr<CCodeItem> OpenItem(Library& database, qint64 id)
{
    if (database.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {id}).IsNull())
        throw RuntimeError(ErrorNumber::ItemNotFound, u"There is no item %1; nothing was changed."_s.arg(id),
                           u"link"_s);
    auto item = std::make_unique<CCodeItem>();
    item->Initialise(database, QString::number(id));
    item->Links();
    if (item->ReadFailed())
        throw RuntimeError(ErrorNumber::NoCurrentRecord, u"The item %1 can't be read; nothing was changed."_s.arg(id),
                           u"link"_s);
    return item;
}

/// Writes the changed links; 1 when that failed, which has been reported.
int CommitLinks(CCodeItem& item, Transaction& transaction)
{
    item.SetLinksChanged(true);
    if (!item.Commit())
        return 1;
    transaction.Commit();
    return 0;
}

QString DirectionText(LinkDirection direction)
{
    return direction == LinkDirection::Both ? u"both"_s : u"to"_s;
}

} // namespace

int Link(const QStringList& words)
{
    const Arguments arguments(words, {{"two-way", ""}, {"note", "text"}}, 3);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const qint64 other = arguments.Id(2);
    if (arguments.Id(1) == other)
        throw UsageError{u"An item can be linked with another item only."_s};
    Transaction transaction(*database);
    RequireChange(*database, arguments.Id(1), {ItemChange::EditUnasked, ItemChange::Link});
    const auto item = OpenItem(*database, arguments.Id(1));
    OpenItem(*database, other);
    const QString key = CLinks::KeyOf(other);
    std::shared_ptr<CLink> link = item->Links().Item(key);
    const bool twoWay = arguments.Has(u"two-way"_s);
    if (link && (!twoWay || link->Direction == LinkDirection::Both) && !arguments.Has(u"note"_s))
        throw RuntimeError(ErrorNumber::KeyExists, u"This link already exists."_s, u"link"_s);
    if (!link) {
        link = item->Links().Add(key);
        link->LinkedItemId = other;
        link->Direction = LinkDirection::Left;
    }
    if (twoWay)
        link->Direction = LinkDirection::Both;
    if (arguments.Has(u"note"_s))
        link->Note = arguments.Value(u"note"_s);
    link->DirtyFlag = true;
    return CommitLinks(*item, transaction);
}

int Links(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const auto item = OpenItem(*database, arguments.Id(1));
    QJsonArray all;
    for (const std::shared_ptr<CLink>& link : item->Links().All()) {
        if (arguments.Json())
            all.append(QJsonObject{{u"item"_s, link->LinkedItemId},
                                   {u"title"_s, link->LinkedItemTitle},
                                   {u"direction"_s, DirectionText(link->Direction)},
                                   {u"note"_s, link->Note}});
        else
            Print(u"%1\t%2\t%3\t%4\n"_s.arg(QString::number(link->LinkedItemId), DirectionText(link->Direction),
                                            link->LinkedItemTitle,
                                            QString(link->Note).replace(u'\n', u' ').remove(u'\r')));
    }
    if (arguments.Json())
        Print(all);
    return 0;
}

int Unlink(const QStringList& words)
{
    const Arguments arguments(words, {{"side", "left|right|both"}}, 3);
    const QString side = arguments.Has(u"side"_s) ? arguments.Value(u"side"_s) : u"both"_s;
    static const QHash<QString, LinkDirection> remains{
        {u"left"_s, LinkDirection::Right}, {u"right"_s, LinkDirection::Left}, {u"both"_s, LinkDirection::None}};
    if (!remains.contains(side))
        throw UsageError{u"Unknown side '%1': left, right or both."_s.arg(side)};
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    Transaction transaction(*database);
    RequireChange(*database, arguments.Id(1), {ItemChange::EditUnasked});
    const auto item = OpenItem(*database, arguments.Id(1));
    const std::shared_ptr<CLink> link = item->Links().Item(CLinks::KeyOf(arguments.Id(2)));
    if (!link)
        throw RuntimeError(
            ErrorNumber::ItemNotFound,
            u"The item %1 has no link to %2; nothing was changed."_s.arg(arguments.Id(1)).arg(arguments.Id(2)),
            u"unlink"_s);
    if (side != u"both"_s && link->Direction != LinkDirection::Both)
        throw RuntimeError(ErrorNumber::InvalidCall, u"The link has one side only; nothing was changed."_s,
                           u"unlink"_s);
    link->Direction = remains[side];
    link->DirtyFlag = true;
    return CommitLinks(*item, transaction);
}

} // namespace qb::cli
