#pragma once

#include "platform/dao/Database.h"
#include "store/LanguageDefinition.h"

namespace qb {

/// The whole language of a library: name, marks, colours, words and rules.
LanguageDefinition LanguageOfLibrary(Database& database);

/// The rules of a library's language; empty where it has none.
QString RulesOfLibrary(Database& database);

/// Stores the rules of a library's language; empty ones go. The table for them is made when there
/// are any for the first time.
void StoreRulesOfLibrary(Database& database, const QString& rules);

} // namespace qb
