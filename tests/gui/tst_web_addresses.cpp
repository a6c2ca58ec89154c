#include "support/CountingServer.h"
#include "support/EditingWindow.h"
#include "web/WebAccess.h"
#include "web/ui/BrowserView.h"

#include <QComboBox>
#include <QTcpServer>
#include <QWindow>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The Links tab of the main window: addresses that lead nowhere, and what its first visit does to the window.
class TestWebAddresses : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // Without a display the browser draws by itself, of which it tells.
        QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support |WebEngineContext used before |"
                                                "No suitable graphics backend )"_s));
        m_before = WebAccess::SetSource([] { return WebSurroundings(); }); // the pages are the test's own
        Begin();
    }
    void cleanup()
    {
        End();
        WebAccess::SetSource(m_before);
    }

    void addressThatLeadsNowhere_saysSo_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("no address") << u"what is this"_s;
        QTest::newRow("no host") << u"http://"_s;
        QTest::newRow("no page") << u"local://Item999"_s;
        QTest::newRow("nobody there") << QString(); // a port that nobody listens at
    }
    void addressThatLeadsNowhere_saysSo()
    {
        QFETCH(QString, address);
        if (address.isEmpty()) {
            QTcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            address = u"http://127.0.0.1:%1/"_s.arg(server.serverPort());
        }
        Open();
        ClickOn(0);
        Tab(LinksTab);
        Type(address);
        QTRY_VERIFY_WITH_TIMEOUT(Nowhere() && Nowhere()->isVisible(), 20'000);
        QVERIFY2(Nowhere()->text().contains(address.section(u':', 0, 0)), qPrintable(Nowhere()->text()));
        QVERIFY2(Nowhere()->text().contains(u"leads nowhere: "_s), qPrintable(Nowhere()->text()));
        QVERIFY2(!Nowhere()->text().contains(u"net::"_s), qPrintable(Nowhere()->text()));
        TakePicture(*m_window, u"web-nowhere"_s);
        Action(u"mnuWebHome"_s)->trigger();
        QTRY_VERIFY(!Nowhere()->isVisible());
    }

    void addressesThatWereEntered_areOfferedAgain()
    {
        CountingServer server;
        const QString first = QString::fromLatin1(server.Address()) + u"first"_s;
        const QString second = QString::fromLatin1(server.Address()) + u"second"_s;
        Open();
        ClickOn(0);
        Tab(LinksTab);
        auto* box = m_window->findChild<QComboBox*>(u"cboURL"_s);
        const auto entries = [box] {
            QStringList texts;
            for (int at = 0; at < box->count(); ++at)
                texts << box->itemText(at);
            return texts;
        };
        for (const QString& address : {first, second, first}) {
            const qsizetype asked = server.Asked.size();
            Type(address);
            QTRY_VERIFY(server.Asked.size() > asked);
        }
        QCOMPARE(entries(), QStringList({second, first})); // each once, the last new one first
        box->setCurrentIndex(0);
        const qsizetype asked = server.Asked.count(u"/second"_s);
        Q_EMIT box->textActivated(second); // as the choice of an entry does
        QTRY_COMPARE(server.Asked.count(u"/second"_s), asked + 1);
        Type(u"  "_s); // leads nowhere, and says nothing of it
        QVERIFY(!Nowhere());
    }

    /// The window is made anew where it draws by OpenGL, as on the X server that this runs on once more.
    void firstVisit_leavesTheWindowMaximised()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"SaveFormLayout"_s, u"True"_s);
        Open();
        m_window->showMaximized();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTRY_VERIFY(m_window->isMaximized());
        const QRect place = m_window->geometry();
        ClickOn(0);
        Tab(LinksTab);
        QTRY_VERIFY(m_window->isVisible());
        QCoreApplication::processEvents();
        QVERIFY(m_window->isMaximized());
        QCOMPARE(m_window->windowHandle()->windowStates(), Qt::WindowStates(Qt::WindowMaximized));
        QCOMPARE(m_window->geometry(), place);
        m_window->close();
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"WindowState"_s), u"2"_s);
    }

private:
    static constexpr int LinksTab = 4;
    WebAccess::Source m_before;

    QLabel* Nowhere() { return m_window->findChild<QLabel*>(u"lblNowhere"_s); }
    void Type(const QString& address)
    {
        auto* box = m_window->findChild<QComboBox*>(u"cboURL"_s);
        box->setEditText(address);
        QTest::keyClick(box, Qt::Key_Return);
    }
};

QB_GUI_TEST_MAIN(TestWebAddresses)
#include "tst_web_addresses.moc"
