#pragma once

#include "platform/system/FileLock.h"
#include "store/Library.h"

#include <QString>

namespace qb {

/// A change of the web page of an item that is there, which counts with the row that the same transaction writes, or
/// not at all. What is new is made aside in the folder of pages; once the row is committed it gets to its place, at the
/// latest when the library is opened next (FinishPendingPages). Until then page and folder are as they were.
class PageChange {
public:
    enum class Kind {
        Add,     ///< a page that was made takes the place of the old one, files that were made come to those there
        Replace, ///< page and folder take the place of both, whatever was there
        Delete   ///< both go
    };

    /// Raises RuntimeError 75 when nothing can be written there, 3343 in a library that can't note such changes.
    PageChange(Library& library, qint64 item);
    /// Without PutInPlace nothing was changed.
    ~PageChange();
    PageChange(const PageChange&) = delete;
    PageChange& operator=(const PageChange&) = delete;

    /// Where the new page is to be made, as `page.htm`, and the files of its folder, in `page`; ends in a separator.
    QString Folder() const { return m_folder + QStringLiteral("new/"); }
    /// Inside the transaction that writes the row: all that was made is flushed, and counts with that transaction.
    void Bind(Kind kind);
    /// The transaction is committed. Raises RuntimeError 75 when the page has to wait for the next opening of the
    /// library.
    void PutInPlace();

private:
    Library& m_library;
    qint64 m_item;
    QString m_root; ///< the folder of pages; ends in a separator, as m_folder
    QString m_mark; ///< which the library knows once the change counts
    QString m_folder;
    FileLock m_lock; ///< on m_folder
    Kind m_kind = Kind::Add;
};

/// What another process has committed of an item's page and not put in place yet is put there, or waited for. To be
/// called before the page is read to be changed. Raises RuntimeError 75 when it can't be.
void SettlePage(Library& library, qint64 item);

/// Whether the page of an item is on its way to its place.
bool IsPagePending(Library& library, qint64 item);

/// Completes the changes of dead processes that were committed, and forgets the others. Those under way are left alone.
void FinishPageChanges(Library& library);

/// The item is deleted: nothing is known of changes of its page any more.
void ForgetPageChanges(Library& library, qint64 item);

} // namespace qb
