// Conflicts that a synchronization has left.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "conflicts/AutomaticResolution.h"
#include "conflicts/ConflictChoice.h"
#include "conflicts/ConflictFileRows.h"
#include "conflicts/LineComparison.h"
#include "store/ItemRules.h"

#include <map>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

constexpr ConflictSide Sides[] = {ConflictSide::Item, ConflictSide::TempItem};

std::vector<qint64> ConflictingItems(Library& library)
{
    std::vector<qint64> items;
    if (!library.TableExists(u"TempItems"_s))
        return items;
    Statement rows = library.Query(u"SELECT t.ID FROM TempItems t JOIN Items i ON i.ID = t.ID ORDER BY t.rowid"_s);
    while (rows.Step())
        items.push_back(rows.Long(0));
    return items;
}

/// Fields that have their own place in what is printed, or none.
const QStringList NoTexts{u"page"_s, u"files"_s, u"status"_s, u"rating"_s};

/// "newer" or "older".
QString AgeOf(CConflict& conflict, ConflictSide side)
{
    return conflict.NewerSide() == side ? u"newer"_s : u"older"_s;
}

int List(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    QJsonArray array;
    QString text;
    for (const qint64 item : ConflictingItems(*library)) {
        CConflict conflict;
        conflict.Initialize(*library, item);
        const QStringList fields = DifferingFields(conflict);
        array << QJsonObject{{u"id"_s, item},
                             {u"title"_s, conflict.Title()},
                             {u"otherTitle"_s, conflict.TempTitle()},
                             {u"changed"_s, MomentText(conflict.LastChanged(), Reader::Program)},
                             {u"otherChanged"_s, MomentText(conflict.TempLastChanged(), Reader::Program)},
                             {u"fields"_s, QJsonArray::fromStringList(fields)}};
        text += u"%1  %2  (%3)\n"_s.arg(QString::number(item), conflict.Title(), fields.join(u", "_s));
    }
    arguments.Json() ? Print(array) : Print(ForTerminal(text));
    return 0;
}

/// The lines with a sign before each: "-" of the library's own version, "+" of the other one.
QString DiffText(CConflict& conflict, const QString& field)
{
    const LineComparison comparison = CompareLines(PlainFieldText(conflict, ConflictSide::Item, field),
                                                   PlainFieldText(conflict, ConflictSide::TempItem, field));
    if (comparison.IsTooLarge)
        return u"(too large to be compared)\n"_s;
    QString text;
    for (const ComparedLine& line : comparison.Lines) {
        const char16_t sign = line.Owner == LineOwner::Both ? u' ' : line.Owner == LineOwner::First ? u'-' : u'+';
        text += QChar(sign) + line.Text + u'\n';
    }
    return text;
}

QJsonObject VersionJson(CConflict& conflict, ConflictSide side, const QStringList& fields)
{
    QJsonObject version{{u"age"_s, AgeOf(conflict, side)},
                        {u"changed"_s, MomentText(conflict.Side(side).LastChanged(), Reader::Program)},
                        {u"status"_s, conflict.Side(side).ItemStatus()},
                        {u"rating"_s, conflict.Side(side).ItemRating()}};
    for (const QString& field : fields) {
        if (!NoTexts.contains(field))
            version.insert(field, PlainFieldText(conflict, side, field));
    }
    return version;
}

QJsonArray FilesJson(CConflict& conflict)
{
    QJsonArray files;
    for (const ConflictFileRow& row : FileRowsOf(conflict))
        files << QJsonObject{{u"tag"_s, row.Tag()}, {u"title"_s, row.Columns.value(0)}, {u"is"_s, row.ToolTip}};
    return files;
}

QString VersionText(CConflict& conflict, ConflictSide side, const QStringList& fields)
{
    QString text = u"== %1 (%2)\n"_s.arg(AgeOf(conflict, side),
                                         MomentText(conflict.Side(side).LastChanged(), Reader::Person));
    for (const QString& field : fields) {
        if (const QString said = PlainFieldText(conflict, side, field); !said.isEmpty())
            text += u"%1:\n%2\n"_s.arg(field, QString(said).replace(u"\r\n"_s, u"\n"_s));
    }
    return text;
}

int ShowConflict(const QStringList& words)
{
    const Arguments arguments(words, {{"field", "F"}, {"diff", ""}}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    CConflict conflict;
    conflict.Initialize(*library, arguments.Id(1));
    const QString field = arguments.Value(u"field"_s);
    if (!field.isEmpty() && !ConflictFieldNames().contains(field))
        throw UsageError{u"--field is one of %1."_s.arg(ConflictFieldNames().join(u", "_s))};
    const QStringList fields = field.isEmpty() ? DifferingFields(conflict) : QStringList{field};
    QString diff;
    for (const QString& one : arguments.Has(u"diff"_s) ? fields : QStringList())
        diff += u"%1:\n"_s.arg(one) + DiffText(conflict, one);
    if (arguments.Json()) {
        QJsonObject object{{u"id"_s, arguments.Id(1)}, {u"files"_s, FilesJson(conflict)}};
        for (const ConflictSide side : Sides)
            object.insert(side == ConflictSide::Item ? u"own"_s : u"other"_s, VersionJson(conflict, side, fields));
        if (!diff.isEmpty())
            object.insert(u"diff"_s, diff);
        Print(object);
        return 0;
    }
    QString text = diff;
    for (const ConflictSide side :
         diff.isEmpty() ? QList<ConflictSide>(std::begin(Sides), std::end(Sides)) : QList<ConflictSide>())
        text += VersionText(conflict, side, fields);
    if (fields.contains(u"files"_s)) {
        for (const ConflictFileRow& row : FileRowsOf(conflict))
            text += u"%1  %2  %3\n"_s.arg(row.Tag(), row.Columns.value(0), row.ToolTip);
    }
    Print(ForTerminal(text));
    return 0;
}

int WhichOf(const QString& age, const QString& option)
{
    if (age != u"newer"_s && age != u"older"_s)
        throw UsageError{u"%1 is newer or older."_s.arg(option)};
    return age == u"newer"_s ? 1 : 2;
}

int Resolve(const QStringList& words)
{
    const Arguments arguments(words, {{"keep", "newer|older"}, {"field", "F=newer|older"}, {"move-file", "FILEID"}}, 2);
    ConflictChoice choice{.Which = WhichOf(arguments.Value(u"keep"_s), u"--keep"_s),
                          .MovedFiles = arguments.Values(u"move-file"_s)};
    for (const QString& field : arguments.Values(u"field"_s))
        choice.Fields.insert(field.section(u'=', 0, 0), WhichOf(field.section(u'=', 1), u"--field F"_s));
    const qint64 item = arguments.Id(1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    RequireChange(*library, item, {ItemChange::Write});
    CConflict conflict;
    conflict.Initialize(*library, item);
    if (!Decide(conflict, choice))
        return 1;
    const auto left = qint64(ConflictingItems(*library).size());
    arguments.Json() ? Print(QJsonObject{{u"id"_s, item}, {u"left"_s, left}})
                     : Print(u"Conflicts left: %1\n"_s.arg(left));
    return 0;
}

int Auto(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const AutomaticResolution result = ResolveAutomatically(*library);
    QJsonArray settled;
    QString text;
    for (const SettledConflict& one : result.Settled) {
        settled << QJsonObject{
            {u"id"_s, one.Item}, {u"title"_s, one.Title}, {u"dropped"_s, QJsonArray::fromStringList(one.Dropped)}};
        text += u"%1  %2%3\n"_s.arg(QString::number(one.Item), one.Title,
                                    one.Dropped.isEmpty() ? QString()
                                                          : u"  (dropped: %1)"_s.arg(one.Dropped.join(u", "_s)));
    }
    arguments.Json() ? Print(QJsonObject{{u"settled"_s, settled}, {u"left"_s, result.Remaining}})
                     : Print(ForTerminal(text) + u"Conflicts left: %1\n"_s.arg(result.Remaining));
    return 0;
}

int Discard(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const qint64 count = DiscardAllConflicts(*library);
    arguments.Json() ? Print(QJsonObject{{u"discarded"_s, count}}) : Print(u"Conflicts discarded: %1\n"_s.arg(count));
    return 0;
}

} // namespace

int Conflicts(const QStringList& words)
{
    static const std::map<QString, int (*)(const QStringList&)> verbs{
        {u"show"_s, ShowConflict}, {u"resolve"_s, Resolve}, {u"auto"_s, Auto}, {u"discard"_s, Discard}};
    const auto verb = verbs.find(words.value(0));
    return verb == verbs.end() ? List(words) : verb->second(words.mid(1));
}

} // namespace qb::cli
