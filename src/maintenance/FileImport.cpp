#include "maintenance/FileImport.h"

#include "maintenance/ArchiveProgress.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "store/CFileObject.h"
#include "store/PendingFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>
#include <optional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Takes files into one item. It watches the work on each file, and tells of the whole.
class FileImport : private Work {
public:
    FileImport(Library& library, QString itemKey, const FileImportOptions& options, Work& whole)
        : m_library(library), m_itemKey(std::move(itemKey)), m_options(options), m_whole(whole)
    {
    }

    FileImportResult Run(const FileImportPlan& plan)
    {
        QStringList files = plan.Files;
        const bool compresses = m_options.Option != ImportOption::AsTheyAre && !plan.Candidates.empty();
        if (compresses && !(m_options.Option == ImportOption::ZipEach ? ZipEach(plan, files) : ZipAll(files)))
            return {.Keys = {}, .Cancelled = true, .Complete = false};
        return m_options.Whole ? StoreWhole(files) : Store(files);
    }

private:
    // Work: of the file, or the archive, that is under way
    void Advance(qint64 done, qint64) override
    {
        m_piece = done;
        const qint64 all = qMax(m_total, m_done + done);
        if (m_adding && m_total > 0)
            m_whole.Say(u"Adding "_s + m_adding->Title(), int((m_done + done) * 99 / all));
        m_whole.Advance(m_done + done, all);
    }
    bool IsCancelled() override
    {
        m_cancelled = m_whole.IsCancelled();
        return m_cancelled;
    }

    /// Packs files into an archive of the work's own folder; empty when it was cancelled.
    QString Zip(const QStringList& files, const QString& baseDirectory, const QString& zipName,
                StoredFileZipProgress& progress, int all)
    {
        if (!m_pending)
            m_pending.emplace(m_library);
        const QString archive = m_pending->PackingFolder() + zipName;
        BrindletonZip m_oZipUnzip;
        QObject::connect(&m_oZipUnzip, &BrindletonZip::Progress, &m_oZipUnzip,
                         [&](int fileNo, const QString& text) { progress.m_oZipUnzip_Progress(fileNo, text, all); });
        m_oZipUnzip.SetZipFileName(archive);
        m_oZipUnzip.SetBaseDirectory(baseDirectory);
        m_oZipUnzip.ClearFileList();
        for (const QString& file : files)
            m_oZipUnzip.AddFile(file);
        try {
            if (!m_oZipUnzip.Zip(*this))
                return {};
        } catch (const RuntimeError& error) { // where it was to be made is of no interest to anybody
            throw RuntimeError(error.Number(),
                               QString(error.Description()).replace(QDir::toNativeSeparators(archive), zipName),
                               error.Source());
        }
        for (const QString& file : files)
            m_done += QFileInfo(file).size();
        return archive;
    }

    /// Replaces each file that can be compressed by its archive. False when it was cancelled.
    bool ZipEach(const FileImportPlan& plan, QStringList& files)
    {
        for (const auto& candidate : plan.Candidates)
            m_total += QFileInfo(files[candidate.Index]).size();
        StoredFileZipProgress progress(m_whole);
        QStringList names; // archives made; two files may have the same name but for their extension
        for (const auto& [index, zipName] : plan.Candidates) {
            const QString name = NumberedName(zipName, [&](const QString& taken) { return names.contains(taken); });
            names << name;
            const QString archive = Zip({files[index]}, QFileInfo(files[index]).absolutePath(), name, progress,
                                        int(plan.Candidates.size()));
            if (archive.isEmpty())
                return false;
            files[index] = archive;
        }
        return true;
    }

    /// Replaces all files by one archive. False when it was cancelled.
    bool ZipAll(QStringList& files)
    {
        const QString name = WithZipExtension(m_options.ZipName);
        if (m_options.ZipName.isEmpty() || name.contains(u'/') || name.contains(u'\\'))
            throw RuntimeError(ErrorNumber::PathAccess,
                               u"'%1' is no name for an archive; nothing was changed."_s.arg(m_options.ZipName),
                               u"ImportStoredFiles"_s);
        for (const QString& file : std::as_const(files))
            m_total += QFileInfo(file).size();
        StoredFileZipProgress progress(m_whole);
        const QString archive = Zip(files, QFileInfo(files.first()).absolutePath(), name, progress, int(files.size()));
        files = {archive};
        return !archive.isEmpty();
    }

    FileImportResult Store(const QStringList& files)
    {
        FileImportResult result;
        CountAll(files);
        const auto hide = qScopeGuard([this] { m_whole.Say({}, 100); });
        for (const QString& path : files) {
            CFileObject file;
            Prepare(file, path);
            result.Complete = file.Commit();
            Finished();
            if (!result.Complete) {
                result.Cancelled = m_cancelled;
                return result;
            }
            result.Keys << file.Key();
        }
        result.Complete = true;
        return result;
    }

    void CountAll(const QStringList& files)
    {
        m_done = m_piece = m_total = 0;
        for (const QString& file : files)
            m_total += QFileInfo(file).size();
    }

    void Prepare(CFileObject& file, const QString& path)
    {
        file.Initialise(m_library, {});
        file.SetCodeID(m_itemKey);
        const bool isOwn = m_pending && path.startsWith(m_pending->PackingFolder());
        file.SetStoredFile(QFileInfo(path).absoluteFilePath(),
                           isOwn ? CFileObject::Intake::Move : CFileObject::Intake::Copy);
        file.SetTitle(NumberedName(file.Title(), [this](const QString& title) { return HasFile(title); }));
        file.SetDescription(m_options.Description);
        file.SetWork(*this);
        m_adding = &file;
        m_cancelled = false;
    }

    /// The file that was under way is taken in, or not.
    void Finished()
    {
        m_done += std::exchange(m_piece, 0);
        m_adding = nullptr;
    }

    /// Copies all of them first; the rows are made together, and only then do the files take their places.
    FileImportResult StoreWhole(const QStringList& paths)
    {
        FileImportResult result;
        CountAll(paths);
        const auto work = std::make_shared<PendingWork>(m_library);
        std::vector<std::unique_ptr<CFileObject>> files;
        const auto hide = qScopeGuard([this] { m_whole.Say({}, 100); });
        for (const QString& path : paths) {
            Prepare(*files.emplace_back(std::make_unique<CFileObject>()), path);
            const bool isTaken = files.back()->TakeIn(work, qint64(files.size()));
            Finished();
            result.Cancelled = !isTaken && m_cancelled;
            if (!isTaken)
                return result;
        }
        Transaction transaction(m_library);
        for (const auto& file : files) {
            file->SetTitle(NumberedName(file->Title(),
                                        [this](const QString& title) { return HasFile(title); })); // two of one name
            if (!file->Commit())
                return result;
            result.Keys << file->Key();
        }
        m_options.BeforeCommit(result.Keys);
        transaction.Commit();
        result.Complete = true;
        for (const auto& file : files)
            result.Complete = file->PutInPlace() && result.Complete;
        return result;
    }

    bool HasFile(const QString& title)
    {
        return !m_library
                    .QueryValue(u"SELECT 1 FROM Files WHERE CodeID = ? AND Title = ?"_s,
                                {m_itemKey.toLongLong(), title})
                    .IsNull();
    }

    Library& m_library;
    QString m_itemKey;
    const FileImportOptions& m_options;
    Work& m_whole;
    std::optional<PendingWork> m_pending; ///< while archives are there
    CFileObject* m_adding = nullptr;      ///< the file that is under way
    bool m_cancelled = false;
    qint64 m_done = 0;  ///< in bytes, of what is complete
    qint64 m_piece = 0; ///< in bytes, of what is under way
    qint64 m_total = 0; ///< in bytes
};

} // namespace

bool HasZipExtension(const QString& name)
{
    return name.toUpper().endsWith(u".ZIP"_s);
}

QString WithZipExtension(const QString& name)
{
    return HasZipExtension(name) ? name : name + u".zip"_s;
}

namespace {

/// The name of a file with its extension replaced; one that begins with its only dot has none.
QString ZipNameOf(const QString& name)
{
    static const QRegularExpression extension(u"(?<=.)\\.[^.\\s]+$"_s, QRegularExpression::DotMatchesEverythingOption);
    return QString(name).remove(extension) + u".zip"_s;
}

} // namespace

FileImportPlan PlanFileImport(const QStringList& files)
{
    FileImportPlan plan;
    for (const QString& path : files) {
        const QFileInfo file(path);
        QString chosen = path;
        const QString zipName = ZipNameOf(file.fileName());
        const bool compressible = !HasZipExtension(file.fileName());
        const QFileInfo zip(file.absolutePath() + u'/' + zipName);
        if (compressible && zip.isFile())
            chosen = zip.absoluteFilePath();
        if (plan.Files.contains(chosen)) // the archive was chosen too
            continue;
        if (compressible && !zip.isFile())
            plan.Candidates.push_back({int(plan.Files.size()), zipName});
        plan.Files << chosen;
    }
    return plan;
}

FileImportResult ImportStoredFiles(Library& library, const QString& itemKey, const FileImportPlan& plan,
                                   const FileImportOptions& options, Work& work)
{
    return FileImport(library, itemKey, options, work).Run(plan);
}

} // namespace qb
