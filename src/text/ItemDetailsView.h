#pragma once

#include <QString>
#include <functional>

namespace qb {

class CCodeItem;
class Library;

/// The tabs of the details panel, by number.
enum class DetailsTab { Code = 1, Notes = 2, Usage = 3, Files = 4, Links = 5 };

/// What the session needs of the panel that shows the current item.
class ItemDetailsView {
public:
    virtual ~ItemDetailsView() = default;

    /// Shows an item; null shows the welcome page. @p library is null when no library is open.
    virtual void Initialise(Library* library, CCodeItem* item) = 0;
    /// The tree is being replaced: what is shown belongs to no node any more.
    virtual void TreeReplaced() = 0;
    /// What is shown can't be changed.
    virtual void SetLocked(bool locked) = 0;
    virtual bool Locked() const = 0;
    /// A library was opened: its colours and keywords are used from now on.
    virtual void FormatingInitialize(Library& library) = 0;

    /// Whether a tab has content.
    virtual void SetTabEnabled(DetailsTab tab, bool hasContent) = 0;
    void SetCodeEnabled(bool hasContent) { SetTabEnabled(DetailsTab::Code, hasContent); }
    void SetNotesEnabled(bool hasContent) { SetTabEnabled(DetailsTab::Notes, hasContent); }
    void SetUsageEnabled(bool hasContent) { SetTabEnabled(DetailsTab::Usage, hasContent); }
    void SetFilesEnabled(bool hasContent) { SetTabEnabled(DetailsTab::Files, hasContent); }
    void SetLinksEnabled(bool hasContent) { SetTabEnabled(DetailsTab::Links, hasContent); }

    /// Brings a tab to the front, empty or not. While the welcome page is shown it stays behind that.
    virtual void SetCurrentView(DetailsTab tab) = 0;
    /// Colours both texts of the item that has just been opened, which changes it.
    virtual void ColorizeItem() = 0;

    /// Writes the edited texts to the item and commits it, if it is changed. With @p keep an item
    /// that waited for removal is one that stays. False when it could not be written: the edits
    /// stay in the boxes and count as changed.
    virtual bool SaveItem(bool keep = false) = 0;
    /// The item is being left: saves it if it is changed. One that waits for removal is kept by
    /// that; unless saving is @p automatic the user is asked about it first. False when it could
    /// not be written.
    virtual bool SetItemChanged(bool automatic) = 0;
    /// Saves the description of the stored file that is selected, if it was edited; unless auto-save
    /// is set for them the user is asked first, when @p mayAsk. False when it could not be written.
    virtual bool SaveFileDescChanges(bool mayAsk = true) = 0;
    /// What was typed in that description is dropped.
    virtual void ForgetFileDescChanges() = 0;
    /// Nothing that was typed counts as a change any more.
    virtual void ResetChangedBooleans() = 0;

    /// Shows an address on the Links tab; pages of the library by their local addresses.
    virtual void Navigate(const QString& address) = 0;

    /// An item that waited for removal was saved, and so kept.
    std::function<void(const QString& id)> KeepingDeletedRecord;
    /// While an item was saved it took the title that another program had given it.
    std::function<void(const QString& id, const QString& title)> TitleTaken;
};

} // namespace qb
