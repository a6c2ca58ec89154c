#pragma once

#include "platform/system/Date.h"

#include <QHash>
#include <QString>
#include <memory>
#include <vector>

namespace qb {

/// Which way a link leads, seen from an item.
enum class LinkDirection {
    None = 0,  ///< to be removed altogether
    Left = 1,  ///< this item to the other: source to target
    Right = 2, ///< the other item to this one: target to source
    Both = 3,
};

/// The relation of an item to another one, seen from it: a row of `ItemLinks`, and the mirror row
/// where it leads back too.
struct CLink {
    qint64 ID = 0;  ///< of the row (this item, other item); 0: none
    qint64 ID2 = 0; ///< of the mirror row (other item, this item); 0: none
    qint64 LinkedItemId = 0;
    LinkDirection Direction = LinkDirection::None;
    QString Note;           ///< of the row from this item
    Date DateChanged;       ///< of that row; 0 when it has none
    bool DirtyFlag = false; ///< to be written at the next commit
    QString LinkedItemTitle;
};

/// The links of an item, each under the key "L" and the other item's ID, in the order in which they
/// were added.
class CLinks {
public:
    /// The key under which the link to the item of that ID is added, found and removed.
    static QString KeyOf(qint64 otherId) { return u'L' + QString::number(otherId); }

    /// Adds @p link, or a new one when it is null, and returns it. Raises 457 for a key that is there.
    std::shared_ptr<CLink> Add(const QString& key, std::shared_ptr<CLink> link = nullptr);
    /// The link to @p otherId, which leads both ways from now on if it led the other one than
    /// @p direction; null when there is none.
    std::shared_ptr<CLink> AddAutoResolveExisting(qint64 otherId, LinkDirection direction);
    /// Raises 5 for a key that is not there.
    void Remove(const QString& key);
    void Clear();
    /// By key, or by position from 1 when the text is a number; null when there is none.
    std::shared_ptr<CLink> Item(const QString& keyOrNumber) const;
    int Count() const { return int(m_links.size()); }
    /// The links as they stand now, to be gone through while some are removed.
    std::vector<std::shared_ptr<CLink>> All() const { return m_links; }

    bool DirtyFlag = false; ///< a link was changed since the links were loaded

private:
    std::vector<std::shared_ptr<CLink>> m_links;
    QHash<QString, std::shared_ptr<CLink>> m_byKey;
};

} // namespace qb
