#include "session/ui/frmBackups.h"

#include "maintenance/BackupItems.h"
#include "maintenance/PhasedWork.h"
#include "panels/ui/ElidedLabel.h"
#include "platform/system/Prompts.h"
#include "support/ErrorRoutine.h"
#include "support/ui/WorkProgress.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>

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

QLabel* MakeNotice(const QString& name)
{
    constexpr int Gap = 24;
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setMargin(Gap);
    label->setBackgroundRole(QPalette::Base);
    label->setAutoFillBackground(true);
    return label;
}

} // namespace

frmBackups::frmBackups(QWidget* parent) : QDialog(parent)
{
    setObjectName(u"frmBackups"_s);
    setWindowTitle(u"Backups"_s);
    auto* layout = new QVBoxLayout(this);
    lblFolder = new ElidedLabel(u"lblFolder"_s);
    layout->addWidget(lblFolder);
    MakeList();
    layout->addWidget(m_pages, 1);
    lblDone = new ElidedLabel(u"lblDone"_s);
    layout->addWidget(lblDone);
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
    connect(lvBackups, &QTreeWidget::itemActivated, cmdItem, &QPushButton::click);
    resize(900, 420);
}

void frmBackups::MakeList()
{
    lvBackups = new QTreeWidget;
    lvBackups->setObjectName(u"lvBackups"_s);
    lvBackups->setAccessibleName(u"Backups"_s);
    lvBackups->setRootIsDecorated(false);
    lvBackups->setAllColumnsShowFocus(true);
    lvBackups->setUniformRowHeights(true);
    lvBackups->setHeaderLabels({u"Made"_s, u"Size"_s, u"Library"_s, u"Checked"_s, u"Changed since"_s, u"File"_s});
    lblNotice = MakeNotice(u"lblNotice"_s);
    m_pages = new QStackedWidget;
    m_pages->addWidget(lvBackups);
    m_pages->addWidget(lblNotice);
}

void frmBackups::Initialize(SessionState& session, const QString& folder)
{
    m_session = &session;
    m_folder = folder;
    Fill();
}

/// The backup that was chosen stays that; at first it is the latest.
void frmBackups::Fill()
{
    const QString chosen = Chosen();
    lblFolder->setText(QDir::toNativeSeparators(m_folder));
    lvBackups->clear();
    Guarded(u"frmBackups"_s, u"Fill"_s, [this] {
        for (const BackupLine& line : BackupLines(m_folder, m_session->CurrentDatabase.get())) {
            auto* item = new QTreeWidgetItem(lvBackups, {line.Made, line.Size, line.Library, line.State, line.Changes,
                                                         QFileInfo(line.Path).fileName()});
            item->setData(0, Qt::UserRole, line.Path);
        }
    });
    for (int i = 0; i < lvBackups->columnCount(); ++i)
        lvBackups->resizeColumnToContents(i);
    lvBackups->setCurrentItem(lvBackups->topLevelItem(0));
    for (int i = 0; i < lvBackups->topLevelItemCount(); ++i) {
        if (QTreeWidgetItem* item = lvBackups->topLevelItem(i); item->data(0, Qt::UserRole).toString() == chosen)
            lvBackups->setCurrentItem(item);
    }
    const bool isEmpty = lvBackups->topLevelItemCount() == 0;
    if (isEmpty)
        lblNotice->setText(NoBackupsNotice(m_folder));
    m_pages->setCurrentWidget(isEmpty ? static_cast<QWidget*>(lblNotice) : lvBackups);
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
    const bool mayWrite = m_session->MayWrite();
    cmdCheck->setEnabled(isChosen);
    cmdRestore->setEnabled(isChosen);
    cmdItem->setEnabled(isChosen && mayWrite);
    cmdItem->setToolTip(mayWrite ? QString() : u"The item would come to the open library, which can't be written."_s);
}

/// Runs what is done with the chosen backup. That it has gone, or is none, is no fault of the program, and told in a
/// plain message.
void frmBackups::WithBackup(const QString& procedure, const std::function<void(const QString& file)>& body)
{
    const QString file = Chosen();
    lblDone->clear();
    const auto tell = [](const QString& text) {
        Prompts::Current().MsgBox({.Text = text, .Caption = u"Backups"_s, .Icon = MsgBoxIcon::Exclamation});
    };
    Guarded(u"frmBackups"_s, procedure, [&] {
        try {
            if (QFileInfo::exists(file))
                return body(file);
            Fill();
            tell(u"The backup is not there any more:\n\n"_s + QDir::toNativeSeparators(file));
        } catch (const RuntimeError& error) {
            if (IsCancellation(error))
                return;
            HandleError(error.Number(), error.Description(), u"frmBackups"_s, procedure, error.Source(), false);
            tell(error.Description());
        }
    });
}

void frmBackups::cmdFolder_Click()
{
    const QString folder = QFileDialog::getExistingDirectory(this, u"Folder of Backups"_s, m_folder);
    if (folder.isEmpty())
        return;
    m_folder = folder;
    lblDone->clear();
    Fill();
}

void frmBackups::cmdCheck_Click()
{
    WithBackup(u"cmdCheck_Click"_s, [this](const QString& file) {
        BackupCheck check;
        {
            WorkProgress progress(this, u"Check"_s);
            check = CheckBackup(file, ScratchFor(file), progress);
        }
        RememberCheck(file, check.Faults.isEmpty());
        Fill();
        if (check.Faults.isEmpty())
            return lblDone->setText(u"“%1” is good."_s.arg(QFileInfo(file).fileName()));
        Prompts::Current().MsgBox({.Text = u"The backup is not good:\n\n"_s + check.Faults.join(u'\n'),
                                   .Caption = u"Check"_s,
                                   .Icon = MsgBoxIcon::Exclamation});
    });
}

void frmBackups::cmdItem_Click()
{
    WithBackup(u"cmdItem_Click"_s, std::bind_front(&frmBackups::BringBack, this));
}

void frmBackups::BringBack(const QString& file)
{
    std::unique_ptr<BackupItems> backup;
    {
        WorkProgress progress(this, u"Backup"_s);
        backup = std::make_unique<BackupItems>(file, ScratchFor(file), progress);
    }
    frmBackupItem dialog(this, *backup, *m_session->CurrentDatabase);
    if (dialog.exec() != QDialog::Accepted || dialog.Item() == 0)
        return;
    const qint64 item = backup->BringBack(dialog.Item(), *m_session->CurrentDatabase);
    ItemBroughtBack(item);
    Fill();
    lblDone->setText(u"“%1” was brought back, as a new item. It is shown in the window."_s.arg(dialog.Title()));
}

void frmBackups::cmdRestore_Click()
{
    WithBackup(u"cmdRestore_Click"_s, [this](const QString& file) {
        accept();
        Restore(file);
    });
}

// One item

frmBackupItem::frmBackupItem(QWidget* parent, BackupItems& backup, Library& library)
    : QDialog(parent), m_backup(backup), m_isOfLibrary(backup.Identity() == library.Identity()),
      m_lines(BackupItemLines(backup, library)), txtFilter(new QLineEdit),
      chkOnlyOthers(new QCheckBox(u"&Only what was deleted or changed since"_s))
{
    setObjectName(u"frmBackupItem"_s);
    setWindowTitle(u"Bring Back from Backup"_s);
    MakeList();
    txtPreview = new QPlainTextEdit;
    txtPreview->setObjectName(u"txtPreview"_s);
    txtPreview->setAccessibleName(u"The item as it is in the backup"_s);
    txtPreview->setReadOnly(true);
    txtPreview->setLineWrapMode(QPlainTextEdit::NoWrap);
    txtPreview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* list = new QWidget;
    auto* listLayout = new QVBoxLayout(list);
    listLayout->setContentsMargins(0, 0, 0, 0);
    for (QWidget* widget : std::initializer_list<QWidget*>{txtFilter, chkOnlyOthers, lblNone})
        listLayout->addWidget(widget);
    listLayout->addWidget(tvItems, 1);
    auto* splitter = new QSplitter;
    splitter->addWidget(list);
    splitter->addWidget(txtPreview);
    splitter->setChildrenCollapsible(false);
    splitter->setSizes({5, 6});
    auto* lblWhere = new QLabel(
        m_isOfLibrary ? u"It comes back as a new item, below its former parent where that is still there."_s
                      : u"The backup is of another library: the item comes as a new one, at the top of the tree."_s);
    lblWhere->setObjectName(u"lblWhere"_s);
    lblWhere->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    cmdBringBack = buttons->addButton(u"&Bring Back"_s, QDialogButtonBox::AcceptRole);
    cmdBringBack->setObjectName(u"cmdBringBack"_s);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addWidget(lblWhere);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    FillTree();
    Filter();
    ShowItem();
    resize(900, 540);
}

void frmBackupItem::MakeList()
{
    txtFilter->setObjectName(u"txtFilter"_s);
    txtFilter->setPlaceholderText(u"Filter titles"_s);
    txtFilter->setAccessibleName(u"Filter titles"_s);
    txtFilter->setClearButtonEnabled(true);
    chkOnlyOthers->setObjectName(u"chkOnlyOthers"_s);
    chkOnlyOthers->setVisible(m_isOfLibrary); // of another one nothing is known
    chkOnlyOthers->setChecked(m_isOfLibrary && std::any_of(m_lines.begin(), m_lines.end(), [](const auto& line) {
                                  return !line.State.isEmpty();
                              }));
    lblNone = new QLabel(u"No item fits."_s);
    lblNone->setObjectName(u"lblNone"_s);
    tvItems = new QTreeWidget;
    tvItems->setObjectName(u"tvItems"_s);
    tvItems->setAccessibleName(u"Items of the backup"_s);
    tvItems->setUniformRowHeights(true);
    tvItems->setColumnCount(2);
    tvItems->setHeaderLabels({u"Item"_s, u"Since then"_s});
    tvItems->setColumnHidden(1, !m_isOfLibrary);
    tvItems->header()->setStretchLastSection(false);
    tvItems->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tvItems->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    connect(tvItems, &QTreeWidget::itemSelectionChanged, this, &frmBackupItem::ShowItem);
    connect(txtFilter, &QLineEdit::textChanged, this, &frmBackupItem::Filter);
    connect(chkOnlyOthers, &QCheckBox::toggled, this, &frmBackupItem::Filter);
}

/// Items whose parents are missing, or stand below themselves, come at the top.
void frmBackupItem::FillTree()
{
    QHash<qint64, QTreeWidgetItem*> items;
    for (const BackupItemLine& line : m_lines) {
        auto* item = new QTreeWidgetItem({line.Title, line.State});
        item->setData(0, Qt::UserRole, line.Id);
        items.insert(line.Id, item);
        m_items.push_back(item);
    }
    const auto stands = [](const QTreeWidgetItem* item, const QTreeWidgetItem* below) {
        for (; below; below = below->parent()) {
            if (below == item)
                return true;
        }
        return false;
    };
    for (const BackupItemLine& line : m_lines) {
        QTreeWidgetItem* parent = items.value(line.Parent);
        if (parent && !stands(items[line.Id], parent))
            parent->addChild(items[line.Id]);
    }
    QList<QTreeWidgetItem*> top;
    for (QTreeWidgetItem* item : m_items) {
        if (!item->parent())
            top << item;
    }
    tvItems->addTopLevelItems(top);
}

/// What fits is in sight, with what it stands below in a fainter colour.
void frmBackupItem::Filter()
{
    const std::vector<ListedLine> listed = Listed(m_lines, txtFilter->text().trimmed(), chkOnlyOthers->isChecked());
    const bool isWhole = txtFilter->text().trimmed().isEmpty() && !chkOnlyOthers->isChecked();
    QTreeWidgetItem* first = nullptr;
    for (size_t i = 0; i < m_items.size(); ++i) {
        m_items[i]->setHidden(!listed[i].IsListed);
        m_items[i]->setForeground(
            0, palette().brush(listed[i].Fits ? QPalette::Active : QPalette::Disabled, QPalette::Text));
        if (listed[i].IsListed && !isWhole)
            m_items[i]->setExpanded(true);
        const bool isBetter = m_lines[i].State == DeletedState && first && first->text(1) != DeletedState;
        if (listed[i].Fits && (!first || isBetter)) // what was deleted is what most come for
            first = m_items[i];
    }
    lblNone->setVisible(!first);
    const QTreeWidgetItem* current = tvItems->currentItem();
    if (!current || current->isHidden() || !first)
        tvItems->setCurrentItem(first);
    tvItems->scrollToItem(tvItems->currentItem());
}

qint64 frmBackupItem::Item() const
{
    const QList<QTreeWidgetItem*> items = tvItems->selectedItems();
    return items.isEmpty() ? 0 : items.first()->data(0, Qt::UserRole).toLongLong();
}

QString frmBackupItem::Title() const
{
    const QList<QTreeWidgetItem*> items = tvItems->selectedItems();
    return items.isEmpty() ? QString() : items.first()->text(0);
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
