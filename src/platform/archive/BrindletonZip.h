#pragma once

#include "platform/archive/ArchiveEntry.h"
#include "platform/system/Work.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>
#include <functional>

namespace qb {

class BrindletonZip;

/// Asks the user what of an archive to extract, and where to.
class UnzipDialog {
public:
    virtual ~UnzipDialog() = default;

    /// Runs until the user has extracted (true) or cancelled (false). The engine's UnzipFileName is the
    /// archive, @p folder what is proposed.
    virtual bool Run(BrindletonZip& engine, const QString& folder, const QString& title) = 0;
};

/// The zip engine: packs files into an archive and extracts them. Archives of any size and number of
/// entries, names in UTF-8. What is written appears under its name when it is complete, or not at all.
///
/// Its lines of progress:
///   "  adding: <name> "             a file is being packed
///   " (deflated <n>%)" CR LF        how much smaller all became; "(stored 0%)" without compression
///   " (in=<bytes>) (out=<bytes>) (deflated <n>%)"    the archive is complete
///   "  inflating: <path>       "    a file is being extracted, seven blanks behind its path;
///   " extracting: <path>       "    the same for one that was stored
/// where a path has "\" between its parts and begins with ".\".
class BrindletonZip : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Packing

    /// The archive to make, or made last.
    QString ZipFileName() const { return m_zipFileName; }
    void SetZipFileName(const QString& path) { m_zipFileName = path; }
    /// The folder that names in the archive are relative to; a file from elsewhere keeps its bare name.
    void SetBaseDirectory(const QString& folder) { m_baseDirectory = folder; }
    void ClearFileList() { m_files.clear(); }
    void AddFile(const QString& path) { m_files << path; }
    /// Bytes that the archive carries beside its files, 65,535 at most; none at first.
    void SetComment(const QByteArray& comment) { m_comment = comment; }
    /// Stores files without compressing them.
    void SetZipOptionA(bool storeOnly) { m_storeOnly = storeOnly; }
    /// Compresses in half the time, and less: for what others wait for.
    void SetFast(bool isFast) { m_isFast = isFast; }
    /// Leaves folders out of the names.
    void SetZipOptionB(bool bareNames) { m_bareNames = bareNames; }
    /// Makes the archive of the files added, over one that is there. False when it was cancelled; raises
    /// RuntimeError 75 when a file can't be read or the archive can't be written. What was there is
    /// untouched in both cases. @p work counts bytes.
    bool Zip(Work& work = NoWork());

    // Extracting

    /// The archive to extract from.
    QString UnzipFileName() const { return m_unzipFileName; }
    void SetUnzipFileName(const QString& path) { m_unzipFileName = path; }
    /// Leaves files that are there as they are.
    void SetZipOptionC(bool keepExisting) { m_keepExisting = keepExisting; }
    QString ExtractDirectory() const { return m_extractDirectory; }
    void SetExtractDirectory(const QString& folder) { m_extractDirectory = folder; }
    /// The folder that was extracted to last; empty before.
    QString UnzippedPath() const { return m_unzippedPath; }
    /// The archive is one of the program's own, which may hold next to nothing in any number of bytes: what it
    /// declares is held against the room on the disk only, not against MostBytes.
    void SetOwnArchive(bool own) { m_ownArchive = own; }
    /// How many files of the last extraction were left as they were.
    int KeptFiles() const { return m_keptFiles; }
    /// The number of files that are being extracted of the archive.
    int FileCount() const { return m_fileCount; }
    /// Asks by @p dialog, with @p folder proposed (the ExtractDirectory when it is empty). False when
    /// nothing was extracted.
    bool Unzip(UnzipDialog& dialog, const QString& folder, const QString& title);
    /// Extracts a whole archive below a folder. False when it was cancelled. Raises RuntimeError 75, with
    /// the folder as it was, for an archive that can't be read, that has an entry which would lead out
    /// of the folder or can't be extracted, or that unpacks to more than MostBytes.
    /// @p work counts bytes.
    bool ExtractTo(const QString& archive, const QString& folder, Work& work = NoWork());
    /// The same for the entries of these indexes only.
    bool ExtractEntries(const QString& archive, const QString& folder, const QList<quint64>& indexes,
                        Work& work = NoWork());
    /// The name of the first file of an archive, with the folder that it has there; empty when there is
    /// none. Raises RuntimeError 75 for an archive that can't be read.
    QString FirstFileName(const QString& archive);
    /// Reads the first file of an archive and gives its bytes to @p take, piece by piece, whose false ends it. False
    /// when it was ended or cancelled; raises RuntimeError 75 for what can't be read whole, or whose sum is wrong.
    /// @p work counts bytes.
    bool ReadFirstFile(const QString& archive, const std::function<bool(const QByteArray& piece)>& take,
                       Work& work = NoWork());
    /// What an archive holds.
    std::vector<ArchiveEntry> Entries(const QString& archive);

    /// The most that an archive of that size may unpack to, in bytes: two hundred times its size, and a
    /// gigabyte in any case.
    static qint64 MostBytes(qint64 archiveSize);

    /// Name and version of the engine.
    QString VersionInfo() const;

Q_SIGNALS:
    /// One line of the engine's output; @p fileNo counts files from 1.
    void Progress(int fileNo, const QString& text);

private:
    struct Packed {
        QString Path;
        QString Name;
        qint64 Size;
    };
    std::vector<Packed> FilesToPack() const;
    void AddTo(zip* archive, const Packed& file) const;
    bool Pack(const std::vector<Packed>& files, const QString& target, Work& work);
    void TellResult(const QString& archive, qint64 size, int count);
    bool Extract(const QString& archive, const QString& folder, const QList<quint64>* indexes, Work& work);

    QString m_zipFileName;
    QString m_baseDirectory;
    QStringList m_files;
    QByteArray m_comment;
    bool m_storeOnly = false;
    bool m_isFast = false;
    bool m_bareNames = false;
    bool m_keepExisting = false;
    bool m_ownArchive = false;
    QString m_unzipFileName;
    QString m_extractDirectory;
    QString m_unzippedPath;
    int m_fileCount = 0;
    int m_keptFiles = 0;
};

} // namespace qb
