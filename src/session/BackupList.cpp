#include "session/BackupList.h"

#include "maintenance/BackupItems.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Paths.h"
#include "support/DateFormatCustom.h"

#include <QFileInfo>
#include <QHash>
#include <QLocale>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString Moment(Date date)
{
    return date.IsNone() ? QString() : DateFormatCustom(date, u"yyyy-mm-dd hh:nn"_s);
}

/// What says nothing of itself may be of another program, or cut short, which only a check can tell.
QString StateOf(const BackupEntry& entry)
{
    if (entry.Checked.IsNone())
        return u"not checked"_s;
    return (entry.IsGood ? u"good, "_s : u"BAD, "_s) + Moment(entry.Checked);
}

QString NameOf(const BackupEntry& entry, const Library* library)
{
    if (!entry.Summary)
        return u"not known"_s;
    return entry.Summary->Name
           + (library && entry.Summary->Library != library->Identity() ? u" (another library)"_s : QString());
}

/// "3 items", "1 item"
QString Counted(qint64 number, const QString& what)
{
    return u"%1 %2%3"_s.arg(number).arg(what, number == 1 ? QString() : u"s"_s);
}

} // namespace

QString ChangesSince(Library& library, const BackupSummary& backup)
{
    const auto count = [&](const QString& sql) {
        return library.QueryValue(sql, {library.StoredDate(backup.Made)}).ToLong();
    };
    QStringList changes;
    if (const qint64 items = count(u"SELECT count(*) FROM Items WHERE LastChanged > ?"_s); items > 0)
        changes << Counted(items, u"item"_s) + u" changed"_s;
    if (const qint64 files = count(u"SELECT count(*) FROM Files WHERE DateAdded > ?"_s); files > 0)
        changes << Counted(files, u"file"_s) + u" added"_s;
    const qint64 now = library.QueryValue(u"SELECT count(*) FROM Items"_s).ToLong();
    if (const qint64 more = now - backup.Rows.value(u"Items"_s); more != 0)
        changes << Counted(qAbs(more), u"item"_s) + (more > 0 ? u" more"_s : u" fewer"_s);
    return changes.isEmpty() ? u"nothing"_s : changes.join(u", "_s);
}

std::vector<BackupLine> BackupLines(const QString& folder, Library* library)
{
    std::vector<BackupLine> lines;
    if (!QFileInfo(folder).isDir())
        return lines;
    for (const BackupEntry& entry : ListBackups(folder)) {
        const bool isOfLibrary = library && entry.Summary && entry.Summary->Library == library->Identity();
        lines.push_back({.Path = entry.Path,
                         .Made = Moment(entry.Made),
                         .Size = QLocale::c().formattedDataSize(entry.Size),
                         .Library = NameOf(entry, library),
                         .State = StateOf(entry),
                         .Changes = isOfLibrary ? ChangesSince(*library, *entry.Summary) : QString()});
    }
    return lines;
}

QString FolderOfList(const QString& ofSettings)
{
    return ofSettings.isEmpty() ? ApplicationFolder() + u"Backups"_s : ofSettings;
}

QString NoBackupsNotice(const QString& folder)
{
    if (!QFileInfo(folder).isDir())
        return u"The folder is not there. It may have been moved, or its disk is not connected; backups may also "
               "lie in another folder, which can be chosen below."_s;
    return u"There are no backups in this folder. The menu Tools makes one; backups may also lie in another folder, "
           "which can be chosen below."_s;
}

std::vector<BackupItemLine> BackupItemLines(BackupItems& backup, Library& library)
{
    const bool isSame = backup.Identity() == library.Identity();
    QHash<qint64, Date> now;
    if (isSame) {
        Statement rows = library.Query(u"SELECT ID, LastChanged FROM Items"_s);
        while (rows.Step())
            now.insert(rows.Long(0), rows.Column(1).ToDate());
    }
    std::vector<BackupItemLine> lines;
    for (const BackupItemRow& row : backup.All()) {
        const auto own = now.constFind(row.Id);
        const QString state = !isSame                   ? QString()
                              : own == now.constEnd()   ? DeletedState
                              : *own != row.LastChanged ? u"changed"_s
                                                        : QString();
        lines.push_back({.Id = row.Id, .Parent = row.Parent, .Title = row.Title, .State = state});
    }
    return lines;
}

std::vector<ListedLine> Listed(const std::vector<BackupItemLine>& lines, const QString& text, bool onlyOthers)
{
    QHash<qint64, size_t> numbers;
    for (size_t i = 0; i < lines.size(); ++i)
        numbers.insert(lines[i].Id, i);
    std::vector<ListedLine> listed(lines.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        listed[i].Fits = lines[i].Title.contains(text, Qt::CaseInsensitive)
                         && (!onlyOthers || !lines[i].State.isEmpty());
        if (!listed[i].Fits)
            continue;
        listed[i].IsListed = true;
        // Up to what is listed already, so that a cycle ends too.
        for (auto up = numbers.constFind(lines[i].Parent); up != numbers.constEnd() && !listed[*up].IsListed;
             up = numbers.constFind(lines[*up].Parent))
            listed[*up].IsListed = true;
    }
    return listed;
}

QString PreviewOf(const BackupItem& item)
{
    QString text = item.Title + u'\n';
    const auto add = [&text](const QString& caption, const QString& content) {
        if (!content.trimmed().isEmpty())
            text += u'\n' + caption + u'\n' + content.trimmed() + u'\n';
    };
    add(u"Last changed:"_s, Moment(item.LastChanged));
    add(u"Description:"_s, item.Description);
    add(u"Info:"_s, item.Info);
    add(u"Code:"_s, PlainTextFromRtf(item.Code));
    add(u"Usage:"_s, PlainTextFromRtf(item.Usage));
    add(u"Notes:"_s, PlainTextFromRtf(item.Notes));
    add(u"Stored files:"_s, item.Files.join(u'\n'));
    if (item.HasPage)
        text += u"\nIt has a web page.\n"_s;
    return text;
}

} // namespace qb
