#include "removed/Keeping.h"
#include "session/ui/frmRemovedItems.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"
#include "support/ui/WorkProgress.h"

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The list of removed items in the window.
class TestRemovedItems : public QObject, private EditingWindow {
    Q_OBJECT

    FixedClock m_clock;
    bool m_acted = false;

    void InList(const std::function<void(frmRemovedItems&)>& act)
    {
        QTimer::singleShot(0, m_window.get(), [this, act] {
            auto* dialog = qobject_cast<frmRemovedItems*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            act(*dialog);
            m_acted = true;
            if (dialog->isVisible())
                dialog->reject();
        });
        Action(u"mnuRemovedItems"_s)->trigger();
        QVERIFY(m_acted);
        m_acted = false;
    }
    static QTreeWidget* List(const QDialog& dialog) { return dialog.findChild<QTreeWidget*>(u"lvRemoved"_s); }
    static QPushButton* Button(const QDialog& dialog, const QString& name)
    {
        return dialog.findChild<QPushButton*>(name);
    }
    static QString Label(const QDialog& dialog, const QString& name) { return dialog.findChild<QLabel*>(name)->text(); }
    void RemoveSome()
    {
        const qint64 folder = AddItem(*m_database, 0, u"Files and folders"_s);
        const qint64 item = AddItem(*m_database, folder, u"Read a text file"_s, u"std::string ReadAll();"_s);
        AddStoredFile(*m_database, item, u"sample.txt"_s, "sample", Date::FromParts(2026, 1, 1));
        for (const qint64 id : {item, folder}) {
            Kept(*m_database, RemovalKind::DeletedByUser, u"Items deleted"_s,
                 [&](Keeping& keeping) { DeleteBranch(*m_database, id, NoWork(), keeping); });
        }
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        WorkProgress::Delay = std::chrono::hours(1);
        m_clock.Set(Date::FromParts(2026, 3, 2, 14, 30, 5));
        Begin();
    }
    void cleanup()
    {
        ApplyAppearance(u"System"_s, {}, 0);
        End();
    }

    void emptyList_saysWhatItIsFor()
    {
        Open();
        InList([](frmRemovedItems& dialog) {
            QVERIFY(Label(dialog, u"lblNotice"_s).contains(u"Nothing is kept here yet"_s));
            QVERIFY(!Button(dialog, u"cmdBringBack"_s)->isEnabled());
            TakePicture(dialog, u"removed-items-empty"_s);
        });
    }

    void chosen_isShownAndComesBack()
    {
        RemoveSome();
        Open();
        qint64 id = 0;
        InList([&](frmRemovedItems& dialog) {
            QTreeWidget* list = List(dialog);
            QCOMPARE(list->topLevelItemCount(), 2);
            auto* search = dialog.findChild<QLineEdit*>(u"txtSearch"_s);
            search->setText(u"nowhere"_s);
            QVERIFY(Label(dialog, u"lblNotice"_s).contains(u"fits"_s));
            search->setText(u"read FILES"_s);
            QCOMPARE(list->topLevelItemCount(), 1);
            const QString text = dialog.findChild<QPlainTextEdit*>(u"txtPreview"_s)->toPlainText();
            QVERIFY2(text.contains(u"std::string ReadAll();"_s) && text.contains(u"sample.txt"_s), qPrintable(text));
            TakePicture(dialog, u"removed-items"_s);
            dialog.resize(480, 320);
            TakePicture(dialog, u"removed-items-narrow"_s);
            dialog.AskPlace = [] { return qint64(-1); };
            Button(dialog, u"cmdBringBack"_s)->click();
            QVERIFY(!Button(dialog, u"cmdShow"_s)->isEnabled()); // nowhere
            dialog.AskPlace = [] { return qint64(0); };
            Button(dialog, u"cmdBringBack"_s)->click();
            QVERIFY(Label(dialog, u"lblDone"_s).contains(u"was brought back"_s));
            id = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'Read a text file'"_s).ToLong();
            QVERIFY(id != 0);
            Button(dialog, u"cmdShow"_s)->click();
        });
        QTRY_COMPARE(Tree()->currentIndex().data().toString(), u"Read a text file"_s);
    }

    void darkWindow_isReadable()
    {
        RemoveSome();
        Open();
        ApplyAppearance(u"Dark"_s, {}, 0);
        InList([](frmRemovedItems& dialog) {
            QVERIFY(dialog.palette().color(QPalette::Base).lightness() < 128);
            TakePicture(dialog, u"removed-items-dark"_s);
        });
    }
};

QB_GUI_TEST_MAIN(TestRemovedItems)
#include "tst_removed_items.moc"
