#include "platform/system/SettingsStore.h"
#include "support/CliRun.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/PdfText.h"
#include "support/TestRun.h"

#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Printing by the command line, which the window's program does for it where that is installed.
class TestCliPrint : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    QString m_library;
    qint64 m_top = 0, m_inner = 0;

    QString Path(const QString& name = {}) const { return m_home->Path(name); }
    QString Top() const { return QString::number(m_top); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = Path(u"Bü cher.qbd"_s);
        const auto library = MakeLibrary(m_library);
        m_top = AddItem(*library, 0, u"top"_s, u"code of top"_s);
        m_inner = AddItem(*library, m_top, u"inner"_s, u"code of inner"_s);
        AddItem(*library, 0, u"aside"_s, u"code of aside"_s);
    }
    void cleanup() { m_home.reset(); }

    void missingProgram_isSaid()
    {
        // The command line alone, in a folder of its own.
        QVERIFY(QDir().mkpath(Path(u"bin"_s)));
        const QString alone = Path(u"bin/quillbase-cli"_s);
        QVERIFY(QFile::copy(qEnvironmentVariable("QUILLBASE_CLI"), alone));
        QProcess process;
        process.start(alone, {u"print"_s, m_library, Top(), u"--to"_s, Path(u"out.pdf"_s)});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        const QString error = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(error.contains(u"not installed: there is no '%1'"_s.arg(Path(u"bin/quillbase"_s))), qPrintable(error));
        QVERIFY(error.contains(u"Nothing was printed."_s));
        QVERIFY(!QFile::exists(Path(u"out.pdf"_s)));
    }

    void wrongUsage_isSaid_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::newRow("no item") << QStringList{u"print"_s, u"LIB"_s};
        QTest::newRow("the root alone") << QStringList{u"print"_s, u"LIB"_s, u"0"_s, u"--to"_s, u"a.pdf"_s};
        QTest::newRow("no target") << QStringList{u"print"_s, u"LIB"_s, u"1"_s, u"--to"_s, u""_s};
        QTest::newRow("unknown form") << QStringList{u"export"_s, u"LIB"_s, u"1"_s, u"a.pdf"_s, u"--as"_s, u"paper"_s};
    }
    void wrongUsage_isSaid()
    {
        QFETCH(QStringList, words);
        words.replaceInStrings(u"LIB"_s, m_library);
        QCOMPARE(Cli(words).Status, 2);
    }

    void whatCantBePrinted_isRefused_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("target");
        QTest::newRow("no such item") << u"4711"_s << u"out.pdf"_s;
        QTest::newRow("folder") << u"1"_s << u"folder.pdf"_s;
        QTest::newRow("device") << u"1"_s << u"/dev/null"_s;
        QTest::newRow("missing folder") << u"1"_s << u"missing/out.pdf"_s;
    }
    void whatCantBePrinted_isRefused()
    {
        QFETCH(QString, item);
        QFETCH(QString, target);
        QVERIFY(QDir().mkpath(Path(u"folder.pdf"_s)));
        const auto before = ContentsOf(Path());
        const QString path = target.startsWith(u'/') ? target : Path(target);
        for (const QStringList& words : {QStringList{u"print"_s, m_library, item, u"--to"_s, path},
                                         QStringList{u"export"_s, m_library, item, path, u"--as"_s, u"pdf"_s}}) {
            const Outcome outcome = Cli(words);
            QCOMPARE(outcome.Status, 1);
            QVERIFY(!outcome.Error.isEmpty() && outcome.Out.isEmpty());
        }
        QCOMPARE(ContentsOf(Path()), before);
    }

#ifdef QUILLBASE_HAS_WINDOW
    void item_isPrintedToAFile()
    {
        const QString file = Path(u"out ö.pdf"_s);
        const Outcome outcome = Cli({u"print"_s, m_library, Top(), u"--to"_s, file});
        QVERIFY2(outcome.Status == 0, qPrintable(outcome.Error));
        QCOMPARE(outcome.Out, u"1 page on %1\n"_s.arg(file));
        const QString text = PdfText(file);
        QVERIFY(text.contains(u"code of top"_s) && text.contains(u"Page 1 of 1"_s));
        QVERIFY(text.contains(u"Bü cher"_s));
        QVERIFY(!text.contains(u"code of inner"_s));
    }

    void branch_isPrintedWhole()
    {
        const QString file = Path(u"out.pdf"_s);
        const Outcome outcome = Cli({u"print"_s, m_library, Top(), u"--branch"_s, u"--to"_s, file, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        QCOMPARE(outcome.Object()[u"print"_s].toString(), file);
        QCOMPARE(outcome.Object()[u"pages"_s].toInt(), PdfPages(file));
        const QString text = PdfText(file);
        QVERIFY(text.contains(u"code of top"_s) && text.contains(u"code of inner"_s));
        QVERIFY(!text.contains(u"code of aside"_s));
    }

    void export_isTheBranchAsAPdf()
    {
        const QString file = Path(u"out.pdf"_s);
        WriteFile(file, "before");
        QCOMPARE(Cli({u"export"_s, m_library, Top(), file}).Status, 0);
        QVERIFY(PdfText(file).contains(u"code of inner"_s));
        const QString other = Path(u"out"_s);
        QCOMPARE(Cli({u"export"_s, m_library, u"0"_s, other, u"--as"_s, u"pdf"_s}).Status, 0);
        QVERIFY(PdfText(other).contains(u"code of aside"_s));
    }

    void pageSetup_isTheRememberedOne()
    {
        SaveSetting(SettingsApplication, u"Printing"_s, u"Setup"_s, u"width=148 height=210 landscape=1 parts=about"_s);
        const QString file = Path(u"out.pdf"_s);
        QCOMPARE(Cli({u"print"_s, m_library, Top(), u"--to"_s, file}).Status, 0);
        QVERIFY2(PdfFact(file, u"Page size"_s).startsWith(u"595"_s), qPrintable(PdfFact(file, u"Page size"_s)));
        QVERIFY(!PdfText(file).contains(u"code of top"_s));
    }

    void library_isNeverTheTarget()
    {
        const QByteArray before = ReadFile(m_library);
        const Outcome outcome = Cli({u"export"_s, m_library, Top(), m_library, u"--as"_s, u"pdf"_s});
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Error.contains(u"library itself"_s));
        QCOMPARE(ReadFile(m_library), before);
    }

    void unknownPrinter_isSaid()
    {
        const Outcome outcome = Cli({u"print"_s, m_library, Top(), u"--to"_s, u"No_such_printer"_s});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"There is no printer 'No_such_printer'"_s), qPrintable(outcome.Error));
        QVERIFY(outcome.Error.contains(u"Nothing was printed."_s));
    }

    void emptyLibrary_hasNothingToPrint()
    {
        const QString empty = Path(u"empty.qbd"_s);
        MakeLibrary(empty);
        const Outcome outcome = Cli({u"export"_s, empty, u"0"_s, Path(u"out.pdf"_s)});
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Error.contains(u"no item"_s));
        QVERIFY(!QFile::exists(Path(u"out.pdf"_s)));
    }

    void library_isNotChanged()
    {
        const auto before = ContentsOf(Path());
        const QString file = Path(u"out.pdf"_s);
        QCOMPARE(Cli({u"export"_s, m_library, u"0"_s, file}).Status, 0);
        auto after = ContentsOf(Path());
        after.remove(u"out.pdf"_s);
        for (const QString& name : before.keys())
            QVERIFY2(after.value(name) == before[name], qPrintable(name));
    }

    void helperWithoutAJob_saysSo()
    {
        QProcess helper;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"DISPLAY"_s);
        helper.setProcessEnvironment(environment);
        helper.start(QFileInfo(qEnvironmentVariable("QUILLBASE_CLI")).absolutePath() + u"/quillbase"_s,
                     {u"--print-helper"_s});
        helper.closeWriteChannel();
        QVERIFY(helper.waitForFinished());
        QCOMPARE(helper.exitCode(), 1);
        QVERIFY(helper.readAllStandardOutput().contains("no print job"));
    }
#endif
};

QB_TEST_MAIN(TestCliPrint)
#include "tst_cli_print.moc"
