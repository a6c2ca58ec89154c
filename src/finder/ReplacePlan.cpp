#include "finder/ReplacePlan.h"

#include "store/ItemRules.h"

#include <QLocale>
#include <algorithm>
#include <unordered_set>

namespace qb {

using namespace Qt::StringLiterals;

bool ReplacePlan::Collect(Library& library, const std::vector<qint64>& items, const FindMatcher& matcher,
                          const QString& replacement, Work& work)
{
    beginResetModel();
    m_items.clear();
    m_changes.clear();
    m_rows.clear();
    work.Say(u"Looking for what would be changed"_s, 0);
    bool isCancelled = false;
    for (size_t i = 0; i < items.size() && !isCancelled; ++i) {
        Add(library, items[i], matcher, replacement);
        work.Advance(qint64(i) + 1, qint64(items.size()));
        isCancelled = work.IsCancelled();
    }
    if (isCancelled) {
        m_items.clear();
        m_changes.clear();
        m_rows.clear();
    }
    endResetModel();
    Q_EMIT ChosenChanged();
    return !isCancelled;
}

void ReplacePlan::Add(Library& library, qint64 id, const FindMatcher& matcher, const QString& replacement)
{
    ItemEntry item{.Id = id, .Title = u"Item %1"_s.arg(id), .Reason = {}, .Changes = 0};
    std::vector<ReplaceChange> changes;
    try {
        item.Title = library.QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {id}).ToText();
        changes = ChangesIn(library, id, matcher, replacement);
        const ItemStanding standing = StandingOf(library, id);
        const bool renames = std::any_of(changes.begin(), changes.end(),
                                         [](const ReplaceChange& change) { return change.Field == FindField::Title; });
        item.Reason = SentenceOf(WhatBars(ItemChange::EditUnasked, standing));
        if (item.Reason.isEmpty() && renames)
            item.Reason = SentenceOf(WhatBars(ItemChange::Rename, standing));
    } catch (const RuntimeError& error) {
        item.Reason = error.Description();
    }
    if (changes.empty() && item.Reason.isEmpty())
        return;
    item.Changes = changes.size();
    m_rows.push_back({.IsItem = true, .Item = m_items.size(), .Change = m_changes.size()});
    for (ReplaceChange& change : changes) {
        m_rows.push_back({.IsItem = false, .Item = m_items.size(), .Change = m_changes.size()});
        m_changes.push_back({std::move(change), item.Reason.isEmpty()});
    }
    m_items.push_back(std::move(item));
}

std::vector<ReplaceChange> ReplacePlan::Chosen() const
{
    std::vector<ReplaceChange> chosen;
    for (const Entry& entry : m_changes) {
        if (entry.IsChosen)
            chosen.push_back(entry.What);
    }
    return chosen;
}

QString ReplacePlan::StatusText() const
{
    std::unordered_set<qint64> items;
    qint64 chosen = 0;
    for (const Entry& entry : m_changes) {
        if (!entry.IsChosen)
            continue;
        ++chosen;
        items.insert(entry.What.Item);
    }
    if (m_changes.empty())
        return u"There is nothing to change: only titles, descriptions, code, notes and usage can be replaced in"_s;
    const QLocale locale;
    return u"%1 of %2 in %3"_s.arg(
        locale.toString(chosen),
        locale.toString(qint64(m_changes.size())) + (m_changes.size() == 1 ? u" change"_s : u" changes"_s),
        locale.toString(qint64(items.size())) + (items.size() == 1 ? u" item"_s : u" items"_s));
}

void ReplacePlan::ChooseAll(bool chosen)
{
    for (const Row& row : m_rows) {
        if (!row.IsItem)
            m_changes[row.Change].IsChosen = chosen && m_items[row.Item].Reason.isEmpty();
    }
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1), {Qt::CheckStateRole});
    Q_EMIT ChosenChanged();
}

Qt::CheckState ReplacePlan::StateOf(const Row& row) const
{
    if (!row.IsItem)
        return m_changes[row.Change].IsChosen ? Qt::Checked : Qt::Unchecked;
    const auto first = m_changes.begin() + std::ptrdiff_t(row.Change);
    const auto count = std::count_if(first, first + std::ptrdiff_t(m_items[row.Item].Changes),
                                     [](const Entry& entry) { return entry.IsChosen; });
    return count == 0 ? Qt::Unchecked : size_t(count) == m_items[row.Item].Changes ? Qt::Checked : Qt::PartiallyChecked;
}

int ReplacePlan::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant ReplacePlan::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Row& row = At(index);
    if (role == Qt::CheckStateRole)
        return StateOf(row);
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    if (row.IsItem)
        return ItemOf(row).Reason.isEmpty() ? ItemOf(row).Title
                                            : u"%1: %2"_s.arg(ItemOf(row).Title, ItemOf(row).Reason);
    const ReplaceChange& change = ChangeOf(row);
    return u"%1 %2: %3 → %4"_s.arg(LetterOf(change.Field)).arg(change.Line).arg(change.Before, change.After);
}

/// The box of an item is that of all its changes.
bool ReplacePlan::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || !(flags(index) & Qt::ItemIsUserCheckable))
        return false;
    const Row row = At(index);
    const bool chosen = value.toInt() != Qt::Unchecked;
    const size_t count = row.IsItem ? m_items[row.Item].Changes : 1;
    for (size_t i = 0; i < count; ++i)
        m_changes[row.Change + i].IsChosen = chosen;
    int first = index.row();
    while (!m_rows[size_t(first)].IsItem)
        --first;
    Q_EMIT dataChanged(this->index(first), this->index(first + int(m_items[row.Item].Changes)), {Qt::CheckStateRole});
    Q_EMIT ChosenChanged();
    return true;
}

Qt::ItemFlags ReplacePlan::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return ItemOf(At(index)).Reason.isEmpty() ? flags | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : flags;
}

} // namespace qb
