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

/// Takes a language in place of the one of the same name that the library has: its marks, words and
/// rules. Words of the library that the new one does not know stay, and so do the colours. All or
/// nothing.
void TakeLanguage(Database& database, const LanguageDefinition& language);

} // namespace qb
