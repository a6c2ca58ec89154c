#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace qb {

/// Whether an address is that of a file to be loaded and not of a page to be shown: it has a name of a kind that no
/// page has below some folder.
bool CancelNavigate(const QString& address);

/// The name of a file that is loaded, as any system takes it, from what the server would have it called
/// (Content-Disposition) or else from its address. It has no folders, is not hidden, and holds nothing that can't be
/// seen.
QString DownloadName(const QUrl& url, const QByteArray& disposition);

} // namespace qb
