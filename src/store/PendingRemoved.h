#pragma once

#include "platform/dao/Database.h"

#include <QString>

namespace qb {

/// The folder in which a library keeps what was taken away or overwritten in it: beside the library, its name without
/// extension and "_Removed". Ends in a separator.
QString RemovedFolderOf(const QString& libraryPath);

/// An event on its way into that folder: what was removed, complete in a folder of its own until the transaction that
/// removed it is committed.
struct PendingRemoved {
    QString Mark; ///< of the folder that holds it, 32 hexadecimal digits
    QString Name; ///< that its files are to have, without extension
};

// The files of an event: what was removed, as an export of items, and a list that people can read, too.
inline const QString RemovedItemsExtension = QStringLiteral(".qbx");
inline const QString RemovedIndexExtension = QStringLiteral(".json");

/// Where the event is complete: a folder that whoever makes it keeps locked. Ends in a separator.
QString PendingRemovedFolder(const QString& libraryPath, const QString& mark);
/// The files in there have this name and the extensions above.
inline const QString PendingRemovedName = QStringLiteral("event");

/// The first name for an event of that moment and kind that neither a file nor another event on its way has. The stamp
/// at its begin is its own: where events are of the same second, it is a later one's.
QString FreeRemovedName(Database& library, Date moment, const QString& kind);
/// Whether a name is one that FreeRemovedName gives.
bool IsRemovedName(const QString& name);

/// Notes in the library, inside the transaction that removes something, that the event is still to get its name.
void NotePendingRemoved(Database& library, const PendingRemoved& pending);

bool IsRemovedNoted(Database& library, const QString& mark);

/// Gives the files of an event their names and forgets the note, once the transaction is committed. Raises an error
/// when they can't get there; the next opening does it then.
void PlacePendingRemoved(Database& library, const PendingRemoved& pending);

/// At an opening: what a dead process noted gets its names, and what it did not note goes. What a living one is at is
/// left alone. Raises nothing.
void FinishPendingRemoved(Database& library);

} // namespace qb
