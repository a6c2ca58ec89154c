#pragma once

#include "find/FindSegment.h"

#include <memory>
#include <optional>
#include <vector>

namespace qb {

/// All texts of a library as they were at one moment; never changes, so a search goes on undisturbed while the library
/// does. What came later lies in later layers and hides what earlier ones say of the same items.
class FindSnapshot {
public:
    struct Layer {
        std::shared_ptr<const FindSegment> Segment;
        std::vector<bool> Hidden; ///< by item: a later layer has it, or it is gone
    };
    /// An item by the numbers of its layer and of it in the layer's segment.
    struct Place {
        quint32 Layer;
        quint32 Item;
    };

    FindSnapshot() = default;
    /// The earliest segment comes first. @p language is that of the library.
    FindSnapshot(std::vector<std::shared_ptr<const FindSegment>> segments, QString language);
    /// The same with one more.
    std::shared_ptr<const FindSnapshot> With(std::shared_ptr<const FindSegment> segment) const;

    /// The same with another one in the place of the last, which hides all that the last one did.
    std::shared_ptr<const FindSnapshot> WithLastReplaced(std::shared_ptr<const FindSegment> segment) const;
    /// The same with another language of the library.
    std::shared_ptr<const FindSnapshot> WithLanguage(const QString& language) const;

    const std::vector<Layer>& Layers() const { return m_layers; }
    const QString& Language() const { return m_language; }
    size_t Items() const { return m_items; }
    /// A file that texts lie in was cut short: what was found is not to be trusted.
    bool IsDamaged() const;

    std::optional<Place> Find(qint64 id) const;
    const FindSegment& SegmentOf(Place place) const { return *m_layers[place.Layer].Segment; }
    const FindItem& Item(Place place) const { return SegmentOf(place).All().Items[place.Item].Item; }
    QString Title(Place place) const;
    /// The language that the item's code is in.
    const QString& LanguageOf(Place place) const;
    /// All items, in no order.
    std::vector<Place> Places() const;
    /// The IDs of an item and all below it, sorted; empty when there is no such item. Whoever stands below themselves
    /// is walked once.
    std::vector<qint64> Branch(qint64 id) const;

private:
    void Hide(qint64 id, size_t layers);
    void Add(std::shared_ptr<const FindSegment> segment);

    std::vector<Layer> m_layers;
    QString m_language;
    size_t m_items = 0;
};

} // namespace qb
