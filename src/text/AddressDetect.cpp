#include "text/AddressDetect.h"

#include <QRegularExpression>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString WithoutScheme = u"www."_s;

/// How much of @p text belongs to an address: a closing bracket does where it was opened inside, what ends a sentence
/// does not.
qsizetype LengthWithoutEnd(QStringView text)
{
    static const QString ends = u".,;:!?'\"*_~"_s;
    static const QString opening = u"([{"_s;
    static const QString closing = u")]}"_s;
    while (!text.isEmpty()) {
        const QChar last = text.back();
        const qsizetype bracket = closing.indexOf(last);
        const bool isAlone = bracket >= 0 && text.count(opening[bracket]) < text.count(last);
        if (!ends.contains(last) && !isAlone)
            break;
        text.chop(1);
    }
    return text.size();
}

} // namespace

std::vector<DetectedAddress> AddressesIn(const QString& line)
{
    static const QString part = uR"([^\s<>"«»„“”\x{0}-\x{1f}]+)"_s;
    static const QRegularExpression begin(
        uR"((?<![\w.@/-])(?:(?:https?|ftp)://%1|www\.%1\.%1|mailto:[^\s<>"@]+@[^\s<>"]+|local://Item\d+))"_s.arg(part),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    std::vector<DetectedAddress> found;
    for (const QRegularExpressionMatch& match : begin.globalMatch(line)) {
        const qsizetype length = LengthWithoutEnd(match.capturedView());
        const QStringView address = QStringView(line).mid(match.capturedStart(), length);
        if (!address.endsWith(u"//") && !address.endsWith(u"www"))
            found.push_back({match.capturedStart(), length});
    }
    return found;
}

QString AddressToOpen(const QString& text)
{
    return text.startsWith(WithoutScheme, Qt::CaseInsensitive) ? u"http://"_s + text : text;
}

} // namespace qb
