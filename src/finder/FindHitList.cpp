#include "finder/FindHitList.h"

#include <QScopedValueRollback>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

FindHitList::FindHitList(FindSearch& search, QObject* parent) : QAbstractListModel(parent), m_search(search)
{
    connect(&search, &FindSearch::Changed, this, &FindHitList::Refill);
}

void FindHitList::Refill()
{
    beginResetModel();
    m_rows.clear();
    m_listed = 0;
    m_texts = m_search.Texts();
    m_number = m_search.Number();
    m_rows = NextRows();
    endResetModel();
}

/// While the search goes on its hits change places.
bool FindHitList::canFetchMore(const QModelIndex& parent) const
{
    return !parent.isValid() && !m_fetching && m_number == m_search.Number() && !m_search.IsRunning()
           && m_search.Matcher() && m_listed < m_search.Hits().size();
}

std::vector<FindHitList::Row> FindHitList::NextRows()
{
    std::vector<Row> rows;
    const size_t end = m_search.Matcher() ? std::min(m_listed + ItemsAtATime, m_search.Hits().size()) : 0;
    for (; m_listed < end; ++m_listed)
        AddHit(m_search.Hits()[m_listed], rows);
    return rows;
}

void FindHitList::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent))
        return;
    const QScopedValueRollback fetching(m_fetching, true); // who is told of new rows may ask for more
    std::vector<Row> rows = NextRows();
    beginInsertRows({}, int(m_rows.size()), int(m_rows.size() + rows.size()) - 1);
    m_rows.insert(m_rows.end(), std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()));
    endInsertRows();
}

void FindHitList::AddHit(const FindHit& hit, std::vector<Row>& rows) const
{
    qint64 count = 0;
    for (const quint32 one : hit.Counters)
        count += one;
    rows.push_back({.What = Row::Is::Item, .Hit = hit, .Place = 0, .Found = {}, .Count = count});
    std::vector<FindPlace> places = PlacesIn(*m_texts, hit.Place, *m_search.Matcher(), MostPlaces, ContextLines);
    const qint64 left = count - qint64(places.size());
    qsizetype number = 0;
    FindField field = FindField::Title;
    for (FindPlace& place : places) {
        number = place.Field == field ? number : 0;
        field = place.Field;
        rows.push_back({.What = Row::Is::Place, .Hit = hit, .Place = number++, .Found = std::move(place), .Count = 0});
    }
    if (left > 0)
        rows.push_back({.What = Row::Is::More, .Hit = hit, .Place = 0, .Found = {}, .Count = left});
}

QString FindHitList::TitleOf(const Row& row) const
{
    return m_texts->Title(row.Hit.Place);
}

QString FindHitList::PathOf(const Row& row) const
{
    constexpr int Deepest = 64; // who stands below themselves has no end
    const FindSnapshot& texts = *m_texts;
    QStringList titles;
    std::optional<FindSnapshot::Place> place = texts.Find(texts.Item(row.Hit.Place).Parent);
    for (int depth = 0; place && depth < Deepest; ++depth) {
        titles.prepend(texts.Title(*place));
        place = texts.Find(texts.Item(*place).Parent);
    }
    return titles.join(u" › "_s);
}

std::optional<QString> FindHitList::LanguageOf(const Row& row) const
{
    if (row.Found.Field != FindField::Code && row.Found.Field != FindField::Usage)
        return {};
    const QString& own = m_texts->LanguageOf(row.Hit.Place);
    return own == m_texts->Language() ? QString() : own;
}

int FindHitList::RowOfItem(qint64 item) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [&](const Row& one) { return one.What == Row::Is::Item && one.Hit.Id == item; });
    return row == m_rows.end() ? -1 : int(row - m_rows.begin());
}

int FindHitList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

/// For who can't see the list, and for its tests: the delegate paints the rows themselves.
QVariant FindHitList::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
        return {};
    const Row& row = At(index);
    switch (row.What) {
    case Row::Is::Item:
        return u"%1  (%2)"_s.arg(TitleOf(row), row.Hit.Letters());
    case Row::Is::More:
        return u"%1 more"_s.arg(row.Count);
    case Row::Is::Place:
        break;
    }
    const FindPlace& place = row.Found;
    return u"%1 %2: %3"_s.arg(LetterOf(place.Field))
        .arg(place.Line)
        .arg(place.Context.value(place.Line - place.ContextLine).trimmed());
}

} // namespace qb
