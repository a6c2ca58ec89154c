#pragma once

#include <QAbstractTableModel>

namespace qb {

class KeywordDefiner;

/// The words of a language as a grid: the mark of the current row, the word, and whether it is
/// coloured. One empty row stands below the last word.
class KeywordGridModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { SelectorColumn, KeywordColumn, ColouredColumn, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void SetDefiner(const KeywordDefiner* definer);
    /// All rows are other ones.
    void Refill();
    /// A word was changed, added or taken away by an edit of @p row.
    void RowEdited(int row);
    void SetCurrentRow(int row);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    const KeywordDefiner* m_definer = nullptr;
    int m_rows = 0; ///< that the view knows of
    int m_current = -1;
};

} // namespace qb
