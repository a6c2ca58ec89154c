#pragma once

#include "platform/dao/Database.h"
#include "platform/system/Work.h"

#include <QString>

namespace qb {

/// What a synchronization file says of itself.
struct SynchroFacts {
    QString Identity; ///< `DBID` of the child
    Date LastSynchronized;
    Date LastExported;
};

/// Makes a copy of a synchronization file's database in an empty folder and returns its path. A packed file is
/// unpacked, one that lies there unpacked copied. Raises RuntimeError 75 for what is neither, or incomplete, 3024 when
/// there is none, 18 when it was cancelled.
QString UnpackSynchroFile(const QString& file, const QString& folder, Work& work);

/// Raises RuntimeError 3343 for a database that is no synchronization file, or not only that: a stranger may have made
/// it. Nothing of it is believed before: its tables have the columns that they should have and nothing runs by itself,
/// no record is in it twice, and no name leaves its folder.
void RefuseWhatIsNoSynchroFile(Database& database);

/// Of a database that has passed RefuseWhatIsNoSynchroFile.
SynchroFacts FactsOf(Database& database, const QString& schema = MainSchema);

} // namespace qb
