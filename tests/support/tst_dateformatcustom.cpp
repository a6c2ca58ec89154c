#include "support/DateFormatCustom.h"
#include "support/TestRun.h"

#include <QLocale>

using namespace qb;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(qb::Date)

class TestDateFormatCustom : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void date_isWrittenByItsPattern_data()
    {
        QTest::addColumn<Date>("date");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("text");
        const Date date = Date::FromParts(2026, 3, 2, 4, 5, 6);
        const Date late = Date::FromParts(1999, 12, 31, 23, 59, 58);
        QTest::newRow("stored") << date << DatePattern::Stored << u"03/02/2026 04:05:06"_s;
        QTest::newRow("stored, late") << late << DatePattern::Stored << u"12/31/1999 23:59:58"_s;
        QTest::newRow("stored, none") << Date() << DatePattern::Stored << u"12/30/1899 00:00:00"_s;
        QTest::newRow("log") << date << DatePattern::Log << u"02/03/26 04:05:06"_s;
        QTest::newRow("log, late") << late << DatePattern::Log << u"31/12/99 23:59:58"_s;
        QTest::newRow("day") << date << DatePattern::Day << u"02/Mar/2026"_s;
        QTest::newRow("day, none") << Date() << DatePattern::Day << u"30/Dec/1899"_s;
        QTest::newRow("statement") << date << u"mm/dd/yy hh:nn:ss"_s << u"03/02/26 04:05:06"_s;
        QTest::newRow("single letters") << date << u"d.m.yy h:n:s"_s << u"2.3.26 4:5:6"_s;
        QTest::newRow("single letters, two digits") << late << u"d.m h:n:s"_s << u"31.12 23:59:58"_s;
        QTest::newRow("midnight") << Date::FromParts(2026, 3, 2) << u"hh"_s << u"00"_s;
        QTest::newRow("noon") << Date::FromParts(2026, 3, 2, 12) << u"hh"_s << u"12"_s;
        QTest::newRow("turn of the century") << Date::FromParts(2000, 1, 1) << u"yy yyyy"_s << u"00 2000"_s;
        QTest::newRow("early year") << Date::FromParts(987, 1, 1) << u"yyyy"_s << u"0987"_s;
        QTest::newRow("what has no meaning") << date << u"-- (d) %1 ä"_s << u"-- (2) %1 ä"_s;
        QTest::newRow("empty") << date << QString() << QString();
    }

    void date_isWrittenByItsPattern()
    {
        QFETCH(Date, date);
        QFETCH(QString, pattern);
        QTEST(DateFormatCustom(date, pattern), "text");
    }

    void everyMonth_hasItsEnglishName()
    {
        const QStringList names{u"Jan"_s, u"Feb"_s, u"Mar"_s, u"Apr"_s, u"May"_s, u"Jun"_s,
                                u"Jul"_s, u"Aug"_s, u"Sep"_s, u"Oct"_s, u"Nov"_s, u"Dec"_s};
        for (int month = 1; month <= 12; ++month)
            QCOMPARE(DateFormatCustom(Date::FromParts(2026, month, 1), u"mmm"_s), names[month - 1]);
    }

    void regionalSettings_changeNothing()
    {
        QLocale::setDefault(QLocale(QLocale::German));
        QCOMPARE(DateFormatCustom(Date::FromParts(2026, 5, 2), DatePattern::Day), u"02/May/2026"_s);
    }

    void logText_isReadAsADate_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Date>("date");
        // Today is in 2026, so that the years lie between 1946 and 2045.
        QTest::newRow("this year") << u"02/03/26 04:05:06"_s << Date::FromParts(2026, 3, 2, 4, 5, 6);
        QTest::newRow("last year") << u"31/12/25 23:59:59"_s << Date::FromParts(2025, 12, 31, 23, 59, 59);
        QTest::newRow("latest year") << u"01/01/45 00:00:00"_s << Date::FromParts(2045, 1, 1);
        QTest::newRow("earliest year") << u"01/01/46 00:00:00"_s << Date::FromParts(1946, 1, 1);
        QTest::newRow("before the century") << u"01/01/99 00:00:00"_s << Date::FromParts(1999, 1, 1);
        QTest::newRow("the century") << u"01/01/00 00:00:00"_s << Date::FromParts(2000, 1, 1);
        QTest::newRow("leap day") << u"29/02/24 00:00:00"_s << Date::FromParts(2024, 2, 29);
        QTest::newRow("no leap day") << u"29/02/26 00:00:00"_s << Date();
        QTest::newRow("no such month") << u"01/13/26 00:00:00"_s << Date();
        QTest::newRow("no such hour") << u"01/01/26 24:00:00"_s << Date();
        QTest::newRow("four digits of a year") << u"01/01/2026 00:00"_s << Date();
        QTest::newRow("no time") << u"01/01/26"_s << Date();
        QTest::newRow("text behind") << u"01/01/26 00:00:00x"_s << Date();
        QTest::newRow("text") << u"a line of the code"_s << Date();
        QTest::newRow("empty") << QString() << Date();
    }

    void logText_isReadAsADate()
    {
        QFETCH(QString, text);
        QTEST(DateFromLogText(text, Date::FromParts(2026, 3, 2)), "date");
    }

    void writtenLogText_comesBack()
    {
        const Date today = Date::FromParts(2026, 3, 2);
        for (int year = 1946; year <= 2045; ++year) {
            const Date date = Date::FromParts(year, 7, 8, 9, 10, 11);
            QCOMPARE(DateFromLogText(DateFormatCustom(date, DatePattern::Log), today), date);
        }
    }
};

QB_TEST_MAIN(TestDateFormatCustom)
#include "tst_dateformatcustom.moc"
