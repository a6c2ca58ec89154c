#pragma once

#include "store/CLinks.h"

#include <QPointer>
#include <QWidget>

class QAction;
class QLabel;
class QPlainTextEdit;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;

namespace qb {

class CCodeItem;

/// The links that lead from an item, and the description of the one that is selected, to be typed.
class LinkNotes : public QWidget {
    Q_OBJECT

public:
    explicit LinkNotes(QWidget* parent = nullptr);

    /// Shows the links of an item as they stand now; of the item that is shown already the selected link
    /// stays selected. Null shows none.
    void ShowLinks(CCodeItem* item);
    void SetLocked(bool locked);
    /// A link of the item was made, and is selected, so that it can be described at once.
    void AddNewLinkToList(const CLink& link);
    /// A link of the item leads another way.
    void UpdateItemLinkInList(const CLink& link);

Q_SIGNALS:
    /// The linked item is to be shown.
    void LinkFollowed(qint64 item);
    /// The link of this key is to be removed.
    void LinkRemoveAsked(const QString& key);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MakeActions();
    void FillList();
    QTreeWidgetItem* RowOf(const QString& key) const;
    static void ShowLink(QTreeWidgetItem& row, const CLink& link);
    void ShowNote();
    void NoteTyped();
    void ShowActions();
    QString SelectedKey() const;

    QPointer<CCodeItem> m_item;
    QLabel* m_caption;
    QSplitter* m_splitter;
    QTreeWidget* lvLinks;
    QPlainTextEdit* txtLinkNote;
    QAction* m_goto = nullptr;
    QAction* m_remove = nullptr;
    bool m_showing = false; ///< the note is shown from here
    bool m_locked = false;
};

} // namespace qb
