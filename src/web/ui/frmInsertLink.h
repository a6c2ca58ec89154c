#pragma once

#include "web/PageComponents.h"

#include <QDialog>
#include <functional>

class QLabel;
class QLineEdit;
class QListWidget;

namespace qb {

/// The items that a link can lead to; asked for when the user wants one.
using ItemSource = std::function<std::vector<LinkableItem>()>;

/// Asks for a link: its address, which may be that of an item of the library, and the texts.
class frmInsertLink : public QDialog {
    Q_OBJECT

public:
    frmInsertLink(QWidget* parent, const PageLink& preset, ItemSource items);

    PageLink Link() const;

private:
    QLineEdit* AddField(const char* name, const QString& caption, const QString& text);
    void MakeItems();
    void ShowItems(bool shown);
    void FillItems(const QString& text);
    void TakeItem();

    ItemSource m_source;
    std::vector<LinkableItem> m_items;
    QLineEdit* txtAddress;
    QLineEdit* txtText;
    QLineEdit* txtBefore;
    QLineEdit* txtBehind;
    QLineEdit* txtItem;
    QListWidget* lstItems;
    QWidget* m_itemPart;
    QString m_takenTitle; ///< of the item that was taken last
};

} // namespace qb
