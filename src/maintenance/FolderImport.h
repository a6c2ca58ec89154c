#pragma once

#include "platform/system/Hook.h"
#include "platform/system/TextEncoding.h"
#include "platform/system/Work.h"
#include "store/Library.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace qb {

struct FolderImportResult;

struct FolderImportOptions {
    qint64 Parent = 0; ///< the item under which the folder is put; 0: the root
    QStringList Globs; ///< patterns of file names; empty: all files
    FallbackEncoding Fallback = FallbackEncoding::None;
    /// An item names the language that its file's name or first line tells, where that isn't the library's.
    bool NamesLanguages = true;
    /// Told what was imported before it counts. What it raises takes everything back.
    Hook<void(const FolderImportResult&)> BeforeCommit{};
};

/// A file or folder that could not be taken in, and why.
struct SkippedFile {
    QString Path;
    QString Reason;
};

struct FolderImportResult {
    qint64 RootItem = 0; ///< the item made for the folder itself
    int Folders = 0;
    int Files = 0;
    std::vector<SkippedFile> Skipped;
};

/// Takes a folder in: the folder and the folders in it become items, the files in it items with
/// their text as code. With Globs, only folders on the way to a matching file. Links to folders
/// are not followed. What is no text or can't be read is skipped and named. One transaction: on an error,
/// which is raised, the library is as it was; to be cancelled is one too. @p work counts files.
FolderImportResult ImportFolder(Library& library, const QString& folder, const FolderImportOptions& options,
                                Work& work = NoWork());

} // namespace qb
