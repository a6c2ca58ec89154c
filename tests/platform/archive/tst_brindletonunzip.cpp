#include "platform/archive/BrindletonZip.h"
#include "support/ArchiveBytes.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Contents = QMap<QString, QByteArray>;

/// Does what a user does, and remembers what was proposed.
class FakeUnzipDialog : public UnzipDialog {
public:
    bool Run(BrindletonZip& engine, const QString& folder, const QString& title) override
    {
        Proposed << engine.UnzipFileName() << folder << title;
        PathBefore = engine.UnzippedPath();
        return Extracts && engine.ExtractTo(engine.UnzipFileName(), folder);
    }

    bool Extracts = true;
    QStringList Proposed;
    QString PathBefore;
};

} // namespace

/// Extracting what an archive holds, and asking what that is.
class TestBrindletonUnzip : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        RawEntry program = ArchiveBytes::DeflatedEntry("sub/b.bin", "program program program");
        program.Mode = S_IFREG | 0755;
        ArchiveBytes archive;
        archive.Add({.Name = "empty folder/", .Mode = S_IFDIR | 0755})
            .Add({.Name = "sub/a.txt", .Data = "A"})
            .Add(program)
            .Add({.Name = "c"});
        WriteFile(Archive(), archive.Bytes());
        m_zip = std::make_unique<BrindletonZip>();
    }
    void cleanup()
    {
        m_zip.reset();
        m_home.reset();
    }

    void archive_isExtractedWhole_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("there") << u"data"_s;
        QTest::newRow("missing") << u"new/ä b"_s;
        QTest::newRow("with a separator") << u"new/"_s;
    }
    void archive_isExtractedWhole()
    {
        QFETCH(QString, folder);
        QCOMPARE(m_zip->FileCount(), 0);
        QCOMPARE(m_zip->UnzippedPath(), QString());
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(folder)));
        QCOMPARE(ContentsOf(m_home->Path(folder)), Whole());
        QCOMPARE(m_zip->FileCount(), 3);
        QCOMPARE(m_zip->UnzippedPath(), m_home->Path(folder));
    }

    void entries_areExtractedByIndex_data()
    {
        QTest::addColumn<QList<quint64>>("indexes");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("one") << QList<quint64>{3} << QStringList{u"c"_s} << QStringList{u"1 extracting: .\\c       "_s};
        QTest::newRow("two, in their order")
            << QList<quint64>{3, 1} << QStringList{u"c"_s, u"sub/"_s, u"sub/a.txt"_s}
            << QStringList{u"1 extracting: .\\sub\\a.txt       "_s, u"2 extracting: .\\c       "_s};
        QTest::newRow("one twice") << QList<quint64>{2, 2} << QStringList{u"sub/"_s, u"sub/b.bin"_s}
                                   << QStringList{u"1  inflating: .\\sub\\b.bin       "_s};
        QTest::newRow("none") << QList<quint64>() << QStringList() << QStringList();
        QTest::newRow("folder") << QList<quint64>{0} << QStringList{u"empty folder/"_s} << QStringList();
    }
    void entries_areExtractedByIndex()
    {
        QFETCH(QList<quint64>, indexes);
        QFETCH(QStringList, lines);
        QStringList told;
        connect(m_zip.get(), &BrindletonZip::Progress, this,
                [&](int fileNo, const QString& text) { told << QString::number(fileNo) + text; });
        QVERIFY(m_zip->ExtractEntries(Archive(), m_home->Path(u"out"_s), indexes));
        QTEST(QStringList(ContentsOf(m_home->Path(u"out"_s)).keys()), "names");
        QCOMPARE(told, lines);
    }

    void optionC_keepsWhatIsThere_data()
    {
        QTest::addColumn<bool>("keepExisting");
        QTest::newRow("kept") << true;
        QTest::newRow("replaced") << false;
    }
    void optionC_keepsWhatIsThere()
    {
        QFETCH(bool, keepExisting);
        WriteFile(m_home->Path(u"out/sub/a.txt"_s), "mine");
        WriteFile(m_home->Path(u"out/other"_s), "other");
        m_zip->SetZipOptionC(keepExisting);
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)));
        Contents expected = Whole();
        expected.insert(u"sub/a.txt"_s, keepExisting ? "mine" : "A");
        expected.insert(u"other"_s, "other");
        QCOMPARE(ContentsOf(m_home->Path(u"out"_s)), expected);
    }

    void dateAndRightToRun_areThoseOfTheArchive()
    {
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)));
        const QFileInfo program(m_home->Path(u"out/sub/b.bin"_s));
        QCOMPARE(program.lastModified(), QDateTime(QDate(2024, 5, 6), QTime(12, 0)));
        QVERIFY(program.isExecutable());
        QVERIFY(!QFileInfo(m_home->Path(u"out/c"_s)).isExecutable());
    }

    void rightsOfOthers_areNotTaken()
    {
        RawEntry entry{.Name = "file", .Data = "x"};
        entry.Mode = S_IFREG | 06777;
        WriteFile(Archive(), ArchiveBytes().Add(entry).Bytes());
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)));
        struct stat state {};
        QCOMPARE(stat(QFile::encodeName(m_home->Path(u"out/file"_s)), &state), 0);
        QCOMPARE(state.st_mode & 07002, mode_t(0));
    }

    // Contents

    void entries_sayWhatIsThere()
    {
        const std::vector<ArchiveEntry> entries = m_zip->Entries(Archive());
        QCOMPARE(entries.size(), size_t(4));
        QCOMPARE(entries[0].Name, u"empty folder"_s);
        QVERIFY(entries[0].IsFolder && !entries[1].IsFolder);
        QCOMPARE(entries[1].Name, u"sub/a.txt"_s);
        QVERIFY(entries[1].IsStored && !entries[2].IsStored);
        QVERIFY(!entries[1].IsExecutable && entries[2].IsExecutable);
        QCOMPARE(entries[2].Index, quint64(2));
        QCOMPARE(entries[2].Size, 23);
        QVERIFY(entries[2].CompressedSize > 0 && entries[2].CompressedSize < 23);
        QCOMPARE(entries[2].Modified, QDateTime(QDate(2024, 5, 6), QTime(12, 0)));
        for (const ArchiveEntry& entry : entries)
            QCOMPARE(entry.Problem, QString());
    }

    void firstFile_isNamed_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QString>("name");
        const RawEntry folder{.Name = "folder/"};
        const RawEntry file{.Name = "folder\\größe"};
        QTest::newRow("file") << ArchiveBytes().Add(file).Add({.Name = "other"}).Bytes() << u"folder/größe"_s;
        QTest::newRow("file after a folder") << ArchiveBytes().Add(folder).Add(file).Bytes() << u"folder/größe"_s;
        QTest::newRow("only a folder") << ArchiveBytes().Add(folder).Bytes() << QString();
        QTest::newRow("nothing") << ArchiveBytes().Bytes() << QString();
    }
    void firstFile_isNamed()
    {
        QFETCH(QByteArray, archive);
        WriteFile(Archive(), archive);
        QTEST(m_zip->FirstFileName(Archive()), "name");
    }

    void mostBytes_growWithTheArchive_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("most");
        constexpr qint64 Gigabyte = 1073741824;
        QTest::newRow("empty") << qint64(0) << Gigabyte;
        QTest::newRow("small") << qint64(5368709) << Gigabyte;
        QTest::newRow("just beyond") << qint64(5368710) << qint64(1073742000);
        QTest::newRow("large") << 10 * Gigabyte << 2000 * Gigabyte;
    }
    void mostBytes_growWithTheArchive()
    {
        QFETCH(qint64, size);
        QTEST(BrindletonZip::MostBytes(size), "most");
    }

    void moreEntriesThan16Bits_areAllThere()
    {
        constexpr int Count = 65600;
        ArchiveBytes archive;
        Contents expected{{u"folder/"_s, {}}};
        for (int i = 0; i < Count; ++i) { // mostly the same folder, as many files take long
            const bool isFile = i % 100 == 50;
            archive.Add({.Name = isFile ? QByteArray::number(i) : "folder/",
                         .Data = isFile ? QByteArray::number(i) : QByteArray()});
            if (isFile)
                expected.insert(QString::number(i), QByteArray::number(i));
        }
        WriteFile(Archive(), archive.Bytes());
        QCOMPARE(m_zip->Entries(Archive()).size(), size_t(Count));
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)));
        QCOMPARE(m_zip->FileCount(), Count / 100);
        QVERIFY(ContentsOf(m_home->Path(u"out"_s)) == expected);
    }

    // Asked by a dialog

    void dialog_isToldTheFolder_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("proposed");
        QTest::newRow("given") << u"given"_s << u"given"_s;
        QTest::newRow("that of the engine") << QString() << u"set"_s;
    }
    void dialog_isToldTheFolder()
    {
        QFETCH(QString, folder);
        QFETCH(QString, proposed);
        m_zip->SetUnzipFileName(Archive());
        m_zip->SetExtractDirectory(m_home->Path(u"set"_s));
        QCOMPARE(m_zip->ExtractDirectory(), m_home->Path(u"set"_s));
        FakeUnzipDialog dialog;
        QVERIFY(m_zip->Unzip(dialog, folder.isEmpty() ? folder : m_home->Path(folder), u"a title"_s));
        QCOMPARE(dialog.Proposed, (QStringList{Archive(), m_home->Path(proposed), u"a title"_s}));
        QCOMPARE(m_zip->UnzippedPath(), m_home->Path(proposed));
        QCOMPARE(ContentsOf(m_home->Path(proposed)), Whole());
    }

    void dialogThatIsCancelled_extractsNothing()
    {
        m_zip->SetUnzipFileName(Archive());
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)));
        FakeUnzipDialog dialog;
        dialog.Extracts = false;
        QVERIFY(!m_zip->Unzip(dialog, m_home->Path(u"other"_s), {}));
        QCOMPARE(dialog.PathBefore, QString());
        QCOMPARE(m_zip->UnzippedPath(), QString());
        QVERIFY(!QFileInfo::exists(m_home->Path(u"other"_s)));
    }

    // Cancelling and failures

    void cancelled_leavesTheFolderAsItWas_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("atFirst");
        QTest::newRow("at first") << u"out"_s << true;
        QTest::newRow("at first, a missing folder") << u"new/deeper"_s << true;
        QTest::newRow("at the end") << u"out"_s << false;
        QTest::newRow("at the end, a missing folder") << u"new/deeper"_s << false;
    }
    void cancelled_leavesTheFolderAsItWas()
    {
        QFETCH(QString, folder);
        QFETCH(bool, atFirst);
        WriteFile(m_home->Path(u"out/c"_s), "mine");
        const Contents before = ContentsOf(m_home->Path());
        RecordedWork work;
        work.Ends = [&](qint64 done) { return atFirst || done == 24; };
        QVERIFY(!m_zip->ExtractTo(Archive(), m_home->Path(folder), work));
        QCOMPARE(work.Totals.last(), 24);
        QCOMPARE(ContentsOf(m_home->Path()), before);
        QCOMPARE(m_zip->UnzippedPath(), QString());
    }

    void advance_isToldBytesUpToAll()
    {
        RecordedWork work;
        QVERIFY(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s), work));
        const QList<qint64>& done = work.Done;
        QVERIFY(std::is_sorted(done.begin(), done.end()));
        QCOMPARE(done.first(), 0);
        QCOMPARE(done.last(), 24);
    }

    void fullDisk_leavesTheFolderAsItWas()
    {
        WriteFile(m_home->Path(u"out/c"_s), "mine");
        const Contents before = ContentsOf(m_home->Path());
        QB_VERIFY_REFUSES(const FileSizeLimit full(10);
                          m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)), u"'sub/b.bin': File too large."_s);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void lockedFolder_isRefused()
    {
        const QFile::Permissions all = QFile::Permissions(0x7777);
        QVERIFY(QDir().mkdir(m_home->Path(u"out"_s)));
        QVERIFY(QFile::setPermissions(m_home->Path(), all)
                && QFile::setPermissions(m_home->Path(u"out"_s), QFile::Permissions(0x5555)));
        {
            const OrdinaryUser user;
            QB_VERIFY_REFUSES(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)),
                              u"can't be written: Permission denied"_s);
        }
        QVERIFY(QFile::setPermissions(m_home->Path(u"out"_s), all)); // so that it can be cleared away
        QCOMPARE(ContentsOf(m_home->Path(u"out"_s)), Contents());
    }

    void unreadableArchive_isRefused()
    {
        QVERIFY(QFile::setPermissions(m_home->Path(), QFile::Permissions(0x7777))
                && QFile::setPermissions(Archive(), {}));
        const OrdinaryUser user;
        QB_VERIFY_REFUSES(m_zip->ExtractTo(Archive(), m_home->Path(u"out"_s)),
                          u"can't be extracted: Can't open file: Permission denied"_s);
        QB_VERIFY_REFUSES(m_zip->Entries(Archive()), u"Permission denied"_s);
        QVERIFY(!QFileInfo::exists(m_home->Path(u"out"_s)));
    }

private:
    QString Archive() const { return m_home->Path(u"the archive.zip"_s); }
    static Contents Whole()
    {
        return {{u"empty folder/"_s, {}},
                {u"sub/"_s, {}},
                {u"sub/a.txt"_s, "A"},
                {u"sub/b.bin"_s, "program program program"},
                {u"c"_s, {}}};
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<BrindletonZip> m_zip;
};

QTEST_GUILESS_MAIN(TestBrindletonUnzip)
#include "tst_brindletonunzip.moc"
