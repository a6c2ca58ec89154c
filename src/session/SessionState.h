#pragma once

#include "config/CSettings.h"
#include "panels/LinkMode.h"
#include "platform/dao/Database.h"
#include "session/CHistory.h"
#include "store/CCodeItem.h"

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

    std::unique_ptr<Database> CurrentDatabase; ///< null when no library is open
    QString CurrentDatabasePath;               ///< empty when none is known
    LinkMode Mode = LinkMode::None;            ///< what the next click in the tree is for
    QString CurrentItemKey;                    ///< of the item shown; empty after a refill
    std::unique_ptr<CCodeItem> oCodeItem;
    std::unique_ptr<CSettings> moSettings;
    std::unique_ptr<CHistory> moHistory;
    std::vector<LibraryEntry> DatabaseList;
};

} // namespace qb
