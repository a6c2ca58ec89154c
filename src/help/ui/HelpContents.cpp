#include "help/ui/HelpContents.h"

#include "support/ui/Icons.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int TopicRole = Qt::UserRole;

QString TopicOf(const HelpPage& page, const HelpSection& section)
{
    return section.Anchor.isEmpty() ? page.Topic : page.Topic + u'#' + section.Anchor;
}

} // namespace

HelpContents::HelpContents(const Handbook& handbook, QWidget* parent)
    : QWidget(parent), m_handbook(handbook), txtSearch(new QLineEdit), m_pages(new QStackedWidget),
      tvContents(new QTreeWidget), lstHits(new QListWidget), lblNoHits(new QLabel)
{
    constexpr int Gap = 4;
    txtSearch->setObjectName(u"txtHelpSearch"_s);
    txtSearch->setPlaceholderText(u"Look through all pages"_s);
    txtSearch->setAccessibleName(u"Look through all pages"_s);
    txtSearch->setClearButtonEnabled(true);
    txtSearch->installEventFilter(this);
    lstHits->setObjectName(u"lstHits"_s);
    lstHits->setAccessibleName(u"What was found"_s);
    lstHits->setWordWrap(true);
    lstHits->setAlternatingRowColors(true);
    lstHits->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lblNoHits->setObjectName(u"lblNoHits"_s);
    lblNoHits->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    lblNoHits->setWordWrap(true);
    lblNoHits->setTextFormat(Qt::PlainText);
    for (QWidget* page : std::initializer_list<QWidget*>{tvContents, lstHits, lblNoHits})
        m_pages->addWidget(page);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Gap, Gap, 0, 0);
    layout->setSpacing(Gap);
    layout->addWidget(txtSearch);
    layout->addWidget(m_pages, 1);
    FillTree();
    const auto choose = [this](QTreeWidgetItem* row) {
        if (row)
            Q_EMIT TopicChosen(row->data(0, TopicRole).toString());
    };
    connect(tvContents, &QTreeWidget::currentItemChanged, this, choose);
    connect(tvContents, &QTreeWidget::itemClicked, this, choose);
    const auto open = [this](QListWidgetItem* row) {
        if (row)
            Q_EMIT HitChosen(row->data(TopicRole).toString(), HelpWords(txtSearch->text()));
    };
    connect(lstHits, &QListWidget::currentItemChanged, this, open);
    connect(lstHits, &QListWidget::itemClicked, this, open);
    connect(txtSearch, &QLineEdit::textChanged, this, &HelpContents::Search);
}

void HelpContents::FillTree()
{
    tvContents->setObjectName(u"tvContents"_s);
    tvContents->setAccessibleName(u"Contents"_s);
    tvContents->setHeaderHidden(true);
    tvContents->setUniformRowHeights(true);
    for (const HelpPage& page : m_handbook.Pages()) {
        auto* top = new QTreeWidgetItem(tvContents, {page.Title});
        top->setData(0, TopicRole, page.Topic);
        for (const HelpSection& section : page.Sections) {
            if (section.Level != 2)
                continue;
            auto* row = new QTreeWidgetItem(top, {section.Title});
            row->setData(0, TopicRole, TopicOf(page, section));
        }
    }
}

void HelpContents::Follow(const QString& topic)
{
    const QSignalBlocker blocker(tvContents);
    QTreeWidgetItem* best = nullptr;
    for (QTreeWidgetItemIterator rows(tvContents); *rows; ++rows) {
        const QString one = (*rows)->data(0, TopicRole).toString();
        if (one == topic || (!best && one == topic.section(u'#', 0, 0)))
            best = *rows;
    }
    tvContents->setCurrentItem(best);
    if (best)
        tvContents->scrollToItem(best);
}

void HelpContents::FocusSearch()
{
    txtSearch->setFocus();
    txtSearch->selectAll();
}

bool HelpContents::EndSearch()
{
    if (txtSearch->text().isEmpty())
        return false;
    txtSearch->clear();
    return true;
}

void HelpContents::Search()
{
    const QString text = txtSearch->text().trimmed();
    const QSignalBlocker blocker(lstHits);
    lstHits->clear();
    if (text.isEmpty()) {
        m_pages->setCurrentWidget(tvContents);
        Q_EMIT SearchEnded();
        return;
    }
    for (const HelpHit& hit : m_handbook.Search(text)) {
        const QString title = hit.Title == hit.Page ? hit.Page : hit.Page + u" \u203a "_s + hit.Title;
        auto* row = new QListWidgetItem(title + u'\n' + hit.Excerpt, lstHits);
        row->setData(TopicRole, hit.Topic);
    }
    lblNoHits->setText(u"\nNo page has “%1”."_s.arg(text));
    m_pages->setCurrentWidget(lstHits->count() > 0 ? static_cast<QWidget*>(lstHits) : lblNoHits);
}

/// The keys of the field lead into what was found.
bool HelpContents::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != txtSearch || event->type() != QEvent::KeyPress || lstHits->count() == 0)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter)
        return false;
    lstHits->setCurrentRow(0);
    if (key == Qt::Key_Down)
        lstHits->setFocus();
    return true;
}

} // namespace qb
