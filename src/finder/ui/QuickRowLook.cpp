#include "finder/ui/QuickRowLook.h"

#include "finder/ui/QuickRowModel.h"

#include <QApplication>
#include <QPainter>
#include <QTextLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Gap = 8;
constexpr int Padding = 4;
constexpr double Smaller = 0.9; ///< than the text

const QuickRow& RowOf(const QModelIndex& index)
{
    return static_cast<const QuickRowModel*>(index.model())->Rows()[size_t(index.row())];
}

QFont SmallFont(QFont font)
{
    font.setPointSizeF(font.pointSizeF() * Smaller);
    return font;
}

bool IsOfTwoLines(const QuickRow& row)
{
    return row.What == QuickRow::Kind::Hit;
}

QList<QTextLayout::FormatRange> BoldLetters(const QuickRow& row)
{
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    QList<QTextLayout::FormatRange> formats;
    for (const qsizetype place : row.Letters) {
        if (!formats.isEmpty() && formats.last().start + formats.last().length == int(place))
            ++formats.last().length;
        else
            formats.append({int(place), 1, bold});
    }
    return formats;
}

/// One line without an end.
QTextLine LayOut(QTextLayout& layout)
{
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    return line;
}

/// Of a path, what is nearest to the item stays.
Qt::TextElideMode ElideModeOf(const QuickRow& row)
{
    return row.What == QuickRow::Kind::Item || row.What == QuickRow::Kind::Hit ? Qt::ElideLeft : Qt::ElideRight;
}

} // namespace

QSize QuickRowLook::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const int line = QFontMetrics(option.font).height();
    const int small = QFontMetrics(SmallFont(option.font)).height();
    return {10 * line, line + 2 * Padding + (IsOfTwoLines(RowOf(index)) ? small : 0)};
}

/// Returns where it ends.
int QuickRowLook::DrawText(QPainter& painter, const QRect& place, const QuickRow& row, const QFont& font)
{
    QFont own = font;
    own.setStrikeOut(row.IsGone);
    QString text = row.Text;
    QTextLayout layout(text, own, painter.device());
    layout.setFormats(BoldLetters(row));
    QTextLine line = LayOut(layout);
    QTextLayout cut;
    const bool isCut = line.naturalTextWidth() > place.width();
    if (isCut) {
        const int dots = QFontMetrics(own).horizontalAdvance(u'…');
        text = text.left(line.xToCursor(std::max(0, place.width() - dots), QTextLine::CursorOnCharacter)) + u'…';
        cut.setText(text);
        cut.setFont(own);
        cut.setFormats(BoldLetters(row));
        line = LayOut(cut);
    }
    const QPointF at(place.left(), place.top() + (place.height() - line.height()) / 2);
    (isCut ? cut : layout).draw(&painter, at);
    return place.left() + int(line.naturalTextWidth()) + 1;
}

void QuickRowLook::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QuickRow& row = RowOf(index);
    const bool isSelected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group = row.IsGone ? QPalette::Disabled : QPalette::Active;
    const QColor text = option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    const QColor ground = option.palette.color(QPalette::Active, isSelected ? QPalette::Highlight : QPalette::Base);
    constexpr double Faint = 0.62; // of the text's colour
    const auto mixed = [&](int (QColor::*part)() const) {
        return int((text.*part)() * Faint + (ground.*part)() * (1 - Faint));
    };
    const QColor faint = isSelected ? text : QColor(mixed(&QColor::red), mixed(&QColor::green), mixed(&QColor::blue));
    painter->save();
    if (isSelected)
        painter->fillRect(option.rect, ground);
    else if (option.state & QStyle::State_MouseOver)
        painter->fillRect(option.rect, option.palette.color(QPalette::AlternateBase));
    const int line = QFontMetrics(option.font).height();
    QRect place = option.rect.adjusted(Gap, Padding, -Gap, -Padding);
    const int icon = option.widget->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, option.widget);
    const QRect first(place.left(), place.top(), place.width(), line);
    index.data(Qt::DecorationRole).value<QIcon>().paint(painter, first.left(), first.top(), icon, line);
    place.setLeft(place.left() + icon + Gap);

    QRect upper(place.left(), place.top(), place.width(), line);
    const QFont small = SmallFont(option.font);
    const QString mark = row.IsGone ? u"deleted since"_s : row.Mark;
    if (!mark.isEmpty()) {
        const int width = std::min(QFontMetrics(small).horizontalAdvance(mark) + 1, upper.width() / 2);
        painter->setFont(small);
        painter->setPen(faint);
        painter->drawText(upper, Qt::AlignRight | Qt::AlignVCenter,
                          QFontMetrics(small).elidedText(mark, Qt::ElideRight, width));
        upper.setRight(upper.right() - width - Gap);
    }
    painter->setPen(text);
    const int end = DrawText(*painter, upper, row, option.font);
    const QRect beside = IsOfTwoLines(row)
                             ? QRect(place.left(), upper.bottom() + 1, place.width(), place.bottom() - upper.bottom())
                             : QRect(end + Gap, upper.top(), upper.right() - end - Gap, upper.height());
    constexpr int Least = 30; // pixels, in which something can be told
    if (beside.width() >= Least) {
        painter->setFont(small);
        painter->setPen(faint);
        painter->drawText(beside, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(small).elidedText(row.Beside, ElideModeOf(row), beside.width()));
    }
    painter->restore();
}

} // namespace qb
