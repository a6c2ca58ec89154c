#include "platform/richtext/Rtf.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/Paths.h"
#include "support/FakeViews.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "text/CodeSections.h"

#include <QDir>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The editor of an item's texts over boxes without a window: what counts as a change, what a save writes, when
/// a text is painted, and what survives the program.
class TestItemEditor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_clock = std::make_unique<FixedClock>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"Bäume und Äste.qbd"_s), LanguageType::VB);
        m_id = AddItem(*m_database, 0, u"item"_s);
        m_panel = std::make_unique<FakeDetailsView>();
        m_panel->FormatingInitialize(*m_database);
        m_panel->View = DetailsTab::Code;
    }
    void cleanup()
    {
        m_panel.reset();
        m_item.reset();
        m_database.reset();
        m_prompts.reset();
        m_clock.reset();
        m_home.reset();
    }

    // Changes

    void openedItem_isNotChanged()
    {
        Write(u"Code"_s, Rtf(u"dim x"_s));
        Write(u"Notes"_s, Rtf(u"noted"_s));
        Write(u"Example"_s, Rtf(u"used"_s));
        Open();
        QCOMPARE(Box(ItemText::Code).Text(), u"dim x"_s);
        QCOMPARE(Box(ItemText::Notes).Text(), u"noted"_s);
        QCOMPARE(Box(ItemText::Usage).Text(), u"used"_s);
        QVERIFY(!m_item->ItemChanged());
        QVERIFY(!Editor().Changed(ItemText::Code) && !Editor().Changed(ItemText::Notes)
                && !Editor().Changed(ItemText::Usage));
        Open(); // nor is one whose texts take the place of others
        QVERIFY(!m_item->ItemChanged());
    }

    void typedText_isAChangeOfItsTabOnly()
    {
        Open();
        QSignalSpy told(&Editor(), &ItemEditor::TextChanged);
        m_clock->AddSeconds(60);
        Box(ItemText::Notes).TypeText(u"n"_s);
        QVERIFY(m_item->ItemChanged());
        QCOMPARE(m_item->LastChanged(), m_clock->Now());
        QVERIFY(Editor().Changed(ItemText::Notes) && !Editor().Changed(ItemText::Code));
        QVERIFY(m_panel->Notes && !m_panel->Code);
        QCOMPARE(told.size(), 1);
        QCOMPARE(told[0][0].value<DetailsTab>(), DetailsTab::Notes);
        Box(ItemText::Notes).SetText({});
        QVERIFY(!m_panel->Notes); // the tab has lost its content
    }

    void textThatIsTooLarge_isShownByItsBeginAndNeverStored()
    {
        const QString large = u"{\\rtf1 begin\\par "_s + u"\\par "_s.repeated(1600000) + u"end}"_s;
        Write(u"Notes"_s, large);
        Write(u"Code"_s, Rtf(u"dim x"_s));
        Open();
        QVERIFY(Editor().IsTooLarge() && Editor().Locked());
        QVERIFY2(Box(ItemText::Notes).Text().startsWith(u"This text is too large"),
                 qPrintable(Box(ItemText::Notes).Text().left(80)));
        QVERIFY(Box(ItemText::Notes).Text().contains(u"begin"_s));
        QCOMPARE(Box(ItemText::Code).Text(), u"dim x"_s);
        for (const ItemText text : {ItemText::Code, ItemText::Notes, ItemText::Usage})
            QVERIFY(Box(text).Locked());
        m_panel->SetLocked(false); // by the tree, for an item that may be changed
        QVERIFY(Box(ItemText::Notes).Locked());
        Box(ItemText::Notes).SetText(u"typed all the same"_s);
        Editor().ColorizeItem();
        Editor().SetItemLanguage(u"Python"_s);
        QVERIFY(!m_item->ItemChanged());
        m_item->SetItemChanged(true); // by another command
        QVERIFY(Editor().SaveItem());
        QCOMPARE(m_database->QueryValue(u"SELECT Notes FROM Items WHERE ID = ?"_s, {m_id}).ToText(), large);
        Write(u"Notes"_s, Rtf(u"small"_s));
        Open();
        QVERIFY(!Editor().Locked() && !Box(ItemText::Notes).Locked());
        QCOMPARE(Box(ItemText::Notes).Text(), u"small"_s);
    }

    void itemShownAgain_keepsTheCaretOfTextsThatAreTheSame()
    {
        Write(u"Code"_s, Rtf(u"dim x"_s));
        Write(u"Example"_s, Rtf(u"used"_s));
        Open();
        Box(ItemText::Notes).TypeText(u"noted"_s);
        QVERIFY(Editor().SaveItem());
        for (const ItemText text : {ItemText::Code, ItemText::Notes, ItemText::Usage})
            Box(text).SetSelStart(2);
        Open();
        for (const ItemText text : {ItemText::Code, ItemText::Notes, ItemText::Usage})
            QCOMPARE(Box(text).SelStart(), 2);
        Write(u"Code"_s, Rtf(u"dim y"_s)); // by another program
        Open();
        QCOMPARE(Box(ItemText::Code).Text(), u"dim y"_s);
        QCOMPARE(Box(ItemText::Code).SelStart(), 0);
        QCOMPARE(Box(ItemText::Notes).SelStart(), 2);
    }

    void itemShownAgain_losesWhatIsNotStored()
    {
        Write(u"Code"_s, Rtf(u"dim x"_s));
        Open();
        Box(ItemText::Code).TypeText(u"typed "_s);
        Open();
        QCOMPARE(Box(ItemText::Code).Text(), u"dim x"_s);
        m_panel->SetLocked(true);
        Box(ItemText::Code).SetText(u"by code"_s); // which is no change
        Open();
        QCOMPARE(Box(ItemText::Code).Text(), u"dim x"_s);
    }

    void itemWithTheSameTexts_isAnotherItem()
    {
        Write(u"Code"_s, Rtf(u"dim x"_s));
        const qint64 first = m_id;
        Open();
        Box(ItemText::Code).SetSelStart(2);
        m_id = AddItem(*m_database, 0, u"other"_s);
        Write(u"Code"_s, Rtf(u"dim x"_s));
        Open();
        QCOMPARE(Box(ItemText::Code).SelStart(), 0);
        Box(ItemText::Code).SetSelStart(2);
        m_panel->TreeReplaced();
        Open(); // of the tree that is there now
        QCOMPARE(Box(ItemText::Code).SelStart(), 0);
        Box(ItemText::Code).SetSelStart(2);
        m_panel->Initialise(m_database.get(), nullptr);
        Open();
        QCOMPARE(Box(ItemText::Code).SelStart(), 0);
        m_id = first;
    }

    void lockedItem_isNotChanged()
    {
        Open();
        m_panel->SetLocked(true);
        Box(ItemText::Code).SetText(u"x"_s);
        QVERIFY(!m_item->ItemChanged() && !Editor().Changed(ItemText::Code));
        for (const ItemText text : {ItemText::Code, ItemText::Notes, ItemText::Usage})
            QVERIFY(Box(text).Locked());
    }

    void textsBehindTheirItem_changeNothing()
    {
        Open();
        m_panel->TreeReplaced();
        Box(ItemText::Code).SetText(u"x"_s);
        QVERIFY(!m_item->ItemChanged());
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(Read(u"Code"_s), QString());
    }

    void looksThatTheEditorChanges_areNoChange()
    {
        Write(u"Code"_s, Rtf(u"dim x"_s));
        Open();
        Editor().Unnoticed([this] { Box(ItemText::Code).SetText(u"other"_s); });
        QVERIFY(!m_item->ItemChanged());
        Editor().fnColorize(u"Code"_s, true);
        QVERIFY(!m_item->ItemChanged());
        Box(ItemText::Code).TypeText(u"x"_s); // the next one is the user's again
        QVERIFY(m_item->ItemChanged());
    }

    // Saving

    void save_storesCodePaintedAndNotesAsTheyAre()
    {
        Open();
        Box(ItemText::Code).TypeText(u"dim x "_s);
        Box(ItemText::Notes).TypeText(u"dim y "_s);
        Box(ItemText::Usage).TypeText(u"dim z "_s);
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"Dim x "_s);
        QCOMPARE(PlainTextFromRtf(Read(u"Example"_s)), u"Dim z "_s);
        QVERIFY(Read(u"Code"_s).contains(u"\\blue128"_s) && Read(u"Example"_s).contains(u"\\blue128"_s));
        QCOMPARE(Read(u"Notes"_s), Box(ItemText::Notes).TextRTF());
        QCOMPARE(Box(ItemText::Code).Text(), u"dim x "_s); // what is typed stays as it is
        QVERIFY(!Editor().Changed(ItemText::Code) && !m_item->ItemChanged());
    }

    void save_writesOnlyWhatWasChanged()
    {
        const QString code = u"{\\rtf1 as another program writes it}"_s;
        Write(u"Code"_s, code);
        Open();
        Box(ItemText::Notes).TypeText(u"n"_s);
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(Read(u"Code"_s), code);
    }

    void emptiedText_isStoredAsTheEmptyText()
    {
        Write(u"Notes"_s, Rtf(u"noted"_s));
        Write(u"Code"_s, Rtf(u"x"_s));
        Open();
        Box(ItemText::Notes).SetText({});
        Box(ItemText::Code).SetText({});
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(Read(u"Notes"_s), QString());
        QCOMPARE(Read(u"Code"_s), QString());
    }

    void save_hasItsOwnDateUnlessThatIsHeld_data()
    {
        QTest::addColumn<bool>("held");
        QTest::newRow("ordinary") << false;
        QTest::newRow("held") << true;
    }
    void save_hasItsOwnDateUnlessThatIsHeld()
    {
        QFETCH(bool, held);
        Open();
        const Date before = m_item->LastChanged();
        m_item->SetDontUpdateLastChangedDate(held);
        m_clock->AddSeconds(60);
        Box(ItemText::Code).TypeText(u"x"_s);
        m_clock->AddSeconds(60);
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(Date::FromSeconds(Read(u"LastChanged"_s).toLongLong()), held ? before : m_clock->Now());
    }

    void unchangedItem_isNotWritten()
    {
        Open();
        m_database->Execute(u"DELETE FROM Items"_s); // a write would fail
        QVERIFY(m_panel->SaveItem());
        QVERIFY(m_panel->SetItemChanged(false));
    }

    void saveThatFails_leavesTheTextsChanged()
    {
        Open();
        Box(ItemText::Code).TypeText(u"precious"_s);
        Editor().KeepUnsavedTexts();
        m_database->Execute(u"DELETE FROM Items"_s);
        m_prompts->ExpectError();
        QVERIFY(!m_panel->SaveItem());
        QVERIFY(Editor().Changed(ItemText::Code) && m_item->ItemChanged());
        QCOMPARE(UnsavedFiles().size(), 1);
        QCOMPARE(Box(ItemText::Code).Text(), u"precious"_s);
    }

    void whatAnotherProgramWrote_isShownAndNoChange()
    {
        Open();
        QString title;
        m_panel->TitleTaken = [&](const QString&, const QString& taken) { title = taken; };
        Box(ItemText::Code).TypeText(u"mine"_s);
        Write(u"Title"_s, u"theirs"_s);
        Write(u"Notes"_s, Rtf(u"their notes"_s));
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"mine"_s);
        QCOMPARE(Box(ItemText::Notes).Text(), u"their notes"_s);
        QVERIFY(m_panel->Notes);
        QCOMPARE(title, u"theirs"_s);
        QCOMPARE(m_panel->Title, u"theirs"_s);
        QVERIFY(!m_item->ItemChanged() && !Editor().Changed(ItemText::Notes));
    }

    // The question whether an item that waits for removal is kept

    void itemThatWaitsForRemoval_isKeptIfTheUserWants_data()
    {
        QTest::addColumn<bool>("child");
        QTest::addColumn<bool>("automatic");
        QTest::addColumn<bool>("yes");
        QTest::newRow("mother, yes") << false << false << true;
        QTest::newRow("mother, no") << false << false << false;
        QTest::newRow("child, yes") << true << false << true;
        QTest::newRow("child, no") << true << false << false;
        QTest::newRow("automatic, not asked") << false << true << true;
    }
    void itemThatWaitsForRemoval_isKeptIfTheUserWants()
    {
        QFETCH(bool, child);
        QFETCH(bool, automatic);
        QFETCH(bool, yes);
        child ? MakeChild(*m_database, u"mother.qbd"_s, Date()) : MakeMother(*m_database, Date());
        Write(u"LastChanged"_s, u"0"_s);
        Open();
        QStringList kept;
        m_panel->KeepingDeletedRecord = [&](const QString& id) { kept << id; };
        Box(ItemText::Code).TypeText(u"typed"_s);
        const QString caption = child ? u"Update this item and reset its 'Conflicting' status?"_s
                                      : u"Update this item and reset its 'Deleted' status?"_s;
        if (!automatic)
            m_prompts->ExpectMsgBox(caption, yes ? MsgBoxResult::Yes : MsgBoxResult::No);
        QVERIFY(m_panel->SetItemChanged(automatic));
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), yes ? u"typed"_s : QString());
        QCOMPARE(kept, yes ? QStringList{QString::number(m_id)} : QStringList());
        QCOMPARE(Editor().Changed(ItemText::Code), !yes); // an unsaved text is still one
        if (!automatic)
            QVERIFY(m_prompts->Messages[0].MustAnswer);
    }

    // Tabs

    void tabToShow_isTheOneThatIsShownOrTheFirstWithContent_data()
    {
        using enum DetailsTab;
        QTest::addColumn<QList<DetailsTab>>("has");
        QTest::addColumn<DetailsTab>("shown");
        QTest::addColumn<DetailsTab>("then");
        QTest::newRow("stays") << QList{Code, Usage} << Usage << Usage;
        QTest::newRow("first") << QList{Usage, Notes} << Code << Notes;
        QTest::newRow("files before links") << QList{Links, Files} << Code << Files;
        QTest::newRow("only a page") << QList{Links} << Code << Links;
        QTest::newRow("nothing") << QList<DetailsTab>() << Notes << Notes;
    }
    void tabToShow_isTheOneThatIsShownOrTheFirstWithContent()
    {
        QFETCH(QList<DetailsTab>, has);
        QFETCH(DetailsTab, shown);
        for (const DetailsTab tab : has)
            Editor().SetTabEnabled(tab, true);
        QTEST(Editor().TabToShow(shown), "then");
    }

    // Colouring

    void colorize_paintsTheShownTextUntilItIsChanged()
    {
        Write(u"Code"_s, Rtf(u"dim x "_s));
        Open();
        QVERIFY(Editor().CanColorize());
        Editor().ColorizeVisible();
        QCOMPARE(Box(ItemText::Code).Text(), u"Dim x "_s);
        QVERIFY(m_item->ItemChanged());
        QVERIFY(!Editor().CanColorize());
        const QString painted = Box(ItemText::Code).TextRTF();
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(Read(u"Code"_s), painted); // what is painted already is stored as it stands
        Box(ItemText::Code).SetText(u"dim y "_s);
        QVERIFY(Editor().CanColorize());
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"Dim y "_s);
    }

    void colorizeCommand_isOffWhereThereIsNothingToPaint_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<DetailsTab>("tab");
        QTest::addColumn<bool>("locked");
        QTest::addColumn<bool>("can");
        const QString plain = Rtf(u"dim x"_s);
        QTest::newRow("plain text") << plain << DetailsTab::Code << false << true;
        QTest::newRow("empty") << QString() << DetailsTab::Code << false << false;
        QTest::newRow("locked") << plain << DetailsTab::Code << true << false;
        QTest::newRow("notes") << plain << DetailsTab::Notes << false << false;
        QTest::newRow("the other text") << plain << DetailsTab::Usage << false << false;
        QTest::newRow("stored in colour")
            << u"{\\rtf1{\\colortbl ;\\red255\\green0\\blue0;}\\cf1 dim x}"_s << DetailsTab::Code << false << false;
    }
    void colorizeCommand_isOffWhereThereIsNothingToPaint()
    {
        QFETCH(QString, code);
        QFETCH(DetailsTab, tab);
        QFETCH(bool, locked);
        Write(u"Code"_s, code);
        Open();
        m_panel->View = tab;
        m_panel->SetLocked(locked);
        QTEST(Editor().CanColorize(), "can");
    }

    void openedItemThatIsColoured_isChangedByThat()
    {
        Write(u"Code"_s, Rtf(u"dim x "_s));
        Open();
        QSignalSpy told(&Editor(), &ItemEditor::ColorizeStateChanged);
        m_panel->ColorizeItem();
        QCOMPARE(Box(ItemText::Code).Text(), u"Dim x "_s);
        QVERIFY(m_item->ItemChanged());
        QCOMPARE(told.size(), 1);
        QVERIFY(!Editor().Changed(ItemText::Code)); // nothing was typed: a crash loses nothing
    }

    void textsThatRulesColour_areShownPlainAndStoredPainted()
    {
        RichText painted;
        painted.SetText(u"def f(): pass"_s);
        painted.Document().SetLanguage(u"Python"_s);
        painted.SetSelLength(8);
        painted.SetSelColor(0x0000ff);
        Write(u"Code"_s, painted.TextRTF());
        Open();
        QVERIFY(Box(ItemText::Code).ColoursByRules());
        QCOMPARE(Box(ItemText::Code).Document().FormatAt(0).Color, AutomaticColor);
        QVERIFY(!Editor().CanColorize());
        m_panel->ColorizeItem();
        QVERIFY(!m_item->ItemChanged()); // a look is no change
        Box(ItemText::Code).SetSelLength(5);
        Box(ItemText::Code).TypeText(u"def g"_s);
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(PlainTextFromRtf(Read(u"Code"_s)), u"def g(): pass"_s);
        QVERIFY(Read(u"Code"_s).contains(u"\\cf"_s));
    }

    void unknownTab_isSaid()
    {
        Open();
        m_prompts->ExpectMsgBox(u"Error"_s);
        QCOMPARE(Editor().fnColorize(u"Notes"_s, false), QString());
        QCOMPARE(m_prompts->Messages[0].Text, u"Unknown tab."_s);
        QCOMPARE(Editor().fnColorize(u"Code"_s, false), QString()); // of an empty text
    }

    // The item's language

    void chosenLanguage_isAChangeThatIsStored()
    {
        Write(u"Code"_s, Rtf(u"x"_s));
        Open();
        QSignalSpy told(&Editor(), &ItemEditor::ItemLanguageChanged);
        Editor().SetItemLanguage(u"Python"_s);
        QCOMPARE(told.size(), 1);
        QVERIFY(m_item->ItemChanged() && Box(ItemText::Code).ColoursByRules());
        QVERIFY(m_panel->SaveItem());
        QCOMPARE(LanguageInRtf(Read(u"Code"_s)), u"Python"_s);
        QCOMPARE(Read(u"Example"_s), QString()); // an empty text has none
        Open();
        QCOMPARE(Editor().ItemLanguage(), u"Python"_s);
        Editor().SetItemLanguage(u"Python"_s);
        QVERIFY(!m_item->ItemChanged());
        m_panel->SetLocked(true);
        Editor().SetItemLanguage({});
        QCOMPARE(Editor().ItemLanguage(), u"Python"_s);
    }

    // Texts that survive the program

    void typedTexts_areKeptUntilTheyAreSaved()
    {
        Open();
        Editor().KeepUnsavedTexts();
        QVERIFY(UnsavedFiles().isEmpty()); // nothing was typed
        Box(ItemText::Code).TypeText(u"typed"_s);
        QTRY_COMPARE(UnsavedFiles().size(), 1); // without being asked for
        QVERIFY(m_panel->SaveItem());
        QVERIFY(UnsavedFiles().isEmpty());
    }

    void textsOfACrash_comeBackIfTheUserWants_data()
    {
        QTest::addColumn<MsgBoxResult>("answer");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("files");
        QTest::newRow("yes") << MsgBoxResult::Yes << u"typed"_s << 1; // until they are saved
        QTest::newRow("no") << MsgBoxResult::No << QString() << 0;
        QTest::newRow("later") << MsgBoxResult::Cancel << QString() << 1;
    }
    void textsOfACrash_comeBackIfTheUserWants()
    {
        QFETCH(MsgBoxResult, answer);
        QFETCH(QString, shown);
        TypeAndDie();
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, answer);
        QList<qint64> gone;
        Offer(gone);
        QCOMPARE(gone, answer == MsgBoxResult::Yes ? QList<qint64>{m_id} : QList<qint64>());
        QCOMPARE(Box(ItemText::Code).Text(), shown);
        QCOMPARE(m_item->ItemChanged(), answer == MsgBoxResult::Yes);
        QTEST(int(UnsavedFiles().size()), "files");
        QVERIFY(m_prompts->Messages[0].Text.contains(u"'item'"_s));
        QVERIFY(!m_prompts->Messages[0].Text.contains(u"another program"_s));
    }

    void textsOfACrash_tellThatTheItemWasChangedSince()
    {
        TypeAndDie();
        Write(u"LastChanged"_s, u"77"_s);
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::No);
        QList<qint64> gone;
        Offer(gone);
        QVERIFY(m_prompts->Messages[0].Text.contains(u"another program"_s));
    }

    void textsOfAnItemThatIsLocked_areOfferedAgain()
    {
        TypeAndDie();
        m_panel->SetLocked(true);
        for (int i = 0; i < 2; ++i) {
            m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
            m_prompts->ExpectMsgBox(u"Unsaved Changes"_s);
            QList<qint64> gone;
            Offer(gone);
            QCOMPARE(UnsavedFiles().size(), 1);
        }
        QCOMPARE(Box(ItemText::Code).Text(), QString());
    }

    void textsOfAnItemThatIsGone_areKeptInAFile()
    {
        TypeAndDie();
        m_database->Execute(u"DELETE FROM Items"_s);
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s);
        QList<qint64> gone;
        Offer(gone);
        QVERIFY(gone.isEmpty());
        QCOMPARE(UnsavedFiles().size(), 1);
        QVERIFY(m_prompts->Messages[0].Text.contains(UnsavedFiles()[0]));
        Offer(gone); // not offered any more
    }

    void unsavedTexts_bringTheirSectionsAlong()
    {
        Open();
        CodeSections(Box(ItemText::Code), u"'"_s).Create(4, 0, true);
        Editor().KeepUnsavedTexts();
        Die();
        m_prompts->ExpectMsgBox(u"Unsaved Changes"_s, MsgBoxResult::Yes);
        QList<qint64> gone;
        Offer(gone);
        QCOMPARE(m_item->CodeHeaders(), quint8(4));
        QCOMPARE(m_item->UsageHeaders(), quint8(0));
    }

private:
    static QString Rtf(const QString& text) { return RtfFromPlainText(text, CodeFont); }
    QString Read(const QString& column)
    {
        return m_database->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE ID = ?"_s, {m_id}).ToText();
    }
    void Write(const QString& column, const QString& value)
    {
        m_database->Execute(u"UPDATE Items SET "_s + column + u" = ? WHERE ID = ?"_s, {value, m_id});
    }
    /// The item is shown as it is stored.
    void Open()
    {
        auto item = std::make_unique<CCodeItem>();
        item->Initialise(*m_database, QString::number(m_id));
        m_panel->Initialise(m_database.get(), item.get());
        m_item = std::move(item);
    }
    /// The program ends, and starts again.
    void Die()
    {
        m_panel->TreeReplaced();
        m_panel = std::make_unique<FakeDetailsView>();
        m_panel->FormatingInitialize(*m_database);
        m_item = std::make_unique<CCodeItem>();
        m_item->Initialise(*m_database, QString::number(m_id));
    }
    void TypeAndDie()
    {
        Open();
        Box(ItemText::Code).TypeText(u"typed"_s);
        Editor().KeepUnsavedTexts();
        Die();
    }
    void Offer(QList<qint64>& gone)
    {
        OfferUnsavedTexts(
            *m_database,
            [&](qint64 item) {
                gone << item;
                Open();
            },
            [this](const UnsavedTexts& unsaved) { return Editor().ShowUnsaved(unsaved); });
    }
    static QStringList UnsavedFiles() { return QDir(ApplicationFolder()).entryList({u"Unsaved-*"_s}); }
    WindowlessBox& Box(ItemText text) { return m_panel->Boxes[size_t(text)]; }
    ItemEditor& Editor() { return m_panel->Editor; }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_clock;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    qint64 m_id = 0;
    std::unique_ptr<FakeDetailsView> m_panel;
    std::unique_ptr<CCodeItem> m_item;
};

QB_TEST_MAIN(TestItemEditor)
#include "tst_item_editor.moc"
