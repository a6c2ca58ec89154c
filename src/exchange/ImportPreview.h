#pragma once

#include "exchange/BranchImport.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

/// Whether an item of that title is in the library already.
enum class Presence {
    No,
    Elsewhere, ///< somewhere
    Here,      ///< where the import would put this one
};

/// An item of an export as it is looked at before it is taken in.
struct PreviewedItem {
    QString Key;
    int Parent = -1; ///< its place among those before it; -1: it stands at the top
    QString Title;
    qint64 Bytes = 0; ///< of its texts, stored files and page
    int Files = 0;    ///< stored ones
    Presence There = Presence::No;
};

/// What an import below @p parent would bring, in the order of the export. Titles are compared without case.
std::vector<PreviewedItem> PreviewImport(Library& library, const UnpackedBranch& branch, qint64 parent);

/// Which branches of an export are taken in. An item is chosen with all below it; where something below it is not, it
/// is not itself, and what is still chosen there comes on its own.
class BranchChoice {
public:
    /// All of it.
    explicit BranchChoice(const std::vector<PreviewedItem>& items);

    bool IsChosen(int place) const { return m_chosen[size_t(place)]; }
    void Choose(int place, bool chosen);
    void ChooseAll(bool chosen) { m_chosen.assign(m_chosen.size(), chosen); }

    int Count() const;
    qint64 Bytes() const;
    /// The keys of the branches, as BranchImportOptions has them: none where all is chosen.
    QStringList Keys() const;

private:
    const std::vector<PreviewedItem>& m_items;
    std::vector<bool> m_chosen;
};

} // namespace qb
