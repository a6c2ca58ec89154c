#pragma once

#include "platform/system/Work.h"
#include "store/Library.h"

#include <QString>
#include <QStringList>

namespace qb {

struct BranchExportResult {
    QString File; ///< the export, or its first volume
    int Items = 0;
    int Files = 0;
    int Pages = 0;       ///< files of web pages
    QStringList Missing; ///< stored files that are not where they should be, by title; they travel as empty ones
};

/// Writes an item and everything below it, with stored files and web pages, into one file; with @p item 0 the whole
/// library. It appears when it is complete, over a file that is there. @p work counts parts of a thousand. Raises an
/// error with @p file as it was; 3059 when it was cancelled.
BranchExportResult ExportItems(Library& library, qint64 item, const QString& file, Work& work = NoWork());

/// How many items a branch has, its own item among them; the root, as item 0, is none.
int CountBranchItems(Library& library, qint64 item);

} // namespace qb
