#include "conflicts/ConflictedLibrary.h"
#include "conflicts/ui/frmConflicts.h"
#include "support/GuiRun.h"
#include "text/ui/ctlCaptionRTB.h"
#include "web/WebAccess.h"
#include "web/ui/BrowserView.h"

#include <QAbstractButton>
#include <QBuffer>
#include <QImage>
#include <QRegularExpression>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray Png(const QColor& color)
{
    QImage image(60, 60, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

/// The web pages of two versions in the solver's browsers.
class TestConflictPages : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    std::unique_ptr<frmConflicts> m_form;
    WebAccess::Source m_before;

    QWidget* Browser(const char* side)
    {
        return m_form->findChild<ctlCaptionRTB*>(QString::fromLatin1(side))->findChild<BrowserView*>(u"WebBrowser"_s);
    }
    ctlCaptionRTB* Box(const char* side) { return m_form->findChild<ctlCaptionRTB*>(QString::fromLatin1(side)); }
    /// Somewhere in the browser of a side.
    bool Shows(const char* side, const QColor& color)
    {
        const QImage image = Browser(side)->grab().toImage();
        for (int y = 0; y < image.height(); y += 8) {
            for (int x = 0; x < image.width(); x += 8) {
                if (image.pixelColor(x, y) == color)
                    return true;
            }
        }
        return false;
    }
    void Show()
    {
        m_form = std::make_unique<frmConflicts>();
        m_form->InitializeDatabase(*m->Db);
        QVERIFY(m_form->Load());
        m_form->show();
    }
    /// A conflict of pages; the own one has a picture of a colour, as the other one, where it has a page at all.
    qint64 AddPages(const QColor& own, const QColor& other = {})
    {
        VersionTexts ours;
        ours.HasPage = true;
        ours.PageUpdated = m->At(10);
        VersionTexts theirs;
        theirs.HasPage = other.isValid();
        theirs.PageUpdated = m->At(20);
        const qint64 id = m->AddConflict(ours, theirs);
        const QByteArray script = "<script>document.body.style.background='#f00'</script>"
                                  "<img src='x' onerror=\"document.body.style.background='#f00'\">";
        m->AddPage(id, "<body style='background:#fff'><h1>Page of the mother</h1><img src='" + QByteArray::number(id)
                           + "/own.png'><img src='../secret.png'><img src='../999/foreign.png'>" + script);
        WriteFile(m->Db->HTMLFolder() + QString::number(id) + u"/own.png"_s, Png(own));
        if (other.isValid()) {
            m->AddTempPage(id, u"77.htm"_s, {},
                           "<body style='background:#fff'><h1>Page of the replica</h1><img src='77/their.png'>"
                           "<img src='../999/foreign.png'><img src='../../secret.png'>"
                               + script);
            m->AddTempPage(id, u"their.png"_s, {}, Png(other));
        }
        return id;
    }

private Q_SLOTS:
    void init()
    {
        // Without a display the browser draws by itself, of which it tells.
        QTest::failOnWarning(QRegularExpression(
            u"^(?!This plugin does not support |WebEngineContext used before |No suitable graphics backend )"_s));
        m_before = WebAccess::SetSource([] { return WebSurroundings(); }); // the pages are the test's own
        m = std::make_unique<ConflictedLibrary>();
    }
    void cleanup()
    {
        m_form.reset();
        WebAccess::SetSource(m_before);
        m.reset();
    }

    void pages_standSideBySideAndReachNothingElse()
    {
        AddPages(Qt::green, Qt::blue);
        QDir().mkpath(m->Db->HTMLFolder() + u"999"_s);
        WriteFile(m->Db->HTMLFolder() + u"999/foreign.png"_s, Png(Qt::red)); // of another item
        WriteFile(m->Home.Path(u"Mütter/secret.png"_s), Png(Qt::red));
        Show();
        QTRY_VERIFY(Shows("ctlCaptionRTB1", Qt::green));
        QTRY_VERIFY(Shows("ctlCaptionRTB2", Qt::blue));
        QTest::qWait(300); // for what should not happen
        QVERIFY(!Shows("ctlCaptionRTB1", Qt::red) && !Shows("ctlCaptionRTB2", Qt::red));
        QVERIFY(!Shows("ctlCaptionRTB1", Qt::blue) && !Shows("ctlCaptionRTB2", Qt::green));
        TakePicture(*m_form, u"conflicts-pages"_s);
        m_form->findChild<QAbstractButton*>(u"cmdSwap"_s)->click();
        QTRY_VERIFY(Shows("ctlCaptionRTB1", Qt::blue) && Shows("ctlCaptionRTB2", Qt::green));
    }

    void nextConflict_showsItsOwnPages()
    {
        AddPages(Qt::green, Qt::blue);
        AddPages(Qt::yellow);
        Show();
        QTRY_VERIFY(Shows("ctlCaptionRTB1", Qt::green));
        m_form->findChild<QAbstractButton*>(u"cmdMoveNext"_s)->click();
        QTRY_VERIFY(Shows("ctlCaptionRTB1", Qt::yellow));
        QVERIFY(!Box("ctlCaptionRTB2")->ShowBrowser());
        QCOMPARE(Box("ctlCaptionRTB2")->Text(), u"This version has no web page."_s);
        QVERIFY(Box("ctlCaptionRTB2")->Locked());
        TakePicture(*m_form, u"conflicts-one-page"_s);
        m->Db->Execute(u"UPDATE Items SET HTMLPage = 0"_s);
        m_form->findChild<QAbstractButton*>(u"cmdMovePrevious"_s)->click();
        QTRY_VERIFY(Shows("ctlCaptionRTB2", Qt::blue));
        QVERIFY(!Box("ctlCaptionRTB1")->ShowBrowser()); // what is left of its files is no page
    }
};

QB_GUI_TEST_MAIN(TestConflictPages)
#include "tst_conflict_pages.moc"
