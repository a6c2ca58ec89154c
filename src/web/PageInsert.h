#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace qb {

/// What is told when a page has no place for an insertion: the title of the message.
inline const QString WrongPageFormat = QStringLiteral("The file format is not a KT Quillbase base format HTML file.");

/// A picture as a page names it.
struct PagePicture {
    QString Source; ///< below the folder of web pages: "17/tree.png"
    int Width = 0;  ///< in pixels
    int Height = 0;
};

/// A link with the plain texts around it.
struct PageLink {
    QString Address; ///< the bare "http://" for no link: the texts alone
    QString Text;    ///< what is clicked; empty for the address itself
    QString Before;
    QString Behind;
};

/// The address as a link has it: with "http://" where it has no colon, empty where it is the bare "http://".
QString LinkedAddress(const QString& address);

/// The bytes of @p page with a picture, or a link, at the end of its last paragraph: ahead of the mark <!--End-->,
/// which is made ahead of the </td> that follows <!--Start--> where it is missing. Line ends become CR LF, as which
/// they count for the place; all else keeps its bytes, in any encoding, and what is put in is written in that of the
/// page. Nothing for a page that has neither mark.
std::optional<QByteArray> WithPicture(const QByteArray& page, const PagePicture& picture);
std::optional<QByteArray> WithLink(const QByteArray& page, const PageLink& link);

} // namespace qb
