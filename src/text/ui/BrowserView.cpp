#include "text/ui/BrowserView.h"

#include "text/LocalPages.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

BrowserView::BrowserView(QWidget* parent) : QWidget(parent), m_layout(new QStackedLayout(this)) {}

BrowserView::~BrowserView() = default;

void BrowserView::MakeBrowser()
{
    if (std::exchange(m_tried, true))
        return;
    QString reason;
    m_browser = MakeWebBrowser(reason);
    if (!m_browser) {
        m_layout->addWidget(MakeExcuse(reason));
        return;
    }
    m_layout->addWidget(m_browser->Widget());
    m_browser->BeforeNavigate = [this](const QUrl& url) { Q_EMIT BeforeNavigate(url); };
    m_browser->CommandStateChange = [this](bool back, bool forward) { Q_EMIT CommandStateChange(back, forward); };
    m_browser->ProgressChange = [this](int percent) { Q_EMIT ProgressChange(percent); };
    m_browser->DocumentComplete = [this](const QUrl& url) { Q_EMIT DocumentComplete(url); };
    m_browser->LinkHovered = [this](const QString& address) { Q_EMIT LinkHovered(address); };
    m_browser->OpenOutside = [this](const QUrl& url) { Q_EMIT OpenOutside(url.toString()); };
}

QWidget* BrowserView::MakeExcuse(const QString& reason)
{
    auto* excuse = new QWidget;
    auto* label = new QLabel(u"Web pages can't be shown here: %1\n\nInstall Qt WebEngine (libqt6webenginewidgets6), or open the "
                             "page in your own browser."_s.arg(reason));
    label->setObjectName(u"lblNoBrowser"_s);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    auto* open = new QPushButton(u"&Open in Browser"_s);
    connect(open, &QPushButton::clicked, this, [this] { Q_EMIT OpenOutside(m_wanted.toString()); });
    auto* layout = new QVBoxLayout(excuse);
    layout->addStretch();
    layout->addWidget(label);
    layout->addWidget(open, 0, Qt::AlignCenter);
    layout->addStretch();
    return excuse;
}

void BrowserView::Navigate(const QUrl& url, const QString& folder)
{
    MakeBrowser();
    m_wanted = IsLocalPage(url) ? QUrl::fromLocalFile(QDir::cleanPath(folder + url.path())) : url;
    if (!m_browser)
        return;
    m_browser->SetPages(folder);
    const NavigationAnswer answer = AnswerNavigation({}, url, NavigationCause::Asked);
    if (answer == NavigationAnswer::Show)
        m_browser->Navigate(url);
    else if (answer == NavigationAnswer::OpenOutside)
        Q_EMIT OpenOutside(url.toString());
}

void BrowserView::GoBack()
{
    if (m_browser)
        m_browser->GoBack();
}

void BrowserView::GoForward()
{
    if (m_browser)
        m_browser->GoForward();
}

void BrowserView::BrowserStop()
{
    if (m_browser)
        m_browser->Stop();
}

void BrowserView::Reload()
{
    if (m_browser)
        m_browser->Reload();
}

} // namespace qb
