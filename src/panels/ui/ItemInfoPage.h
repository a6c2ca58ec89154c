#pragma once

#include "panels/ItemInfo.h"
#include "panels/LibraryFacts.h"
#include "panels/ui/LinkNotes.h"

#include <QScrollArea>

class QGridLayout;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QToolButton;

namespace qb {

class RatingStars;

/// The info page: status, rating, dates, info and links of an item, and facts on the library. Its blocks stand side
/// by side where there is room, and below each other where there is none.
class ItemInfoPage : public QScrollArea {
    Q_OBJECT

public:
    /// @p info outlives the page.
    explicit ItemInfoPage(ItemInfo& info);

    /// Another item is shown, or what it says of itself is another.
    void ShowItem();
    /// The item has another status.
    void ShowStatus(qint32 status);
    /// Whether the blocks of the item are there to be used.
    void EnableItem(bool enabled);
    void ShowFacts(const LibraryFacts& facts, bool hasLibrary);
    LinkNotes* Links() const { return m_links; }

Q_SIGNALS:
    /// The children of the library are to be listed.
    void ChildrenAsked();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* MakeItemBlock();
    QWidget* MakeStatus();
    QWidget* MakeInfoBlock();
    QWidget* MakeLibraryBlock();
    void Arrange();
    void ShowText(const QString& info);

    ItemInfo& m_info;
    QWidget* picInfo;
    QGridLayout* m_grid;
    QList<QWidget*> m_blocks; ///< in the order in which they stand
    int m_arrangement = -1;
    QLabel* imgOrigin = nullptr;
    QToolButton* cmdOrigin = nullptr;
    QMenu* m_origins = nullptr;
    RatingStars* m_rating = nullptr;
    QLabel* m_created = nullptr;
    QLabel* m_changed = nullptr;
    QPlainTextEdit* txtInfo = nullptr;
    LinkNotes* m_links = nullptr;
    QLabel* m_type = nullptr;
    QLabel* m_synchronized = nullptr;
    QLabel* m_children = nullptr;
    QToolButton* cmdChildren = nullptr;
    QLabel* m_size = nullptr;
    QLabel* m_backedUp = nullptr;
    bool m_showing = false; ///< the info is shown from here
};

} // namespace qb
