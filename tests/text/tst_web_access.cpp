#include "support/TestRun.h"
#include "web/WebAccess.h"

#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Who may show pages of the web, and what these may have opened outside.
class TestWebAccess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void web_isKeptOut_data()
    {
        QTest::addColumn<WebSurroundings>("surroundings");
        QTest::addColumn<QString>("reason");
        QTest::newRow("not") << WebSurroundings{} << QString();
        QTest::newRow("options") << WebSurroundings{.IsUnwanted = true} << u"the options keep them out"_s;
        QTest::newRow("variable") << WebSurroundings{.IsBarred = true} << u"QUILLBASE_NO_WEB is set"_s;
        QTest::newRow("root") << WebSurroundings{.IsRoot = true}
                              << u"the program runs as root, for whom the browser has no sandbox"_s;
        QTest::newRow("switched off") << WebSurroundings{.IsSandboxSwitchedOff = true}
                                      << u"the browser's sandbox is switched off"_s;
    }
    void web_isKeptOut()
    {
        QFETCH(WebSurroundings, surroundings);
        QTEST(WhyWebIsKeptOut(surroundings), "reason");
    }

    void variable_keepsTheWebOut()
    {
        const auto restore = qScopeGuard([] { qunsetenv("QUILLBASE_NO_WEB"); });
        const QString reason = u"QUILLBASE_NO_WEB is set"_s;
        QVERIFY(WebAccess::WhyKeptOut() != reason);
        qputenv("QUILLBASE_NO_WEB", "1");
        QCOMPARE(WebAccess::WhyKeptOut(), reason);
        qputenv("QUILLBASE_NO_WEB", "0");
        QVERIFY(WebAccess::WhyKeptOut() != reason);
    }

    void root_isLookedAt() { QCOMPARE(WebAccess::WhyKeptOut().contains(u"root"), geteuid() == 0); }

    void gesture_isGoodForOneThingAndNotForEver()
    {
        FixedClock clock;
        GestureRule rule;
        QVERIFY(!rule.Take());
        rule.Gesture();
        clock.AddSeconds(2);
        QVERIFY(rule.Take());
        QVERIFY(!rule.Take());
        rule.Gesture();
        clock.AddSeconds(60);
        QVERIFY(!rule.Take());
    }
};

QB_TEST_MAIN(TestWebAccess)
#include "tst_web_access.moc"
