#pragma once

#include "find/FindCacheFile.h"
#include "find/FindSnapshot.h"
#include "find/LibraryTexts.h"
#include "platform/system/FileLock.h"
#include "platform/system/Work.h"

namespace qb {

/// The searched texts of a library, kept in step with it: in a file of the user's caches, which any number of processes
/// share, with what came since in memory. What it hands out is never older than the library was when it was asked.
///
/// For one thread at a time; it reads the library on a connection of its own, so it can work beside the thread that the
/// window has.
class FindCache {
public:
    /// Opens the library for reading; raises what Library::Open raises.
    explicit FindCache(const QString& libraryPath, const QString& cacheFolder = CacheFolderOfFinds());
    ~FindCache();
    FindCache(const FindCache&) = delete;
    FindCache& operator=(const FindCache&) = delete;

    static QString CacheFolderOfFinds();
    /// The file in which the texts are kept.
    const QString& FilePath() const { return m_file.Path(); }

    /// The texts as the library has them now. What has changed is read; when nobody knows what has, all rows are looked
    /// at; when there is no usable file, all texts are read, which takes seconds: @p work counts items, and to cancel
    /// it
    /// raises RuntimeError 3059. What can't be kept in the file stays in memory, and Warning says why.
    std::shared_ptr<const FindSnapshot> Update(Work& work = NoWork());

    /// The same after this program has changed these items, and nothing else that is searched, in one transaction:
    /// reads
    /// them alone, unless somebody else has changed the library too. They may be gone.
    std::shared_ptr<const FindSnapshot> Saved(const std::vector<qint64>& items, Work& work = NoWork());

    /// What Update returned last, in no time; empty before the first one.
    const std::shared_ptr<const FindSnapshot>& Last() const { return m_snapshot; }

    /// Writes to the file what is in memory only; to be called when there is time.
    void Keep();

    /// Forgets the texts, and the file, of which a search found that somebody has damaged it.
    void Discard();

    /// Why the texts could not be kept in the file; empty when they were.
    const QString& Warning() const { return m_warning; }

private:
    struct OpenedLibrary {
        std::unique_ptr<Library> Own;
        quint64 Inode = 0;
    };

    static OpenedLibrary Open(const QString& path);
    Library& Own() const { return *m_opened.Own; }
    FileStamp CurrentStamp();
    bool IsInStep(const FileStamp& stamp) const;
    bool Adopt(const FileStamp& stamp);
    FileLock Lock(Work& work) const;
    void Check(const FileStamp& stamp, Work& work);
    void Rebuild(const FileStamp& stamp, Work& work);
    bool RebuildInFile(const FileStamp& stamp, Work& work);
    void ReadAll(SegmentBuilder& builder, Work& work);
    void AddInMemory(const std::vector<LibraryItem>& items, const std::vector<qint64>& asked);
    void AppendOrRewrite();
    void Rewrite();
    void LoadOwn();
    bool HasManyHidden() const;
    std::vector<qint64> ItemsWithOtherFiles() const;
    void RemoveForgottenFiles() const;

    OpenedLibrary m_opened;
    LibraryFolders m_folders;
    FindCacheFile m_file;
    FindCacheFile::Head m_head; ///< of the file whose segments are the first layers
    std::shared_ptr<const FindSnapshot> m_snapshot;
    FileStamp m_stamp; ///< of the library when the snapshot was in step with it
    QString m_warning;
};

} // namespace qb
