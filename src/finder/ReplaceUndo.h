#pragma once

#include "find/ReplaceText.h"

#include <QStringList>
#include <vector>

namespace qb {

/// Makes the changes of replacements, and takes each replacement back as a whole, the last one first.
class ReplaceUndo {
public:
    /// Makes changes in one transaction and remembers the texts that were there. Raises what MakeChanges raises, with
    /// the library as it was.
    void Replace(Library& library, const std::vector<ReplaceChange>& changes);

    bool CanUndo() const { return !m_replaced.empty(); }
    /// What came of it.
    struct Outcome {
        size_t Restored = 0;  ///< texts that are as they were before
        QStringList Kept;     ///< what is not, a sentence each
        QString Text() const; ///< all of it, for the user
    };
    /// Puts back the texts that still are what the last replacement has made of them, in one transaction. A text that
    /// was changed since stays as it is, and so does an item that may not be changed any more. Raises an error, with
    /// the library as it was, when it can't be written.
    Outcome Undo(Library& library);
    /// Another library is open.
    void Forget() { m_replaced.clear(); }

private:
    struct Text {
        qint64 Item = 0;
        FindField Field = FindField::Title;
        QString Before; ///< as stored
        QString After;
    };

    std::vector<std::vector<Text>> m_replaced;
};

} // namespace qb
