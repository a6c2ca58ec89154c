#include "replication/ui/frmReplicaList.h"

#include "platform/system/Prompts.h"
#include "support/DateFormatCustom.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QString MomentText(Date moment)
{
    return moment.IsNone() ? u"Never"_s : DateFormatCustom(moment, u"yyyy-mm-dd hh:nn"_s);
}

} // namespace

frmReplicaList::frmReplicaList(QWidget* parent) : QDialog(parent), lvReplicas(new QTreeWidget)
{
    constexpr QSize Size(680, 320);
    setObjectName(u"frmReplicaList"_s);
    setWindowTitle(u"Replicas of This Library"_s);
    resize(Size);
    lvReplicas->setObjectName(u"lvReplicas"_s);
    lvReplicas->setAccessibleName(u"Replicas"_s);
    lvReplicas->setRootIsDecorated(false);
    lvReplicas->setAllColumnsShowFocus(true);
    lvReplicas->setUniformRowHeights(true);
    lvReplicas->setHeaderLabels({u"Description"_s, u"Last Synchronized"_s, u"Waiting for It"_s});
    auto* lblNotice = new QLabel(
        u"A replica that is forgotten goes on as a library, but can't be synchronized with this one any more."_s);
    lblNotice->setObjectName(u"lblNotice"_s);
    lblNotice->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setObjectName(u"cmdClose"_s);
    cmdForget = buttons->addButton(u"&Forget..."_s, QDialogButtonBox::ActionRole);
    cmdForget->setObjectName(u"cmdForget"_s);
    cmdForget->setAutoDefault(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lvReplicas, 1);
    layout->addWidget(lblNotice);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(cmdForget, &QPushButton::clicked, this, &frmReplicaList::cmdForget_Click);
    connect(lvReplicas, &QTreeWidget::itemSelectionChanged, this, &frmReplicaList::UpdateEnabled);
}

void frmReplicaList::SetDatabase(Database& mother)
{
    m_list.emplace(mother);
    Fill();
}

int frmReplicaList::exec()
{
    if (m_list)
        return QDialog::exec();
    Prompts::Current().MsgBox(
        {.Text = u"Database not set. (frmReplicaList; Load)"_s, .Caption = u"Error"_s, .Icon = MsgBoxIcon::Critical});
    return Rejected;
}

void frmReplicaList::Fill()
{
    lvReplicas->clear();
    for (const ChildLine& line : m_list->Lines()) {
        const QString description = line.Description.isEmpty() ? u"(no description, %1)"_s.arg(line.Identity)
                                                               : line.Description;
        auto* item = new QTreeWidgetItem(lvReplicas,
                                         {description, MomentText(line.LastSynchronized), line.WaitingText()});
        item->setToolTip(0, description);
        item->setToolTip(2, line.WaitingText());
    }
    constexpr int Widest = 280;
    for (int i = 0; i < lvReplicas->columnCount(); ++i) {
        lvReplicas->resizeColumnToContents(i);
        lvReplicas->setColumnWidth(i, qMin(lvReplicas->columnWidth(i) + fontMetrics().averageCharWidth(), Widest));
    }
    lvReplicas->setCurrentItem(lvReplicas->topLevelItem(0));
    UpdateEnabled();
}

void frmReplicaList::UpdateEnabled()
{
    cmdForget->setEnabled(!lvReplicas->selectedItems().isEmpty());
}

void frmReplicaList::cmdForget_Click()
{
    const int index = lvReplicas->indexOfTopLevelItem(lvReplicas->currentItem());
    if (index < 0)
        return;
    if (m_list->Forget(size_t(index)))
        return accept();
    Fill();
}

} // namespace qb
