#include "support/ui/frmError.h"

#include "platform/system/Prompts.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

namespace qb {

using namespace Qt::StringLiterals;

frmError::frmError(QWidget* parent) : QDialog(parent), m_message(new QLabel)
{
    constexpr int IconSize = 48;
    constexpr int TextWidth = 420;
    setObjectName(u"frmError"_s);
    setWindowTitle(ApplicationTitle + u" Error"_s);
    auto* icon = new QLabel;
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxCritical).pixmap(IconSize));
    m_message->setObjectName(u"lblMessage"_s);
    m_message->setWordWrap(true);
    m_message->setMinimumWidth(TextWidth);
    m_message->setTextFormat(Qt::PlainText);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* question = new QLabel(u"Do you wish to report this bug to Brindleton Software?"_s);
    auto* buttons = new QDialogButtonBox;
    QPushButton* ok = buttons->addButton(QDialogButtonBox::Ok);
    ok->setObjectName(u"cmdOK"_s);
    ok->setDefault(true);
    QPushButton* report = buttons->addButton(u"&Report..."_s, QDialogButtonBox::ActionRole);
    report->setObjectName(u"cmdReport"_s);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(report, &QPushButton::clicked, this, [this] {
        m_reportTheBug = true;
        accept();
    });

    auto* layout = new QGridLayout(this);
    layout->addWidget(icon, 0, 0, Qt::AlignTop);
    layout->addWidget(m_message, 0, 1);
    layout->addWidget(question, 1, 1);
    layout->addWidget(buttons, 2, 0, 1, 2);
    layout->setColumnStretch(1, 1);
    layout->setSizeConstraint(QLayout::SetFixedSize); // the dialog grows with its message
}

void frmError::SetMessage(const QString& message)
{
    m_message->setText(message);
}

} // namespace qb
