#include "printing/ui/frmPrintItems.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {
constexpr int IdRole = Qt::UserRole;
}

frmPrintItems::frmPrintItems(QWidget* parent, const std::vector<OutlinedForPrint>& outline)
    : QDialog(parent), tvwItems(new QTreeWidget), lblCount(new QLabel)
{
    setObjectName(u"frmPrintItems"_s);
    setWindowTitle(u"Items to Print"_s);
    tvwItems->setObjectName(u"tvwItems"_s);
    tvwItems->setAccessibleName(u"Items to print"_s);
    tvwItems->setHeaderHidden(true);
    tvwItems->setUniformRowHeights(true);
    lblCount->setObjectName(u"lblCount"_s);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    cmdOk = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* row = new QHBoxLayout;
    for (const auto& [name, text, chosen] :
         {std::tuple(u"cmdAll"_s, u"&All"_s, true), std::tuple(u"cmdNone"_s, u"&None"_s, false)}) {
        auto* button = new QPushButton(text);
        button->setObjectName(name);
        button->setAutoDefault(false);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, std::bind_front(&frmPrintItems::SetAll, this, chosen));
    }
    row->addWidget(lblCount, 1);
    auto* all = new QVBoxLayout(this);
    all->addWidget(tvwItems, 1);
    all->addLayout(row);
    all->addWidget(buttons);
    Fill(outline);
    connect(tvwItems, &QTreeWidget::itemChanged, this, &frmPrintItems::ItemChanged);
    constexpr QSize Usual(420, 520);
    resize(Usual);
    ShowCount();
}

void frmPrintItems::Fill(const std::vector<OutlinedForPrint>& outline)
{
    std::vector<QTreeWidgetItem*> above; // by depth
    QList<QTreeWidgetItem*> top;
    for (const OutlinedForPrint& one : outline) {
        auto* item = new QTreeWidgetItem({one.Title});
        item->setData(0, IdRole, one.Id);
        item->setCheckState(0, Qt::Checked);
        above.resize(size_t(one.Depth) + 1);
        above.back() = item;
        if (one.Depth > 0)
            above[size_t(one.Depth) - 1]->addChild(item);
        else
            top << item;
        m_items.push_back(item);
    }
    tvwItems->addTopLevelItems(top);
    constexpr size_t MostOpen = 200;
    if (m_items.size() <= MostOpen)
        tvwItems->expandAll();
    else
        for (QTreeWidgetItem* item : top)
            item->setExpanded(true);
}

std::vector<qint64> frmPrintItems::Chosen() const
{
    std::vector<qint64> ids;
    for (const QTreeWidgetItem* item : m_items) {
        if (item->checkState(0) == Qt::Checked)
            ids.push_back(item->data(0, IdRole).toLongLong());
    }
    return ids;
}

void frmPrintItems::SetAll(bool chosen)
{
    const QSignalBlocker quiet(tvwItems);
    for (QTreeWidgetItem* item : m_items)
        item->setCheckState(0, chosen ? Qt::Checked : Qt::Unchecked);
    ShowCount();
}

/// What stands below an item goes with it, and can be chosen otherwise then.
void frmPrintItems::ItemChanged(QTreeWidgetItem* item)
{
    {
        const QSignalBlocker quiet(tvwItems);
        std::vector<QTreeWidgetItem*> waiting{item};
        while (!waiting.empty()) {
            QTreeWidgetItem* next = waiting.back();
            waiting.pop_back();
            next->setCheckState(0, item->checkState(0));
            for (int i = 0; i < next->childCount(); ++i)
                waiting.push_back(next->child(i));
        }
    }
    tvwItems->viewport()->update();
    ShowCount();
}

void frmPrintItems::ShowCount()
{
    const size_t chosen = Chosen().size();
    lblCount->setText(u"%1 of %2 items"_s.arg(chosen).arg(m_items.size()));
    cmdOk->setEnabled(chosen > 0);
}

} // namespace qb
