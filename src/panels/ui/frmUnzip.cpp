#include "panels/ui/frmUnzip.h"

#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/Shell.h"
#include "support/ui/Icons.h"
#include "support/ui/WorkProgress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

enum Column { NameColumn, SizeColumn, PackedColumn, DateColumn, ColumnCount };
constexpr int IndexRole = Qt::UserRole;
constexpr int SizeRole = Qt::UserRole + 1;

QString SizeText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes);
}

} // namespace

frmUnzip::frmUnzip(QWidget* parent)
    : QDialog(parent), lvEntries(new QTreeWidget), lblChosen(new QLabel), cboFolder(new QComboBox),
      chkReplace(new QCheckBox(u"&Replace files that are there"_s)),
      chkOpenFolder(new QCheckBox(u"&Open the folder afterwards"_s))
{
    constexpr QSize Proposed(680, 460);
    setObjectName(u"frmUnzip"_s);
    resize(Proposed);
    MakeList();
    chkReplace->setObjectName(u"chkReplace"_s);
    chkReplace->setToolTip(u"Unless this is ticked, files that are there stay as they are."_s);
    chkOpenFolder->setObjectName(u"chkOpenFolder"_s);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setObjectName(u"cmdOK"_s);
    m_ok->setText(u"&Extract"_s);
    m_ok->setIcon(IconNamed(u"archive-extract"_s));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &frmUnzip::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lvEntries, 1);
    layout->addLayout(MakeChosenRow());
    layout->addLayout(MakeFolderRow());
    layout->addWidget(chkReplace);
    layout->addWidget(chkOpenFolder);
    layout->addWidget(buttons);
}

void frmUnzip::MakeList()
{
    lvEntries->setObjectName(u"lvEntries"_s);
    lvEntries->setHeaderLabels({u"Name"_s, u"Size"_s, u"Packed"_s, u"Date"_s});
    lvEntries->setRootIsDecorated(false);
    lvEntries->setUniformRowHeights(true);
    lvEntries->setAllColumnsShowFocus(true);
    lvEntries->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lvEntries->header()->setStretchLastSection(false);
    lvEntries->header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    connect(lvEntries, &QTreeWidget::itemChanged, this, &frmUnzip::UpdateControls);
}

QLayout* frmUnzip::MakeChosenRow()
{
    auto* all = new QPushButton(u"Select &All"_s);
    all->setObjectName(u"cmdSelectAll"_s);
    connect(all, &QPushButton::clicked, this, std::bind_front(&frmUnzip::SetAllChosen, this, true));
    auto* none = new QPushButton(u"Select &None"_s);
    none->setObjectName(u"cmdSelectNone"_s);
    connect(none, &QPushButton::clicked, this, std::bind_front(&frmUnzip::SetAllChosen, this, false));
    for (QPushButton* button : {all, none})
        button->setAutoDefault(false); // or the first of them would be the one for Enter
    lblChosen->setObjectName(u"lblChosen"_s);
    auto* chosenRow = new QHBoxLayout;
    chosenRow->addWidget(lblChosen, 1);
    chosenRow->addWidget(all);
    chosenRow->addWidget(none);
    return chosenRow;
}

QLayout* frmUnzip::MakeFolderRow()
{
    cboFolder->setObjectName(u"cboFolder"_s);
    cboFolder->setEditable(true);
    cboFolder->setInsertPolicy(QComboBox::NoInsert);
    connect(cboFolder, &QComboBox::editTextChanged, this, &frmUnzip::UpdateControls);
    auto* browse = new QPushButton(u"&Browse..."_s);
    browse->setObjectName(u"cmdBrowse"_s);
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &frmUnzip::Browse);
    auto* folderLabel = new QLabel(u"Extract &to:"_s);
    folderLabel->setBuddy(cboFolder);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folderLabel);
    folderRow->addWidget(cboFolder, 1);
    folderRow->addWidget(browse);
    return folderRow;
}

bool frmUnzip::Run(BrindletonZip& engine, const QString& folder, const QString& title)
{
    m_engine = &engine;
    setWindowTitle(u"Unzip "_s + title);
    ListEntries(engine.Entries(engine.UnzipFileName()));
    QStringList folders{folder};
    for (const QString& other : std::as_const(m_folders)) {
        if (!folders.contains(other))
            folders << other;
    }
    for (QString& path : folders)
        path = QDir::toNativeSeparators(path);
    cboFolder->addItems(folders);
    cboFolder->setCurrentIndex(0);
    cboFolder->setFocus();
    const bool extracted = exec() == Accepted;
    m_engine = nullptr;
    return extracted;
}

void frmUnzip::ListEntries(const std::vector<ArchiveEntry>& entries)
{
    QList<QTreeWidgetItem*> rows;
    for (const ArchiveEntry& entry : entries) {
        if (!entry.IsFolder)
            rows << MakeRow(entry);
    }
    const QSignalBlocker quiet(lvEntries);
    lvEntries->addTopLevelItems(rows);
    for (const int column : {SizeColumn, PackedColumn, DateColumn})
        lvEntries->resizeColumnToContents(column);
    UpdateControls();
}

/// A file that can't be extracted is there to see, with the reason.
QTreeWidgetItem* frmUnzip::MakeRow(const ArchiveEntry& entry) const
{
    auto* row = new QTreeWidgetItem(
        {entry.Name, SizeText(entry.Size), SizeText(entry.CompressedSize),
         entry.Modified.isValid() ? QLocale().toString(entry.Modified, QLocale::ShortFormat) : QString()});
    row->setData(NameColumn, IndexRole, entry.Index);
    row->setData(NameColumn, SizeRole, entry.Size);
    row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
    row->setTextAlignment(PackedColumn, Qt::AlignRight | Qt::AlignVCenter);
    if (entry.Problem.isEmpty()) {
        row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
        row->setCheckState(NameColumn, Qt::Checked);
        return row;
    }
    row->setFlags(Qt::NoItemFlags);
    row->setIcon(NameColumn, IconNamed(u"dialog-warning"_s));
    row->setText(NameColumn, u"%1 (can't be extracted: %2)"_s.arg(entry.Name, entry.Problem));
    row->setToolTip(NameColumn, u"<span>%1</span>"_s.arg(row->text(NameColumn).toHtmlEscaped()));
    return row;
}

QList<quint64> frmUnzip::Chosen() const
{
    QList<quint64> indexes;
    for (int i = 0; i < lvEntries->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = lvEntries->topLevelItem(i);
        if (row->flags() != Qt::NoItemFlags && row->checkState(NameColumn) == Qt::Checked)
            indexes << row->data(NameColumn, IndexRole).toULongLong();
    }
    return indexes;
}

void frmUnzip::SetAllChosen(bool chosen)
{
    {
        const QSignalBlocker quiet(lvEntries);
        for (int i = 0; i < lvEntries->topLevelItemCount(); ++i) {
            QTreeWidgetItem* row = lvEntries->topLevelItem(i);
            if (row->flags() != Qt::NoItemFlags)
                row->setCheckState(NameColumn, chosen ? Qt::Checked : Qt::Unchecked);
        }
    }
    UpdateControls();
}

void frmUnzip::UpdateControls()
{
    int count = 0;
    qint64 bytes = 0;
    for (int i = 0; i < lvEntries->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = lvEntries->topLevelItem(i);
        if (row->flags() == Qt::NoItemFlags || row->checkState(NameColumn) != Qt::Checked)
            continue;
        ++count;
        bytes += row->data(NameColumn, SizeRole).toLongLong();
    }
    lblChosen->setText(u"%1 of %2 files, %3"_s.arg(QString::number(count),
                                                   QString::number(lvEntries->topLevelItemCount()), SizeText(bytes)));
    m_ok->setEnabled(count > 0 && !cboFolder->currentText().trimmed().isEmpty());
}

void frmUnzip::Browse()
{
    const QString folder = QFileDialog::getExistingDirectory(this, u"Extract To"_s, cboFolder->currentText());
    if (!folder.isEmpty())
        cboFolder->setEditText(QDir::toNativeSeparators(folder));
}

void frmUnzip::accept()
{
    const QString folder = QDir::fromNativeSeparators(cboFolder->currentText().trimmed());
    if (!QFileInfo(folder).isAbsolute()) {
        Prompts::Current().MsgBox({.Text = u"Please enter the whole path of a folder."_s,
                                   .Caption = u"Extract To"_s,
                                   .Icon = MsgBoxIcon::Exclamation});
        return cboFolder->setFocus();
    }
    m_engine->SetExtractDirectory(folder);
    m_engine->SetZipOptionC(!chkReplace->isChecked());
    if (!Extract(Chosen()))
        return;
    if (const int kept = m_engine->KeptFiles(); kept > 0)
        Prompts::Current().MsgBox({.Text = u"%1 of the files were there and have been left as they were."_s.arg(kept),
                                   .Caption = windowTitle(),
                                   .Icon = MsgBoxIcon::Information});
    if (chkOpenFolder->isChecked())
        OpenTarget(folder);
    QDialog::accept();
}

/// What can't be extracted is said, and the dialog stays.
bool frmUnzip::Extract(const QList<quint64>& indexes)
{
    WorkProgress progress(this, u"Extracting Files"_s);
    const QMetaObject::Connection told = connect(m_engine, &BrindletonZip::Progress, this,
                                                 [&](int fileNo, const QString& text) {
                                                     progress.SetCaption(text.section(u'\\', 1).replace(u'\\', u'/'));
                                                     Q_EMIT Progress(fileNo, text, m_engine->FileCount());
                                                 });
    bool extracted = false;
    try {
        extracted = m_engine->ExtractEntries(m_engine->UnzipFileName(), m_engine->ExtractDirectory(), indexes,
                                             progress);
    } catch (const RuntimeError& error) {
        Prompts::Current().MsgBox(
            {.Text = error.Description(), .Caption = windowTitle(), .Icon = MsgBoxIcon::Exclamation});
    }
    disconnect(told);
    return extracted;
}

} // namespace qb
