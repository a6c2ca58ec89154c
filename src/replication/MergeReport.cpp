#include "replication/MergeReport.h"

#include "platform/dao/Database.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Table = u"own_MergeReports"_s;
constexpr int KeptReports = 10;

struct EventWords {
    MergeEvent Event;
    const char* Name;
    const char* Label;
    const char* One; ///< as it is counted
    const char* Many;
};
constexpr EventWords Words[] = {
    {MergeEvent::ItemAdded, "item-added", "Added", "item added", "items added"},
    {MergeEvent::ItemChanged, "item-changed", "Changed", "item changed", "items changed"},
    {MergeEvent::ItemMoved, "item-moved", "Moved", "item moved", "items moved"},
    {MergeEvent::ItemDeleted, "item-deleted", "Deleted", "item deleted", "items deleted"},
    {MergeEvent::ItemOrphaned, "item-orphaned", "Orphaned", "item orphaned", "items orphaned"},
    {MergeEvent::ItemKept, "item-kept", "Kept", "item kept", "items kept"},
    {MergeEvent::ItemRegained, "item-regained", "Regained", "item regained", "items regained"},
    {MergeEvent::Conflict, "conflict", "Conflict", "conflict", "conflicts"},
    {MergeEvent::SetAside, "set-aside", "Set aside", "version set aside", "versions set aside"},
    {MergeEvent::FileAdded, "file-added", "File added", "file added", "files added"},
    {MergeEvent::FileChanged, "file-changed", "File described", "file described", "files described"},
    {MergeEvent::FileDeleted, "file-deleted", "File deleted", "file deleted", "files deleted"},
    {MergeEvent::PageChanged, "page-changed", "Web page", "web page", "web pages"},
    {MergeEvent::LinkAdded, "link-added", "Link added", "link added", "links added"},
    {MergeEvent::LinkDeleted, "link-deleted", "Link deleted", "link deleted", "links deleted"},
};

const EventWords& WordsOf(MergeEvent event)
{
    return *std::find_if(std::begin(Words), std::end(Words),
                         [event](const EventWords& words) { return words.Event == event; });
}

QJsonObject ToJson(const MergeReport& report)
{
    QJsonArray lines;
    for (const MergeLine& line : report.Lines)
        lines.append(QJsonArray{NameOf(line.Event), line.Item, line.Title, line.Detail});
    QJsonArray faults;
    for (const MergeFault& fault : report.Faults)
        faults.append(QJsonArray{fault.Text, fault.Caption});
    return {{u"mother"_s, report.AsMother},
            {u"replica"_s, report.Replica},
            {u"file"_s, report.File},
            {u"made"_s, report.Made.Seconds()},
            {u"since"_s, report.Since.Seconds()},
            {u"lines"_s, lines},
            {u"faults"_s, faults}};
}

MergeReport FromJson(const QJsonObject& object)
{
    MergeReport report{.AsMother = object.value(u"mother"_s).toBool(),
                       .Replica = object.value(u"replica"_s).toString(),
                       .File = object.value(u"file"_s).toString(),
                       .Made = Date::FromSeconds(object.value(u"made"_s).toInteger()),
                       .Since = Date::FromSeconds(object.value(u"since"_s).toInteger())};
    const QJsonArray lines = object.value(u"lines"_s).toArray();
    for (const QJsonValue& value : lines) {
        const QJsonArray line = value.toArray();
        const auto words = std::find_if(
            std::begin(Words), std::end(Words),
            [name = line.at(0).toString()](const EventWords& event) { return name == QLatin1StringView(event.Name); });
        if (words != std::end(Words))
            report.Lines.push_back(
                {words->Event, line.at(1).toInteger(), line.at(2).toString(), line.at(3).toString()});
    }
    const QJsonArray faults = object.value(u"faults"_s).toArray();
    for (const QJsonValue& fault : faults)
        report.Faults.push_back({fault.toArray().at(0).toString(), fault.toArray().at(1).toString()});
    return report;
}

} // namespace

QString NameOf(MergeEvent event)
{
    return QString::fromLatin1(WordsOf(event).Name);
}

QString LabelOf(MergeEvent event)
{
    return QString::fromLatin1(WordsOf(event).Label);
}

qint64 MergeReport::CountOf(MergeEvent event) const
{
    return std::count_if(Lines.begin(), Lines.end(), [event](const MergeLine& line) { return line.Event == event; });
}

QString MergeReport::Summary() const
{
    QStringList counts;
    for (const EventWords& words : Words) {
        if (const qint64 count = CountOf(words.Event); count > 0)
            counts << u"%1 %2"_s.arg(count).arg(QLatin1StringView(count == 1 ? words.One : words.Many));
    }
    return counts.isEmpty() ? u"nothing changed"_s : counts.join(u", "_s);
}

void KeepReport(Database& library, const MergeReport& report)
{
    library.Execute(
        u"CREATE TABLE IF NOT EXISTS main.%1 (Number INTEGER PRIMARY KEY AUTOINCREMENT, Report TEXT NOT NULL)"_s.arg(
            Table));
    library.Execute(u"INSERT INTO main.%1 (Report) VALUES (?)"_s.arg(Table),
                    {QString::fromUtf8(QJsonDocument(ToJson(report)).toJson(QJsonDocument::Compact))});
    library.Execute(u"DELETE FROM main.%1 WHERE Number <= (SELECT max(Number) FROM main.%1) - ?"_s.arg(Table),
                    {KeptReports});
}

std::vector<MergeReport> ReadReports(Database& library, int most)
{
    std::vector<MergeReport> reports;
    if (library.QueryValue(u"SELECT 1 FROM main.sqlite_schema WHERE type = 'table' AND name = ?"_s, {Table}).IsNull())
        return reports;
    Statement rows = library.Query(u"SELECT Report FROM main.%1 ORDER BY Number DESC LIMIT ?"_s.arg(Table), {most});
    while (rows.Step())
        reports.push_back(FromJson(QJsonDocument::fromJson(rows.Text(0).toUtf8()).object()));
    return reports;
}

} // namespace qb
