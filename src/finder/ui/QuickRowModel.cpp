#include "finder/ui/QuickRowModel.h"

#include "support/ui/Icons.h"

namespace qb {

using namespace Qt::StringLiterals;

void QuickRowModel::SetRows(const std::vector<QuickRow>& rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

void QuickRowModel::MarkRows(const std::vector<QuickRow>& rows)
{
    if (rows.size() != m_rows.size())
        return SetRows(rows);
    m_rows = rows;
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1));
}

int QuickRowModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant QuickRowModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || size_t(index.row()) >= m_rows.size())
        return {};
    const QuickRow& row = m_rows[size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return row.Text;
    case Qt::DecorationRole:
        return row.Icon.isEmpty() ? QIcon() : IconNamed(row.Icon);
    case Qt::AccessibleTextRole: {
        QStringList said{row.Text, row.Beside, row.Mark};
        said.removeAll(QString());
        return said.join(u", "_s);
    }
    default:
        return {};
    }
}

} // namespace qb
