#pragma once

#include <QString>

namespace qb {

/// Where a print goes: to a PDF file, or to a printer.
struct PrintTarget {
    QString File;    ///< empty: to a printer
    QString Printer; ///< its name; empty: the one that prints when none is named
};

/// What a user has named: a file is known by its ending ".pdf", or by a folder before it.
PrintTarget PrintTargetNamed(const QString& name);

/// Raises RuntimeError 75, saying that nothing was printed, when no file can be made there: a folder, a device or
/// whatever else is no ordinary file stands under that name, or its folder is missing or can't be written to.
void RequirePrintableFile(const QString& file);

} // namespace qb
