#include "finder/FindMemory.h"

#include "config/Remembered.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString Written(const QJsonArray& array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

QJsonArray ReadArray(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).array(); // of what is none, an empty one
}

QJsonObject ObjectOf(const FindQuery& query)
{
    QJsonObject object{{u"text"_s, query.Text},           {u"mode"_s, int(query.Mode)},
                       {u"case"_s, int(query.Case)},      {u"word"_s, query.WholeWord},
                       {u"accents"_s, query.FoldAccents}, {u"fields"_s, int(query.Fields)},
                       {u"language"_s, query.Language},   {u"since"_s, query.ChangedSince.WallSeconds()}};
    if (query.Status)
        object.insert(u"status"_s, *query.Status);
    if (query.Rating)
        object.insert(u"rating"_s, *query.Rating);
    return object;
}

/// The branch is not kept: its number means nothing in another library.
FindQuery QueryOf(const QJsonObject& object)
{
    FindQuery query;
    const auto within = [&object](const QString& key, int least, int most, int preset) {
        const int value = object.value(key).toInt(preset);
        return value < least || value > most ? preset : value;
    };
    query.Text = object.value(u"text"_s).toString();
    query.Mode = FindMode(within(u"mode"_s, 1, 3, 1));
    query.Case = FindCase(within(u"case"_s, 0, 2, 0));
    query.WholeWord = object.value(u"word"_s).toBool();
    query.FoldAccents = object.value(u"accents"_s).toBool();
    query.Fields = FindFieldSet(within(u"fields"_s, 1, AllFindFields, AllFindFields));
    query.Language = object.value(u"language"_s).toString();
    query.ChangedSince = Date::FromWallSeconds(qint64(object.value(u"since"_s).toDouble()));
    if (object.contains(u"status"_s))
        query.Status = object.value(u"status"_s).toInt();
    if (object.contains(u"rating"_s))
        query.Rating = object.value(u"rating"_s).toInt();
    return query;
}

QJsonArray Without(const QJsonArray& saved, const QString& name)
{
    QJsonArray rest;
    for (const QJsonValue& one : saved) {
        if (one.toObject().value(u"name"_s).toString() != name)
            rest.append(one);
    }
    return rest;
}

} // namespace

QString TextOfQuery(const FindQuery& query)
{
    return QString::fromUtf8(QJsonDocument(ObjectOf(query)).toJson(QJsonDocument::Compact));
}

FindQuery QueryOfText(const QString& text)
{
    return QueryOf(QJsonDocument::fromJson(text.toUtf8()).object());
}

QStringList FindMemory::History()
{
    QStringList texts;
    for (const QJsonValue& one : ReadArray(Remembered(Memory::FindHistory))) {
        if (const QString text = one.toString(); !text.isEmpty())
            texts << text;
    }
    return texts;
}

void FindMemory::AddToHistory(const QString& text)
{
    if (text.isEmpty() || text.size() > LongestText)
        return;
    RememberMerged(Memory::FindHistory, [&text](const QString& stored) {
        QJsonArray texts{text};
        for (const QJsonValue& one : ReadArray(stored)) {
            if (one.isString() && one.toString() != text && texts.size() < MostTexts)
                texts.append(one);
        }
        return Written(texts);
    });
}

std::vector<FindMemory::Saved> FindMemory::SavedFinds()
{
    std::vector<Saved> finds;
    for (const QJsonValue& one : ReadArray(Remembered(Memory::SavedFinds))) {
        const QJsonObject object = one.toObject();
        if (const QString name = object.value(u"name"_s).toString(); !name.isEmpty())
            finds.push_back({name, QueryOf(object)});
    }
    std::sort(finds.begin(), finds.end(),
              [](const Saved& a, const Saved& b) { return a.Name.localeAwareCompare(b.Name) < 0; });
    return finds;
}

bool FindMemory::Save(const QString& name, const FindQuery& query)
{
    return RememberMerged(Memory::SavedFinds, [&](const QString& stored) {
        QJsonArray saved = Without(ReadArray(stored), name);
        QJsonObject object = ObjectOf(query);
        object.insert(u"name"_s, name);
        saved.append(object);
        return Written(saved);
    });
}

void FindMemory::Remove(const QString& name)
{
    RememberMerged(Memory::SavedFinds,
                   [&name](const QString& stored) { return Written(Without(ReadArray(stored), name)); });
}

} // namespace qb
