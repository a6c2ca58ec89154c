#pragma once

#include <QString>

namespace qb {

/// The file of default pages in the program's folder, from which new libraries get theirs.
inline const QString DefaultPagesFile = QStringLiteral("HDefault.qhd");

/// Writes the two default pages of a folder of web pages with their files into one file, over one that is there. Raises
/// RuntimeError 3024 when a page is missing, 75 when something can't be read or written; @p file is as it was then.
void WriteDefaultPages(const QString& folder, const QString& file);

/// Makes those default pages, with their files, that a folder of web pages lacks, all or none; what is there is left
/// alone. Raises RuntimeError 3049 for a file that is cut, or holds something else, 75 when they can't be written.
void ReadDefaultPages(const QString& file, const QString& folder);

} // namespace qb
