#include "help/Handbook.h"
#include "help/HelpTopics.h"
#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

#include <QSet>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The handbook as the program reads it: contents, topics and search, over a small one.
class TestHelpSearch : public QObject {
    Q_OBJECT

private:
    QString Make(const QByteArray& contents)
    {
        WriteFile(m_home->Path(u"contents.json"_s), contents);
        return m_home->Path();
    }

    QString Small()
    {
        WriteFile(m_home->Path(u"items.html"_s), "<h1>Items</h1>");
        WriteFile(m_home->Path(u"secret.html"_s), "not of the handbook");
        return Make(R"([
            {"topic":"index","title":"Handbook","sections":[
                {"anchor":"","title":"Handbook","level":1,"text":"All pages, of items and saving too"}]},
            {"topic":"items","title":"Items","sections":[
                {"anchor":"","title":"Items","level":1,"text":"An item is one thing."},
                {"anchor":"saving","title":"Saving","level":2,"text":"Die Größe der Änderung. It saves café and naïve."},
                {"anchor":"rest","title":"The rest","level":2,"text":"xitem unsaving"}]}])");
    }

    static QStringList Topics(const std::vector<HelpHit>& hits)
    {
        QStringList topics;
        for (const HelpHit& hit : hits)
            topics << hit.Topic;
        return topics;
    }

    std::unique_ptr<TemporaryHome> m_home;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
    }
    void cleanup() { m_home.reset(); }

    void contents_areRead()
    {
        const Handbook handbook(Small());
        QCOMPARE(handbook.Pages().size(), 2u);
        QCOMPARE(handbook.TitleOf(u"items#saving"_s), u"Items"_s);
        QCOMPARE(handbook.Html(u"items#saving"_s), u"<h1>Items</h1>"_s);
    }

    void html_isThatOfPagesOnly()
    {
        const Handbook handbook(Small());
        QCOMPARE(handbook.Html(u"secret"_s), QString());
        QCOMPARE(handbook.Html(u"../secret"_s), QString());
        QCOMPARE(handbook.Html(u"index"_s), QString()); // its file is missing
    }

    void topicThatIsNotThere_becomesTheNearest()
    {
        const Handbook handbook(Small());
        QCOMPARE(handbook.Nearest(u"items#saving"_s), u"items#saving"_s);
        QCOMPARE(handbook.Nearest(u"items#none"_s), u"items"_s);
        QCOMPARE(handbook.Nearest(u"none#saving"_s), u"index"_s);
    }

    void handbookThatCannotBeRead_isAnError_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut") << QByteArray("[{\"topic\":\"ind");
        QTest::newRow("no pages") << QByteArray("[]");
        QTest::newRow("something else") << QByteArray("{\"a\":1}");
    }
    void handbookThatCannotBeRead_isAnError()
    {
        QFETCH(QByteArray, contents);
        QVERIFY_THROWS_EXCEPTION(RuntimeError, Handbook(Make(contents)));
    }

    void missingHandbook_isNoneThatExists()
    {
        QVERIFY(!Handbook::Exists(m_home->Path(u"none"_s)));
        QVERIFY(Handbook::Exists(Small()));
        QVERIFY_THROWS_EXCEPTION(RuntimeError, Handbook(m_home->Path(u"none"_s)));
    }

    void search_findsAllWordsBestFirst()
    {
        const Handbook handbook(Small());
        QCOMPARE(Topics(handbook.Search(u"saving"_s)),
                 (QStringList{u"items#saving"_s, u"index"_s, u"items#rest"_s})); // title, word, inside of one
        QCOMPARE(Topics(handbook.Search(u"item thing"_s)), QStringList{u"items"_s});
        QCOMPARE(Topics(handbook.Search(u"ITEM"_s)),
                 (QStringList{u"items"_s, u"items#rest"_s, u"index"_s})); // the page is called so
        QCOMPARE(Topics(handbook.Search(u"item saving nowhere"_s)), QStringList());
        QCOMPARE(Topics(handbook.Search(u"  "_s)), QStringList());
        QCOMPARE(Topics(handbook.Search(QString(100000, u'x'))), QStringList());
    }

    void search_takesLettersWithoutTheirAccents()
    {
        const Handbook handbook(Small());
        for (const QString& word : {u"cafe"_s, u"CAFÉ"_s, u"naive"_s, u"anderung"_s})
            QCOMPARE(Topics(handbook.Search(word)), QStringList{u"items#saving"_s});
    }

    void hit_saysWhereItStands()
    {
        const Handbook handbook(Small());
        const HelpHit hit = handbook.Search(u"café"_s).front();
        QCOMPARE(hit.Page, u"Items"_s);
        QCOMPARE(hit.Title, u"Saving"_s);
        QVERIFY2(hit.Excerpt.contains(u"café and"_s), qPrintable(hit.Excerpt));
    }

    // The handbook that comes with the program

    void everyTopicOfTheTable_isInTheHandbook()
    {
        if (!Handbook::Exists())
            QSKIP("built without a window, and so without the handbook");
        const Handbook handbook;
        QSet<QString> names;
        for (const HelpTopicRow& row : HelpTopicTable()) {
            QVERIFY2(handbook.Has(QString::fromLatin1(row.Topic)), row.Topic);
            QVERIFY2(!names.contains(QString::fromLatin1(row.Name)), row.Name);
            names.insert(QString::fromLatin1(row.Name));
        }
    }

    void topic_isThatOfTheInnermostName()
    {
        QCOMPARE(TopicOf({u""_s, u"rtbCode"_s, u"ctlCodeItemDetails"_s, u"frmCodeLib"_s}), u"code"_s);
        QCOMPARE(TopicOf({u"qt_tabwidget"_s, u"ctlCodeItemDetails"_s}), u"items#what-an-item-has"_s);
        QCOMPARE(TopicOf({u"nothing"_s}), u"index"_s);
        QCOMPARE(TopicOf({}), u"index"_s);
    }

    void everyPage_hasATextAndAnAnswerToItsTitle()
    {
        if (!Handbook::Exists())
            QSKIP("built without a window, and so without the handbook");
        const Handbook handbook;
        QVERIFY(handbook.Pages().size() >= 13);
        for (const HelpPage& page : handbook.Pages()) {
            QVERIFY2(handbook.Html(page.Topic).contains(page.Title), qPrintable(page.Topic));
            QVERIFY2(Topics(handbook.Search(page.Title)).contains(page.Topic), qPrintable(page.Title));
        }
    }
};

QB_TEST_MAIN(TestHelpSearch)
#include "tst_help_search.moc"
