#include "web/PageInsert.h"

#include "web/PageBytes.h"

#include <QtEndian>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString StartMark = u"<!--Start-->"_s;
const QString EndMark = u"<!--End-->"_s;
const QString CellEnd = u"</td>"_s;
const QString LineEnd = u"\r\n"_s;
const QString BareScheme = u"http://"_s;

/// A page as units of its encoding, in which all that is looked for can be: a byte, or two of UTF-16. Nothing is
/// decoded, so nothing is lost.
class PageUnits {
public:
    explicit PageUnits(const QByteArray& page) : m_encoding(EncodingOf(page))
    {
        if (!IsWide())
            m_units = QString::fromLatin1(page);
        else
            m_units = Swapped(QString(reinterpret_cast<const QChar*>(page.constData()), page.size() / 2));
        if (IsWide() && page.size() % 2 != 0)
            m_rest = page.last(1);
    }

    QString& Units() { return m_units; }

    /// @p text as units of this page.
    QString Of(const QString& text) const
    {
        return IsWide() ? text : QString::fromLatin1(EncodedFor(m_encoding, text));
    }

    /// A place some characters ahead of another. None leads into a character, or to ahead of the page's own mark.
    qsizetype Back(qsizetype from, int characters) const
    {
        qsizetype at = from;
        while (characters-- > 0 && at > 0) {
            --at;
            while (at > 0 && IsInside(m_units[at]))
                --at;
        }
        return at == 0 ? Begin() : at;
    }

    QByteArray Bytes() const
    {
        if (!IsWide())
            return m_units.toLatin1();
        const QString wide = Swapped(m_units);
        return QByteArray(reinterpret_cast<const char*>(wide.constData()), wide.size() * 2) + m_rest;
    }

private:
    bool IsWide() const { return m_encoding == PageEncoding::Utf16LE || m_encoding == PageEncoding::Utf16BE; }
    bool IsInside(QChar unit) const
    {
        return IsWide() ? unit.isLowSurrogate() : m_encoding == PageEncoding::Utf8 && (unit.unicode() & 0xc0) == 0x80;
    }
    qsizetype Begin() const
    {
        if (IsWide())
            return 1;
        return m_units.startsWith(u"\u00ef\u00bb\u00bf"_s) ? 3 : 0;
    }
    QString Swapped(QString units) const
    {
        const bool isSwapped = (m_encoding == PageEncoding::Utf16BE) == (Q_BYTE_ORDER == Q_LITTLE_ENDIAN);
        for (qsizetype at = 0; isSwapped && at < units.size(); ++at)
            units[at] = QChar(qbswap(units[at].unicode()));
        return units;
    }

    PageEncoding m_encoding;
    QString m_units;
    QByteArray m_rest; ///< half a unit at the end
};

QString WithCrLf(const QString& text)
{
    QString lines = text;
    lines.replace(LineEnd, u"\n"_s).replace(u'\r', u'\n').replace(u'\n', LineEnd);
    return lines;
}

/// Where the end mark stands, which is made where it can be; -1 for a page of the wrong format.
qsizetype FindOrMakeEndMark(QString& page)
{
    constexpr qsizetype Behind = 5; // from the begin of the start mark, inside which no cell ends
    if (const qsizetype at = page.indexOf(EndMark); at >= 0)
        return at;
    const qsizetype start = page.indexOf(StartMark);
    const qsizetype end = start < 0 ? -1 : page.indexOf(CellEnd, start + Behind);
    if (end >= 0)
        page.insert(end, EndMark);
    return end;
}

std::optional<QByteArray> WithInserted(const QByteArray& page, const QString& composed)
{
    // Counted from one, the place is the mark's less 7: ahead of "</p>" and the line's end in a page that is made
    // like the template. In one made by hand it may be an odd place.
    constexpr int FromMark = 6;
    PageUnits units(page);
    units.Units() = WithCrLf(units.Units());
    const qsizetype mark = FindOrMakeEndMark(units.Units());
    if (mark < 0)
        return std::nullopt;
    units.Units().insert(units.Back(mark, FromMark), LineEnd + units.Of(composed));
    return units.Bytes();
}

} // namespace

QString LinkedAddress(const QString& address)
{
    if (address == BareScheme)
        return {};
    return address.startsWith(BareScheme) || address.contains(u':') ? address : BareScheme + address;
}

std::optional<QByteArray> WithPicture(const QByteArray& page, const PagePicture& picture)
{
    return WithInserted(
        page, u" <img border=\"0\" src=\"%1\" width=\"%2\" height=\"%3\"> "_s.arg(
                  picture.Source.toHtmlEscaped(), QString::number(picture.Width), QString::number(picture.Height)));
}

std::optional<QByteArray> WithLink(const QByteArray& page, const PageLink& link)
{
    const QString before = u"</p>"_s + link.Before.toHtmlEscaped() + u' ';
    const QString behind = link.Behind.toHtmlEscaped();
    const QString address = LinkedAddress(link.Address);
    if (address.isEmpty())
        return WithInserted(page, before + behind);
    const QString text = link.Text.isEmpty() ? address : link.Text;
    return WithInserted(page, before + u"<a href=\""_s + address.toHtmlEscaped() + u"\">"_s + text.toHtmlEscaped()
                                  + u"</a> "_s + behind);
}

} // namespace qb
