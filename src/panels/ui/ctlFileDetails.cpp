#include "panels/ui/ctlFileDetails.h"

#include "panels/ui/FilePreview.h"
#include "panels/ui/StoredFileList.h"
#include "panels/ui/StoredFileView.h"
#include "platform/dao/Database.h"
#include "platform/system/Prompts.h"
#include "store/CFileObject.h"
#include "store/FileMerge.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"
#include "support/ui/Icons.h"
#include "text/TextBurden.h"
#include "text/ui/RichTextBox.h"

#include <QAction>
#include <QItemSelectionModel>
#include <QLabel>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>
#include <functional>
#include <utility>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlFileDetails"_s;

/// A widget under a heading.
QWidget* Headed(const QString& heading, QWidget* widget)
{
    constexpr int Margin = 4;
    auto* page = new QWidget;
    auto* label = new QLabel(heading);
    label->setBuddy(widget);
    label->setContentsMargins(Margin, Margin, Margin, Margin);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(label);
    layout->addWidget(widget, 1);
    return page;
}

} // namespace

ctlFileDetails::ctlFileDetails(QWidget* parent)
    : QWidget(parent), m_files(new StoredFileList(this)), m_sorted(new QSortFilterProxyModel(this)),
      lvFiles(new StoredFileView), rtbFileNotes(new RichTextBox), m_preview(new FilePreview)
{
    setObjectName(u"ctlFileDetails1"_s);
    m_sorted->setSourceModel(m_files);
    m_sorted->setSortRole(StoredFileList::SortRole);
    m_sorted->setSortLocaleAware(true);
    lvFiles->setModel(m_sorted);
    lvFiles->sortByColumn(StoredFileList::TitleColumn, Qt::AscendingOrder);
    lvFiles->hideColumn(StoredFileList::SortColumn); // the key of the sizes
    rtbFileNotes->setObjectName(u"rtbFileNotes"_s);
    rtbFileNotes->setAccessibleName(u"Description of the file"_s);
    rtbFileNotes->setPlaceholderText(u"Select one file to describe it."_s);
    MakeActions();
    MakeLayout();
    connect(lvFiles->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { Guarded(ModuleName, u"lvFiles_ItemClick"_s, [this] { SelectionChanged(); }); });
    connect(lvFiles, &StoredFileView::FilesArrived, this, [this](const QStringList& paths) {
        Guarded(ModuleName, u"lvFiles_OLEDragDrop"_s, [&] { ImportFiles(paths); });
    });
    connect(lvFiles, &QTreeView::doubleClicked, mnuFileOpenItem, &QAction::trigger);
    lvFiles->MakeCopies = std::bind_front(&ctlFileDetails::CopiesOfSelected, this);
    connect(rtbFileNotes, &RichTextBox::textChanged, this, [this] {
        if (!m_loading && m_current && MayChange())
            m_current->SetDescriptionChanged(true);
    });
    ShowDescription();
    UpdateActions();
}

ctlFileDetails::~ctlFileDetails() = default;

void ctlFileDetails::MakeActions()
{
    mnuFileOpenItem = MakeAction(u"mnuFileOpenItem"_s, u"&Open"_s, u"document-open"_s,
                                 u"Open the file with its application"_s, &ctlFileDetails::OpenFile);
    mnuUnzipToDirectoryItem = MakeAction(u"mnuUnzipToDirectoryItem"_s, u"&Unzip to Directory..."_s,
                                         u"archive-extract"_s, u"Extract the files of the zip file to a folder"_s,
                                         &ctlFileDetails::UnzipToDirectory);
    mnuAddFile = MakeAction(u"mnuAddFile"_s, u"&Add File..."_s, u"list-add"_s, u"Store files with this item"_s,
                            &ctlFileDetails::AddFile);
    mnuExportFile = MakeAction(u"mnuExportFile"_s, u"&Export File"_s, u"document-export"_s,
                               u"Save a copy outside the library"_s, &ctlFileDetails::ExportFile);
    mnuDeleteFile = MakeAction(u"mnuDeleteFile"_s, u"&Delete File"_s, u"edit-delete"_s, u"Delete from the library"_s,
                               &ctlFileDetails::DeleteFile);
    mnuFilePreview = new QAction(u"&Preview"_s, this);
    mnuFilePreview->setObjectName(u"mnuFilePreview"_s);
    mnuFilePreview->setCheckable(true);
    connect(mnuFilePreview, &QAction::triggered, this, [this](bool shown) {
        ShowPreview(shown);
        Q_EMIT PreviewShown(shown);
    });
    // The list's own keys
    mnuFileOpenItem->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    mnuAddFile->setShortcut(Qt::Key_Insert);
    mnuDeleteFile->setShortcut(Qt::Key_Delete);
    for (QAction* action : {mnuFileOpenItem, mnuAddFile, mnuDeleteFile})
        action->setShortcutContext(Qt::WidgetShortcut);
    const auto line = [this] {
        auto* separator = new QAction(this);
        separator->setSeparator(true);
        return separator;
    };
    lvFiles->setContextMenuPolicy(Qt::ActionsContextMenu);
    lvFiles->addActions({mnuFileOpenItem, mnuUnzipToDirectoryItem, line(), mnuAddFile, mnuExportFile, mnuDeleteFile,
                         line(), mnuFilePreview});
}

QAction* ctlFileDetails::MakeAction(const QString& name, const QString& caption, const QString& icon,
                                    const QString& tip, void (ctlFileDetails::*run)())
{
    auto* action = new QAction(IconNamed(icon), caption, this);
    action->setObjectName(name);
    action->setStatusTip(tip);
    connect(action, &QAction::triggered, this,
            [this, name, run] { Guarded(ModuleName, name, [&] { (this->*run)(); }); });
    return action;
}

void ctlFileDetails::MakeLayout()
{
    auto* below = new QSplitter;
    below->setObjectName(u"FilePreviewResizer"_s);
    below->addWidget(Headed(u"Description"_s, rtbFileNotes));
    below->addWidget(Headed(u"Preview"_s, m_preview));
    below->setChildrenCollapsible(false);
    m_separator = new QSplitter(Qt::Vertical);
    m_separator->setObjectName(u"FileResizer"_s);
    m_separator->addWidget(lvFiles);
    m_separator->addWidget(below);
    m_separator->setChildrenCollapsible(false);
    m_separator->setStretchFactor(0, 1);
    connect(m_separator, &QSplitter::splitterMoved, this, [this](int position) { m_position = position; });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_separator);
    ShowPreview(true);
}

// An item comes and goes

void ctlFileDetails::Initialise(Library& library, const QString& key)
{
    ForgetFileDescChanges(); // who wanted them saved has saved them
    m_library = &library;
    m_itemKey = key;
    m_current.reset();
    m_files->Clear(); // of the item before, whatever becomes of this one
    Guarded(ModuleName, u"Initialise"_s, [this] {
        Refill();
        SelectFirstItem();
    });
    UpdateActions();
}

void ctlFileDetails::Terminate()
{
    m_current.reset();
    m_library = nullptr;
    m_itemKey.clear();
    m_files->Clear();
    ShowDescription();
    UpdateActions();
}

void ctlFileDetails::SetLocked(bool locked)
{
    m_locked = locked;
    UpdateActions();
}

/// The files of a locked item stay as they are, and so do those of a library that can only be read.
bool ctlFileDetails::MayChange() const
{
    return m_library && !m_locked && !m_library->IsReadOnly();
}

/// Reads the files anew; those that were selected are again, if they are there.
void ctlFileDetails::FilesAdded(const QString& key)
{
    if (!m_library || key != m_itemKey)
        return;
    Refill();
    Q_EMIT FilesChanged(m_files->rowCount() > 0);
}

void ctlFileDetails::Refill()
{
    QStringList selected;
    for (const qint64 id : SelectedFiles())
        selected << QString::number(id);
    {
        const QSignalBlocker quiet(lvFiles->selectionModel());
        m_files->Read(*m_library, m_itemKey);
        if (m_current && m_files->RowOf(m_current->Key().toLongLong()) < 0)
            m_current.reset(); // what was typed of it has no place any more
    }
    if (m_files->rowCount() > 0 && !std::exchange(m_columnsSized, true)) { // later widths are the user's
        for (int column = 0; column < StoredFileList::ColumnCount; ++column)
            lvFiles->resizeColumnToContents(column);
    }
    SelectKeys(selected);
    SelectionChanged();
}

int ctlFileDetails::SeparatorPosition() const
{
    return m_position;
}

void ctlFileDetails::SetSeparatorPosition(int position)
{
    m_position = position;
    m_separator->setSizes({position, qMax(1, m_separator->height() - position)});
}

/// Only a panel that is shown has a height to divide.
void ctlFileDetails::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_position > 0)
        QTimer::singleShot(0, this, [this] { SetSeparatorPosition(m_position); });
}

void ctlFileDetails::SelectFirstItem()
{
    if (m_sorted->rowCount() > 0)
        lvFiles->setCurrentIndex(m_sorted->index(0, 0));
}

void ctlFileDetails::SetFocusToList()
{
    lvFiles->setFocus();
}

void ctlFileDetails::NotesSetFocus()
{
    rtbFileNotes->setFocus();
}

// The selection

QList<qint64> ctlFileDetails::SelectedFiles() const
{
    QList<qint64> ids;
    for (const QModelIndex& index : lvFiles->selectionModel()->selectedRows())
        ids << m_files->IdOf(m_sorted->mapToSource(index).row());
    return ids;
}

void ctlFileDetails::SelectKeys(const QStringList& keys)
{
    QItemSelection selection;
    QModelIndex first;
    for (const QString& key : keys) {
        const int row = m_files->RowOf(key.toLongLong());
        if (row < 0)
            continue;
        const QModelIndex index = m_sorted->mapFromSource(m_files->index(row, 0));
        selection.select(index, index);
        first = first.isValid() ? first : index;
    }
    if (!first.isValid())
        return;
    lvFiles->selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    lvFiles->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    lvFiles->scrollTo(first);
}

/// The description of the file that was selected is saved before another is shown; where it can't be,
/// that file stays the one.
void ctlFileDetails::SelectionChanged()
{
    const QList<qint64> ids = SelectedFiles();
    const QString key = ids.size() == 1 ? QString::number(ids.first()) : QString();
    const QString before = m_current ? m_current->Key() : QString();
    if (!m_returning && m_library && (key != before || key != m_shownKey)) {
        if (!SaveFileDescChanges() && m_files->RowOf(before.toLongLong()) >= 0) {
            m_returning = true;
            SelectKeys({before});
            QTimer::singleShot(0, this, [this, before] { // a key selects once more, and sets the current row
                m_returning = false;
                SelectKeys({before});
            });
            return;
        }
        m_current.reset();
        if (!key.isEmpty()) {
            m_current = std::make_unique<CFileObject>();
            m_current->Initialise(*m_library, key);
        }
        ShowDescription();
    }
    UpdateActions();
}

void ctlFileDetails::ShowDescription()
{
    {
        const QScopedValueRollback loading(m_loading, true);
        const QString description = m_current ? m_current->Description() : QString();
        const QString tooLarge = WhyTooLarge(BurdenOf(description), TextForm::Formatted);
        m_isTooLarge = !tooLarge.isEmpty();
        if (m_isTooLarge)
            rtbFileNotes->SetText(PlainBegin(description, tooLarge));
        else
            rtbFileNotes->SetTextRTF(description);
        rtbFileNotes->setEnabled(m_current != nullptr);
        rtbFileNotes->setPlaceholderText(m_current ? u"What the file is for"_s : u"Select one file to describe it."_s);
        m_shownKey = m_current ? m_current->Key() : QString();
    }
    UpdateActions();
    DescriptionShown();
    if (m_current)
        m_preview->ShowFile(ReadableStoredFile(*m_library, m_current->Key().toLongLong(), m_current->Title()),
                            m_current->Title());
    else
        m_preview->Clear();
}

void ctlFileDetails::ShowPreview(bool shown)
{
    mnuFilePreview->setChecked(shown);
    m_preview->parentWidget()->setVisible(shown);
}

void ctlFileDetails::UpdateActions()
{
    const QList<qint64> ids = m_library ? SelectedFiles() : QList<qint64>();
    const bool one = ids.size() == 1;
    const bool several = ids.size() > 1;
    const bool mayChange = MayChange();
    lvFiles->SetLocked(!mayChange);
    rtbFileNotes->SetLocked(!mayChange || !m_current || m_current->ReadFailed() || m_isTooLarge);
    mnuAddFile->setEnabled(mayChange);
    mnuDeleteFile->setEnabled(!ids.isEmpty() && mayChange);
    mnuDeleteFile->setText(several ? u"&Delete Files"_s : u"&Delete File"_s);
    mnuExportFile->setEnabled(!ids.isEmpty());
    mnuExportFile->setText(several ? u"&Export Files"_s : u"&Export File"_s);
    mnuFileOpenItem->setEnabled(one);
    mnuUnzipToDirectoryItem->setEnabled(one && HasZipExtension(m_files->TitleOf(m_files->RowOf(ids.first()))));
}

// Descriptions

bool ctlFileDetails::SaveFileDescChanges(bool mayAsk)
{
    return Guarded(
        ModuleName, u"SaveFileDescChanges"_s,
        [&] {
            if (!m_current || !m_current->DescriptionChanged())
                return true;
            const bool wanted =
                !m_askToSave || !mayAsk
                || Prompts::Current().MsgBox(
                       {.Text = u"The file description have been changed. Do you want to save these changes?"_s,
                        .Caption = u"Save changes?"_s,
                        .Buttons = MsgBoxButtons::YesNo,
                        .Icon = MsgBoxIcon::Question,
                        .MustAnswer = true})
                       == MsgBoxResult::Yes;
            if (!wanted) {
                ForgetFileDescChanges();
                return true;
            }
            if (!StoredFileList::Exists(*m_library,
                                        m_current->Key().toLongLong())) { // another program, or another user
                Prompts::Current().MsgBox(
                    {.Text =
                         u"The file '%1' has been deleted from the library meanwhile. Its description can't be saved "
                         "any more."_s.arg(m_current->Title()),
                     .Caption = u"Save changes?"_s,
                     .Icon = MsgBoxIcon::Exclamation});
                m_current.reset();
                QTimer::singleShot(0, this, [this] { // not in the middle of a selection
                    if (m_library)
                        Guarded(ModuleName, u"SaveFileDescChanges"_s, [this] { Refill(); });
                });
                return true;
            }
            m_current->SetDescription(rtbFileNotes->IsEmpty() ? QString() : rtbFileNotes->TextRTF());
            m_current->SetDescriptionChanged(true);
            const DescriptionSave save = SaveDescription(*m_current, *m_library);
            if (save.Taken)
                ShowDescription();
            return save.Saved;
        },
        false);
}

void ctlFileDetails::ForgetFileDescChanges()
{
    if (!m_current || !m_current->DescriptionChanged())
        return;
    const QString key = m_current->Key();
    m_current->Initialise(*m_library, key);
    ShowDescription();
}

} // namespace qb
