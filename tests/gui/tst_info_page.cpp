#include "panels/ui/RatingStars.h"
#include "panels/ui/ctlBookmarks.h"
#include "replication/ui/frmReplicaList.h"
#include "session/ui/frmRelationshipDelete.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"

#include <QPlainTextEdit>
#include <QToolButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The info page in the window: status, rating, info, links, lock and the facts of the library.
class TestInfoPage : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
        m_other = m_database->QueryValue(u"SELECT ID FROM Items WHERE Title = 'other'"_s).ToLong();
    }
    void cleanup() { End(); }

    // The item

    void page_showsWhatIsKnownOfTheItem()
    {
        m_database->Execute(
            u"UPDATE Items SET ItemStatus = 4, ItemRating = 7, Info = 'from' || char(13, 10) || 'here', "
            "Created = ?, LastChanged = ? WHERE ID = ?"_s,
            {Date::FromParts(2026, 3, 2, 14, 30), Date::FromParts(2026, 4, 5, 6, 7), m_item});
        AddLink(m_item, m_other, u"it leads there"_s);
        AddLink(m_other, m_item, {});
        AddLink(m_item, 999, {});
        Show();
        ClickOn(0);
        QCOMPARE(Image(u"imgOrigin"_s), u"THUMB_UP"_s);
        QCOMPARE(Find<QLabel>(u"imgOrigin"_s)->toolTip(), u"This item works fine"_s);
        QCOMPARE(Rating(), u"***h."_s);
        QCOMPARE(Info()->toPlainText(), u"from\nhere"_s);
        QCOMPARE(Text(u"lblCreated"_s), DayAndTime(QDate(2026, 3, 2), QTime(14, 30)));
        QCOMPARE(Text(u"lblLastChanged"_s), DayAndTime(QDate(2026, 4, 5), QTime(6, 7)));
        QCOMPARE(LinkImages(), (QStringList{u"TWO_WAY"_s, u"ONE_WAY"_s}));
        QVERIFY(Action(u"mnuTestedOK"_s)->isChecked());
        QVERIFY(!Action(u"mnuOwnItem"_s)->isChecked());
        m_window->resize(1200, 760);
        TakePicture(*m_window, u"info"_s);
        ApplyAppearance(u"Dark"_s, {}, 0);
        TakePicture(*m_window, u"info-dark"_s);
        ApplyAppearance(u"System"_s, {}, 0);
        m_window->resize(700, 700);
        TakePicture(*m_window, u"info-narrow"_s);
    }

    void pageWithoutAnItem_offersNothing()
    {
        Show();
        QVERIFY(!Find<QToolButton>(u"cmdOrigin"_s)->isEnabled());
        QVERIFY(!Find<RatingStars>(u"RatingStars"_s)->isEnabled());
        QVERIFY(!Info()->isEnabled());
        QCOMPARE(Rating(), u"....."_s);
        m_window->resize(1200, 760);
        TakePicture(*Panel(), u"info-empty"_s);
        ClickOn(0);
        QVERIFY(Info()->isEnabled());
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Root()).center());
        QVERIFY(!Info()->isEnabled());
    }

    void page_isNotEmptyBetweenTwoItems()
    {
        Show();
        ClickOn(0);
        QVERIFY(Info()->isEnabled());
        const EventCount changes(*Info(), QEvent::EnabledChange);
        ClickOn(1);
        QCOMPARE(Image(u"imgOrigin"_s), QString());
        QCOMPARE(changes.Count(), 0); // one that is disabled loses the caret
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Root()).center());
        QCOMPARE(changes.Count(), 1);
    }

    void status_isChosenFromTheMenu()
    {
        Show();
        ClickOn(0);
        QCOMPARE(Image(u"imgOrigin"_s), QString());
        for (const StatusRow& row : StatusRows()) {
            Action(QString::fromLatin1(row.Entry))->trigger();
            QCOMPARE(Image(u"imgOrigin"_s), QString::fromLatin1(row.Image));
            QCOMPARE(Find<QToolButton>(u"cmdOrigin"_s)->toolTip(), QString::fromLatin1(row.ToolTip));
            QVERIFY(Action(QString::fromLatin1(row.Entry))->isChecked());
        }
        Action(u"mnuItemNotWorking"_s)->trigger(); // the one that it is
        QVERIFY(Action(u"mnuItemNotWorking"_s)->isChecked());
        QCOMPARE(Read(u"ItemStatus"_s), u"0"_s);
        ClickOn(1); // which saves
        QCOMPARE(Read(u"ItemStatus"_s), u"5"_s);
    }

    void rating_isClickedAndTyped()
    {
        Show();
        ClickOn(0);
        QTest::mouseClick(Find<QToolButton>(u"imgRating2"_s), Qt::LeftButton);
        QCOMPARE(Rating(), u"***.."_s);
        auto* stars = Find<RatingStars>(u"RatingStars"_s);
        const std::pair<Qt::Key, QString> keys[] = {{Qt::Key_Right, u"****."_s}, {Qt::Key_5, u"*****"_s},
                                                    {Qt::Key_Right, u"*****"_s}, {Qt::Key_1, u"*...."_s},
                                                    {Qt::Key_Left, u"....."_s},  {Qt::Key_Left, u"....."_s},
                                                    {Qt::Key_4, u"****."_s},     {Qt::Key_Left, u"***.."_s}};
        for (const auto& [key, rating] : keys) {
            QTest::keyClick(stars, key);
            QCOMPARE(Rating(), rating);
        }
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Read(u"ItemRating"_s), u"6"_s);
        Action(u"mnuNoRating"_s)->trigger();
        ClickOn(1);
        QCOMPARE(Read(u"ItemRating"_s), u"0"_s);
    }

    void halfStars_goToTheNextWholeOnes()
    {
        m_database->Execute(u"UPDATE Items SET ItemRating = 3"_s);
        Show();
        ClickOn(0);
        QCOMPARE(Rating(), u"*h..."_s);
        QTest::keyClick(Find<RatingStars>(u"RatingStars"_s), Qt::Key_Right);
        QCOMPARE(Rating(), u"**..."_s);
        ClickOn(1);
        QTest::keyClick(Find<RatingStars>(u"RatingStars"_s), Qt::Key_Left);
        QCOMPARE(Rating(), u"*...."_s);
    }

    void info_isTypedAndSaved()
    {
        Show();
        ClickOn(0);
        QTest::keyClicks(Info(), u"a"_s);
        QTest::keyClick(Info(), Qt::Key_Return);
        Info()->insertPlainText(u"b\u00a0c"_s);
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Read(u"Info"_s), u"a\r\nb\u00a0c"_s);
        QCOMPARE(Info()->textCursor().position(), 5); // the caret stays where it was
        QTest::keyClicks(Info(), u"!"_s);
        ClickOn(1);
        QCOMPARE(Read(u"Info"_s), u"a\r\nb\u00a0c!"_s);
        QCOMPARE(Info()->toPlainText(), QString());
    }

    void infoThatWasTyped_survivesTheProgram()
    {
        Show();
        ClickOn(0);
        QTest::keyClicks(Info(), u"kept"_s);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        m_window.reset(); // as by a power cut
        QCOMPARE(Read(u"Info"_s), QString());
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
        Open();
        QCOMPARE(Tree()->currentIndex(), Child(0));
        QCOMPARE(Info()->toPlainText(), u"kept"_s);
        ClickOn(1);
        QCOMPARE(Read(u"Info"_s), u"kept"_s);
        QCOMPARE(UnsavedFiles(), QStringList());
    }

    void lookAtAnItem_changesNothing()
    {
        m_database->Execute(u"UPDATE Items SET Info = 'a' || char(10) || 'b', ItemStatus = 77, ItemRating = 77, "
                            "LastChanged = 5"_s);
        Show();
        ClickOn(0);
        ClickOn(1);
        ClickOn(0);
        QCOMPARE(Read(u"Info"_s) + u' ' + Read(u"ItemStatus"_s) + u' ' + Read(u"LastChanged"_s), u"a\nb 77 5"_s);
    }

    void changeThatIsNotWanted_isDropped()
    {
        Show();
        ClickOn(0);
        Action(u"mnuAutoSaveItem"_s)->trigger();
        QTest::keyClicks(Info(), u"a"_s);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        ClickOn(1);
        QCOMPARE(Read(u"Info"_s), QString());
        ClickOn(0);
        QCOMPARE(Info()->toPlainText(), QString());
    }

    // Links

    void changedLink_isMarkedUntilItIsSaved()
    {
        AddLink(m_item, m_other, {});
        Show();
        ClickOn(0);
        QCOMPARE(Marks(), QStringList{QString()});
        QTest::keyClicks(Note(), u"x"_s);
        QCOMPARE(Marks(), QStringList{u"UPDATED"_s});
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Marks(), QStringList{QString()});
        QVERIFY(!Links()->topLevelItem(0)->text(1).isEmpty()); // the day
        QCOMPARE(Note()->toPlainText(), u"x"_s);
    }

    void link_isRemovedByItsKey()
    {
        AddLink(m_item, m_other, {});
        AddLink(m_other, m_item, {});
        Show();
        ClickOn(0);
        Answer(u"optLeft"_s, LinkDirection::Both);
        Links()->setFocus();
        QTest::keyClick(Links(), Qt::Key_Delete);
        QCOMPARE(Links()->topLevelItemCount(), 0);
        ClickOn(1);
        QCOMPARE(Texts(*m_database, u"SELECT ItemID FROM ItemLinks"_s), QStringList{QString::number(m_other)});
    }

    void link_isFollowedByEnter()
    {
        AddLink(m_item, m_other, {});
        Show();
        ClickOn(0);
        Links()->setFocus();
        QTest::keyClick(Links(), Qt::Key_Return);
        QCOMPARE(Tree()->currentIndex(), Child(1));
    }

    // The lock

    void lockWithoutAnItem_leavesTheButtonUp()
    {
        Show();
        m_prompts->ExpectMsgBox(u"Nothing to lock"_s);
        Lock()->trigger();
        QVERIFY(!Lock()->isChecked());
        QCOMPARE(Text(u"lblLocked"_s), QString());
    }

    void lockedPage_staysWhileOthersAreShown()
    {
        m_database->Execute(u"UPDATE Items SET ItemRating = 4 WHERE ID = ?"_s, {m_item});
        AddLink(m_item, m_other, {});
        Show();
        ClickOn(0);
        QCOMPARE(Text(u"lblItemText"_s), u"item"_s);
        Lock()->trigger();
        QVERIFY(Lock()->isChecked());
        QCOMPARE(Lock()->icon().cacheKey(), IconNamed(u"LOCKED"_s).cacheKey());
        QCOMPARE(Text(u"lblLocked"_s), u"[locked to: item]"_s);
        ClickOn(1);
        QCOMPARE(Rating(), u"**..."_s);
        QCOMPARE(Text(u"lblItemText"_s), u"other"_s);
        TakePicture(*Panel(), u"info-locked"_s);
        Lock()->trigger();
        QVERIFY(!Lock()->isChecked());
        QCOMPARE(Lock()->icon().cacheKey(), IconNamed(u"UNLOCKED"_s).cacheKey());
        QCOMPARE(Text(u"lblLocked"_s), QString());
        QCOMPARE(Rating(), u"....."_s);
    }

    void lockedItem_isChangedWhileAnotherIsShown()
    {
        AddLink(m_item, m_other, {});
        Show();
        ClickOn(0);
        Lock()->trigger();
        ClickOn(1);
        QTest::keyClicks(Info(), u"seen"_s);
        QTest::keyClicks(Note(), u"why"_s);
        QTest::mouseClick(Find<QToolButton>(u"imgRating0"_s), Qt::LeftButton);
        QCOMPARE(Read(u"Info"_s), QString());
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(Read(u"Info"_s) + u' ' + Read(u"ItemRating"_s), u"seen 2"_s);
        QCOMPARE(Texts(*m_database, u"SELECT Note FROM ItemLinks"_s), QStringList{u"why"_s});
        QTest::keyClicks(Info(), u" it"_s);
        ClickOn(0); // it is the current one again
        QCOMPARE(Read(u"Info"_s), u"seen it"_s);
        QCOMPARE(Info()->toPlainText(), u"seen it"_s);
    }

    void lockedItem_losesALinkWhileAnotherIsShown()
    {
        AddLink(m_item, m_other, {});
        Show();
        ClickOn(0);
        Lock()->trigger();
        ClickOn(1);
        Answer(u"optComplete"_s, LinkDirection::Left);
        Action(u"mnuRemoveLinkItem"_s)->trigger();
        QCOMPARE(Links()->topLevelItemCount(), 0);
        Action(u"mnuSaveItem"_s)->trigger();
        QCOMPARE(CountOf(*m_database, u"ItemLinks"_s), 0);
    }

    void changesOfALockedItem_areSavedAtTheEnd()
    {
        Show();
        ClickOn(0);
        Lock()->trigger();
        ClickOn(1);
        QTest::keyClicks(Info(), u"last"_s);
        m_window->close();
        QCOMPARE(Read(u"Info"_s), u"last"_s);
    }

    void deletedItem_freesThePage()
    {
        Show();
        ClickOn(0);
        Lock()->trigger();
        m_prompts->ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        Action(u"mnuDeleteCode"_s)->trigger();
        QVERIFY(!Lock()->isChecked());
        QCOMPARE(Text(u"lblLocked"_s), QString());
    }

    void linkOfTheCurrentItem_isNoneOfTheLockedOne()
    {
        Show();
        ClickOn(0);
        Lock()->trigger();
        ClickOn(1);
        Action(u"mnuAddLinkOneWayFromSelItem"_s)->trigger();
        m_prompts->ExpectMsgBox(u"New Link Creation"_s);
        ClickOn(0);
        QCoreApplication::processEvents();
        QCOMPARE(Links()->topLevelItemCount(), 0);
    }

    // The library

    void facts_areThoseOfTheLibrary()
    {
        m_database->Execute(u"UPDATE Properties SET LastBackedUp = ?"_s, {Date::FromParts(2026, 3, 2)});
        MakeMother(*m_database, {});
        Show();
        QCOMPARE(Text(u"lblReplicaType"_s), u"Mother Replica"_s);
        QCOMPARE(Find<QLabel>(u"lblReplicaType"_s)->toolTip(), u"The current database is 'Mother replica'"_s);
        QCOMPARE(Text(u"lblNoOfChildren"_s), u"1"_s);
        QCOMPARE(Text(u"lblLastSynchronized"_s), u"Never"_s);
        QCOMPARE(Text(u"lblLastBackedUp"_s), QLocale().toString(QDate(2026, 3, 2), QLocale::ShortFormat));
        QCOMPARE(Text(u"lblDatabaseSize"_s), SizeText(QFileInfo(m_database->Name()).size()));
        QString first;
        QTimer::singleShot(0, qApp, [&first] {
            auto* list = qobject_cast<frmReplicaList*>(QApplication::activeModalWidget());
            QVERIFY(list);
            first = list->findChild<QTreeWidget*>()->topLevelItem(0)->text(0);
            list->reject();
        });
        QTest::mouseClick(Find<QToolButton>(u"cmdChildren"_s), Qt::LeftButton);
        QVERIFY2(first.contains(u"Child00001"_s), qPrintable(first));
    }

    void plainLibrary_hasNoReplicas()
    {
        Show();
        QCOMPARE(Text(u"lblReplicaType"_s), u"No Replication"_s);
        QCOMPARE(Text(u"lblLastBackedUp"_s), u"Never"_s);
        QVERIFY(!Find<QToolButton>(u"cmdChildren"_s)->isEnabled());
        Panel()->SetReplicaType(ReplicaType::Child);
        Panel()->SetReplicaNoOfChildren(3);
        Panel()->SetReplicaLastSynchronized(Date::FromParts(2026, 3, 2));
        Panel()->SetDatabaseLastBackedUp({});
        QCOMPARE(Text(u"lblReplicaType"_s), u"Child Replica"_s);
        QCOMPARE(Text(u"lblNoOfChildren"_s), u"3"_s);
        QCOMPARE(Text(u"lblLastSynchronized"_s), QLocale().toString(QDate(2026, 3, 2), QLocale::ShortFormat));
        Panel()->UpdateReplicationInfo();
        QCOMPARE(Text(u"lblReplicaType"_s), u"No Replication"_s);
    }

    void lockedOrphan_isNotChanged()
    {
        m_database->Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s,
                            {AddItem(*m_database, 0, u"Orphaned Items"_s), m_item});
        MakeChild(*m_database, u"mother.qbd"_s, {});
        Show();
        m_window->GoToNode(u"C"_s + QString::number(m_item));
        QVERIFY(Info()->isReadOnly());
        QVERIFY(!Find<QToolButton>(u"cmdOrigin"_s)->isEnabled());
        QVERIFY(!Find<RatingStars>(u"RatingStars"_s)->isEnabled());
    }

private:
    void Show()
    {
        Open();
        Panel()->SetDisplayedTab(2);
    }
    void AddLink(qint64 from, qint64 to, const QString& note)
    {
        m_database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, ?)"_s, {from, to, note});
    }
    static QString DayAndTime(const QDate& day, const QTime& time)
    {
        return QLocale().toString(day, QLocale::ShortFormat) + u' ' + QLocale().toString(time, QLocale::ShortFormat);
    }
    /// Answers the question of how much of a link is to be removed.
    void Answer(const QString& option, LinkDirection direction)
    {
        QTimer::singleShot(0, m_window.get(), [option, direction] {
            auto* dialog = qobject_cast<frmRelationshipDelete*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->findChild<QWidget*>(u"optLeft"_s)->isEnabled(), direction == LinkDirection::Both);
            dialog->findChild<QAbstractButton*>(option)->click();
            dialog->accept();
        });
    }

    template <class Widget>
    Widget* Find(const QString& name)
    {
        return m_window->findChild<Widget*>(name);
    }
    ctlBookmarks* Panel() { return Find<ctlBookmarks>(u"ctlBookMarkList"_s); }
    QPlainTextEdit* Info() { return Find<QPlainTextEdit>(u"txtInfo"_s); }
    QPlainTextEdit* Note() { return Find<QPlainTextEdit>(u"txtLinkNote"_s); }
    QTreeWidget* Links() { return Find<QTreeWidget>(u"lvLinks"_s); }
    QAction* Lock() { return ToolbarButton(u"tbrInfo"_s, u"LOCK"_s); }
    QString Text(const QString& label) { return Find<QLabel>(label)->text(); }
    QString Image(const QString& name) { return Find<QWidget>(name)->property("image").toString(); }
    QString Rating()
    {
        QString rating;
        for (int i = 0; i < RatingImageCount; ++i) {
            const QString image = Image(u"imgRating%1"_s.arg(i));
            rating += image == u"STAR"_s ? u'*' : image == u"HALF_STAR"_s ? u'h' : u'.';
        }
        return rating;
    }
    QStringList LinkImages() { return DataOf(0); }
    QStringList Marks() { return DataOf(1); }
    QStringList DataOf(int column)
    {
        QStringList images;
        for (int i = 0; i < Links()->topLevelItemCount(); ++i)
            images << Links()->topLevelItem(i)->data(column, Qt::UserRole + 1).toString();
        return images;
    }

    qint64 m_other = 0;
};

QB_GUI_TEST_MAIN(TestInfoPage)
#include "tst_info_page.moc"
