#include "platform/dao/DBEngine.h"
#include "store/Library.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A command that fails says so by its exit status, and leaves the library as it was.
class TestCliFailures : public QObject {
    Q_OBJECT

    static constexpr int PageSize = 4096;

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;

    /// Overwrites the first bytes of a page, of which the first is 1.
    void DamagePage(qint64 page, const QByteArray& bytes)
    {
        QByteArray file = ReadFile(m_library);
        file.replace((page - 1) * PageSize, bytes.size(), bytes);
        WriteFile(m_library, file);
    }
    /// The table can't be read any more.
    void DamageTable(const QString& table)
    {
        const qint64 page = Library::Open(m_library)
                                ->QueryValue(u"SELECT rootpage FROM sqlite_schema WHERE name = ? AND type = 'table'"_s,
                                             {table})
                                .ToLong();
        DamagePage(page, QByteArray(8, char(0x77)));
    }
    /// The page that holds the middle of a long text leads to nowhere.
    void DamageText(const QByteArray& part)
    {
        const qsizetype at = ReadFile(m_library).indexOf(part);
        QVERIFY(at > 0);
        DamagePage(at / PageSize + 1, QByteArray(4, char(0x7f)));
    }
    Outcome CliTo(const QString& output, const QStringList& arguments)
    {
        QProcess process;
        process.setStandardOutputFile(output);
        process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
        process.waitForFinished();
        return {process.exitCode(), {}, QString::fromUtf8(process.readAllStandardError())};
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"lib é.qbd"_s);
        const auto database = MakeLibrary(m_library);
        AddItem(*database, 0, u"one"_s, QString(20000, u'x') + u"MIDDLE"_s + QString(20000, u'y'));
        AddItem(*database, 0, u"two"_s);
    }
    void cleanup() { m_home.reset(); }

    void itemThatCanNotBeRead_isNoEmptyOne_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("show") << QStringList{u"show"_s, u"1"_s};
        QTest::newRow("show title") << QStringList{u"show"_s, u"1"_s, u"--field"_s, u"title"_s};
        QTest::newRow("show code") << QStringList{u"show"_s, u"1"_s, u"--field"_s, u"code"_s};
        QTest::newRow("show json") << QStringList{u"show"_s, u"1"_s, u"--json"_s};
        QTest::newRow("links") << QStringList{u"links"_s, u"1"_s};
        QTest::newRow("links json") << QStringList{u"links"_s, u"1"_s, u"--json"_s};
        QTest::newRow("set") << QStringList{u"set"_s, u"1"_s, u"--title"_s, u"new"_s};
        QTest::newRow("move") << QStringList{u"move"_s, u"1"_s, u"2"_s};
        QTest::newRow("link") << QStringList{u"link"_s, u"1"_s, u"2"_s};
        QTest::newRow("colorize") << QStringList{u"colorize"_s, u"1"_s};
        QTest::newRow("colorize and save") << QStringList{u"colorize"_s, u"1"_s, u"--save"_s};
    }
    void itemThatCanNotBeRead_isNoEmptyOne()
    {
        QFETCH(QStringList, arguments);
        DamageText("MIDDLE"_ba);
        const QByteArray before = ReadFile(m_library);
        arguments.insert(1, m_library);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, 1);
        QCOMPARE(outcome.Out, QString());
        QVERIFY(!outcome.Error.isEmpty());
        QCOMPARE(ReadFile(m_library), before);
    }

    void linksThatCanNotBeRead_areNotTakenForNone_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("links") << QStringList{u"links"_s, u"1"_s};
        QTest::newRow("link") << QStringList{u"link"_s, u"1"_s, u"2"_s, u"--note"_s, u"n"_s};
        QTest::newRow("unlink") << QStringList{u"unlink"_s, u"1"_s, u"2"_s};
    }
    void linksThatCanNotBeRead_areNotTakenForNone()
    {
        QFETCH(QStringList, arguments);
        QCOMPARE(Cli({u"link"_s, m_library, u"1"_s, u"2"_s, u"--two-way"_s}).Status, 0);
        DamageTable(u"ItemLinks"_s);
        const QByteArray before = ReadFile(m_library);
        arguments.insert(1, m_library);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, 1);
        QCOMPARE(outcome.Out, QString());
        QVERIFY2(!outcome.Error.contains(u"has no link"_s), qPrintable(outcome.Error));
        QCOMPARE(ReadFile(m_library), before);
    }

    void attach_storesAllFilesOrNone()
    {
        WriteFile(m_home->Path(u"good.txt"_s), "good"_ba);
        const QByteArray before = ReadFile(m_library);
        const Outcome outcome = Cli(
            {u"attach"_s, m_library, u"1"_s, m_home->Path(u"good.txt"_s), m_home->Path(u"missing.txt"_s)});
        QCOMPARE(outcome.Status, 1);
        QCOMPARE(outcome.Out, QString());
        QCOMPARE(ReadFile(m_library), before);
        QCOMPARE(StoredNames(FilesFolderOf(m_library)), QStringList());
    }

    /// Titles come from strangers; a terminal would obey them.
    void titleWithControlCharacters_doesNotReachATerminal()
    {
        QCOMPARE(Cli({u"set"_s, m_library, u"2"_s, u"--title"_s, u"bad\x1b]0;owned\x07\u009btitle"_s}).Status, 0);
        const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        QVERIFY(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
        const QString name = QString::fromLocal8Bit(::ptsname(terminal));
        for (const QStringList& arguments :
             {QStringList{u"tree"_s, m_library}, QStringList{u"show"_s, m_library, u"2"_s}}) {
            QCOMPARE(CliTo(name, arguments).Status, 0);
            char bytes[4096];
            const ssize_t size = ::read(terminal, bytes, sizeof bytes);
            QVERIFY(size > 0);
            const QString shown = QString::fromUtf8(bytes, size);
            QVERIFY2(shown.contains(u"title"_s), qPrintable(shown));
            for (const QChar character : shown)
                QVERIFY(character == u'\r' || character == u'\n' || character.category() != QChar::Other_Control);
        }
        ::close(terminal);
        QVERIFY(Cli({u"tree"_s, m_library}).Out.contains(u'\x1b')); // for programs as it is
    }

    void numbersThatAreUsedUp_areSaidSo()
    {
        Library::Open(m_library)->Execute(u"UPDATE sqlite_sequence SET seq = 2147483647 WHERE name = 'Items'"_s);
        const Outcome outcome = Cli({u"add"_s, m_library, u"--parent"_s, u"0"_s, u"--title"_s, u"new"_s});
        QCOMPARE(outcome.Status, 1);
        QVERIFY2(outcome.Error.contains(u"no numbers left"_s), qPrintable(outcome.Error));
    }

    /// What is private stays so on its way in and out.
    void copies_haveNoMoreRightsThanTheirSource()
    {
        const QFile::Permissions others = QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther;
        const auto rights = [&](const QString& path) { return QFile::permissions(path) & others; };
        WriteFile(m_home->Path(u"private.txt"_s), "x"_ba);
        QFile::setPermissions(m_home->Path(u"private.txt"_s), QFile::ReadOwner | QFile::WriteOwner);
        WriteFile(m_home->Path(u"open.txt"_s), "y"_ba);
        QFile::setPermissions(m_home->Path(u"open.txt"_s),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
        QCOMPARE(
            Cli({u"attach"_s, m_library, u"1"_s, m_home->Path(u"private.txt"_s), m_home->Path(u"open.txt"_s)}).Status,
            0);
        QCOMPARE(rights(FilesFolderOf(m_library) + u"1 - private.txt"_s), QFile::Permissions());
        QVERIFY(rights(FilesFolderOf(m_library) + u"2 - open.txt"_s).testFlag(QFile::ReadOther));
        QCOMPARE(Cli({u"extract"_s, m_library, u"1"_s, m_home->Path(u"out.txt"_s)}).Status, 0);
        QCOMPARE(rights(m_home->Path(u"out.txt"_s)), QFile::Permissions());
        QFile::setPermissions(m_library, QFile::ReadOwner | QFile::WriteOwner);
        QCOMPARE(Cli({u"attach"_s, m_library, u"2"_s, m_home->Path(u"open.txt"_s)}).Status, 0);
        QCOMPARE(rights(FilesFolderOf(m_library) + u"3 - open.txt"_s), QFile::Permissions());
        DBEngine::CompactDatabase(m_library, m_home->Path(u"copy.qbd"_s));
        QCOMPARE(rights(m_home->Path(u"copy.qbd"_s)), QFile::Permissions());
    }

    void attachedTwice_theSecondOfOneNameHasANumber()
    {
        WriteFile(m_home->Path(u"a/good.txt"_s), "one"_ba);
        WriteFile(m_home->Path(u"b/good.txt"_s), "two"_ba);
        const Outcome outcome = Cli(
            {u"attach"_s, m_library, u"1"_s, m_home->Path(u"a/good.txt"_s), m_home->Path(u"b/good.txt"_s)});
        QCOMPARE(outcome.Out, u"1\n2\n"_s);
        QCOMPARE(ReadFile(FilesFolderOf(m_library) + u"1 - good.txt"_s), "one"_ba);
        QCOMPARE(ReadFile(FilesFolderOf(m_library) + u"2 - good(1).txt"_s), "two"_ba);
    }

    void commandWhoseOutputIsLost_changesNothing_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("add") << QStringList{u"add"_s, u"--parent"_s, u"0"_s, u"--title"_s, u"new"_s};
        QTest::newRow("add json") << QStringList{u"add"_s, u"--parent"_s, u"0"_s, u"--title"_s, u"new"_s, u"--json"_s};
        QTest::newRow("attach") << QStringList{u"attach"_s, u"1"_s, u"FOLDER/a.c"_s};
        QTest::newRow("import-folder") << QStringList{u"import-folder"_s, u"FOLDER"_s};
    }
    void commandWhoseOutputIsLost_changesNothing()
    {
        QFETCH(QStringList, arguments);
        WriteFile(m_home->Path(u"source/a.c"_s), "int a;"_ba);
        arguments.replaceInStrings(u"FOLDER"_s, m_home->Path(u"source"_s));
        arguments.insert(1, m_library);
        const auto rows = [this] {
            const auto database = Library::Open(m_library, DBEngine::Access::ReadOnly);
            return CountOf(*database, u"Items"_s) * 1000 + CountOf(*database, u"Files"_s);
        };
        const Outcome outcome = CliTo(u"/dev/full"_s, arguments);
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Error.contains(u"could not be written"_s));
        QCOMPARE(rows(), 2000);
        QCOMPARE(StoredNames(FilesFolderOf(m_library)), QStringList());
    }
};

QB_TEST_MAIN(TestCliFailures)
#include "tst_cli_failures.moc"
