#pragma once

#include "platform/system/Work.h"

#include <QString>

namespace qb {

/// Brings the database of a library to the size that it needs; the new one takes its place once it is whole. Returns
/// the bytes that became free. Raises an error, with the library as it was: 3045 when it is open or somebody is
/// writing, 3059 when it was cancelled.
qint64 CompactLibrary(const QString& library, Work& work = NoWork());

/// Where the library of the session is kept as it was at the start.
QString SessionCopyPath();

/// Removes that copy. One of an earlier session would undo more than this session. Raises RuntimeError 75 when it
/// can't be deleted.
void RemoveSessionCopy();

/// Makes that copy of a library which is not open; the one of an earlier session goes first. Raises
/// what DBEngine::CompactDatabase raises.
void MakeSessionCopy(const QString& library, Work& work = NoWork());

/// Why the copy can't take a library's place: there is none, or it is of another one. Empty when it can.
QString WhyNotUndone(const QString& library);

/// Throws all changes of the database away that were made since the copy; stored files and pages stay as they are.
/// Raises an error, with the library as it was: 3024 with what WhyNotUndone says, 3045 when it is open.
void UndoSession(const QString& library, Work& work = NoWork());

} // namespace qb
