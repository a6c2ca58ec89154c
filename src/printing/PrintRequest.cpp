#include "printing/PrintRequest.h"

#include "store/CCodeItem.h"

namespace qb {

RequestSource::RequestSource(const PrintRequest& request, std::vector<qint64> ids, PrintParts parts)
    : m_request(request), m_gatherer(request.Database, parts), m_ids(std::move(ids))
{
}

PrintedItem RequestSource::Item(size_t index)
{
    if (m_ids[index] == m_request.Item.Key().toLongLong())
        return m_gatherer.Gather(m_request.Item, m_request.PagePath, m_request.Typed);
    return m_gatherer.Gather(m_ids[index]);
}

} // namespace qb
