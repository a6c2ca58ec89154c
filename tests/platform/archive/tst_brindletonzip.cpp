#include "platform/archive/BrindletonZip.h"
#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Packing and extracting what the engine itself packed.
class TestBrindletonZip : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(m_home->Path(u"in/größe 漢字.txt"_s), QByteArray("line of text\n").repeated(1000));
        WriteFile(m_home->Path(u"in/sub/b.bin"_s), QByteArray("\0\1\2", 3));
        WriteFile(m_home->Path(u"in/empty"_s), {});
    }
    void cleanup() { m_home.reset(); }

    void packedFiles_comeBackAsTheyWere()
    {
        BrindletonZip zip;
        Fill(zip);
        QVERIFY(zip.Zip());
        BrindletonZip unzip;
        QVERIFY(unzip.ExtractTo(Archive(), m_home->Path(u"out/deep"_s)));
        QCOMPARE(ReadFile(m_home->Path(u"out/deep/größe 漢字.txt"_s)), QByteArray("line of text\n").repeated(1000));
        QCOMPARE(ReadFile(m_home->Path(u"out/deep/sub/b.bin"_s)), QByteArray("\0\1\2", 3));
        QCOMPARE(ReadFile(m_home->Path(u"out/deep/empty"_s)), QByteArray());
        QCOMPARE(unzip.FileCount(), 3);
        QCOMPARE(unzip.UnzippedPath(), m_home->Path(u"out/deep"_s));
        QCOMPARE(Everything(u"out/deep"_s).size(), 3);
        QCOMPARE(Everything(u"."_s).filter(u".zip"_s).size(), 1);
    }

    void lines_haveTheirForms()
    {
        BrindletonZip zip;
        Fill(zip);
        QSignalSpy packing(&zip, &BrindletonZip::Progress);
        QVERIFY(zip.Zip());
        for (const QList<QVariant>& signal : packing)
            qInfo() << signal;
        BrindletonZip unzip;
        QSignalSpy extracting(&unzip, &BrindletonZip::Progress);
        QVERIFY(unzip.ExtractTo(Archive(), m_home->Path(u"out"_s)));
        for (const QList<QVariant>& signal : extracting)
            qInfo() << signal;
    }

private:
    QString Archive() const { return m_home->Path(u"the archive.zip"_s); }
    QStringList Everything(const QString& folder) const
    {
        QStringList names;
        QDirIterator all(m_home->Path(folder), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (all.hasNext())
            names << all.next();
        return names;
    }
    void Fill(BrindletonZip& zip) const
    {
        zip.SetZipFileName(Archive());
        zip.SetBaseDirectory(m_home->Path(u"in"_s));
        zip.ClearFileList();
        for (const QString& name : {u"größe 漢字.txt"_s, u"sub/b.bin"_s, u"empty"_s})
            zip.AddFile(m_home->Path(u"in/"_s + name));
    }

    std::unique_ptr<TemporaryHome> m_home;
};

QTEST_GUILESS_MAIN(TestBrindletonZip)
#include "tst_brindletonzip.moc"
