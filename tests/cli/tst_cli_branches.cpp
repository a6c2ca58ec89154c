#include "store/CCodeItem.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The commands by which branches travel.
class TestCliBranches : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    QString m_from, m_to, m_file;
    qint64 m_top = 0, m_inner = 0;

    static QStringList TitlesBelow(const QString& library, qint64 parent)
    {
        return Texts(*Library::Open(library), u"SELECT Title FROM Items WHERE ParentID = ? ORDER BY Title"_s, {parent});
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_from = m_home->Path(u"von.qbd"_s);
        m_to = m_home->Path(u"nach.qbd"_s);
        m_file = m_home->Path(u"ast ö.qbx"_s);
        const auto from = MakeLibrary(m_from);
        m_top = AddItem(*from, 0, u"top"_s, u"code"_s);
        m_inner = AddItem(*from, m_top, u"inner"_s);
        AddItem(*from, 0, u"aside"_s);
        AddStoredFile(*from, m_inner, u"a.txt"_s, "text"_ba, {});
        MakeLibrary(m_to);
    }
    void cleanup() { m_home.reset(); }

    void branch_goesFromOneLibraryToAnother()
    {
        const Outcome sent = Cli({u"export"_s, m_from, QString::number(m_top), m_file, u"--json"_s});
        QCOMPARE(sent.Status, 0);
        QCOMPARE(sent.Object().value(u"items"_s).toInt(), 2);
        QCOMPARE(sent.Object().value(u"files"_s).toInt(), 1);
        const Outcome got = Cli({u"import"_s, m_to, m_file, u"--json"_s});
        QCOMPARE(got.Status, 0);
        QCOMPARE(got.Object().value(u"items"_s).toInt(), 2);
        QCOMPARE(TitlesBelow(m_to, 0), QStringList{u"top"_s});
        const Outcome again = Cli(
            {u"import"_s, m_to, m_file, u"--parent"_s, QString::number(got.Object().value(u"id"_s).toInteger())});
        QCOMPARE(again.Status, 0);
        QCOMPARE(TitlesBelow(m_to, got.Object().value(u"id"_s).toInteger()), (QStringList{u"inner"_s, u"top"_s}));
        QCOMPARE(Cli({u"check"_s, m_to}).Status, 0);
    }

    void contents_areListedAndChosen()
    {
        QCOMPARE(Cli({u"export"_s, m_from, u"0"_s, m_file}).Status, 0);
        const QString inner = QString::number(m_inner);
        QCOMPARE(Cli({u"import"_s, m_to, m_file, u"--list"_s}).Out,
                 u"aside [%1]\ntop [%2]\n  inner [%3]\n"_s.arg(m_inner + 1).arg(m_top).arg(inner));
        const QJsonArray list = Cli({u"import"_s, m_to, m_file, u"--list"_s, u"--json"_s}).Array();
        QCOMPARE(list[2].toObject().value(u"parent"_s).toString(), QString::number(m_top));
        QCOMPARE(list[2].toObject().value(u"file_bytes"_s).toInt(), 4);
        QCOMPARE(TitlesBelow(m_to, 0), QStringList());
        QCOMPARE(Cli({u"import"_s, m_to, m_file, u"--only"_s, inner}).Status, 0);
        QCOMPARE(TitlesBelow(m_to, 0), QStringList{u"inner"_s});
    }

    void whatCantBe_changesNothing()
    {
        WriteFile(m_file, "no export");
        const QByteArray before = ReadFile(m_to);
        QCOMPARE(Cli({u"import"_s, m_to, m_file}).Status, 1);
        QCOMPARE(Cli({u"import"_s, m_to, m_home->Path(u"nowhere.qbx"_s)}).Status, 1);
        QCOMPARE(Cli({u"export"_s, m_from, u"4711"_s, m_file}).Status, 1);
        QCOMPARE(ReadFile(m_file), "no export");
        QCOMPARE(Cli({u"export"_s, m_from, QString::number(m_top), m_file}).Status, 0);
        QCOMPARE(Cli({u"import"_s, m_to, m_file, u"--parent"_s, u"4711"_s}).Status, 1);
        QCOMPARE(Cli({u"import"_s, m_to, m_file, u"--only"_s, u"4711"_s}).Status, 1);
        QCOMPARE(ReadFile(m_to), before);
    }

    void whatStandsUnderTheName_mayHaveToStay_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("says");
        QTest::newRow("the library") << u"von.qbd"_s << u"is the library itself"_s;
        QTest::newRow("link to it") << u"link.qbd"_s << u"is the library itself"_s;
        QTest::newRow("another library") << u"nach.qbd"_s << u"is a database"_s;
        QTest::newRow("folder") << u"folder"_s << u"is a folder"_s;
        QTest::newRow("pipe") << u"pipe"_s << u"is a device, a pipe or a socket"_s;
    }
    void whatStandsUnderTheName_mayHaveToStay()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, says);
        QVERIFY(QFile::link(m_from, m_home->Path(u"link.qbd"_s)));
        QVERIFY(QDir().mkdir(m_home->Path(u"folder"_s)));
        QCOMPARE(::mkfifo(QFile::encodeName(m_home->Path(u"pipe"_s)).constData(), 0600), 0);
        const QByteArray from = ReadFile(m_from), to = ReadFile(m_to);
        for (const QStringList& command : {QStringList{u"export"_s, u"--as"_s, u"qbx"_s, m_from, u"0"_s},
                                           {u"export"_s, u"--as"_s, u"html"_s, m_from, u"0"_s},
                                           {u"backup"_s, m_from}}) {
            const Outcome refused = Cli(command + QStringList{m_home->Path(name)});
            QCOMPARE(refused.Status, 1);
            QVERIFY2(refused.Error.contains(says), qPrintable(refused.Error));
        }
        QCOMPARE(ReadFile(m_from), from);
        QCOMPARE(ReadFile(m_to), to);
        QVERIFY(QFileInfo(m_home->Path(u"link.qbd"_s)).isSymLink());
        QVERIFY(QFileInfo(m_home->Path(u"folder"_s)).isDir());
        QVERIFY(!QFileInfo(m_home->Path(u"pipe"_s)).isFile());
    }

    void branch_goesToReaders_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("form");
        QTest::addColumn<QString>("made");
        QTest::addColumn<QString>("holds");
        QTest::newRow("a page by its name") << u"ö.html"_s << QString() << QString() << u"<article id=i1>"_s;
        QTest::newRow("a page by another name") << u"ö.htm"_s << QString() << QString() << u"<article id=i1>"_s;
        QTest::newRow("a page of any name") << u"ö"_s << u"html"_s << QString() << u"<article id=i1>"_s;
        QTest::newRow("texts") << u"ö"_s << u"markdown"_s << u"/top/inner.md"_s << u"# inner\n"_s;
        QTest::newRow("files") << u"ö"_s << u"files"_s << u"/top"_s << u"code"_s;
    }
    void branch_goesToReaders()
    {
        QFETCH(QString, target);
        QFETCH(QString, form);
        QFETCH(QString, made);
        QFETCH(QString, holds);
        QStringList words{u"export"_s, m_from, QString::number(m_top), m_home->Path(target), u"--json"_s};
        if (!form.isEmpty())
            words << u"--as"_s << form;
        const Outcome sent = Cli(words);
        QCOMPARE(sent.Status, 0);
        QCOMPARE(sent.Object().value(u"items"_s).toInt(), 2);
        QCOMPARE(sent.Object().value(u"export"_s).toString(), m_home->Path(target));
        QVERIFY(ReadFile(m_home->Path(target + made)).contains(holds.toUtf8()));
    }

    void formThatNobodyKnows_isWrongUsage()
    {
        const QString target = m_home->Path(u"x.html"_s);
        const Outcome refused = Cli({u"export"_s, m_from, QString::number(m_top), target, u"--as"_s, u"doc"_s});
        QCOMPARE(refused.Status, 2);
        QVERIFY(refused.Error.contains(u"markdown"_s));
        QVERIFY(!QFile::exists(target));
    }

    void missingStoredFile_isSaidToReadersToo()
    {
        QFile::remove(Library::Open(m_from)->FilesFolder() + u"1 - a.txt"_s);
        const Outcome sent = Cli({u"export"_s, m_from, QString::number(m_top), m_home->Path(u"x.html"_s)});
        QCOMPARE(sent.Status, 1);
        QVERIFY(sent.Error.contains(u"a.txt"_s));
        QVERIFY(QFile::exists(m_home->Path(u"x.html"_s)));
    }

    void missingStoredFile_isSaid()
    {
        QFile::remove(Library::Open(m_from)->FilesFolder() + u"1 - a.txt"_s);
        const Outcome sent = Cli({u"export"_s, m_from, QString::number(m_top), m_file});
        QCOMPARE(sent.Status, 1);
        QVERIFY(sent.Error.contains(u"a.txt"_s));
    }
};

QB_TEST_MAIN(TestCliBranches)
#include "tst_cli_branches.moc"
