#pragma once

#include "finder/QuickRow.h"

#include <QAbstractListModel>

namespace qb {

/// The rows of quick open as a list shows them. They are a copy: what is shown stays until the next ones come.
class QuickRowModel : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void SetRows(const std::vector<QuickRow>& rows);
    /// The same rows look another way.
    void MarkRows(const std::vector<QuickRow>& rows);
    const std::vector<QuickRow>& Rows() const { return m_rows; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<QuickRow> m_rows;
};

} // namespace qb
