#include "session/ui/frmBackups.h"

#include "maintenance/BackupItems.h"
#include "platform/system/Prompts.h"
#include "session/BackupList.h"
#include "support/ErrorRoutine.h"
#include "support/ui/WorkProgress.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QPushButton* AddButton(QDialogButtonBox& box, const QString& name, const QString& caption)
{
    QPushButton* button = box.addButton(caption, QDialogButtonBox::ActionRole);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

/// Where a backup is unpacked for a while: beside itself, or in the system's folder if it lies where nothing can be
/// written.
QString ScratchFor(const QString& file)
{
    const QFileInfo folder(QFileInfo(file).absolutePath());
    return folder.isWritable() ? folder.filePath() : QDir::tempPath();
}

} // namespace

frmBackups::frmBackups(QWidget* parent) : QDialog(parent)
{
    setObjectName(u"frmBackups"_s);
    setWindowTitle(u"Backups"_s);
    auto* layout = new QVBoxLayout(this);
    lblFolder = new QLabel;
    lblFolder->setObjectName(u"lblFolder"_s);
    lblFolder->setTextFormat(Qt::PlainText);
    layout->addWidget(lblFolder);
    lvBackups = new QTreeWidget;
    lvBackups->setObjectName(u"lvBackups"_s);
    lvBackups->setAccessibleName(u"Backups"_s);
    lvBackups->setRootIsDecorated(false);
    lvBackups->setHeaderLabels({u"Made"_s, u"Size"_s, u"Checked"_s, u"Changed since"_s, u"File"_s});
    layout->addWidget(lvBackups);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton* cmdFolder = AddButton(*buttons, u"cmdFolder"_s, u"&Folder..."_s);
    cmdCheck = AddButton(*buttons, u"cmdCheck"_s, u"&Check"_s);
    cmdItem = AddButton(*buttons, u"cmdItem"_s, u"&Bring Back Item..."_s);
    cmdRestore = AddButton(*buttons, u"cmdRestore"_s, u"&Restore..."_s);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(cmdFolder, &QPushButton::clicked, this, &frmBackups::cmdFolder_Click);
    connect(cmdCheck, &QPushButton::clicked, this, &frmBackups::cmdCheck_Click);
    connect(cmdItem, &QPushButton::clicked, this, &frmBackups::cmdItem_Click);
    connect(cmdRestore, &QPushButton::clicked, this, &frmBackups::cmdRestore_Click);
    connect(lvBackups, &QTreeWidget::itemSelectionChanged, this, &frmBackups::UpdateEnabled);
    resize(860, 420);
}

void frmBackups::Initialize(SessionState& session, const QString& folder)
{
    m_session = &session;
    m_folder = folder;
    Fill();
}

void frmBackups::Fill()
{
    const QString chosen = Chosen();
    lblFolder->setText(QDir::toNativeSeparators(m_folder));
    lvBackups->clear();
    Guarded(u"frmBackups"_s, u"Fill"_s, [this] {
        for (const BackupLine& line : BackupLines(m_folder, m_session->CurrentDatabase.get())) {
            auto* item = new QTreeWidgetItem(
                lvBackups, {line.Made, line.Size, line.State, line.Changes, QFileInfo(line.Path).fileName()});
            item->setData(0, Qt::UserRole, line.Path);
        }
    });
    for (int i = 0; i < lvBackups->columnCount(); ++i)
        lvBackups->resizeColumnToContents(i);
    for (int i = 0; i < lvBackups->topLevelItemCount(); ++i) {
        if (QTreeWidgetItem* item = lvBackups->topLevelItem(i); item->data(0, Qt::UserRole).toString() == chosen)
            lvBackups->setCurrentItem(item);
    }
    UpdateEnabled();
}

QString frmBackups::Chosen() const
{
    const QList<QTreeWidgetItem*> items = lvBackups->selectedItems();
    return items.isEmpty() ? QString() : items.first()->data(0, Qt::UserRole).toString();
}

void frmBackups::UpdateEnabled()
{
    const bool isChosen = !Chosen().isEmpty();
    cmdCheck->setEnabled(isChosen);
    cmdRestore->setEnabled(isChosen);
    cmdItem->setEnabled(isChosen && m_session->MayWrite());
}

void frmBackups::cmdFolder_Click()
{
    const QString folder = QFileDialog::getExistingDirectory(this, u"Folder of Backups"_s, m_folder);
    if (folder.isEmpty())
        return;
    m_folder = folder;
    Fill();
}

void frmBackups::cmdCheck_Click()
{
    const QString file = Chosen();
    Guarded(u"frmBackups"_s, u"cmdCheck_Click"_s, [&] {
        BackupCheck check;
        try {
            WorkProgress progress(this, u"Check"_s);
            check = CheckBackup(file, ScratchFor(file), progress);
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::UserInterrupt)
                throw;
            return;
        }
        RememberCheck(file, check.Faults.isEmpty());
        Fill();
        if (!check.Faults.isEmpty())
            Prompts::Current().MsgBox({.Text = u"The backup is not good:\n\n"_s + check.Faults.join(u'\n'),
                                       .Caption = u"Check"_s,
                                       .Icon = MsgBoxIcon::Exclamation});
    });
}

void frmBackups::cmdItem_Click()
{
    const QString file = Chosen();
    Guarded(u"frmBackups"_s, u"cmdItem_Click"_s, [&] {
        std::unique_ptr<BackupItems> backup;
        try {
            WorkProgress progress(this, u"Backup"_s);
            backup = std::make_unique<BackupItems>(file, ScratchFor(file), progress);
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::UserInterrupt)
                throw;
            return;
        }
        frmBackupItem dialog(this, *backup);
        if (dialog.exec() != QDialog::Accepted || dialog.Item() == 0)
            return;
        ItemBroughtBack(backup->BringBack(dialog.Item(), *m_session->CurrentDatabase));
        Fill();
    });
}

void frmBackups::cmdRestore_Click()
{
    const QString file = Chosen();
    accept();
    Restore(file);
}

frmBackupItem::frmBackupItem(QWidget* parent, BackupItems& backup) : QDialog(parent), m_backup(backup)
{
    setObjectName(u"frmBackupItem"_s);
    setWindowTitle(u"Bring Back from Backup"_s);
    auto* layout = new QVBoxLayout(this);
    auto* splitter = new QSplitter;
    tvItems = new QTreeWidget;
    tvItems->setObjectName(u"tvItems"_s);
    tvItems->setAccessibleName(u"Items of the backup"_s);
    tvItems->setHeaderHidden(true);
    txtPreview = new QPlainTextEdit;
    txtPreview->setObjectName(u"txtPreview"_s);
    txtPreview->setAccessibleName(u"The item as it is in the backup"_s);
    txtPreview->setReadOnly(true);
    splitter->addWidget(tvItems);
    splitter->addWidget(txtPreview);
    layout->addWidget(splitter);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    cmdBringBack = buttons->addButton(u"&Bring Back"_s, QDialogButtonBox::AcceptRole);
    cmdBringBack->setObjectName(u"cmdBringBack"_s);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(tvItems, &QTreeWidget::itemSelectionChanged, this, &frmBackupItem::ShowItem);
    FillTree();
    ShowItem();
    resize(800, 500);
}

/// Items whose parents are missing, or stand below themselves, come at the top.
void frmBackupItem::FillTree()
{
    const std::vector<BackupItemRow> rows = m_backup.All();
    QHash<qint64, QTreeWidgetItem*> items;
    for (const BackupItemRow& row : rows) {
        auto* item = new QTreeWidgetItem({row.Title});
        item->setData(0, Qt::UserRole, row.Id);
        items.insert(row.Id, item);
    }
    const auto stands = [](const QTreeWidgetItem* item, const QTreeWidgetItem* below) {
        for (; below; below = below->parent()) {
            if (below == item)
                return true;
        }
        return false;
    };
    for (const BackupItemRow& row : rows) {
        QTreeWidgetItem* parent = items.value(row.Parent);
        if (parent && !stands(items[row.Id], parent))
            parent->addChild(items[row.Id]);
    }
    for (const BackupItemRow& row : rows) {
        if (!items[row.Id]->parent())
            tvItems->addTopLevelItem(items[row.Id]);
    }
}

qint64 frmBackupItem::Item() const
{
    const QList<QTreeWidgetItem*> items = tvItems->selectedItems();
    return items.isEmpty() ? 0 : items.first()->data(0, Qt::UserRole).toLongLong();
}

void frmBackupItem::ShowItem()
{
    cmdBringBack->setEnabled(Item() != 0);
    txtPreview->clear();
    if (Item() != 0)
        Guarded(u"frmBackupItem"_s, u"ShowItem"_s,
                [this] { txtPreview->setPlainText(PreviewOf(m_backup.Item(Item()))); });
}

} // namespace qb
