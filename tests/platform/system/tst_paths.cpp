#include "platform/system/Paths.h"
#include "support/OrdinaryUser.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QStringList FileNames(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

constexpr QFile::Permissions ReadOnlyFile = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
constexpr QFile::Permissions ReadOnlyFolder = ReadOnlyFile | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
constexpr QFile::Permissions OpenFolder = ReadOnlyFolder | QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;

} // namespace

class TestPaths : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
    }
    void cleanup() { m_home.reset(); }

    void path_isSplitAtItsLastSeparator_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("base");
        QTest::newRow("slash") << u"/home/ä b/lib.qbd"_s << u"/home/ä b/"_s << u"lib.qbd"_s << u"lib"_s;
        QTest::newRow("backslash") << u"D:\\x\\name.qbd"_s << u"D:\\x\\"_s << u"name.qbd"_s << u"name"_s;
        QTest::newRow("both, slash last") << u"D:\\x/name.qbd"_s << u"D:\\x/"_s << u"name.qbd"_s << u"name"_s;
        QTest::newRow("both, backslash last") << u"/x/y\\name.qbd"_s << u"/x/y\\"_s << u"name.qbd"_s << u"name"_s;
        QTest::newRow("no folder") << u"name.qbd"_s << QString() << u"name.qbd"_s << u"name"_s;
        QTest::newRow("no file") << u"/home/"_s << u"/home/"_s << QString() << QString();
        QTest::newRow("empty") << QString() << QString() << QString() << QString();
        QTest::newRow("dot in the folder") << u"/a.b/name"_s << u"/a.b/"_s << u"name"_s << u"name"_s;
    }

    void path_isSplitAtItsLastSeparator()
    {
        QFETCH(QString, path);
        QFETCH(QString, folder);
        QFETCH(QString, file);
        QFETCH(QString, base);
        const struct {
            PathPart Part;
            QString Result;
            QString Rest;
        } modes[] = {
            {PathPart::Folder, folder, file}, {PathPart::FileName, file, folder}, {PathPart::BaseName, base, folder}};
        for (const auto& mode : modes) {
            QCOMPARE(fnExtractPathOrFileName(path, mode.Part), mode.Result);
            QString argument = path;
            QCOMPARE(fnExtractPathOrFileName(argument, mode.Part, false), mode.Result);
            QCOMPARE(argument, path);
            QCOMPARE(fnExtractPathOrFileName(argument, mode.Part, true), mode.Result);
            QCOMPARE(argument, mode.Rest);
        }
    }

    void extension_countsWithinTheLastFiveCharacters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("base");
        QTest::newRow("three letters") << u"name.qbd"_s << u"name"_s;
        QTest::newRow("four letters") << u"page.html"_s << u"page"_s;
        QTest::newRow("five letters") << u"name.class"_s << u"name.class"_s;
        QTest::newRow("one letter") << u"main.c"_s << u"main"_s;
        QTest::newRow("dot at the end") << u"name."_s << u"name"_s;
        QTest::newRow("several dots") << u"a.tar.gz"_s << u"a.tar"_s;
        QTest::newRow("a dot in the middle") << u"Version 1.2 notes"_s << u"Version 1.2 notes"_s;
        QTest::newRow("no dot") << u"Makefile"_s << u"Makefile"_s;
        QTest::newRow("short name") << u"a.b"_s << u"a"_s;
        QTest::newRow("beyond ASCII") << u"Übung.äöü"_s << u"Übung"_s;
        QTest::newRow("empty") << QString() << QString();
    }

    void extension_countsWithinTheLastFiveCharacters()
    {
        QFETCH(QString, name);
        QTEST(TakeExtensionOff(name), "base");
    }

    void takenName_getsTheFirstFreeNumber_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("taken");
        QTest::addColumn<QString>("result");
        QTest::newRow("free") << u"a.txt"_s << QStringList{u"a(1).txt"_s} << u"a.txt"_s;
        QTest::newRow("taken") << u"a.txt"_s << QStringList{u"a.txt"_s} << u"a(1).txt"_s;
        QTest::newRow("taken twice") << u"a.txt"_s << QStringList{u"a.txt"_s, u"a(1).txt"_s} << u"a(2).txt"_s;
        QTest::newRow("gap") << u"a.txt"_s << QStringList{u"a.txt"_s, u"a(2).txt"_s} << u"a(1).txt"_s;
        QTest::newRow("has a number") << u"a(1).txt"_s << QStringList{u"a(1).txt"_s} << u"a(1)(1).txt"_s;
        QTest::newRow("no extension") << u"Makefile"_s << QStringList{u"Makefile"_s} << u"Makefile(1)"_s;
        QTest::newRow("two extensions") << u"a.tar.gz"_s << QStringList{u"a.tar.gz"_s} << u"a.tar(1).gz"_s;
        QTest::newRow("a dot, no extension")
            << u"Version 1.2 notes"_s << QStringList{u"Version 1.2 notes"_s} << u"Version 1.2 notes(1)"_s;
        QTest::newRow("hidden") << u".profile"_s << QStringList{u".profile"_s} << u".profile(1)"_s;
        QTest::newRow("in a folder") << u"/x/ä b/a.txt"_s << QStringList{u"/x/ä b/a.txt"_s} << u"/x/ä b/a(1).txt"_s;
        QTest::newRow("dot in the folder") << u"/x/v.1/a"_s << QStringList{u"/x/v.1/a"_s} << u"/x/v.1/a(1)"_s;
        QTest::newRow("place markers") << u"%1/%2 %3.txt"_s << QStringList{u"%1/%2 %3.txt"_s} << u"%1/%2 %3(1).txt"_s;
        QTest::newRow("empty") << QString() << QStringList{QString()} << u"(1)"_s;
    }

    void takenName_getsTheFirstFreeNumber()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, taken);
        QTEST(NumberedName(name, [&](const QString& tried) { return taken.contains(tried); }), "result");
    }

    void numberedPath_isOneWhereNothingIs()
    {
        const QString path = m_home->Path(u"a.txt"_s);
        QCOMPARE(NumberedPath(path), path);
        WriteFile(path, "1");
        QVERIFY(QDir().mkpath(m_home->Path(u"a(1).txt"_s)));
        QVERIFY(QFile::link(m_home->Path(u"gone"_s), m_home->Path(u"a(2).txt"_s))); // leads nowhere
        QCOMPARE(NumberedPath(path), m_home->Path(u"a(3).txt"_s));
    }

    void programFolders_areTheRedirectedOnes()
    {
        QCOMPARE(ApplicationFolder(), m_home->Path(u"data"_s) + u'/');
        QCOMPARE(ConfigFolder(), m_home->Path(u"config"_s) + u'/');
    }

    void missingProgramFolder_isMade()
    {
        const QString folder = m_home->Path(u"new ö/deeper"_s);
        qputenv("QUILLBASE_DATA_HOME", QFile::encodeName(folder + u"/data/../data/"_s));
        qputenv("QUILLBASE_CONFIG_HOME", QFile::encodeName(folder + u"/config"_s));
        QCOMPARE(ApplicationFolder(), folder + u"/data/"_s);
        QCOMPARE(ConfigFolder(), folder + u"/config/"_s);
        QVERIFY(QFileInfo(folder + u"/data"_s).isDir());
        QVERIFY(QFileInfo(folder + u"/config"_s).isDir());
    }

    void deleteFolder_removesEverythingInIt()
    {
        WriteFile(m_home->Path(u"data/x/deep ä/file"_s), "1"_ba);
        WriteFile(m_home->Path(u"data/x/.hidden"_s), "1"_ba);
        WriteFile(m_home->Path(u"data/y/file"_s), "1"_ba);
        QVERIFY(DeleteFolder(m_home->Path(u"data/x"_s)));
        QVERIFY(!QFileInfo::exists(m_home->Path(u"data/x"_s)));
        QVERIFY(QFileInfo::exists(m_home->Path(u"data/y/file"_s)));
    }

    void deleteFolder_missing_isNoFailure() { QVERIFY(DeleteFolder(m_home->Path(u"data/none"_s))); }

    void deleteFolder_linkToAFolder_removesOnlyTheLink_data()
    {
        QTest::addColumn<QString>("linkAs");
        QTest::addColumn<QString>("deleted");
        QTest::newRow("the folder itself") << u"data/link"_s << u"data/link"_s;
        QTest::newRow("with a separator") << u"data/link"_s << u"data/link/"_s;
        QTest::newRow("within the folder") << u"data/x/link"_s << u"data/x"_s;
    }

    void deleteFolder_linkToAFolder_removesOnlyTheLink()
    {
        QFETCH(QString, linkAs);
        QFETCH(QString, deleted);
        const QString precious = m_home->Path(u"data/precious/file"_s);
        const QString link = m_home->Path(linkAs);
        WriteFile(precious, "1"_ba);
        QVERIFY(QDir().mkpath(QFileInfo(link).path()));
        QVERIFY(QFile::link(QFileInfo(precious).path(), link));
        const bool done = DeleteFolder(m_home->Path(deleted));
        QCOMPARE(FileNames(QFileInfo(precious).path()), QStringList{u"file"_s});
        QVERIFY(done && !QFileInfo(link).isSymLink());
    }

    void deleteFolder_whatStays_isReported()
    {
        QVERIFY(!DeleteFolder(u"/proc/self/attr"_s));
        const QString file = m_home->Path(u"data/file"_s);
        WriteFile(file, "1"_ba);
        QCOMPARE(DeleteFolder(file), !QFileInfo::exists(file));
    }

    void whyNotWritable_namesTheObstacle()
    {
        QVERIFY(QFile::setPermissions(m_home->Path(), OpenFolder));
        const QString folder = m_home->Path(u"locked ß"_s);
        const QString open = m_home->Path(u"open"_s);
        WriteFile(folder + u"/file"_s, "1"_ba);
        WriteFile(open + u"/locked file"_s, "1"_ba);
        QVERIFY(QFile::setPermissions(open, OpenFolder));
        QVERIFY(QFile::setPermissions(open + u"/locked file"_s, ReadOnlyFile));
        QVERIFY(QFile::setPermissions(folder + u"/file"_s, OpenFolder));
        QVERIFY(QFile::setPermissions(folder, ReadOnlyFolder));
        {
            const OrdinaryUser user;
            QCOMPARE(WhyNotWritable(open + u"/new"_s), QString());
            QCOMPARE(WhyNotWritable(open), u"'%1' is a folder."_s.arg(open));
            QCOMPARE(WhyNotWritable(open + u"/none/new"_s), u"The folder '%1/none' does not exist."_s.arg(open));
            QCOMPARE(WhyNotWritable(open + u"/locked file"_s), u"The file '%1/locked file' is read-only."_s.arg(open));
            QCOMPARE(WhyNotWritable(folder + u"/file"_s), u"The folder '%1' is read-only."_s.arg(folder));
            QCOMPARE(WhyNotWritable(folder + u"/new"_s), u"The folder '%1' is read-only."_s.arg(folder));
        }
        QVERIFY(QFile::setPermissions(folder, OpenFolder)); // so that it can be cleared away
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
};

QB_TEST_MAIN(TestPaths)
#include "tst_paths.moc"
