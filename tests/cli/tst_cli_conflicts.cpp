#include "conflicts/ConflictedLibrary.h"
#include "platform/richtext/Rtf.h"
#include "support/CliRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Conflicts by command.
class TestCliConflicts : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    qint64 m_item = 0;

    static QString Rtf(const QString& text) { return RtfFromPlainText(text, CodeFont); }
    QString Id() const { return QString::number(m_item); }
    Outcome Run(const QStringList& words)
    {
        m->Db.reset();
        const Outcome outcome = Cli(QStringList{u"conflicts"_s} + words);
        m->Reopen();
        return outcome;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m = std::make_unique<ConflictedLibrary>();
        m_item = m->AddConflict({.Code = Rtf(u"a\r\nb"_s)}, {.Title = u"theirs"_s, .Code = Rtf(u"a\r\nc"_s)});
        m->AddConflict({}, {.Notes = u"{\\rtf1\\b notes}"_s}); // none
        m->AddFile(m_item, u"mine"_s, "m", m->At(-20));
        m->AddTempFile(m_item, u"their file"_s, QByteArray("t"), m->At(20));
    }
    void cleanup() { m.reset(); }

    void libraryThatNeverMerged_hasNone()
    {
        TemporaryHome home;
        const QString plain = home.Path(u"plain.qbd"_s);
        QCOMPARE(Cli({u"new"_s, plain}).Status, 0);
        QCOMPARE(Cli({u"conflicts"_s, plain}).Out, QString());
        const Outcome shown = Cli({u"conflicts"_s, u"show"_s, plain, u"10"_s});
        QCOMPARE(shown.Status, 1);
        QCOMPARE(shown.Out, QString());
        QCOMPARE(shown.Error, u"quillbase-cli: There is no conflict of the item 10 any more.\n"_s);
    }

    void list_namesThemWithTheirFields()
    {
        const Outcome text = Run({m->Path});
        QCOMPARE(text.Status, 0);
        QVERIFY(text.Out.startsWith(Id() + u"  item Ü  (title, code, files)\n"_s));
        const QJsonArray array = Run({m->Path, u"--json"_s}).Array();
        QCOMPARE(array.size(), 2);
        QCOMPARE(array[0][u"otherTitle"_s].toString(), u"theirs"_s);
        QCOMPARE(array[1][u"fields"_s].toArray(), QJsonArray{u"notes"_s});
    }

    void show_tellsBothVersionsAndTheirDifferences()
    {
        const Outcome diff = Run({u"show"_s, m->Path, Id(), u"--field"_s, u"code"_s, u"--diff"_s});
        QCOMPARE(diff.Out, u"code:\n a\n-b\n+c\n"_s);
        const Outcome both = Run({u"show"_s, m->Path, Id()});
        QVERIFY(both.Out.contains(u"== older"_s) && both.Out.contains(u"== newer"_s));
        QVERIFY(both.Out.contains(u"This file occures only in the newer item."_s));
        const QJsonObject object = Run({u"show"_s, m->Path, Id(), u"--json"_s}).Object();
        QCOMPARE(object[u"other"_s][u"code"_s].toString(), u"a\r\nc"_s);
        QCOMPARE(object[u"files"_s].toArray().size(), 2);
        QCOMPARE(Run({u"show"_s, m->Path, u"999"_s}).Status, 1);
        QCOMPARE(Run({u"show"_s, m->Path, Id(), u"--field"_s, u"x"_s}).Status, 2);
    }

    void resolve_takesFieldsOfTheOtherAndMovesFiles()
    {
        const qint64 mine = m->Db->QueryValue(u"SELECT ID FROM Files WHERE Title = 'mine'"_s).ToLong();
        const Outcome done = Run({u"resolve"_s, m->Path, Id(), u"--keep"_s, u"newer"_s, u"--field"_s, u"code=older"_s,
                                  u"--move-file"_s, QString::number(mine) + u'X'});
        QCOMPARE(done.Error, QString());
        QCOMPARE(done.Out, u"Conflicts left: 1\n"_s);
        QCOMPARE(m->Text(u"Title"_s, m_item), u"theirs"_s);
        QCOMPARE(PlainTextFromRtf(m->Text(u"Code"_s, m_item)), u"a\r\nb"_s);
        QCOMPARE(Texts(*m->Db, u"SELECT Title FROM Files ORDER BY Title"_s), (QStringList{u"mine"_s, u"their file"_s}));
    }

    void sectionsOfAText_goWithIt()
    {
        m->Db->Execute(u"UPDATE TempItems SET CodeHeaders = 3, UsageHeaders = 5 WHERE ID = ?"_s, {m_item});
        QCOMPARE(Run({u"resolve"_s, m->Path, Id(), u"--keep"_s, u"older"_s, u"--field"_s, u"code=newer"_s}).Status, 0);
        QCOMPARE(m->Text(u"CodeHeaders"_s, m_item), u"3"_s);
        QCOMPARE(m->Text(u"UsageHeaders"_s, m_item), u"0"_s); // of a text that stayed
    }

    void pageOfTheOther_canBeTakenAlone()
    {
        m->Db->Execute(u"UPDATE TempItems SET HTMLPage = -1, HTMLLastUpdated = 5 WHERE ID = ?"_s, {m_item});
        m->AddTempPage(m_item, u"77.htm"_s, {}, "<p>theirs");
        QCOMPARE(Run({u"resolve"_s, m->Path, Id(), u"--keep"_s, u"older"_s, u"--field"_s, u"page=newer"_s}).Status, 0);
        QCOMPARE(m->Text(u"Title"_s, m_item), u"item Ü"_s);
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + Id() + u".htm"_s), "<p>theirs");
    }

    void filesOfTheOther_canBeTakenAlone()
    {
        QCOMPARE(Run({u"resolve"_s, m->Path, Id(), u"--keep"_s, u"older"_s, u"--field"_s, u"files=newer"_s}).Status, 0);
        QCOMPARE(m->Text(u"Title"_s, m_item), u"item Ü"_s);
        QCOMPARE(Texts(*m->Db, u"SELECT Title FROM Files"_s), QStringList{u"their file"_s});
    }

    void wrongChoices_changeNothing_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<int>("status");
        QTest::newRow("nothing kept") << QStringList() << 2;
        QTest::newRow("neither") << QStringList{u"--keep"_s, u"both"_s} << 2;
        QTest::newRow("no such field") << QStringList{u"--keep"_s, u"newer"_s, u"--field"_s, u"x=newer"_s} << 1;
        QTest::newRow("file of both") << QStringList{u"--keep"_s, u"newer"_s, u"--move-file"_s, u"BOTHN"_s} << 1;
        QTest::newRow("number of two files") << QStringList{u"--keep"_s, u"newer"_s, u"--move-file"_s, u"TWO"_s} << 1;
        QTest::newRow("no such file") << QStringList{u"--keep"_s, u"newer"_s, u"--move-file"_s, u"99"_s} << 1;
    }
    void wrongChoices_changeNothing()
    {
        QFETCH(QStringList, words);
        const qint64 both = m->AddFile(m_item, u"both"_s, "b", m->At(-30));
        m->AddTempFile(m_item, u"both"_s, QByteArray("b"), m->At(-30));
        words.replaceInStrings(u"BOTH"_s, QString::number(both));
        const QString mine = Texts(*m->Db, u"SELECT ID FROM Files WHERE Title = 'mine'"_s).first();
        QCOMPARE(Texts(*m->Db, u"SELECT ID FROM TempFiles WHERE Title = 'their file'"_s), QStringList{mine});
        words.replaceInStrings(u"TWO"_s, mine);
        const auto before = StateOf(m->Path);
        const Outcome outcome = Run(QStringList{u"resolve"_s, m->Path, Id()} + words);
        QTEST(outcome.Status, "status");
        QVERIFY(!outcome.Error.isEmpty());
        QCOMPARE(DifferenceOf(StateOf(m->Path), before), QString());
    }

    void rating_isChosen()
    {
        m->Db->Execute(u"UPDATE TempItems SET ItemRating = 9 WHERE ID = ?"_s, {Id()});
        QVERIFY(Run({u"show"_s, m->Path, Id(), u"--json"_s}).Out.contains(u"\"rating\": 9"_s)
                || Run({u"show"_s, m->Path, Id(), u"--json"_s}).Out.contains(u"\"rating\":9"_s));
        QCOMPARE(Run({u"resolve"_s, m->Path, Id(), u"--keep"_s, u"older"_s, u"--field"_s, u"rating=newer"_s}).Status,
                 0);
        QCOMPARE(m->Text(u"ItemRating"_s, Id().toLongLong()), u"9"_s);
    }

    void auto_settlesThoseThatAreNone()
    {
        QVERIFY(Run({u"auto"_s, m->Path}).Out.endsWith(u"(dropped: looks)\nConflicts left: 1\n"_s));
        QCOMPARE(CountOf(*m->Db, u"TempItems"_s), 1);
        QCOMPARE(Run({u"auto"_s, m->Path, u"--json"_s}).Object()[u"left"_s].toInt(), 1);
    }

    void discard_givesAllUp()
    {
        QCOMPARE(Run({u"discard"_s, m->Path}).Out, u"Conflicts discarded: 2\n"_s);
        QVERIFY(!m->Db->TableExists(u"TempItems"_s));
        QCOMPARE(Run({u"discard"_s, m->Path, u"--json"_s}).Object()[u"discarded"_s].toInt(), 0);
        QCOMPARE(Run({m->Path}).Out, QString());
    }
};

QB_TEST_MAIN(TestCliConflicts)
#include "tst_cli_conflicts.moc"
