#include "components/ui/ApplicationTips.h"
#include "platform/system/Paths.h"
#include "session/ui/frmDatabaseList.h"
#include "session/ui/frmNewDatabase.h"
#include "support/GuiRun.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "support/ui/DialogPrompts.h"
#include "support/ui/TextChoiceDialog.h"
#include "support/ui/frmError.h"
#include "support/ui/frmInfo.h"
#include "support/ui/frmMsgBox.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Runs @p action on the dialog that is opened next.
template <class Dialog, class Action>
void WhenShown(Action&& action)
{
    QTimer::singleShot(0, qApp, [action] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        action(*dialog);
    });
}

} // namespace

class TestDialogs : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void errorDialog_asksForAReport_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("report");
        QTest::newRow("OK") << u"cmdOK"_s << false;
        QTest::newRow("report") << u"cmdReport"_s << true;
    }

    void errorDialog_asksForAReport()
    {
        QFETCH(QString, button);
        QFETCH(bool, report);
        WhenShown<frmError>([button](frmError& dialog) {
            QCOMPARE(dialog.windowTitle(), u"KT Quillbase Error"_s);
            QCOMPARE(dialog.findChild<QLabel*>(u"lblMessage"_s)->text(), u"<b>it failed</b>"_s);
            TakePicture(dialog, u"error"_s);
            dialog.findChild<QPushButton*>(button)->click();
        });
        QCOMPARE(DialogPrompts().ShowError(u"<b>it failed</b>"_s), report);
    }

    void errorDialog_growsWithItsMessage()
    {
        frmError dialog;
        dialog.SetMessage(u"short"_s);
        dialog.adjustSize();
        const int height = dialog.height();
        dialog.SetMessage(QString(1000, u'x').replace(u"xxxxx"_s, u"word "_s));
        dialog.adjustSize();
        QVERIFY(dialog.height() > height);
    }

    void textChoice_showsBothSidesAndAnswersWithTheButtonPressed_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<ChosenText>("chosen");
        QTest::newRow("own") << u"cmdOwn"_s << Qt::Key() << ChosenText::Own;
        QTest::newRow("theirs") << u"cmdTheirs"_s << Qt::Key() << ChosenText::Theirs;
        QTest::newRow("Escape") << QString() << Qt::Key_Escape << ChosenText::Cancel;
        QTest::newRow("Enter") << QString() << Qt::Key_Enter << ChosenText::Own;
    }

    void textChoice_showsBothSidesAndAnswersWithTheButtonPressed()
    {
        QFETCH(QString, button);
        QFETCH(Qt::Key, key);
        QFETCH(ChosenText, chosen);
        WhenShown<TextChoiceDialog>([button, key](TextChoiceDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), u"Caption"_s);
            QCOMPARE(dialog.findChild<QLabel*>(u"lblQuestion"_s)->text(), u"<b>which?</b>"_s);
            // What differs is selected.
            QCOMPARE(dialog.findChild<QPlainTextEdit*>(u"txtOwn"_s)->textCursor().selectedText(), u"mine"_s);
            QCOMPARE(dialog.findChild<QPlainTextEdit*>(u"txtTheirs"_s)->textCursor().selectedText(), u"theirs"_s);
            TakePicture(dialog, u"text choice"_s);
            if (button.isEmpty())
                QTest::keyClick(&dialog, key);
            else
                dialog.findChild<QPushButton*>(button)->click();
        });
        QCOMPARE(DialogPrompts().ChooseText({.Caption = u"Caption"_s,
                                             .Text = u"<b>which?</b>"_s,
                                             .Own = u"one\r\nmine\r\nlast"_s,
                                             .Theirs = u"one\r\ntheirs\r\nlast"_s}),
                 chosen);
    }

    void messageBox_answersWithTheButtonPressed_data()
    {
        QTest::addColumn<MsgBoxButtons>("buttons");
        QTest::addColumn<int>("press");
        QTest::addColumn<MsgBoxResult>("result");
        QTest::newRow("ok") << MsgBoxButtons::OkOnly << int(QMessageBox::Ok) << MsgBoxResult::Ok;
        QTest::newRow("yes") << MsgBoxButtons::YesNo << int(QMessageBox::Yes) << MsgBoxResult::Yes;
        QTest::newRow("no") << MsgBoxButtons::YesNoCancel << int(QMessageBox::No) << MsgBoxResult::No;
        QTest::newRow("cancel") << MsgBoxButtons::YesNoCancel << int(QMessageBox::Cancel) << MsgBoxResult::Cancel;
        QTest::newRow("retry") << MsgBoxButtons::RetryCancel << int(QMessageBox::Retry) << MsgBoxResult::Retry;
        QTest::newRow("cancel of retry") << MsgBoxButtons::RetryCancel << int(QMessageBox::Cancel)
                                         << MsgBoxResult::Cancel;
        QTest::newRow("cancel of ok") << MsgBoxButtons::OkCancel << int(QMessageBox::Cancel) << MsgBoxResult::Cancel;
    }

    void messageBox_answersWithTheButtonPressed()
    {
        QFETCH(MsgBoxButtons, buttons);
        QFETCH(int, press);
        WhenShown<QMessageBox>([press](QMessageBox& box) {
            QCOMPARE(box.windowTitle(), u"Caption"_s);
            QCOMPARE(box.text(), u"Text"_s);
            box.button(QMessageBox::StandardButton(press))->click();
        });
        const MsgBoxResult result = DialogPrompts().MsgBox(
            {.Text = u"Text"_s, .Caption = u"Caption"_s, .Buttons = buttons});
        QTEST(result, "result");
    }

    void messageBox_pressesItsDefaultOnEnter()
    {
        WhenShown<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); });
        QCOMPARE(DialogPrompts().MsgBox({.Text = u"Delete?"_s,
                                         .Caption = u"C"_s,
                                         .Buttons = MsgBoxButtons::YesNo,
                                         .Default = MsgBoxResult::No}),
                 MsgBoxResult::No);
    }

    void inputBox_givesTheTextOrNothing()
    {
        WhenShown<QInputDialog>([](QInputDialog& dialog) {
            QCOMPARE(dialog.textValue(), u"preset"_s);
            dialog.setTextValue(u"typed"_s);
            dialog.accept();
        });
        QCOMPARE(DialogPrompts().InputBox(u"Text"_s, u"Caption"_s, u"preset"_s), std::optional(u"typed"_s));
        WhenShown<QInputDialog>([](QInputDialog& dialog) { dialog.reject(); });
        QCOMPARE(DialogPrompts().InputBox(u"Text"_s, u"Caption"_s, u"preset"_s), std::optional<QString>());
    }

    void operationSuccessful_isCaptionedAndLeadsThere()
    {
        WhenShown<frmMsgBox>([](frmMsgBox& dialog) {
            QCOMPARE(dialog.windowTitle(), u"Operation Successful"_s);
            QCOMPARE(dialog.findChild<QPushButton*>(u"cmdTakeMeThere"_s)->text(), u"&Take me there..."_s);
            dialog.findChild<QPushButton*>(u"cmdOK"_s)->click();
        });
        DialogPrompts().OperationSuccessful(u"Packed"_s, u"/folder/file.qbb"_s);
    }

    void information_standsUntilItsOwnerLetsItGo()
    {
        {
            const auto information = DialogPrompts().InformUser(u"Please wait"_s);
            const QWidgetList windows = QApplication::topLevelWidgets();
            const auto shown = std::find_if(windows.begin(), windows.end(),
                                            [](const QWidget* w) { return w->objectName() == u"frmInfo"; });
            QVERIFY(shown != windows.end() && (*shown)->isVisible());
        }
        for (const QWidget* window : QApplication::topLevelWidgets())
            QVERIFY(window->objectName() != u"frmInfo");
    }

    void newDatabase_givesTheLanguageOfItsOption_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<LanguageType>("language");
        QTest::newRow("VB") << u"optVB"_s << LanguageType::VB;
        QTest::newRow("C++") << u"optC"_s << LanguageType::Cpp;
        QTest::newRow("file") << u"optFile"_s << LanguageType::File;
        QTest::newRow("self defined") << u"optSelfDefined"_s << LanguageType::SelfDefined;
    }

    void newDatabase_givesTheLanguageOfItsOption()
    {
        QFETCH(QString, option);
        frmNewDatabase dialog;
        QCOMPARE(dialog.LanguageSelected(), LanguageType::None);
        dialog.findChild<QRadioButton*>(option)->setChecked(true);
        dialog.findChild<QLineEdit*>(u"txtPath"_s)->setText(u"/some/file.qbl"_s);
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_Enter);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QTEST(dialog.LanguageSelected(), "language");
        QCOMPARE(dialog.LanguageFilePath(), option == u"optFile"_s ? u"/some/file.qbl"_s : QString());
    }

    void newDatabase_needsAFileForItsFileOption()
    {
        const TemporaryHome home;
        WriteFile(home.Path(u"lang.qbl"_s), "x");
        frmNewDatabase dialog;
        auto* ok = dialog.findChild<QPushButton*>(u"cmdOK"_s);
        dialog.findChild<QRadioButton*>(u"optFile"_s)->setChecked(true);
        QVERIFY(!ok->isEnabled());
        ScriptedPrompts prompts;
        prompts.ExpectFileName(u"Please select Quillbase language definition file:"_s, home.Path(u"lang.qbl"_s));
        dialog.findChild<QPushButton*>(u"cmdBrowse"_s)->click();
        QCOMPARE(prompts.Questions.first().Filter, u"KT Quillbase Language Definition|*.qbl"_s);
        QVERIFY(ok->isEnabled());
        QCOMPARE(dialog.findChild<QLineEdit*>(u"txtPath"_s)->text(), home.Path(u"lang.qbl"_s));
    }

    void tips_areTheParagraphsOfTheFile()
    {
        const TemporaryHome home;
        const FixedClock clock;
        WriteFile(home.Path(u"Tips.rtf"_s), "{\\rtf1 one\\par\\par two\\par}");
        QCOMPARE(ApplicationTips::ReadTips(home.Path(u"Tips.rtf"_s)), (QStringList{u"one"_s, u"two"_s}));
        ApplicationTips tips(nullptr);
        QSignalSpy startup(&tips, &ApplicationTips::TipsOnStartupChanged);
        QSignalSpy closed(&tips, &ApplicationTips::TipsFormClosed);
        QVERIFY(!tips.Start(u"KTQuillbase"_s, home.Path(u"none.rtf"_s)));
        QVERIFY(tips.Start(u"KTQuillbase"_s, home.Path(u"Tips.rtf"_s)));
        const QWidgetList windows = QApplication::topLevelWidgets();
        QWidget* window = *std::find_if(windows.begin(), windows.end(),
                                        [](const QWidget* w) { return w->objectName() == u"frmTips"; });
        const auto* text = window->findChild<QLabel*>(u"lblTip"_s);
        const QString first = text->text();
        window->findChild<QPushButton*>(u"cmdNextTip"_s)->click();
        QVERIFY(text->text() != first);
        window->findChild<QPushButton*>(u"cmdPreviousTip"_s)->click();
        QCOMPARE(text->text(), first);
        window->findChild<QCheckBox*>(u"chkTipsOnStartup"_s)->click();
        QCOMPARE(startup.value(0).value(0).toBool(), false);
        TakePicture(*window, u"tips"_s);
        window->close();
        QCOMPARE(closed.size(), 1);
    }

    void databaseList_hasARowForEachLibrary()
    {
        frmDatabaseList dialog;
        dialog.Initialize({{u"/a/one.qbd"_s, u"One"_s}, {u"/b/two.qbd"_s, u"Two"_s}}, 1);
        QCOMPARE(dialog.windowTitle(), u"Connected Databases"_s);
        const auto* list = dialog.findChild<QTreeWidget*>(u"lvDatabases"_s);
        QCOMPARE(list->topLevelItemCount(), 2);
        QCOMPARE(list->topLevelItem(0)->text(0), u"One"_s);
        QCOMPARE(list->topLevelItem(1)->text(1), u"/b/two.qbd"_s);
        QCOMPARE(list->currentItem(), list->topLevelItem(1));
        QVERIFY(list->topLevelItem(0)->icon(0).cacheKey() != list->topLevelItem(1)->icon(0).cacheKey());
        TakePicture(dialog, u"database-list"_s);
    }
};

QB_GUI_TEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
