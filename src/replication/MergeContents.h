#pragma once

#include "platform/system/Work.h"
#include "removed/MergeUndo.h"
#include "store/Library.h"
#include "store/PageChanges.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"

#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

namespace qb {

/// The stored files and web pages that a merge brings and takes. What is to be done is listed while the rows are
/// merged; nothing of the library on the disk changes before TakeOld, and without Place all of it comes back.
class MergeContents {
public:
    /// What goes is kept in @p undo before.
    MergeContents(Library& library, MergeUndo& undo, Work& work) : m_library(library), m_undo(undo), m_work(work) {}

    /// The row of a stored file is gone.
    void DeleteFile(qint64 id, const QString& title) { m_deletedFiles.push_back({id, title, 0}); }
    /// The row @p id was added; its contents are those of the row of Files with the key @p packed in the
    /// synchronization file.
    void AddFile(qint64 id, const QString& title, qint64 packed) { m_addedFiles.push_back({id, title, packed}); }
    /// The item is gone, with whatever page it had.
    void DeletePageOf(qint64 item) { m_goneItems.push_back(item); }
    /// The item stays without a page.
    void DropPage(qint64 item) { m_pages.push_back({item, 0}); }
    /// The page of the item is that which the synchronization file has under the number @p packed.
    void WritePage(qint64 item, qint64 packed) { m_pages.push_back({item, packed}); }

    /// Makes what is new, under names of its own, for as long as the synchronization file has it. Raises RuntimeError
    /// 75.
    void MakeNew();
    /// The checksum of each stored file that was made, by its row.
    QMap<qint64, quint32> MadeFiles() const;
    /// Last before the commit: takes what goes from its place. Raises RuntimeError 75.
    void TakeOld();
    /// The transaction is committed. What can't be placed now is placed by the next opening; why is returned.
    QStringList Place();

private:
    struct NamedFile {
        qint64 ID;
        QString Title;
        qint64 Packed;
    };
    struct MergedPage {
        qint64 Item;
        qint64 Packed; ///< 0: it goes
    };
    void MakeFiles();
    void MakePages();
    void UnpackPages(const QString& folder);
    void MakePage(const QString& unpacked, const MergedPage& page);

    Library& m_library;
    MergeUndo& m_undo;
    Work& m_work;
    std::vector<NamedFile> m_deletedFiles;
    std::vector<NamedFile> m_addedFiles;
    std::vector<qint64> m_goneItems;
    std::vector<MergedPage> m_pages;

    std::shared_ptr<PendingWork> m_pending;
    std::vector<std::unique_ptr<ArrivingFile>> m_arriving; ///< in the order of m_addedFiles
    StoredFileDeletion m_leavingFiles;
    PageDeletion m_leavingPages;
    std::optional<PageChanges> m_changes; ///< once there is one
};

} // namespace qb
