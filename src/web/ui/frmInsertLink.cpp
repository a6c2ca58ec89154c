#include "web/ui/frmInsertLink.h"

#include "web/LinkItems.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr size_t MostShown = 200; ///< of the items
constexpr int IdRole = Qt::UserRole;

} // namespace

frmInsertLink::frmInsertLink(QWidget* parent, const PageLink& preset, ItemSource items)
    : QDialog(parent), m_source(std::move(items))
{
    constexpr int Proposed = 520;
    setObjectName(u"frmInsertLink"_s);
    setWindowTitle(u"Insert Link"_s);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(new QFormLayout);
    txtAddress = AddField("txtAddress", u"&Address:"_s, preset.Address);
    txtAddress->setPlaceholderText(u"http://"_s);
    txtText = AddField("txtText", u"&Text of the link:"_s, preset.Text);
    txtText->setPlaceholderText(u"the address"_s);
    txtBefore = AddField("txtBefore", u"Text &before it:"_s, preset.Before);
    txtBehind = AddField("txtBehind", u"Text be&hind it:"_s, preset.Behind);
    MakeItems();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    auto* cmdItem = buttons->addButton(u"Library &Item…"_s, QDialogButtonBox::ActionRole);
    cmdItem->setObjectName(u"cmdItem"_s);
    cmdItem->setAutoDefault(false);
    cmdItem->setCheckable(true);
    cmdItem->setVisible(bool(m_source));
    connect(cmdItem, &QPushButton::toggled, this, &frmInsertLink::ShowItems);
    auto* cmdInsert = buttons->addButton(u"I&nsert"_s, QDialogButtonBox::AcceptRole);
    cmdInsert->setObjectName(u"cmdInsert"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    cmdInsert->setDefault(true); // once it is the dialog's, which looks for one by itself otherwise
    resize(Proposed, sizeHint().height());
}

QLineEdit* frmInsertLink::AddField(const char* name, const QString& caption, const QString& text)
{
    auto* field = new QLineEdit(text);
    field->setObjectName(QString::fromLatin1(name));
    static_cast<QFormLayout*>(layout()->itemAt(0)->layout())->addRow(caption, field);
    return field;
}

void frmInsertLink::MakeItems()
{
    m_itemPart = new QWidget;
    auto* part = new QVBoxLayout(m_itemPart);
    part->setContentsMargins(0, 0, 0, 0);
    txtItem = new QLineEdit;
    txtItem->setObjectName(u"txtItem"_s);
    txtItem->setPlaceholderText(u"Words of the item's title"_s);
    txtItem->setClearButtonEnabled(true);
    lstItems = new QListWidget;
    lstItems->setObjectName(u"lstItems"_s);
    lstItems->setUniformItemSizes(true);
    lstItems->setTextElideMode(Qt::ElideMiddle);
    part->addWidget(txtItem);
    part->addWidget(lstItems);
    m_itemPart->hide();
    static_cast<QVBoxLayout*>(layout())->addWidget(m_itemPart, 1);
    connect(txtItem, &QLineEdit::textChanged, this, &frmInsertLink::FillItems);
    connect(lstItems, &QListWidget::currentRowChanged, this, &frmInsertLink::TakeItem);
}

void frmInsertLink::ShowItems(bool shown)
{
    constexpr int Added = 220;
    if (shown && m_items.empty())
        m_items = m_source();
    m_itemPart->setVisible(shown);
    FillItems(txtItem->text());
    resize(width(), shown ? height() + Added : minimumSizeHint().height());
    if (shown)
        txtItem->setFocus();
}

void frmInsertLink::FillItems(const QString& text)
{
    lstItems->clear();
    for (const LinkableItem& item : MatchingItems(m_items, text, MostShown)) {
        auto* row = new QListWidgetItem(item.Place.isEmpty() ? item.Title : item.Title + u"   —   "_s + item.Place);
        row->setData(IdRole, item.ID);
        row->setData(IdRole + 1, item.Title);
        lstItems->addItem(row);
    }
}

/// The item's title is the link's text, unless the user has typed another.
void frmInsertLink::TakeItem()
{
    const QListWidgetItem* row = lstItems->currentItem();
    if (!row)
        return;
    txtAddress->setText(ItemAddress(row->data(IdRole).toLongLong()));
    if (txtText->text().isEmpty() || txtText->text() == m_takenTitle)
        txtText->setText(row->data(IdRole + 1).toString());
    m_takenTitle = row->data(IdRole + 1).toString();
}

PageLink frmInsertLink::Link() const
{
    const QString address = txtAddress->text().trimmed();
    return {address.isEmpty() ? u"http://"_s : address, txtText->text(), txtBefore->text(), txtBehind->text()};
}

} // namespace qb
