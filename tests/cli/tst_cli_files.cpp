#include "platform/archive/BrindletonZip.h"
#include "platform/dao/DBEngine.h"
#include "store/Library.h"
#include "store/StoredFiles.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>
#include <fcntl.h>
#include <random>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Stored files on the command line, and what is left when it is killed.
class TestCliFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"the library.qbd"_s);
        QCOMPARE(Cli({u"new"_s, m_library, u"--language"_s, u"none"_s}).Status, 0);
        QCOMPARE(Cli({u"add"_s, m_library, u"--parent"_s, u"0"_s, u"--title"_s, u"owner"_s}).Out, u"1\n"_s);
        WriteFile(m_home->Path(u"in/a.txt"_s), "alpha");
        WriteFile(m_home->Path(u"in/ß.bin"_s), QByteArray("\0\1\2", 3));
    }
    void cleanup() { m_home.reset(); }

    void files_areAttachedListedExtractedAndDetached()
    {
        QCOMPARE(
            Cli({u"attach"_s, m_library, u"1"_s, In(u"a.txt"_s), In(u"ß.bin"_s), u"--description"_s, u"what"_s}).Out,
            u"1\n2\n"_s);
        const Outcome listed = Cli({u"files"_s, m_library, u"1"_s, u"--json"_s});
        QCOMPARE(listed.Array().size(), 2);
        QCOMPARE(listed.Array()[1].toObject()[u"title"_s], u"ß.bin"_s);
        QCOMPARE(listed.Array()[1].toObject()[u"size"_s], 3);
        QCOMPARE(listed.Array()[0].toObject()[u"description"_s], u"what"_s);
        QVERIFY(Cli({u"files"_s, m_library, u"1"_s}).Out.startsWith(u"1\t5\t"_s));
        QCOMPARE(Cli({u"extract"_s, m_library, u"2"_s, m_home->Path(u"out.bin"_s)}).Status, 0);
        QCOMPARE(ReadFile(m_home->Path(u"out.bin"_s)), QByteArray("\0\1\2", 3));
        QDir().mkpath(m_home->Path(u"folder"_s));
        QCOMPARE(Cli({u"extract"_s, m_library, u"1"_s, m_home->Path(u"folder"_s)}).Status, 0);
        QCOMPARE(ReadFile(m_home->Path(u"folder/a.txt"_s)), "alpha");
        const auto describe = [this](const QString& text) {
            return Cli({u"file"_s, u"describe"_s, m_library, u"1"_s, u"--description"_s, text}).Status;
        };
        for (const QString& text : {u"größer\n}"_s, QString()}) {
            QCOMPARE(describe(text), 0);
            const QJsonObject file = Cli({u"files"_s, m_library, u"1"_s, u"--json"_s}).Array()[0].toObject();
            QCOMPARE(file[u"description"_s].toString().replace(u"\r\n"_s, u"\n"_s), text);
            QCOMPARE(file[u"title"_s], u"a.txt"_s);
        }
        QCOMPARE(Cli({u"detach"_s, m_library, u"1"_s}).Status, 0);
        QCOMPARE(Cli({u"files"_s, m_library, u"1"_s}).Out.count(u'\n'), 1);
        QCOMPARE(Names(), QStringList{u"2 - ß.bin"_s});
        QCOMPARE(Cli({u"check"_s, m_library}).Status, 0);
    }

    void whatCantBe_isRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no item") << QStringList{u"attach"_s, u"9"_s, u"IN/a.txt"_s} << 1 << u"There is no item 9"_s;
        QTest::newRow("no file") << QStringList{u"attach"_s, u"1"_s, u"IN/none"_s} << 1 << u"can't be read"_s;
        QTest::newRow("folder") << QStringList{u"attach"_s, u"1"_s, u"IN"_s} << 1 << u"can't be read"_s;
        QTest::newRow("nothing") << QStringList{u"attach"_s, u"1"_s} << 2 << u"An argument is missing"_s;
        QTest::newRow("zip how") << QStringList{u"attach"_s, u"1"_s, u"IN/a.txt"_s, u"--zip"_s} << 2
                                 << u"'--zip' wants 'each' or 'all NAME'"_s;
        QTest::newRow("zip what") << QStringList{u"attach"_s, u"1"_s, u"IN/a.txt"_s, u"--zip"_s, u"all"_s} << 2
                                  << u"wants the name of the archive"_s;
        QTest::newRow("zip elsewhere") << QStringList{u"attach"_s, u"1"_s,   u"IN/a.txt"_s,
                                                      u"--zip"_s,  u"all"_s, u"../x"_s}
                                       << 1 << u"'../x' is no name for an archive"_s;
        QTest::newRow("zip nothing") << QStringList{u"attach"_s, u"1"_s, u"IN/none"_s, u"--zip"_s, u"each"_s} << 1
                                     << u"there is no file"_s;
        QTest::newRow("extract") << QStringList{u"extract"_s, u"9"_s, u"IN/x"_s} << 1 << u"There is no stored file 9"_s;
        QTest::newRow("detach") << QStringList{u"detach"_s, u"9"_s} << 1 << u"There is no stored file 9"_s;
        QTest::newRow("describe") << QStringList{u"file"_s, u"describe"_s, u"9"_s, u"--description"_s, u"x"_s} << 1
                                  << u"There is no stored file 9"_s;
        QTest::newRow("describe how") << QStringList{u"file"_s, u"describe"_s, u"1"_s} << 2
                                      << u"'file describe' wants '--description TEXT'"_s;
        QTest::newRow("file what") << QStringList{u"file"_s, u"1"_s} << 2 << u"'file' wants 'describe LIB"_s;
    }
    void whatCantBe_isRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, reason);
        arguments.replaceInStrings(u"IN"_s, m_home->Path(u"in"_s));
        arguments.insert(arguments.front() == u"file"_s ? 2 : 1, m_library);
        const Outcome outcome = Cli(arguments);
        QCOMPARE(outcome.Status, status);
        QVERIFY2(outcome.Error.contains(reason), qPrintable(outcome.Error));
        QCOMPARE(Names(), QStringList());
    }

    /// As on a full disk: no file may grow beyond a megabyte.
    void fileThatDoesNotFit_leavesNothing()
    {
        WriteFile(In(u"big"_s), QByteArray(3'000'000, 'x'));
        QProcess process;
        process.start(u"/bin/sh"_s,
                      {u"-c"_s, u"ulimit -f 2048; exec \"$0\" \"$@\""_s, qEnvironmentVariable("QUILLBASE_CLI"),
                       u"attach"_s, m_library, u"1"_s, In(u"big"_s)});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        const QString error = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(error.contains(u"File too large"_s), qPrintable(error));
        QCOMPARE(Names(), QStringList());
        QCOMPARE(Cli({u"files"_s, m_library, u"1"_s}).Out, QString());
        QCOMPARE(Cli({u"attach"_s, m_library, u"1"_s, In(u"big"_s)}).Out, u"1\n"_s); // once there is room
        process.start(u"/bin/sh"_s,
                      {u"-c"_s, u"ulimit -f 2048; exec \"$0\" \"$@\""_s, qEnvironmentVariable("QUILLBASE_CLI"),
                       u"extract"_s, m_library, u"1"_s, In(u"a.txt"_s)});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(ReadFile(In(u"a.txt"_s)), "alpha"); // what was there
        QCOMPARE(QDir(m_home->Path(u"in"_s)).entryList(QDir::Files | QDir::Hidden).size(), 3);
    }

    void files_areCompressed()
    {
        WriteFile(In(u"b.txt"_s), QByteArray("line\n").repeated(5000));
        QCOMPARE(Cli({u"attach"_s, m_library, u"1"_s, In(u"a.txt"_s), In(u"b.txt"_s), u"--zip"_s, u"each"_s}).Out,
                 u"1\n2\n"_s);
        QCOMPARE(
            Cli({u"attach"_s, m_library, u"1"_s, u"--zip"_s, u"all"_s, u"both"_s, In(u"a.txt"_s), In(u"b.txt"_s)}).Out,
            u"3\n"_s);
        QCOMPARE(Names(), (QStringList{u"1 - a.zip"_s, u"2 - b.zip"_s, u"3 - both.zip"_s}));
        QCOMPARE(Cli({u"extract"_s, m_library, u"3"_s, m_home->Path(u"out.zip"_s)}).Status, 0);
        BrindletonZip zip;
        QVERIFY(zip.ExtractTo(m_home->Path(u"out.zip"_s), m_home->Path(u"out"_s)));
        QCOMPARE(ReadFile(m_home->Path(u"out/b.txt"_s)), QByteArray("line\n").repeated(5000));
        QCOMPARE(QDir(m_home->Path(u"in"_s)).entryList(QDir::Files | QDir::Hidden).size(), 3); // nothing is made there
    }

    void file_isTakenAsItIsUnlessCompressed()
    {
        WriteFile(In(u"a.zip"_s), "an archive");
        QCOMPARE(Cli({u"attach"_s, m_library, u"1"_s, In(u"a.txt"_s)}).Status, 0);
        QCOMPARE(Cli({u"attach"_s, m_library, u"1"_s, In(u"a.txt"_s), u"--zip"_s, u"each"_s}).Status, 0);
        QCOMPARE(Names(), (QStringList{u"1 - a.txt"_s, u"2 - a.zip"_s}));
        QCOMPARE(ReadFile(m_home->Path(u"the library_Files/2 - a.zip"_s)), "an archive");
    }

    /// As on a full disk.
    void archiveThatDoesNotFit_leavesNothing()
    {
        QByteArray noise(3'000'000, Qt::Uninitialized);
        std::generate(noise.begin(), noise.end(), [random = std::minstd_rand()]() mutable { return char(random()); });
        WriteFile(In(u"noise"_s), noise);
        QProcess process;
        process.start(u"/bin/sh"_s,
                      {u"-c"_s, u"ulimit -f 2048; exec \"$0\" \"$@\""_s, qEnvironmentVariable("QUILLBASE_CLI"),
                       u"attach"_s, m_library, u"1"_s, In(u"noise"_s), u"--zip"_s, u"all"_s, u"x"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        const QString error = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(error.contains(u"can't be made"_s) && error.contains(u"File too large"_s), qPrintable(error));
        QCOMPARE(Names(), QStringList());
        QCOMPARE(Cli({u"files"_s, m_library, u"1"_s}).Out, QString());
    }

    /// Whenever the program is killed, each row has its file and each file its row once the library has
    /// been opened again.
    void killedProgram_leavesNothingHalfDone_data()
    {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<bool>("needsFile");
        QTest::newRow("attach") << QStringList{u"attach"_s, u"LIB"_s, u"1"_s, u"BIG"_s} << false;
        QTest::newRow("zip each") << QStringList{u"attach"_s, u"LIB"_s,   u"1"_s,   u"BIG"_s,
                                                 u"SMALL"_s,  u"--zip"_s, u"each"_s}
                                  << false;
        QTest::newRow("zip all") << QStringList{u"attach"_s, u"LIB"_s,   u"1"_s,   u"BIG"_s,
                                                u"SMALL"_s,  u"--zip"_s, u"all"_s, u"x"_s}
                                 << false;
        QTest::newRow("detach") << QStringList{u"detach"_s, u"LIB"_s, u"LAST"_s} << true;
        QTest::newRow("delete") << QStringList{u"delete"_s, u"LIB"_s, u"OWNER"_s} << true;
    }
    void killedProgram_leavesNothingHalfDone()
    {
        QFETCH(QStringList, words);
        QFETCH(bool, needsFile);
        WriteFile(In(u"big"_s), QByteArray("0123456789abcdef").repeated(400'000));
        WriteFile(In(u"small"_s), "small");
        int finished = 0;
        for (int i = 0; i < 25; ++i) {
            QString owner = u"1"_s;
            QString last;
            if (needsFile) {
                owner = Cli({u"add"_s, m_library, u"--parent"_s, u"1"_s, u"--title"_s, u"with files"_s}).Out.trimmed();
                for (int file = 0; file < 3; ++file)
                    last = Cli({u"attach"_s, m_library, owner, In(u"small"_s)}).Out.trimmed();
            }
            QStringList arguments = words;
            const std::pair<const char*, QString> places[] = {
                {"LIB", m_library}, {"BIG", In(u"big"_s)}, {"SMALL", In(u"small"_s)}, {"LAST", last}, {"OWNER", owner}};
            for (QString& word : arguments) {
                for (const auto& [place, value] : places)
                    word = word == QLatin1StringView(place) ? value : word;
            }
            QProcess process;
            process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
            QVERIFY(process.waitForStarted());
            finished += process.waitForFinished(2 * i) ? 1 : 0; // from its very start to its end, later each time
            process.kill();
            process.waitForFinished();
            QVERIFY(Cli({u"set"_s, m_library, u"1"_s, u"--title"_s, u"owner %1"_s.arg(i)}).Status == 0);
            CheckFiles();
        }
        QVERIFY(Cli(QStringList{u"check"_s, m_library}).Status == 0);
        QVERIFY(finished < 25); // some were killed in time
    }

    /// Whenever the program is killed, the file that was there is there, or the new one.
    void killedExtraction_leavesOneOfBoth()
    {
        const QByteArray contents = QByteArray("0123456789abcdef").repeated(400'000);
        WriteFile(In(u"big"_s), contents);
        QCOMPARE(Cli({u"attach"_s, m_library, u"1"_s, In(u"big"_s)}).Status, 0);
        int finished = 0;
        for (int i = 0; i < 25; ++i) {
            WriteFile(m_home->Path(u"out/big"_s), "old");
            QProcess process;
            process.start(qEnvironmentVariable("QUILLBASE_CLI"),
                          {u"extract"_s, m_library, u"1"_s, m_home->Path(u"out"_s)});
            QVERIFY(process.waitForStarted());
            finished += process.waitForFinished(i) ? 1 : 0;
            process.kill();
            process.waitForFinished();
            const QByteArray found = ReadFile(m_home->Path(u"out/big"_s));
            QVERIFY2(found == "old" || found == contents, qPrintable(QString::number(found.size())));
            QVERIFY(QDir(m_home->Path(u"out"_s)).entryList(QDir::Files | QDir::Hidden).size()
                    <= 2); // a copy may lack its last step
            for (const QString& name : QDir(m_home->Path(u"out"_s)).entryList({u".*"_s}, QDir::Files | QDir::Hidden)) {
                QVERIFY(!KnowsFilesWithoutNames()
                        || ReadFile(m_home->Path(u"out/"_s) + name) == contents); // but is whole
                QFile::remove(m_home->Path(u"out/"_s) + name);
            }
        }
        QVERIFY(finished < 25);
    }

private:
    QString In(const QString& name) const { return m_home->Path(u"in/"_s + name); }
    QStringList Names() const { return StoredNames(m_home->Path(u"the library_Files"_s)); }
    /// Of the file system: copies have no name before they are complete then.
    bool KnowsFilesWithoutNames() const
    {
        const int file = ::open(QFile::encodeName(m_home->Path(u"out"_s)).constData(), O_WRONLY | O_TMPFILE | O_CLOEXEC,
                                0600);
        if (file >= 0)
            ::close(file);
        return file >= 0;
    }
    /// Each row has its whole file, and there is nothing else.
    void CheckFiles()
    {
        const auto database = Library::Open(m_library);
        database->ReadReplica();
        QStringList expected;
        Statement rows = database->Query(u"SELECT ID, Title, FileSize FROM Files ORDER BY ID"_s);
        while (rows.Step()) {
            expected << rows.Text(0) + u" - "_s + rows.Text(1);
            if (QFileInfo(StoredFilePath(*database, rows.Long(0), rows.Text(1))).size() != rows.Long(2))
                QTest::qFail("a stored file is not whole", __FILE__, __LINE__);
        }
        QStringList names = Names();
        names.sort();
        expected.sort();
        if (names != expected)
            QTest::qFail(qPrintable(names.join(u", "_s) + u" instead of "_s + expected.join(u", "_s)), __FILE__,
                         __LINE__);
    }

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;
};

QTEST_GUILESS_MAIN(TestCliFiles)
#include "tst_cli_files.moc"
