#include "store/CLinks.h"

#include "platform/system/RuntimeError.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

std::shared_ptr<CLink> CLinks::Add(const QString& key, std::shared_ptr<CLink> link)
{
    if (m_byKey.contains(key))
        throw RuntimeError(ErrorNumber::KeyExists,
                           u"This key is already associated with an element of this collection."_s, u"CLinks::Add"_s);
    if (!link)
        link = std::make_shared<CLink>();
    m_links.push_back(link);
    m_byKey.insert(key, link);
    return link;
}

std::shared_ptr<CLink> CLinks::AddAutoResolveExisting(qint64 otherId, LinkDirection direction)
{
    const std::shared_ptr<CLink> link = m_byKey.value(KeyOf(otherId));
    if (!link)
        return nullptr;
    if (link->Direction != direction
        && (link->Direction == LinkDirection::Left || link->Direction == LinkDirection::Right))
        link->Direction = LinkDirection::Both;
    return link;
}

void CLinks::Remove(const QString& key)
{
    const std::shared_ptr<CLink> link = m_byKey.take(key);
    if (!link)
        throw RuntimeError(ErrorNumber::InvalidCall, u"There is no link '%1'."_s.arg(key), u"CLinks::Remove"_s);
    m_links.erase(std::find(m_links.begin(), m_links.end(), link));
}

void CLinks::Clear()
{
    m_links.clear();
    m_byKey.clear();
    DirtyFlag = false;
}

std::shared_ptr<CLink> CLinks::Item(const QString& keyOrNumber) const
{
    bool isNumber = false;
    const int position = keyOrNumber.toInt(&isNumber);
    if (!isNumber)
        return m_byKey.value(keyOrNumber);
    return position >= 1 && position <= Count() ? m_links[size_t(position) - 1] : nullptr;
}

} // namespace qb
