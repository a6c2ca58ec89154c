#include "platform/richtext/RtfPlainText.h"
#include "store/CDBCreate.h"
#include "store/ItemBranch.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The commands that change the set of items, without a window.
class TestItemCommands : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
    }
    void cleanup() { s.reset(); }

    // Saving

    void changedItem_isSavedOnLeaving()
    {
        Fill();
        s->Click(u"a"_s);
        s->Details.Type(u"typed"_s);
        s->Click(u"b"_s);
        QCOMPARE(Code(u"a"_s), u"typed"_s);
        QVERIFY(s->Details.Automatic);
    }

    void changedItem_isAskedAboutWithoutAutoSave_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }

    void changedItem_isAskedAboutWithoutAutoSave()
    {
        QFETCH(bool, yes);
        Fill();
        s->Items.SetAutoSaveOn(false);
        s->Click(u"a"_s);
        const Date before = LastChanged(u"a"_s);
        s->Time.AddSeconds(60);
        s->Details.Type(u"typed"_s);
        s->Script.ExpectMsgBox(u"Save Item"_s, yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        s->Click(u"b"_s);
        const Message asked = s->Script.Messages.last();
        QCOMPARE(asked.Text, u"This item has been changed. Do you wish to save the changes?"_s);
        QCOMPARE(asked.Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(asked.Icon, MsgBoxIcon::Question);
        QCOMPARE(Code(u"a"_s), yes ? u"typed"_s : QString());
        QCOMPARE(LastChanged(u"a"_s), yes ? s->Time.Now() : before); // what is dropped leaves no date
        QVERIFY(!s->Details.Automatic);
        s->Click(u"a"_s); // and is not asked about again
    }

    void droppedChange_isNotShownAsIfItWereStored()
    {
        Fill();
        s->Items.SetAutoSaveOn(false);
        s->Click(u"a"_s);
        const int shown = s->Details.Initialised;
        s->Details.Type(u"typed"_s);
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(s->Items.SaveItem()); // and then the leaving comes to nothing
        QCOMPARE(s->Details.Initialised, shown + 1);
        QCOMPARE(s->Details.Item, s->State.oCodeItem.get());
        QVERIFY(!s->State.oCodeItem->ItemChanged());
        QCOMPARE(s->State.oCodeItem->Code(), QString());
        QVERIFY(!s->Details.Typed());
    }

    void unchangedItem_isLeftWithoutAQuestion()
    {
        Fill();
        s->Items.SetAutoSaveOn(false);
        s->Click(u"a"_s);
        const int resets = s->Details.Resets;
        s->Click(u"b"_s);
        QVERIFY(s->Details.Resets > resets);
        QCOMPARE(s->Details.Saves, 0);
    }

    void everyWayOut_saves_data()
    {
        QTest::addColumn<int>("way");
        const char* ways[] = {"click", "history", "add", "next", "close", "key"};
        for (int i = 0; i < 6; ++i)
            QTest::newRow(ways[i]) << i;
    }

    void everyWayOut_saves()
    {
        QFETCH(int, way);
        Fill();
        s->Click(u"b"_s);
        s->Click(u"a"_s);
        s->Details.Type(u"typed"_s);
        const std::function<void()> ways[] = {
            [this] { s->Click(u"b"_s); },    [this] { s->Tree.GoToNode(s->State.moHistory->PreviousInHistory()); },
            [this] { s->Items.AddCode(); },  [this] { s->Tree.MoveOnNextItem(); },
            [this] { s->Items.SaveItem(); }, [this] { s->Items.mnuSaveItem_Click(); },
        };
        ways[way]();
        QCOMPARE(Code(u"a"_s), u"typed"_s);
    }

    void changeOfLibrary_saves()
    {
        const QString first = s->LibraryFile(u"first.qbd"_s, u"one"_s);
        const QString second = s->LibraryFile(u"second.qbd"_s, u"two"_s);
        QVERIFY(s->Start(first + u"|First;"_s + second + u"|Second;"_s));
        s->Click(u"one"_s);
        s->Details.Type(u"typed"_s);
        s->Shell.SetComboIndex(1);
        QCOMPARE(s->OpenPath(), second);
        s->Shell.SetComboIndex(0);
        QCOMPARE(Code(u"one"_s), u"typed"_s);
        QVERIFY(s->Details.FormatsRead >= 3); // each library's own colours
    }

    void itemThatCanNotBeSaved_isLeftOnlyIfTheUserWants()
    {
        Fill();
        s->Click(u"a"_s);
        s->Details.Type(u"typed"_s);
        s->State.CurrentDatabase->Execute(u"DELETE FROM Items WHERE Title = 'a'"_s);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        s->Click(u"b"_s);
        QCOMPARE(s->Selected(), u"a"_s);
        QCOMPARE(s->Details.Item->Key(), s->Node(u"a"_s).Key().mid(1));
        QVERIFY(s->Details.Item->ItemChanged());
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        s->Click(u"b"_s);
        QCOMPARE(s->Selected(), u"b"_s);
        QCOMPARE(s->Details.Title, u"b"_s);
    }

    void walkAndHistory_waitForWhatCanNotBeSaved()
    {
        Fill();
        s->Click(u"b"_s);
        s->Click(u"a"_s);
        s->Details.Type(u"typed"_s);
        RefuseWrites();
        const std::function<void()> ways[] = {
            [this] { s->Tree.MoveOnNextItem(); },
            [this] { s->Tree.MoveOnPreviousItem(); },
            [this] { s->Tree.GoToNode(s->Node(u"b"_s).Key()); },
        };
        for (const auto& way : ways) {
            s->Script.ExpectError();
            s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
            way();
            QCOMPARE(s->Selected(), u"a"_s);
            QCOMPARE(s->Details.Typed(), std::optional(u"typed"_s));
        }
    }

    void changeOfLibrary_waitsForWhatCanNotBeSaved()
    {
        const QString first = s->LibraryFile(u"first.qbd"_s, u"one"_s);
        const QString second = s->LibraryFile(u"second.qbd"_s, u"two"_s);
        QVERIFY(s->Start(first + u"|First;"_s + second + u"|Second;"_s));
        s->Click(u"one"_s);
        s->Details.Type(u"typed"_s);
        RefuseWrites();
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        s->Shell.SetComboIndex(1);
        QCOMPARE(s->OpenPath(), first);
        QCOMPARE(s->Shell.Index, 0);
        QCOMPARE(s->Details.Typed(), std::optional(u"typed"_s));
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->State.DatabaseList.size(), 2u);
        s->Shell.Language.Type = LanguageType::Cpp; // a new library in the place of the open one
        s->Script.ExpectFileName(u"Enter Name and Path for the New Database"_s, first);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        s->Libraries.mnuNewDatabase_Click();
        QCOMPARE(s->OpenPath(), first);
        QCOMPARE(s->Details.Typed(), std::optional(u"typed"_s));
    }

    void removalThatIsCancelled_asksNothingOfTheItem()
    {
        const QString first = s->LibraryFile(u"first.qbd"_s, u"one"_s);
        QVERIFY(s->Start(first + u"|First;"_s));
        s->Items.SetAutoSaveOn(false);
        s->Click(u"one"_s);
        s->Details.Type(u"typed"_s);
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Cancel);
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->Details.Typed(), std::optional(u"typed"_s));
    }

    void withoutALibrary_noCommandDoesAnything()
    {
        const QString first = s->LibraryFile(u"first.qbd"_s, u"one"_s);
        const QString other = s->Home.Path(u"other.qbd"_s);
        WriteFile(other, "no library");
        QVERIFY(s->Start(first + u"|First;"_s + other + u"|Other;"_s));
        s->Click(u"one"_s);
        s->Script.ExpectMsgBox(u"Invalid Database"_s);
        s->Script.ExpectMsgBox(u"Database Not Found"_s);
        s->Shell.SetComboIndex(1);
        QVERIFY(!s->State.CurrentDatabase);
        QCOMPARE(s->View.Nodes().Count(), 0);
        TreeNodes& nodes = s->View.Nodes();
        TreeNode& node = nodes.Insert(7, u"left over"_s, TreeImage::CHILD, nodes.Add(0, u"root"_s, TreeImage::OBJECTS));
        s->View.SelectItem(node);
        s->Items.DeleteCodeItem();
        s->Items.AddCode();
        s->Items.mnuKeepItem_Click();
        s->Items.mnuRemoveDeletedItems_Click();
        QVERIFY(!s->Items.AfterLabelEdit(node, u"x"_s));
        QVERIFY(!s->Drag.Start(node));
    }

    void libraryThatBecomesReadOnly_refusesEveryChange()
    {
        Fill();
        Library& database = *s->State.CurrentDatabase;
        const QString shape = s->Shape();
        const QStringList rows = Texts(database, u"SELECT ID || ParentID || Title || coalesce(Code, '') FROM Items"_s);
        s->Click(u"a"_s);
        database.Execute(u"PRAGMA query_only = ON"_s);
        s->Details.Type(u"typed"_s);
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Items.mnuSaveItem_Click();
        QCOMPARE(s->Details.Typed(), std::optional(u"typed"_s));
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes); // lost, as the user wants
        s->Click(u"b"_s);
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Items.AddCode();
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Items.DeleteCodeItem();
        s->Drag.Start(s->Node(u"b"_s));
        s->Drag.Over(&s->Node(u"a"_s), 3000, 6000);
        s->Script.ExpectMsgBox(ApplicationTitle);
        QVERIFY(!s->Drag.Drop());
        s->Drag.Complete();
        QCOMPARE(s->Shape(), shape);
        QCOMPARE(Texts(database, u"SELECT ID || ParentID || Title || coalesce(Code, '') FROM Items"_s), rows);
        QVERIFY(s->Script.Errors.isEmpty()); // it is no fault of the program
        QVERIFY(s->Script.Messages.first().Text.contains(u"is read-only; nothing was changed"_s));
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Items.AfterLabelEdit(s->Node(u"b"_s), u"c"_s); // shows the text until the next filling
        s->Tree.Refill();
        QCOMPARE(s->Shape(), shape);
    }

    void saveButton_tellsOneClickFromTwo()
    {
        Fill();
        s->Click(u"a"_s);
        s->Items.SetAutoSaveOn(false);
        s->Details.Type(u"one"_s);
        s->Items.SaveButtonClicked(1);
        QCOMPARE(Code(u"a"_s), u"one"_s);
        QVERIFY(!s->Items.AutoSaveOn());
        QVERIFY(!s->CommandStates.Get(u"SAVE"_s).Checked);
        s->Details.Type(u"two"_s);
        s->Items.SaveButtonClicked(2); // on, and saves
        QCOMPARE(Code(u"a"_s), u"two"_s);
        QVERIFY(s->CommandStates.Get(u"SAVE"_s).Checked);
        QVERIFY(s->CommandStates.Get(u"mnuAutoSaveItem"_s).Checked);
        s->Details.Type(u"three"_s);
        s->Items.SaveButtonClicked(3); // off, and leaves it
        QCOMPARE(Code(u"a"_s), u"two"_s);
        QVERIFY(!s->Items.AutoSaveOn());
    }

    void itemOfTheInfoPage_isSavedWithTheCurrentOne()
    {
        Fill();
        ItemInfo info;
        LockTo(info, u"a"_s);
        info.SetRating(6);
        s->Click(u"a1"_s);
        QCOMPARE(RatingOf(u"a"_s), 6);
        s->Click(u"b"_s);
        info.InitialiseItem(s->State.oCodeItem.get());
        info.SetRating(8);
        s->Items.mnuSaveItem_Click();
        QCOMPARE(RatingOf(u"a"_s), 8);
    }

    void itemOfTheInfoPage_isAskedAboutWithoutAutoSave()
    {
        Fill();
        ItemInfo info;
        LockTo(info, u"a"_s);
        s->Items.SetAutoSaveOn(false);
        info.SetRating(6);
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        s->Click(u"a1"_s);
        QCOMPARE(RatingOf(u"a"_s), 0);
    }

    void itemOfTheInfoPageThatCantBeSaved_keepsTheCurrentOne()
    {
        Fill();
        ItemInfo info;
        LockTo(info, u"a"_s);
        info.SetInfo(u"word"_s);
        RefuseWord(*s->State.CurrentDatabase, u"Items"_s, u"Info"_s, u"word"_s);
        s->Script.ExpectError();
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        QVERIFY(!s->Items.SaveItem());
        QVERIFY(info.KeptUnsaved());
        s->State.CurrentDatabase->Execute(u"DROP INDEX refuse"_s);
        QVERIFY(s->Items.SaveItem());
    }

    // Adding

    void newItem_isTold()
    {
        Fill();
        int told = 0;
        s->Items.ItemAdded = [&told] { ++told; };
        s->Click(u"a"_s);
        s->Items.AddCode();
        QCOMPARE(told, 1);
    }

    void newItem_standsLastUnderTheSelectedOne()
    {
        Fill();
        s->Click(u"a"_s);
        s->Items.AddCode();
        TreeNode& node = s->Node(u"New Code item"_s);
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2 New Code item) b)"_s);
        QCOMPARE(s->Selected(), u"New Code item"_s);
        QCOMPARE(s->View.Edited, node.Id);
        QCOMPARE(s->View.Shown, node.Id);
        QCOMPARE(s->Image(u"New Code item"_s), u"CHILD"_s);
        QCOMPARE(s->Image(u"a"_s), u"FOLDER"_s);
        QCOMPARE(s->ExpandedImage(u"a"_s), u"FOLDER"_s);
        QCOMPARE(s->State.CurrentItemKey, QString::number(node.Id)); // without its letter
        QCOMPARE(s->Details.Title, u"New Code item"_s);
        QCOMPARE(s->Details.View, std::optional(DetailsTab::Code));
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT ItemStatus FROM Items WHERE ID = ?"_s, {node.Id}),
                 QStringList{u"2"_s});
        QCOMPARE(ParentOf(node.Id), s->Node(u"a"_s).Id);
        const int shown = s->Details.Initialised;
        s->Click(u"New Code item"_s); // is not taken for a click on the same node
        QCOMPARE(s->Details.Initialised, shown + 1);
    }

    void newItemUnderTheRoot_hasNoParent()
    {
        Fill();
        s->Click(u"Ali äs Library"_s);
        s->Items.AddCode();
        QCOMPARE(ParentOf(s->Node(u"New Code item"_s).Id), 0);
        QCOMPARE(s->Image(u"Ali äs Library"_s), u"OBJECTS"_s);
        QVERIFY(s->Enabled(u"DELETE"_s));
    }

    void newItem_takesAProblemImageOffItsParent()
    {
        Fill();
        s->View.Nodes().SetImages(s->Node(u"b"_s), TreeImage::CONFLICT_ITEM, TreeImage::CONFLICT_ITEM);
        s->Click(u"b"_s);
        s->Items.AddCode();
        QCOMPARE(s->Image(u"b"_s), u"FOLDER"_s);
    }

    void newItemThatCanNotBeWritten_leavesNoNode()
    {
        Fill();
        s->Click(u"a"_s);
        s->State.CurrentDatabase->Execute(
            u"CREATE TEMP TRIGGER refuse BEFORE INSERT ON Items BEGIN SELECT RAISE(ABORT, 'no room'); END"_s);
        s->Script.ExpectError();
        s->Items.AddCode();
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2) b)"_s);
        QCOMPARE(s->View.Edited, -1);
        QCOMPARE(s->Selected(), u"a"_s);
    }

    void sibling_standsUnderTheSameParent()
    {
        Fill();
        s->Click(u"a1"_s);
        s->Items.mnuNewSiblingItem_Click();
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2 New Code item) b)"_s);
        s->Click(u"Ali äs Library"_s);
        s->Items.mnuNewSiblingItem_Click(); // the root has none
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2 New Code item) b)"_s);
    }

    // Renaming

    void newTitle_isWrittenAndShown()
    {
        Fill();
        s->Click(u"a"_s);
        s->Time.AddSeconds(60);
        QVERIFY(s->Items.AfterLabelEdit(s->Node(u"a1"_s), u"né\nw"_s));
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a2 né w) b)"_s); // in one line, in its place
        QCOMPARE(s->Shell.StatusText, u"né w"_s);
        QCOMPARE(s->Details.Title, u"né w"_s);
        QCOMPARE(LastChanged(u"né w"_s), s->Time.Now());
        QCOMPARE(s->State.CurrentItemKey, s->Node(u"né w"_s).Key());
    }

    void title_thatIsEmptyOrReserved_isRefused()
    {
        Fill();
        s->Script.ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!s->Items.AfterLabelEdit(s->Node(u"a"_s), {}));
        QCOMPARE(s->Script.Messages.last().Text, u"You must enter some text for a title."_s);
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Information);
        s->Script.ExpectMsgBox(u"KT Quillbase"_s);
        QVERIFY(!s->Items.AfterLabelEdit(s->Node(u"a"_s), u" \n "_s));
        s->Script.ExpectMsgBox(u"Reserved Folder Name"_s);
        QVERIFY(!s->Items.AfterLabelEdit(s->Node(u"a"_s), u"Orphaned Items"_s));
        QCOMPARE(s->Script.Messages.last().Text,
                 u"You can't create an 'Orphaned Items' folder! This name is reserved for the program."_s);
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2) b)"_s);
        QVERIFY(s->Items.AfterLabelEdit(s->Node(u"a1"_s), u"Orphaned Items"_s)); // below the first level it is a name
    }

    void title_ofAnyLengthTheColumnHolds_isWritten()
    {
        Fill();
        const QString longest(255, u'x');
        QVERIFY(s->Items.AfterLabelEdit(s->Node(u"a"_s), longest));
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items WHERE length(Title) = 255"_s),
                 QStringList{longest});
        s->Script.ExpectError();
        s->Items.AfterLabelEdit(s->Node(u"b"_s), longest + u'x');
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), 4);
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items WHERE Title = 'b'"_s), QStringList{u"b"_s});
    }

    void rename_keepsTextsThatWereTyped()
    {
        Fill();
        s->Click(u"a"_s);
        s->Details.Type(u"typed"_s);
        QVERIFY(s->Items.AfterLabelEdit(s->Node(u"a"_s), u"other"_s));
        QCOMPARE(Code(u"other"_s), u"typed"_s);
        s->Details.Type(u"more"_s);
        s->Click(u"b"_s);
        QCOMPARE(Code(u"other"_s), u"more"_s); // under its new title
    }

    void renameThatCantBeWritten_isSaidAndShownUntilTheNextFill()
    {
        Fill();
        s->State.CurrentDatabase->Execute(u"CREATE TEMP TRIGGER hold BEFORE UPDATE ON Items BEGIN SELECT "
                                          "raise(ABORT, 'held'); END"_s);
        s->Script.ExpectError();
        QVERIFY(s->Items.AfterLabelEdit(s->Node(u"b"_s), u"other"_s));
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2) other)"_s);
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items WHERE Title = 'other'"_s), QStringList{});
    }

    // Deleting

    void deleteQuestion_fitsTheNode()
    {
        Fill();
        s->Click(u"b"_s);
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::No);
        s->Items.DeleteCodeItem();
        const Message asked = s->Script.Messages.last();
        QCOMPARE(asked.Text, u"Delete selected item?"_s);
        QCOMPARE(asked.Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(asked.Default, std::optional(MsgBoxResult::No));
        s->Click(u"a"_s);
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::No);
        s->Items.DeleteCodeItem();
        QCOMPARE(s->Script.Messages.last().Text, u"Delete selected item and all child records?"_s);
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2) b)"_s);
        s->Click(u"Ali äs Library"_s);
        s->Items.DeleteCodeItem(); // does nothing
    }

    void withoutANode_deletingSaysSo()
    {
        Fill();
        s->View.Selected = -1;
        s->Script.ExpectMsgBox(u"KT Quillbase"_s);
        s->Items.DeleteCodeItem();
        QCOMPARE(s->Script.Messages.last().Text, u"No Selected Record"_s);
    }

    void deletedBranch_goesWithEverythingBelow()
    {
        Fill();
        s->Click(u"a"_s);
        s->Details.Type(u"typed"_s); // of what is gone nothing is asked
        Delete();
        QCOMPARE(s->Shape(), u"Ali äs Library(b)"_s);
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items"_s), QStringList{u"b"_s});
        QCOMPARE(s->Selected(), u"Ali äs Library"_s);
        QVERIFY(!s->Details.Item);
        QCOMPARE(s->Shell.StatusText, QString());
        QCOMPARE(s->Shell.Progress.first(), std::pair(1, 3));
        QCOMPARE(s->Shell.Progress.last(), std::pair(0, 0));
    }

    void progressOfOneItem_hasTwoEnds()
    {
        Fill();
        s->Click(u"b"_s);
        Delete();
        QCOMPARE(s->Shell.Progress.first(), std::pair(1, 2));
    }

    void lastChildDeleted_makesThePartnerAPlainItem()
    {
        Fill();
        for (const QString& title : {u"a1"_s, u"a2"_s}) {
            s->View.SetExpanded(s->Node(u"a"_s), true);
            QCOMPARE(s->Image(u"a"_s), u"FOLDER"_s);
            s->Click(title);
            Delete();
        }
        QCOMPARE(s->Image(u"a"_s), u"CHILD"_s);
        QCOMPARE(s->ExpandedImage(u"a"_s), u"CHILD"_s);
        QVERIFY(!s->Node(u"a"_s).Expanded);
        QCOMPARE(s->Selected(), u"a"_s);
        QCOMPARE(s->Details.Title, u"a"_s);
    }

    void deletionThatFails_changesNothing()
    {
        Fill();
        s->Click(u"a"_s);
        s->State.CurrentDatabase->Execute(u"CREATE TEMP TRIGGER refuse BEFORE DELETE ON Items WHEN OLD.Title = 'a2' "
                                          "BEGIN SELECT RAISE(ABORT, 'no room'); END"_s);
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        s->Script.ExpectError(); // once, when all is as it was
        s->Items.DeleteCodeItem();
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2) b)"_s);
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), 4);
        QVERIFY(!s->State.CurrentDatabase->InTransaction());
        QCOMPARE(s->Shell.Progress.last(), std::pair(0, 0));
        s->State.CurrentDatabase->Execute(u"DROP TRIGGER refuse"_s);
        Delete();
        QCOMPARE(s->Shape(), u"Ali äs Library(b)"_s);
    }

    void deletion_takesWhatTheRowsSay()
    {
        Fill();
        AddItem(*s->State.CurrentDatabase, s->Node(u"b"_s).Id, u"added by another"_s);
        s->Click(u"b"_s);
        Delete();
        QCOMPARE(s->Script.Messages.last().Text, u"Delete selected item and all child records?"_s);
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items ORDER BY ID"_s),
                 (QStringList{u"a"_s, u"a1"_s, u"a2"_s}));
    }

    void deletion_inATreeThatCouldNotBeBuilt_leavesNoGhosts()
    {
        Fill();
        s->State.CurrentDatabase->Execute(u"UPDATE Items SET ParentID = 99 WHERE Title = 'b'"_s);
        s->Script.ExpectError();
        s->Tree.FillTree();
        s->Click(u"a"_s);
        Delete();
        QCOMPARE(Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items"_s), QStringList{u"b"_s});
        for (const QString& title : {u"a"_s, u"a1"_s, u"a2"_s})
            QVERIFY_THROWS_EXCEPTION(RuntimeError, s->Node(title));
    }

    void itemDeletedElsewhere_canBeTakenOffByAReload()
    {
        Fill();
        s->Click(u"b"_s);
        s->State.CurrentDatabase->Execute(u"DELETE FROM Items WHERE Title = 'b'"_s);
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        s->Script.ExpectError();
        s->Items.DeleteCodeItem();
        QVERIFY(s->Script.Errors.last().contains(u"no item"_s));
        s->Tree.Refill();
        QCOMPARE(s->Shape(), u"Ali äs Library(a(a1 a2))"_s);
    }

    // Orphans

    void lastOrphanDeleted_takesTheFolderWithIt_data()
    {
        QTest::addColumn<bool>("notified");
        QTest::addColumn<bool>("conflicts");
        QTest::newRow("told") << true << false;
        QTest::newRow("told, with conflicts") << true << true;
        QTest::newRow("untold") << false << false;
    }

    void lastOrphanDeleted_takesTheFolderWithIt()
    {
        QFETCH(bool, notified);
        QFETCH(bool, conflicts);
        FillWithOrphans();
        s->State.moSettings->SetDisplaySynchroNotifications(notified);
        s->Click(u"orphan"_s);
        if (conflicts) {
            const qint64 waits = AddItem(*s->State.CurrentDatabase, s->Node(u"a"_s).Id, u"waits"_s);
            s->State.CurrentDatabase->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {waits});
            s->Tree.FillTree();
            s->Click(u"orphan"_s);
        }
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        if (notified)
            s->Script.ExpectMsgBox(u"No other orphaned items present"_s);
        s->Items.DeleteCodeItem();
        QCOMPARE(s->Shape(), conflicts ? u"Ali äs Library(a(waits))"_s : u"Ali äs Library(a)"_s);
        QVERIFY(!Texts(*s->State.CurrentDatabase, u"SELECT Title FROM Items"_s).contains(u"Orphaned Items"_s));
        QCOMPARE(s->Selected(), u"Ali äs Library"_s);
        if (!notified)
            return;
        const QString told = s->Script.Messages.last().Text;
        QVERIFY(told.endsWith(
            u"All orphaned items has either been moved or deleted from the database. The 'Orphaned Items' folder "
            "will be "
            "automaticaly removed."_s));
        QCOMPARE(
            told.startsWith(
                u"However to be able to synchronize this database again, you have to solve also all item conflicts"_s),
            conflicts);
    }

    void folderThatStillHoldsOrphans_stays()
    {
        FillWithOrphans();
        AddItem(*s->State.CurrentDatabase, s->Node(u"Orphaned Items"_s).Id, u"second"_s);
        s->Tree.FillTree();
        s->Click(u"orphan"_s);
        Delete();
        QCOMPARE(s->Shape(), u"Ali äs Library(a Orphaned Items(second))"_s);
        QVERIFY(!s->Items.CheckIfToDeleteOrphanedItemsFolder());
    }

    // Items that wait for removal

    void keptItem_isRegularAgain()
    {
        FillMother();
        s->Click(u"gone"_s);
        QCOMPARE(s->Image(u"gone"_s), u"DELETED_ITEM"_s);
        QVERIFY(s->Shown(u"mnuKeepItem"_s));
        s->Time.AddSeconds(60);
        s->Items.mnuKeepItem_Click();
        QCOMPARE(LastChanged(u"gone"_s), s->Time.Now());
        QCOMPARE(s->Image(u"gone"_s), u"CHILD"_s);
        QVERIFY(!s->Shell.ItemDate.isEmpty() && s->Shell.ItemDate != u"00:00"_s);
        QVERIFY(!s->Shown(u"mnuKeepItem"_s));
        QVERIFY(!s->Shown(u"mnuItemSeparator1"_s));
        QCOMPARE(s->CommandStates.Get(u"NEXT"_s).Icon, u"DOWN"_s); // it was the only one
        QVERIFY(!s->Enabled(u"mnuConflictSolver"_s));
    }

    void keptItem_withoutANewDate_waitsOn()
    {
        FillMother();
        s->Click(u"gone"_s);
        s->State.oCodeItem->SetDontUpdateLastChangedDate(true);
        s->Items.mnuKeepItem_Click();
        QCOMPARE(s->Shell.ItemDate, u"00:00"_s);
        QCOMPARE(LastChanged(u"gone"_s), Date());
        QCOMPARE(s->CommandStates.Get(u"NEXT"_s).Icon, u"DOWN_RED"_s);
    }

    void keptItem_hasTheImageOfItsChildren()
    {
        FillMother();
        AddItem(*s->State.CurrentDatabase, s->Node(u"gone"_s).Id, u"below"_s);
        s->Tree.FillTree();
        s->Items.KeepingDeletedRecord(QString::number(s->Node(u"gone"_s).Id));
        QCOMPARE(s->Image(u"gone"_s), u"FOLDER"_s);
        s->Node(u"gone"_s).Expanded = true;
        s->Items.KeepingDeletedRecord(QString::number(s->Node(u"gone"_s).Id));
        QCOMPARE(s->Image(u"gone"_s), u"OPENFOLDER"_s);
    }

    void keptItem_isAskedAboutNoMore()
    {
        FillMother();
        s->Click(u"gone"_s);
        s->Items.mnuKeepItem_Click();
        QVERIFY(!s->State.oCodeItem->ItemMarkedForDelete());
        s->Details.Type(u"typed"_s);
        s->Items.mnuSaveItem_Click();
        QCOMPARE(Code(u"gone"_s), u"typed"_s);
    }

    void lookAtAnItemThatWaits_decidesNothing()
    {
        FillMother();
        s->State.moSettings->SetAutoColorizeWhenItemOpened(true);
        s->Click(u"gone"_s);
        s->Click(u"stays"_s);
        QCOMPARE(LastChanged(u"gone"_s), Date());
        QCOMPARE(s->Details.Colorized, 1); // of the other
    }

    void editedItemThatWaits_isKeptByAutoSave()
    {
        FillMother();
        s->Click(u"gone"_s);
        s->Details.Type(u"typed"_s);
        s->Click(u"stays"_s);
        QCOMPARE(Code(u"gone"_s), u"typed"_s);
        QCOMPARE(s->Image(u"gone"_s), u"CHILD"_s);
    }

    void removeDeletedItems_leavesWhatStoodBelowThemAsOrphans()
    {
        FillMother();
        Library& database = *s->State.CurrentDatabase;
        const qint64 gone = s->Node(u"gone"_s).Id;
        const qint64 below = AddItem(database, gone, u"below"_s);
        AddItem(database, below, u"deeper"_s);
        const qint64 alsoGone = AddItem(database, gone, u"also gone"_s);
        database.Execute(u"UPDATE Items SET LastChanged = 77 WHERE ID = ?"_s, {below});
        database.Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {alsoGone});
        s->Tree.FillTree();
        QVERIFY(s->Enabled(u"mnuRemoveDeletedItems"_s));
        s->Click(u"gone"_s);
        s->Items.mnuRemoveDeletedItems_Click();
        QCOMPARE(s->Shape(), u"Ali äs Library(Orphaned Items(below(deeper)) stays)"_s);
        QCOMPARE(database.QueryValue(u"SELECT LastChanged FROM Items WHERE ID = ?"_s, {below}).ToLong(), 77);
        QCOMPARE(s->Selected(), u"Ali äs Library"_s);
    }

    void removeDeletedItems_recordsThemAndLeavesNothingOfThem()
    {
        FillMother();
        Library& database = *s->State.CurrentDatabase;
        const qint64 gone = s->Node(u"gone"_s).Id;
        AddStoredFile(database, gone, u"ä.txt"_s, "stored", Date::FromParts(2020, 1, 1));
        WriteFile(database.HTMLFolder() + u"%1.htm"_s.arg(gone), "<html>");
        database.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, DateAdded) VALUES (?, ?, 5)"_s,
                         {gone, s->Node(u"stays"_s).Id});
        database.Execute(u"UPDATE ChildCopies SET LastSynchronized = ?"_s, {s->Time.Now()});
        s->Items.mnuRemoveDeletedItems_Click();
        QCOMPARE(Texts(database, u"SELECT Title FROM Items"_s), QStringList{u"stays"_s});
        QCOMPARE(Texts(database, u"SELECT ItemID FROM DeletedItems"_s), QStringList{QString::number(gone)});
        QCOMPARE(CountOf(database, u"DeletedFiles"_s), 1);
        QCOMPARE(CountOf(database, u"ItemLinks"_s), 0);
        QCOMPARE(StoredNames(database.FilesFolder()), QStringList());
        QVERIFY(!QFile::exists(database.HTMLFolder() + u"%1.htm"_s.arg(gone)));
    }

    void deletedItemThatOthersKnow_isRecorded()
    {
        FillMother();
        s->State.CurrentDatabase->Execute(u"UPDATE ChildCopies SET LastSynchronized = ?"_s, {s->Time.Now()});
        s->Click(u"gone"_s);
        Delete();
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"DeletedItems"_s), 1);
    }

    void lastConflict_leavesItsTableAndTakesTheOthers_data()
    {
        QTest::addColumn<bool>("left");
        QTest::newRow("solved") << false;
        QTest::newRow("one left") << true;
    }
    void lastConflict_leavesItsTableAndTakesTheOthers()
    {
        QFETCH(bool, left);
        Library& database = s->OpenLibrary();
        const qint64 item = AddItem(database, 0, u"item"_s);
        MakeMother(database, Date());
        CDBCreate create(&database);
        create.Create_TblDef_Items(true, u"TempItems"_s);
        create.Create_TblDef_Files(u"TempFiles"_s);
        create.Create_TblDef_HTMLFiles(u"TempHTMLFiles"_s);
        database.Execute(u"INSERT INTO TempItems (ID, Title) VALUES (?, 'c')"_s, {item});
        s->Tree.FillTree();
        QVERIFY(s->Tree.WalksProblems());
        if (!left)
            database.Execute(u"DELETE FROM TempItems"_s);
        QCOMPARE(s->Tree.CheckIfConflictsStillOccur(), left);
        QVERIFY(database.TableExists(u"TempItems"_s)); // which stays, whatever is in it
        QCOMPARE(database.TableExists(u"TempFiles"_s), left);
        QCOMPARE(database.TableExists(u"TempHTMLFiles"_s), left);
        QCOMPARE(s->Tree.WalksProblems(), left);
        QCOMPARE(s->Enabled(u"mnuConflictSolver"_s), left);
    }

    void orphanFolderOfAPlainLibrary_isTheUsers()
    {
        Library& database = s->OpenLibrary();
        const qint64 folder = AddItem(database, 0, OrphanedItemsTitle);
        AddItem(database, folder, u"orphan"_s);
        s->Tree.FillTree();
        s->Click(u"orphan"_s);
        Delete();
        QCOMPARE(Texts(database, u"SELECT Title FROM Items"_s), QStringList{OrphanedItemsTitle});
        QCOMPARE(s->Shape(), u"Ali äs Library(Orphaned Items)"_s);
        QCOMPARE(s->Image(OrphanedItemsTitle), u"CHILD"_s);
    }

    // A child whose changes are on their way

    void exportedChild_deletesNoItemByAnyCommand()
    {
        Fill();
        Library& database = *s->State.CurrentDatabase;
        MakeChild(database, s->Home.Path(u"mother.qbd"_s), Date());
        database.Execute(u"UPDATE Properties SET LastExported = 5"_s);
        database.ReadReplica();
        s->Click(u"b"_s);
        for (const QString& name : {u"DELETE"_s, u"mnuDeleteCode"_s}) {
            QVERIFY(!s->Enabled(name));
            s->CommandStates.Run(name); // nobody is asked
        }
        QCOMPARE(CountOf(database, u"Items"_s), 4);
        s->CommandStates.Run(u"mnuAddCode"_s);
        QCOMPARE(CountOf(database, u"Items"_s), 5);
        database.Execute(u"UPDATE Properties SET LastExported = 0"_s);
        database.ReadReplica();
        s->Click(u"a1"_s); // its answer has been taken in
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        s->CommandStates.Run(u"DELETE"_s);
        QCOMPARE(CountOf(database, u"Items"_s), 4);
    }

    void newItemOfALinkMode_isNotPutUnderAnOrphan_data()
    {
        QTest::addColumn<QString>("under");
        QTest::newRow("orphan") << u"orphan"_s;
        QTest::newRow("folder") << u"Orphaned Items"_s;
    }
    void newItemOfALinkMode_isNotPutUnderAnOrphan()
    {
        QFETCH(QString, under);
        FillWithOrphans();
        s->Click(u"a"_s);
        s->State.Mode = LinkMode::OneWayNewFrom;
        s->Select(under);
        const qint64 items = CountOf(*s->State.CurrentDatabase, u"Items"_s);
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->Items.tvCodeItems_NodeClick(s->Node(under));
        QCOMPARE(s->Script.Messages.last().Text, SentenceOf(Bar::Orphan) + u'.');
        QCOMPARE(CountOf(*s->State.CurrentDatabase, u"Items"_s), items);
    }

    // The item menu

    void itemMenu_followsTheState_data()
    {
        QTest::addColumn<ItemStanding>("state");
        QTest::addColumn<QString>("enabled");
        QTest::addColumn<QString>("visible");
        const QString all = u"mnuAddCode mnuDeleteCode mnuImport mnuRename mnuBookMark mnuAddLink mnuNewSiblingItem"_s;
        using State = ItemStanding;
        const auto add = [](const char* name, const State& state, const QString& enabled, const QString& visible = {}) {
            QTest::newRow(name) << state << enabled << visible;
        };
        State state;
        add("item", state, all);
        state.Exported = true;
        add("item of an exported library", state,
            u"mnuAddCode mnuImport mnuRename mnuBookMark mnuAddLink mnuNewSiblingItem"_s);
        state = {};
        state.Root = true;
        add("root", state, u"mnuAddCode mnuImport"_s);
        state = {};
        state.Deleted = true;
        add("deleted", state, u"mnuDeleteCode mnuBookMark mnuAddLink"_s, u"mnuKeepItem mnuItemSeparator1"_s);
        state = {};
        state.Conflict = true;
        add("in conflict", state, u"mnuAddCode mnuImport mnuBookMark mnuAddLink mnuNewSiblingItem"_s,
            u"mnuResolveItem mnuItemSeparator1"_s);
        state = {};
        state.Orphan = true;
        add("orphan", state, u"mnuDeleteCode"_s);
        state.Exported = true;
        add("orphan of an exported library", state, u"mnuDeleteCode"_s);
        state.IsChild = true;
        add("orphan in a child", state, {});
        state = {};
        state.Orphan = state.OrphanUnderRoot = true;
        add("folder of orphans", state, u"mnuDeleteCode mnuNewSiblingItem"_s);
    }

    void itemMenu_followsTheState()
    {
        QFETCH(ItemStanding, state);
        QFETCH(QString, enabled);
        QFETCH(QString, visible);
        Commands commands;
        commands.SetStanding(state);
        QStringList isEnabled;
        for (const QString& name : {u"mnuAddCode"_s, u"mnuDeleteCode"_s, u"mnuImport"_s, u"mnuRename"_s,
                                    u"mnuBookMark"_s, u"mnuAddLink"_s, u"mnuNewSiblingItem"_s}) {
            if (commands.Get(name).Enabled)
                isEnabled << name;
        }
        QCOMPARE(isEnabled.join(u' '), enabled);
        QStringList isVisible;
        for (const QString& name : {u"mnuKeepItem"_s, u"mnuResolveItem"_s, u"mnuItemSeparator1"_s}) {
            if (commands.Get(name).Visible)
                isVisible << name;
        }
        QCOMPARE(isVisible.join(u' '), visible);
    }

    void itemMenu_isSetForTheSelectedNode()
    {
        Fill();
        s->Click(u"Ali äs Library"_s);
        s->Items.ItemMenuEdit();
        QVERIFY(!s->Enabled(u"mnuRename"_s));
        s->Click(u"a"_s);
        s->Items.ItemMenuEdit();
        QVERIFY(s->Enabled(u"mnuRename"_s));
        FillWithOrphans();
        s->Click(u"Orphaned Items"_s);
        s->Items.ItemMenuEdit();
        QVERIFY(s->Enabled(u"mnuNewSiblingItem"_s));
        QVERIFY(!s->Enabled(u"mnuAddCode"_s));
    }

    void colouringOnOpening_countsAsAChange()
    {
        Fill();
        s->State.moSettings->SetAutoColorizeWhenItemOpened(true);
        s->Click(u"a"_s);
        QCOMPARE(s->Details.Colorized, 1);
        QVERIFY(s->State.oCodeItem->ItemChanged());
        s->Click(u"Ali äs Library"_s);
        QCOMPARE(s->Details.Colorized, 1);
        QCOMPARE(s->Details.Saves, 1);
    }

    void orphan_isLockedHoweverItIsReached()
    {
        FillWithOrphans(true);
        s->Click(u"a"_s);
        s->Tree.GoToNode(s->Node(u"orphan"_s).Key());
        QVERIFY(s->Details.IsLocked);
        QVERIFY(!s->Enabled(u"DELETE"_s));
        s->Tree.MoveOnPreviousItem();
        s->Tree.MoveOnPreviousItem();
        QCOMPARE(s->Selected(), u"a"_s);
        QVERIFY(!s->Details.IsLocked);
        FillWithOrphans();
        s->Tree.GoToNode(s->Node(u"orphan"_s).Key());
        QVERIFY(s->State.oCodeItem->DontUpdateLastChangedDate());
    }

    void lockedItem_isNeitherEditedNorColoured()
    {
        FillWithOrphans(true);
        s->State.moSettings->SetAutoColorizeWhenItemOpened(true);
        s->Click(u"orphan"_s);
        QVERIFY(s->Details.IsLocked);
        QVERIFY(!s->Shell.EditingEnabled);
        QCOMPARE(s->Details.Colorized, 0);
        s->Click(u"a"_s);
        QVERIFY(!s->Details.IsLocked);
        QVERIFY(s->Shell.EditingEnabled);
    }

private:
    /// The info page stays at an item, and another one is current.
    void LockTo(ItemInfo& info, const QString& title)
    {
        s->Items.SetInfo(info);
        info.SetLibrary(s->State.CurrentDatabase.get());
        s->Click(title);
        info.InitialiseItem(s->State.oCodeItem.get());
        QVERIFY(info.ToggleLock());
        s->Click(u"b"_s);
        info.InitialiseItem(s->State.oCodeItem.get());
    }
    qint64 RatingOf(const QString& title)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT ItemRating FROM Items WHERE Title = ?"_s, {title})
            .ToLong();
    }

    /// a(a1 a2) b
    void Fill()
    {
        Library& database = s->OpenLibrary();
        const qint64 a = AddItem(database, 0, u"a"_s);
        AddItem(database, a, u"a1"_s);
        AddItem(database, a, u"a2"_s);
        AddItem(database, 0, u"b"_s);
        s->Tree.FillTree();
    }

    /// a Orphaned Items(orphan), in a mother or a child
    void FillWithOrphans(bool inChild = false)
    {
        s->Tree.ClearTreeView();
        s->State.oCodeItem.reset();
        s->State.CurrentDatabase.reset();
        QFile::remove(s->Home.Path(u"Bäume und Äste.qbd"_s));
        Library& database = s->OpenLibrary();
        AddItem(database, 0, u"a"_s);
        const qint64 folder = AddItem(database, 0, u"Orphaned Items"_s);
        AddItem(database, folder, u"orphan"_s);
        inChild ? MakeChild(database, s->Home.Path(u"mother.qbd"_s), Date()) : MakeMother(database, Date());
        s->Tree.FillTree();
    }

    /// gone, which waits for removal, and stays, in a mother
    void FillMother()
    {
        Library& database = s->OpenLibrary();
        const qint64 gone = AddItem(database, 0, u"gone"_s);
        AddItem(database, 0, u"stays"_s);
        MakeMother(database, Date());
        database.Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {gone});
        s->Tree.FillTree();
    }

    void RefuseWrites()
    {
        s->State.CurrentDatabase->Execute(
            u"CREATE TEMP TRIGGER refuse BEFORE UPDATE ON main.Items BEGIN SELECT RAISE(ABORT, 'no room'); END"_s);
    }

    void Delete()
    {
        s->Script.ExpectMsgBox(u"Delete Stored Item"_s, MsgBoxResult::Yes);
        s->Items.DeleteCodeItem();
    }

    Value Column(const QString& title, const QString& column)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE Title = ?"_s, {title});
    }
    QString Code(const QString& title) { return PlainTextFromRtf(Column(title, u"Code"_s).ToText()); }
    Date LastChanged(const QString& title) { return Column(title, u"LastChanged"_s).ToDate(); }
    qint64 ParentOf(qint64 id)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT ParentID FROM Items WHERE ID = ?"_s, {id}).ToLong();
    }

    std::unique_ptr<TestSession> s;
};

QB_TEST_MAIN(TestItemCommands)
#include "tst_item_commands.moc"
