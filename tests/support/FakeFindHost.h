#pragma once

#include "finder/FindHost.h"

#include <QStringList>
#include <algorithm>
#include <map>

namespace qb::test {

/// Pages with texts, and a caret in each.
class FakeFindHost : public FindHost {
public:
    qint64 CurrentItem() const override { return Item; }
    bool OpenItem(qint64 item) override
    {
        Log << QStringLiteral("open %1").arg(item);
        if (Refuses)
            return false;
        if (item != Item)
            Tab = 1;
        Item = item;
        return true;
    }
    int CurrentTab() const override { return Tab; }
    void ShowTab(int tab) override
    {
        Log << QStringLiteral("tab %1").arg(tab);
        Tab = tab;
    }
    bool FindOnPage(const QString& keyword, const FindMatcher& matcher, bool forward, From from) override
    {
        const QString text = Texts.value({Item, Tab});
        const QList<qsizetype> places = PlacesOf(text, matcher);
        qsizetype& caret = Carets[{Item, Tab}];
        if (from == From::Edge)
            caret = forward ? -1 : text.size();
        qsizetype found = -1;
        for (const qsizetype place : places) {
            if (forward ? place > caret && found < 0 : place < caret)
                found = place;
        }
        if (found < 0)
            return false;
        caret = found;
        Log << QStringLiteral("%1 at %2").arg(keyword).arg(found);
        return true;
    }
    void GoToPlace(const FindMatcher& matcher, qsizetype place) override
    {
        Log << QStringLiteral("place %1 of %2").arg(place).arg(matcher.Query().Text);
    }
    void ShowFile(qint64 file) override { Log << QStringLiteral("file %1").arg(file); }
    void MarkPlaces(const FindMatcher* matcher) override { Marked = matcher ? matcher->Query().Text : QString(); }

    static QList<qsizetype> PlacesOf(const QString& text, const FindMatcher& matcher)
    {
        QList<qsizetype> places;
        for (const QString& needle : NeedlesOf(matcher.Query())) {
            const Qt::CaseSensitivity sensitivity = CountsCase(matcher.Query()) ? Qt::CaseSensitive
                                                                                : Qt::CaseInsensitive;
            for (qsizetype at = text.indexOf(needle, 0, sensitivity); at >= 0;
                 at = text.indexOf(needle, at + 1, sensitivity))
                places << at;
        }
        std::sort(places.begin(), places.end());
        return places;
    }
    QStringList Took() { return std::exchange(Log, {}); }

    qint64 Item = 0;
    int Tab = 0;
    bool Refuses = false;
    QString Marked;
    QStringList Log;
    struct Pages {
        QString value(const std::pair<qint64, int>& key) const
        {
            const auto found = Map.find(key);
            return found == Map.end() ? QString() : found->second;
        }
        std::map<std::pair<qint64, int>, QString> Map;
    } Texts;
    std::map<std::pair<qint64, int>, qsizetype> Carets;
};

} // namespace qb::test
