#pragma once

#include "platform/system/FileLock.h"
#include "store/Library.h"

#include <QString>

namespace qb {

/// The web page of an item that is being added, with its folder: made aside in the folder of pages, named after its
/// row before that is committed, and put in its place afterwards. What a dead process left is finished, or removed, by
/// FinishPendingPages.
class ArrivingPage {
public:
    /// Raises RuntimeError 75 when nothing can be written there.
    explicit ArrivingPage(const Library& library);
    /// Removes what was not put in place.
    ~ArrivingPage();
    ArrivingPage(const ArrivingPage&) = delete;
    ArrivingPage& operator=(const ArrivingPage&) = delete;

    /// Where the page is to be made, as `page.htm`, with its folder `page`; ends in a separator.
    QString Folder() const { return m_folder + QStringLiteral("new/"); }
    enum class Flush { Now, Later };
    /// The page is of this item, if that is committed with a page. Of many pages the last one flushes them all.
    void Bind(qint64 item, Flush flush = Flush::Now);
    /// The row counts now.
    void PutInPlace();

private:
    QString m_root;   ///< the folder of pages; ends in a separator, as m_folder
    QString m_folder; ///< empty once it is in place
    FileLock m_lock;  ///< on m_folder
    qint64 m_item = 0;
};

/// Puts pages in place whose items were committed, and removes those of others, as far as nobody is at work on them.
void FinishArrivingPages(Library& library);

} // namespace qb
