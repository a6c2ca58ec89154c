#include "panels/BookmarkTree.h"

#include <QCollator>
#include <QMimeData>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
const QString BookmarkFormat = u"application/x-quillbase-bookmark"_s;
}

// A place holds 0 for a group, and the number of its group plus one for a bookmark.

void BookmarkTree::Show(std::vector<BookmarkGroup> groups, std::vector<BookmarkRow> bookmarks)
{
    beginResetModel();
    m_groups.clear();
    m_count = int(bookmarks.size());
    QHash<qint64, size_t> places;
    const auto add = [&](BookmarkGroup group) {
        places.insert(group.Id, m_groups.size());
        m_groups.push_back({std::move(group), {}});
    };
    for (BookmarkGroup& group : groups)
        add(std::move(group));
    for (BookmarkRow& bookmark : bookmarks) {
        if (!places.contains(bookmark.Group))
            add({bookmark.Group, {}}); // of a damaged library
        m_groups[places[bookmark.Group]].Bookmarks.push_back(std::move(bookmark));
    }
    SortRows();
    endResetModel();
}

void BookmarkTree::SetTitle(qint64 item, const QString& title)
{
    for (int i = 0; i < int(m_groups.size()); ++i) {
        std::vector<BookmarkRow>& rows = m_groups[size_t(i)].Bookmarks;
        for (int row = 0; row < int(rows.size()); ++row) {
            if (rows[size_t(row)].Item != item || rows[size_t(row)].Title == title)
                continue;
            rows[size_t(row)].Title = title;
            const QModelIndex place = index(row, ItemColumn, index(i, 0));
            Q_EMIT dataChanged(place, place);
        }
    }
}

// Places

const BookmarkTree::Group& BookmarkTree::GroupOf(const QModelIndex& index) const
{
    return m_groups[IsGroup(index) ? size_t(index.row()) : size_t(index.internalId()) - 1];
}

const BookmarkRow* BookmarkTree::RowAt(const QModelIndex& index) const
{
    return index.isValid() && !IsGroup(index) ? &GroupOf(index).Bookmarks[size_t(index.row())] : nullptr;
}

qint64 BookmarkTree::BookmarkAt(const QModelIndex& index) const
{
    const BookmarkRow* row = RowAt(index);
    return row ? row->Id : 0;
}

qint64 BookmarkTree::ItemAt(const QModelIndex& index) const
{
    const BookmarkRow* row = RowAt(index);
    return row ? row->Item : 0;
}

qint64 BookmarkTree::GroupAt(const QModelIndex& index) const
{
    return index.isValid() ? GroupOf(index).Self.Id : 0;
}

QString BookmarkTree::GroupName(qint64 group) const
{
    const auto found = std::find_if(m_groups.begin(), m_groups.end(),
                                    [group](const Group& one) { return one.Self.Id == group; });
    return found == m_groups.end() ? QString() : found->Self.Name;
}

QModelIndex BookmarkTree::Find(bool (*fits)(const BookmarkRow& row, qint64 wanted), qint64 wanted) const
{
    for (size_t i = 0; i < m_groups.size(); ++i) {
        const std::vector<BookmarkRow>& rows = m_groups[i].Bookmarks;
        const auto found = std::find_if(rows.begin(), rows.end(),
                                        [&](const BookmarkRow& row) { return fits(row, wanted); });
        if (found != rows.end())
            return createIndex(int(found - rows.begin()), 0, quintptr(i + 1));
    }
    return {};
}

QModelIndex BookmarkTree::FindBookmark(qint64 item) const
{
    return Find([](const BookmarkRow& row, qint64 wanted) { return row.Item == wanted; }, item);
}

QModelIndex BookmarkTree::IndexOfKey(const QString& key) const
{
    const qint64 id = key.chopped(qMin(key.size(), qsizetype(1))).toLongLong();
    if (key.endsWith(u'B'))
        return Find([](const BookmarkRow& row, qint64 wanted) { return row.Id == wanted; }, id);
    const auto group = std::find_if(m_groups.begin(), m_groups.end(),
                                    [id](const Group& one) { return one.Self.Id == id; });
    const bool found = key.endsWith(u'G') && group != m_groups.end();
    return found ? createIndex(int(group - m_groups.begin()), 0, quintptr(0)) : QModelIndex();
}

// The model

QModelIndex BookmarkTree::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, parent.isValid() ? quintptr(parent.row()) + 1 : quintptr(0));
}

QModelIndex BookmarkTree::parent(const QModelIndex& child) const
{
    if (!child.isValid() || IsGroup(child))
        return {};
    return createIndex(int(child.internalId()) - 1, 0, quintptr(0));
}

int BookmarkTree::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(m_groups.size());
    return IsGroup(parent) && parent.column() == 0 ? int(GroupOf(parent).Bookmarks.size()) : 0;
}

int BookmarkTree::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant BookmarkTree::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    return section == ItemColumn ? u"Code Section"_s : u"Bookmark Description"_s;
}

QVariant BookmarkTree::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const BookmarkRow* row = RowAt(index);
    return row ? RowData(*row, index.column(), role) : GroupData(GroupOf(index), index.column(), role);
}

QVariant BookmarkTree::GroupData(const Group& group, int column, int role) const
{
    if (role == KeyRole)
        return KeyOfGroup(group.Self.Id);
    if (column != ItemColumn)
        return {};
    if (role == ImageRole)
        return u"BOOKMARK_GROUP"_s;
    if (role != Qt::DisplayRole)
        return {};
    const QString name = group.Self.Name.isEmpty() ? u"(no group)"_s : group.Self.Name;
    return u"%1 (%2)"_s.arg(name).arg(group.Bookmarks.size());
}

QVariant BookmarkTree::RowData(const BookmarkRow& row, int column, int role) const
{
    if (role == KeyRole)
        return KeyOfBookmark(row.Id);
    if (role == ImageRole)
        return column == ItemColumn ? u"BOOKMARKED_ITEM"_s : QVariant();
    if (role == Qt::ToolTipRole)
        return row.Description;
    if (role != Qt::DisplayRole)
        return {};
    return column == ItemColumn ? row.Title : BookmarkInOneLine(row.Description);
}

// Sorting

void BookmarkTree::sort(int column, Qt::SortOrder order)
{
    if (column == m_sortColumn && order == m_sortOrder)
        return;
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    QStringList keys;
    for (const QModelIndex& place : before)
        keys << place.data(KeyRole).toString();
    m_sortColumn = column;
    m_sortOrder = order;
    SortRows();
    QModelIndexList after;
    for (qsizetype i = 0; i < before.size(); ++i)
        after << IndexOfKey(keys[i]).siblingAtColumn(before[i].column());
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

/// As people sort: by the language of the user, numbers by their value, and capitals beside small letters.
void BookmarkTree::SortRows()
{
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    const auto byText = [&](const QString& left, const QString& right, qint64 leftId, qint64 rightId) {
        const int order = collator.compare(left, right);
        if (order == 0 || m_sortColumn < 0)
            return leftId < rightId;
        return m_sortOrder == Qt::AscendingOrder ? order < 0 : order > 0;
    };
    const bool byGroup = m_sortColumn == ItemColumn;
    std::sort(m_groups.begin(), m_groups.end(), [&](const Group& left, const Group& right) {
        return byGroup ? byText(left.Self.Name, right.Self.Name, left.Self.Id, right.Self.Id)
                       : left.Self.Id < right.Self.Id;
    });
    QString BookmarkRow::*const text = m_sortColumn == DescriptionColumn ? &BookmarkRow::Description
                                                                         : &BookmarkRow::Title;
    for (Group& group : m_groups) {
        std::sort(group.Bookmarks.begin(), group.Bookmarks.end(),
                  [&](const BookmarkRow& left, const BookmarkRow& right) {
                      return byText(left.*text, right.*text, left.Id, right.Id);
                  });
    }
}

// Dragging

Qt::ItemFlags BookmarkTree::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (!index.isValid())
        return flags;
    return flags | Qt::ItemIsDropEnabled | (IsGroup(index) ? Qt::NoItemFlags : Qt::ItemIsDragEnabled);
}

QStringList BookmarkTree::mimeTypes() const
{
    return {BookmarkFormat};
}

QMimeData* BookmarkTree::mimeData(const QModelIndexList& indexes) const
{
    const QString key = indexes.isEmpty() ? QString() : indexes.first().data(KeyRole).toString();
    auto* data = new QMimeData;
    data->setData(BookmarkFormat, key.toUtf8());
    return data;
}

QModelIndex BookmarkTree::Dragged(const QMimeData& data) const
{
    return IndexOfKey(QString::fromUtf8(data.data(BookmarkFormat)));
}

bool BookmarkTree::canDropMimeData(const QMimeData* data, Qt::DropAction action, int, int,
                                   const QModelIndex& parent) const
{
    const QModelIndex dragged = Dragged(*data);
    return action == Qt::MoveAction && parent.isValid() && BookmarkAt(dragged) != 0
           && GroupAt(dragged) != GroupAt(parent);
}

bool BookmarkTree::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                                const QModelIndex& parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    Q_EMIT MoveAsked(BookmarkAt(Dragged(*data)), GroupAt(parent));
    return true;
}

} // namespace qb
