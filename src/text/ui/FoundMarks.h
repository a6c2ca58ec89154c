#pragma once

#include "find/FindMatcher.h"
#include "text/ui/UserTextBox.h"

#include <QTimer>
#include <functional>
#include <optional>

namespace qb {

/// The places of a find over the library in the texts that are shown: marks all of them, and goes from one to the
/// next. They are looked for in the text as it stands in the box, so that none is stale.
class FoundMarks {
public:
    /// @p box gives the box that is shown, or null.
    explicit FoundMarks(std::function<UserTextBox*()> box);

    /// What is marked from now on; null: nothing.
    void SetMatcher(const FindMatcher* matcher);
    /// Another text is shown.
    void Refresh();
    /// The text was changed; done once the typing pauses.
    void RefreshSoon();
    /// Selects the next place in the box, or, not @p forward, the one before: from the caret, or from the edge of the
    /// text. False when there is none.
    bool GoTo(const FindMatcher& matcher, bool forward, bool fromCaret);
    /// Selects a place by its number among those of the text, from 0; the last one where there are fewer.
    bool GoToNumber(const FindMatcher& matcher, qsizetype number);

private:
    std::function<UserTextBox*()> m_box;
    std::optional<FindMatcher> m_matcher;
    UserTextBox* m_marked = nullptr; ///< the box with marks in it
    QTimer m_refresh;
};

} // namespace qb
