#pragma once

#include <QByteArray>
#include <QString>

namespace qb {

/// Appends a text to a page as text, in UTF-8: what would be markup is escaped, CR LF is a line feed, and what can't
/// be seen but isn't a blank is shown as a picture of it. It stands between tags as well as in quotes.
void AppendEscaped(QByteArray& html, QStringView text);

inline QByteArray Escaped(QStringView text)
{
    QByteArray html;
    AppendEscaped(html, text);
    return html;
}

/// Whether a page may lead there: to addresses and mailboxes; a link of any other kind could run something.
bool IsHarmlessAddress(const QString& target);

/// "1.5 KB".
QString ReadableSize(qint64 bytes);

} // namespace qb
