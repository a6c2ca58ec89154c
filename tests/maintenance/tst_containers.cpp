#include "maintenance/Containers.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/archive/CBFileSplitter.h"
#include "platform/system/RuntimeError.h"
#include "support/FileSizeLimit.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// One file in a container, there and back.
class TestContainers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_contents = QByteArray("a library\n").repeated(200'000);
        m_work.Forget();
    }
    void cleanup() { m_home.reset(); }

    void library_comesBack()
    {
        WriteFile(In(u"Lib060115.qbt"_s), m_contents);
        QVERIFY(PackLibrary(In(u"Lib060115.qbt"_s), In(u"Lib060115.qbb"_s), m_work));
        QCOMPARE(Names(), QStringList{u"Lib060115.qbb"_s});
        QCOMPARE(m_work.Said, (QStringList{u"50 Compacting Lib060115.qrb"_s, u"1 Compacted by  99%"_s, u"100 "_s}));
        m_work.Forget();
        QCOMPARE(UnpackLibrary(In(u"Lib060115.qbb"_s), m_work), In(u"Lib060115.qbt"_s));
        QCOMPARE(ReadFile(In(u"Lib060115.qbt"_s)), m_contents);
        QCOMPARE(m_work.Said, QStringList()); // what the engine says there is not shown
        QCOMPARE(Names(), (QStringList{u"Lib060115.qbb"_s, u"Lib060115.qbt"_s}));
        QCOMPARE(UnpackLibrary(In(u"Lib060115.qbb"_s), m_work),
                 In(u"Lib060115.qbt"_s)); // over the one of the last time
    }

    void export_isPackedUnderItsOwnName()
    {
        WriteFile(In(u"Branch.qbx"_s), m_contents);
        WriteFile(In(u"Branch.qbt"_s), "of an earlier time");
        QCOMPARE(PackExport(In(u"Branch.qbx"_s), m_work), In(u"Branch.qbx"_s));
        QCOMPARE(Names(), QStringList{u"Branch.qbx"_s});
        QCOMPARE(m_work.Said,
                 (QStringList{u"50 Compacting Branch.qrx"_s, u"1 Compacted by  99%"_s, u"0 "_s, u"100 "_s}));
        m_work.Forget();
        QCOMPARE(UnpackExport(In(u"Branch.qbx"_s), m_work), In(u"Branch.qbt"_s));
        QCOMPARE(ReadFile(In(u"Branch.qbt"_s)), m_contents);
        QCOMPARE(m_work.Said, QStringList{u"50 Extracting .\\Branch.qrx"_s});
    }

    void volumes_areJoinedFirst()
    {
        WriteFile(In(u"L.qbt"_s), m_contents);
        QVERIFY(PackLibrary(In(u"L.qbt"_s), In(u"L.qbb"_s), m_work));
        CBFileSplitter splitter;
        QCOMPARE(splitter.Split(In(u"L.qbb"_s), 3000), In(u"L.qbb.001"_s));
        QVERIFY(Names().size() > 1);
        m_work.Forget();
        QCOMPARE(UnpackLibrary(In(u"L.qbb.002"_s), m_work), In(u"L.qbt"_s));
        QCOMPARE(ReadFile(In(u"L.qbt"_s)), m_contents);
        QCOMPARE(m_work.Said.first(), u"0 Merging Volume 2"_s); // the first chunk ends in it
        QVERIFY(Names().contains(u"L.qbb"_s));                  // the joined file
    }

    void cancelledPacking_leavesTheSource()
    {
        m_work.Ends = [](qint64) { return true; };
        WriteFile(In(u"L.qbt"_s), m_contents);
        QVERIFY(!PackLibrary(In(u"L.qbt"_s), In(u"L.qbb"_s), m_work));
        QCOMPARE(Names(), QStringList{u"L.qbt"_s});
        WriteFile(In(u"B.qbx"_s), m_contents);
        QCOMPARE(PackExport(In(u"B.qbx"_s), m_work), QString());
        QCOMPARE(Names(), (QStringList{u"B.qbt"_s, u"L.qbt"_s}));
        QCOMPARE(ReadFile(In(u"L.qbt"_s)), m_contents);
    }

    void fullDisk_leavesTheSource()
    {
        WriteFile(In(u"L.qbt"_s), m_contents);
        {
            const FileSizeLimit full(1000);
            QB_VERIFY_RAISES(PackLibrary(In(u"L.qbt"_s), In(u"L.qbb"_s), m_work), 75);
        }
        QCOMPARE(Names(), QStringList{u"L.qbt"_s});
        QCOMPARE(ReadFile(In(u"L.qbt"_s)), m_contents);
    }

    void cancelledUnpacking_leavesNothing()
    {
        WriteFile(In(u"L.qbt"_s), m_contents);
        QVERIFY(PackLibrary(In(u"L.qbt"_s), In(u"L.qbb"_s), m_work));
        m_work.Ends = [](qint64) { return true; };
        QCOMPARE(UnpackLibrary(In(u"L.qbb"_s), m_work), QString());
        QCOMPARE(Names(), QStringList{u"L.qbb"_s});
    }

    void otherFile_isNeverReplaced()
    {
        WriteFile(In(u"precious.txt"_s), "made by hand");
        WriteFile(m_home->Path(u"elsewhere/precious.txt"_s), "other");
        Zip({m_home->Path(u"elsewhere/precious.txt"_s)});
        QB_VERIFY_RAISES(UnpackLibrary(In(u"L.qbb"_s), m_work), 75);
        QCOMPARE(ReadFile(In(u"precious.txt"_s)), "made by hand");
    }

    /// The container itself would be what the file takes the place of.
    void fileOfTheContainersOwnName_isRefused()
    {
        WriteFile(m_home->Path(u"elsewhere/L.qbt"_s), "other");
        Zip({m_home->Path(u"elsewhere/L.qbt"_s)});
        QVERIFY(QFile::rename(In(u"L.qbb"_s), In(u"L.qbt"_s)));
        const QByteArray container = ReadFile(In(u"L.qbt"_s));
        QB_VERIFY_RAISES(UnpackLibrary(In(u"L.qbt"_s), m_work), 75);
        QCOMPARE(ReadFile(In(u"L.qbt"_s)), container);
    }

    /// A large library of which nearly all is empty: more than a gigabyte out of hardly more than one megabyte.
    void libraryOfRealSize_isPackedAndUnpacked()
    {
        constexpr qint64 Size = 1'300'000'000;
        constexpr qint64 Enough = 50'000'000;
        WriteFile(In(u"L.qbt"_s), m_contents);
        QVERIFY(QFile::resize(In(u"L.qbt"_s), Size)); // takes no room
        QVERIFY(PackLibrary(In(u"L.qbt"_s), In(u"L.qbb"_s), m_work));
        QVERIFY(QFileInfo(In(u"L.qbb"_s)).size() < 2'000'000);
        QVERIFY(BrindletonZip::MostBytes(QFileInfo(In(u"L.qbb"_s)).size()) < Size);
        m_work.Forget();
        m_work.Ends = [](qint64 done) { return done > Enough; }; // it is under way
        QCOMPARE(UnpackLibrary(In(u"L.qbb"_s), m_work), QString());
        QVERIFY(m_work.Done.last() > Enough);
        QCOMPARE(m_work.Totals.last(), Size);
        QCOMPARE(Names(), QStringList{u"L.qbb"_s});
    }

    void archiveOfSeveralFiles_isNoContainer()
    {
        WriteFile(m_home->Path(u"elsewhere/a"_s), "a");
        WriteFile(m_home->Path(u"elsewhere/b"_s), "b");
        Zip({m_home->Path(u"elsewhere/a"_s), m_home->Path(u"elsewhere/b"_s)});
        QB_VERIFY_RAISES(UnpackExport(In(u"L.qbb"_s), m_work), 75);
        QCOMPARE(Names(), QStringList{u"L.qbb"_s});
    }

    void whatIsNoArchive_isRefused()
    {
        WriteFile(In(u"L.qbb"_s), "no archive");
        QB_VERIFY_RAISES(UnpackLibrary(In(u"L.qbb"_s), m_work), 75);
        QCOMPARE(Names(), QStringList{u"L.qbb"_s});
    }

private:
    QString In(const QString& name) const { return m_home->Path(u"the folder/"_s + name); }
    QStringList Names() const
    {
        return QDir(m_home->Path(u"the folder"_s))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    void Zip(const QStringList& files) const
    {
        QDir().mkpath(m_home->Path(u"the folder"_s));
        BrindletonZip zip;
        zip.SetZipFileName(In(u"L.qbb"_s));
        for (const QString& file : files)
            zip.AddFile(file);
        QVERIFY(zip.Zip());
    }

    std::unique_ptr<TemporaryHome> m_home;
    QByteArray m_contents;
    RecordedWork m_work;
};

QB_TEST_MAIN(TestContainers)
#include "tst_containers.moc"
