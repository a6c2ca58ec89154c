#include "replication/ui/frmMergeReport.h"

#include "support/DateFormatCustom.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int ItemRole = Qt::UserRole;

QString HeadingOf(const MergeReport& report)
{
    return u"%1, %2 %3"_s.arg(DateFormatCustom(report.Made, u"yyyy-mm-dd hh:nn"_s),
                              report.AsMother ? u"changes of"_s : u"answer of"_s, report.Replica);
}

} // namespace

frmMergeReport::frmMergeReport(Purpose purpose, QWidget* parent)
    : QDialog(parent), m_purpose(purpose), cboReports(new QComboBox), lblSummary(new QLabel), txtFilter(new QLineEdit),
      lvLines(new QTreeWidget), chkShowAgain(new QCheckBox(u"Show this &before each synchronization"_s))
{
    constexpr QSize Size(760, 480);
    const bool isPreview = purpose == Purpose::Preview;
    setObjectName(u"frmMergeReport"_s);
    setWindowTitle(isPreview ? u"Synchronize: What Will Be Done"_s : u"Reports of Synchronizations"_s);
    resize(Size);
    cboReports->setObjectName(u"cboReports"_s);
    cboReports->setAccessibleName(u"Synchronization"_s);
    cboReports->setVisible(!isPreview);
    lblSummary->setObjectName(u"lblSummary"_s);
    lblSummary->setWordWrap(true);
    txtFilter->setObjectName(u"txtFilter"_s);
    txtFilter->setPlaceholderText(u"Filter"_s);
    txtFilter->setClearButtonEnabled(true);
    lvLines->setObjectName(u"lvLines"_s);
    lvLines->setAccessibleName(u"Changes"_s);
    lvLines->setRootIsDecorated(false);
    lvLines->setAllColumnsShowFocus(true);
    lvLines->setUniformRowHeights(true);
    lvLines->setAlternatingRowColors(true);
    lvLines->setHeaderLabels({u"What"_s, u"Item"_s, u"Details"_s});
    chkShowAgain->setObjectName(u"chkShowAgain"_s);
    chkShowAgain->setChecked(true);
    chkShowAgain->setVisible(isPreview);

    auto* buttons = new QDialogButtonBox(isPreview ? QDialogButtonBox::Ok | QDialogButtonBox::Cancel
                                                   : QDialogButtonBox::StandardButtons(QDialogButtonBox::Close));
    if (isPreview) {
        buttons->button(QDialogButtonBox::Ok)->setText(u"&Synchronize"_s);
        buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdSynchronize"_s);
        buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    } else {
        cmdShow = buttons->addButton(u"S&how Item"_s, QDialogButtonBox::ActionRole);
        cmdShow->setObjectName(u"cmdShow"_s);
        connect(cmdShow, &QPushButton::clicked, this, &frmMergeReport::ShowChosen);
        connect(lvLines, &QTreeWidget::itemActivated, this, &frmMergeReport::ShowChosen);
    }
    auto* layout = new QVBoxLayout(this);
    for (QWidget* widget : std::initializer_list<QWidget*>{cboReports, lblSummary, txtFilter})
        layout->addWidget(widget);
    layout->addWidget(lvLines, 1);
    layout->addWidget(chkShowAgain);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(cboReports, &QComboBox::currentIndexChanged, this, &frmMergeReport::Fill);
    connect(txtFilter, &QLineEdit::textChanged, this, &frmMergeReport::Fill);
    connect(lvLines, &QTreeWidget::itemSelectionChanged, this, &frmMergeReport::UpdateEnabled);
    Fill();
}

void frmMergeReport::SetReports(std::vector<MergeReport> reports)
{
    m_reports = std::move(reports);
    cboReports->clear();
    for (const MergeReport& report : m_reports)
        cboReports->addItem(HeadingOf(report));
    cboReports->setVisible(m_purpose == Purpose::Report && !m_reports.empty());
    Fill();
}

bool frmMergeReport::ShowsAgain() const
{
    return chkShowAgain->isChecked();
}

void frmMergeReport::Fill()
{
    lvLines->clear();
    const size_t index = size_t(std::max(cboReports->currentIndex(), 0));
    if (index >= m_reports.size()) {
        lblSummary->setText(u"This library has not been synchronized yet."_s);
        return UpdateEnabled();
    }
    const MergeReport& report = m_reports[index];
    lblSummary->setText(m_purpose == Purpose::Preview ? u"With '%1': %2."_s.arg(report.Replica, report.Summary())
                                                      : report.Summary());
    const QString words = txtFilter->text();
    QList<QTreeWidgetItem*> rows;
    for (const MergeLine& line : report.Lines) {
        if (!line.Title.contains(words, Qt::CaseInsensitive) && !line.Detail.contains(words, Qt::CaseInsensitive)
            && !LabelOf(line.Event).contains(words, Qt::CaseInsensitive))
            continue;
        auto* row = new QTreeWidgetItem({LabelOf(line.Event), line.Title, line.Detail});
        row->setData(0, ItemRole, line.Item);
        row->setToolTip(1, line.Title);
        row->setToolTip(2, line.Detail);
        rows << row;
    }
    for (const MergeFault& fault : report.Faults) {
        auto* row = new QTreeWidgetItem({u"Fault"_s, {}, fault.Text});
        row->setToolTip(2, fault.Text);
        rows << row;
    }
    lvLines->addTopLevelItems(rows);
    constexpr int Widest = 320;
    for (int i = 0; i < 2; ++i) {
        lvLines->resizeColumnToContents(i);
        lvLines->setColumnWidth(i, qMin(lvLines->columnWidth(i) + fontMetrics().averageCharWidth(), Widest));
    }
    lvLines->setCurrentItem(lvLines->topLevelItem(0));
    UpdateEnabled();
}

void frmMergeReport::UpdateEnabled()
{
    const QTreeWidgetItem* row = lvLines->currentItem();
    if (cmdShow)
        cmdShow->setEnabled(row && row->data(0, ItemRole).toLongLong() != 0);
}

void frmMergeReport::ShowChosen()
{
    const QTreeWidgetItem* row = lvLines->currentItem();
    m_chosen = row ? row->data(0, ItemRole).toLongLong() : 0;
    if (m_chosen != 0)
        accept();
}

} // namespace qb
