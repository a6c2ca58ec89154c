#include "maintenance/LibraryBackup.h"

#include "maintenance/CDBManipulate.h"
#include "maintenance/Containers.h"
#include "maintenance/ContentCheck.h"
#include "maintenance/PhasedWork.h"
#include "maintenance/ReplacedFile.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Clock.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Heartbeat.h"
#include "platform/system/Paths.h"
#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/StagedFiles.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "store/SideFolders.h"
#include "support/Version.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"BackUp"_s;

/// Ends of the phases, in parts of a thousand of the whole.
struct Phases {
    qint64 Checked;
    qint64 Copied;
    qint64 Imported;
    qint64 Packed;
};

/// By what they usually take for so many bytes.
Phases PhasesOf(qint64 database, qint64 contents)
{
    constexpr double Check = 1, Copy = 1, Import = 1.5, Pack = 9, Compare = 2;
    const double check = Check * double(database + contents);
    const double copy = check + Copy * double(database);
    const double import = copy + Import * double(contents);
    const double pack = import + Pack * double(database + contents);
    const double whole = pack + Compare * double(database + contents) + 1;
    const auto part = [whole](double end) { return qint64(double(PhasedWork::Whole) * end / whole); };
    return {part(check), part(copy), part(import), part(pack)};
}

qint64 BytesBelow(const QString& folder, Work& work)
{
    qint64 bytes = 0;
    Heartbeat heart(work);
    QDirIterator all(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        all.next();
        bytes += all.fileInfo().size();
        EndUnless(heart.Beat(), Procedure);
    }
    return bytes;
}

/// Volumes can't be replaced in one step, and a mixture of two sets is none.
void RefuseToReplaceVolumes(const QString& backupFile)
{
    if (QFileInfo::exists(backupFile + u".001"_s))
        throw RuntimeError(ErrorNumber::DatabaseExists,
                           u"Volumes of '%1' exist already and are not replaced. Nothing was changed."_s.arg(
                               QDir::toNativeSeparators(backupFile)),
                           Procedure);
}

/// One library, on its way into a backup.
class Backup {
public:
    Backup(const QString& library, const QString& file, const BackUpOptions& options, PackedCopy& copy, Work& work)
        : m_library(library), m_file(QFileInfo(file).absoluteFilePath()), m_options(options), m_plan(copy),
          m_work(work), m_stage(QFileInfo(m_file).absolutePath()),
          m_database(m_stage.Scratch() + QFileInfo(m_file).fileName().chopped(1) + u't')
    {
    }

    BackUpResult Make()
    {
        m_contents = OwnFolderBytes();
        m_phases = PhasesOf(QFileInfo(m_library).size(), m_contents);
        m_work.Begin(m_phases.Checked);
        m_result.Damage = CheckContents(*DBEngine::OpenDatabase(m_library, DatabaseAccess::ReadOnly), m_work).Faults;
        m_work.Begin(m_phases.Copied);
        DBEngine::CompactDatabase(m_library, m_database, m_work, m_copy);
        m_work.Begin(m_phases.Imported);
        ImportContents();
        const QString container = Pack();
        PutInPlace(container);
        return m_result;
    }

private:
    /// What a dead process left in the folders is brought to its end first, so that all files are in their places.
    qint64 OwnFolderBytes()
    {
        try {
            if (!m_plan.IsAlone()) {
                const std::unique_ptr<Library> library = Library::Open(m_library);
                FinishPendingFiles(*library);
            }
        } catch (const RuntimeError& error) {
            if (error.Number() != ErrorNumber::CannotOpen)
                throw;
            m_copy = DBEngine::Copy::PassingOfReadOnly;
        }
        const QString identity = LibraryIdentity(*DBEngine::OpenDatabase(m_library, DatabaseAccess::ReadOnly));
        qint64 bytes = 0;
        for (const auto& [folder, own] :
             {std::pair(FilesFolderOf(m_library), &m_filesFolder), std::pair(HTMLFolderOf(m_library), &m_htmlFolder)}) {
            if (OwnerOf(folder, identity) == FolderOwner::Another)
                continue; // nothing in it is this library's
            *own = folder;
            bytes += BytesBelow(folder, m_work);
        }
        return bytes;
    }

    void ImportContents()
    {
        const std::unique_ptr<Database> database = DBEngine::OpenDatabase(m_database);
        m_plan.Prepare(*database);
        CDBManipulate contents(m_work);
        contents.Use(*database);
        contents.ExpectBytes(m_contents);
        database->Execute(u"PRAGMA synchronous = OFF"_s); // it does not outlive the work
        Transaction transaction(*database);
        if (!m_htmlFolder.isEmpty()) {
            contents.ImportAllHTMLFiles(m_htmlFolder);
            contents.ImportDefaultHTMLFiles(m_htmlFolder);
            contents.ImportOtherHTMLFiles(m_htmlFolder);
        }
        if (!m_filesFolder.isEmpty())
            contents.ImportAllItemFiles(m_filesFolder);
        m_plan.Complete(*database);
        transaction.Commit();
        m_result.MissingFiles = contents.MissingFiles();
        Compare(*database, contents);
    }

    /// What is in the database now against what was read from the disk, and against the library.
    void Compare(Database& database, const CDBManipulate& contents)
    {
        BackupSummary& summary = m_result.Summary;
        summary = SummaryOf(database, m_silent);
        summary.Name = fnExtractPathOrFileName(m_library, PathPart::BaseName);
        summary.Made = Clock::Now();
        summary.Version = ProgramVersion();
        summary.Damaged = qint64(m_result.Damage.size());
        if (summary.Files != contents.ImportedFiles() || summary.Pages != contents.ImportedPages())
            Fail(u"it does not hold what was read"_s);
    }

    /// Returns the container, in the stage.
    QString Pack()
    {
        const QString container = m_stage.Scratch() + u"packed"_s;
        m_work.Begin(m_phases.Packed);
        EndUnless(PackContainer(m_database, container, m_result.Summary.ToComment(), m_work), Procedure);
        KeepNoMoreRightsThan(m_library, container);
        m_work.Begin(PhasedWork::Whole);
        if (const QString why = WhyNotAsPacked(m_database, container, m_work); !why.isEmpty())
            Fail(why);
        if (ReadBackupSummary(container)->Files != m_result.Summary.Files)
            Fail(u"it can't be read as it was written"_s);
        return container;
    }

    void PutInPlace(const QString& container)
    {
        m_result.Size = QFileInfo(container).size();
        m_plan.Decide({.Path = m_file,
                       .Complete = container,
                       .Locked = m_stage.LockedFolder(),
                       .Identity = m_result.Summary.Library,
                       .IsDamaged = !m_result.Damage.empty()});
        try {
            MoveAll(container);
            m_stage.PutInPlace(false, m_work);
        } catch (const RuntimeError&) {
            m_plan.TakeBack();
            throw;
        }
        m_plan.Placed();
    }

    void MoveAll(const QString& container)
    {
        const QString name = QFileInfo(m_file).fileName();
        if (m_options.VolumeSize == 0)
            return Move(container, name);
        EndUnless(!SplitContainer(container, m_options.VolumeSize, m_silent).isEmpty(), Procedure);
        QStringList volumes = FilesOfBackup(container + u".001"_s);
        // The first one comes last: without it there is no backup, whatever of it there is.
        std::reverse(volumes.begin(), volumes.end());
        for (const QString& volume : std::as_const(volumes))
            Move(volume, name + volume.right(4));
        std::reverse(m_result.Files.begin(), m_result.Files.end());
    }

    void Move(const QString& file, const QString& name)
    {
        if (!RenameFile(file, m_stage.PathFor(name)))
            Fail(u"it can't be put in place"_s);
        m_result.Files << QFileInfo(m_file).absolutePath() + u'/' + name;
    }

    [[noreturn]] void Fail(const QString& why) const
    {
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"The %1 '%2' failed: %3. Nothing was changed."_s.arg(m_plan.Noun(), QDir::toNativeSeparators(m_file), why),
            Procedure);
    }

    QString m_library;
    QString m_file;
    BackUpOptions m_options;
    PackedCopy& m_plan;
    PhasedWork m_work;
    UncountedWork m_silent{m_work};
    StagedFiles m_stage;
    QString m_database; ///< as it is packed
    DBEngine::Copy m_copy = DBEngine::Copy::Passing;
    QString m_filesFolder;
    QString m_htmlFolder;
    qint64 m_contents = 0; ///< bytes
    Phases m_phases{};
    BackUpResult m_result;
};

} // namespace

void PackedCopy::Prepare(Database& copy)
{
    if (CDBCreate().PrepareAsBackUp(copy))
        return;
    Prompts::Current().MsgBox({.Text = u"Database could not be backed up."_s,
                               .Caption = u"Error while creating necessary fields in db"_s,
                               .Icon = MsgBoxIcon::Critical});
    throw RuntimeError(ErrorNumber::Engine, u"The tables of a backup could not be made. Nothing was changed."_s,
                       Procedure);
}

void PackedCopy::Decide(const PlacedFile& made)
{
    const std::optional<BackupSummary> there = ReadBackupSummary(made.Path);
    const auto refuse = [&made](const QString& what) {
        throw RuntimeError(ErrorNumber::DatabaseExists,
                           u"'%1' is %2, and is not replaced. Choose another name; nothing was changed."_s.arg(
                               QDir::toNativeSeparators(made.Path), what),
                           Procedure);
    };
    if (there && there->Library != made.Identity)
        refuse(u"a backup of another library, '%1'"_s.arg(there->Name));
    if (there && made.IsDamaged && there->Damaged == 0)
        refuse(u"a backup of this library from before it was damaged"_s);
}

QString WhyNotAsPacked(const QString& database, const QString& container, Work& work)
{
    QFile packed(database);
    if (!packed.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return packed.errorString();
    QByteArray own;
    bool isSame = true;
    const bool isWhole = BrindletonZip().ReadFirstFile(
        container,
        [&](const QByteArray& piece) {
            isSame = ReadAll(packed, own, piece.size()).isEmpty() && own == piece;
            return isSame;
        },
        work);
    if (!isSame || (isWhole && !packed.atEnd()))
        return u"it can't be read as it was written"_s;
    EndUnless(isWhole, Procedure);
    return {};
}

BackUpResult PackLibraryCopy(const QString& library, const QString& file, const BackUpOptions& options,
                             PackedCopy& copy, Work& work)
{
    const QString noun = copy.Noun();
    RequireReplaceable(file, library, u"a "_s + noun);
    if (options.VolumeSize > 0)
        RefuseToReplaceVolumes(file);
    if (const QString reason = WhyNotWritable(file); !reason.isEmpty() && QFileInfo(file).absoluteDir().exists())
        throw RuntimeError(ErrorNumber::PathAccess, u"The %1 can't be made. "_s.arg(noun) + reason, Procedure);
    return Backup(library, file, options, copy, work).Make();
}

BackUpResult BackUpLibrary(const QString& library, const QString& backupFile, const BackUpOptions& options, Work& work)
{
    PackedCopy backup;
    BackUpResult result = PackLibraryCopy(library, backupFile, options, backup, work);
    work.Say(u"Successfully backed up"_s, 101);
    return result;
}

} // namespace qb
