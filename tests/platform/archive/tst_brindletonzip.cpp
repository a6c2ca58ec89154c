#include "platform/archive/BrindletonZip.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"

#include <QProcess>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Contents = QMap<QString, QByteArray>;

/// The lines of progress that a work tells, each with its number before it.
QStringList LinesOf(BrindletonZip& zip, const std::function<void()>& work)
{
    QStringList lines;
    const auto told = QObject::connect(&zip, &BrindletonZip::Progress, &zip,
                                       [&](int fileNo, const QString& text) { lines << u"%1|"_s.arg(fileNo) + text; });
    work();
    QObject::disconnect(told);
    return lines;
}

/// What a Python program prints of an archive, without a line feed at its end.
QString AskPython(const QString& archive, const QString& program)
{
    QProcess python;
    python.start(u"python3"_s,
                 {u"-c"_s, u"import sys, zipfile; z = zipfile.ZipFile(sys.argv[1])\n"_s + program, archive});
    python.waitForFinished();
    return QString::fromUtf8(python.readAllStandardOutput() + python.readAllStandardError()).trimmed();
}

} // namespace

/// Packing files into an archive.
class TestBrindletonZip : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(m_home->Path(u"in/größe 漢字.txt"_s), Text);
        WriteFile(m_home->Path(u"in/sub/b.bin"_s), QByteArray("\0\1\2", 3));
        WriteFile(m_home->Path(u"in/empty"_s), {});
        m_zip = std::make_unique<BrindletonZip>();
        m_zip->SetZipFileName(Archive());
        m_zip->SetBaseDirectory(m_home->Path(u"in"_s));
    }
    void cleanup()
    {
        m_zip.reset();
        m_home.reset();
    }

    void packedFiles_comeBackAsTheyWere()
    {
        AddAll();
        const Contents before = ContentsOf(m_home->Path());
        QVERIFY(m_zip->Zip());
        QCOMPARE(m_zip->ZipFileName(), Archive());
        QVERIFY(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"out"_s)));
        QCOMPARE(ContentsOf(m_home->Path(u"out"_s)), ContentsOf(m_home->Path(u"in"_s)));
        QVERIFY(QDir(m_home->Path(u"out"_s)).removeRecursively() && QFile::remove(Archive()));
        QCOMPARE(ContentsOf(m_home->Path()), before); // and nothing else
    }

    void otherProgram_readsTheArchive()
    {
        AddAll();
        QVERIFY(m_zip->Zip());
        QCOMPARE(
            AskPython(
                Archive(),
                u"print(z.testzip(), *[(i.filename, i.file_size, i.compress_type, i.flag_bits & 2048 > 0) for i in "
                "z.infolist()])"_s),
            u"None ('größe 漢字.txt', 13000, 8, True) ('sub/b.bin', 3, 8, False) ('empty', 0, 8, False)"_s);
        QCOMPARE(AskPython(Archive(), u"print(z.read('größe 漢字.txt') == b'line of text\\n' * 1000)"_s), u"True"_s);
    }

    void archiveOfAnotherProgram_isExtracted()
    {
        QProcess python;
        python.start(u"python3"_s, {u"-c"_s,
                                    u"import sys, zipfile\n"
                                    "z = zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED)\n"
                                    "z.writestr('größe/漢字.txt', 'text ' * 1000)\n"
                                    "z.writestr('plain', b'x', zipfile.ZIP_STORED)\n"
                                    "z.close()"_s,
                                    Archive()});
        QVERIFY(python.waitForFinished());
        BrindletonZip unzip;
        QVERIFY(unzip.ExtractTo(Archive(), m_home->Path(u"out"_s)));
        QCOMPARE(ContentsOf(m_home->Path(u"out"_s)),
                 (Contents{
                     {u"größe/"_s, {}}, {u"größe/漢字.txt"_s, QByteArray("text ").repeated(1000)}, {u"plain"_s, "x"}}));
    }

    // Lines

    void packing_isTold()
    {
        AddAll();
        const QStringList lines = LinesOf(*m_zip, [&] { m_zip->Zip(); });
        const qint64 size = QFileInfo(Archive()).size();
        const int percent = int((13003 - size) * 100 / 13003);
        QVERIFY(percent > 90);
        QCOMPARE(lines, (QStringList{u"1|  adding: größe 漢字.txt "_s, u"2|  adding: sub/b.bin "_s,
                                     u"3|  adding: empty "_s, u"3| (deflated %1%)\r\n"_s.arg(percent),
                                     u"3| (in=13003) (out=%1) (deflated %2%)"_s.arg(size).arg(percent)}));
    }

    void packingWithoutCompression_isTold()
    {
        m_zip->SetZipOptionA(true);
        m_zip->AddFile(In(u"größe 漢字.txt"_s));
        const QStringList lines = LinesOf(*m_zip, [&] { m_zip->Zip(); });
        QCOMPARE(lines, (QStringList{u"1|  adding: größe 漢字.txt "_s, u"1| (stored 0%)\r\n"_s,
                                     u"1| (in=13000) (out=%1) (deflated 0%)"_s.arg(QFileInfo(Archive()).size())}));
    }

    void packingOfNothingButEmptyFiles_isTold()
    {
        m_zip->AddFile(In(u"empty"_s));
        const QStringList lines = LinesOf(*m_zip, [&] { m_zip->Zip(); });
        QCOMPARE(lines, (QStringList{u"1|  adding: empty "_s, u"1| (deflated 0%)\r\n"_s,
                                     u"1| (in=0) (out=%1) (deflated 0%)"_s.arg(QFileInfo(Archive()).size())}));
    }

    void extracting_isTold()
    {
        AddAll();
        for (const bool storeOnly : {false, true}) {
            m_zip->SetZipOptionA(storeOnly);
            QVERIFY(m_zip->Zip());
            BrindletonZip unzip;
            const QStringList lines = LinesOf(unzip, [&] { unzip.ExtractTo(Archive(), m_home->Path(u"out"_s)); });
            const QString verb = storeOnly ? u"| extracting: "_s : u"|  inflating: "_s;
            QCOMPARE(lines,
                     (QStringList{u"1"_s + verb + u".\\größe 漢字.txt       "_s,
                                  u"2"_s + verb + u".\\sub\\b.bin       "_s, u"3"_s + verb + u".\\empty       "_s}));
        }
    }

    // Names

    void optionA_storesFiles_data()
    {
        QTest::addColumn<bool>("storeOnly");
        QTest::newRow("stored") << true;
        QTest::newRow("deflated") << false;
    }
    void optionA_storesFiles()
    {
        QFETCH(bool, storeOnly);
        m_zip->SetZipOptionA(storeOnly);
        m_zip->AddFile(In(u"größe 漢字.txt"_s));
        QVERIFY(m_zip->Zip());
        const ArchiveEntry entry = m_zip->Entries(Archive()).at(0);
        QCOMPARE(entry.IsStored, storeOnly);
        QCOMPARE(entry.Size, 13000);
        QCOMPARE(entry.CompressedSize == 13000, storeOnly);
        QCOMPARE(QFileInfo(Archive()).size() > 13000, storeOnly);
    }

    void names_areRelativeToTheBase_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<bool>("bareNames");
        QTest::addColumn<QString>("name");
        const QString bare = u"b.bin"_s;
        QTest::newRow("folder") << u"|/in"_s << false << u"sub/b.bin"_s;
        QTest::newRow("with a separator") << u"|/in/"_s << false << u"sub/b.bin"_s;
        QTest::newRow("in another form") << u"|/data/..//in"_s << false << u"sub/b.bin"_s;
        QTest::newRow("folder of the file") << u"|/in/sub"_s << false << bare;
        QTest::newRow("elsewhere") << u"|/data"_s << false << bare;
        QTest::newRow("begins alike") << u"|/i"_s << false << bare;
        QTest::newRow("none") << QString() << false << bare;
        QTest::newRow("relative") << u"in"_s << false << u"sub/b.bin"_s;
        QTest::newRow("that of the process") << u"."_s << false << u"in/sub/b.bin"_s;
        QTest::newRow("topmost") << u"/"_s << false << u"|/in/sub/b.bin"_s;
        QTest::newRow("bare names") << u"|/in"_s << true << bare;
    }
    void names_areRelativeToTheBase()
    {
        QFETCH(QString, base);
        QFETCH(bool, bareNames);
        QFETCH(QString, name);
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_home->Path()));
        m_zip->SetBaseDirectory(base.replace(u'|', m_home->Path()));
        m_zip->SetZipOptionB(bareNames);
        m_zip->AddFile(u"in/sub/../sub/b.bin"_s);
        QVERIFY(m_zip->Zip());
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(NamesIn(Archive()), QStringList{name.replace(u"|/"_s, m_home->Path().mid(1) + u'/')});
    }

    /// What the system allows for a name and an archive does not is packed all the same.
    void oddNames_comeBack()
    {
        const QString names[] = {u"a\\b"_s, u"c:d"_s, u"line\nfeed"_s, u"turn\u202etxt.exe"_s};
        for (const QString& name : names) {
            WriteFile(In(name), name.toUtf8());
            m_zip->AddFile(In(name));
        }
        QVERIFY(m_zip->Zip());
        QVERIFY(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"out"_s)));
        QCOMPARE(ContentsOf(m_home->Path(u"out"_s)), (Contents{{u"a_b"_s, "a\\b"},
                                                               {u"c_d"_s, "c:d"},
                                                               {u"line_feed"_s, "line\nfeed"},
                                                               {u"turn_txt.exe"_s, names[3].toUtf8()}}));
    }

    void sameNames_areNumbered()
    {
        WriteFile(In(u"a.txt"_s), "0");
        WriteFile(In(u"x/a.txt"_s), "1");
        WriteFile(In(u"y/a.txt"_s), "2");
        WriteFile(m_home->Path(u"elsewhere/a.txt"_s), "3");
        m_zip->AddFile(In(u"a.txt"_s));
        m_zip->AddFile(m_home->Path(u"elsewhere/a.txt"_s));
        m_zip->AddFile(In(u"x/a.txt"_s));
        m_zip->AddFile(In(u"x/a.txt"_s));
        QVERIFY(m_zip->Zip());
        QCOMPARE(NamesIn(Archive()), (QStringList{u"a.txt"_s, u"a(1).txt"_s, u"x/a.txt"_s, u"x/a(1).txt"_s}));
        m_zip->ClearFileList();
        m_zip->SetZipOptionB(true);
        for (const QString& name : {u"y/a.txt"_s, u"x/a.txt"_s, u"a.txt"_s})
            m_zip->AddFile(In(name));
        QVERIFY(m_zip->Zip());
        QVERIFY(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"out"_s)));
        QCOMPARE(ContentsOf(m_home->Path(u"out"_s)),
                 (Contents{{u"a.txt"_s, "2"}, {u"a(1).txt"_s, "1"}, {u"a(2).txt"_s, "0"}}));
    }

    void dateAndRightToRun_areKept()
    {
        const QDateTime odd(QDate(2021, 7, 8), QTime(9, 10, 11));
        QFile file(In(u"sub/b.bin"_s));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(odd, QFileDevice::FileModificationTime));
        QVERIFY(file.setPermissions(file.permissions() | QFile::ExeOwner));
        AddAll();
        QVERIFY(m_zip->Zip());
        QVERIFY(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"out"_s)));
        const QFileInfo back(m_home->Path(u"out/sub/b.bin"_s));
        QVERIFY2(qAbs(back.lastModified().secsTo(odd)) < 2,
                 qPrintable(back.lastModified().toString())); // archives count in two seconds
        QVERIFY(back.isExecutable());
        QVERIFY(!QFileInfo(m_home->Path(u"out/empty"_s)).isExecutable());
    }

    void archive_hasTheRightsOfAnyFile()
    {
        AddAll();
        QVERIFY(m_zip->Zip());
        QCOMPARE(QFileInfo(Archive()).permissions(), QFileInfo(In(u"empty"_s)).permissions());
    }

    void archive_isMadeAgain()
    {
        WriteFile(Archive(), "what was there");
        AddAll();
        QVERIFY(m_zip->Zip());
        m_zip->ClearFileList();
        m_zip->AddFile(In(u"empty"_s));
        QVERIFY(m_zip->Zip());
        QCOMPARE(NamesIn(Archive()), QStringList{u"empty"_s});
    }

    void moreFilesThan16Bits_arePacked()
    {
        constexpr int Folders = 256; // links to the same one
        constexpr int Files = 257;
        for (int i = 0; i < Files; ++i)
            WriteFile(In(u"sub/%1"_s.arg(i)), {});
        for (int i = 0; i < Folders; ++i)
            QVERIFY(QFile::link(In(u"sub"_s), In(QString::number(i))));
        for (int i = 0; i < Folders * Files; ++i)
            m_zip->AddFile(In(u"%1/%2"_s.arg(i / Files).arg(i % Files)));
        m_zip->SetZipOptionA(true);
        QVERIFY(m_zip->Zip());
        QCOMPARE(AskPython(Archive(), u"n = z.namelist(); print(len(n), n[0], n[-1])"_s), u"65792 0/0 255/256"_s);
    }

    // Failures

    void archiveThatCantBeMade_changesNothing_data()
    {
        QTest::addColumn<QString>("archive");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("why");
        QTest::newRow("missing file") << u"the archive.zip"_s << u"in/none"_s << u"there is no file '|/in/none'"_s;
        QTest::newRow("folder") << u"the archive.zip"_s << u"in/sub"_s << u"there is no file '|/in/sub'"_s;
        QTest::newRow("no name") << u"the archive.zip"_s << u""_s << u"there is no file ''"_s;
        QTest::newRow("no file at all") << u"the archive.zip"_s << QString() << u"there is no file to put in it"_s;
        QTest::newRow("missing folder") << u"none/new.zip"_s << u"in/empty"_s << u"No such file or directory"_s;
        QTest::newRow("folder in its place") << u"in/sub"_s << u"in/empty"_s << u"a folder stands there"_s;
    }
    void archiveThatCantBeMade_changesNothing()
    {
        QFETCH(QString, archive);
        QFETCH(QString, file);
        QFETCH(QString, why);
        WriteFile(Archive(), "what was there");
        const Contents before = ContentsOf(m_home->Path());
        m_zip->SetZipFileName(m_home->Path(archive));
        if (!file.isNull()) {
            m_zip->AddFile(In(u"empty"_s));
            m_zip->AddFile(file.isEmpty() ? file : m_home->Path(file));
        }
        QB_VERIFY_REFUSES(m_zip->Zip(), why.replace(u'|', m_home->Path()));
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void unreadableFile_isRefused()
    {
        const QFile::Permissions all = QFile::Permissions(0x7777);
        for (const QString& path : {m_home->Path(), m_home->Path(u"in"_s), m_home->Path(u"in/sub"_s)})
            QVERIFY(QFile::setPermissions(path, all));
        QVERIFY(QFile::setPermissions(In(u"sub/b.bin"_s), {}));
        WriteFile(Archive(), "what was there");
        AddAll();
        {
            const OrdinaryUser user;
            QB_VERIFY_REFUSES(m_zip->Zip(), u"the file '%1' can't be read"_s.arg(In(u"sub/b.bin"_s)));
        }
        QVERIFY(QFile::setPermissions(In(u"sub/b.bin"_s), all));
        QCOMPARE(ContentsOf(m_home->Path()).keys().filter(QRegularExpression(u"zip"_s)),
                 QStringList{u"the archive.zip"_s});
        QCOMPARE(ReadFile(Archive()), "what was there");
    }

    void fileThatGoesMeanwhile_isRefused()
    {
        WriteFile(Archive(), "what was there");
        AddAll();
        connect(m_zip.get(), &BrindletonZip::Progress, this, [&] { QFile::remove(In(u"sub/b.bin"_s)); });
        QB_VERIFY_REFUSES(m_zip->Zip(), u"No such file or directory"_s);
        QCOMPARE(ContentsOf(m_home->Path()).keys().filter(QRegularExpression(u"zip"_s)),
                 QStringList{u"the archive.zip"_s});
        QCOMPARE(ReadFile(Archive()), "what was there");
    }

    void fullDisk_leavesWhatWasThere()
    {
        WriteFile(Archive(), "what was there");
        m_zip->SetZipOptionA(true);
        AddAll();
        const Contents before = ContentsOf(m_home->Path());
        QB_VERIFY_REFUSES(const FileSizeLimit full(8192); m_zip->Zip(), u"File too large"_s);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void cancelled_leavesWhatWasThere_data()
    {
        QTest::addColumn<int>("call");
        QTest::addColumn<bool>("isThere");
        QTest::newRow("at first") << 1 << false;
        QTest::newRow("at first, with an old one") << 1 << true;
        QTest::newRow("later") << 2 << false;
        QTest::newRow("later, with an old one") << 2 << true;
    }
    void cancelled_leavesWhatWasThere()
    {
        QFETCH(int, call);
        QFETCH(bool, isThere);
        if (isThere)
            WriteFile(Archive(), "what was there");
        WriteFile(In(u"large"_s), Large());
        AddAll();
        m_zip->AddFile(In(u"large"_s));
        const Contents before = ContentsOf(m_home->Path());
        RecordedWork work;
        work.Ends = [&](qint64) { return work.Done.size() == call; };
        QVERIFY(!m_zip->Zip(work));
        QCOMPARE(work.Done.size(), call);
        QVERIFY(ContentsOf(m_home->Path()) == before);
    }

    void advance_isToldBytesOfAll()
    {
        WriteFile(In(u"large"_s), Large());
        m_zip->AddFile(In(u"large"_s));
        RecordedWork work;
        QVERIFY(m_zip->Zip(work));
        const QList<qint64>& done = work.Done;
        QCOMPARE(work.Totals, QList<qint64>(done.size(), 12000000));
        QVERIFY(done.size() > 1);
        QVERIFY(std::is_sorted(done.begin(), done.end()));
        QVERIFY(done.last() > 0 && done.last() <= 12000000);
    }

    void version_namesTheLibrary() { QVERIFY(m_zip->VersionInfo().startsWith(u"BrindletonZip, with libzip 1."_s)); }

private:
    static inline const QByteArray Text = QByteArray("line of text\n").repeated(1000);

    /// Bytes that take a while to deflate.
    static QByteArray Large()
    {
        QByteArray bytes(12000000, Qt::Uninitialized);
        quint32 state = 1;
        for (char& byte : bytes) {
            state = state * 1664525u + 1013904223u;
            byte = char(state >> 24);
        }
        return bytes;
    }
    QString Archive() const { return m_home->Path(u"the archive.zip"_s); }
    QString In(const QString& name) const { return m_home->Path(u"in/"_s + name); }
    void AddAll() const
    {
        for (const QString& name : {u"größe 漢字.txt"_s, u"sub/b.bin"_s, u"empty"_s})
            m_zip->AddFile(In(name));
    }
    static QStringList NamesIn(const QString& archive)
    {
        QStringList names;
        for (const ArchiveEntry& entry : BrindletonZip().Entries(archive))
            names << entry.Name;
        return names;
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<BrindletonZip> m_zip;
};

QTEST_GUILESS_MAIN(TestBrindletonZip)
#include "tst_brindletonzip.moc"
