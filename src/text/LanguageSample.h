#pragma once

#include "store/LanguageDefinition.h"

namespace qb {

/// A few lines in a language, to be shown in its colours: those that its definition brings along,
/// else some that are made of its marks and words.
QString SampleOf(const LanguageDefinition& language);

/// A definition's rules with the first lines of @p text as its sample.
QString WithSample(const QString& rules, const QString& text);

} // namespace qb
