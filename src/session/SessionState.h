#pragma once

#include "config/CSettings.h"
#include "panels/LinkMode.h"
#include "session/CHistory.h"
#include "store/CCodeItem.h"
#include "store/Library.h"

#include <QFileInfo>
#include <QString>
#include <memory>
#include <vector>

namespace qb {

/// A library of the list.
struct LibraryEntry {
    QString Path;
    QString Alias;
};

/// What the session holds; its collaborators share it.
struct SessionState {
    /// A library is open that can only be read.
    bool IsReadOnly() const { return CurrentDatabase && CurrentDatabase->IsReadOnly(); }
    /// A library is open, and its file is there to be written to.
    bool MayWrite() const { return CurrentDatabase && !IsReadOnly() && !FileHasGone(); }
    /// The file of the open library is not where it was opened.
    bool FileHasGone() const { return CurrentDatabase && !QFileInfo::exists(CurrentDatabase->Name()); }

    // What the open library says; nothing where none is open.
    QString CurrentFilesFolder() const { return CurrentDatabase ? CurrentDatabase->FilesFolder() : QString(); }
    QString CurrentHTMLFolder() const { return CurrentDatabase ? CurrentDatabase->HTMLFolder() : QString(); }
    bool IsChildReplica() const { return CurrentDatabase && CurrentDatabase->IsChildReplica(); }
    bool IsMotherReplica() const { return CurrentDatabase && CurrentDatabase->IsMotherReplica(); }
    Date LastExportedDate() const { return CurrentDatabase ? CurrentDatabase->LastExportedDate() : Date(); }

    std::unique_ptr<Library> CurrentDatabase; ///< null when no library is open
    QString CurrentDatabasePath;              ///< empty when none is known
    LinkMode Mode = LinkMode::None;           ///< what the next click in the tree is for
    QString CurrentItemKey;                   ///< of the item shown; empty after a refill
    std::unique_ptr<CCodeItem> oCodeItem;
    std::unique_ptr<CSettings> moSettings;
    std::unique_ptr<CHistory> moHistory;
    std::vector<LibraryEntry> DatabaseList;
};

} // namespace qb
