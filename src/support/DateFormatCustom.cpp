#include "support/DateFormatCustom.h"

#include <QRegularExpression>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView MonthNames[] = {"Jan"_L1, "Feb"_L1, "Mar"_L1, "Apr"_L1, "May"_L1, "Jun"_L1,
                                            "Jul"_L1, "Aug"_L1, "Sep"_L1, "Oct"_L1, "Nov"_L1, "Dec"_L1};

QString Padded(int number, qsizetype width)
{
    return u"%1"_s.arg(number, int(width), 10, QLatin1Char('0'));
}

/// The text for a run of @p length letters @p letter; the letter itself when it has no meaning.
QString Part(Date date, QChar letter, qsizetype length)
{
    switch (letter.toLower().unicode()) {
    case u'd':
        return Padded(date.Day().day(), length);
    case u'm':
        return length >= 3 ? QString(MonthNames[date.Day().month() - 1]) : Padded(date.Day().month(), length);
    case u'y':
        return length <= 2 ? Padded(date.Day().year() % 100, 2) : Padded(date.Day().year(), 4);
    case u'h':
        return Padded(date.Time().hour(), length);
    case u'n':
        return Padded(date.Time().minute(), length);
    case u's':
        return Padded(date.Time().second(), length);
    default:
        return QString(length, letter);
    }
}

} // namespace

QString DateFormatCustom(Date date, const QString& pattern)
{
    QString text;
    for (qsizetype start = 0; start < pattern.size();) {
        qsizetype end = start + 1;
        while (end < pattern.size() && pattern[end] == pattern[start])
            ++end;
        text += Part(date, pattern[start], end - start);
        start = end;
    }
    return text;
}

Date DateFromLogText(const QString& text, Date today)
{
    static const QRegularExpression form(u"^(\\d\\d)/(\\d\\d)/(\\d\\d) (\\d\\d):(\\d\\d):(\\d\\d)$"_s);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return {};
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };
    constexpr int YearsAhead = 19;
    const int latest = today.Day().year() + YearsAhead;
    const int year = latest - (((latest - number(3)) % 100) + 100) % 100;
    const QDate day(year, number(2), number(1));
    const QTime time(number(4), number(5), number(6));
    return day.isValid() && time.isValid() ? Date::FromParts(day, time) : Date();
}

} // namespace qb
