#pragma once

#include "conflicts/ConflictFields.h"
#include "conflicts/ConflictFileRows.h"
#include "conflicts/LineComparison.h"

#include <functional>
#include <optional>

namespace qb {

/// When the versions in conflict were last the same, by the last merge of a mother; unset where no one knows.
std::optional<Date> LastCommonMoment(Library& library);

/// Which version has changed what, since both were the same, in a sentence for people. Empty where nothing differs, or
/// where that is all there is to say.
class ConflictOrigin {
public:
    /// Reads it anew at each call, so @p conflict must outlive the object. @p nameOf tells what a version is called.
    ConflictOrigin(CConflict& conflict, std::optional<Date> since, std::function<QString(ConflictSide)> nameOf);

    /// @p base and @p merged are those of the text, where they are known.
    QString OfText(const ConflictText& text, const std::optional<BaseVersion>& base,
                   const std::optional<MergedText>& merged) const;
    QString OfFile(const ConflictFileRow& row) const;
    QString OfPage() const;

private:
    QString Sentence(bool own, bool other, const QString& one, const QString& both) const;

    CConflict& m_conflict;
    std::optional<Date> m_since;
    std::function<QString(ConflictSide)> m_nameOf;
};

} // namespace qb
