#include "platform/system/RuntimeError.h"
#include "support/FileSizeLimit.h"
#include "support/TestRun.h"
#include "web/PagePictures.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// The begin of a PNG of 7 by 5 pixels, as far as anybody looks.
const QByteArray Png = QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\7\0\0\0\5\x08\x02", 26);

} // namespace

/// The pictures of a page, below its folder.
class TestPagePictures : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_place = {m_home->Path(u"pages"_s) + u'/', u"17"_s};
        WriteFile(m_place.PagesFolder + u"17.htm"_s, "page");
    }

    void kind_isThatOfTheContents_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("kind");
        QTest::newRow("png") << Png << u"png 7 5"_s;
        QTest::newRow("gif") << QByteArray("GIF89a\x07\0\x05\0", 10) << u"gif 7 5"_s;
        QTest::newRow("jpeg") << QByteArray("\xff\xd8\xff\xe0\0\4ab\xff\xc0\0\x11\x08\0\5\0\7", 17) << u"jpg 7 5"_s;
        QTest::newRow("bmp") << QByteArray("BM\0\0\0\0\0\0\0\0\0\0\0\0\x28\0\0\0\7\0\0\0\5\0\0\0", 26) << u"bmp 7 5"_s;
        QTest::newRow("webp") << QByteArray("RIFF\0\0\0\0WEBPVP8X\0\0\0\0\0\0\0\0\6\0\0\4\0\0", 30) << u"webp 7 5"_s;
        QTest::newRow("svg") << QByteArray("<?xml version='1.0'?><!-- x --><svg width='7' height=\"5px\">")
                             << u"svg 7 5"_s;
        QTest::newRow("svg by its view") << QByteArray("<svg viewBox=\"0 0 7 5\">") << u"svg 7 5"_s;
        QTest::newRow("a text") << QByteArray("BMW makes cars, and many of them") << u"none"_s;
        QTest::newRow("a page with a drawing") << QByteArray("<html><svg width='7' height='5'></svg>") << u"none"_s;
        QTest::newRow("a program") << QByteArray("\x7f"
                                                 "ELF")
                                   << u"none"_s;
        QTest::newRow("nothing") << QByteArray() << u"none"_s;
        QTest::newRow("only a begin") << QByteArray("\x89PNG\r\n\x1a\n") << u"png 0 0"_s;
    }
    void kind_isThatOfTheContents()
    {
        QFETCH(QByteArray, bytes);
        const std::optional<PictureKind> kind = PictureKindOf(bytes);
        QTEST(kind ? u"%1 %2 %3"_s.arg(kind->Suffix).arg(kind->Width).arg(kind->Height) : u"none"_s, "kind");
    }

    void copy_getsASafeFreeName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("source");
        QTest::newRow("plain") << u"tree.png"_s << u"17/tree.png"_s;
        QTest::newRow("taken") << u"own.png"_s << u"17/own-2.png"_s;
        QTest::newRow("taken but for its case") << u"OWN.png"_s << u"17/OWN-2.png"_s;
        QTest::newRow("another suffix") << u"tree.jpeg"_s << u"17/tree.png"_s;
        QTest::newRow("letters") << u"Übersicht & \"Plan\" <1>.png"_s << u"17/Ubersicht-Plan-1.png"_s;
        QTest::newRow("nothing left") << u"図.png"_s << u"17/picture.png"_s;
        QTest::newRow("hidden") << u".htaccess.png"_s << u"17/htaccess.png"_s;
        QTest::newRow("a device") << u"con.png"_s << u"17/picture.png"_s;
        QTest::newRow("a long one") << QString(200, u'x') + u".png"_s << u"17/"_s + QString(60, u'x') + u".png"_s;
    }
    void copy_getsASafeFreeName()
    {
        QFETCH(QString, name);
        WriteFile(m_place.PagesFolder + u"17/own.png"_s, "other");
        WriteFile(m_home->Path(name), Png);
        const KeptPicture kept = KeepPicture(m_place, m_home->Path(name));
        QTEST(kept.Source, "source");
        QCOMPARE(ReadFile(m_place.PagesFolder + kept.Source), Png);
        QCOMPARE(ReadFile(kept.Path), Png);
        QCOMPARE(kept.Kind.Width, 7);
        QCOMPARE(ReadFile(m_place.PagesFolder + u"17/own.png"_s), "other");
    }

    void takenBack_leavesNothing()
    {
        WriteFile(m_home->Path(u"a.png"_s), Png);
        TakeBackPicture(m_place, KeepPicture(m_place, m_home->Path(u"a.png"_s)));
        QCOMPARE(QDir(m_place.PagesFolder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList(u"17.htm"_s));
        WriteFile(m_place.PagesFolder + u"17/own.png"_s, "other");
        TakeBackPicture(m_place, KeepPicture(m_place, m_home->Path(u"a.png"_s)));
        QCOMPARE(Files(), QStringList(u"own.png"_s));
    }

    void whatIsNoPicture_leavesNothing()
    {
        WriteFile(m_home->Path(u"a.png"_s), "text");
        QB_VERIFY_RAISES(KeepPicture(m_place, m_home->Path(u"a.png"_s)), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(KeepPicture(m_place, m_home->Path(u"none.png"_s)), ErrorNumber::PathAccess);
        QB_VERIFY_RAISES(KeepPicture(m_place, m_home->Path()), ErrorNumber::PathAccess);
        QVERIFY(!QDir(m_place.PagesFolder + u"17"_s).exists());
    }

    void pictureThatIsHuge_isRefused()
    {
        constexpr qint64 Most = 64LL << 20;
        QFile file(m_home->Path(u"a.png"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(Png);
        QVERIFY(file.resize(Most + 1)); // a hole, which takes no room
        file.close();
        QB_VERIFY_RAISES(KeepPicture(m_place, file.fileName()), ErrorNumber::PathAccess);
        QVERIFY(!QDir(m_place.PagesFolder + u"17"_s).exists());
        QVERIFY(file.resize(Most));
        QCOMPARE(QFileInfo(KeepPicture(m_place, file.fileName()).Path).size(), Most);
    }

    void fullDisk_leavesNothing()
    {
        const QByteArray large = Png + QByteArray(100000, 'x');
        const FileSizeLimit limit(50000);
        QB_VERIFY_RAISES(KeepPictureBytes(m_place, u"a.png"_s, large), ErrorNumber::PathAccess);
        QVERIFY(!QDir(m_place.PagesFolder + u"17"_s).exists());
    }

    void folderThatLeadsElsewhere_takesNone()
    {
        QDir().mkpath(m_home->Path(u"elsewhere"_s));
        QVERIFY(QFile::link(m_home->Path(u"elsewhere"_s), m_place.PagesFolder + u"17"_s));
        QB_VERIFY_RAISES(KeepPictureBytes(m_place, u"a.png"_s, Png), ErrorNumber::PathAccess);
        QVERIFY(QDir(m_home->Path(u"elsewhere"_s)).isEmpty());
    }

private:
    QStringList Files() const { return QDir(m_place.PagesFolder + u"17"_s).entryList(QDir::Files | QDir::Hidden); }

    std::unique_ptr<TemporaryHome> m_home;
    PicturePlace m_place;
};

QB_TEST_MAIN(TestPagePictures)
#include "tst_page_pictures.moc"
