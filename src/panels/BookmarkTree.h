#pragma once

#include "store/Bookmarks.h"

#include <QAbstractItemModel>
#include <QHash>

namespace qb {

/// The bookmarks of a library under their groups, as they were read. A sorted column sorts groups by their names
/// and bookmarks within their groups; without one all stand in the order in which they were made.
class BookmarkTree : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { ItemColumn, DescriptionColumn, ColumnCount };
    enum Role {
        KeyRole = Qt::UserRole, ///< a bookmark's ID and "B", a group's ID and "G"
        ImageRole,              ///< the image's key
    };

    using QAbstractItemModel::QAbstractItemModel;

    /// Shows these; what they are sorted by stays. Bookmarks without a group that is there have one without a name.
    void Show(std::vector<BookmarkGroup> groups, std::vector<BookmarkRow> bookmarks);
    void Clear() { Show({}, {}); }
    int BookmarkCount() const { return m_count; }
    /// The item has another title.
    void SetTitle(qint64 item, const QString& title);

    // What stands at a place; 0 where there is no such thing, as the bookmark of a group
    qint64 BookmarkAt(const QModelIndex& index) const;
    qint64 ItemAt(const QModelIndex& index) const;
    /// The group itself, or that of the bookmark.
    qint64 GroupAt(const QModelIndex& index) const;
    QString GroupName(qint64 group) const;

    /// The first bookmark of an item, from the top; invalid when it has none.
    QModelIndex FindBookmark(qint64 item) const;
    /// The place of a key; invalid when it is not there.
    QModelIndex IndexOfKey(const QString& key) const;
    static QString KeyOfBookmark(qint64 id) { return QString::number(id) + u'B'; }
    static QString KeyOfGroup(qint64 id) { return QString::number(id) + u'G'; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// A column of -1 brings back the order in which they were made.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // A bookmark is dragged to another group: onto it, or onto one of its bookmarks or between them.
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

Q_SIGNALS:
    /// A bookmark was dropped on another group; the rows are as they were.
    void MoveAsked(qint64 bookmark, qint64 group);

private:
    struct Group {
        BookmarkGroup Self;
        std::vector<BookmarkRow> Bookmarks;
    };
    bool IsGroup(const QModelIndex& index) const { return index.isValid() && index.internalId() == 0; }
    const Group& GroupOf(const QModelIndex& index) const;
    const BookmarkRow* RowAt(const QModelIndex& index) const;
    QModelIndex Dragged(const QMimeData& data) const;
    QVariant GroupData(const Group& group, int column, int role) const;
    QVariant RowData(const BookmarkRow& row, int column, int role) const;
    void SortRows();
    QModelIndex Find(bool (*fits)(const BookmarkRow& row, qint64 wanted), qint64 wanted) const;

    std::vector<Group> m_groups;
    int m_count = 0;
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};

} // namespace qb
