#include "conflicts/ConflictPages.h"

#include "exchange/PageNames.h"
#include "maintenance/PackedContents.h"
#include "platform/system/RuntimeError.h"
#include "store/PageReferences.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <vector>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Pages = u"TempHTMLFiles"_s;
const QString Suffix = u".htm"_s;
/// For the whole name of a file, Folder included, where that does not fit into Name and Folder.
const QString LongName = u"LongName"_s;

struct PageRow {
    qint64 Row;
    QString Folder; ///< below that of the page
    QString Name;
};

std::vector<PageRow> RowsOf(Library& library, qint64 item)
{
    std::vector<PageRow> rows;
    const bool hasLongNames = library.GetTableDef(Pages).FindField(LongName) != nullptr;
    Statement row = library.Query(
        u"SELECT rowid, Folder, Name, %1 FROM TempHTMLFiles WHERE ItemIDRef = ? ORDER BY rowid"_s.arg(
            hasLongNames ? LongName : u"NULL"_s),
        {item});
    while (row.Step()) {
        QString folder = row.Text(1);
        QString name = row.Text(2);
        if (!row.IsNull(3)) {
            const qsizetype end = row.Text(3).lastIndexOf(u'\\') + 1;
            folder = row.Text(3).left(end);
            name = row.Text(3).mid(end);
        }
        rows.push_back({row.Long(0), folder, name});
    }
    return rows;
}

/// The page itself stands in no folder. Pictures of its folder have none either, but not its kind of name: the number
/// of the item, there or here.
size_t MainPage(const std::vector<PageRow>& rows)
{
    static const QRegularExpression number(u"^\\d+\\.html?$"_s, QRegularExpression::CaseInsensitiveOption);
    const auto isPage = [](const PageRow& row) { return row.Folder.isEmpty() && number.match(row.Name).hasMatch(); };
    const auto stands = [](const PageRow& row) { return row.Folder.isEmpty(); };
    auto found = std::find_if(rows.begin(), rows.end(), isPage);
    if (found == rows.end())
        found = std::find_if(rows.begin(), rows.end(), stands);
    return size_t(found - rows.begin());
}

QString BaseOf(const QString& name)
{
    return name.left(name.lastIndexOf(u'.'));
}

/// The file of a row below @p folder; what would lead out of it raises an error.
QString PlaceIn(const QString& folder, const PageRow& row)
{
    const std::optional<QString> place = PlaceOfPage(row.Folder + row.Name, {}, false);
    if (!place)
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The name '%1' of a page's file would lead out of its folder, or can't be one of a file. "
                           "Nothing was changed."_s.arg(row.Folder + row.Name),
                           u"ConflictPages"_s);
    return folder + *place;
}

void Write(Library& library, const PageRow& row, const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    ContentPace pace(NoWork(), 0);
    FieldToFile({library, Pages, row.Row}, path, pace);
}

} // namespace

bool HasConflictPage(Library& library, qint64 item)
{
    return library.TableExists(Pages)
           && !library.QueryValue(u"SELECT 1 FROM TempHTMLFiles WHERE ItemIDRef = ? LIMIT 1"_s, {item}).IsNull();
}

bool WriteConflictPage(Library& library, qint64 item, const QString& folder, const QString& name)
{
    if (!HasConflictPage(library, item))
        return false;
    const std::vector<PageRow> rows = RowsOf(library, item);
    const size_t main = MainPage(rows);
    if (main == rows.size())
        return false;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (i != main)
            Write(library, rows[i], PlaceIn(folder + name + u'/', rows[i]));
    }
    const QString page = folder + name + Suffix;
    Write(library, rows[main], page);
    if (const QString base = BaseOf(rows[main].Name); base != name)
        RenameReferences(page, base, name);
    return true;
}

} // namespace qb
