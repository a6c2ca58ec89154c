#pragma once

#include "panels/BookmarkTree.h"

#include <functional>

namespace qb {

/// The bookmarks of the open library: what the list shows, and what its commands do.
class BookmarkList {
public:
    BookmarkList();

    BookmarkTree& Rows() { return m_rows; }
    const BookmarkTree& Rows() const { return m_rows; }

    /// Reads the bookmarks of a library, which must outlive this or its Terminate.
    void Initialise(Library& library);
    void Terminate();
    /// Reads them anew; what can't be read leaves the list as it is, which is reported.
    void Refresh();

    /// Removes one, without a question. False when it is there still, which has been reported.
    bool RemoveBookMark(qint64 bookmark);
    /// Removes all, after a question: all or none.
    void RemoveAllBookmarks();
    /// Puts one under another group.
    void MoveToGroup(qint64 bookmark, qint64 group);
    /// Asks for another name of a group.
    void RenameGroup(qint64 group);
    /// Removes a group with its bookmarks, after a question where it has any.
    void RemoveGroup(qint64 group);

private:
    void Change(const QString& procedure, const std::function<void()>& change);
    int CountIn(qint64 group) const;

    Library* m_library = nullptr;
    BookmarkTree m_rows;
};

} // namespace qb
