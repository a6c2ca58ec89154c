#include "platform/archive/CBFileSplitter.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"

#include <QProcess>
#include <QStandardPaths>
#include <limits>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Contents = QMap<QString, QByteArray>;

constexpr qint64 Mebibyte = 1024 * 1024;

/// Bytes of which no piece is like another.
QByteArray Bytes(qint64 length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = char(state >> 24);
    }
    return bytes;
}

/// All that a splitter tells, in order.
QStringList Told(CBFileSplitter& splitter, const std::function<void()>& work)
{
    QStringList told;
    QObject listener;
    QObject::connect(&splitter, &CBFileSplitter::TotalChunks, &listener,
                     [&](int total) { told << u"of %1"_s.arg(total); });
    QObject::connect(&splitter, &CBFileSplitter::Progress, &listener,
                     [&](int chunk) { told << QString::number(chunk); });
    QObject::connect(&splitter, &CBFileSplitter::NextVolume, &listener, [&](int volume, qint64 value, bool creating) {
        told << u"%1 %2: %3"_s.arg(creating ? u"makes"_s : u"joins"_s).arg(volume).arg(value);
    });
    work();
    return told;
}

} // namespace

/// Cutting files into volumes, and joining these.
class TestCBFileSplitter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(File(), "0123456789");
        m_before = ContentsOf(Folder());
    }
    void cleanup() { m_home.reset(); }

    void file_isCutIntoVolumes_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QList<QByteArray>>("volumes");
        QTest::newRow("even") << qint64(5) << QList<QByteArray>{"01234", "56789"};
        QTest::newRow("a rest") << qint64(4) << QList<QByteArray>{"0123", "4567", "89"};
        QTest::newRow("a rest of one") << qint64(3) << QList<QByteArray>{"012", "345", "678", "9"};
        QTest::newRow("one byte each") << qint64(1)
                                       << QList<QByteArray>{"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
        QTest::newRow("all of it") << qint64(10) << QList<QByteArray>{"0123456789"};
        QTest::newRow("more than it has") << qint64(11) << QList<QByteArray>{"0123456789"};
        QTest::newRow("as much as can be") << std::numeric_limits<qint64>::max() << QList<QByteArray>{"0123456789"};
    }
    void file_isCutIntoVolumes()
    {
        QFETCH(qint64, size);
        QFETCH(QList<QByteArray>, volumes);
        Contents expected;
        for (qsizetype i = 0; i < volumes.size(); ++i)
            expected.insert(u"größe.zip.%1"_s.arg(i + 1, 3, 10, QLatin1Char('0')), volumes[i]);
        CBFileSplitter splitter;
        QCOMPARE(splitter.Split(File(), size), File(u".001"_s));
        QCOMPARE(ContentsOf(Folder()), expected);
        QCOMPARE(splitter.Merge(File(u".001"_s)), File());
        expected.insert(u"größe.zip"_s, "0123456789");
        QCOMPARE(ContentsOf(Folder()), expected);
    }

    void sizeZero_leavesTheFile()
    {
        CBFileSplitter splitter;
        QString first;
        QCOMPARE(Told(splitter, [&] { first = splitter.Split(File(), 0); }), QStringList());
        QCOMPARE(first, File());
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void emptyFile_isOneEmptyVolume()
    {
        WriteFile(File(), {});
        CBFileSplitter splitter;
        QCOMPARE(Told(splitter, [&] { splitter.Split(File(), 5); }), (QStringList{u"of 0"_s, u"makes 1: 0"_s}));
        QCOMPARE(ContentsOf(Folder()), (Contents{{u"größe.zip.001"_s, {}}}));
        QCOMPARE(splitter.Merge(File(u".001"_s)), File());
        QCOMPARE(ContentsOf(Folder()), (Contents{{u"größe.zip.001"_s, {}}, {u"größe.zip"_s, {}}}));
    }

    void mostVolumes_areThatMany()
    {
        const QByteArray bytes = Bytes(CBFileSplitter::MostVolumes * 2);
        WriteFile(File(), bytes);
        CBFileSplitter splitter;
        QCOMPARE(splitter.Split(File(), 2), File(u".001"_s));
        QCOMPARE(ContentsOf(Folder()).size(), 999);
        QCOMPARE(ReadFile(File(u".999"_s)), bytes.last(2));
        QCOMPARE(ReadFile(splitter.Merge(File(u".500"_s))), bytes);
    }

    void nameWithPlaceMarkers_isKept()
    {
        const QString file = m_home->Path(u"in/100%2 %1.%3"_s);
        WriteFile(file, "0123456789");
        CBFileSplitter splitter;
        QCOMPARE(splitter.Split(file, 5), file + u".001"_s);
        QCOMPARE(ReadFile(file + u".002"_s), "56789");
        QCOMPARE(splitter.Merge(file + u".002"_s), file);
        QCOMPARE(ReadFile(file), "0123456789");
    }

    // Events

    void work_isTold()
    {
        WriteFile(File(), Bytes(5 * Mebibyte / 2));
        CBFileSplitter splitter;
        QCOMPARE(Told(splitter, [&] { splitter.Split(File(), 3 * Mebibyte / 2); }),
                 (QStringList{u"of 3"_s, u"makes 1: 1572864"_s, u"1"_s, u"makes 2: 1048576"_s, u"2"_s, u"3"_s}));
        QCOMPARE(Told(splitter, [&] { splitter.Merge(File(u".001"_s)); }),
                 (QStringList{u"of 3"_s, u"joins 1: 1572864"_s, u"1"_s, u"joins 2: 1048576"_s, u"2"_s, u"3"_s}));
    }

    void advance_isToldBytesUpToAll()
    {
        WriteFile(File(), Bytes(5 * Mebibyte / 2));
        CBFileSplitter splitter;
        for (const bool splits : {true, false}) {
            RecordedWork work;
            const QString made = splits ? splitter.Split(File(), Mebibyte, work)
                                        : splitter.Merge(File(u".001"_s), work);
            QVERIFY(!made.isEmpty());
            const QList<qint64>& done = work.Done;
            QCOMPARE(work.Totals, QList<qint64>(done.size(), 5 * Mebibyte / 2));
            QVERIFY(std::is_sorted(done.begin(), done.end()));
            QVERIFY(done.first() > 0);
            QCOMPARE(done.last(), 5 * Mebibyte / 2);
        }
    }

    // Other programs join them

    void volumes_areJoinedByOtherPrograms_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("cat") << u"cat 'größe.zip'.* >joined"_s;
        if (!QStandardPaths::findExecutable(u"7zz"_s).isEmpty())
            QTest::newRow("7zz") << u"7zz x -so -tsplit 'größe.zip.001' >joined"_s;
    }
    void volumes_areJoinedByOtherPrograms()
    {
        QFETCH(QString, command);
        const QByteArray bytes = Bytes(Mebibyte + 5);
        WriteFile(File(), bytes);
        CBFileSplitter().Split(File(), 100000);
        QProcess shell;
        shell.setWorkingDirectory(Folder());
        shell.start(u"sh"_s, {u"-c"_s, command});
        QVERIFY(shell.waitForFinished());
        QVERIFY2(shell.exitCode() == 0, shell.readAllStandardError());
        QCOMPARE(ReadFile(Folder() + u"/joined"_s), bytes);
    }

    // Leftovers of earlier work

    void volumesOfAnEarlierSplit_go()
    {
        CBFileSplitter splitter;
        splitter.Split(File(), 1);
        WriteFile(File(), "abcdef");
        WriteFile(File(u".1000"_s), "no volume");
        WriteFile(m_home->Path(u"in/größe.zipx.004"_s), "of another");
        splitter.Split(File(), 4);
        QCOMPARE(ContentsOf(Folder()), (Contents{{u"größe.zip.001"_s, "abcd"},
                                                 {u"größe.zip.002"_s, "ef"},
                                                 {u"größe.zip.1000"_s, "no volume"},
                                                 {u"größe.zipx.004"_s, "of another"}}));
    }

    void joinedFile_getsANameThatIsFree()
    {
        CBFileSplitter splitter;
        splitter.Split(File(), 4);
        for (const QString& name : {u"größe.zip"_s, u"größe(1).zip"_s, u"größe(2).zip"_s}) {
            const QString joined = m_home->Path(u"in/"_s + name);
            QCOMPARE(splitter.Merge(File(u".002"_s)), joined);
            QCOMPARE(ReadFile(joined), "0123456789");
            WriteFile(joined, "somebody's");
        }
        QCOMPARE(ReadFile(File()), "somebody's");
        QCOMPARE(ContentsOf(Folder()).size(), 6);
    }

    // Failures

    void splitThatCantBe_leavesTheFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QString>("why");
        QTest::newRow("too many") << u"large"_s << qint64(1) << u"volumes of 1 bytes would be 1000; 999 are the most"_s;
        QTest::newRow("missing") << u"none"_s << qint64(1) << u"/none': No such file or directory"_s;
        QTest::newRow("folder") << u"folder"_s << qint64(1) << u"/folder': it is no file"_s;
        QTest::newRow("volume is a folder")
            << u"a"_s << qint64(2) << u"/a.002' can't be written: a folder stands there"_s;
    }
    void splitThatCantBe_leavesTheFile()
    {
        QFETCH(QString, name);
        QFETCH(qint64, size);
        QFETCH(QString, why);
        WriteFile(m_home->Path(u"in/large"_s), QByteArray(1000, 'x'));
        WriteFile(m_home->Path(u"in/folder/file"_s), "x");
        WriteFile(m_home->Path(u"in/a"_s), "abcdef");
        WriteFile(m_home->Path(u"in/a.001"_s), "of an earlier split");
        WriteFile(m_home->Path(u"in/a.002/file"_s), "x");
        m_before = ContentsOf(Folder());
        CBFileSplitter splitter;
        QB_VERIFY_REFUSES(splitter.Split(m_home->Path(u"in/"_s + name), size), why);
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void volumesThatDoNotFollow_areLeftAlone()
    {
        WriteFile(File(), Bytes(20));
        for (const QString& number : {u".003"_s, u".004"_s, u".100"_s})
            WriteFile(File(number), "was there");
        QCOMPARE(CBFileSplitter().Split(File(), 10), File(u".001"_s));
        QVERIFY(!QFile::exists(File(u".003"_s)) && !QFile::exists(File(u".004"_s)));
        QCOMPARE(ReadFile(File(u".100"_s)), "was there");
    }

    void negativeSize_isAnInvalidCall_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("-1") << qint64(-1);
        QTest::newRow("least") << std::numeric_limits<qint64>::min();
    }
    void negativeSize_isAnInvalidCall()
    {
        QFETCH(qint64, size);
        const QString raised = Raised([&] { CBFileSplitter().Split(File(), size); });
        QCOMPARE(raised, u"5: A volume can't have %1 bytes. Nothing was changed."_s.arg(size));
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void fileThatGrowsOrShrinks_isNotSplit_data()
    {
        QTest::addColumn<QByteArray>("later");
        QTest::newRow("grows") << "0123456789and more"_ba;
        QTest::newRow("shrinks") << "01234"_ba;
    }
    void fileThatGrowsOrShrinks_isNotSplit()
    {
        QFETCH(QByteArray, later);
        CBFileSplitter splitter;
        connect(&splitter, &CBFileSplitter::NextVolume, this, [&](int number) {
            if (number == 2)
                WriteFile(File(), later);
        });
        QB_VERIFY_REFUSES(splitter.Split(File(), 4), u"größe.zip': "_s);
        QCOMPARE(ContentsOf(Folder()), (Contents{{u"größe.zip"_s, later}}));
    }

    void joinThatCantBe_leavesNothing_data()
    {
        QTest::addColumn<Contents>("volumes");
        QTest::addColumn<QString>("why");
        const QString missing = u"': this volume is missing; the volumes can't be joined without it"_s;
        const QString odd =
            u"': this volume has another size than the first; it is incomplete or belongs to another file"_s;
        QTest::newRow("first missing") << Contents{{u"v.002"_s, "ab"}} << u"/v.001"_s + missing;
        QTest::newRow("middle missing") << Contents{{u"v.001"_s, "ab"}, {u"v.002"_s, "ab"}, {u"v.004"_s, "ab"}}
                                        << u"/v.003"_s + missing;
        QTest::newRow("all but the last missing")
            << Contents{{u"v.001"_s, "ab"}, {u"v.999"_s, "ab"}} << u"/v.002"_s + missing;
        QTest::newRow("middle is a folder")
            << Contents{{u"v.001"_s, "ab"}, {u"v.002/x"_s, "ab"}, {u"v.003"_s, "ab"}} << u"/v.002"_s + missing;
        QTest::newRow("middle smaller") << Contents{{u"v.001"_s, "ab"}, {u"v.002"_s, "a"}, {u"v.003"_s, "a"}}
                                        << u"/v.002"_s + odd;
        QTest::newRow("middle larger") << Contents{{u"v.001"_s, "ab"}, {u"v.002"_s, "abc"}, {u"v.003"_s, "a"}}
                                       << u"/v.002"_s + odd;
        QTest::newRow("last larger") << Contents{{u"v.001"_s, "ab"}, {u"v.002"_s, "ab"}, {u"v.003"_s, "abc"}}
                                     << u"/v.003"_s + odd;
    }
    void joinThatCantBe_leavesNothing()
    {
        QFETCH(Contents, volumes);
        QFETCH(QString, why);
        for (auto volume = volumes.cbegin(); volume != volumes.cend(); ++volume)
            WriteFile(m_home->Path(u"in/"_s + volume.key()), volume.value());
        const QString any = volumes.contains(u"v.001"_s) ? u"in/v.001"_s : u"in/v.002"_s;
        m_before = ContentsOf(Folder());
        QB_VERIFY_REFUSES(CBFileSplitter().Merge(m_home->Path(any)), why);
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void volumeThatShrinks_leavesNothing()
    {
        CBFileSplitter splitter;
        splitter.Split(File(), 4);
        connect(&splitter, &CBFileSplitter::NextVolume, this, [&] { WriteFile(File(u".002"_s), "45"); });
        QB_VERIFY_REFUSES(splitter.Merge(File(u".001"_s)), u"größe.zip.002': it ends early"_s);
        QCOMPARE(ContentsOf(Folder()).keys(),
                 (QStringList{u"größe.zip.001"_s, u"größe.zip.002"_s, u"größe.zip.003"_s}));
    }

    void name_saysWhatIsAVolume_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isVolume");
        QTest::newRow("first") << u"a.001"_s << true;
        QTest::newRow("last") << u"a.999"_s << true;
        QTest::newRow("with an extension") << u"a b.zip.010"_s << true;
        QTest::newRow("dots") << u"a..001"_s << true;
        QTest::newRow("zero") << u"a.000"_s << false;
        QTest::newRow("two digits") << u"a.01"_s << false;
        QTest::newRow("four digits") << u"a.0001"_s << false;
        QTest::newRow("a letter") << u"a.00a"_s << false;
        QTest::newRow("digits of another script") << u"a.٠٠١"_s << false;
        QTest::newRow("no dot") << u"a001"_s << false;
        QTest::newRow("nothing before") << u".001"_s << false;
        QTest::newRow("more behind") << u"a.001.zip"_s << false;
        QTest::newRow("a line feed behind") << u"a.001\n"_s << false;
    }
    void name_saysWhatIsAVolume()
    {
        QFETCH(QString, name);
        QFETCH(bool, isVolume);
        const QString path = m_home->Path(u"in/"_s + name);
        QVERIFY(!CBFileSplitter::IsVolume(path)); // is not there
        WriteFile(path, "x");
        QCOMPARE(CBFileSplitter::IsVolume(path), isVolume);
        if (isVolume)
            return;
        m_before = ContentsOf(Folder());
        QCOMPARE(CBFileSplitter().Merge(path), QString());
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void folder_isNoVolume()
    {
        WriteFile(m_home->Path(u"in/a.001/file"_s), "x");
        QVERIFY(!CBFileSplitter::IsVolume(m_home->Path(u"in/a.001"_s)));
        QCOMPARE(CBFileSplitter().Merge(m_home->Path(u"in/a.001"_s)), QString());
    }

    // Cancelled, and no room

    void cancelled_leavesNothing_data()
    {
        QTest::addColumn<int>("call");
        QTest::newRow("at first") << 1;
        QTest::newRow("later") << 2;
        QTest::newRow("at the end") << 3;
    }
    void cancelled_leavesNothing()
    {
        QFETCH(int, call);
        WriteFile(File(), Bytes(3 * Mebibyte));
        WriteFile(File(u".001"_s), "of an earlier split");
        m_before = ContentsOf(Folder());
        RecordedWork work;
        work.Ends = [&](qint64 done) { return done >= call * Mebibyte; };
        CBFileSplitter splitter;
        QCOMPARE(splitter.Split(File(), Mebibyte, work), QString());
        QVERIFY(ContentsOf(Folder()) == m_before);
        splitter.Split(File(), Mebibyte);
        m_before = ContentsOf(Folder());
        QCOMPARE(splitter.Merge(File(u".001"_s), work), QString());
        QVERIFY(ContentsOf(Folder()) == m_before);
    }

    void fullDisk_leavesTheFile()
    {
        QB_VERIFY_REFUSES(const FileSizeLimit full(3);
                          CBFileSplitter().Split(File(), 4), u"größe.zip.001': File too large."_s);
        QCOMPARE(ContentsOf(Folder()), m_before);
        CBFileSplitter().Split(File(), 4);
        m_before = ContentsOf(Folder());
        QB_VERIFY_REFUSES(const FileSizeLimit full(5);
                          CBFileSplitter().Merge(File(u".001"_s)), u"größe.zip': File too large."_s);
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void lockedFolder_keepsTheFile()
    {
        WriteFile(m_home->Path(u"in/v.001"_s), "volume");
        m_before = ContentsOf(Folder());
        const QFile::Permissions all = QFile::Permissions(0x7777);
        QVERIFY(QFile::setPermissions(m_home->Path(), all)
                && QFile::setPermissions(Folder(), QFile::Permissions(0x5555)));
        {
            const OrdinaryUser user;
            QB_VERIFY_REFUSES(CBFileSplitter().Split(File(), 4), u"can't be written: Permission denied"_s);
            QB_VERIFY_REFUSES(CBFileSplitter().Merge(m_home->Path(u"in/v.001"_s)), u"/v': Permission denied"_s);
        }
        QVERIFY(QFile::setPermissions(Folder(), all)); // so that it can be cleared away
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void unreadableFile_isNotSplit()
    {
        QVERIFY(QFile::setPermissions(m_home->Path(), QFile::Permissions(0x7777))
                && QFile::setPermissions(Folder(), QFile::Permissions(0x7777)));
        QVERIFY(QFile::setPermissions(File(), {}));
        {
            const OrdinaryUser user;
            QB_VERIFY_REFUSES(CBFileSplitter().Split(File(), 4), u"größe.zip': Permission denied"_s);
        }
        QVERIFY(QFile::setPermissions(File(), QFile::Permissions(0x7777)));
        QCOMPARE(ContentsOf(Folder()), m_before);
    }

    void version_isNamed() { QCOMPARE(CBFileSplitter().VersionInfo(), u"CBFileSplitter 1"_s); }

private:
    QString Folder() const { return m_home->Path(u"in"_s); }
    QString File(const QString& number = {}) const { return m_home->Path(u"in/größe.zip"_s + number); }

    std::unique_ptr<TemporaryHome> m_home;
    Contents m_before;
};

QTEST_GUILESS_MAIN(TestCBFileSplitter)
#include "tst_cbfilesplitter.moc"
