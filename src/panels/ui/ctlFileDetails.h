#pragma once

#include "maintenance/FileImport.h"
#include "text/FileDetailsView.h"

#include <QTemporaryDir>
#include <QUrl>
#include <QWidget>
#include <functional>
#include <memory>

class QAction;
class QSortFilterProxyModel;
class QSplitter;

namespace qb {

class CFileObject;
class FilePreview;
class StoredFileList;
class StoredFileView;

/// The page of the details panel that lists the files stored with the current item: adds, exports, opens,
/// unzips and deletes them, describes each, and shows what is in it.
class ctlFileDetails : public QWidget, public FileDetailsView {
    Q_OBJECT

public:
    explicit ctlFileDetails(QWidget* parent = nullptr);
    ~ctlFileDetails() override;

    // FileDetailsView
    QWidget* Page() override { return this; }
    void Initialise(Library& library, const QString& key) override;
    void Terminate() override;
    bool Locked() const override { return m_locked; }
    void SetLocked(bool locked) override;
    bool AskToSaveFileDescChanges() const override { return m_askToSave; }
    void SetAskToSaveFileDescChanges(bool ask) override { m_askToSave = ask; }
    bool SaveFileDescChanges(bool mayAsk = true) override;
    void ForgetFileDescChanges() override;
    RichTextBox& DescriptionTextBox() override { return *rtbFileNotes; }
    void NotesSetFocus() override;

    // What the actions do
    void AddFile() override;
    void DeleteFile() override;
    void ExportFile() override;
    void OpenFile();
    void UnzipToDirectory() override;
    /// The item of this key has got stored files from elsewhere: they are listed, if it is the one that is shown.
    void FilesAdded(const QString& key);
    /// Stores files of these paths with the item, after the question how.
    void ImportFiles(const QStringList& paths);

    /// The actions of the panel: `mnuAddFile`, `mnuExportFile`, `mnuUnzipToDirectoryItem`,
    /// `mnuDeleteFile`, in the order of the toolbar.
    QList<QAction*> ToolbarActions() const
    {
        return {mnuAddFile, mnuExportFile, mnuUnzipToDirectoryItem, mnuDeleteFile};
    }

    /// Where the description begins, in pixels from above.
    int SeparatorPosition() const;
    void SetSeparatorPosition(int position);
    void SelectFirstItem();
    /// Selects one file, by its ID; where it is not there any more, nothing changes.
    void SelectFile(qint64 file) { SelectKeys({QString::number(file)}); }
    /// The IDs of those that are selected, in the order of the list.
    QList<qint64> SelectedFiles() const;
    void SetFocusToList();
    /// Goes to the next place of a text, whatever the case of its letters, in the descriptions: behind the selection
    /// of the one that is shown, then in those of the files below it. False when there is none.
    bool SearchNextOccurence(const QString& text);
    /// The same, towards the first file.
    bool SearchPreviousOccurence(const QString& text);

    // Asked of the host
    std::function<QStringList(const QString& title, const QString& filter)> RequestFileNames;
    std::function<QString(const QString& title, const QString& name)> RequestSaveFileName;
    std::function<bool()> RequestShowImportFilesDialog;
    std::function<void(bool show)> SetShowImportFilesDialog;

    /// Shows the contents of the selected file beside the list, or not.
    void ShowPreview(bool shown);

Q_SIGNALS:
    /// Something takes its time; a percent of 100 and more says that it is done.
    void Progress(const QString& text, int percent);
    /// The user has switched the preview on or off.
    void PreviewShown(bool shown);
    void StatusText(const QString& text);
    /// Files were added or deleted; @p any are there now.
    void FilesChanged(bool any);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void MakeActions();
    QAction* MakeAction(const QString& name, const QString& caption, const QString& icon, const QString& tip,
                        void (ctlFileDetails::*run)());
    void MakeLayout();
    bool MayChange() const;
    void UpdateActions();
    void SelectionChanged();
    void ShowDescription();
    void Refill();
    void SelectKeys(const QStringList& keys);
    bool SearchOccurence(const QString& text, bool forward);
    bool ExportOne(qint64 id);
    void Import(const FileImportPlan& plan, const FileImportOptions& options);
    QList<QUrl> CopiesOfSelected();

    Library* m_library = nullptr;
    QString m_itemKey;
    std::unique_ptr<CFileObject> m_current; ///< the one file that is selected
    QString m_shownKey;                     ///< of the file whose description is shown
    StoredFileList* m_files;
    QSortFilterProxyModel* m_sorted;
    StoredFileView* lvFiles;
    QSplitter* m_separator = nullptr;
    RichTextBox* rtbFileNotes;
    FilePreview* m_preview;
    QAction* mnuAddFile = nullptr;
    QAction* mnuDeleteFile = nullptr;
    QAction* mnuExportFile = nullptr;
    QAction* mnuFileOpenItem = nullptr;
    QAction* mnuUnzipToDirectoryItem = nullptr;
    QAction* mnuFilePreview = nullptr;
    std::unique_ptr<QTemporaryDir> m_copies; ///< of files that were dragged out
    int m_position = 0;                      ///< of the separator
    bool m_askToSave = false;
    bool m_locked = false;
    bool m_columnsSized = false;
    bool m_importing = false;
    bool m_returning = false;  ///< to the file whose description could not be saved
    bool m_isTooLarge = false; ///< only the begin of the description is shown
    bool m_loading = false;    ///< a change of the description is not the user's
};

} // namespace qb
