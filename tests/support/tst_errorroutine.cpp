#include "platform/system/Clock.h"
#include "support/DateFormatCustom.h"
#include "support/ErrorRoutine.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray Head = "02/03/26 14:30:05  -  "; // of what is logged at the time of a FixedClock

QByteArray EntryOf(Date date, const QByteArray& text)
{
    return DateFormatCustom(date, DatePattern::Log).toUtf8() + "  -  " + text + '\n';
}

void Report(const QString& description, bool showDialog = false)
{
    HandleError(53, description, u"MainForm"_s, u"<<Get>> Title"_s, u"DAO.Database"_s, showDialog);
}

/// Programs of the desktop are looked for in this folder alone, as long as it lives.
class ProgramFolder {
public:
    explicit ProgramFolder(const QString& folder) : m_before(qgetenv("PATH"))
    {
        QDir().mkpath(folder);
        qputenv("PATH", QFile::encodeName(folder));
    }
    ~ProgramFolder() { qputenv("PATH", m_before); }
    ProgramFolder(const ProgramFolder&) = delete;
    ProgramFolder& operator=(const ProgramFolder&) = delete;

private:
    QByteArray m_before;
};

} // namespace

class TestErrorRoutine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_clock = std::make_unique<FixedClock>();
    }
    void cleanup()
    {
        m_clock.reset();
        m_home.reset();
    }

    // The log

    void error_isOneLineOfTheLog()
    {
        HandleError(3024, u"Größe 'x' %1 %2"_s, u"CDBCreate"_s, u"Create_Database"_s, u"DBEngine"_s, false);
        QCOMPARE(ErrorLogFile(), m_home->Path(u"data/ErrorLog.txt"_s));
        QCOMPARE(Log(), Head
                            + "3024, Gr\xc3\xb6\xc3\x9f"
                              "e 'x' %1 %2, CDBCreate, Create_Database, DBEngine\n");
    }

    void negativeNumber_isWrittenAsItIs()
    {
        HandleError(ErrorNumber::RecordAboutToBeDeleted, u"x"_s, u"M"_s, u"P"_s, u"S"_s, false);
        QCOMPARE(Log(), Head + "-2147220991, x, M, P, S\n");
    }

    void secondError_isAddedBehindTheFirst()
    {
        Report(u"first"_s);
        m_clock->AddSeconds(1);
        Report(u"second"_s);
        QCOMPARE(Log(), Head + "53, first, MainForm, <<Get>> Title, DAO.Database\n"
                            + "02/03/26 14:30:06  -  53, second, MainForm, <<Get>> Title, DAO.Database\n");
    }

    void errors_areCounted()
    {
        const int before = HandledErrorCount();
        Report(u"first"_s);
        Report(u"second"_s);
        QCOMPARE(HandledErrorCount(), before + 2);
    }

    void entry_isKeptFor90Days_data()
    {
        QTest::addColumn<Date>("written");
        QTest::addColumn<bool>("kept");
        const Date today = Date::FromParts(2026, 3, 2);
        QTest::newRow("today") << today << true;
        QTest::newRow("90 days, first second") << today.AddDays(-90) << true;
        QTest::newRow("91 days, last second") << Date::FromSeconds(today.AddDays(-90).Seconds() - 1) << false;
        QTest::newRow("a year") << today.AddDays(-365) << false;
        QTest::newRow("tomorrow") << today.AddDays(1) << true; // the machine's clock was wrong
    }

    void entry_isKeptFor90Days()
    {
        QFETCH(Date, written);
        QFETCH(bool, kept);
        const QByteArray entry = EntryOf(written, "1, old, M, P, S");
        WriteFile(ErrorLogFile(), entry);
        Report(u"new"_s);
        QCOMPARE(Log(), (kept ? entry : QByteArray()) + Head + "53, new, MainForm, <<Get>> Title, DAO.Database\n");
    }

    void continuationLines_areDroppedAtTheNextCleanUp()
    {
        Report(u"first\nsecond line"_s);
        QCOMPARE(Log().count('\n'), 2);
        Report(u"next"_s);
        QCOMPARE(Log(), Head + "53, first\n" + Head + "53, next, MainForm, <<Get>> Title, DAO.Database\n");
    }

    void linesWithoutADate_areDropped()
    {
        const QByteArray entry = EntryOf(m_clock->Now(), "1, kept, M, P, S");
        WriteFile(ErrorLogFile(),
                  "remark\n\n99/99/99 00:00:00  -  1, x\n" + entry + "\xff\xfe\n  02/03/26 14:30:05  -  x\n");
        QCOMPARE(CleanUpErrorLog(90).toUtf8(), entry);
    }

    void lastLineWithoutALineEnd_isKept()
    {
        WriteFile(ErrorLogFile(), EntryOf(m_clock->Now(), "1, a, M, P, S").chopped(1));
        QCOMPARE(CleanUpErrorLog(90).toUtf8(), EntryOf(m_clock->Now(), "1, a, M, P, S"));
    }

    void cleanUp_removesTheLog()
    {
        WriteFile(ErrorLogFile(), EntryOf(m_clock->Now(), "1, a, M, P, S"));
        QVERIFY(!CleanUpErrorLog(90).isEmpty());
        QVERIFY(!QFile::exists(ErrorLogFile()));
        QCOMPARE(CleanUpErrorLog(90), QString());
        QVERIFY(!QFile::exists(ErrorLogFile()));
    }

    void cleanUp_takesItsLimitInDays()
    {
        const QByteArray recent = EntryOf(Date::FromParts(2026, 2, 27), "1, recent, M, P, S");
        WriteFile(ErrorLogFile(), EntryOf(Date::FromParts(2026, 2, 26, 23, 59, 59), "1, old, M, P, S") + recent);
        QCOMPARE(CleanUpErrorLog(3).toUtf8(), recent);
    }

    void readOnlyLog_isMadeWritable()
    {
        const QByteArray entry = EntryOf(m_clock->Now(), "1, a, M, P, S");
        WriteFile(ErrorLogFile(), entry);
        QVERIFY(QFile::setPermissions(ErrorLogFile(), QFile::ReadOwner));
        Report(u"new"_s);
        QCOMPARE(Log(), entry + Head + "53, new, MainForm, <<Get>> Title, DAO.Database\n");
        QVERIFY(QFile::permissions(ErrorLogFile()).testFlag(QFile::WriteOwner));
    }

    void logThatIsAFolder_stopsNothing()
    {
        const QString inside = ErrorLogFile() + u"/inside"_s;
        WriteFile(inside, "1"_ba);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        Report(u"shown all the same"_s, true);
        QCOMPARE(prompts.Errors, QStringList{u"shown all the same"_s});
        QCOMPARE(ReadFile(inside), "1"_ba);
    }

    // The dialog

    void dialog_isShownOnlyWhenAskedFor()
    {
        ScriptedPrompts prompts;
        Report(u"silent"_s, false);
        QCOMPARE(prompts.Errors, QStringList());
        prompts.ExpectError();
        Report(u"shown"_s, true);
        QCOMPARE(prompts.Errors, QStringList{u"shown"_s});
        QCOMPARE(Log().count('\n'), 2);
    }

    void report_isHandedToTheMailProgram()
    {
        const QString programs = m_home->Path(u"programs"_s);
        const QString received = m_home->Path(u"received"_s);
        const QString mailer = programs + u"/xdg-email"_s;
        WriteFile(mailer, "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + received.toUtf8() + ".new'\n/bin/mv '"
                              + received.toUtf8() + ".new' '" + received.toUtf8() + "'\n");
        QVERIFY(QFile::setPermissions(mailer, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        const ProgramFolder path(programs);
        ScriptedPrompts prompts;
        prompts.ExpectError(true);
        Report(u"Größe 100%"_s, true);
        QTRY_VERIFY(QFile::exists(received));
        const QByteArray mail = ReadFile(received);
        QVERIFY(mail.contains("\r\nPlease describe what have you been doing just before the error occured:\r\n"));
        QVERIFY(mail.contains("Gr\xc3\xb6\xc3\x9f"
                              "e 100%, MainForm, <<Get>> Title, 53"));
    }

    void reportWithoutAMailProgram_saysWhereTheLogIs()
    {
        const ProgramFolder none(m_home->Path(u"empty"_s));
        ScriptedPrompts prompts;
        prompts.ExpectError(true);
        prompts.ExpectMsgBox(ApplicationTitle);
        Report(u"x"_s, true);
        QCOMPARE(prompts.Messages.size(), 1);
        QVERIFY(prompts.Messages[0].Text.contains(ErrorLogFile()));
    }

    // Guarded

    void guarded_success_returnsTheResultOfTheBody()
    {
        const int before = HandledErrorCount();
        QCOMPARE(Guarded(
                     u"M"_s, u"P"_s, [] { return 42; }, 0),
                 42);
        QVERIFY(Guarded(u"M"_s, u"P"_s, [] {}));
        QCOMPARE(HandledErrorCount(), before);
        QVERIFY(!QFile::exists(ErrorLogFile()));
    }

    void guarded_runtimeError_isReportedWithItsOwnData()
    {
        ScriptedPrompts prompts;
        prompts.ExpectError();
        const QString result = Guarded(
            u"CModule"_s, u"Procedure"_s, []() -> QString { throw RuntimeError(3021, u"no record"_s, u"Recordset"_s); },
            u"failure"_s);
        QCOMPARE(result, u"failure"_s);
        QCOMPARE(prompts.Errors, QStringList{u"no record"_s});
        QCOMPARE(Log(), Head + "3021, no record, CModule, Procedure, Recordset\n");
    }

    void guarded_otherException_isReportedAsInternal()
    {
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!Guarded(u"CModule"_s, u"Procedure"_s, [] { throw std::runtime_error("broken"); }));
        QCOMPARE(Log(), Head + "51, broken, CModule, Procedure, CModule\n");
    }

    void guarded_nested_reportsOnce()
    {
        ScriptedPrompts prompts;
        prompts.ExpectError();
        const bool done = Guarded(u"Outer"_s, u"P"_s, [] {
            QVERIFY(!Guarded(u"Inner"_s, u"P"_s, [] { throw RuntimeError(6, u"x"_s, u"S"_s); }));
        });
        QVERIFY(done);
        QCOMPARE(Log(), Head + "6, x, Inner, P, S\n");
    }

private:
    static QByteArray Log() { return ReadFile(ErrorLogFile()); }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_clock;
};

QB_TEST_MAIN(TestErrorRoutine)
#include "tst_errorroutine.moc"
