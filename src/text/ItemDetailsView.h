#pragma once

namespace qb {

class CCodeItem;
class Database;

/// What the session needs of the panel that shows the current item.
class ItemDetailsView {
public:
    virtual ~ItemDetailsView() = default;

    /// Shows an item; null shows the welcome page. @p database is null when no library is open.
    virtual void Initialise(Database* database, CCodeItem* item) = 0;
    /// The tree is being replaced: what is shown belongs to no node any more.
    virtual void TreeReplaced() = 0;
    /// The item shown next can't be changed.
    virtual void SetLocked(bool locked) = 0;

    // Which tabs have content
    virtual void SetCodeEnabled(bool hasContent) = 0;
    virtual void SetNotesEnabled(bool hasContent) = 0;
    virtual void SetUsageEnabled(bool hasContent) = 0;
    virtual void SetFilesEnabled(bool hasContent) = 0;
    virtual void SetLinksEnabled(bool hasContent) = 0;
};

} // namespace qb
