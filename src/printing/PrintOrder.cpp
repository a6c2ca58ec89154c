#include "printing/PrintOrder.h"

#include "panels/TreeNodes.h"

#include <QHash>
#include <QSet>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Walks down from items, each once.
class Walk {
public:
    explicit Walk(Library& library)
    {
        Statement rows = library.Query(u"SELECT ID, ParentID, Title FROM Items ORDER BY ID"_s);
        while (rows.Step()) {
            const qint64 id = rows.Long(0);
            m_titles.insert(id, rows.RawText(2).toByteArray());
            m_ids.push_back(id);
            m_children[rows.Long(1)].push_back(id);
        }
    }

    void From(qint64 item)
    {
        if (m_titles.contains(item))
            Wait(item, 0);
        while (!m_waiting.empty()) {
            const OutlinedForPrint next = m_waiting.back();
            m_waiting.pop_back();
            if (m_seen.contains(next.Id))
                continue;
            m_seen.insert(next.Id);
            m_outline.push_back(next);
            WaitFor(next.Id, next.Depth + 1);
        }
    }

    void FromRoot()
    {
        WaitFor(0, 0);
        From(0);
        for (const qint64 lost : m_ids)
            From(lost);
    }

    std::vector<OutlinedForPrint> Outline() && { return std::move(m_outline); }

private:
    /// The last of the tree first.
    void WaitFor(qint64 parent, int depth)
    {
        const auto titled = [this](qint64 id) { return TitledItem{*m_titles.constFind(id), id}; };
        std::vector<qint64> children = m_children.value(parent);
        std::sort(children.rbegin(), children.rend(),
                  [&titled](qint64 left, qint64 right) { return TitleLess(titled(left), titled(right)); });
        for (const qint64 child : children)
            Wait(child, depth);
    }
    void Wait(qint64 id, int depth) { m_waiting.push_back({id, depth, QString::fromUtf8(m_titles[id])}); }

    QHash<qint64, std::vector<qint64>> m_children;
    QHash<qint64, QByteArray> m_titles; ///< in UTF-8
    std::vector<qint64> m_ids;
    std::vector<OutlinedForPrint> m_waiting;
    QSet<qint64> m_seen;
    std::vector<OutlinedForPrint> m_outline;
};

} // namespace

std::vector<OutlinedForPrint> PrintOutline(Library& library, qint64 item)
{
    Walk walk(library);
    if (item == 0)
        walk.FromRoot();
    else
        walk.From(item);
    return std::move(walk).Outline();
}

std::vector<qint64> PrintOrder(Library& library, qint64 item)
{
    std::vector<qint64> ids;
    for (const OutlinedForPrint& one : PrintOutline(library, item))
        ids.push_back(one.Id);
    return ids;
}

} // namespace qb
