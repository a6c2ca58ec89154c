#include "finder/ui/frmReplace.h"

#include "panels/ui/ElidedLabel.h"
#include "support/ui/Colors.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Margin = 4;
constexpr int MostLines = 6; ///< of a change that are shown

QFont LineFont()
{
    return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

QStringList LinesOf(const QString& text)
{
    QStringList lines = text.split(u'\n');
    if (lines.size() > MostLines)
        lines = lines.first(MostLines - 1) << u"…"_s;
    return lines;
}

/// Paints a change as the lines that go and those that come.
class ChangeLook : public QStyledItemDelegate {
public:
    ChangeLook(ReplacePlan& plan, QObject* parent) : QStyledItemDelegate(parent), m_plan(plan) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const ReplacePlan::Row& row = m_plan.At(index);
        if (row.IsItem)
            return {0, option.fontMetrics.lineSpacing() + 3 * Margin};
        const ReplaceChange& change = m_plan.ChangeOf(row);
        const qsizetype lines = LinesOf(change.Before).size() + LinesOf(change.After).size();
        return {0, int(lines) * QFontMetrics(LineFont()).lineSpacing() + 2 * Margin};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem box = option;
        initStyleOption(&box, index);
        const ReplacePlan::Row& row = m_plan.At(index);
        const QString title = box.text;
        box.text.clear();
        box.font.setBold(row.IsItem);
        if (row.IsItem)
            box.text = QFontMetrics(box.font).elidedText(title, Qt::ElideRight, box.rect.width() - 12 * Margin);
        option.widget->style()->drawControl(QStyle::CE_ItemViewItem, &box, painter, option.widget);
        if (!row.IsItem)
            PaintChange(*painter, box, m_plan.ChangeOf(row), IsChosen(index));
    }

protected:
    /// Changes stand to the right of their item.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!m_plan.At(index).IsItem)
            option->rect.setLeft(option->rect.left() + 5 * Margin);
    }

    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override
    {
        QStyleOptionViewItem moved = option;
        if (!m_plan.At(index).IsItem)
            moved.rect.setLeft(moved.rect.left() + 5 * Margin);
        return QStyledItemDelegate::editorEvent(event, model, moved, index);
    }

private:
    static bool IsChosen(const QModelIndex& index) { return index.data(Qt::CheckStateRole).toInt() == Qt::Checked; }

    static void PaintChange(QPainter& painter, const QStyleOptionViewItem& box, const ReplaceChange& change,
                            bool chosen)
    {
        const bool isDark = IsDark(box.palette.color(QPalette::Base));
        const QColor goes = isDark ? QColor(120, 40, 40) : QColor(255, 226, 224);
        const QColor comes = isDark ? QColor(34, 84, 44) : QColor(220, 245, 222);
        const QFont font = LineFont();
        const QFontMetrics metrics(font);
        painter.save();
        painter.setFont(font);
        const int check = box.widget->style()->pixelMetric(QStyle::PM_IndicatorWidth, &box, box.widget);
        const int width = metrics.horizontalAdvance(u"W 00000 "_s);
        const int left = box.rect.left() + check + 3 * Margin;
        QColor faint = box.palette.color(QPalette::Text);
        faint.setAlphaF(0.62f);
        painter.setPen(faint);
        int top = box.rect.top() + Margin;
        painter.drawText(left, top + metrics.ascent(), u"%1 %2"_s.arg(LetterOf(change.Field)).arg(change.Line));
        const auto paint = [&](const QString& text, const QString& sign, const QColor& background) {
            for (const QString& line : LinesOf(text)) {
                const QRect place(left + width, top, box.rect.right() - left - width - Margin, metrics.lineSpacing());
                if (chosen)
                    painter.fillRect(place, background);
                painter.setPen(chosen ? box.palette.color(QPalette::Text) : faint);
                painter.drawText(place.adjusted(Margin, 0, -Margin, 0), Qt::AlignVCenter | Qt::TextSingleLine,
                                 metrics.elidedText(sign + line, Qt::ElideRight, place.width() - 2 * Margin));
                top += metrics.lineSpacing();
            }
        };
        paint(change.Before, u"- "_s, goes);
        paint(change.After, u"+ "_s, comes);
        painter.restore();
    }

    ReplacePlan& m_plan;
};

} // namespace

frmReplace::frmReplace(ReplacePlan& plan, const QString& found, const QString& replacement, QWidget* parent)
    : QDialog(parent), m_plan(plan), lvChanges(new QListView), lblState(new QLabel),
      cmdOK(new QPushButton(u"&Replace"_s))
{
    constexpr QSize Preferred(720, 520);
    setObjectName(u"frmReplace"_s);
    setWindowTitle(u"Replace in Library"_s);
    auto* head = new ElidedLabel(u"lblReplaced"_s);
    head->setText(replacement.isEmpty() ? u"Take out “%1”"_s.arg(found)
                                        : u"Replace “%1” by “%2”"_s.arg(found, replacement));
    lvChanges->setObjectName(u"lvChanges"_s);
    lvChanges->setAccessibleName(u"Changes"_s);
    lvChanges->setVerticalScrollMode(QListView::ScrollPerPixel);
    lvChanges->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lvChanges->setSelectionMode(QListView::NoSelection);
    lvChanges->setItemDelegate(new ChangeLook(plan, lvChanges));
    lvChanges->setModel(&plan);
    lblState->setObjectName(u"lblReplaceState"_s);
    lblState->setWordWrap(true);
    auto* all = new QPushButton(u"&All"_s);
    all->setObjectName(u"cmdAll"_s);
    auto* none = new QPushButton(u"&None"_s);
    none->setObjectName(u"cmdNone"_s);
    auto* cancel = new QPushButton(u"Cancel"_s);
    cancel->setObjectName(u"cmdCancel"_s);
    cmdOK->setObjectName(u"cmdOK"_s);
    cmdOK->setDefault(true);
    for (QPushButton* button : {all, none, cancel})
        button->setAutoDefault(false); // or the first of them would be the one for Enter
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(all);
    buttons->addWidget(none);
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(head);
    layout->addWidget(lvChanges, 1);
    layout->addWidget(lblState);
    layout->addLayout(buttons);
    connect(all, &QPushButton::clicked, this, std::bind_front(&ReplacePlan::ChooseAll, &m_plan, true));
    connect(none, &QPushButton::clicked, this, std::bind_front(&ReplacePlan::ChooseAll, &m_plan, false));
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(&plan, &ReplacePlan::ChosenChanged, this, &frmReplace::ShowState);
    ShowState();
    resize(Preferred);
}

void frmReplace::ShowState()
{
    lblState->setText(m_plan.StatusText());
    cmdOK->setEnabled(!m_plan.Chosen().empty());
}

} // namespace qb
