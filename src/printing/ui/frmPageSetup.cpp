#include "printing/ui/frmPageSetup.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPageSize>
#include <QPushButton>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QPageSize::PageSizeId Papers[] = {QPageSize::A4,     QPageSize::A5,    QPageSize::A3,     QPageSize::B5,
                                            QPageSize::Letter, QPageSize::Legal, QPageSize::Tabloid};

struct MarginRow {
    const char* Name;
    const char* Caption;
    double PrintSetup::*Value;
};
constexpr MarginRow Margins[] = {
    {"txtLeft", "&Left:", &PrintSetup::Left},
    {"txtTop", "&Top:", &PrintSetup::Top},
    {"txtRight", "&Right:", &PrintSetup::Right},
    {"txtBottom", "&Bottom:", &PrintSetup::Bottom},
};

} // namespace

frmPageSetup::frmPageSetup(QWidget* parent, const PrintSetup& setup)
    : QDialog(parent), m_setup(setup), cboPaper(new QComboBox), cboOrientation(new QComboBox), lblRoom(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setObjectName(u"frmPageSetup"_s);
    setWindowTitle(u"Page Setup"_s);
    cboPaper->setObjectName(u"cboPaper"_s);
    cboOrientation->setObjectName(u"cboOrientation"_s);
    lblRoom->setObjectName(u"lblRoom"_s);
    auto* form = new QFormLayout;
    for (const QPageSize::PageSizeId id : Papers)
        cboPaper->addItem(QPageSize::name(id), QPageSize::size(id, QPageSize::Millimeter));
    const QPageSize own(QSizeF(setup.Width, setup.Height), QPageSize::Millimeter, {}, QPageSize::FuzzyMatch);
    int index = cboPaper->findText(own.name());
    if (index < 0) {
        cboPaper->addItem(u"%1 \u00d7 %2 mm"_s.arg(setup.Width).arg(setup.Height), QSizeF(setup.Width, setup.Height));
        index = cboPaper->count() - 1;
    }
    cboPaper->setCurrentIndex(index);
    cboOrientation->addItems({u"Upright"_s, u"Sideways"_s});
    cboOrientation->setCurrentIndex(setup.Landscape ? 1 : 0);
    form->addRow(u"&Paper:"_s, cboPaper);
    form->addRow(u"&Orientation:"_s, cboOrientation);
    for (size_t i = 0; i < std::size(Margins); ++i) {
        constexpr double Most = 100;
        auto* box = m_margins[i] = new QDoubleSpinBox;
        box->setObjectName(QString::fromLatin1(Margins[i].Name));
        box->setRange(0, Most);
        box->setDecimals(0);
        box->setSuffix(u" mm"_s);
        box->setValue(setup.*Margins[i].Value);
        form->addRow(QString::fromLatin1(Margins[i].Caption), box);
        connect(box, &QDoubleSpinBox::valueChanged, this, &frmPageSetup::ShowRoom);
    }
    connect(cboPaper, &QComboBox::currentIndexChanged, this, &frmPageSetup::ShowRoom);
    connect(cboOrientation, &QComboBox::currentIndexChanged, this, &frmPageSetup::ShowRoom);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* all = new QVBoxLayout(this);
    all->addLayout(form);
    all->addWidget(lblRoom);
    all->addWidget(m_buttons);
    ShowRoom();
}

PrintSetup frmPageSetup::Chosen() const
{
    PrintSetup setup = m_setup;
    const QSizeF paper = cboPaper->currentData().toSizeF();
    setup.Width = paper.width();
    setup.Height = paper.height();
    setup.Landscape = cboOrientation->currentIndex() == 1;
    for (size_t i = 0; i < std::size(Margins); ++i)
        setup.*Margins[i].Value = m_margins[i]->value();
    return setup;
}

/// Margins that leave no room can't be chosen.
void frmPageSetup::ShowRoom()
{
    const PrintSetup setup = Chosen();
    const bool hasRoom = setup.HasRoom();
    const QString room = u"Room for text: %1 \u00d7 %2 mm"_s.arg(setup.PageWidth() - setup.Left - setup.Right)
                             .arg(setup.PageHeight() - setup.Top - setup.Bottom);
    lblRoom->setText(hasRoom ? room : u"The margins leave no room for text."_s);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(hasRoom);
}

} // namespace qb
