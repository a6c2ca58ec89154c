#pragma once

#include "platform/system/Date.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QMimeDatabase>
#include <vector>

namespace qb {

class Library;

/// The stored files of one item, a row each.
class StoredFileList : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { TitleColumn, FileDateColumn, SortColumn, DateAddedColumn, SizeColumn, ColumnCount };
    /// What rows are sorted by: texts, dates, and sizes as numbers.
    static constexpr int SortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    /// Reads the files of the item of this key.
    void Read(Library& library, const QString& itemKey);
    void Clear();
    /// Whether the library has a stored file of this ID, now.
    static bool Exists(Library& library, qint64 id);
    /// The `Files.ID` of a row.
    qint64 IdOf(int row) const { return m_rows[size_t(row)].Id; }
    QString TitleOf(int row) const { return m_rows[size_t(row)].Title; }
    /// The row of a file; -1 when it is not listed.
    int RowOf(qint64 id) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Row {
        qint64 Id;
        QString Title;
        Date OrigDateTime;
        Date DateAdded;
        qint64 Size;  ///< in bytes
        QString Type; ///< MIME type
    };
    QString TextOf(const Row& row, int column) const;
    QVariant SortKeyOf(const Row& row, int column) const;
    QIcon IconOf(const QString& type) const;

    std::vector<Row> m_rows;
    QMimeDatabase m_types;
    mutable QHash<QString, QIcon> m_icons;
};

} // namespace qb
