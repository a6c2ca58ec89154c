#include "conflicts/ConflictedLibrary.h"
#include "conflicts/ui/ComparedView.h"
#include "conflicts/ui/frmConflicts.h"
#include "platform/richtext/Rtf.h"
#include "support/GuiRun.h"
#include "support/ui/Appearance.h"
#include "support/ui/Icons.h"
#include "text/ui/ctlCaptionRTB.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QToolButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The window of the solver, by the names of its controls.
class TestConflictForm : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    std::unique_ptr<frmConflicts> m_form;

    template <class Control>
    Control* Find(const char* name)
    {
        return m_form->findChild<Control*>(QString::fromLatin1(name));
    }
    ctlCaptionRTB* Left() { return Find<ctlCaptionRTB>("ctlCaptionRTB1"); }
    ctlCaptionRTB* Right() { return Find<ctlCaptionRTB>("ctlCaptionRTB2"); }
    ComparedView* LeftView() { return Find<ComparedView>("txtCompared1"); }
    ComparedView* RightView() { return Find<ComparedView>("txtCompared2"); }
    void Press(const char* button) { Find<QAbstractButton>(button)->click(); }
    QString Status() { return Find<QStatusBar>("StatusBar")->currentMessage(); }
    static QString Rtf(const QString& text) { return RtfFromPlainText(text, CodeFont); }

    bool Show()
    {
        m_form = std::make_unique<frmConflicts>();
        m_form->InitializeDatabase(*m->Db);
        const bool loaded = m_form->Load();
        m_form->show();
        return loaded;
    }
    qint64 AddReal()
    {
        const qint64 folder = AddItem(*m->Db, 0, u"Containers"_s);
        const QString own =
            u"#include <vector>\r\n\r\nint Sum(const std::vector<int>& values)\r\n{\r\n    int sum = 0;\r\n"
            "    for (int value : values)\r\n        sum += value;\r\n    return sum;\r\n}\r\n"_s;
        QString other = own;
        other.replace(u"int sum = 0"_s, u"long long sum = 0"_s)
            .replace(u"    return"_s, u"    // done\r\n    return"_s);
        const qint64 id = m->AddConflict({.Title = u"Sum of a vector"_s, .Code = Rtf(own)},
                                         {.Title = u"Sum of a vector"_s,
                                          .Info = u"other info"_s,
                                          .Code = Rtf(other),
                                          .Notes = u"{\\rtf1\\b notes}"_s},
                                         folder);
        m->AddFile(id, u"sum.cpp"_s, "1", m->At(5), u"the whole file"_s);
        m->AddTempFile(id, u"sum.cpp"_s, QByteArray("1"), m->At(5), u"all of it"_s);
        m->AddFile(id, u"mine.txt"_s, "12", m->At(6), u"mine"_s);
        m->AddTempFile(id, u"theirs.txt"_s, QByteArray("123"), m->At(7), u"theirs"_s);
        return id;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m = std::make_unique<ConflictedLibrary>();
    }
    void cleanup()
    {
        m_form.reset();
        QApplication::setPalette(QPalette());
        m.reset();
    }

    void controls_haveTheirCaptions()
    {
        AddReal();
        QVERIFY(Show());
        QCOMPARE(m_form->windowTitle(), u"Conflict Solver"_s);
        const std::pair<const char*, QString> captions[] = {
            {"optTitle", u"&Title"_s},
            {"optDescription", u"&Description"_s},
            {"optCode", u"&Code"_s},
            {"optNotes", u"&Notes"_s},
            {"optUsage", u"&Usage"_s},
            {"optFiles", u"&Files"_s},
            {"optItemInfo", u"&Item Info"_s},
            {"optHTML", u"&HTML Page"_s},
            {"cmdKeepNewer", u"&Keep Newer Version"_s},
            {"cmdKeepOlder", u"Keep &Older Version"_s},
            {"cmdMoveNext", u"&Next Conflict"_s},
            {"cmdMovePrevious", u"&Previous Conflict"_s},
            {"chkAutoCompare", u"Automatic Compare Method"_s},
            {"cmdClose", u"&Close"_s},
        };
        for (const auto& [name, caption] : captions)
            QCOMPARE(Find<QAbstractButton>(name)->text(), caption);
        const std::pair<const char*, QString> tips[] = {
            {"cmdMoveNext", u"Move To Next Item"_s},
            {"cmdMovePrevious", u"Move to Previous Item"_s},
            {"cmdNextField", u"Next Conflicting Section"_s},
            {"cmdPreviousField", u"Previous Conflicting Section"_s},
            {"cmdSwap", u"Swap Sides"_s},
            {"cmdMoveToLeft", u"Add Selected Text to the Left Side"_s},
            {"cmdMoveToRight", u"Add Selected Text to the Right Side"_s},
        };
        for (const auto& [name, tip] : tips)
            QCOMPARE(Find<QAbstractButton>(name)->toolTip(), tip);
        QVERIFY(Status().startsWith(u"Conflict No. 1 of 1"_s));
        QVERIFY(!Find<QPushButton>("cmdMoveNext")->isEnabled());
        QVERIFY(!Find<QPushButton>("cmdMovePrevious")->isEnabled());
        QCOMPARE(Find<QLabel>("lblItemTitle")->text(), u"Sum of a vector"_s);
        QCOMPARE(Find<QLabel>("lblItemPath")->text(), u"Containers/Sum of a vector"_s);
        QVERIFY(Left()->Caption().startsWith(u"Main Database Item ("_s));
        QVERIFY(Right()->Caption().startsWith(u"Replica Database Item ("_s));
    }

    void texts_standSideBySide()
    {
        AddReal();
        Show();
        QVERIFY(Find<QRadioButton>("optCode")->isChecked()); // the first that differs
        QVERIFY(Status().contains(u"Content conflict"_s));
        QVERIFY(LeftView()->isVisible() && RightView()->isVisible());
        QCOMPARE(LeftView()->Text(), RightView()->Text()); // filler stands for the lines of the other
        TakePicture(*m_form, u"conflicts-code"_s);
        Press("cmdSwap");
        QVERIFY(Left()->Caption().startsWith(u"Replica"_s));
        Press("cmdSwap");
        Press("chkAutoCompare");
        QVERIFY(!Left()->Text().contains(u"long long"_s));
        QVERIFY(Right()->Text().contains(u"long long"_s));
        QVERIFY(!Find<QToolButton>("cmdMoveToLeft")->isEnabled());
        Press("optNotes");
        QVERIFY(Status().contains(u"Format conflict"_s));
        QVERIFY(!Find<QCheckBox>("chkAutoCompare")->isEnabled());
        Press("optItemInfo");
        QVERIFY(Find<QComboBox>("cboItemStatus")->isVisible());
        QVERIFY(Status().contains(u"Content conflict"_s)); // and yet not compared line by line
        QVERIFY(!Find<QCheckBox>("chkAutoCompare")->isEnabled() && !LeftView()->isVisible());
        TakePicture(*m_form, u"conflicts-info"_s);
    }

    void movedLines_areKept()
    {
        const qint64 id = AddReal();
        Show();
        QVERIFY(RightView()->find(u"// done"_s));
        Press("cmdMoveToLeft");
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepOlder");
        const QString code = PlainTextFromRtf(m->Text(u"Code"_s, id));
        QVERIFY(code.contains(u"int sum = 0;"_s) && !code.contains(u"long long"_s));
        QVERIFY(code.contains(u"    // done\r\n    return sum;"_s));
        QCOMPARE(m->TemporaryRows(), 0);
        QVERIFY(!m_form->isVisible());
    }

    void typedText_isKeptByADecision()
    {
        const qint64 id = m->AddConflict({.Title = u"a"_s}, {.Title = u"b"_s});
        m->AddConflict({}, {.Title = u"c"_s});
        Show();
        Press("chkAutoCompare");
        Right()->SetText(u"typed"_s);
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        Press("cmdMoveNext");
        QCOMPARE(Right()->Text(), u"typed"_s); // it stays
        Press("cmdKeepNewer");
        QCOMPARE(m->Text(u"Title"_s, id), u"typed"_s);
        QVERIFY(Status().startsWith(u"Conflict No. 1 of 1"_s));
    }

    void files_areListedAndMoved()
    {
        const qint64 id = AddReal();
        Show();
        Press("optFiles");
        auto* list = Find<QTreeWidget>("lwFiles");
        QVERIFY(list->isVisible());
        QCOMPARE(list->topLevelItemCount(), 3);
        QStringList header;
        for (int i = 0; i < list->columnCount(); ++i)
            header << list->headerItem()->text(i);
        QCOMPARE(header,
                 (QStringList{u"Title"_s, u"File Size"_s, u"Date Created"_s, u"Date Added"_s, u"Last Updated"_s}));
        QCOMPARE(Left()->Text(), u"the whole file"_s);
        QCOMPARE(Right()->Text(), u"all of it"_s);
        TakePicture(*m_form, u"conflicts-files"_s);
        list->setCurrentItem(list->topLevelItem(2));
        QCOMPARE(Right()->Text(), u"theirs"_s);
        QVERIFY(Left()->Locked() && !Right()->Locked()); // there is no file to be described
        Q_EMIT list->customContextMenuRequested(list->visualItemRect(list->topLevelItem(1)).center());
        QVERIFY(Find<QAction>("mnuMoveOlderItem")->isVisible());
        QVERIFY(!Find<QAction>("mnuMoveNewerItem")->isVisible());
        Find<QMenu>("mnuPopUp")->close();
        Find<QAction>("mnuMoveOlderItem")->trigger();
        QCOMPARE(list->topLevelItem(1)->toolTip(0), u"This file is marked for move to the older item."_s);
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepNewer"); // the other version, which the marked file joins
        QCOMPARE(Texts(*m->Db, u"SELECT Title FROM Files WHERE CodeID = ? ORDER BY Title"_s, {id}),
                 (QStringList{u"mine.txt"_s, u"sum.cpp"_s, u"theirs.txt"_s}));
    }

    void differences_areGoneThroughByKeys()
    {
        AddReal();
        Show();
        m_form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_form.get()));
        const int first = LeftView()->CurrentLine();
        QTest::keyClick(m_form.get(), Qt::Key_F8);
        const int second = LeftView()->CurrentLine();
        QVERIFY(second > first);
        QCOMPARE(RightView()->CurrentLine(), second);
        QTest::keyClick(m_form.get(), Qt::Key_F8, Qt::ShiftModifier);
        QCOMPARE(LeftView()->CurrentLine(), first);
    }

    void everyPart_isReachedByKeys()
    {
        AddReal();
        Show();
        m_form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_form.get()));
        Find<QRadioButton>("optCode")->setFocus();
        for (QWidget* stop : {static_cast<QWidget*>(LeftView()), static_cast<QWidget*>(RightView()),
                              static_cast<QWidget*>(Find<QRadioButton>("optCode"))}) {
            QTest::keyClick(m_form->focusWidget(), Qt::Key_F6);
            QCOMPARE(m_form->focusWidget(), stop);
        }
        QTest::keyClick(m_form.get(), Qt::Key_PageDown, Qt::ControlModifier);
        QVERIFY(Find<QRadioButton>("optNotes")->isChecked());
        QTest::keyClick(m_form.get(), Qt::Key_F6);
        QCOMPARE(m_form->focusWidget(), Left()->RtbText()); // a field with one look takes the boxes
        QTest::keyClick(m_form.get(), Qt::Key_PageUp, Qt::ControlModifier);
        QVERIFY(Find<QRadioButton>("optCode")->isChecked());
        QVERIFY(RightView()->find(u"// done"_s));
        const int line = RightView()->CurrentLine();
        QTest::keyClick(RightView(), Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(LeftView()->LookOf(line), LineLook::Own);
        QVERIFY(LeftView()->find(u"// done"_s));
        QTest::keyClick(LeftView(), Qt::Key_Right, Qt::AltModifier);
        QCOMPARE(RightView()->LookOf(line), LineLook::Own);
    }

    void editedForm_asksBeforeItCloses()
    {
        AddReal();
        Show();
        RightView()->insertPlainText(u"typed"_s);
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        Press("cmdClose");
        QVERIFY(m_form->isVisible());
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        QVERIFY(!m_form->close());
        m->Prompts.ExpectMsgBox(u"Save changes?"_s);
        QTest::keyClick(m_form.get(), Qt::Key_Escape);
        QVERIFY(!m_form->isVisible());
        QCOMPARE(CountOf(*m->Db, u"TempItems"_s), 1);
    }

    void scrollBars_areTied()
    {
        const QString lines = u"line\r\n"_s.repeated(300) + u"line "_s.repeated(100);
        m->AddConflict({.Code = Rtf(lines + u"a"_s)}, {.Code = Rtf(lines + u"b"_s)});
        Show();
        LeftView()->horizontalScrollBar()->setValue(30);
        QCOMPARE(RightView()->horizontalScrollBar()->value(), 30);
        LeftView()->verticalScrollBar()->setValue(40);
        QCOMPARE(RightView()->verticalScrollBar()->value(), 40);
    }

    void pages_areFilesForAsLongAsTheFormIsThere()
    {
        VersionTexts own;
        own.HasPage = true;
        own.PageUpdated = m->At(10);
        VersionTexts other;
        other.HasPage = true;
        other.PageUpdated = m->At(20);
        const qint64 id = m->AddConflict(own, other);
        m->AddPage(id, "<img src=\"" + QByteArray::number(id) + "/own.png\"><img src=\"default2/x.png\">");
        m->AddTempPage(id, u"77.htm"_s, {}, "<img src=\"77/b.png\">");
        m->AddTempPage(id, u"b.png"_s, {}, "picture");
        const QString temp = m->Db->HTMLFolder() + u"Temp/"_s;
        {
            ShownPages pages(*m->Db);
            QCOMPARE(pages.WriteOwn(id), u"local://Item1"_s);
            QCOMPARE(pages.WriteOther(id), u"local://Item2"_s);
            QCOMPARE(pages.Folder(), temp);
            QCOMPARE(ReadFile(temp + u"1.htm"_s), "<img src=\"1/own.png\"><img src=\"1/default2/x.png\">");
            QCOMPARE(ReadFile(temp + u"1/own.png"_s), "own picture");
            QCOMPARE(ReadFile(temp + u"2.htm"_s), "<img src=\"2/b.png\">");
            QCOMPARE(ReadFile(temp + u"2/b.png"_s), "picture");
            const ShownPages another(*m->Db); // of another process, say
            QVERIFY(QFile::exists(temp + u"2/b.png"_s));
            QCOMPARE(pages.WriteOwn(id), u"local://Item3"_s); // an address means one page
            QCOMPARE(ReadFile(temp + u"3/own.png"_s), "own picture");
            QCOMPARE(pages.WriteOther(id), u"local://Item4"_s);
            QCOMPARE(QDir(temp).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                     (QStringList{u"3"_s, u"3.htm"_s, u"4"_s, u"4.htm"_s}));
        }
        QVERIFY(!QFile::exists(temp));
        QDir().mkpath(temp); // somebody's own stays
        WriteFile(temp + u"mine"_s, "x");
        {
            ShownPages pages(*m->Db);
            pages.WriteOwn(id);
            QVERIFY(pages.Folder() != temp);
        }
        QCOMPARE(ReadFile(temp + u"mine"_s), "x");
        WriteFile(temp + u".conflict-pages"_s, ""); // of a dead process
        ShownPages pages(*m->Db);
        QVERIFY(!QFile::exists(temp));
    }

    void darkScheme_showsTheSame()
    {
        QApplication::setPalette(DarkPalette());
        AddReal();
        Show();
        TakePicture(*m_form, u"conflicts-code-dark"_s);
        Press("optFiles");
        TakePicture(*m_form, u"conflicts-files-dark"_s);
        m_form->resize(400, 420);
        Press("optCode");
        TakePicture(*m_form, u"conflicts-narrow-dark"_s);
        QVERIFY(LeftView()->isVisible());
    }

    void base_letsOneButtonTakeWhatOneSideChanged()
    {
        const qint64 id = m->AddConflict({.Code = Rtf(u"one\r\n2\r\n3\r\nmine"_s)},
                                         {.Title = u"theirs"_s, .Code = Rtf(u"1\r\n2\r\n3\r\nyours"_s)});
        m_form = std::make_unique<frmConflicts>();
        m_form->InitializeDatabase(*m->Db);
        BaseVersion base;
        base.Title = m->Text(u"Title"_s, id);
        base.Code = Rtf(u"1\r\n2\r\n3\r\n4"_s);
        m_form->Solver().SetFindBase([&base](qint64) { return std::optional(base); });
        QVERIFY(m_form->Load());
        m_form->show();
        QVERIFY(Find<QPushButton>("cmdTakeMerged")->isVisible());
        Press("optCode");
        QCOMPARE(Find<QLabel>("lblOrigin")->text(),
                 u"Both versions were changed since they were the same, in the same lines too"_s);
        QVERIFY(!Find<ComparedView>("txtBase")->isVisible());
        Press("chkShowBase");
        QCOMPARE(Find<ComparedView>("txtBase")->Text(), u"1\r\n2\r\n3\r\n4"_s);
        QVERIFY(Find<ComparedView>("txtBase")->isReadOnly());
        QList<int> clashes;
        for (int line = 0; line < LeftView()->LineCount(); ++line) {
            if (LeftView()->IsClash(line) || RightView()->IsClash(line))
                clashes << line;
        }
        QCOMPARE(LeftView()->Text(), u"one\r\n1\r\n2\r\n3\r\nmine\r\nyours"_s);
        QCOMPARE(clashes, (QList<int>{4, 5})); // the first line is changed on the left alone
        TakePicture(*m_form, u"conflicts-base"_s);
        Press("optTitle");
        QCOMPARE(Find<QLabel>("lblOrigin")->text(), u"Only the Replica version was changed since both were the same"_s);
        QCOMPARE(Find<ComparedView>("txtBase")->Text(), base.Title);
        Press("optFiles");
        QVERIFY(!Find<ComparedView>("txtBase")->isVisible());
        Press("cmdTakeMerged");
        QVERIFY(Find<QRadioButton>("optCode")->font().bold());
        QVERIFY(!Find<QRadioButton>("optTitle")->font().bold());
        Press("optCode");
        QCOMPARE(KeptLines(*LeftView()), (QStringList{u"one"_s, u"2"_s, u"3"_s, u"mine"_s}));
        QCOMPARE(KeptLines(*RightView()), (QStringList{u"one"_s, u"2"_s, u"3"_s, u"yours"_s}));
        TakePicture(*m_form, u"conflicts-clash"_s);
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepOlder");
        QCOMPARE(m->Text(u"Title"_s, id), u"theirs"_s);
        QCOMPARE(PlainTextFromRtf(m->Text(u"Code"_s, id)), u"one\r\n2\r\n3\r\nmine"_s);
    }

    void settledOnes_areTold()
    {
        const qint64 same = m->AddConflict({.Title = u"the same"_s}, {.Title = u"the same"_s});
        m->Db->Execute(u"UPDATE TempItems SET ItemRating = 4 WHERE ID = ?"_s, {same});
        AddReal();
        Show();
        QVERIFY(Status().contains(u"1 conflict resolved automatically; 1 of the other versions is"_s));
        QVERIFY(Find<QStatusBar>("StatusBar")->toolTip().contains(u"the same: dropped rating"_s));
    }

    void withoutBase_thereIsNoButton()
    {
        AddReal();
        Show();
        QVERIFY(!Find<QPushButton>("cmdTakeMerged")->isVisible());
        QVERIFY(!Find<QCheckBox>("chkShowBase")->isVisible());
        QCOMPARE(Find<QLabel>("lblOrigin")->text(), u"The version that both came from is not known"_s);
        Press("optTitle"); // which is the same
        QVERIFY(!Find<QLabel>("lblOrigin")->isVisible());
    }

    void itemThatHasGone_leavesTheOthers()
    {
        const qint64 gone = AddReal();
        m->AddConflict({}, {.Title = u"another"_s});
        m->Db->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {gone});
        m->Prompts.ExpectError();
        QVERIFY(Show());
        TakePicture(*m_form, u"conflicts-empty"_s);
        QVERIFY(Find<QLabel>("lblItemTitle")->text().startsWith(u"This item can't be shown"_s));
        for (const char* button : {"cmdKeepNewer", "cmdKeepOlder", "cmdSwap", "cmdMore"})
            QVERIFY(!Find<QAbstractButton>(button)->isEnabled());
        Press("optCode");
        Press("optFiles");
        Press("optHTML");
        Press("cmdMoveNext");
        QVERIFY(Find<QPushButton>("cmdKeepNewer")->isEnabled());
    }

    void textsThatAreNoRtf_areShownAsTheyAre()
    {
        const qint64 id = m->AddConflict({.Code = u"no RTF {\\b"_s}, {.Code = u"{\\rtf1 {\\pict 00"_s});
        Show();
        QVERIFY(LeftView()->Text().contains(u"no RTF"_s));
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepOlder");
        QCOMPARE(m->Text(u"Code"_s, id), u"no RTF {\\b"_s); // nothing was typed
    }

    void textThatCanNotStandInTheView_isOnlyLookedAt()
    {
        const QString info = u"one"_s + QChar(QChar::ParagraphSeparator) + u"line"_s;
        m->AddConflict({.Description = info}, {.Description = u"other"_s});
        Show();
        QVERIFY(LeftView()->isVisible() && LeftView()->isReadOnly());
        QVERIFY(RightView()->isVisible());
    }

    void emptySide_standsBesideTheWholeText()
    {
        const qint64 id = m->AddConflict({.Code = {}}, {.Code = Rtf(u"one\r\n\r\nthree"_s)});
        Show();
        QCOMPARE(KeptLines(*LeftView()), QStringList{QString()});
        QCOMPARE(KeptLines(*RightView()), (QStringList{u"one"_s, u""_s, u"three"_s}));
        QCOMPARE(LeftView()->LineCount(), RightView()->LineCount());
        TakePicture(*m_form, u"conflicts-empty-side"_s);
        RightView()->selectAll();
        Press("cmdMoveToLeft");
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepOlder");
        QCOMPARE(PlainTextFromRtf(m->Text(u"Code"_s, id)).trimmed(), u"one\r\n\r\nthree"_s);
    }

    void manyConflicts_areAllThere()
    {
        {
            Transaction transaction(*m->Db);
            for (int i = 0; i < 1000; ++i) {
                const QString title = u"item %1"_s.arg(i);
                m->AddConflict({.Title = title}, i % 20 == 0 ? VersionTexts{.Title = u"renamed"_s}
                                                             : VersionTexts{.Title = title, .Info = u"else"_s});
            }
            transaction.Commit();
        }
        Show();
        Press("cmdMoveNext");
        QVERIFY(Status().startsWith(u"Conflict No. 2 of 1000"_s));
        TakePicture(*m_form, u"conflicts-many"_s);
        Press("cmdMovePrevious");
        Find<QAction>("mnuKeepNewerAll")->trigger();
        QVERIFY(Status().startsWith(u"Conflict No. 1 of 950"_s));
        QCOMPARE(CountOf(*m->Db, u"TempItems"_s), 950);
        QCOMPARE(m->Db->QueryValue(u"SELECT count(*) FROM Items WHERE Title = 'renamed'"_s).ToLong(), 50);
    }

    void missingPage_isEmpty()
    {
        VersionTexts own;
        own.HasPage = true;
        own.PageUpdated = m->At(10);
        VersionTexts other;
        other.HasPage = true;
        other.PageUpdated = m->At(20);
        m->AddConflict(own, other);
        Show();
        QVERIFY(Find<QRadioButton>("optHTML")->isChecked());
        for (ctlCaptionRTB* box : {Left(), Right()}) {
            QVERIFY(!box->ShowBrowser());
            QCOMPARE(box->Text(), u"This version has no web page."_s);
        }
        Press("optCode");
        QVERIFY(Left()->Text() != u"This version has no web page."_s);
    }

    void pagesOfADeadProcess_goAtTheNextStart()
    {
        const QString temp = m->Db->HTMLFolder() + u"Temp/"_s;
        QDir().mkpath(temp);
        WriteFile(temp + u".conflict-pages"_s, "");
        WriteFile(temp + u"1.htm"_s, "left");
        m_form = std::make_unique<frmConflicts>();
        m_form->InitializeDatabase(*m->Db);
        QVERIFY(!QFile::exists(temp));
    }

    void changeMeanwhile_isShownAndNothingDecided()
    {
        const qint64 id = AddReal();
        Show();
        m->Db->Execute(u"UPDATE Items SET Code = ? WHERE ID = ?"_s, {Rtf(u"changed meanwhile"_s), id});
        m->Prompts.ExpectError();
        Press("cmdKeepNewer");
        QVERIFY(m_form->isVisible());
        QVERIFY(LeftView()->Text().contains(u"changed meanwhile"_s));
        QCOMPARE(CountOf(*m->Db, u"TempItems"_s), 1);
    }

    void typedLines_areKept()
    {
        const qint64 id = AddReal();
        Show();
        QVERIFY(LeftView()->find(u"long long"_s)); // in filler, which what is typed makes the side's own
        LeftView()->insertPlainText(u"short"_s);
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepOlder");
        const QString code = PlainTextFromRtf(m->Text(u"Code"_s, id));
        QVERIFY(code.contains(u"    int sum = 0;\r\n    short sum = 0;\r\n"_s));
        QVERIFY(!code.contains(u"// done"_s));
    }

    void statusAndRating_areChosen()
    {
        const qint64 id = AddReal();
        m->Db->Execute(u"UPDATE Items SET ItemStatus = 1 WHERE ID = ?"_s, {id});
        m->Db->Execute(u"UPDATE TempItems SET ItemStatus = 3, ItemRating = 7"_s);
        Show();
        Press("optItemInfo");
        auto* rating = Find<QComboBox>("cboItemRating");
        QCOMPARE(Find<QComboBox>("cboItemStatus")->itemText(0), u"Main: own"_s);
        QCOMPARE(Find<QComboBox>("cboItemStatus")->itemText(1), u"Replica: tested"_s);
        QCOMPARE(rating->currentText(), u"Main: none"_s);
        rating->setCurrentIndex(1);
        Q_EMIT rating->activated(1);
        QCOMPARE(rating->currentText(), u"Replica: 3.5 of 5"_s);
        TakePicture(*m_form, u"conflicts-info"_s);
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepNewer");
        QCOMPARE(m->Text(u"ItemRating"_s, id), u"7"_s);
        QCOMPARE(m->Text(u"ItemStatus"_s, id), u"1"_s);
    }

    void longTexts_areShownWithoutLooks()
    {
        const QString line = u"a line of some words, and more words behind them\r\n"_s;
        const qint64 id = m->AddConflict({.Code = Rtf(line.repeated(6000) + u"own"_s)},
                                         {.Code = Rtf(line.repeated(6000) + u"theirs"_s)});
        Show();
        QVERIFY(LeftView()->isVisible());
        Press("chkAutoCompare");
        QVERIFY(LeftView()->isVisible());
        QVERIFY(Status().contains(u"shown without their looks"_s));
        QVERIFY(!RightView()->Text().contains(u"own"_s));
        RightView()->moveCursor(QTextCursor::End);
        RightView()->insertPlainText(u"!"_s);
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepNewer");
        QVERIFY(PlainTextFromRtf(m->Text(u"Code"_s, id)).endsWith(u"behind them\r\ntheirs!"_s));
    }

    /// Fifty million characters.
    void hugeTexts_showTheirBegins()
    {
        const QString own = u"{\\rtf1 first\\par "_s + u"a line of some words\\par\r\n"_s.repeated(2'000'000)
                            + u"own}"_s;
        const qint64 id = m->AddConflict({.Code = own}, {.Code = u"{\\rtf1 short}"_s});
        Show();
        QVERIFY(Status().contains(u"too large to be compared"_s));
        QVERIFY(LeftView()->isVisible() && LeftView()->isReadOnly());
        QVERIFY(LeftView()->Text().contains(u"\r\nfirst\r\n"_s));
        QVERIFY(LeftView()->Text().size() < 2'000'000);
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        Press("cmdKeepOlder"); // its begin is not what is stored
        QCOMPARE(m->Text(u"Code"_s, id), own);
    }

    void nothingLeft_isNotShown()
    {
        m->AddConflict({}, {});
        m->Prompts.ExpectMsgBox(u"All problems resolved"_s);
        frmConflicts form;
        form.InitializeDatabase(*m->Db);
        QCOMPARE(form.exec(), int(QDialog::Rejected));
    }
};

QB_GUI_TEST_MAIN(TestConflictForm)
#include "tst_conflict_form.moc"
