#include "finder/ui/FindHitView.h"

#include "support/ui/Colors.h"
#include "support/ui/Icons.h"
#include "text/ui/RichTextLook.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTextLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Margin = 6;
constexpr int Indent = 22;
using Is = FindHitList::Row::Is;

QFont CodeLineFont()
{
    return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

/// Paints the rows of a FindHitList.
class HitLook : public QStyledItemDelegate {
public:
    HitLook(FindHitList& hits, ContextColours& colours, QObject* parent)
        : QStyledItemDelegate(parent), m_hits(hits), m_colours(colours)
    {
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const FindHitList::Row& row = m_hits.At(index);
        const int lines = row.What == Is::Place ? int(qMax<qsizetype>(1, row.Found.Context.size())) : 1;
        const int spacing = row.What == Is::Place ? QFontMetrics(CodeLineFont()).lineSpacing()
                                                  : option.fontMetrics.lineSpacing();
        return {0, lines * spacing + (row.What == Is::Item ? 2 * Margin : Margin)};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem plain = option;
        plain.text.clear();
        option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &plain, painter, option.widget);
        painter->save();
        painter->setClipRect(option.rect);
        const FindHitList::Row& row = m_hits.At(index);
        if (row.What == Is::Item)
            PaintItem(*painter, option, row);
        else if (row.What == Is::Place)
            PaintPlace(*painter, option, row);
        else
            PaintMore(*painter, option, row);
        painter->restore();
    }

private:
    static QColor TextColor(const QStyleOptionViewItem& option)
    {
        const bool selected = option.state & QStyle::State_Selected;
        return option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    }
    static QColor FaintColor(const QStyleOptionViewItem& option)
    {
        QColor color = TextColor(option);
        color.setAlphaF(0.62f);
        return color;
    }

    void PaintItem(QPainter& painter, const QStyleOptionViewItem& option, const FindHitList::Row& row) const
    {
        const int size = option.widget->style()->pixelMetric(QStyle::PM_SmallIconSize);
        QRect place = option.rect.adjusted(Margin, 0, -Margin, 0);
        IconNamed(u"FOUND_ITEM"_s).paint(&painter, QRect(place.left(), place.center().y() - size / 2, size, size));
        place.setLeft(place.left() + size + Margin);
        QFont bold = option.font;
        bold.setBold(true);
        const QFontMetrics metrics(bold);
        const QString title = metrics.elidedText(m_hits.TitleOf(row), Qt::ElideRight, place.width() * 3 / 4);
        painter.setFont(bold);
        painter.setPen(TextColor(option));
        painter.drawText(place, Qt::AlignVCenter | Qt::TextSingleLine, title);
        place.setLeft(place.left() + metrics.horizontalAdvance(title) + 2 * Margin);
        const QString path = m_hits.PathOf(row);
        QString rest = row.Hit.Letters();
        if (!path.isEmpty())
            rest += u"   "_s + path;
        painter.setFont(option.font);
        painter.setPen(FaintColor(option));
        painter.drawText(place, Qt::AlignVCenter | Qt::TextSingleLine,
                         option.fontMetrics.elidedText(rest, Qt::ElideMiddle, place.width()));
    }

    void PaintMore(QPainter& painter, const QStyleOptionViewItem& option, const FindHitList::Row& row) const
    {
        painter.setPen(FaintColor(option));
        painter.drawText(option.rect.adjusted(Indent + Margin, 0, -Margin, 0), Qt::AlignVCenter,
                         u"and %1 more in this item"_s.arg(row.Count));
    }

    void PaintPlace(QPainter& painter, const QStyleOptionViewItem& option, const FindHitList::Row& row) const
    {
        const FindPlace& place = row.Found;
        const QFont font = CodeLineFont();
        const QFontMetrics metrics(font);
        painter.setFont(font);
        const int letters = metrics.horizontalAdvance(u"W "_s);
        const int numbers = metrics.horizontalAdvance(QString::number(place.ContextLine + place.Context.size())
                                                      + u"  "_s);
        const int left = option.rect.left() + Indent;
        const int text = left + letters + numbers;
        const int own = place.Line - place.ContextLine; // which of the lines holds it
        const int shift = Shift(metrics, place, option.rect.right() - text);
        const std::optional<QString> language = m_hits.LanguageOf(row);
        const std::vector<ContextColours::Line> colours = language ? m_colours.ColoursOf(place.Context, *language)
                                                                   : std::vector<ContextColours::Line>{};
        int top = option.rect.top() + Margin / 2;
        for (int line = 0; line < int(place.Context.size()); ++line, top += metrics.lineSpacing()) {
            painter.setPen(FaintColor(option));
            if (line == own)
                painter.drawText(left, top + metrics.ascent(), QString(LetterOf(place.Field)));
            painter.drawText(
                QRect(left + letters, top, numbers - metrics.horizontalAdvance(u"  "_s), metrics.lineSpacing()),
                Qt::AlignRight, QString::number(place.ContextLine + line));
            painter.save();
            painter.setClipRect(QRect(text, top, option.rect.right() - text, metrics.lineSpacing()));
            PaintLine(painter, option, place.Context[line], QPoint(text - shift, top),
                      size_t(line) < colours.size() ? &colours[size_t(line)] : nullptr, line == own ? &place : nullptr);
            painter.restore();
        }
    }

    /// How far the lines are moved to the left so that the place is seen.
    static int Shift(const QFontMetrics& metrics, const FindPlace& place, int width)
    {
        const QString line = place.Context.value(place.Line - place.ContextLine);
        const int end = metrics.horizontalAdvance(line.left(place.ContextColumn + qMin<qsizetype>(place.Length, 40)));
        return end <= width - Margin ? 0 : end - width * 2 / 3;
    }

    void PaintLine(QPainter& painter, const QStyleOptionViewItem& option, const QString& line, const QPoint& at,
                   const ContextColours::Line* colours, const FindPlace* place) const
    {
        QTextLayout layout(line, painter.font());
        QTextOption options;
        options.setWrapMode(QTextOption::NoWrap);
        options.setTabStopDistance(QFontMetricsF(painter.font()).horizontalAdvance(u' ') * 4);
        layout.setTextOption(options);
        QList<QTextLayout::FormatRange> formats;
        const bool selected = option.state & QStyle::State_Selected;
        if (colours && !selected) {
            for (const ContextColours::Piece& piece : *colours)
                formats << Format(piece.Begin, piece.Length, ColorFor(piece, option.palette), {});
        }
        if (place)
            formats << Format(place->ContextColumn, qMin(place->Length, line.size() - place->ContextColumn), {},
                              QColor(240, 170, 0, 120));
        layout.setFormats(formats);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        painter.setPen(place ? TextColor(option) : FaintColor(option));
        layout.draw(&painter, at);
    }

    static QColor ColorFor(const ContextColours::Piece& piece, const QPalette& palette)
    {
        const QColor base = palette.color(QPalette::Base);
        return IsDark(base) && piece.Dark ? ColorOf(*piece.Dark) : RichTextLook::ColorOn(base, piece.Light);
    }

    static QTextLayout::FormatRange Format(qsizetype begin, qsizetype length, const QColor& color,
                                           const QColor& background)
    {
        QTextLayout::FormatRange range;
        range.start = int(begin);
        range.length = int(length);
        if (color.isValid())
            range.format.setForeground(color);
        if (background.isValid())
            range.format.setBackground(background);
        return range;
    }

    FindHitList& m_hits;
    ContextColours& m_colours;
};

} // namespace

FindHitView::FindHitView(FindHitList& hits, QWidget* parent) : QListView(parent), m_hits(hits)
{
    setObjectName(u"lvHits"_s);
    setAccessibleName(u"What was found"_s);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setResizeMode(Adjust);
    setEditTriggers(NoEditTriggers);
    setItemDelegate(new HitLook(hits, m_colours, this));
    setModel(&hits);
    connect(&hits, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        m_current.reset();
        if (currentIndex().isValid())
            m_current = m_hits.At(currentIndex());
    });
    connect(&hits, &QAbstractItemModel::modelReset, this, &FindHitView::Restore);
}

/// The same place, where the list has it still.
void FindHitView::Restore()
{
    for (int row = m_current ? m_hits.RowOfItem(m_current->Hit.Id) : -1; row >= 0 && row < m_hits.rowCount(); ++row) {
        const FindHitList::Row& one = m_hits.At(m_hits.index(row));
        if (one.Hit.Id != m_current->Hit.Id)
            return;
        if (one.What == m_current->What && one.Found.Field == m_current->Found.Field && one.Place == m_current->Place)
            return setCurrentIndex(m_hits.index(row));
    }
}

bool FindHitView::Step(bool forward)
{
    const int step = forward ? 1 : -1;
    for (int row = currentIndex().row() + (currentIndex().isValid() ? step : 1); row >= 0; row += step) {
        if (row >= m_hits.rowCount())
            m_hits.fetchMore({});
        if (row >= m_hits.rowCount())
            return false;
        if (m_hits.At(m_hits.index(row)).What != Is::Place)
            continue;
        setCurrentIndex(m_hits.index(row));
        return true;
    }
    return false;
}

void FindHitView::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && currentIndex().isValid())
        Q_EMIT Opened(currentIndex());
    else
        QListView::keyPressEvent(event);
}

void FindHitView::mouseReleaseEvent(QMouseEvent* event)
{
    QListView::mouseReleaseEvent(event);
    const QModelIndex index = indexAt(event->pos());
    if (event->button() == Qt::LeftButton && index.isValid() && index == currentIndex())
        Q_EMIT Opened(index);
}

/// An empty list says what it is for.
void FindHitView::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    if (m_hits.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(
        viewport()->rect().adjusted(Indent, Margin, -Indent, -Margin), Qt::AlignCenter | Qt::TextWordWrap,
        u"What is found while you type is listed here.\nA click shows a place; F4 goes to the next one."_s);
}

void FindHitView::changeEvent(QEvent* event)
{
    QListView::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        scheduleDelayedItemsLayout();
}

} // namespace qb
