#include "panels/ItemInfo.h"
#include "store/ItemBranch.h"
#include "support/FileSizeLimit.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QFile>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the info page shows and changes of an item, and its lock.
class TestItemInfo : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_clock = std::make_unique<FixedClock>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home->Path(u"Büch erei.qbd"_s), LanguageType::None);
        m_one = AddItem(*m_library, 0, u"one"_s);
        m_two = AddItem(*m_library, 0, u"two"_s);
        m_info = std::make_unique<ItemInfo>();
        m_info->SetLibrary(m_library.get());
        Show(m_one);
    }
    void cleanup()
    {
        m_info.reset();
        m_item.reset();
        m_library.reset();
        m_prompts.reset();
        m_clock.reset();
        m_home.reset();
    }

    // Status and rating

    void status_hasEntryImageAndTip()
    {
        const QStringList expected{u"mnuOwnItem OWN_CODE The user created this item"_s,
                                   u"mnuDownloadedItem DOWNLOADED This item was downloaded and not tested yet"_s,
                                   u"mnuTestedOK THUMB_UP This item works fine"_s,
                                   u"mnuItemNotWorking THUMB_DOWN This item doesn't work"_s};
        QStringList rows;
        for (const StatusRow& row : StatusRows()) {
            rows << QStringList{QString::fromLatin1(row.Entry), QString::fromLatin1(row.Image),
                                QString::fromLatin1(row.ToolTip)}
                        .join(u' ');
            QCOMPARE(RowOfStatus(qint32(row.Status)), &row);
        }
        QCOMPARE(rows, expected);
        QCOMPARE(RowOfStatus(2), &StatusRows()[0]); // as items get it that are added by hand
        QVERIFY(!RowOfStatus(0));
        QVERIFY(!RowOfStatus(77));
    }

    void rating_isShownInHalfStars_data()
    {
        QTest::addColumn<int>("rating");
        QTest::addColumn<QString>("images");
        const char* const images[] = {".....", "h....", "*....", "*h...", "**...", "**h..",
                                      "***..", "***h.", "****.", "****h", "*****"};
        for (int rating = 0; rating <= 10; ++rating)
            QTest::addRow("%d", rating) << rating << QString::fromLatin1(images[rating]);
        for (const int rating : {-1, 11, 2147483647, -2147483647})
            QTest::addRow("%d", rating) << rating << u"....."_s;
    }
    void rating_isShownInHalfStars()
    {
        QFETCH(int, rating);
        QString images;
        for (const QString& image : RatingImages(rating))
            images += image == u"STAR"_s ? u'*' : image == u"HALF_STAR"_s ? u'h' : image == u"NO_STAR"_s ? u'.' : u'?';
        QTEST(images, "images");
    }

    void clickOnAnImage_givesWholeStars()
    {
        for (int image = 0; image < RatingImageCount; ++image)
            QCOMPARE(RatingOfImage(image), 2 * image + 2);
        QCOMPARE(RatingText(0), u"Not rated"_s);
        QCOMPARE(RatingText(3), u"Rated 1.5 of 5"_s);
    }

    // Changes

    void change_isOneOfTheItem_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("value");
        QTest::newRow("status") << u"ItemStatus"_s << u"4"_s;
        QTest::newRow("rating") << u"ItemRating"_s << u"6"_s;
        QTest::newRow("info") << u"Info"_s << u"a\r\nb"_s;
    }
    void change_isOneOfTheItem()
    {
        QFETCH(QString, column);
        QFETCH(QString, value);
        const QString before = Read(m_one, column);
        m_clock->AddSeconds(60);
        Change(column, value);
        QVERIFY(m_item->ItemChanged());
        QCOMPARE(m_item->LastChanged(), m_clock->Now());
        QCOMPARE(Read(m_one, column), before); // until the item is saved
        QVERIFY(m_item->Commit());
        QCOMPARE(Read(m_one, column), value);
        QVERIFY(!m_info->KeptUnsaved());
    }

    void sameValue_isNoChange()
    {
        m_library->Execute(u"UPDATE Items SET ItemStatus = 4, ItemRating = 6, Info = 'a' || char(10) || 'b'"_s);
        Show(m_one);
        m_info->SetStatus(ItemStatus::TestedOK);
        m_info->SetRating(6);
        m_info->SetInfo(u"a\nb"_s);
        QVERIFY(!m_item->Unsaved());
    }

    void fixedItem_isNotChanged()
    {
        Show(m_one, true);
        QVERIFY(!m_info->MayEdit());
        m_info->SetStatus(ItemStatus::Own);
        m_info->SetRating(6);
        m_info->SetInfo(u"x"_s);
        QVERIFY(!m_item->Unsaved());
        m_info->InitialiseItem(nullptr);
        QVERIFY(!m_info->Item());
        QVERIFY(!m_info->MayEdit());
        m_info->SetRating(6); // of nothing
    }

    // The lock

    void lockWithoutAnItem_isRefused()
    {
        m_info->InitialiseItem(nullptr);
        const QSignalSpy locks(m_info.get(), &ItemInfo::LockChanged);
        m_prompts->ExpectMsgBox(u"Nothing to lock"_s);
        QVERIFY(!m_info->ToggleLock());
        QCOMPARE(m_prompts->Messages.first().Text, u"No item selected. Page can not be locked."_s);
        QVERIFY(!m_info->Locked());
        QVERIFY(locks.isEmpty());
        CCodeItem none; // as the session has it, with no item open
        m_info->InitialiseItem(&none);
        m_prompts->ExpectMsgBox(u"Nothing to lock"_s);
        QVERIFY(!m_info->ToggleLock());
    }

    void lockedPage_staysAtItsItem()
    {
        const QSignalSpy locks(m_info.get(), &ItemInfo::LockChanged);
        QVERIFY(m_info->ToggleLock());
        QCOMPARE(m_info->LockedText(), u"[locked to: one]"_s);
        QVERIFY(m_info->ShowsCurrent());
        Show(m_two);
        QCOMPARE(m_info->Item()->Title(), u"one"_s);
        QVERIFY(!m_info->ShowsCurrent());
        QVERIFY(m_info->MayEdit());
        m_info->InitialiseItem(nullptr); // the root
        QCOMPARE(m_info->Item()->Title(), u"one"_s);
        Show(m_two);
        QVERIFY(m_info->ToggleLock());
        QCOMPARE(m_info->LockedText(), QString());
        QCOMPARE(m_info->Item(), m_item.get());
        QCOMPARE(locks.size(), 2);
    }

    void lockedItemThatIsCurrentAgain_isTheCurrentOne()
    {
        m_info->ToggleLock();
        Show(m_two);
        Show(m_one);
        QCOMPARE(m_info->Item(), m_item.get());
        QVERIFY(m_info->ShowsCurrent());
        QVERIFY(m_info->Locked());
    }

    void lock_endsWithItsItemAndItsLibrary()
    {
        m_info->ToggleLock();
        Show(m_two);
        DeleteBranch(*m_library, m_one);
        Show(m_two);
        QVERIFY(!m_info->Locked());
        QCOMPARE(m_info->Item(), m_item.get());
        m_info->ToggleLock();
        m_info->SetLibrary(nullptr);
        QVERIFY(!m_info->Locked());
        QVERIFY(!m_info->Item());
    }

    void lock_tellsTheNewTitle()
    {
        m_info->ToggleLock();
        const QSignalSpy locks(m_info.get(), &ItemInfo::LockChanged);
        m_info->TitleChanged(m_two, u"x"_s);
        QVERIFY(locks.isEmpty());
        m_info->TitleChanged(m_one, u"new"_s);
        QCOMPARE(m_info->LockedText(), u"[locked to: new]"_s);
        QCOMPARE(locks.size(), 1);
    }

    // The item that it is locked to

    void keptItem_isChangedAndSavedByItself_data() { change_isOneOfTheItem_data(); }
    void keptItem_isChangedAndSavedByItself()
    {
        QFETCH(QString, column);
        QFETCH(QString, value);
        LockAndLeave();
        m_clock->AddSeconds(60);
        Change(column, value);
        QVERIFY(m_info->KeptUnsaved());
        QVERIFY(!m_item->Unsaved()); // the current one is another
        QVERIFY(m_info->LeaveKept(true));
        QCOMPARE(Read(m_one, column), value);
        QCOMPARE(Read(m_one, u"LastChanged"_s).toLongLong(), m_clock->Now().Seconds());
        QVERIFY(!m_info->KeptUnsaved());
    }

    void keptItem_leavesWhatAnotherProgramWrote()
    {
        LockAndLeave();
        m_info->SetRating(6);
        m_library->Execute(u"UPDATE Items SET Info = 'theirs' WHERE ID = ?"_s, {m_one});
        QVERIFY(m_info->SaveKept());
        QCOMPARE(Read(m_one, u"Info"_s), u"theirs"_s);
        QCOMPARE(m_info->Item()->Info(), u"theirs"_s);
    }

    void linksOfTheKeptItem_areSavedWithIt()
    {
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (?, ?)"_s, {m_one, m_two});
        LockAndLeave();
        QCOMPARE(m_info->Item()->Links().Count(), 1);
        m_info->Item()->ChangeLinkNote(CLinks::KeyOf(m_two), u"why"_s);
        QVERIFY(m_info->KeptUnsaved());
        QVERIFY(m_info->SaveKept());
        QCOMPARE(Texts(*m_library, u"SELECT Note FROM ItemLinks"_s), QStringList{u"why"_s});
        QVERIFY(!m_info->Item()->Links().Item(CLinks::KeyOf(m_two))->DirtyFlag);
    }

    void keptItem_isAskedAboutWhereNothingIsSavedByItself()
    {
        LockAndLeave();
        m_info->SetRating(6);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(m_info->LeaveKept(false));
        QVERIFY(m_prompts->Messages.first().Text.contains(u"'one'"_s));
        QVERIFY(m_prompts->Messages.first().MustAnswer);
        QCOMPARE(Read(m_one, u"ItemRating"_s), u"0"_s);
        QCOMPARE(m_info->Item()->ItemRating(), 0); // as it is stored
        m_info->SetRating(6);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        QVERIFY(m_info->LeaveKept(false));
        QCOMPARE(Read(m_one, u"ItemRating"_s), u"6"_s);
        QVERIFY(m_info->LeaveKept(false)); // nothing waits
    }

    void keptItem_isAskedAboutWhenThePageIsFreed()
    {
        m_info->AutoSaveOn = [] { return false; };
        LockAndLeave();
        m_info->SetRating(6);
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        QVERIFY(m_info->ToggleLock());
        QCOMPARE(Read(m_one, u"ItemRating"_s), u"6"_s);
        QVERIFY(!m_info->Locked());
    }

    void keptItemThatCantBeWritten_isNotLostWithoutAQuestion()
    {
        LockAndLeave();
        m_info->SetInfo(u"word"_s);
        RefuseWord(*m_library, u"Items"_s, u"Info"_s, u"word"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(!m_info->ToggleLock());
        QVERIFY(m_info->Locked());
        QVERIFY(m_info->KeptUnsaved());
        QCOMPARE(m_prompts->Messages.first().Default, std::optional(MsgBoxResult::No));
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        QVERIFY(m_info->ToggleLock());
        QCOMPARE(Read(m_one, u"Info"_s), QString());
        m_library->Execute(u"DROP INDEX refuse"_s);
    }

    void keptItem_isNotWrittenIntoAFileThatHasGone()
    {
        LockAndLeave();
        m_info->SetRating(6);
        const QString path = m_library->Name();
        QVERIFY(QFile::rename(path, path + u".away"_s));
        QVERIFY(!m_info->SaveKept());
        QVERIFY(m_info->KeptUnsaved());
        QVERIFY(QFile::rename(path + u".away"_s, path));
        QVERIFY(m_info->SaveKept());
    }

    void keptItemOfWhichADecisionWaits_isNotChanged_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("reason");
        QTest::newRow("deleted by a child") << u"mother"_s << u"A child library has deleted the item"_s;
        QTest::newRow("in conflict at the mother") << u"child"_s << u"in conflict at the mother"_s;
        QTest::newRow("orphan in a child") << u"orphan"_s << u"locked until its mother has decided"_s;
    }
    void keptItemOfWhichADecisionWaits_isNotChanged()
    {
        QFETCH(QString, state);
        QFETCH(QString, reason);
        if (state == u"mother"_s)
            MakeMother(*m_library, {});
        else
            MakeChild(*m_library, u"mother.qbd"_s, {});
        if (state == u"orphan"_s)
            m_library->Execute(u"UPDATE Items SET ParentID = ? WHERE ID = ?"_s,
                               {AddItem(*m_library, 0, OrphanedItemsTitle), m_one});
        else
            m_library->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_one});
        LockAndLeave();
        QVERIFY(!m_info->MayEdit());
        QVERIFY2(m_info->WhyNot().contains(reason), qPrintable(m_info->WhyNot()));
        m_info->SetRating(6);
        QVERIFY(!m_info->KeptUnsaved());
    }

    void orphanThatIsKept_keepsItsDate()
    {
        m_library->Execute(u"UPDATE Items SET ParentID = ?, LastChanged = 77 WHERE ID = ?"_s,
                           {AddItem(*m_library, 0, OrphanedItemsTitle), m_one});
        LockAndLeave();
        m_info->SetRating(6);
        QVERIFY(m_info->SaveKept());
        QCOMPARE(Read(m_one, u"ItemRating"_s) + u' ' + Read(m_one, u"LastChanged"_s), u"6 77"_s);
    }

    void refresh_readsAnewWhatDoesNotWait()
    {
        LockAndLeave();
        QCOMPARE(m_info->Item()->ItemRating(), 0);
        m_library->Execute(u"UPDATE Items SET ItemRating = 8"_s);
        m_info->Refresh();
        QCOMPARE(m_info->Item()->ItemRating(), 8);
        m_info->SetRating(2);
        m_library->Execute(u"UPDATE Items SET ItemRating = 10"_s);
        m_info->Refresh();
        QCOMPARE(m_info->Item()->ItemRating(), 2);
        QVERIFY(m_info->LeaveKept(true));
    }

private:
    void Show(qint64 id, bool fixed = false)
    {
        auto item = std::make_unique<CCodeItem>();
        item->Initialise(*m_library, QString::number(id));
        item->Title();
        m_item = std::move(item);
        m_info->InitialiseItem(m_item.get(), fixed);
    }
    void LockAndLeave()
    {
        Show(m_one);
        QVERIFY(m_info->ToggleLock());
        Show(m_two);
    }
    void Change(const QString& column, const QString& value)
    {
        if (column == u"ItemStatus"_s)
            m_info->SetStatus(ItemStatus(value.toInt()));
        else if (column == u"ItemRating"_s)
            m_info->SetRating(value.toInt());
        else
            m_info->SetInfo(QString(value).remove(u'\r'));
    }
    QString Read(qint64 id, const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {id}).ToText();
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_clock;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    std::unique_ptr<CCodeItem> m_item;
    std::unique_ptr<ItemInfo> m_info;
    qint64 m_one = 0;
    qint64 m_two = 0;
};

QB_TEST_MAIN(TestItemInfo)
#include "tst_item_info.moc"
