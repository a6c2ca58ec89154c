#include "session/BackupList.h"

#include "maintenance/BackupItems.h"
#include "platform/richtext/RtfPlainText.h"
#include "support/DateFormatCustom.h"

#include <QFileInfo>
#include <QLocale>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString Moment(Date date)
{
    return date.IsNone() ? QString() : DateFormatCustom(date, u"yyyy-mm-dd hh:nn"_s);
}

QString StateOf(const BackupEntry& entry)
{
    if (entry.Checked.IsNone())
        return u"not checked"_s;
    return (entry.IsGood ? u"good, "_s : u"BAD, "_s) + Moment(entry.Checked);
}

/// "3 items", "1 item"
QString Counted(qint64 number, const QString& what)
{
    return u"%1 %2%3"_s.arg(number).arg(what, number == 1 ? QString() : u"s"_s);
}

} // namespace

QString ChangesSince(Library& library, const BackupSummary& backup)
{
    const auto count = [&](const QString& sql) { return library.QueryValue(sql, {backup.Made}).ToLong(); };
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
                         .State = StateOf(entry),
                         .Changes = isOfLibrary ? ChangesSince(*library, *entry.Summary) : QString()});
    }
    return lines;
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
