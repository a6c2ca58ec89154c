#include "components/ui/ApplicationTips.h"

#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Clock.h"
#include "support/ui/Icons.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

ApplicationTips::ApplicationTips(QWidget* parent) : m_parent(parent) {}

ApplicationTips::~ApplicationTips()
{
    delete m_window;
}

QStringList ApplicationTips::ReadTips(const QString& file)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return {};
    QStringList tips;
    for (const QString& paragraph : PlainTextFromRtf(QString::fromLatin1(source.readAll())).split(u'\n')) {
        if (!paragraph.trimmed().isEmpty())
            tips << paragraph.trimmed();
    }
    return tips;
}

bool ApplicationTips::Start(const QString& applicationName, const QString& file)
{
    m_tips = ReadTips(file);
    if (m_tips.isEmpty())
        return false;
    MakeWindow(applicationName);
    m_current = qsizetype(Clock::Today().Day().toJulianDay() % m_tips.size());
    ShowTip(0);
    m_window->show();
    return true;
}

void ApplicationTips::MakeWindow(const QString& applicationName)
{
    constexpr int IconSize = 48;
    constexpr int TextWidth = 380;
    constexpr int TextHeight = 90;
    m_window = new QDialog(m_parent);
    m_window->setObjectName(u"frmTips"_s);
    m_window->setAttribute(Qt::WA_DeleteOnClose);
    m_window->setWindowTitle(applicationName + u" - Tip of the Day"_s);
    auto* icon = new QLabel;
    icon->setPixmap(IconNamed(u"quillbase"_s).pixmap(IconSize));
    m_text = new QLabel;
    m_text->setObjectName(u"lblTip"_s);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_text->setMinimumSize(TextWidth, TextHeight);
    auto* startup = new QCheckBox(u"&Show tips on startup"_s);
    startup->setObjectName(u"chkTipsOnStartup"_s);
    startup->setChecked(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton* previous = buttons->addButton(u"&Previous Tip"_s, QDialogButtonBox::ActionRole);
    QPushButton* next = buttons->addButton(u"&Next Tip"_s, QDialogButtonBox::ActionRole);
    previous->setObjectName(u"cmdPreviousTip"_s);
    next->setObjectName(u"cmdNextTip"_s);
    connect(startup, &QCheckBox::toggled, this, &ApplicationTips::TipsOnStartupChanged);
    connect(previous, &QPushButton::clicked, this, std::bind_front(&ApplicationTips::ShowTip, this, -1));
    connect(next, &QPushButton::clicked, this, std::bind_front(&ApplicationTips::ShowTip, this, 1));
    connect(buttons, &QDialogButtonBox::rejected, m_window, &QDialog::reject);
    connect(m_window, &QDialog::finished, this, &ApplicationTips::TipsFormClosed);
    auto* tip = new QHBoxLayout;
    tip->addWidget(icon, 0, Qt::AlignTop);
    tip->addWidget(m_text, 1);
    auto* layout = new QVBoxLayout(m_window);
    layout->addLayout(tip, 1);
    layout->addWidget(startup);
    layout->addWidget(buttons);
}

void ApplicationTips::ShowTip(qsizetype step)
{
    m_current = (m_current + step + m_tips.size()) % m_tips.size();
    m_text->setText(m_tips[m_current]);
}

void ApplicationTips::SetFocus()
{
    if (!m_window)
        return;
    m_window->raise();
    m_window->activateWindow();
}

} // namespace qb
