#pragma once

#include "find/ReplaceText.h"
#include "platform/system/Work.h"

#include <QAbstractListModel>
#include <QStringList>

namespace qb {

/// What a replacement would change, as a list to choose from: each item with a box for all of it, below it a box for
/// each change. Items that may not be changed are listed with the reason, and can't be chosen.
class ReplacePlan : public QAbstractListModel {
    Q_OBJECT

public:
    struct Row {
        bool IsItem = false;
        size_t Item = 0;   ///< number of the item
        size_t Change = 0; ///< number of the change; of an item that of its first
    };
    struct ItemEntry {
        qint64 Id = 0;
        QString Title;
        QString Reason; ///< why it can't be changed; empty: it can
        size_t Changes = 0;
    };

    using QAbstractListModel::QAbstractListModel;

    /// Reads the items as they stand now; all changes are chosen. What can't be read is listed with the reason. False
    /// when @p work was cancelled: the list is empty then.
    bool Collect(Library& library, const std::vector<qint64>& items, const FindMatcher& matcher,
                 const QString& replacement, Work& work = NoWork());

    const Row& At(const QModelIndex& index) const { return m_rows[size_t(index.row())]; }
    const ItemEntry& ItemOf(const Row& row) const { return m_items[row.Item]; }
    const ReplaceChange& ChangeOf(const Row& row) const { return m_changes[row.Change].What; }
    void ChooseAll(bool chosen);

    /// The changes that are to be made.
    std::vector<ReplaceChange> Chosen() const;
    /// "3 of 4 changes in 2 items".
    QString StatusText() const;

    // QAbstractListModel
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    void ChosenChanged();

private:
    struct Entry {
        ReplaceChange What;
        bool IsChosen = true;
    };

    void Add(Library& library, qint64 id, const FindMatcher& matcher, const QString& replacement);
    Qt::CheckState StateOf(const Row& row) const;

    std::vector<ItemEntry> m_items;
    std::vector<Entry> m_changes;
    std::vector<Row> m_rows;
};

} // namespace qb
