// What the stored files panel does with files.

#include "config/Remembered.h"
#include "maintenance/ArchiveProgress.h"
#include "panels/ui/StoredFileList.h"
#include "panels/ui/StoredFileView.h"
#include "panels/ui/ctlFileDetails.h"
#include "panels/ui/frmImportType.h"
#include "panels/ui/frmUnzip.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/FileCopy.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/Shell.h"
#include "removed/Keeping.h"
#include "store/CFileObject.h"
#include "store/PendingFiles.h"
#include "store/StoredFiles.h"
#include "support/ErrorRoutine.h"
#include "support/ui/WorkProgress.h"
#include "text/ui/RichTextBox.h"

#include <QDir>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QScopedValueRollback>
#include <QSortFilterProxyModel>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"ctlFileDetails"_s;
const QString AnyFile = u"All Files|*"_s;

void Tell(const QString& text, const QString& caption, MsgBoxIcon icon)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = caption, .Icon = icon});
}

void TellMissing(const QString& title)
{
    Tell(u"The file '%1' is missing in the library's folder of stored files."_s.arg(title), u"Source File Not Found"_s,
         MsgBoxIcon::Critical);
}

/// Says of a work what the panel passes on to the status bar.
template <class Base>
class ToldByPanel : public Base {
public:
    template <class... Arguments>
    explicit ToldByPanel(ctlFileDetails& panel, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), m_panel(panel)
    {
    }

    void Say(const QString& text, int percent) override
    {
        Base::Say(text, percent);
        Q_EMIT m_panel.Progress(text, percent);
    }

private:
    ctlFileDetails& m_panel;
};

/// The way of importing that was chosen last.
ImportOption SavedOption()
{
    const int number = Remembered(Memory::FileImportOperation).toInt();
    const bool known = number >= int(ImportOption::AsTheyAre) && number <= int(ImportOption::ZipAll);
    return known ? ImportOption(number) : ImportOption::AsTheyAre;
}

/// The name that is proposed for an archive of all files.
QString ProposedZipName(const FileImportPlan& plan)
{
    return WithZipExtension(QFileInfo(plan.Files.first()).dir().dirName());
}

/// A name without a folder, asked for until it is one; empty when the user has cancelled.
QString AskZipName(QString proposed)
{
    for (;;) {
        proposed = Prompts::Current()
                       .InputBox(u"Name of the zip file:"_s, u"Import Files"_s, proposed)
                       .value_or(QString())
                       .trimmed();
        if (!proposed.contains(u'/') && !proposed.contains(u'\\'))
            return proposed;
        Tell(u"'%1' is no name of a file."_s.arg(proposed), u"Import Files"_s, MsgBoxIcon::Exclamation);
    }
}

/// Selects the first, or the last, place that lies whole between two positions of a box.
bool SelectPlace(RichTextBox& box, const QString& text, qsizetype begin, qsizetype end, bool forward)
{
    QList<qsizetype> places = box.FindAll(text);
    places.removeIf([&](qsizetype place) { return place < begin || place + text.size() > end; });
    if (places.isEmpty())
        return false;
    box.SetSelStart(forward ? places.first() : places.last());
    box.SetSelLength(text.size());
    return true;
}

QString PlaceOf(Library& library, const StoredFileList& files, qint64 id)
{
    const int row = files.RowOf(id);
    return row < 0 ? QString() : ReadableStoredFile(library, id, files.TitleOf(row));
}

/// How files are to be taken in; nothing when the user cancelled.
std::optional<FileImportOptions> AskImportOptions(ctlFileDetails& panel, const FileImportPlan& plan)
{
    FileImportOptions options;
    if (plan.Candidates.empty())
        return options;
    options.Option = SavedOption();
    if (panel.RequestShowImportFilesDialog()) {
        frmImportType dialog(&panel);
        dialog.SetMultipleFiles(plan.Files.size() > 1);
        dialog.SetOptionSelected(options.Option);
        dialog.SetZipFileName(ProposedZipName(plan));
        dialog.exec();
        if (dialog.Cancelled())
            return std::nullopt;
        options.Option = dialog.OptionSelected();
        options.ZipName = dialog.ZipFileName();
        Remember(Memory::FileImportOperation, QString::number(int(options.Option)));
        if (dialog.DontShowAgain())
            panel.SetShowImportFilesDialog(false);
    } else if (options.Option == ImportOption::ZipAll && plan.Files.size() == 1) {
        options.Option = ImportOption::ZipEach; // as the dialog has it for one file
    } else if (options.Option == ImportOption::ZipAll) {
        options.ZipName = AskZipName(ProposedZipName(plan));
        if (options.ZipName.isEmpty())
            return std::nullopt;
    }
    return options;
}

} // namespace

// Adding

void ctlFileDetails::AddFile()
{
    ImportFiles(RequestFileNames(u"Select File(s) To Import"_s, AnyFile));
}

void ctlFileDetails::ImportFiles(const QStringList& paths)
{
    if (m_importing || !MayChange() || paths.isEmpty()) // a second drop while the first is asked about
        return;
    const QScopedValueRollback importing(m_importing, true);
    if (!SaveFileDescChanges())
        return;
    QStringList files;
    QStringList others;
    for (const QString& path : paths)
        (QFileInfo(path).isFile() ? files : others) << path;
    if (!others.isEmpty())
        Tell(u"Only files can be stored. These are none and are left out:\n\n%1"_s.arg(others.join(u'\n')),
             u"Import Files"_s, MsgBoxIcon::Exclamation);
    if (files.isEmpty())
        return;
    const FileImportPlan plan = PlanFileImport(files);
    if (std::optional<FileImportOptions> options = AskImportOptions(*this, plan))
        Import(plan, *options);
}

void ctlFileDetails::Import(const FileImportPlan& plan, const FileImportOptions& options)
{
    FileImportResult result;
    {
        ToldByPanel<WorkProgress> work(*this, window(), u"Importing Files"_s);
        Guarded(ModuleName, u"AddFile"_s,
                [&] { result = ImportStoredFiles(*m_library, m_itemKey, plan, options, work); });
        Q_EMIT Progress({}, 100);
    }
    Refill();
    if (!result.Keys.isEmpty())
        SelectKeys(result.Keys);
    const qsizetype count = result.Keys.size();
    const QString added = count == 1 ? u"1 file added"_s : u"%1 files added"_s.arg(count);
    Q_EMIT StatusText(result.Complete    ? added
                      : result.Cancelled ? u"Cancelled; "_s + added
                                         : u"Stopped by an error; "_s + added);
    Q_EMIT FilesChanged(m_files->rowCount() > 0);
}

// Deleting

void ctlFileDetails::DeleteFile()
{
    const QList<qint64> ids = SelectedFiles();
    if (ids.isEmpty() || !MayChange())
        return;
    const QString question =
        ids.size() > 1 ? u"Do you really want to delete the %1 selected files from the database?"_s.arg(ids.size())
                       : u"Do you really want to delete this file from the database?"_s;
    if (Prompts::Current().MsgBox({.Text = question,
                                   .Caption = u"Delete File from Database"_s,
                                   .Buttons = MsgBoxButtons::YesNo,
                                   .Icon = MsgBoxIcon::Question,
                                   .Default = MsgBoxResult::No})
        != MsgBoxResult::Yes)
        return;
    const int row = lvFiles->selectionModel()->selectedRows().first().row();
    const bool isDone = Guarded(
        u"ctlFileDetails"_s, u"DeleteFile"_s,
        [&] {
            DeleteStoredFiles(*m_library, std::vector<qint64>(ids.begin(), ids.end()));
            return true;
        },
        false);
    for (const qint64 id : isDone ? ids : QList<qint64>()) {
        if (m_current && m_current->Key() == QString::number(id))
            m_current.reset(); // what was typed of it goes with it
    }
    Refill();
    if (m_sorted->rowCount() > 0 && !lvFiles->selectionModel()->hasSelection())
        lvFiles->setCurrentIndex(m_sorted->index(qMin(row, m_sorted->rowCount() - 1), 0));
    Q_EMIT FilesChanged(m_files->rowCount() > 0);
}

// Exporting

void ctlFileDetails::ExportFile()
{
    for (const qint64 id : SelectedFiles()) {
        if (!ExportOne(id))
            return;
    }
}

/// False when the user has cancelled, or it failed.
bool ctlFileDetails::ExportOne(qint64 id)
{
    const int row = m_files->RowOf(id);
    if (row < 0)
        return true; // it has gone since it was selected
    const QString path = RequestSaveFileName(u"Save File As : "_s, m_files->TitleOf(row));
    if (path.isEmpty())
        return false;
    FinishPendingFiles(*m_library);
    const bool missing = !QFileInfo::exists(PlaceOf(*m_library, *m_files, id));
    if (missing && !MayChange()) {
        TellMissing(m_files->TitleOf(row));
        return false;
    }
    CFileObject file;
    file.Initialise(*m_library, QString::number(id));
    QString written;
    {
        WorkProgress work(window(), u"Exporting File"_s);
        work.SetCaption(file.Title());
        file.SetWork(work);
        written = file.SaveToFile2(path);
    }
    if (!written.isEmpty()) {
        Q_EMIT StatusText(u"File Exported to: "_s + QDir::toNativeSeparators(written));
        return true;
    }
    if (!missing)
        return false;
    Tell(u"File could not have been exported."_s, u"Source File Not Found"_s, MsgBoxIcon::Critical);
    if (StoredFileList::Exists(*m_library, id))
        return true;
    Refill();
    Q_EMIT FilesChanged(m_files->rowCount() > 0);
    Tell(u"File record removed from the database, because source file was not found in the required system location."_s,
         u"Database Record Removed"_s, MsgBoxIcon::Information);
    return true;
}

/// Copies under their own names, for other programs; what is missing or can't be copied is left out. The
/// program that asks waits, so there is nothing to be answered meanwhile.
QList<QUrl> ctlFileDetails::CopiesOfSelected()
{
    QList<QUrl> urls;
    if (!m_copies)
        m_copies = std::make_unique<QTemporaryDir>();
    for (const qint64 id : SelectedFiles()) {
        const QString source = PlaceOf(*m_library, *m_files, id);
        const QString folder = m_copies->filePath(QString::number(id));
        if (source.isEmpty() || !QFileInfo::exists(source) || !QDir().mkpath(folder))
            continue;
        const QString target = folder + u'/' + m_files->TitleOf(m_files->RowOf(id));
        try {
            CopyFileContents(source, target);
            urls << QUrl::fromLocalFile(target);
        } catch (const RuntimeError& error) {
            HandleError(error.Number(), error.Description(), ModuleName, u"lvFiles_OLEStartDrag"_s, error.Source(),
                        false);
        }
    }
    return urls;
}

// Opening

void ctlFileDetails::OpenFile()
{
    const QList<qint64> ids = SelectedFiles();
    if (ids.size() != 1)
        return;
    const QString title = m_files->TitleOf(m_files->RowOf(ids.first()));
    const QString path = PlaceOf(*m_library, *m_files, ids.first());
    if (HasZipExtension(title))
        return UnzipToDirectory();
    FinishPendingFiles(*m_library);
    if (path.isEmpty() || !QFileInfo::exists(path))
        return TellMissing(title);
    if (IsProgram(title)) {
        const bool wanted =
            Prompts::Current().MsgBox(
                {.Text =
                     u"'%1' is a program. To open it may run it, and it can then do whatever you can. Do you really "
                     "want to open it?"_s.arg(title),
                 .Caption = u"Open Program"_s,
                 .Buttons = MsgBoxButtons::YesNo,
                 .Icon = MsgBoxIcon::Exclamation,
                 .Default = MsgBoxResult::No})
            == MsgBoxResult::Yes;
        if (!wanted)
            return;
    }
    if (FindAssociatedProgram(title).isEmpty() || !OpenTarget(path))
        ExportFile();
}

void ctlFileDetails::UnzipToDirectory()
{
    const QList<qint64> ids = SelectedFiles();
    if (ids.size() != 1)
        return;
    const QString title = m_files->TitleOf(m_files->RowOf(ids.first()));
    FinishPendingFiles(*m_library);
    const QString before = Remembered(Memory::PreviousExportPaths);
    const QString dialogs = Remembered(Memory::InitDir);
    QStringList folders;
    for (const QString& folder : {before, dialogs, QDir::homePath(), QDir::rootPath()}) {
        if (QFileInfo(folder).isDir() && !folders.contains(folder))
            folders << folder;
    }
    BrindletonZip m_oZipUnzip;
    ToldByPanel<Work> work(*this);
    std::optional<StoredFileZipProgress> progress(work);
    m_oZipUnzip.SetUnzipFileName(PlaceOf(*m_library, *m_files, ids.first()));
    m_oZipUnzip.SetExtractDirectory(folders.first());
    frmUnzip dialog(window());
    dialog.SetFolders(folders);
    connect(&dialog, &frmUnzip::Progress, this, [&](int fileNo, const QString& text, int files) {
        if (fileNo == 1)
            progress.emplace(work); // a try before may have been cancelled
        progress->m_oZipUnzip_Progress(fileNo, text, files);
    });
    try {
        m_oZipUnzip.Unzip(dialog, {}, title);
    } catch (const RuntimeError& error) {
        Tell(error.Description(), u"Unzip "_s + title, MsgBoxIcon::Exclamation);
    }
    Q_EMIT Progress({}, 100);
    if (m_oZipUnzip.UnzippedPath().isEmpty())
        return;
    Remember(Memory::PreviousExportPaths, m_oZipUnzip.UnzippedPath());
    Remember(Memory::InitDir, m_oZipUnzip.UnzippedPath());
    Q_EMIT StatusText(u"File(s) successfully extracted to: \r\n"_s
                      + QDir::toNativeSeparators(m_oZipUnzip.UnzippedPath()));
}

// Searching the descriptions

bool ctlFileDetails::SearchNextOccurence(const QString& text)
{
    return SearchOccurence(text, true);
}

bool ctlFileDetails::SearchPreviousOccurence(const QString& text)
{
    return SearchOccurence(text, false);
}

bool ctlFileDetails::SearchOccurence(const QString& text, bool forward)
{
    if (!m_library || text.isEmpty())
        return false;
    const qsizetype begin = rtbFileNotes->SelStart();
    const qsizetype end = begin + rtbFileNotes->SelLength();
    const qsizetype whole = rtbFileNotes->Text().size();
    if (m_current
        && (forward ? SelectPlace(*rtbFileNotes, text, end, whole, true)
                    : SelectPlace(*rtbFileNotes, text, 0, begin, false)))
        return true;
    const int shown = m_current
                          ? m_sorted->mapFromSource(m_files->index(m_files->RowOf(m_shownKey.toLongLong()), 0)).row()
                          : (forward ? -1 : m_sorted->rowCount());
    for (int row = shown + (forward ? 1 : -1); row >= 0 && row < m_sorted->rowCount(); row += forward ? 1 : -1) {
        const qint64 id = m_files->IdOf(m_sorted->mapToSource(m_sorted->index(row, 0)).row());
        CFileObject file;
        file.Initialise(*m_library, QString::number(id));
        if (!PlainTextFromRtf(file.Description()).contains(text, Qt::CaseInsensitive))
            continue;
        SelectKeys({QString::number(id)});
        return SelectPlace(*rtbFileNotes, text, 0, rtbFileNotes->Text().size(), forward);
    }
    return false;
}

} // namespace qb
