#include "platform/dao/Value.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

class TestValue : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void conversions_data()
    {
        QTest::addColumn<Value>("value");
        QTest::addColumn<qint64>("number");
        QTest::addColumn<double>("fraction");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("null") << Value() << 0ll << 0.0 << QString() << QByteArray();
        QTest::newRow("number") << Value(-42) << -42ll << -42.0 << u"-42"_s << "-42"_ba;
        QTest::newRow("64 bits") << Value(std::numeric_limits<qint64>::min()) << std::numeric_limits<qint64>::min()
                                 << -9223372036854775808.0 << u"-9223372036854775808"_s << "-9223372036854775808"_ba;
        QTest::newRow("unsigned") << Value(4000000000u) << 4000000000ll << 4e9 << u"4000000000"_s << "4000000000"_ba;
        QTest::newRow("true") << Value(true) << -1ll << -1.0 << u"-1"_s << "-1"_ba;
        QTest::newRow("false") << Value(false) << 0ll << 0.0 << u"0"_s << "0"_ba;
        QTest::newRow("fraction") << Value(2.75) << 2ll << 2.75 << u"2.75"_s << "2.75"_ba;
        QTest::newRow("text") << Value(u"Größe"_s) << 0ll << 0.0 << u"Größe"_s
                              << "Gr\xc3\xb6\xc3\x9f"
                                 "e"_ba;
        QTest::newRow("digits") << Value(u"0012"_s) << 12ll << 12.0 << u"0012"_s << "0012"_ba;
        QTest::newRow("empty text") << Value(QString()) << 0ll << 0.0 << QString() << QByteArray();
        QTest::newRow("bytes") << Value("\xc3\xa4"_ba) << 0ll << 0.0 << u"ä"_s << "\xc3\xa4"_ba;
        QTest::newRow("date") << Value(Date::FromSeconds(86399)) << 86399ll << 86399.0 << u"86399"_s << "86399"_ba;
    }

    void conversions()
    {
        QFETCH(Value, value);
        QTEST(value.ToLong(), "number");
        QTEST(value.ToDouble(), "fraction");
        QTEST(value.ToText(), "text");
        QTEST(value.ToBytes(), "bytes");
    }

    void nullAndEmptyText_differ()
    {
        QVERIFY(Value().IsNull());
        QVERIFY(!Value(QString()).IsNull());
        QVERIFY(!Value(QByteArray()).IsNull());
        QVERIFY(!Value(Date()).IsNull());
        QVERIFY(!(Value() == Value(QString())));
    }

    void null_readsAsNoneAndFalse()
    {
        QVERIFY(Value().ToDate().IsNone());
        QCOMPARE(Value().ToBoolean(), false);
    }

    void anyNumberButZero_isTrue()
    {
        QCOMPARE(Value(1).ToBoolean(), true);
        QCOMPARE(Value(true).ToBoolean(), true);
        QCOMPARE(Value(false).ToBoolean(), false);
    }

    void date_comesBackToTheSecond()
    {
        const Date date = Date::FromParts(2026, 3, 2, 14, 30, 5);
        QCOMPARE(Value(date).ToDate(), date);
    }

    void equality_distinguishesTypes()
    {
        QVERIFY(Value(1) == Value(qint64(1)));
        QVERIFY(!(Value(1) == Value(u"1"_s)));
        QVERIFY(!(Value(u"a"_s) == Value("a"_ba)));
    }
};

QB_TEST_MAIN(TestValue)
#include "tst_value.moc"
