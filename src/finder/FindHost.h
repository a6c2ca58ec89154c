#pragma once

#include "find/FindMatcher.h"

namespace qb {

/// What the find needs of the window: the item that is shown, its pages, and the places in them.
class FindHost {
public:
    virtual ~FindHost() = default;

    /// The item that is shown; 0: none.
    virtual qint64 CurrentItem() const = 0;
    /// Shows an item. False when it can't be, of which the user has been told: it is gone, or the one that is shown
    /// can't be left.
    virtual bool OpenItem(qint64 item) = 0;
    /// The page of the item that is shown (see DetailsTab); 0: none.
    virtual int CurrentTab() const = 0;
    virtual void ShowTab(int tab) = 0;

    enum class From { Caret, Edge };
    /// Goes to the next place on the page that is shown, or, not @p forward, to the one before: from the caret, or from
    /// the edge of the text. @p keyword is what the matcher looks for. False when there is none.
    virtual bool FindOnPage(const QString& keyword, const FindMatcher& matcher, bool forward, From from) = 0;
    /// Goes to a place of the text on the page that is shown, by its number from 0; to the last one where there are
    /// fewer. A page that has no text is shown as it is.
    virtual void GoToPlace(const FindMatcher& matcher, qsizetype place) = 0;
    /// Selects a stored file of the item that is shown; one that is gone leaves the page as it is.
    virtual void ShowFile(qint64 file) = 0;
    /// Marks all places in the texts that are shown; null: none is marked any more.
    virtual void MarkPlaces(const FindMatcher* matcher) = 0;
};

} // namespace qb
