#pragma once

#include "store/Library.h"

#include <QString>

namespace qb {

/// What a library is in replication.
enum class ReplicaType { None = 0, Child = 1, Mother = 2 };

/// What the info page tells of the library.
struct LibraryFacts {
    ReplicaType Type = ReplicaType::None;
    Date LastSynchronized;
    int Children = 0;
    qint64 Size = 0; ///< of its file, in bytes
    Date LastBackedUp;
};

/// What the library itself tells: all but its last backup, which the settings know. One that is both is a mother.
LibraryFacts ReadLibraryFacts(Library& library);

QString CaptionOf(ReplicaType type);
QString ToolTipOf(ReplicaType type);
/// A day in the user's short form, or "Never".
QString DayOrNever(Date date);
/// The size of a file in kB.
QString SizeText(qint64 bytes);

} // namespace qb
