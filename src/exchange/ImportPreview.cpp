#include "exchange/ImportPreview.h"

#include <QHash>
#include <QSet>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 Nowhere = -1;

/// The titles of a library.
struct Titles {
    explicit Titles(Library& library)
    {
        Statement rows = library.Query(u"SELECT ID, ParentID, Title FROM Items"_s);
        while (rows.Step()) {
            const QString title = rows.Text(2).toCaseFolded();
            All.insert(title);
            Places.insert({rows.Long(1), title}, rows.Long(0));
        }
    }

    QSet<QString> All;
    QHash<std::pair<qint64, QString>, qint64> Places; ///< items, by parent and title
};

} // namespace

std::vector<PreviewedItem> PreviewImport(Library& library, const UnpackedBranch& branch, qint64 parent)
{
    const Titles titles(library);
    std::vector<PreviewedItem> items;
    std::vector<qint64> likes; ///< the items of the library that stand where these would
    for (const OutlinedItem& outlined : branch.Items()) {
        const qint64 above = outlined.Parent < 0 ? parent : likes[size_t(outlined.Parent)];
        const QString title = outlined.Title.toCaseFolded();
        likes.push_back(above == Nowhere ? Nowhere : titles.Places.value({above, title}, Nowhere));
        items.push_back({.Key = outlined.Key,
                         .Parent = outlined.Parent,
                         .Title = outlined.Title,
                         .Bytes = outlined.TextBytes + outlined.FileBytes + outlined.PageBytes,
                         .Files = outlined.Files,
                         .There = likes.back() != Nowhere      ? Presence::Here
                                  : titles.All.contains(title) ? Presence::Elsewhere
                                                               : Presence::No});
    }
    return items;
}

BranchChoice::BranchChoice(const std::vector<PreviewedItem>& items) : m_items(items), m_chosen(items.size(), true) {}

void BranchChoice::Choose(int place, bool chosen)
{
    std::vector<bool> inBranch(m_items.size());
    for (size_t at = size_t(place); at < m_items.size(); ++at) { // what is below an item comes behind it
        const int parent = m_items[at].Parent;
        inBranch[at] = at == size_t(place) || (parent >= 0 && inBranch[size_t(parent)]);
        if (inBranch[at])
            m_chosen[at] = chosen;
    }
    for (int above = m_items[size_t(place)].Parent; above >= 0 && !chosen; above = m_items[size_t(above)].Parent)
        m_chosen[size_t(above)] = false;
}

int BranchChoice::Count() const
{
    return int(std::count(m_chosen.begin(), m_chosen.end(), true));
}

qint64 BranchChoice::Bytes() const
{
    qint64 bytes = 0;
    for (size_t place = 0; place < m_items.size(); ++place)
        bytes += m_chosen[place] ? m_items[place].Bytes : 0;
    return bytes;
}

QStringList BranchChoice::Keys() const
{
    QStringList keys;
    if (Count() == int(m_items.size()))
        return keys;
    for (size_t place = 0; place < m_items.size(); ++place) {
        const int parent = m_items[place].Parent;
        if (m_chosen[place] && (parent < 0 || !m_chosen[size_t(parent)]))
            keys << m_items[place].Key;
    }
    return keys;
}

} // namespace qb
