#include "session/ui/KeywordGridModel.h"

#include "store/KeywordDefiner.h"
#include "support/ui/Icons.h"

#include <cstdlib>

namespace qb {

using namespace Qt::StringLiterals;

void KeywordGridModel::SetDefiner(const KeywordDefiner* definer)
{
    m_definer = definer;
    m_current = -1;
    Refill();
}

void KeywordGridModel::Refill()
{
    beginResetModel();
    m_rows = m_definer ? m_definer->RowCount() : 0;
    endResetModel();
}

void KeywordGridModel::RowEdited(int row)
{
    const int rows = m_definer->RowCount();
    if (std::abs(rows - m_rows) > 1)
        return Refill(); // it was more than this edit
    if (rows > m_rows) {
        beginInsertRows({}, m_rows, rows - 1);
        m_rows = rows;
        endInsertRows();
    } else if (rows < m_rows) {
        beginRemoveRows({}, row, row);
        m_rows = rows;
        endRemoveRows();
    }
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void KeywordGridModel::SetCurrentRow(int row)
{
    const int before = std::exchange(m_current, row);
    for (const int changed : {before, row}) {
        if (changed >= 0 && changed < m_rows)
            Q_EMIT dataChanged(index(changed, SelectorColumn), index(changed, SelectorColumn));
    }
}

int KeywordGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int KeywordGridModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant KeywordGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    static const QString headers[ColumnCount] = {QString(), u"Keyword"_s, u"Coloured"_s};
    return headers[section];
}

/// The mark of the current row is no part of what is selected.
Qt::ItemFlags KeywordGridModel::flags(const QModelIndex& index) const
{
    return index.column() == SelectorColumn ? Qt::ItemIsEnabled : QAbstractTableModel::flags(index);
}

QVariant KeywordGridModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !m_definer)
        return {};
    const int row = index.row();
    const bool isWord = row < m_definer->RowCount() - 1;
    if (role == Qt::DisplayRole && index.column() == KeywordColumn)
        return m_definer->Word(row);
    if (role == Qt::DecorationRole && index.column() == ColouredColumn && m_definer->Coloured(row))
        return IconNamed(u"imgChecked"_s);
    if (role == Qt::DecorationRole && index.column() == SelectorColumn && row == m_current)
        return IconNamed(u"imgRecordSelector"_s);
    if (role == Qt::AccessibleTextRole && index.column() == ColouredColumn && isWord)
        return m_definer->Coloured(row) ? u"coloured"_s : u"not coloured"_s;
    return {};
}

} // namespace qb
