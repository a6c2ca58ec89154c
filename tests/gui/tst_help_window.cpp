#include "help/Handbook.h"
#include "help/HelpTopics.h"
#include "help/ui/frmHelp.h"
#include "session/Commands.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"

#include <QListWidget>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The help window: what it shows, how it is walked through, and F1 wherever it is pressed.
class TestHelpWindow : public QObject, private EditingWindow {
    Q_OBJECT

private:
    void Show()
    {
        Open();
        m_window->resize(1000, 700);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    frmHelp* Help(QWidget* host = nullptr)
    {
        return (host ? host : m_window.get())->findChild<frmHelp*>(u"frmHelp"_s, Qt::FindDirectChildrenOnly);
    }
    template <class Widget>
    Widget* Part(const QString& name)
    {
        return Help()->findChild<Widget*>(name);
    }
    QTextBrowser* Page() { return Part<QTextBrowser>(u"txtHelp"_s); }
    QTreeWidget* Contents() { return Part<QTreeWidget>(u"tvContents"_s); }
    QListWidget* Hits() { return Part<QListWidget>(u"lstHits"_s); }
    QLineEdit* SearchField() { return Part<QLineEdit>(u"txtHelpSearch"_s); }
    void OpenHandbook()
    {
        Show();
        Action(u"mnuHelpItem"_s)->trigger();
        QVERIFY(Help());
        QTRY_COMPARE(QApplication::activeWindow(), Help());
    }
    void PressF1On(QWidget* widget)
    {
        widget->setFocus();
        QTest::keyClick(widget, Qt::Key_F1);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void handbook_opensAtItsFirstPage()
    {
        OpenHandbook();
        QCOMPARE(Help()->Topic(), u"index"_s);
        QVERIFY(Page()->toPlainText().startsWith(u"The handbook of KT Quillbase"_s));
        QCOMPARE(Contents()->topLevelItemCount(), int(Handbook().Pages().size()));
        QCOMPARE(Help()->windowTitle(), u"The handbook of KT Quillbase - Handbook"_s);
        Help()->ShowTopic(u"items"_s);
        TakePicture(*Help(), u"help"_s);
        Help()->ShowTopic(u"keys"_s);
        TakePicture(*Help(), u"help-keys"_s);
        Help()->ShowTopic(u"find"_s);
        Help()->resize(560, 500);
        TakePicture(*Help(), u"help-narrow"_s);
        Help()->resize(960, 700);
        ApplyAppearance(u"Dark"_s, {}, 0);
        TakePicture(*Help(), u"help-dark"_s);
        Help()->ShowTopic(u"command-line"_s);
        TakePicture(*Help(), u"help-commands-dark"_s);
        ApplyAppearance(u"System"_s, {}, 0);
    }

    void everyPage_isShownWithoutAWarning()
    {
        OpenHandbook();
        const Handbook handbook;
        for (const HelpPage& page : handbook.Pages()) {
            for (const HelpSection& section : page.Sections) {
                const QString topic = section.Anchor.isEmpty() ? page.Topic : page.Topic + u'#' + section.Anchor;
                Help()->ShowTopic(topic);
                QCOMPARE(Help()->Topic(), topic);
                QVERIFY2(Page()->toPlainText().contains(section.Title), qPrintable(topic));
            }
        }
    }

    void pictures_standInTheirPages()
    {
        OpenHandbook();
        Help()->ShowTopic(u"replication"_s);
        QStringList names;
        for (QTextBlock block = Page()->document()->begin(); block.isValid(); block = block.next()) {
            for (auto part = block.begin(); !part.atEnd(); ++part) {
                if (part.fragment().charFormat().isImageFormat())
                    names << part.fragment().charFormat().toImageFormat().name();
            }
        }
        QCOMPARE(names, (QStringList{u"replication-steps.svg"_s, u"conflict-solver.svg"_s}));
        for (const QString& name : std::as_const(names)) {
            const QImage picture =
                Page()->document()->resource(QTextDocument::ImageResource, QUrl(name)).value<QImage>();
            QVERIFY2(picture.width() >= 600, qPrintable(name));
        }
        TakePicture(*Help(), u"handbook-pictures"_s);
        const Handbook handbook;
        for (const QString& name : {u"../KTQBLinks.txt"_s, u"replication.html"_s, u"none.svg"_s, u""_s})
            QCOMPARE(handbook.Picture(name), QByteArray());
    }

    void anchor_scrollsToItsHeading()
    {
        OpenHandbook();
        Help()->ShowTopic(u"command-line#items"_s);
        QVERIFY(Page()->verticalScrollBar()->value() > 0);
        const QTextCursor top = Page()->cursorForPosition(QPoint(30, 5));
        QVERIFY2(top.block().text() == u"Items"_s || top.block().next().text() == u"Items"_s,
                 qPrintable(top.block().text()));
    }

    void topicThatIsShown_isScrolledBackTo()
    {
        OpenHandbook();
        for (const QString& topic : {u"command-line#items"_s, u"command-line"_s}) {
            Help()->ShowTopic(topic);
            const int place = Page()->verticalScrollBar()->value();
            Page()->verticalScrollBar()->setValue(Page()->verticalScrollBar()->maximum());
            QVERIFY(Page()->verticalScrollBar()->value() != place);
            Help()->ShowTopic(topic);
            QCOMPARE(Page()->verticalScrollBar()->value(), place);
        }
    }

    void backAndForward_goThroughWhatWasRead()
    {
        OpenHandbook();
        QAction* back = Help()->findChild<QAction*>(u"mnuHelpBack"_s);
        QAction* forward = Help()->findChild<QAction*>(u"mnuHelpForward"_s);
        QVERIFY(!back->isEnabled() && !forward->isEnabled());
        Help()->ShowTopic(u"items#walk"_s);
        Help()->ShowTopic(u"files"_s);
        QTest::keyClick(Help(), Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(Help()->Topic(), u"items#walk"_s);
        QCOMPARE(Contents()->currentItem()->text(0), u"Walk"_s);
        back->trigger();
        QCOMPARE(Help()->Topic(), u"index"_s);
        QVERIFY(!back->isEnabled() && forward->isEnabled());
        QTest::keyClick(Help(), Qt::Key_Right, Qt::AltModifier);
        QCOMPARE(Help()->Topic(), u"items#walk"_s);
        QTest::keyClick(Help(), Qt::Key_Home, Qt::AltModifier);
        QCOMPARE(Help()->Topic(), u"index"_s);
    }

    void contents_leadToTheirPages()
    {
        OpenHandbook();
        QTreeWidgetItem* files = Contents()->findItems(u"Files"_s, Qt::MatchExactly).front();
        Contents()->setCurrentItem(files);
        QCOMPARE(Help()->Topic(), u"files"_s);
        Contents()->setCurrentItem(files->child(0));
        QCOMPARE(Help()->Topic(), u"files#store-files"_s);
    }

    void link_leadsToItsTopic()
    {
        OpenHandbook();
        Help()->ShowTopic(u"libraries"_s);
        const QTextCursor link = Page()->document()->find(u"Code and languages"_s);
        Page()->setTextCursor(link);
        Page()->ensureCursorVisible();
        QTest::mouseClick(Page()->viewport(), Qt::LeftButton, {}, Page()->cursorRect().center() - QPoint(10, 0));
        QCOMPARE(Help()->Topic(), u"code"_s);
        QCOMPARE(Help()->windowTitle(), u"Code and languages - Handbook"_s);
    }

    // Search

    void search_showsWhatItFinds()
    {
        OpenHandbook();
        QTest::keyClick(Help(), Qt::Key_K, Qt::ControlModifier);
        QVERIFY(SearchField()->hasFocus());
        QTest::keyClicks(SearchField(), u"zip"_s);
        QVERIFY(Hits()->isVisible() && Hits()->count() > 1);
        QTest::keyClick(SearchField(), Qt::Key_Return);
        QVERIFY2(Help()->Topic().startsWith(u"files"_s), qPrintable(Help()->Topic()));
        QVERIFY(!Page()->extraSelections().isEmpty());
        TakePicture(*Help(), u"help-search"_s);
        ApplyAppearance(u"Dark"_s, {}, 0);
        TakePicture(*Help(), u"help-search-dark"_s);
        ApplyAppearance(u"System"_s, {}, 0);
        QTest::keyClick(SearchField(), Qt::Key_Down);
        QVERIFY(Hits()->hasFocus());
        QTest::keyClick(Help(), Qt::Key_Escape);
        QVERIFY(Contents()->isVisible());
        QVERIFY(Page()->extraSelections().isEmpty());
        QVERIFY(Help()->isVisible());
    }

    void searchWithoutAHit_saysSo()
    {
        OpenHandbook();
        QTest::keyClicks(SearchField(), u"xyzzy"_s);
        QVERIFY(Part<QLabel>(u"lblNoHits"_s)->isVisible());
        QCOMPARE(Part<QLabel>(u"lblNoHits"_s)->text(), u"\nNo page has “xyzzy”."_s);
        TakePicture(*Help(), u"help-no-hits"_s);
    }

    void find_goesThroughThePage()
    {
        OpenHandbook();
        Help()->ShowTopic(u"items"_s);
        QTest::keyClick(Help(), Qt::Key_F, Qt::ControlModifier);
        auto* field = Part<QLineEdit>(u"txtHelpFind"_s);
        QVERIFY(field->isVisible() && field->hasFocus());
        QTest::keyClicks(field, u"auto-save"_s);
        QCOMPARE(Page()->textCursor().selectedText(), u"auto-save"_s);
        const int first = Page()->textCursor().selectionStart();
        QTest::keyClick(Help(), Qt::Key_F3);
        QVERIFY(Page()->textCursor().selectionStart() > first);
        QTest::keyClick(Help(), Qt::Key_F3, Qt::ShiftModifier);
        QCOMPARE(Page()->textCursor().selectionStart(), first);
        QTest::keyClick(Help(), Qt::Key_F3, Qt::ShiftModifier); // round the page
        QVERIFY(Page()->textCursor().selectionStart() > first);
        TakePicture(*Help(), u"help-find"_s);
        QTest::keyClicks(field, u"zzz"_s);
        QCOMPARE(Part<QLabel>(u"lblHelpFound"_s)->text(), u"Not found"_s);
        QTest::keyClick(Help(), Qt::Key_Escape);
        QVERIFY(!field->isVisible() && Help()->isVisible());
        QTest::keyClick(Help(), Qt::Key_Escape);
        QVERIFY(!Help()->isVisible());
    }

    // F1

    void f1_opensThePageOfWhatHasTheFocus()
    {
        Show();
        ClickOn(0);
        const std::pair<QString, QString> pages[] = {
            {u"tvwTree"_s, u"items"_s}, {u"txtFilter"_s, u"items#filter-the-tree"_s},
            {u"rtbCode"_s, u"code"_s},  {u"txtInfo"_s, u"links#the-info-page"_s},
            {u"tvwTree"_s, u"items"_s},
        };
        m_window->findChild<QTabBar*>(u"tbsBookmarks"_s)->setCurrentIndex(2);
        for (const auto& [name, topic] : pages) {
            m_window->activateWindow();
            QTRY_COMPARE(QApplication::activeWindow(), m_window.get());
            PressF1On(m_window->findChild<QWidget*>(name));
            QVERIFY(Help());
            QVERIFY2(Help()->Topic() == topic, qPrintable(name + u": "_s + Help()->Topic()));
        }
        QCOMPARE(m_window->findChildren<frmHelp*>().size(), 1);
    }

    void f1InADialog_opensAWindowThatCanBeUsed()
    {
        Show();
        QPointer<frmHelp> help;
        QTimer::singleShot(0, this, [&] {
            auto* dialog = QApplication::activeModalWidget();
            QVERIFY(dialog);
            QTest::keyClick(dialog->findChild<QWidget*>(u"txtSearch"_s), Qt::Key_F1);
            help = Help(dialog);
            QVERIFY(help && help->isVisible());
            QCOMPARE(help->Topic(), u"libraries#settings-of-a-library"_s);
            QTRY_COMPARE(QApplication::activeWindow(), help);
            QTest::keyClick(help, Qt::Key_Home, Qt::AltModifier);
            QCOMPARE(help->Topic(), u"index"_s);
            dialog->close();
        });
        Action(u"mnuOptionsItem"_s)->trigger();
        QVERIFY(!help); // it goes with the dialog
        QVERIFY(!Help());
    }

    void f1InAMenu_isAboutItsEntry()
    {
        Show();
        ClickOn(0);
        OpenMenu(u"mnuItem"_s, [this] {
            auto* menu = m_window->findChild<QMenu*>(u"mnuItem"_s);
            menu->setActiveAction(Action(u"mnuRename"_s));
            QTest::keyClick(menu, Qt::Key_F1);
            QVERIFY(!menu->isVisible());
        });
        QVERIFY(Help());
        QCOMPARE(Help()->Topic(), u"items#rename-and-delete"_s);
    }

    void f1OnSomethingWithoutAPage_opensTheFirst()
    {
        Show();
        PressF1On(m_window.get());
        QVERIFY(Help());
        QCOMPARE(Help()->Topic(), u"index"_s);
    }

    // The table of topics, and what the handbook names

    void everyNameOfTheTable_isAPartOrACommand()
    {
        Show();
        QSet<QString> names;
        for (const QObject* part : m_window->findChildren<QObject*>())
            names.insert(part->objectName());
        for (const CommandRow& row : Commands::Table())
            names.insert(QString::fromLatin1(row.Name));
        for (const HelpTopicRow& row : HelpTopicTable()) {
            const QString name = QString::fromLatin1(row.Name);
            if (!name.startsWith(u"frm"_s) && name != u"tabLanguage"_s) // dialogs, which are made when they open
                QVERIFY2(names.contains(name), row.Name);
        }
    }

    void everyCommandThatIsNamed_isInItsMenu()
    {
        Show();
        ClickOn(0);
        QStringList paths;
        for (const QAction* menu : m_window->menuBar()->actions())
            AddPaths(*menu, {}, paths);
        static const QRegularExpression named(u"\\*\\*([^*]+ > [^*]+)\\*\\*"_s);
        int count = 0;
        for (const auto& [page, text] : Texts()) {
            for (auto all = named.globalMatch(text); all.hasNext(); ++count) {
                const QString path = all.next().captured(1).simplified();
                QVERIFY2(paths.contains(path), qPrintable(page + u": "_s + path));
            }
        }
        QVERIFY(count > 20);
    }

    void everyKeyOfTheMenus_isInTheHandbook()
    {
        const QString keys = Handbook().Html(u"keys"_s);
        for (const CommandRow& row : Commands::Table()) {
            if (*row.Shortcut && row.Where != CommandRow::Place::Toolbar)
                QVERIFY2(keys.contains(u"<code>%1</code>"_s.arg(QLatin1StringView(row.Shortcut))), row.Shortcut);
        }
    }

private:
    static QString Plain(const QAction& action)
    {
        QString text = action.text();
        return text.replace(u"&&"_s, u"\1"_s).remove(u'&').replace(u'\1', u'&').remove(u"..."_s);
    }
    static void AddPaths(const QAction& action, const QString& above, QStringList& paths)
    {
        const QString path = above.isEmpty() ? Plain(action) : above + u" > "_s + Plain(action);
        if (const QMenu* menu = action.menu()) {
            for (const QAction* entry : menu->actions())
                AddPaths(*entry, path, paths);
        }
        if (action.isVisible())
            paths << path;
    }
    static std::map<QString, QString> Texts()
    {
        std::map<QString, QString> texts;
        const QDir folder(QStringLiteral(QUILLBASE_HANDBOOK));
        for (const QString& page : folder.entryList({u"*.md"_s}))
            texts[page] = QString::fromUtf8(ReadFile(folder.filePath(page)));
        return texts;
    }
};

QB_GUI_TEST_MAIN(TestHelpWindow)
#include "tst_help_window.moc"
