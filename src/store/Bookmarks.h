#pragma once

#include "store/Library.h"

#include <QString>
#include <vector>

namespace qb {

/// A bookmark as lists show it.
struct BookmarkRow {
    qint64 Id = 0;
    qint64 Item = 0;
    QString Title; ///< of the item
    qint64 Group = 0;
    QString Description;
};

/// A group of bookmarks.
struct BookmarkGroup {
    qint64 Id = 0;
    QString Name;
};

/// The bookmarks of items that are there, in the order in which they were made.
std::vector<BookmarkRow> ReadBookmarks(Library& library);
/// The groups, in the order in which they were made.
std::vector<BookmarkGroup> ReadBookmarkGroups(Library& library);

/// The group of a name, whatever the case of its letters; 0 when there is none.
qint64 FindBookmarkGroup(Library& library, const QString& name);

/// The longest name of a group, in characters.
constexpr int LongestGroupName = 50;

/// Adds a group and returns its ID. Raises an error for an empty or too long name, or one that is there.
qint64 AddBookmarkGroup(Library& library, const QString& name);
/// Gives a group another name; the same errors, and one when the group is gone.
void RenameBookmarkGroup(Library& library, qint64 group, const QString& name);
/// Removes a group with its bookmarks.
void RemoveBookmarkGroup(Library& library, qint64 group);

/// A description as a list shows it, in one line.
QString BookmarkInOneLine(QString description);

} // namespace qb
