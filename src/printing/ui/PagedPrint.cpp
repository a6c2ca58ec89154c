#include "printing/ui/PagedPrint.h"

#include "platform/system/RuntimeError.h"
#include "support/DateFormatCustom.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MostKept = 8'000'000; ///< characters of items that are kept laid out
constexpr int LeastRows = 2;              ///< of a part below its heading

} // namespace

PagedPrint::PagedPrint(PrintSource& source, const PrintSetup& setup, Labels labels)
    : m_source(source), m_setup(setup), m_geometry(setup), m_labels(std::move(labels)), m_allKnown(source.Count() == 0)
{
    if (m_allKnown)
        m_starts.clear();
}

// Layouts

std::shared_ptr<ItemLayout> PagedPrint::LayoutOf(size_t item)
{
    const auto found = std::find_if(m_kept.begin(), m_kept.end(),
                                    [item](const Kept& kept) { return kept.Item == item; });
    if (found != m_kept.end()) {
        m_kept.splice(m_kept.begin(), m_kept, found);
        return m_kept.front().Layout;
    }
    const auto layout = std::make_shared<ItemLayout>(m_source.Item(item), m_setup, m_geometry.Body.size());
    m_kept.push_front({item, layout});
    m_cost += layout->Cost();
    ForgetOldLayouts();
    return layout;
}

void PagedPrint::ForgetOldLayouts()
{
    while (m_cost > MostKept && m_kept.size() > 1) {
        m_cost -= m_kept.back().Layout->Cost();
        m_kept.pop_back();
    }
}

// Pages

bool PagedPrint::FindNextPage()
{
    if (m_allKnown)
        return false;
    const Filling page = FillFrom(m_starts.back());
    if (page.Next.Item >= m_source.Count())
        m_allKnown = true;
    else
        m_starts.push_back(page.Next);
    return !m_allKnown;
}

void PagedPrint::FindAllPages(Work& work)
{
    while (FindNextPage()) {
        work.Advance(qint64(m_starts.back().Item), qint64(m_source.Count()));
        if (work.IsCancelled())
            throw RuntimeError(ErrorNumber::Cancelled, u"The print was stopped; nothing was printed."_s,
                               u"PagedPrint"_s);
    }
}

/// What a block wants below it on the same page: its own height and, of a heading, the first rows behind it.
double PagedPrint::RoomWanted(const ItemLayout& layout, size_t block) const
{
    double room = 0;
    for (; block < layout.Blocks().size(); ++block) {
        const PrintBlock& one = *layout.Blocks()[block];
        const int rows = one.KeepsWithNext ? one.Rows() : std::min(one.Rows(), LeastRows);
        room += one.Height(0, rows) + (room > 0 ? one.SpaceBefore : 0);
        if (!one.KeepsWithNext)
            break;
    }
    return room;
}

/// Adds as much of the next block as there is room for. False when the page is full.
bool PagedPrint::FillBlock(Filling& filling, const std::shared_ptr<ItemLayout>& layout) const
{
    const PrintBlock& block = *layout->Blocks()[filling.Next.Block];
    const double height = m_geometry.Body.height();
    const bool isHead = filling.Slices.empty();
    const int first = std::min(filling.Next.Row, block.Rows()); // the item may have been changed since
    if (first == 0 && !isHead) {
        filling.Used += block.SpaceBefore;
        if (filling.Used + RoomWanted(*layout, filling.Next.Block) > height)
            return false;
    }
    int last = first;
    while (last < block.Rows() && filling.Used + block.Height(first, last + 1) <= height)
        ++last;
    if (last == first && isHead && block.Rows() > first)
        last = first + 1; // higher than a page: cut, as it would be on any
    if (last > first)
        filling.Slices.push_back({layout, filling.Next.Block, first, last, filling.Used});
    filling.Used += block.Height(first, last);
    filling.Next.Row = last;
    return last == block.Rows();
}

PagedPrint::Filling PagedPrint::FillFrom(Place place)
{
    Filling filling{.Slices = {}, .Next = place, .Used = 0};
    while (filling.Next.Item < m_source.Count()) {
        const std::shared_ptr<ItemLayout> layout = LayoutOf(filling.Next.Item);
        while (filling.Next.Block < layout->Blocks().size()) {
            if (!FillBlock(filling, layout))
                return filling;
            ++filling.Next.Block;
            filling.Next.Row = 0;
        }
        filling.Next = {filling.Next.Item + 1, 0, 0};
        if (m_setup.NewPages)
            break;
    }
    return filling;
}

// Painting

void PagedPrint::Paint(QPainter& painter, int page)
{
    const Filling filling = FillFrom(m_starts[size_t(page)]);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    PaintHeader(painter, filling);
    PaintFooter(painter, page);
    for (const Slice& slice : filling.Slices) {
        painter.save();
        painter.translate(m_geometry.Body.topLeft() + QPointF(0, slice.Top));
        slice.Layout->Blocks()[slice.Block]->Paint(painter, slice.First, slice.Last);
        painter.restore();
    }
}

void PagedPrint::PaintHeader(QPainter& painter, const Filling& filling) const
{
    const QRectF area = m_geometry.Header;
    const QFont font = PaperFontOf(PaperFont::Small);
    const QString date = DateFormatCustom(m_labels.Printed, u"d mmm yyyy hh:nn"_s);
    constexpr double DateShare = 0.25;
    QString title;
    if (!filling.Slices.empty()) {
        const PrintedItem& item = filling.Slices.front().Layout->Item();
        title = (item.Path + QStringList{item.Title}).join(u" \u203a "_s);
    }
    painter.setPen(PaleInk);
    PaintLine(painter, area.adjusted(0, 0, -area.width() * DateShare, 0), Qt::AlignLeft | Qt::AlignTop, title, font);
    PaintLine(painter, area.adjusted(area.width() * (1 - DateShare), 0, 0, 0), Qt::AlignRight | Qt::AlignTop, date,
              font);
    painter.fillRect(QRectF(area.left(), area.bottom() - DotsPerPoint, area.width(), DotsPerPoint / 2), RuleInk);
}

void PagedPrint::PaintFooter(QPainter& painter, int page) const
{
    const QRectF area = m_geometry.Footer;
    const QFont font = PaperFontOf(PaperFont::Small);
    const QString number = m_allKnown ? u"Page %1 of %2"_s.arg(page + 1).arg(Pages()) : u"Page %1"_s.arg(page + 1);
    painter.setPen(PaleInk);
    PaintLine(painter, area.adjusted(0, 0, -area.width() / 4, 0), Qt::AlignLeft | Qt::AlignBottom, m_labels.Library,
              font);
    PaintLine(painter, area.adjusted(area.width() * 0.75, 0, 0, 0), Qt::AlignRight | Qt::AlignBottom, number, font);
}

} // namespace qb
