#include "session/ui/frmImport.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

enum Column { TitleColumn, SizeColumn, FilesColumn, ThereColumn };
constexpr int PlaceRole = Qt::UserRole;
constexpr int OpenedItems = 200; ///< so many are shown open at first

QString SizeText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1);
}

QString PresenceText(Presence there)
{
    switch (there) {
    case Presence::Here:
        return u"at this place"_s;
    case Presence::Elsewhere:
        return u"elsewhere"_s;
    case Presence::No:
        break;
    }
    return {};
}

} // namespace

frmImport::frmImport(QWidget* parent, const std::vector<PreviewedItem>& items, const QString& target)
    : QDialog(parent), m_previewed(items), m_choice(items)
{
    constexpr QSize Proposed(720, 480);
    setObjectName(u"frmImport"_s);
    setWindowTitle(u"Import"_s);
    auto* layout = new QVBoxLayout(this);
    auto* lblTarget = new QLabel(u"These items are put under '%1', beside what is there:"_s.arg(target));
    lblTarget->setObjectName(u"lblTarget"_s);
    lblTarget->setTextFormat(Qt::PlainText);
    lblTarget->setWordWrap(true);
    layout->addWidget(lblTarget);
    MakeTree();
    layout->addWidget(tvItems, 1);
    auto* chosen = new QHBoxLayout;
    lblChosen = new QLabel;
    lblChosen->setObjectName(u"lblChosen"_s);
    chosen->addWidget(lblChosen, 1);
    const std::tuple<const char*, const char*, bool> selectors[] = {{"cmdSelectAll", "Select &All", true},
                                                                    {"cmdSelectNone", "Select &None", false}};
    for (const auto& [name, caption, isOn] : selectors) {
        auto* button = new QPushButton(QString::fromLatin1(caption));
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, std::bind_front(&frmImport::ChooseAll, this, isOn));
        chosen->addWidget(button);
    }
    layout->addLayout(chosen);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    cmdImport = buttons->addButton(u"&Import"_s, QDialogButtonBox::AcceptRole);
    cmdImport->setObjectName(u"cmdImport"_s);
    cmdImport->setDefault(true);
    buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    FillTree();
    ShowChoice();
    resize(Proposed);
}

void frmImport::MakeTree()
{
    tvItems = new QTreeWidget;
    tvItems->setObjectName(u"tvItems"_s);
    tvItems->setAccessibleName(u"Items of the export"_s);
    tvItems->setHeaderLabels({u"Title"_s, u"Size"_s, u"Files"_s, u"Already There"_s});
    tvItems->setUniformRowHeights(true);
    tvItems->setAllColumnsShowFocus(true);
    tvItems->header()->setStretchLastSection(false);
    tvItems->header()->setSectionResizeMode(TitleColumn, QHeaderView::Stretch);
    connect(tvItems, &QTreeWidget::itemChanged, this, &frmImport::ItemChanged);
}

void frmImport::FillTree()
{
    const QSignalBlocker quiet(tvItems);
    QList<QTreeWidgetItem*> tops;
    for (size_t place = 0; place < m_previewed.size(); ++place) {
        const PreviewedItem& item = m_previewed[place];
        auto* row = new QTreeWidgetItem({QString(item.Title).replace(u'\n', u' '), SizeText(item.Bytes),
                                         item.Files > 0 ? QLocale().toString(item.Files) : QString(),
                                         PresenceText(item.There)});
        row->setData(TitleColumn, PlaceRole, int(place));
        row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setTextAlignment(FilesColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        m_rows.push_back(row);
        if (item.Parent >= 0)
            m_rows[size_t(item.Parent)]->addChild(row);
        else
            tops << row;
    }
    tvItems->addTopLevelItems(tops);
    if (m_previewed.size() <= OpenedItems)
        tvItems->expandAll();
    else
        tvItems->expandToDepth(0);
    for (const int column : {SizeColumn, FilesColumn, ThereColumn})
        tvItems->resizeColumnToContents(column);
    if (!tops.isEmpty())
        tvItems->setCurrentItem(tops.first());
}

void frmImport::ItemChanged(QTreeWidgetItem* row, int column)
{
    if (column != TitleColumn)
        return;
    m_choice.Choose(row->data(TitleColumn, PlaceRole).toInt(), row->checkState(TitleColumn) == Qt::Checked);
    ShowChoice();
}

void frmImport::ChooseAll(bool chosen)
{
    m_choice.ChooseAll(chosen);
    ShowChoice();
}

void frmImport::ShowChoice()
{
    const QSignalBlocker quiet(tvItems);
    for (size_t place = 0; place < m_rows.size(); ++place) {
        const Qt::CheckState state = m_choice.IsChosen(int(place)) ? Qt::Checked : Qt::Unchecked;
        if (m_rows[place]->data(TitleColumn, Qt::CheckStateRole) != QVariant(state))
            m_rows[place]->setCheckState(TitleColumn, state);
    }
    tvItems->viewport()->update();
    lblChosen->setText(u"%1 of %2 items, %3"_s.arg(QLocale().toString(m_choice.Count()),
                                                   QLocale().toString(int(m_rows.size())), SizeText(m_choice.Bytes())));
    cmdImport->setEnabled(m_choice.Count() > 0);
}

} // namespace qb
