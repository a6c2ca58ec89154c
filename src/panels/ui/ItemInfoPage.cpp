#include "panels/ui/ItemInfoPage.h"

#include "panels/ui/RatingStars.h"
#include "support/ui/Icons.h"
#include "text/TextBurden.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QStyle>
#include <QTextDocument>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Gap = 6;

QLabel* MakeValue(const QString& name)
{
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QFormLayout* MakeForm(QWidget* block)
{
    auto* form = new QFormLayout(block);
    form->setContentsMargins(0, 0, 0, 0);
    form->setHorizontalSpacing(2 * Gap);
    form->setVerticalSpacing(Gap - 2);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return form;
}

QString DayAndTime(Date date)
{
    if (date.IsNone())
        return u"\u2013"_s;
    const QLocale locale;
    return locale.toString(date.Day(), QLocale::ShortFormat) + u' '
           + locale.toString(date.Time(), QLocale::ShortFormat);
}

/// The text of a box, with blanks that don't break as they are.
QString TextOf(const QPlainTextEdit& box)
{
    return box.document()->toRawText().replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
}

} // namespace

ItemInfoPage::ItemInfoPage(ItemInfo& info) : m_info(info), picInfo(new QWidget), m_grid(new QGridLayout)
{
    setObjectName(u"ItemInfoPage"_s);
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    picInfo->setObjectName(u"picInfo"_s);
    m_grid->setContentsMargins(Gap, Gap, Gap, Gap);
    m_grid->setHorizontalSpacing(3 * Gap);
    m_grid->setVerticalSpacing(2 * Gap);
    picInfo->setLayout(m_grid);
    m_links = new LinkNotes;
    m_blocks = {MakeItemBlock(), MakeInfoBlock(), m_links, MakeLibraryBlock()};
    Arrange();
    setWidget(picInfo);
    ShowItem();
    ShowFacts({}, false);
}

// Blocks

QWidget* ItemInfoPage::MakeItemBlock()
{
    auto* block = new QWidget;
    m_rating = new RatingStars;
    connect(m_rating, &RatingStars::Rated, &m_info, &ItemInfo::SetRating);
    m_created = MakeValue(u"lblCreated"_s);
    m_changed = MakeValue(u"lblLastChanged"_s);
    QFormLayout* form = MakeForm(block);
    form->addRow(u"Status:"_s, MakeStatus());
    form->addRow(u"Rating:"_s, m_rating);
    form->addRow(u"Created:"_s, m_created);
    form->addRow(u"Changed:"_s, m_changed);
    return block;
}

QWidget* ItemInfoPage::MakeStatus()
{
    imgOrigin = new QLabel;
    imgOrigin->setObjectName(u"imgOrigin"_s);
    cmdOrigin = new QToolButton;
    cmdOrigin->setObjectName(u"cmdOrigin"_s);
    cmdOrigin->setAutoRaise(true);
    cmdOrigin->setFocusPolicy(Qt::StrongFocus);
    cmdOrigin->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_origins = new QMenu(cmdOrigin);
    m_origins->setObjectName(u"mnuOrigin"_s);
    connect(cmdOrigin, &QToolButton::clicked, this,
            [this] { m_origins->popup(cmdOrigin->mapToGlobal(QPoint(0, cmdOrigin->height()))); });
    for (const StatusRow& row : StatusRows()) {
        QAction* entry = m_origins->addAction(IconNamed(QString::fromLatin1(row.Image)),
                                              QString::fromLatin1(row.Caption));
        entry->setObjectName(QString::fromLatin1(row.Entry));
        entry->setCheckable(true);
        connect(entry, &QAction::triggered, this, [this, status = row.Status] {
            m_info.SetStatus(status);
            ShowItem(); // a click has switched the mark, whatever has come of it
        });
    }
    auto* both = new QWidget;
    auto* layout = new QHBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Gap - 2);
    layout->addWidget(imgOrigin);
    layout->addWidget(cmdOrigin);
    layout->addStretch();
    return both;
}

QWidget* ItemInfoPage::MakeInfoBlock()
{
    auto* block = new QWidget;
    txtInfo = new QPlainTextEdit;
    txtInfo->setObjectName(u"txtInfo"_s);
    txtInfo->setTabChangesFocus(true);
    connect(txtInfo, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_showing)
            m_info.SetInfo(TextOf(*txtInfo));
    });
    auto* caption = new QLabel(u"&Info:"_s);
    caption->setBuddy(txtInfo);
    auto* layout = new QVBoxLayout(block);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(caption);
    layout->addWidget(txtInfo, 1);
    return block;
}

QWidget* ItemInfoPage::MakeLibraryBlock()
{
    auto* block = new QWidget;
    m_type = MakeValue(u"lblReplicaType"_s);
    m_synchronized = MakeValue(u"lblLastSynchronized"_s);
    m_children = MakeValue(u"lblNoOfChildren"_s);
    m_size = MakeValue(u"lblDatabaseSize"_s);
    m_backedUp = MakeValue(u"lblLastBackedUp"_s);
    cmdChildren = new QToolButton;
    cmdChildren->setObjectName(u"cmdChildren"_s);
    cmdChildren->setText(u"\u2026"_s);
    cmdChildren->setToolTip(u"List the replicas of this library"_s);
    cmdChildren->setAccessibleName(u"List the replicas"_s);
    connect(cmdChildren, &QToolButton::clicked, this, &ItemInfoPage::ChildrenAsked);
    auto* children = new QHBoxLayout;
    children->setContentsMargins(0, 0, 0, 0);
    children->addWidget(m_children);
    children->addWidget(cmdChildren);
    children->addStretch();
    QFormLayout* form = MakeForm(block);
    form->addRow(u"Library:"_s, m_type);
    form->addRow(u"Size:"_s, m_size);
    form->addRow(u"Last backup:"_s, m_backedUp);
    form->addRow(u"Synchronized:"_s, m_synchronized);
    form->addRow(u"Children:"_s, children);
    return block;
}

namespace {

/// Where the blocks stand in a page of that width: the item, its info, its links, the library.
struct Arrangement {
    int FromWidth; ///< in pixels
    struct Cell {
        int Row, Column, Columns;
    } Cells[4];
    int Stretches[4];
};
constexpr Arrangement Arrangements[] = {
    {880, {{0, 0, 1}, {0, 1, 1}, {0, 2, 1}, {0, 3, 1}}, {0, 2, 4, 0}},
    {600, {{0, 0, 1}, {0, 1, 1}, {0, 2, 1}, {1, 0, 3}}, {0, 2, 3, 0}},
    {420, {{0, 0, 1}, {1, 0, 2}, {2, 0, 2}, {0, 1, 1}}, {0, 1, 0, 0}},
    {0, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {3, 0, 1}}, {1, 0, 0, 0}},
};

} // namespace

/// The boxes for text take the room that is left.
void ItemInfoPage::Arrange()
{
    const auto* wanted = std::find_if(std::begin(Arrangements), std::end(Arrangements),
                                      [this](const Arrangement& one) { return width() >= one.FromWidth; });
    const int arrangement = int(wanted - std::begin(Arrangements));
    if (std::exchange(m_arrangement, arrangement) == arrangement)
        return;
    const bool isOneRow = arrangement == 0;
    const int boxHeight = fontMetrics().lineSpacing() * 5;
    txtInfo->setMinimumHeight(isOneRow ? 0 : boxHeight);
    m_links->setMinimumHeight(isOneRow ? 0 : boxHeight + 2 * fontMetrics().lineSpacing());
    for (size_t i = 0; i < std::size(wanted->Cells); ++i) {
        const Arrangement::Cell& cell = wanted->Cells[i];
        m_grid->removeWidget(m_blocks[qsizetype(i)]);
        m_grid->addWidget(m_blocks[qsizetype(i)], cell.Row, cell.Column, 1, cell.Columns);
        m_grid->setColumnStretch(int(i), wanted->Stretches[i]);
    }
}

void ItemInfoPage::resizeEvent(QResizeEvent* event)
{
    Arrange();
    QScrollArea::resizeEvent(event);
}

// The item

void ItemInfoPage::ShowItem()
{
    CCodeItem* item = m_info.Item();
    const bool mayEdit = m_info.MayEdit();
    EnableItem(item != nullptr);
    ShowStatus(item ? item->ItemStatus() : 0);
    cmdOrigin->setEnabled(item && mayEdit);
    m_rating->SetRating(item ? item->ItemRating() : 0);
    m_rating->setEnabled(item && mayEdit);
    m_created->setText(item ? DayAndTime(item->Created()) : u"\u2013"_s);
    m_changed->setText(item ? DayAndTime(item->LastChanged()) : u"\u2013"_s);
    const QString info = item ? item->Info() : QString();
    const QString tooLarge = WhyTooLarge(BurdenOf(info), TextForm::Code);
    ShowText(tooLarge.isEmpty() ? info : PlainBeginOfText(info, tooLarge));
    txtInfo->setReadOnly(!mayEdit || !tooLarge.isEmpty());
    txtInfo->setPlaceholderText(!item     ? u"No item is shown."_s
                                : mayEdit ? u"Where it comes from, what it needs, who knows more"_s
                                          : QString());
    m_links->ShowLinks(item);
    m_links->SetLocked(!mayEdit);
    picInfo->setToolTip(m_info.WhyNot());
}

void ItemInfoPage::ShowText(const QString& info)
{
    const QString shown = QString(info).replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    if (TextOf(*txtInfo) == shown) // caret and undo stay
        return;
    const QScopedValueRollback showing(m_showing, true);
    txtInfo->setPlainText(shown);
}

void ItemInfoPage::ShowStatus(qint32 status)
{
    const StatusRow* row = RowOfStatus(status);
    const QString image = row ? QString::fromLatin1(row->Image) : QString();
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    imgOrigin->setPixmap(row ? IconNamed(image).pixmap(QSize(size, size), devicePixelRatioF()) : QPixmap());
    imgOrigin->setProperty("image", image);
    const QString shown = row ? QString::fromLatin1(row->Caption).remove(u'&') : u"Not set"_s;
    cmdOrigin->setText(shown + u" \u25be"_s);
    cmdOrigin->setAccessibleName(u"Status: "_s + shown);
    const QString tip = row ? QString::fromLatin1(row->ToolTip) : QString();
    imgOrigin->setToolTip(tip);
    cmdOrigin->setToolTip(tip);
    for (const StatusRow& one : StatusRows())
        m_origins->findChild<QAction*>(QString::fromLatin1(one.Entry))->setChecked(&one == row);
}

void ItemInfoPage::EnableItem(bool enabled)
{
    for (int i = 0; i < 3; ++i) // the last one is the library's
        m_blocks[i]->setEnabled(enabled);
}

// The library

void ItemInfoPage::ShowFacts(const LibraryFacts& facts, bool hasLibrary)
{
    m_blocks.last()->setEnabled(hasLibrary);
    m_type->setText(CaptionOf(facts.Type));
    m_type->setToolTip(ToolTipOf(facts.Type));
    m_synchronized->setText(DayOrNever(facts.LastSynchronized));
    m_children->setText(QString::number(facts.Children));
    cmdChildren->setEnabled(facts.Children > 0);
    m_size->setText(SizeText(facts.Size));
    m_backedUp->setText(DayOrNever(facts.LastBackedUp));
}

} // namespace qb
