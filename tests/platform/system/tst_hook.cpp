#include "platform/system/Hook.h"
#include "support/TestRun.h"

#include <QTest>
#include <memory>
#include <optional>

using namespace qb;
using namespace Qt::StringLiterals;

/// A call that may be answered or not.
class TestHook : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void unanswered_givesItsValue()
    {
        const Hook<void(int)> nothing;
        nothing(1);
        const Hook<int()> number;
        QCOMPARE(number(), 0);
        const Hook<bool()> yes{true};
        QCOMPARE(yes(), true);
        const Hook<std::optional<QString>()> text{QString(u"none"_s)};
        QCOMPARE(text(), u"none"_s);
    }

    void answered_isAsked()
    {
        Hook<bool(int, QString&)> hook{true};
        hook = [](int number, QString& text) {
            text = QString::number(number);
            return false;
        };
        QString text;
        QCOMPARE(hook(17, text), false);
        QCOMPARE(text, u"17"_s);
        const Hook<int()> made = [] { return 3; };
        QCOMPARE(made(), 3);
    }

    void copy_hasTheSameAnswer()
    {
        Hook<int()> hook{7};
        Hook<int()> unanswered = hook;
        QCOMPARE(unanswered(), 7);
        hook = [] { return 8; };
        Hook<int()> answered(hook);
        QCOMPARE(answered(), 8);
        answered = unanswered;
        QCOMPARE(answered(), 7);
    }

    /// Who passes a hook on by reference lets it be answered later.
    void reference_followsTheHook()
    {
        Hook<bool()> inner;
        Hook<bool()> outer;
        outer = std::ref(inner);
        QCOMPARE(outer(), false);
        inner = [] { return true; };
        QCOMPARE(outer(), true);
    }
};

QB_TEST_MAIN(TestHook)

#include "tst_hook.moc"
