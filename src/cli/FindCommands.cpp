// The find over a whole library, and replacing what was found.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "find/FindCache.h"
#include "find/FindPlaces.h"
#include "find/FindRun.h"
#include "find/ReplaceText.h"

#include <QDate>
#include <limits>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

FindFieldSet FieldsOf(const QString& names)
{
    FindFieldSet fields = 0;
    for (const QString& name : names.split(u',', Qt::SkipEmptyParts)) {
        const std::optional<FindField> field = FindFieldNamed(name.trimmed());
        if (!field)
            throw UsageError{u"Unknown field '%1': title, description, code, notes, usage, files, file-texts, links or "
                             "page."_s.arg(name.trimmed())};
        fields |= BitOf(*field);
    }
    if (fields == 0)
        throw UsageError{u"'--in' wants the names of fields."_s};
    return fields;
}

Date DateOption(const Arguments& arguments, const QString& option)
{
    const QString text = arguments.Value(option);
    const QDateTime moment = QDateTime::fromString(text, text.size() > 10 ? u"yyyy-MM-dd HH:mm:ss"_s : u"yyyy-MM-dd"_s);
    if (!moment.isValid())
        throw UsageError{u"'%1' is no date, such as 2026-03-31."_s.arg(text)};
    return Date::FromDateTime(moment);
}

FindMode ModeOf(const Arguments& arguments)
{
    if (arguments.Has(u"all"_s) && arguments.Has(u"regex"_s))
        throw UsageError{u"Give one of --all and --regex."_s};
    return arguments.Has(u"regex"_s) ? FindMode::Expression
           : arguments.Has(u"all"_s) ? FindMode::AllWords
                                     : FindMode::Phrase;
}

FindQuery QueryOf(const Arguments& arguments)
{
    if (arguments.Has(u"case"_s) && arguments.Has(u"ignore-case"_s))
        throw UsageError{u"Give one of --case and --ignore-case."_s};
    FindQuery query;
    query.Text = arguments.Positional(1);
    query.Mode = ModeOf(arguments);
    query.Case = arguments.Has(u"case"_s)          ? FindCase::Exact
                 : arguments.Has(u"ignore-case"_s) ? FindCase::Folds
                                                   : FindCase::Smart;
    query.WholeWord = arguments.Has(u"word"_s);
    query.FoldAccents = arguments.Has(u"accents"_s);
    if (arguments.Has(u"in"_s))
        query.Fields = FieldsOf(arguments.Value(u"in"_s));
    query.Branch = arguments.IdOption(u"branch"_s);
    if (arguments.Has(u"since"_s))
        query.ChangedSince = DateOption(arguments, u"since"_s);
    if (arguments.Has(u"status"_s))
        query.Status = arguments.NumberOption(u"status"_s, 0);
    if (arguments.Has(u"rating"_s))
        query.Rating = arguments.NumberOption(u"rating"_s, 0);
    query.Language = arguments.Value(u"language"_s);
    constexpr int Seconds = 1000;
    query.Deadline = std::chrono::milliseconds(qint64(arguments.NumberOption(u"deadline"_s, 0)) * Seconds);
    return query;
}

/// What is found, with the texts that it was found in.
struct Found {
    std::shared_ptr<const FindSnapshot> Texts;
    FindResult Result;
};

Found FindIn(const QString& library, const FindQuery& query)
{
    constexpr int Tries = 3;
    FindCache cache(library);
    Found found;
    for (int i = 0; i < Tries; ++i) {
        found.Texts = cache.Update();
        found.Result = FindAll(found.Texts, query);
        if (!found.Result.Outcome.IsDamaged) {
            if (!cache.Warning().isEmpty())
                Complain(cache.Warning());
            return found;
        }
        cache.Discard(); // somebody has cut the file short; the texts are read again
    }
    throw RuntimeError(ErrorNumber::Corrupt, u"'%1' is being damaged all the time."_s.arg(cache.FilePath()), u"find"_s);
}

/// Says what keeps the result from being all there is; 1 then.
int StatusOf(const FindOutcome& outcome)
{
    if (outcome.DeadlineReached)
        Complain(u"The time was up before all texts were looked at; there may be more."_s);
    if (outcome.GivenUp > 0)
        Complain(
            u"%1 texts would have taken the expression too long; there may be more in them."_s.arg(outcome.GivenUp));
    if (outcome.LeftOut > 0)
        Complain(u"Files of more than %1 MB that were not looked through: %2."_s.arg(LargestSearchedFile >> 20)
                     .arg(outcome.LeftOut));
    return outcome.IsComplete() ? 0 : 1;
}

QJsonObject CountersOf(const FindHit& hit)
{
    QJsonObject counters;
    for (size_t field = 0; field < FindFields; ++field) {
        if (hit.Counters[field] > 0)
            counters.insert(QString(LetterOf(FindField(field))), qint64(hit.Counters[field]));
    }
    return counters;
}

void PrintJson(const Found& found, const FindMatcher& matcher, size_t most)
{
    QJsonArray items;
    for (const FindHit& hit : found.Result.Hits) {
        QJsonArray places;
        for (const FindPlace& place : PlacesIn(*found.Texts, hit.Place, matcher, most)) {
            QJsonObject object{{u"field"_s, NameOf(place.Field)},
                               {u"letter"_s, QString(LetterOf(place.Field))},
                               {u"line"_s, place.Line},
                               {u"column"_s, place.Column},
                               {u"begin"_s, place.Begin},
                               {u"length"_s, place.Length},
                               {u"text"_s, place.Context.join(u'\n')}};
            if (place.Source != 0)
                object.insert(place.Field == FindField::Links ? u"link"_s : u"file"_s, place.Source);
            places.append(object);
        }
        items.append(QJsonObject{{u"item"_s, hit.Id},
                                 {u"title"_s, found.Texts->Title(hit.Place)},
                                 {u"counters"_s, CountersOf(hit)},
                                 {u"hits"_s, places}});
    }
    const FindOutcome& outcome = found.Result.Outcome;
    Print(QJsonObject{
        {u"items"_s, items}, {u"complete"_s, outcome.IsComplete()}, {u"left_out"_s, qint64(outcome.LeftOut)}});
}

void PrintText(const Found& found, const FindMatcher& matcher, size_t most)
{
    for (const FindHit& hit : found.Result.Hits) {
        QString text = u"%1 [%2] (%3)\n"_s.arg(found.Texts->Title(hit.Place)).arg(hit.Id).arg(hit.Letters());
        for (const FindPlace& place : PlacesIn(*found.Texts, hit.Place, matcher, most))
            text += u"  %1:%2:%3: %4\n"_s.arg(NameOf(place.Field))
                        .arg(place.Line)
                        .arg(place.Column)
                        .arg(place.Context.value(0).trimmed());
        Print(text);
    }
}

QJsonObject AsJson(const ReplaceChange& change)
{
    return {{u"item"_s, change.Item},
            {u"field"_s, NameOf(change.Field)},
            {u"line"_s, change.Line},
            {u"begin"_s, change.Range.Begin},
            {u"length"_s, change.Range.Length},
            {u"found"_s, change.Found},
            {u"replacement"_s, change.Replacement},
            {u"before"_s, change.Before},
            {u"after"_s, change.After}};
}

void PrintChanges(const Arguments& arguments, const std::vector<ReplaceChange>& changes)
{
    if (arguments.Json()) {
        QJsonArray list;
        for (const ReplaceChange& change : changes)
            list.append(AsJson(change));
        Print(QJsonObject{{u"changes"_s, list}, {u"dry_run"_s, arguments.Has(u"dry-run"_s)}});
        return;
    }
    QString text;
    for (const ReplaceChange& change : changes)
        text += u"%1 %2:%3\n- %4\n+ %5\n"_s.arg(QString::number(change.Item), NameOf(change.Field),
                                                QString::number(change.Line), change.Before, change.After);
    Print(
        text
        + (arguments.Has(u"dry-run"_s) ? u"%1 changes would be made\n"_s : u"%1 changes made\n"_s).arg(changes.size()));
}

/// Reads, checks and writes in one transaction: what the texts of the find say tells only which items to look at.
int Replace(const Arguments& arguments, FindQuery query)
{
    query.Fields &= ReplaceFields;
    if (query.Fields == 0)
        throw UsageError{u"Only titles, descriptions, code, notes and usage can be replaced in."_s};
    const bool isDry = arguments.Has(u"dry-run"_s);
    const FindMatcher matcher(query);
    const auto library = OpenLibrary(arguments.Positional(0),
                                     isDry ? DBEngine::Access::ReadOnly : DBEngine::Access::ReadWrite);
    const Found found = FindIn(library->Name(), query);
    if (!found.Result.Outcome.IsComplete())
        throw RuntimeError(ErrorNumber::Cancelled, u"Not all texts could be looked at; nothing was changed."_s,
                           u"find"_s);
    std::optional<Transaction> transaction;
    if (!isDry)
        transaction.emplace(*library);
    std::vector<ReplaceChange> changes;
    for (const FindHit& hit : found.Result.Hits) {
        const std::vector<ReplaceChange> own = ChangesIn(*library, hit.Id, matcher, arguments.Value(u"replace"_s));
        changes.insert(changes.end(), own.begin(), own.end());
    }
    if (isDry) {
        PrintChanges(arguments, changes);
        return 0;
    }
    MakeChanges(*library, changes);
    PrintChanges(arguments, changes); // before the commit: whoever is not told of a change must not get it
    transaction->Commit();
    return 0;
}

} // namespace

int Find(const QStringList& words)
{
    const Arguments arguments(words,
                              {{"all", ""},
                               {"case", ""},
                               {"ignore-case", ""},
                               {"word", ""},
                               {"regex", ""},
                               {"accents", ""},
                               {"in", "fields"},
                               {"branch", "id"},
                               {"since", "date"},
                               {"status", "n"},
                               {"rating", "n"},
                               {"language", "name"},
                               {"limit", "n"},
                               {"deadline", "s"},
                               {"replace", "text"},
                               {"dry-run", ""}},
                              2);
    const FindQuery query = QueryOf(arguments);
    if (arguments.Has(u"dry-run"_s) && !arguments.Has(u"replace"_s))
        throw UsageError{u"'--dry-run' goes with '--replace'."_s};
    if (arguments.Has(u"replace"_s))
        return Replace(arguments, query);
    const FindMatcher matcher(query); // what is wrong with the query is told before the library is read
    Found found = FindIn(arguments.Positional(0), query);
    const int limit = arguments.NumberOption(u"limit"_s, std::numeric_limits<int>::max());
    if (found.Result.Hits.size() > size_t(limit))
        found.Result.Hits.resize(size_t(limit));
    constexpr size_t PlacesOfItem = 1000;
    arguments.Json() ? PrintJson(found, matcher, PlacesOfItem) : PrintText(found, matcher, PlacesOfItem);
    return StatusOf(found.Result.Outcome);
}

} // namespace qb::cli
