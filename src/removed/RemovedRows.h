#pragma once

#include "platform/dao/Database.h"
#include "platform/dao/Value.h"

#include <QString>

namespace qb {

/// Rows of items whose versions are about to go: of the library, or of a file that is attached to its connection. In
/// conditions and expressions a row goes by the name r.
struct RemovedRows {
    QString Where;     ///< a condition, as "r.ID IN (SELECT ...)"
    Values Parameters; ///< of it
    QString Schema = MainSchema;
    QString Items = QStringLiteral("Items");
    QString Files = QStringLiteral("Files"); ///< whose CodeID is the row's ID; empty: without files
    QString Pages = QStringLiteral("HTMLFiles");
    enum class Contents {
        InFolders, ///< those of the library
        InColumns, ///< `File` of both tables; what is Null there is noted as missing
    };
    Contents Lie = Contents::InFolders;
    /// Whose ItemID and LinkItemID are such rows' IDs; empty: without links.
    QString Links = QStringLiteral("ItemLinks");
    // What the library calls the item, and the item above it. 0 or less: it does not know it.
    QString ItemId = QStringLiteral("r.ID");
    QString ParentId = QStringLiteral("r.ParentID");

    /// Items of the library, whole: with files, pages, links and bookmarks.
    static RemovedRows OfLibrary(const QString& where, const Values& parameters = {});
    /// Rows of a file that is attached, or the temporary tables of the library (@p prefix "Temp"): with what is in
    /// their columns, without links, whose numbers are not the library's.
    static RemovedRows InColumns(const QString& schema, const QString& where, const Values& parameters = {},
                                 const QString& prefix = {});
};

} // namespace qb
