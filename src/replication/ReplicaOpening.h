#pragma once

#include "maintenance/LibraryRestore.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace qb {

/// The libraries among those @p known, and beside the given files, that have this identity.
QStringList LibrariesOf(const QString& identity, const QStringList& known, const QStringList& besides);

/// Unpacks a transfer file to the library @p target, with its files and pages; as RestoreLibrary else, with its errors.
/// Nothing of the file is believed before it has been looked at. Where the same child is open already, among the
/// libraries that are @p known or beside both files, @p mayOpenAgain is asked, which gets its path; 3204 when it says
/// no: two that pass for one child take each other's changes from the mother.
RestoreResult OpenReplica(const QString& transferFile, const QString& target, RestoreOver over,
                          const QStringList& known, const std::function<bool(const QString& other)>& mayOpenAgain,
                          Work& work = NoWork());

/// What is asked about a child that is open already as @p other.
QString OpenAgainQuestion(const QString& other);

} // namespace qb
