#include "web/ui/LocalPage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

LocalPage::LocalPage(QWidget* parent) : QTextBrowser(parent)
{
    setOpenLinks(false);
    setFrameShape(QFrame::NoFrame);
    connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl& url) {
        if (url.scheme() == u"http"_s || url.scheme() == u"https"_s || url.scheme() == u"mailto"_s)
            Q_EMIT AddressActivated(url.toString());
        else if (url.isRelative() && url.path().isEmpty())
            scrollToAnchor(url.fragment());
    });
}

void LocalPage::ShowPage(const QString& folder, const QString& name, const QString& fallback)
{
    m_folder = QFileInfo(folder).canonicalFilePath();
    QFile file(folder + name);
    const bool readable = file.open(QIODevice::ReadOnly);
    setHtml(readable ? QString::fromUtf8(file.readAll()) : fallback);
}

/// Pictures and styles out of the page's own folder; a name that leads out of it gives nothing.
QVariant LocalPage::loadResource(int type, const QUrl& name)
{
    if (name.scheme() == u"data"_s)
        return QTextBrowser::loadResource(type, name);
    const QString path = name.isRelative() ? QFileInfo(m_folder + u'/' + name.path()).canonicalFilePath() : QString();
    if (m_folder.isEmpty() || path.isEmpty() || !path.startsWith(m_folder + u'/'))
        return QByteArray();
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace qb
