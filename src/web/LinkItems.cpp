#include "web/LinkItems.h"

#include <QHash>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct Row {
    qint64 Parent;
    QString Title;
};

/// The titles above an item; what is no tree ends after some steps.
QString PlaceOf(const QHash<qint64, Row>& rows, qint64 id)
{
    constexpr int Deepest = 100;
    QStringList titles;
    for (int step = 0; step < Deepest; ++step) {
        const auto row = rows.constFind(id);
        const auto above = row == rows.cend() ? row : rows.constFind(row->Parent);
        if (above == rows.cend())
            break;
        titles.prepend(above->Title);
        id = row->Parent;
    }
    return titles.join(u" › "_s);
}

} // namespace

QString ItemAddress(qint64 id)
{
    return u"local://Item%1"_s.arg(id);
}

std::vector<LinkableItem> LinkableItemsOf(Library& library)
{
    QHash<qint64, Row> rows;
    Statement items = library.Query(u"SELECT ID, ParentID, Title FROM Items"_s);
    while (items.Step())
        rows.insert(items.Long(0), {items.Long(1), items.Text(2)});
    std::vector<LinkableItem> all;
    all.reserve(size_t(rows.size()));
    for (auto row = rows.cbegin(); row != rows.cend(); ++row)
        all.push_back({row.key(), row->Title, PlaceOf(rows, row.key())});
    std::sort(all.begin(), all.end(), [](const LinkableItem& left, const LinkableItem& right) {
        const int order = QString::compare(left.Title, right.Title, Qt::CaseInsensitive);
        return order != 0 ? order < 0 : left.ID < right.ID;
    });
    return all;
}

std::vector<LinkableItem> MatchingItems(const std::vector<LinkableItem>& items, const QString& text, size_t most)
{
    const QStringList words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    std::vector<LinkableItem> found;
    std::vector<LinkableItem> others;
    for (const LinkableItem& item : items) {
        const QString whole = item.Title + u' ' + item.Place;
        const bool fits = std::all_of(words.begin(), words.end(), [&whole](const QString& word) {
            return whole.contains(word, Qt::CaseInsensitive);
        });
        if (fits && !words.isEmpty() && !item.Title.startsWith(words.first(), Qt::CaseInsensitive))
            others.push_back(item);
        else if (fits)
            found.push_back(item);
        if (found.size() == most)
            return found;
    }
    const size_t missing = std::min(most - found.size(), others.size());
    found.insert(found.end(), others.begin(), others.begin() + qsizetype(missing));
    return found;
}

} // namespace qb
