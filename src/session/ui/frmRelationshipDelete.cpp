#include "session/ui/frmRelationshipDelete.h"

#include "support/ui/Icons.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

QRadioButton* MakeOption(const QString& name, const QString& text)
{
    auto* option = new QRadioButton(text);
    option->setObjectName(name);
    return option;
}

QLabel* MakeArrow(const QString& name, const QString& icon)
{
    constexpr int Size = 32;
    auto* arrow = new QLabel;
    arrow->setObjectName(name);
    arrow->setPixmap(IconNamed(icon).pixmap(Size));
    return arrow;
}

QLabel* MakeEnd(const QString& text)
{
    auto* end = new QLabel(text);
    constexpr int Margin = 8;
    end->setMargin(Margin);
    end->setFrameShape(QFrame::StyledPanel);
    return end;
}

} // namespace

frmRelationshipDelete::frmRelationshipDelete(QWidget* parent)
    : QDialog(parent), m_leftArrow(MakeArrow(u"picLeftArrow"_s, u"LINK_ARROW_LEFT"_s)),
      m_rightArrow(MakeArrow(u"picRightArrow"_s, u"LINK_ARROW_RIGHT"_s)),
      optComplete(MakeOption(u"optComplete"_s, u"Remove relationship COMPLETELY."_s)),
      optLeft(MakeOption(u"optLeft"_s, u"Remove only LEFT SIDE of the relationship."_s)),
      optRight(MakeOption(u"optRight"_s, u"Remove only RIGHT SIDE of the relationship."_s))
{
    setObjectName(u"frmRelationshipDelete"_s);
    setWindowTitle(u"Item Relationship Deletion"_s);
    auto* text = new QLabel(u"Do you want to delete the complete relationship, or just one side of the link."_s);
    text->setWordWrap(true);
    auto* picture = new QHBoxLayout;
    picture->addStretch();
    picture->addWidget(MakeEnd(u"This item"_s));
    picture->addWidget(m_leftArrow);
    picture->addWidget(m_rightArrow);
    picture->addWidget(MakeEnd(u"Linked item"_s));
    picture->addStretch();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdOK"_s);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addLayout(picture);
    for (QRadioButton* option : {optComplete, optLeft, optRight})
        layout->addWidget(option);
    layout->addWidget(buttons);
    DisplayRelationshipAndOptions(LinkDirection::Both);
}

void frmRelationshipDelete::DisplayRelationshipAndOptions(LinkDirection direction)
{
    const bool both = direction == LinkDirection::Both;
    m_leftArrow->setVisible(both || direction == LinkDirection::Left);
    m_rightArrow->setVisible(both || direction == LinkDirection::Right);
    optLeft->setEnabled(both);
    optRight->setEnabled(both);
    optComplete->setChecked(true);
}

LinkDirection frmRelationshipDelete::Result() const
{
    if (optLeft->isChecked())
        return LinkDirection::Right; // which is what remains
    return optRight->isChecked() ? LinkDirection::Left : LinkDirection::None;
}

} // namespace qb
