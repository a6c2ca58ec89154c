#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Work.h"

#include <QString>
#include <vector>

namespace qb {

/// Something wrong in a library.
struct LibraryFault {
    enum class Kind {
        Damage,
        MissingTable,
        MissingProperties,
        LostParent,
        Cycle,
        MissingFile,
        OtherSize,
        ForeignFolder,
        DamagedText,
        DamagedFile,
        DamagedChecksum
    };
    Kind What;
    QString Table; ///< empty for damage of the file itself
    qint64 Id = 0; ///< of the row, 0 when no row is meant
    QString Text;  ///< a sentence that names it
};

/// The word by which a kind is named in output for machines.
QString FaultName(LibraryFault::Kind kind);

/// Looks through a library: the file's own structure, the tables, items whose parent is missing
/// or that are their own ancestors, and stored files that are gone from the disk or have another size. Changes nothing.
/// @p work counts parts of a thousand. RuntimeError 18 or 3059 when it was cancelled.
std::vector<LibraryFault> CheckLibrary(Database& database, Work& work = NoWork());

/// Raises RuntimeError 3049 for a library whose file is damaged or incomplete: the quick part of that check, for a
/// library that was just made. 3059 when it was cancelled.
void RefuseDamaged(Database& database, Work& work);

} // namespace qb
