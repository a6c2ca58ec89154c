#include "session/CHistory.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

class TestHistory : public QObject {
    Q_OBJECT

private:
    /// A history whose events are written down.
    struct Watched : CHistory {
        Watched()
        {
            connect(this, &CHistory::HistoryMovedBack, this, [this] { Events << u"back"_s; });
            connect(this, &CHistory::HistoryMovedForward, this, [this] { Events << u"forward"_s; });
            connect(this, &CHistory::FirstHistoryItem, this, [this] { Events << u"first"_s; });
            connect(this, &CHistory::LastHistoryItem, this, [this] { Events << u"last"_s; });
            connect(this, &CHistory::HistoryItemAdded, this, [this] { Events << u"added"_s; });
        }
        void Visit(const QStringList& keys)
        {
            for (const QString& key : keys)
                AddToHistory(key);
        }
        QStringList TakeEvents() { return std::exchange(Events, {}); }
        QStringList Events;
    };

    static QStringList Numbered(int first, int last)
    {
        QStringList keys;
        for (int i = first; i <= last; ++i)
            keys << u"C%1"_s.arg(i);
        return keys;
    }

private Q_SLOTS:
    void init() { qb::test::FailOnWarnings(); }

    void emptyHistory_hasNowhereToGo()
    {
        Watched history;
        QCOMPARE(history.Position(), 0);
        QCOMPARE(history.PreviousInHistory(), QString());
        QCOMPARE(history.TakeEvents(), (QStringList{u"first"_s, u"last"_s}));
        QCOMPARE(history.NextInHistory(), QString());
        QCOMPARE(history.TakeEvents(), (QStringList{u"first"_s, u"last"_s}));
    }

    void visit_isAddedAndAnnounced()
    {
        Watched history;
        history.AddToHistory(u"C1"_s);
        QCOMPARE(history.Keys(), QStringList{u"C1"_s});
        QCOMPARE(history.Position(), 1);
        QCOMPARE(history.TakeEvents(), (QStringList{u"last"_s, u"added"_s}));
    }

    void sameItemTwice_addsOneEntry()
    {
        Watched history;
        history.Visit({u"C1"_s, u"C1"_s});
        QCOMPARE(history.Keys(), QStringList{u"C1"_s});
        QCOMPARE(history.TakeEvents(), (QStringList{u"last"_s, u"added"_s}));
        history.Visit({u"C2"_s, u"C1"_s});
        QCOMPARE(history.Keys(), (QStringList{u"C1"_s, u"C2"_s, u"C1"_s}));
    }

    void stepBack_returnsTheKeyBefore()
    {
        Watched history;
        history.Visit(Numbered(1, 3));
        history.TakeEvents();
        QCOMPARE(history.PreviousInHistory(), u"C2"_s);
        QCOMPARE(history.TakeEvents(), QStringList{u"back"_s});
        QCOMPARE(history.PreviousInHistory(), u"C1"_s);
        QCOMPARE(history.TakeEvents(), (QStringList{u"first"_s, u"back"_s}));
    }

    void stepBackAtTheBegin_returnsTheFirstAgain()
    {
        Watched history;
        history.Visit({u"C1"_s});
        history.TakeEvents();
        QCOMPARE(history.PreviousInHistory(), u"C1"_s);
        QCOMPARE(history.Position(), 1);
        QCOMPARE(history.TakeEvents(), (QStringList{u"first"_s, u"back"_s}));
    }

    void stepForward_returnsTheKeyBehind()
    {
        Watched history;
        history.Visit(Numbered(1, 3));
        history.PreviousInHistory();
        history.PreviousInHistory();
        history.TakeEvents();
        QCOMPARE(history.NextInHistory(), u"C2"_s);
        QCOMPARE(history.TakeEvents(), QStringList{u"forward"_s});
        QCOMPARE(history.NextInHistory(), u"C3"_s);
        QCOMPARE(history.TakeEvents(), (QStringList{u"last"_s, u"forward"_s}));
        QCOMPARE(history.NextInHistory(), u"C3"_s); // at the end it stays
        QCOMPARE(history.TakeEvents(), (QStringList{u"last"_s, u"forward"_s}));
        QCOMPARE(history.Position(), 3);
    }

    void goingBackAndOpeningThatItem_addsNothing()
    {
        Watched history;
        history.Visit(Numbered(1, 3));
        history.AddToHistory(history.PreviousInHistory());
        QCOMPARE(history.Keys(), Numbered(1, 3));
        QCOMPARE(history.Position(), 2);
    }

    void visitAfterSteppingBack_keepsTheTrail()
    {
        Watched history;
        history.Visit(Numbered(1, 4));
        history.PreviousInHistory();
        history.PreviousInHistory();
        history.AddToHistory(u"C9"_s);
        QCOMPARE(history.Keys(), Numbered(1, 4) + QStringList({u"C2"_s, u"C9"_s}));
        QCOMPARE(history.Position(), 6);
        QCOMPARE(history.PreviousInHistory(), u"C2"_s);
    }

    void longTrail_losesItsOldest()
    {
        Watched history;
        history.Visit(Numbered(1, 31));
        QCOMPARE(history.Keys(), Numbered(1, 31));
        history.AddToHistory(u"C32"_s);
        QCOMPARE(history.Keys(), Numbered(2, 32));
        QCOMPARE(history.Position(), 31);
        QCOMPARE(history.TakeEvents().last(2), (QStringList{u"last"_s, u"added"_s})); // back stays possible
    }

    void visitAfterSteppingBackInALongTrail_keepsItsLength_data()
    {
        QTest::addColumn<int>("visits");
        QTest::addColumn<int>("oldest");
        QTest::newRow("29") << 29 << 1; // and the two make 31
        QTest::newRow("30") << 30 << 2;
        QTest::newRow("31") << 31 << 3;
    }
    void visitAfterSteppingBackInALongTrail_keepsItsLength()
    {
        QFETCH(int, visits);
        QFETCH(int, oldest);
        Watched history;
        history.Visit(Numbered(1, visits));
        history.PreviousInHistory();
        const QString place = u"C%1"_s.arg(visits - 1);
        history.AddToHistory(u"new"_s);
        QCOMPARE(history.Keys(), Numbered(oldest, visits) + QStringList({place, u"new"_s}));
        QCOMPARE(history.Position(), 31);
    }
};

QB_TEST_MAIN(TestHistory)
#include "tst_history.moc"
