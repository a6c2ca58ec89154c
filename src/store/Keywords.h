#pragma once

#include "platform/dao/Recordset.h"

#include <QStringList>

namespace qb {

/// Adds words to the rows of `Keywords`, coloured if @p colouredText reads as True. Words that
/// stand there already are left out and shown to the user in the end. Raises an error for a word
/// that is refused otherwise.
void SetKeywords(Recordset& keywords, const QStringList& words, const QString& colouredText);

} // namespace qb
