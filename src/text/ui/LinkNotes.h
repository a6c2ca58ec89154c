#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QTreeWidget;

namespace qb {

class CCodeItem;

/// The links that lead from an item, and the description of the one that is selected, to be typed.
class LinkNotes : public QWidget {
    Q_OBJECT

public:
    explicit LinkNotes(QWidget* parent = nullptr);

    /// Shows the links of an item as they stand now; of the item that is shown already the selected link
    /// stays selected, or a new one becomes so. Null shows none.
    void ShowLinks(CCodeItem* item);
    void SetLocked(bool locked);

private:
    void FillList();
    void ShowNote();
    void NoteTyped();
    QString SelectedKey() const;

    QPointer<CCodeItem> m_item;
    QLabel* m_caption;
    QTreeWidget* lvLinks;
    QPlainTextEdit* txtLinkNote;
    bool m_showing = false; ///< the note is shown from here
    bool m_locked = false;
};

} // namespace qb
