#include "platform/system/RuntimeError.h"
#include "support/FileSizeLimit.h"
#include "support/TestRun.h"
#include "web/WebPages.h"

#include <QDir>
#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestWebPages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void builtInPages_canBeAddedTo_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("welcome page") << WelcomePage;
        QTest::newRow("template") << PageTemplate;
    }
    /// The last paragraph ends on the line before the mark, where links and pictures are inserted.
    void builtInPages_canBeAddedTo()
    {
        QFETCH(QString, name);
        const QString page = BuiltInPage(name);
        const qsizetype start = page.indexOf(u"<!--Start-->"_s);
        const qsizetype end = page.indexOf(u"</p>\n<!--End-->"_s);
        QVERIFY(start > 0);
        QVERIFY(end > start);
        QVERIFY(page.indexOf(u"</td>"_s, end) > end);
    }

    void init() { FailOnWarnings(); }

    void fullDisk_makesNoEmptyPage()
    {
        const TemporaryHome home;
        const QString folder = home.Path(u"lib_HTML"_s) + u'/';
        const FileSizeLimit full(10);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, CreateDefaultHTMLItems(folder));
        QVERIFY(!QFile::exists(folder + WelcomePage));
    }

    void missingPages_areMade()
    {
        const TemporaryHome home;
        const QString folder = home.Path(u"lib_HTML"_s) + u'/';
        QVERIFY(DefaultPagesMissing(folder));
        CreateDefaultHTMLItems(folder);
        QVERIFY(!DefaultPagesMissing(folder));
        QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name), (QStringList{u"default.htm"_s, u"default2.htm"_s}));
        QCOMPARE(QString::fromUtf8(ReadFile(folder + u"default.htm"_s)), BuiltInPage(WelcomePage));
        QVERIFY(BuiltInPage(WelcomePage).contains(u"Ctrl+N"_s));
    }

    void pagesOfTheUser_areLeftAlone()
    {
        const TemporaryHome home;
        const QString folder = home.Path(u"lib_HTML"_s) + u'/';
        QDir().mkpath(folder);
        WriteFile(folder + u"default.htm"_s, "mine");
        QVERIFY(DefaultPagesMissing(folder));
        CreateDefaultHTMLItems(folder);
        QCOMPARE(ReadFile(folder + u"default.htm"_s), QByteArray("mine"));
        QVERIFY(QFile::exists(folder + u"default2.htm"_s));
    }

    void folderThatCanNotBeMade_isReported()
    {
        const TemporaryHome home;
        WriteFile(home.Path(u"lib_HTML"_s), "a file");
        QB_VERIFY_RAISES(CreateDefaultHTMLItems(home.Path(u"lib_HTML"_s) + u'/'), ErrorNumber::PathAccess);
        QCOMPARE(ReadFile(home.Path(u"lib_HTML"_s)), QByteArray("a file"));
    }
};

QB_TEST_MAIN(TestWebPages)
#include "tst_webpages.moc"
