#include "platform/system/Prompts.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(qb::MsgBoxButtons)
Q_DECLARE_METATYPE(qb::MsgBoxResult)

class TestPrompts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void unsetDefault_isTheFirstButton_data()
    {
        QTest::addColumn<MsgBoxButtons>("buttons");
        QTest::addColumn<MsgBoxResult>("answer");
        QTest::newRow("OK") << MsgBoxButtons::OkOnly << MsgBoxResult::Ok;
        QTest::newRow("OK, Cancel") << MsgBoxButtons::OkCancel << MsgBoxResult::Ok;
        QTest::newRow("Retry, Cancel") << MsgBoxButtons::RetryCancel << MsgBoxResult::Retry;
        QTest::newRow("Yes, No") << MsgBoxButtons::YesNo << MsgBoxResult::Yes;
        QTest::newRow("Yes, No, Cancel") << MsgBoxButtons::YesNoCancel << MsgBoxResult::Yes;
    }

    void unsetDefault_isTheFirstButton()
    {
        QFETCH(MsgBoxButtons, buttons);
        QFETCH(MsgBoxResult, answer);
        QVERIFY((Message{.Text = u"x"_s, .Caption = {}, .Buttons = buttons}.DefaultAnswer() == answer));
    }

    void setDefault_isTheAnswerOfSilentPrompts()
    {
        const Message message{
            .Text = u"Sure?"_s, .Caption = {}, .Buttons = MsgBoxButtons::YesNo, .Default = MsgBoxResult::No};
        QVERIFY(SilentPrompts().MsgBox(message) == MsgBoxResult::No);
    }

    void silentPrompts_cancelWhatTheyCannotAnswer()
    {
        SilentPrompts silent;
        QVERIFY(!silent.InputBox(u"Name?"_s, {}, u"preset"_s));
        QCOMPARE(silent.FileName({.Save = true, .Title = u"Save"_s, .Filter = {}, .Folder = u"/tmp"_s}), QString());
        QVERIFY(!silent.ShowError(u"x"_s));
        QVERIFY(silent.InformUser(u"Working..."_s) != nullptr);
    }

    void promptsInUse_areTheOnesLastSet()
    {
        Prompts* const before = &Prompts::Current();
        {
            ScriptedPrompts outer;
            QCOMPARE(&Prompts::Current(), &outer);
            {
                ScriptedPrompts inner;
                QCOMPARE(&Prompts::Current(), &inner);
            }
            QCOMPARE(&Prompts::Current(), &outer);
        }
        QCOMPARE(&Prompts::Current(), before);
    }
};

QB_TEST_MAIN(TestPrompts)
#include "tst_prompts.moc"
