#include "support/GuiRun.h"
#include "support/TestRun.h"
#include "support/ui/WorkProgress.h"

#include <QLabel>
#include <QMouseEvent>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// The dialog over a long work.
class TestWorkProgress : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        WorkProgress::Delay = 0ms;
    }

    void shortWork_isNotShown()
    {
        WorkProgress::Delay = 1h;
        WorkProgress work(nullptr, u"Importing Files"_s);
        work.Advance(1, 2);
        QVERIFY(!work.IsCancelled());
        QCoreApplication::processEvents();
        QVERIFY(!Dialog());
    }

    void longWork_isShownOnlyWhenItAdvances()
    {
        WorkProgress work(nullptr, u"Importing Files"_s);
        QCoreApplication::processEvents();
        QVERIFY(!Dialog()); // a question may be under way
        work.SetCaption(u"Adding <b>"_s + QString(300, u'x') + u" "_s);
        work.Advance(1, 4);
        QVERIFY(!work.IsCancelled());
        QVERIFY(Dialog());
        QCOMPARE(Dialog()->windowTitle(), u"Importing Files"_s);
        QVERIFY(Dialog()->isModal());
        QCOMPARE(Dialog()->value(), 249);
        QVERIFY(Dialog()->labelText().startsWith(u"Adding <b>x"_s));
        QVERIFY(Dialog()->labelText().size() < 100); // it is not widened by a name
        QCOMPARE(Dialog()->findChild<QLabel*>()->textFormat(), Qt::PlainText);
        TakePicture(*Dialog(), u"work-progress"_s);
        work.Advance(4, 4);
        QVERIFY(!work.IsCancelled());
        QVERIFY(Dialog()); // until the work itself is over
    }

    void cancelledWork_isToldSo()
    {
        WorkProgress work(nullptr, u"Importing Files"_s);
        work.Advance(1, 4);
        QVERIFY(!work.IsCancelled());
        auto* cancel = Dialog()->findChild<QPushButton*>();
        for (const QEvent::Type type :
             {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) { // by the user, in the queue
            const QPointF place = QRectF(cancel->rect()).center();
            QCoreApplication::postEvent(
                cancel, new QMouseEvent(type, place, cancel->mapToGlobal(place), Qt::LeftButton,
                                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, {}));
        }
        work.Advance(2, 4);
        QVERIFY(work.IsCancelled());
    }

    void workThatOnlyGoesOn_isShownAsFarAsItWas()
    {
        WorkProgress work(nullptr, u"Restoring"_s);
        work.Pulse();
        QVERIFY(Dialog());
        work.Advance(1, 4);
        work.Pulse();
        QCOMPARE(Dialog()->value(), 249);
    }

    void workWithoutASize_isShownToo()
    {
        WorkProgress work(nullptr, u"Exporting File"_s);
        work.Advance(0, 0);
        QVERIFY(!work.IsCancelled());
        QVERIFY(Dialog());
    }

private:
    static QProgressDialog* Dialog() { return qobject_cast<QProgressDialog*>(QApplication::activeModalWidget()); }
};

QB_GUI_TEST_MAIN(TestWorkProgress)
#include "tst_work_progress.moc"
