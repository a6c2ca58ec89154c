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
            TreeNode child;
            child.Id = rows.Long(0);
            child.Text = rows.Text(2);
            m_titles.insert(child.Id, child.Text);
            m_ids.push_back(child.Id);
            m_children[rows.Long(1)].push_back(std::move(child));
        }
    }

    void From(qint64 item)
    {
        if (m_titles.contains(item))
            m_waiting.push_back({item, 0, m_titles[item]});
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
        std::vector<TreeNode> children = m_children.value(parent);
        std::sort(children.rbegin(), children.rend(), TitleLess);
        for (const TreeNode& child : children)
            m_waiting.push_back({child.Id, depth, child.Text});
    }

    QHash<qint64, std::vector<TreeNode>> m_children;
    QHash<qint64, QString> m_titles;
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
