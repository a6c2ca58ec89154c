#include "exchange/BranchWalk.h"

#include "store/ItemBranch.h"

#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

class BranchWalk {
public:
    explicit BranchWalk(Library& library) : m_library(library) {}

    std::vector<BranchNode> Run(qint64 item)
    {
        if (item != 0) {
            RequireItem(m_library, item);
            Walk(item);
            return m_nodes;
        }
        for (const qint64 top : ChildrenOf(0))
            Walk(top);
        Statement all = m_library.Query(u"SELECT ID FROM Items ORDER BY ID"_s);
        while (all.Step())
            Walk(all.Long(0));
        return m_nodes;
    }

private:
    void Walk(qint64 root)
    {
        std::vector<BranchNode> waiting{{root, 0}};
        while (!waiting.empty()) {
            const BranchNode node = waiting.back();
            waiting.pop_back();
            if (!m_seen.insert(node.Item).second)
                continue;
            m_nodes.push_back(node);
            const std::vector<qint64> children = ChildrenOf(node.Item);
            for (auto child = children.rbegin(); child != children.rend(); ++child)
                waiting.push_back({*child, node.Item});
        }
    }

    std::vector<qint64> ChildrenOf(qint64 item)
    {
        std::vector<qint64> children;
        Statement rows = m_library.Query(u"SELECT ID FROM Items WHERE ParentID = ? ORDER BY Title COLLATE NOCASE, ID"_s,
                                         {item});
        while (rows.Step())
            children.push_back(rows.Long(0));
        return children;
    }

    Library& m_library;
    std::unordered_set<qint64> m_seen;
    std::vector<BranchNode> m_nodes;
};

} // namespace

std::vector<BranchNode> NodesOfBranch(Library& library, qint64 item)
{
    return BranchWalk(library).Run(item);
}

} // namespace qb
