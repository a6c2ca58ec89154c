#include "maintenance/ArchiveProgress.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Shown = QStringList; ///< each "<percent> <text>"

} // namespace

/// How the engines' events become what a user sees.
class TestArchiveProgress : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void libraryLine_isShown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("extracting");
        QTest::addColumn<Shown>("expected");
        QTest::newRow("total") << u" (in=5000) (out=1000) (deflated 80%)"_s << false << Shown{u"100 "_s};
        QTest::newRow("deflated") << u" (deflated 80%)\r\n"_s << false << Shown{u"1 Compacted by  80%"_s};
        QTest::newRow("adding") << u"  adding: Lib060115.qbt "_s << false << Shown{u"50 Compacting Lib060115.qrb"_s};
        QTest::newRow("adding, extracting")
            << u"  adding: Lib060115.qbt "_s << true << Shown{u"50 Extracting Lib060115.qrb"_s};
        QTest::newRow("inflating") << u"  inflating: .\\Lib060115.qbt       "_s << true << Shown();
        QTest::newRow("extracting") << u" extracting: .\\Lib060115.qbt       "_s << true << Shown();
        QTest::newRow("stored") << u" (stored 0%)\r\n"_s << false << Shown();
        QTest::newRow("anything else") << u"hello"_s << false << Shown();
        QTest::newRow("empty") << QString() << false << Shown();
        QTest::newRow("short") << u"  adding"_s << false << Shown{u"50 Compacting qrb"_s};
    }
    void libraryLine_isShown()
    {
        QFETCH(QString, text);
        QFETCH(bool, extracting);
        QFETCH(Shown, expected);
        RecordedWork work;
        LibraryZipProgress progress(work);
        progress.SetExtracting(extracting);
        progress.m_oZip_Progress(text);
        QCOMPARE(work.Said, expected);
    }

    void exportLine_isShown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("extracting");
        QTest::addColumn<Shown>("expected");
        QTest::newRow("total") << u" (in=5000) (out=1000) (deflated 80%)"_s << false << Shown{u"100 "_s};
        QTest::newRow("deflated") << u" (deflated 7%)\r\n"_s << false << Shown{u"1 Compacted by  7%"_s, u"0 "_s};
        QTest::newRow("adding") << u"  adding: Branch.qbt "_s << false << Shown{u"50 Compacting Branch.qrx"_s};
        QTest::newRow("inflating") << u"  inflating: .\\Branch.qbt       "_s << true
                                   << Shown{u"50 Extracting .\\Branch.qrx"_s};
        QTest::newRow("extracting") << u" extracting: .\\Branch.qbt       "_s << true << Shown();
        QTest::newRow("anything else") << u"hello"_s << true << Shown();
        QTest::newRow("short") << u"  inflating: x"_s << true << Shown{u"50 Extracting qrx"_s};
    }
    void exportLine_isShown()
    {
        QFETCH(QString, text);
        QFETCH(bool, extracting);
        QFETCH(Shown, expected);
        RecordedWork work;
        ExportZipProgress progress(work);
        progress.SetExtracting(extracting);
        progress.m_oZip_Progress(text);
        QCOMPARE(work.Said, expected);
    }

    // Stored files

    void oneFile_neverHasAHundredBeforeTheClosingLine()
    {
        RecordedWork work;
        StoredFileZipProgress progress(work);
        progress.m_oZipUnzip_Progress(1, u"  adding: a.txt "_s, 1);
        QCOMPARE(work.Said, (Shown{u"1 Adding a.txt "_s, u"99 Adding a.txt "_s}));
        progress.m_oZipUnzip_Progress(1, u" (deflated 80%)\r\n"_s, 1);
        QCOMPARE(work.Said.last(), u"100 "_s);
    }

    void severalFiles_areCounted()
    {
        RecordedWork work;
        StoredFileZipProgress progress(work);
        const auto add = [&](const QString& name) {
            progress.m_oZipUnzip_Progress(1, u"  adding: %1 "_s.arg(name), 3);
        };
        add(u"a"_s);
        progress.m_oZipUnzip_Progress(1, u" (deflated 80%)\r\n"_s, 3); // not the last
        add(u"b"_s);
        add(u"c"_s);
        QCOMPARE(work.Said, (Shown{u"1 Adding a "_s, u"33 Adding a "_s, u"67 Adding b "_s, u"99 Adding c "_s}));
        progress.m_oZipUnzip_Progress(3, u" (deflated 80%)\r\n"_s, 3);
        QCOMPARE(work.Said.size(), 5);
        QCOMPARE(work.Said.last(), u"100 "_s);
        work.Said.clear(); // and from the beginning
        add(u"d"_s);
        QCOMPARE(work.Said, (Shown{u"1 Adding d "_s, u"33 Adding d "_s}));
    }

    void extracting_hasTheCrossedWords()
    {
        RecordedWork work;
        StoredFileZipProgress progress(work);
        progress.m_oZipUnzip_Progress(1, u"  inflating: .\\sub\\a.txt"_s, 4);
        progress.m_oZipUnzip_Progress(2, u" extracting: .\\b.bin"_s, 4);
        progress.m_oZipUnzip_Progress(3, u"  inflating: no folder"_s, 4);
        QCOMPARE(work.Said, (Shown{u"25 Compacting a.txt"_s, u"50 Extracting b.bin"_s,
                                   u"75 Compacting   inflating: no folder"_s}));
        progress.m_oZipUnzip_Progress(4, u" extracting: .\\d"_s, 4);
        QCOMPARE(work.Said.mid(3), (Shown{u"99 Extracting d"_s, u"100 "_s}));
    }

    void percent_isShownFromThreeMoreOn()
    {
        RecordedWork work;
        StoredFileZipProgress progress(work);
        for (int file = 1; file <= 6; ++file)
            progress.m_oZipUnzip_Progress(file, u" extracting: .\\x"_s, 100);
        QCOMPARE(work.Said, (Shown{u"3 Extracting x"_s, u"6 Extracting x"_s}));
    }

    void otherLine_endsWhatIsComplete()
    {
        RecordedWork work;
        StoredFileZipProgress progress(work);
        progress.m_oZipUnzip_Progress(0, u"anything"_s, 5); // nothing is under way
        QCOMPARE(work.Said, Shown{u"100 "_s});
    }

    // Volumes

    void volumes_haveTheirCaptions()
    {
        RecordedWork work;
        VolumeProgress progress(work);
        progress.TotalChunks(4);
        progress.NextVolume(1, true);
        progress.Progress(1);
        progress.NextVolume(2, true);
        progress.Progress(2);
        progress.NextVolume(3, false);
        progress.Progress(3);
        progress.Progress(4);
        QCOMPARE(work.Said, (Shown{u"0 Creating 1 Volume"_s, u"25 Creating 1 Volume"_s, u"50 Creating 2 Volume"_s,
                                   u"75 Merging Volume 3"_s, u"100 Merging Volume 3"_s, u"100 "_s}));
    }

    void smallSteps_areNotShown()
    {
        RecordedWork work;
        VolumeProgress progress(work);
        progress.TotalChunks(100);
        progress.NextVolume(1, false);
        for (int chunk = 1; chunk <= 5; ++chunk)
            progress.Progress(chunk);
        QCOMPARE(work.Said, (Shown{u"0 Merging Volume 1"_s, u"3 Merging Volume 1"_s}));
    }
};

QB_TEST_MAIN(TestArchiveProgress)
#include "tst_archive_progress.moc"
