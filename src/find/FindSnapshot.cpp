#include "find/FindSnapshot.h"

#include <algorithm>
#include <unordered_map>

namespace qb {

FindSnapshot::FindSnapshot(std::vector<std::shared_ptr<const FindSegment>> segments, QString language)
    : m_language(std::move(language))
{
    for (std::shared_ptr<const FindSegment>& segment : segments)
        Add(std::move(segment));
}

std::shared_ptr<const FindSnapshot> FindSnapshot::With(std::shared_ptr<const FindSegment> segment) const
{
    auto more = std::make_shared<FindSnapshot>(*this);
    more->Add(std::move(segment));
    return more;
}

std::shared_ptr<const FindSnapshot> FindSnapshot::WithLastReplaced(std::shared_ptr<const FindSegment> segment) const
{
    auto other = std::make_shared<FindSnapshot>(*this);
    const std::vector<bool>& hidden = other->m_layers.back().Hidden;
    other->m_items -= size_t(std::count(hidden.begin(), hidden.end(), false));
    other->m_layers.pop_back();
    other->Add(std::move(segment));
    return other;
}

std::shared_ptr<const FindSnapshot> FindSnapshot::WithLanguage(const QString& language) const
{
    auto other = std::make_shared<FindSnapshot>(*this);
    other->m_language = language;
    return other;
}

void FindSnapshot::Hide(qint64 id, size_t layers)
{
    for (size_t i = 0; i < layers; ++i) {
        const std::optional<quint32> item = m_layers[i].Segment->NumberOf(id);
        if (item && !m_layers[i].Hidden[*item]) {
            m_layers[i].Hidden[*item] = true;
            --m_items;
        }
    }
}

void FindSnapshot::Add(std::shared_ptr<const FindSegment> segment)
{
    const size_t earlier = m_layers.size();
    for (const qint64 gone : segment->All().Gone)
        Hide(gone, earlier);
    if (earlier > 0) {
        for (const SegmentItem& item : segment->All().Items)
            Hide(item.Item.Id, earlier);
    }
    m_items += segment->All().Items.size();
    m_layers.push_back({segment, std::vector<bool>(segment->All().Items.size())});
}

bool FindSnapshot::IsDamaged() const
{
    return std::any_of(m_layers.begin(), m_layers.end(), [](const Layer& layer) { return layer.Segment->IsDamaged(); });
}

std::optional<FindSnapshot::Place> FindSnapshot::Find(qint64 id) const
{
    for (size_t i = m_layers.size(); i-- > 0;) {
        const std::optional<quint32> item = m_layers[i].Segment->NumberOf(id);
        if (item && !m_layers[i].Hidden[*item])
            return Place{quint32(i), *item};
    }
    return {};
}

QString FindSnapshot::Title(Place place) const
{
    return QString::fromUtf8(SegmentOf(place).TitleOf(place.Item));
}

const QString& FindSnapshot::LanguageOf(Place place) const
{
    const QString& own = SegmentOf(place).LanguageOf(place.Item);
    return own.isEmpty() ? m_language : own;
}

std::vector<FindSnapshot::Place> FindSnapshot::Places() const
{
    std::vector<Place> places;
    places.reserve(m_items);
    for (size_t i = 0; i < m_layers.size(); ++i) {
        for (size_t item = 0; item < m_layers[i].Hidden.size(); ++item) {
            if (!m_layers[i].Hidden[item])
                places.push_back({quint32(i), quint32(item)});
        }
    }
    return places;
}

std::vector<qint64> FindSnapshot::Branch(qint64 id) const
{
    if (!Find(id))
        return {};
    std::unordered_multimap<qint64, qint64> children;
    children.reserve(m_items);
    for (const Place place : Places())
        children.emplace(Item(place).Parent, Item(place).Id);
    std::vector<qint64> branch;
    std::vector<qint64> waiting{id};
    while (!waiting.empty()) {
        const qint64 at = waiting.back();
        waiting.pop_back();
        branch.push_back(at);
        const auto [begin, end] = children.equal_range(at);
        for (auto child = begin; child != end; ++child)
            waiting.push_back(child->second);
        children.erase(begin, end);
    }
    std::sort(branch.begin(), branch.end());
    branch.erase(std::unique(branch.begin(), branch.end()), branch.end());
    return branch;
}

} // namespace qb
