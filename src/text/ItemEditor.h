#pragma once

#include "store/CCodeItem.h"
#include "text/CTextFormat.h"
#include "text/ItemDetailsView.h"
#include "text/ItemTextBox.h"
#include "text/TextRecovery.h"

#include <QPointer>
#include <array>
#include <vector>

namespace qb {

/// The texts of an item that are edited.
enum class ItemText : size_t { Code, Notes, Usage };

/// What stands around the texts of an item, as their editor needs it.
class ItemEditorView {
public:
    virtual ~ItemEditorView() = default;

    /// Shows what there is of the item beside its texts.
    virtual void ShowFacts(CCodeItem& item) = 0;
    /// The links of the item are other ones.
    virtual void ShowLinks() = 0;
    virtual void ShowTabEnabled(DetailsTab tab, bool hasContent) = 0;
    /// The tab that is shown; nothing while no item is.
    virtual std::optional<DetailsTab> CurrentView() const = 0;
    /// Goes to the tab that TabToShow names.
    virtual void DisplayTabWithContent() = 0;
    /// What a save is at.
    virtual void ShowStage(const QString& stage) = 0;
    /// Saves what was typed of a stored file. False when it could not be written.
    virtual bool SaveFileDescChanges(bool mayAsk) = 0;
};

/// Edits the texts of the current item in three boxes: knows what was changed since the last save and what is
/// painted, says when a text is painted and by which language, saves the item, and keeps what was typed where
/// a crash does not reach it. Knows no widget.
class ItemEditor : public QObject {
    Q_OBJECT

public:
    /// A box for each ItemText, in that order. The boxes tell BoxChanged of every change.
    using Boxes = std::array<ItemTextBox*, 3>;
    ItemEditor(CTextFormat& formatter, const Boxes& boxes, ItemEditorView& view);

    // The item comes and goes

    /// Shows the texts of an item; null: there is none any more, and nothing unsaved.
    void Initialise(Library* library, CCodeItem* item);
    /// What is shown belongs to no item any more.
    void TreeReplaced();
    /// Neither the item nor its library is held any more.
    void Terminate();
    CCodeItem* Item() const { return m_item; }
    /// The texts can't be changed. Those of an item with one that is too large for the window can't in any case.
    void SetLocked(bool locked);
    bool Locked() const { return m_locked || IsTooLarge(); }
    /// A text of the item is shown by its begin only.
    bool IsTooLarge() const;
    /// A change of a box is the user's now, not one of the editor's own.
    bool TakesChanges() const { return m_userChange; }
    /// Runs what changes the looks of the boxes and is no change of the user's.
    void Unnoticed(const std::function<void()>& change);

    ItemTextBox& Box(ItemText text) const { return *m_texts[size_t(text)].Box; }
    CTextFormat& Formatter() const { return mFT; }
    /// Which of code and usage is on the tab that is shown; nothing on any other.
    std::optional<ItemText> ShownCode() const;

    // Tabs

    void SetTabEnabled(DetailsTab tab, bool hasContent);
    bool TabEnabled(DetailsTab tab) const { return m_hasContent[size_t(tab)]; }
    /// The tab to show: @p current if it has content, or the first that has; @p current where none has.
    DetailsTab TabToShow(DetailsTab current) const;

    // Changes and saving

    /// A box holds another text, or another look.
    void BoxChanged(ItemText text);
    bool Changed(ItemText text) const { return m_texts[size_t(text)].Changed; }
    void ResetChangedBooleans();
    /// As ItemDetailsView has them.
    bool SaveItem(bool keep = false);
    bool SetItemChanged(bool automatic);

    // Colouring

    /// A library was opened: its colours and keywords are used from now on.
    void FormatingInitialize(Library& library);
    /// Colours a copy of the text of "Code" or "Usage", which is put back with @p saveBack. Returns
    /// its RTF; empty for an empty text.
    QString fnColorize(const QString& tab, bool saveBack);
    /// The box already holds the painted text.
    void SetColorized(ItemText text, bool colorized) { m_texts[size_t(text)].Colorized = colorized; }
    /// Colours the text of the visible tab.
    void ColorizeVisible();
    /// Colours both texts of the item that has just been opened, which changes it.
    void ColorizeItem();
    /// Whether there is a text on the visible tab that is not shown in colour.
    bool CanColorize() const;
    /// The name of the language that the item's code and usage are written in; empty: the library's.
    QString ItemLanguage() const { return m_item ? m_itemLanguage : QString(); }
    /// Changes it, which is a change of the item.
    void SetItemLanguage(const QString& name);

    // Texts that were not saved before the program ended

    /// Shows them, as if they were typed. False when the item is not the current one, or is locked.
    bool ShowUnsaved(const UnsavedTexts& unsaved);
    /// What was typed and is not saved; nothing where there is nothing.
    std::optional<UnsavedTexts> Unsaved() const;
    /// The info of the item was typed, wherever it is shown.
    void InfoTyped();
    /// Writes at once what was typed and not saved; the program may end any moment.
    void KeepUnsavedTexts() { m_recovery.Keep(); }

    /// As ItemDetailsView has them.
    std::function<void(const QString& id)> KeepingDeletedRecord;
    std::function<void(const QString& id, const QString& title)> TitleTaken;

Q_SIGNALS:
    /// The item was written.
    void Saved();
    /// The text of a tab was changed by the user.
    void TextChanged(qb::DetailsTab tab);
    void ColorizeStateChanged();
    void ItemLanguageChanged();

private:
    struct TextState {
        ItemTextBox* Box = nullptr;
        bool Changed = false;   ///< edited since the last save
        bool Colorized = false; ///< the box already holds the painted text
        bool Painted = false;   ///< what is shown is in colour, as it was stored or painted since
        bool TooLarge = false;  ///< only its begin is shown, and nothing of the box is ever stored
    };

    TextState& State(ItemText text) { return m_texts[size_t(text)]; }
    QString StoredText(ItemText text) const;
    void ShowText(ItemText text);
    bool Holds(ItemText text, const QString& rtf);
    void ShowLocks();
    void ShowCode(ItemText text);
    void ShowByLanguage(ItemText text);
    void ConnectColours(ItemTextBox& box);
    void ShowTaken(const std::vector<size_t>& columns);
    void StoreText(ItemText text);
    bool StoreAndCommit(bool keep);
    RichText Painted(const ItemTextBox& box);
    void PutBack(ItemTextBox& box, const RichText& painted);

    CTextFormat& mFT;
    ItemEditorView& m_view;
    QPointer<CCodeItem> m_item;
    Library* m_library = nullptr; ///< that it lies in
    std::array<TextState, 3> m_texts;
    std::array<bool, 6> m_hasContent{}; ///< by the number of the tab
    TextRecovery m_recovery;
    QString m_shownKey;        ///< of the item whose texts the boxes hold; empty: of none
    Date m_shownState;         ///< LastChanged of the row that is shown
    QString m_itemLanguage;    ///< of its code and usage; empty: the library's
    bool m_userChange = false; ///< a change of a box is the user's; not while an item is loaded
    bool m_locked = false;
};

} // namespace qb
