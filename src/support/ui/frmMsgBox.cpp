#include "support/ui/frmMsgBox.h"

#include "platform/system/Paths.h"
#include "platform/system/Shell.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

frmMsgBox::frmMsgBox(QWidget* parent) : QDialog(parent), m_message(new QLabel)
{
    setObjectName(u"frmMsgBox"_s);
    setWindowTitle(u"Operation Successful"_s);
    m_message->setObjectName(u"lblMessage"_s);
    m_message->setTextFormat(Qt::PlainText);
    m_message->setWordWrap(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdOK"_s);
    QPushButton* takeMeThere = buttons->addButton(u"&Take me there..."_s, QDialogButtonBox::ActionRole);
    takeMeThere->setObjectName(u"cmdTakeMeThere"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(takeMeThere, &QPushButton::clicked, this, [this] {
        OpenTarget(m_folder);
        accept();
    });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_message);
    layout->addWidget(buttons);
}

void frmMsgBox::SetMessage(const QString& message)
{
    m_message->setText(message);
}

void frmMsgBox::SetFilePath(const QString& path)
{
    m_folder = fnExtractPathOrFileName(path, PathPart::Folder);
}

} // namespace qb
