#include "maintenance/ArchiveProgress.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Shown = QStringList; ///< each "<percent> <text>"

QString Line(const QString& text, int percent)
{
    return QString::number(percent) + u' ' + text;
}

/// Writes down what is shown.
ShowProgress Into(Shown& shown)
{
    return [&shown](const QString& text, int percent) { shown << Line(text, percent); };
}

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
        Shown shown;
        LibraryZipProgress progress(Into(shown));
        progress.SetExtracting(extracting);
        progress.m_oZip_Progress(text);
        QCOMPARE(shown, expected);
    }

    void exportLine_isShown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("extracting");
        QTest::addColumn<Shown>("expected");
        QTest::newRow("total") << u" (in=5000) (out=1000) (deflated 80%)"_s << false << Shown{u"100 "_s};
        QTest::newRow("deflated") << u" (deflated 7%)\r\n"_s << false << Shown{u"1 Compacted by  7%"_s, u"hidden"_s};
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
        Shown shown;
        ExportZipProgress progress(Into(shown), [&] { shown << u"hidden"_s; });
        progress.SetExtracting(extracting);
        progress.m_oZip_Progress(text);
        QCOMPARE(shown, expected);
    }

    // Stored files

    void oneFile_neverHasAHundredBeforeTheClosingLine()
    {
        Shown shown;
        StoredFileZipProgress progress(Into(shown));
        progress.m_oZipUnzip_Progress(1, u"  adding: a.txt "_s, 1);
        QCOMPARE(shown, (Shown{u"1 Adding a.txt "_s, u"99 Adding a.txt "_s}));
        progress.m_oZipUnzip_Progress(1, u" (deflated 80%)\r\n"_s, 1);
        QCOMPARE(shown.last(), u"100 "_s);
    }

    void severalFiles_areCounted()
    {
        Shown shown;
        StoredFileZipProgress progress(Into(shown));
        const auto add = [&](const QString& name) {
            progress.m_oZipUnzip_Progress(1, u"  adding: %1 "_s.arg(name), 3);
        };
        add(u"a"_s);
        progress.m_oZipUnzip_Progress(1, u" (deflated 80%)\r\n"_s, 3); // not the last
        add(u"b"_s);
        add(u"c"_s);
        QCOMPARE(shown, (Shown{u"1 Adding a "_s, u"33 Adding a "_s, u"67 Adding b "_s, u"99 Adding c "_s}));
        progress.m_oZipUnzip_Progress(3, u" (deflated 80%)\r\n"_s, 3);
        QCOMPARE(shown.size(), 5);
        QCOMPARE(shown.last(), u"100 "_s);
        shown.clear(); // and from the beginning
        add(u"d"_s);
        QCOMPARE(shown, (Shown{u"1 Adding d "_s, u"33 Adding d "_s}));
    }

    void extracting_hasTheCrossedWords()
    {
        Shown shown;
        StoredFileZipProgress progress(Into(shown));
        progress.m_oZipUnzip_Progress(1, u"  inflating: .\\sub\\a.txt"_s, 4);
        progress.m_oZipUnzip_Progress(2, u" extracting: .\\b.bin"_s, 4);
        progress.m_oZipUnzip_Progress(3, u"  inflating: no folder"_s, 4);
        QCOMPARE(shown, (Shown{u"25 Compacting a.txt"_s, u"50 Extracting b.bin"_s,
                               u"75 Compacting   inflating: no folder"_s}));
        progress.m_oZipUnzip_Progress(4, u" extracting: .\\d"_s, 4);
        QCOMPARE(shown.mid(3), (Shown{u"99 Extracting d"_s, u"100 "_s}));
    }

    void percent_isShownFromThreeMoreOn()
    {
        Shown shown;
        StoredFileZipProgress progress(Into(shown));
        for (int file = 1; file <= 6; ++file)
            progress.m_oZipUnzip_Progress(file, u" extracting: .\\x"_s, 100);
        QCOMPARE(shown, (Shown{u"3 Extracting x"_s, u"6 Extracting x"_s}));
    }

    void otherLine_endsWhatIsComplete()
    {
        Shown shown;
        StoredFileZipProgress progress(Into(shown));
        progress.m_oZipUnzip_Progress(0, u"anything"_s, 5); // nothing is under way
        QCOMPARE(shown, Shown{u"100 "_s});
    }

    // Volumes

    void volumes_haveTheirCaptions()
    {
        Shown shown;
        VolumeProgress progress(Into(shown));
        progress.TotalChunks(4);
        progress.NextVolume(1, true);
        progress.Progress(1);
        progress.NextVolume(2, true);
        progress.Progress(2);
        progress.NextVolume(3, false);
        progress.Progress(3);
        progress.Progress(4);
        QCOMPARE(shown, (Shown{u"0 Creating 1 Volume"_s, u"25 Creating 1 Volume"_s, u"50 Creating 2 Volume"_s,
                               u"75 Merging Volume 3"_s, u"100 Merging Volume 3"_s, u"100 "_s}));
    }

    void smallSteps_areNotShown()
    {
        Shown shown;
        VolumeProgress progress(Into(shown));
        progress.TotalChunks(100);
        progress.NextVolume(1, false);
        for (int chunk = 1; chunk <= 5; ++chunk)
            progress.Progress(chunk);
        QCOMPARE(shown, (Shown{u"0 Merging Volume 1"_s, u"3 Merging Volume 1"_s}));
    }
};

QB_TEST_MAIN(TestArchiveProgress)
#include "tst_archive_progress.moc"
