#include "support/EditingWindow.h"

#include <QClipboard>
#include <QMimeData>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Web pages that are pasted into the boxes of the main window, and texts that are too large for them.
class TestForeignTexts : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void textsThatAreTooLarge_areShownByTheirBeginAndStayAsTheyAre()
    {
        const QString notes = u"{\\rtf1 begin of notes\\par "_s + u"\\par "_s.repeated(1600000) + u"}"_s;
        const QString code = u"{\\rtf1 begin of code "_s + QString(3000000, u'x') + u"}"_s;
        const QString usage = u"{\\rtf1 begin of usage "_s + u"\\protect x\\protect0 x"_s.repeated(400000) + u"}"_s;
        m_database->Execute(u"UPDATE Items SET Notes = ?, Code = ?, Example = ?, Info = ? WHERE ID = ?"_s,
                            {notes, code, usage, QString(3000000, u'i'), m_item});
        Open();
        ClickOn(0);
        QVERIFY2(m_window->findChild<QLabel*>(u"lblLockedState"_s)->text().contains(u"too large"), "not said");
        for (const int tab : {0, 1, 2}) {
            Tab(tab);
            const auto* box = Details()->CurrentBox();
            QVERIFY(box && box->Locked());
            QVERIFY2(box->Text().startsWith(u"This text is too large"), qPrintable(box->Text().left(80)));
            QVERIFY2(box->Text().contains(u"begin of "), qPrintable(box->Text().left(300)));
            QVERIFY(box->Text().size() < 20000);
            TakePicture(*m_window, u"too-large-%1"_s.arg(tab));
        }
        QTest::keyClicks(Code(), u"typed"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        ClickOn(1);
        QVERIFY(!Code()->Locked());
        QTest::keyClicks(Code(), u"another item is as ever"_s);
        ClickOn(0);
        QCOMPARE(Read(u"Notes"_s) == notes && Read(u"Code"_s) == code && Read(u"Example"_s) == usage, true);
    }

    void pageWithoutAPlainText_goesIntoCodeAsItsText()
    {
        Open();
        ClickOn(0);
        Copy(u"<h1>Title</h1><p>a <b>b</b>&nbsp;&lt;c&gt;</p><table><tr><td>1</td><td>2</td></tr></table>"_s);
        QTest::keyClick(Code(), Qt::Key_V, Qt::ControlModifier);
        QVERIFY2(Code()->Text().startsWith(u"Title\r\na b <c>\r\n"_s), qPrintable(Code()->Text()));
        QVERIFY2(Code()->Text().contains(u"1\t2"_s), qPrintable(Code()->Text()));
        Code()->SetSelStart(0);
        Code()->SetSelLength(5);
        QCOMPARE(Code()->SelBold(), false); // only its text
    }

    void pageInNotes_keepsHeadingsAndSizes()
    {
        PasteIntoNotes(u"<h1>One</h1><h2>Two</h2><h3>Three</h3><p>plain <span style='font-size:18pt'>large</span> "
                       "<big>big</big> <small>small</small></p>"_s);
        QCOMPARE(SizeOf(u"One"_s), 20.0);
        QCOMPARE(SizeOf(u"Two"_s), 15.0);
        QCOMPARE(SizeOf(u"Three"_s), 12.0);
        QCOMPARE(SizeOf(u"plain"_s), 10.0);
        QCOMPARE(SizeOf(u"large"_s), 18.0);
        QCOMPARE(SizeOf(u"big"_s), 12.0);
        QCOMPARE(SizeOf(u"small"_s), 8.0);
        SelectInNotes(u"One"_s);
        QCOMPARE(Notes()->SelBold(), true);
        TakePicture(*m_window, u"notes-html"_s);
    }

    void pageInNotes_keepsListsAndLinks()
    {
        PasteIntoNotes(u"<p>see <a href='https://example.org/a'>this</a></p><ul><li>first</li><li>second</li></ul>"_s);
        TakePicture(*m_window, u"notes-html-list"_s);
        for (const QString& item : {u"first"_s, u"second"_s}) {
            SelectInNotes(item);
            QCOMPARE(Notes()->SelBullet(), true);
        }
        SelectInNotes(u"see"_s);
        QCOMPARE(Notes()->SelBullet(), false);
        QVERIFY(Notes()->TextRTF().contains(u"https://example.org/a"_s));
    }

    void tableInNotes_isALineARow()
    {
        PasteIntoNotes(u"<p>before</p><table><tr><th>name</th><th>price</th></tr>"
                       "<tr><td>nail</td><td>2</td></tr></table><p>after</p>"_s);
        QVERIFY2(Notes()->Text().contains(u"name\tprice\r\nnail\t2\r\n"_s), qPrintable(Notes()->Text()));
        QVERIFY(Notes()->Text().contains(u"after"_s));
        TakePicture(*m_window, u"notes-html-table"_s);
    }

private:
    static void Copy(const QString& html)
    {
        auto* data = new QMimeData; // the clipboard owns it
        data->setHtml(html);
        QGuiApplication::clipboard()->setMimeData(data);
    }
    void PasteIntoNotes(const QString& html)
    {
        Open();
        ClickOn(0);
        Tab(1);
        Notes()->setFocus();
        Copy(html);
        QTest::keyClick(Notes(), Qt::Key_V, Qt::ControlModifier);
    }
    void SelectInNotes(const QString& text)
    {
        Notes()->SetSelStart(Notes()->Text().indexOf(text));
        Notes()->SetSelLength(text.size());
        QCOMPARE(Notes()->SelText(), text);
    }
    double SizeOf(const QString& text)
    {
        SelectInNotes(text);
        return Notes()->SelFontSize().value_or(0);
    }
};

QB_GUI_TEST_MAIN(TestForeignTexts)
#include "tst_foreign_texts.moc"
