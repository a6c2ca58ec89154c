#pragma once

#include "platform/system/Date.h"
#include "platform/system/Work.h"
#include "printing/PrintSource.h"
#include "printing/ui/ItemLayout.h"
#include "printing/ui/PaperStyle.h"

#include <list>
#include <memory>

namespace qb {

/// Items on pages. A page is laid out when it is wanted, from where it begins; of what was laid out before only so much
/// is kept that the memory it takes does not grow with the print.
class PagedPrint {
public:
    /// What stands on all pages.
    struct Labels {
        QString Title;   ///< of the print as a whole
        QString Library; ///< as users know it
        Date Printed;
    };
    /// @p source must outlive it. Nothing is read yet.
    PagedPrint(PrintSource& source, const PrintSetup& setup, Labels labels);

    const PaperGeometry& Geometry() const { return m_geometry; }
    const PrintSetup& Setup() const { return m_setup; }
    const QString& Title() const { return m_labels.Title; }

    /// Finds where the next page begins. False when all pages are known. Raises an error when an item can't be read.
    bool FindNextPage();
    /// Finds all of them. @p work counts items. Raises 3059 when it was cancelled.
    void FindAllPages(Work& work = NoWork());
    /// The pages that are known; all of them once AllKnown.
    int Pages() const { return int(m_starts.size()) - (m_allKnown ? 0 : 1); }
    bool AllKnown() const { return m_allKnown; }

    /// Paints a known page, counted from 0, whose dots are the painter's units.
    void Paint(QPainter& painter, int page);

    /// The first item of a page, by its number in the source.
    size_t FirstItemOf(int page) const { return m_starts[size_t(page)].Item; }

private:
    /// A place between two rows.
    struct Place {
        size_t Item = 0;
        size_t Block = 0;
        int Row = 0;
    };
    /// Rows of one block on a page.
    struct Slice {
        std::shared_ptr<ItemLayout> Layout;
        size_t Block = 0;
        int First = 0;
        int Last = 0;
        double Top = 0; ///< below the begin of the page's body
    };
    struct Filling {
        std::vector<Slice> Slices;
        Place Next;
        double Used = 0;
    };

    std::shared_ptr<ItemLayout> LayoutOf(size_t item);
    void ForgetOldLayouts();
    Filling FillFrom(Place place);
    bool FillBlock(Filling& filling, const std::shared_ptr<ItemLayout>& layout) const;
    double RoomWanted(const ItemLayout& layout, size_t block) const;
    void PaintHeader(QPainter& painter, const Filling& filling) const;
    void PaintFooter(QPainter& painter, int page) const;

    PrintSource& m_source;
    PrintSetup m_setup;
    PaperGeometry m_geometry;
    Labels m_labels;
    std::vector<Place> m_starts{Place()}; ///< of the pages, and of the one that is not known yet
    bool m_allKnown = false;

    struct Kept {
        size_t Item;
        std::shared_ptr<ItemLayout> Layout;
    };
    std::list<Kept> m_kept; ///< the last used first
    qsizetype m_cost = 0;   ///< of those that are kept
};

} // namespace qb
