#pragma once

#include <QStringList>

namespace qb::cli {

/// A command: returns the exit status, 0 or 1, or raises an error.
struct CommandEntry {
    const char* Name;
    const char* Usage; ///< its arguments
    const char* Help;  ///< one line
    int (*Run)(const QStringList& words);
};

// Libraries
int New(const QStringList& words);
int Info(const QStringList& words); // of an item too
int ImportFolderCommand(const QStringList& words);
int Check(const QStringList& words);

// Backups
int Backup(const QStringList& words);
int RestoreCommand(const QStringList& words);
int Verify(const QStringList& words);
int Compact(const QStringList& words);
int UndoSessionCommand(const QStringList& words);
int Backups(const QStringList& words);
int Rotate(const QStringList& words);
int RestoreItem(const QStringList& words);

// Replication
int Replica(const QStringList& words);
int Conflicts(const QStringList& words);

// Items
int Tree(const QStringList& words);
int Show(const QStringList& words);
int Add(const QStringList& words);
int Set(const QStringList& words);
int Move(const QStringList& words);
int Delete(const QStringList& words);
int Keep(const QStringList& words);
int RemoveDeleted(const QStringList& words);

// What was removed
int Removed(const QStringList& words);

// Bookmarks
int Bookmarks(const QStringList& words);
int Bookmark(const QStringList& words);
int BookmarkRemove(const QStringList& words);
// Branches
int Export(const QStringList& words);
int Import(const QStringList& words);
int MailItemCommand(const QStringList& words);

// Printing
int PrintItem(const QStringList& words);

// Find
int Find(const QStringList& words);

// Stored files
int Attach(const QStringList& words);
int Files(const QStringList& words);
int Extract(const QStringList& words);
int Detach(const QStringList& words);
int File(const QStringList& words);

// Web pages
int Page(const QStringList& words);

// Links
int Link(const QStringList& words);
int Links(const QStringList& words);
int Unlink(const QStringList& words);

// Languages and settings
int Language(const QStringList& words);
int Languages(const QStringList& words);
int Settings(const QStringList& words);

// Rich text
int Colorize(const QStringList& words);
int RtfToText(const QStringList& words);

} // namespace qb::cli
