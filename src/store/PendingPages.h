#pragma once

#include "platform/system/FileLock.h"
#include "store/Library.h"

#include <QString>
#include <vector>

namespace qb {

/// Pages of items that are deleted together, in one transaction of the caller's: they leave their places, and are
/// gone once the deletion is committed. Otherwise they come back; where the program ends in the middle, at the next
/// opening of the library.
class PageDeletion {
public:
    PageDeletion() = default;
    ~PageDeletion();
    PageDeletion(const PageDeletion&) = delete;
    PageDeletion& operator=(const PageDeletion&) = delete;

    /// Takes an item's page and the folder beside it from their places, if there are any. Raises RuntimeError 75 when
    /// they can't be moved.
    void Delete(const Library& library, qint64 item);
    /// The transaction is committed: the pages are gone.
    void Complete();

private:
    struct Moved {
        QString Place;
        QString Leaving;
    };
    void Move(const QString& place, const QString& leaving);

    QString m_folder;
    QString m_mark;
    FileLock m_lock; ///< once there is a page
    std::vector<Moved> m_moved;
};

/// After a process ended in the middle of its work: gives each item that is there the page that was leaving, arriving
/// or changing, and removes those of items that are not. What is under way is left alone, and all of a library that is
/// open for reading only.
void FinishPendingPages(Library& library);

} // namespace qb
