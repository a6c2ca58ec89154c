#include "platform/richtext/RtfPlainText.h"
#include "session/ItemWebPage.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Which page the Links tab shows of an item.
class TestItemWebPage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        Library& database = s->OpenLibrary();
        m_item = AddItem(database, 0, u"item"_s);
        AddItem(database, 0, u"other"_s);
        s->State.oCodeItem = std::make_unique<CCodeItem>();
        s->Tree.FillTree();
        m_page = std::make_unique<ItemWebPage>(s->State, s->Details, s->CommandStates);
    }
    void cleanup()
    {
        m_page.reset();
        s.reset();
    }

    void itemWithoutPage_showsTheTemplate()
    {
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses, QStringList{u"quillbase-page://library/default2.htm"_s});
        QVERIFY(QFile::exists(s->State.CurrentHTMLFolder() + u"default2.htm"_s)); // made because it was missing
        QVERIFY(QFile::exists(s->State.CurrentHTMLFolder() + u"default.htm"_s));
    }

    void itemWithPage_showsIt()
    {
        GivePage();
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses, QStringList{u"quillbase-page://library/%1.htm"_s.arg(m_item)});
    }

    void tabShownAgain_keepsWhereTheUserWent()
    {
        s->Click(u"item"_s);
        m_page->LinksTabShown();
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses.size(), 1);
        s->Click(u"other"_s);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses.size(), 2);
        m_page->DisplayDefaultHTMLPage(); // home
        QCOMPARE(s->Details.Addresses.size(), 3);
    }

    void pageWhoseFileIsGone_isForgotten()
    {
        GivePage();
        QFile::remove(PageFile());
        const Date changed =
            s->State.CurrentDatabase->QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {m_item}).ToDate();
        s->Time.AddSeconds(60);
        s->Click(u"item"_s);
        QVERIFY(s->Details.Links);
        m_page->LinksTabShown();
        QCOMPARE(s->Details.Addresses, QStringList{u"quillbase-page://library/default2.htm"_s});
        QVERIFY(!s->Details.Links);
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), false);
        QCOMPARE(Read(u"LastChanged"_s).ToDate(), changed);
    }

    void pageWhoseFileIsGone_ofAChangedItem_isForgottenWhenItIsSaved()
    {
        GivePage();
        QFile::remove(PageFile());
        s->Click(u"item"_s);
        s->Details.Type(u"typed"_s);
        m_page->LinksTabShown();
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), true);
        QVERIFY(s->State.oCodeItem->ItemChanged());
        QVERIFY(s->Details.SaveItem());
        QCOMPARE(Read(u"HTMLPage"_s).ToBoolean(), false);
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s).ToText()), u"typed"_s);
    }

    void typedAddress_isNavigatedTo()
    {
        m_page->NavigateFromCombo(u" example.org "_s);
        QCOMPARE(s->Details.Addresses, QStringList{u"example.org"_s});
    }

    void noLibrary_showsNothing()
    {
        s->State.CurrentDatabase.reset();
        m_page->LinksTabShown();
        QVERIFY(s->Details.Addresses.isEmpty());
    }

private:
    QString PageFile() const { return s->State.CurrentHTMLFolder() + QString::number(m_item) + u".htm"_s; }
    void GivePage()
    {
        WriteFile(PageFile(), "<p>page</p>");
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET HTMLPage = ? WHERE ID = ?"_s, {true, m_item});
    }
    Value Read(const QString& column)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE ID = ?"_s, {m_item});
    }

    std::unique_ptr<TestSession> s;
    std::unique_ptr<ItemWebPage> m_page;
    qint64 m_item = 0;
};

QTEST_GUILESS_MAIN(TestItemWebPage)
#include "tst_item_web_page.moc"
