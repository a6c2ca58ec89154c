#include "panels/ui/StoredFileList.h"

#include "store/Library.h"

#include <QLocale>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* Headers[StoredFileList::ColumnCount] = {"Original File Name              ", "File Date/Time",
                                                              "Sort", "Date Added", "Size"};

QString DateText(Date date)
{
    if (date.IsNone())
        return {};
    const QLocale locale;
    static const QString time = locale.timeFormat(QLocale::LongFormat).remove(u't').trimmed(); // without the zone
    return locale.toString(date.Day(), QLocale::ShortFormat) + u' ' + locale.toString(date.Time(), time);
}

} // namespace

bool StoredFileList::Exists(Library& library, qint64 id)
{
    return !library.QueryValue(u"SELECT 1 FROM Files WHERE ID = ?"_s, {id}).IsNull();
}

void StoredFileList::Read(Library& library, const QString& itemKey)
{
    std::vector<Row> files; // what can't be read leaves the list as it is
    Statement rows = library.Query(u"SELECT ID, Title, OrigDateTime, DateAdded, FileSize FROM Files WHERE CodeID = ?"_s,
                                   {itemKey.toLongLong()});
    while (rows.Step()) {
        const QString title = rows.Text(1);
        files.push_back({rows.Long(0), title, rows.Column(2).ToDate(), rows.Column(3).ToDate(), rows.Long(4),
                         m_types.mimeTypeForFile(title, QMimeDatabase::MatchExtension).name()});
    }
    beginResetModel();
    m_rows = std::move(files);
    m_icons.clear(); // the scheme may be another by now
    endResetModel();
}

void StoredFileList::Clear()
{
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

int StoredFileList::RowOf(qint64 id) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), [id](const Row& one) { return one.Id == id; });
    return row == m_rows.end() ? -1 : int(row - m_rows.begin());
}

int StoredFileList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int StoredFileList::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant StoredFileList::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    return QString::fromLatin1(Headers[section]);
}

QVariant StoredFileList::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Row& row = m_rows[size_t(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return TextOf(row, index.column());
    case SortRole:
        return SortKeyOf(row, index.column());
    case Qt::DecorationRole:
        return index.column() == TitleColumn ? IconOf(row.Type) : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == SizeColumn ? int(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    default:
        return {};
    }
}

QString StoredFileList::TextOf(const Row& row, int column) const
{
    constexpr int SortWidth = 12;
    switch (column) {
    case TitleColumn:
        return row.Title;
    case FileDateColumn:
        return DateText(row.OrigDateTime);
    case SortColumn:
        return u"%1"_s.arg(row.Size, SortWidth, 10, QLatin1Char('0'));
    case DateAddedColumn:
        return DateText(row.DateAdded);
    default:
        return row.Size == 0 ? QString() : QLocale(QLocale::English).toString(row.Size);
    }
}

QVariant StoredFileList::SortKeyOf(const Row& row, int column) const
{
    const QString key = TextOf(row, column == SizeColumn ? int(SortColumn) : column);
    if (column == FileDateColumn)
        return row.OrigDateTime.Seconds();
    return column == DateAddedColumn ? QVariant(row.DateAdded.Seconds()) : key.toCaseFolded();
}

QIcon StoredFileList::IconOf(const QString& type) const
{
    const auto found = m_icons.constFind(type);
    if (found != m_icons.constEnd())
        return *found;
    const QMimeType mime = m_types.mimeTypeForName(type);
    return *m_icons.insert(
        type, QIcon::fromTheme(mime.iconName(),
                               QIcon::fromTheme(mime.genericIconName(), QIcon::fromTheme(u"text-x-generic"_s))));
}

} // namespace qb
