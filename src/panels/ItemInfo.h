#pragma once

#include "platform/system/Hook.h"
#include "store/CCodeItem.h"
#include "store/ItemRules.h"
#include "store/ItemStatus.h"

#include <QPointer>
#include <array>
#include <memory>
#include <span>

namespace qb {

/// A status of items as the info page offers it.
struct StatusRow {
    ItemStatus Status;
    const char* Entry;   ///< name of its entry in the menu
    const char* Caption; ///< in the menu, and beside the image
    const char* Image;
    const char* ToolTip;
};
/// In the order of the menu.
std::span<const StatusRow> StatusRows();
/// The row of a stored number; null for one that says nothing.
const StatusRow* RowOfStatus(qint32 status);

constexpr int RatingImageCount = 5;
/// The images of a stored rating, from the left.
std::array<QString, RatingImageCount> RatingImages(qint32 rating);
/// What a click on an image sets; images count from 0.
constexpr qint32 RatingOfImage(int image)
{
    return 2 * image + 2;
}
/// A rating in words.
QString RatingText(qint32 rating);

/// What the info page shows and changes: the current item, or one that it is locked to while others are current.
/// That one has an object of its own here, whose changes are saved when the session saves (SaveKept); so no item
/// is ever changed by two objects at a time.
class ItemInfo : public QObject {
    Q_OBJECT

public:
    // What is current

    /// Another library is open, or, with null, none: ends the lock, and drops what waits here.
    void SetLibrary(Library* library);
    /// Another item is the current one; null: none is. @p fixed: it can't be changed.
    void InitialiseItem(CCodeItem* item, bool fixed = false);

    // What is shown

    /// The item that the page shows; null: none.
    CCodeItem* Item() const { return m_kept ? m_kept.get() : m_current.data(); }
    /// It is the current one, which is saved with its texts.
    bool ShowsCurrent() const { return !m_kept; }
    /// What is shown can be changed.
    bool MayEdit() const;
    /// Why not, as a sentence; empty when it can.
    QString WhyNot() const;

    // The lock

    bool Locked() const { return !m_lockedKey.isEmpty(); }
    /// Locks the page to the current item, which there has to be, or frees it. False when it stays as it was: there
    /// is no item, or what was changed of it is not to be lost.
    bool ToggleLock();
    /// What stands behind the title of the current item.
    QString LockedText() const;
    /// An item has got another title.
    void TitleChanged(qint64 item, const QString& title);
    /// Somebody else may have written to the item that is kept; what waits of it stays.
    void Refresh();

    // Changes. They count as changes of the item, which are written when it is saved.

    void SetStatus(ItemStatus status);
    void SetRating(qint32 rating);
    /// @p text as a text box holds it.
    void SetInfo(const QString& text);
    /// Something of the links was changed from outside.
    void LinksEdited();

    // The item that the page is locked to while another is current

    bool KeptUnsaved() const { return m_kept && m_kept->Unsaved(); }
    /// Writes what was changed of it. False when it could not be written, and waits still.
    bool SaveKept();
    /// Nothing of it is to wait any more: it is written, after a question unless saving is @p automatic. False when
    /// it could not be written and is not to be lost.
    bool LeaveKept(bool automatic);

    /// Whether an item that is left is saved without a question.
    Hook<bool()> AutoSaveOn{true};

Q_SIGNALS:
    /// Another item is shown, or it can be changed where it could not, or the other way round.
    void Shown();
    /// What is shown of the item has changed by its own.
    void Changed();
    void LockChanged();
    /// The info of the current item was typed.
    void InfoTyped();

private:
    bool MayChange() const { return Item() && MayEdit(); }
    void Keep(const QString& key);
    void DropKept();
    void Free();
    bool StoredItemIsThere(const QString& key) const;

    Library* m_library = nullptr;
    QPointer<CCodeItem> m_current;
    bool m_fixed = false; ///< the current item can't be changed
    QString m_lockedKey;  ///< of the item that the page is locked to; empty: none
    QString m_lockedTitle;
    std::unique_ptr<CCodeItem> m_kept; ///< the object of that item while another is current
    Bar m_keptBar = Bar::None;
};

} // namespace qb
