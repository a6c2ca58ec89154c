#include "support/ui/frmInfo.h"

#include "platform/system/Prompts.h"

#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

frmInfo::frmInfo(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_message(new QLabel)
{
    constexpr int Margin = 24;
    setObjectName(u"frmInfo"_s);
    setWindowTitle(ApplicationTitle);
    m_message->setObjectName(u"lblMessage"_s);
    m_message->setTextFormat(Qt::PlainText);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->addWidget(m_message);
}

void frmInfo::InformUser(const QString& text)
{
    m_message->setText(text);
    show();
    // The work that it speaks of begins now and leaves no time to draw.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace qb
