#pragma once

#include "platform/system/FileLock.h"
#include "platform/system/Work.h"
#include "store/Library.h"
#include "store/PageReferences.h"

#include <QString>
#include <set>
#include <vector>

namespace qb {

/// Changes of the web pages of items, which count with the rows that the same transaction writes, or not at all. What
/// is new is made aside in the folder of pages; once the rows are committed it gets to its place, at the latest when
/// the library is opened next (FinishPendingPages). Until then pages and their folders are as they were.
class PageChanges {
public:
    enum class Kind {
        Add,     ///< a page that was made takes the place of the old one, files that were made come to those there
        Replace, ///< page and folder take the place of both, whatever was there
        Delete   ///< both go
    };

    struct Change {
        qint64 Item = 0;
        Kind How = Kind::Add;
    };

    /// Raises RuntimeError 75 when nothing can be written there, 3343 in a library that can't note such changes.
    explicit PageChanges(Library& library);
    /// Without PutInPlace nothing was changed.
    ~PageChanges();
    PageChanges(const PageChanges&) = delete;
    PageChanges& operator=(const PageChanges&) = delete;

    /// Where the new page of an item is to be made.
    QString PageFile(qint64 item);
    /// Where the files of its folder are; not made. Ends in a separator.
    QString PageFolder(qint64 item) const;
    /// The folder in which all these lie; ends in a separator.
    QString Folder() const;
    /// The items for which a page is expected.
    const std::set<qint64>& Items() const { return m_made; }
    /// Lets the addresses of items in all pages that were made be those of their new numbers. Raises RuntimeError 75.
    void RenumberItems(const NewItemNumber& newNumber);
    enum class Flush { Now, Later };
    /// Inside the transaction that writes the row: what was made of the item counts with that transaction, once it is
    /// flushed. Of many changes the last one flushes them all, while @p work hears that it goes on. Raises RuntimeError
    /// 75 when it can't be written.
    void Bind(qint64 item, Kind kind, Flush flush = Flush::Now, Work& work = NoWork());
    /// The same for all of Items().
    void BindAll(Kind kind, Work& work = NoWork());
    /// The transaction is committed. Raises RuntimeError 75 when a page has to wait for the next opening of the
    /// library, with all others in their places.
    void PutInPlace();

private:
    Library& m_library;
    QString m_root; ///< the folder of pages; ends in a separator, as m_folder
    QString m_mark; ///< which the library knows of each item once its change counts
    QString m_folder;
    FileLock m_lock; ///< on m_folder
    std::set<qint64> m_made;
    std::vector<Change> m_bound;
};

/// What another process has committed of an item's page and not put in place yet is put there, or waited for. To be
/// called before the page is read to be changed. Raises RuntimeError 75 when it can't be.
void SettlePage(Library& library, qint64 item);

/// Whether the page of an item is on its way to its place.
bool IsPagePending(Library& library, qint64 item);

/// Whether @p entry, of the folder of pages, is a folder with changes that do not count yet. Raises RuntimeError 75
/// when that can't be read.
bool IsOfUnboundChanges(Database& library, const QString& entry);

/// Completes the changes of dead processes that were committed, and forgets the others. Those under way are left alone.
void FinishPageChanges(Library& library);

/// The item is deleted: nothing is known of changes of its page any more.
void ForgetPageChanges(Library& library, qint64 item);

} // namespace qb
