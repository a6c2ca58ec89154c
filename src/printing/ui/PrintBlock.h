#pragma once

#include <QPainter>

namespace qb {

/// A part of an item as it stands on paper: rows, none of which is ever parted by the end of a page.
class PrintBlock {
public:
    PrintBlock() = default;
    virtual ~PrintBlock() = default;
    PrintBlock(const PrintBlock&) = delete;
    PrintBlock& operator=(const PrintBlock&) = delete;

    virtual int Rows() const = 0;
    /// Where a row begins, in dots from the begin of the block; that of Rows() is the block's height.
    virtual double Top(int row) const = 0;
    /// Paints the rows from @p first up to, and without, @p last; the first begins where the painter's origin is.
    virtual void Paint(QPainter& painter, int first, int last) const = 0;

    double Height(int first, int last) const { return Top(last) - Top(first); }

    double SpaceBefore = 0;     ///< in dots; none at the head of a page
    bool KeepsWithNext = false; ///< it does not stand at the foot of a page alone
};

} // namespace qb
