#include "conflicts/ConflictedLibrary.h"
#include "maintenance/LibraryCheck.h"
#include "removed/RemovedIndex.h"
#include "removed/RemovedReturn.h"
#include "store/PageChanges.h"
#include "store/PendingRemoved.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Two versions of an item, what differs between them, and the decision.
class TestConflictRecords : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    QStringList m_discarded;

    /// The two versions as one decides about them.
    std::unique_ptr<CConflict> Load(qint64 item)
    {
        auto conflict = std::make_unique<CConflict>();
        conflict->Initialize(*m->Db, item);
        conflict->SetDiscardInto(RecordedDiscard::Into(m_discarded));
        return conflict;
    }
    static QStringList EventsOf(CConflict& conflict)
    {
        QStringList events;
        const auto note = [&](auto signal, const QString& name) {
            QObject::connect(&conflict, signal, &conflict, [&events, name] { events << name; });
        };
        note(&CConflict::FilesConflict, u"Files"_s);
        note(&CConflict::HTMLConflict, u"HTML"_s);
        note(&CConflict::UsageConflict, u"Usage"_s);
        note(&CConflict::NotesConflict, u"Notes"_s);
        note(&CConflict::CodeConflict, u"Code"_s);
        note(&CConflict::InfoConflict, u"Info"_s);
        note(&CConflict::DescriptionConflict, u"Description"_s);
        note(&CConflict::TitleConflict, u"Title"_s);
        conflict.CompareItems();
        conflict.disconnect();
        return events;
    }
    static VersionTexts Other()
    {
        return {.Title = u"other"_s,
                .Description = u"other description"_s,
                .Info = u"other info"_s,
                .Code = u"{\\rtf1 int b;}"_s,
                .Notes = u"{\\rtf1 other notes}"_s,
                .Usage = u"{\\rtf1 other use}"_s};
    }
    QStringList TitlesOfFiles(qint64 item)
    {
        return Texts(*m->Db, u"SELECT Title FROM Files WHERE CodeID = ? ORDER BY Title"_s, {item});
    }
    void VerifySound()
    {
        QCOMPARE(StoredNames(m->Db->FilesFolder()).filter(u"adding"_s), QStringList());
        QVERIFY(CheckLibrary(*m->Db).empty());
    }

    /// A conflict of two pages, the own one of 10; those of the other version are to be added. Its ID.
    qint64 AddPages(qint64 othersMoment)
    {
        VersionTexts own;
        own.HasPage = true;
        own.PageUpdated = m->At(10);
        VersionTexts other = Other();
        other.HasPage = true;
        other.PageUpdated = m->At(othersMoment);
        const qint64 id = m->AddConflict(own, other);
        m->AddPage(id, "<p>own");
        return id;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m = std::make_unique<ConflictedLibrary>();
        m_discarded.clear();
    }
    void cleanup() { m.reset(); }

    void properties_areThoseOfBothVersions()
    {
        VersionTexts own;
        own.PageUpdated = m->At(10);
        VersionTexts other = Other();
        other.PageUpdated = m->At(20);
        const qint64 id = m->AddConflict(own, other);
        const auto conflict = Load(id);
        QCOMPARE(conflict->Key(), QString::number(id));
        QCOMPARE(conflict->Title(), u"item Ü"_s);
        QCOMPARE(conflict->TempTitle(), u"other"_s);
        QCOMPARE(conflict->Usage(), u"{\\rtf1 use}"_s);
        QCOMPARE(conflict->TempUsage(), u"{\\rtf1 other use}"_s);
        QCOMPARE(conflict->LastChanged(), m->At(1000));
        QCOMPARE(conflict->TempLastChanged(), m->At(2000));
        QCOMPARE(conflict->HTMLLastUpdated(), m->At(10));
        QCOMPARE(conflict->TempHTMLLastUpdated(), m->At(20));
        QVERIFY(conflict->TempItemIsFromReplica());
        m->Db->Execute(u"UPDATE TempItems SET ReplicaOrigin = 0"_s);
        QVERIFY(!Load(id)->TempItemIsFromReplica());
        conflict->SetTempCode(u"x"_s);
        QCOMPARE(conflict->TempItem().Code(), u"x"_s);
        QCOMPARE(conflict->Item().TemporaryTable(), false);
        QCOMPARE(conflict->TempItem().TemporaryTable(), true);
    }

    void commit_writesBothVersions()
    {
        const qint64 id = m->AddConflict({}, Other());
        const auto conflict = Load(id);
        conflict->SetInfo(u"mine"_s);
        conflict->Item().SetItemChanged(true);
        conflict->SetTempInfo(u"theirs"_s);
        QVERIFY(conflict->Commit()); // the other one is not marked as changed
        QCOMPARE(m->Text(u"Info"_s, id), u"mine"_s);
        QCOMPARE(m->Text(u"Info"_s, id, u"TempItems"_s), u"other info"_s);
        conflict->TempItem().SetItemChanged(true);
        QVERIFY(conflict->Commit());
        QCOMPARE(m->Text(u"Info"_s, id, u"TempItems"_s), u"theirs"_s);
    }

    void misuse_isReported()
    {
        CConflictCodeItem item;
        m->Prompts.ExpectError();
        item.Initialise(*m->Db, {});
        QCOMPARE(m->Prompts.Errors.last(), u"Missing required parameter."_s);
        CConflictFileObjects files;
        m->Prompts.ExpectMsgBox(u"CConflictFileObjects"_s);
        files.AddAll(1);
        QCOMPARE(m->Prompts.Messages.last().Text, u"No database connected."_s);
        const auto conflict = Load(m->AddConflict({}, Other()));
        conflict->TempItem().Delete();
        try {
            conflict->SetTempTitle(u"x"_s);
            QFAIL("a version that goes is not to be changed");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), ErrorNumber::RecordAboutToBeDeleted);
            QCOMPARE(error.Source(), u"CCodeItem::SetStateForLet"_s);
        }
        QB_VERIFY_RAISES(Load(999), ErrorNumber::RecordDeleted);
    }

    void differences_raiseTheirEventsInOrder_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("event");
        QTest::newRow("title") << u"Title"_s << u"Title"_s;
        QTest::newRow("description") << u"Description"_s << u"Description"_s;
        QTest::newRow("info") << u"Info"_s << u"Info"_s;
        QTest::newRow("code") << u"Code"_s << u"Code"_s;
        QTest::newRow("notes") << u"Notes"_s << u"Notes"_s;
        QTest::newRow("usage") << u"Example"_s << u"Usage"_s;
    }
    void differences_raiseTheirEventsInOrder()
    {
        QFETCH(QString, column);
        QFETCH(QString, event);
        const qint64 id = m->AddConflict({}, {});
        QCOMPARE(EventsOf(*Load(id)), QStringList());
        m->Db->Execute(u"UPDATE TempItems SET %1 = '{\\rtf1 \\b else}'"_s.arg(column));
        QCOMPARE(EventsOf(*Load(id)), QStringList{event});
        m->Db->Execute(u"UPDATE TempItems SET Title = 'x', Description = 'x', Info = 'x', Code = 'x', Notes = 'x', "
                       "Example = 'x', HTMLLastUpdated = 5"_s);
        m->AddFile(id, u"f"_s, "f", m->At(5));
        QCOMPARE(EventsOf(*Load(id)), (QStringList{u"Title"_s, u"Description"_s, u"Info"_s, u"Code"_s, u"Notes"_s,
                                                   u"Usage"_s, u"HTML"_s, u"Files"_s}));
    }

    void differencesOfLooks_raiseTheEvent()
    {
        const qint64 id = m->AddConflict({}, {});
        m->Db->Execute(u"UPDATE TempItems SET Code = '{\\rtf1  int a;}'"_s);
        QCOMPARE(EventsOf(*Load(id)), QStringList{u"Code"_s});
        m->Db->Execute(u"UPDATE TempItems SET Code = '{\\rtf1 int A;}'"_s); // the case counts too
        QCOMPARE(EventsOf(*Load(id)), QStringList{u"Code"_s});
    }

    void files_arePairedByTitleAndDate()
    {
        const qint64 id = m->AddConflict({}, {});
        const qint64 same = m->AddFile(id, u"same.txt"_s, "s", m->At(5), u"d"_s);
        const qint64 sameTemp = m->AddTempFile(id, u"same.txt"_s, QByteArray("s"), m->At(5), u"d"_s);
        QCOMPARE(EventsOf(*Load(id)), QStringList());
        m->Db->Execute(u"UPDATE TempFiles SET Description = 'other'"_s);
        auto conflict = Load(id);
        QCOMPARE(EventsOf(*conflict), QStringList{u"Files"_s});
        CConflictFileObject* file = conflict->Item().FileObjects().Item(same);
        QVERIFY(file->HasCorrespondingID());
        QCOMPARE(file->CorrespondingID(), sameTemp);
        QCOMPARE(file->AppearsIn(), FileAppearance::InBothDescribed);
        QCOMPARE(conflict->TempItem().FileObjects().Item(QString::number(sameTemp) + u'C')->CorrespondingID(), same);
        file->SetMoveToTheSecondSet(true);
        QVERIFY(!file->MoveToTheSecondSet()); // both have it
        m->Db->Execute(u"UPDATE TempFiles SET Description = 'd', DateAdded = DateAdded + 1"_s);
        conflict = Load(id);
        QCOMPARE(EventsOf(*conflict), QStringList{u"Files"_s}); // as many, but not the same
        QCOMPARE(conflict->Item().FileObjects().Item(same)->AppearsIn(), FileAppearance::InItem);
        QCOMPARE(conflict->TempItem().FileObjects().Item(sameTemp)->AppearsIn(), FileAppearance::InTempItem);
    }

    void filesOfOneTitleAndDate_arePairedWithTheFirst()
    {
        const qint64 id = m->AddConflict({}, {});
        const qint64 file = m->AddFile(id, u"twin"_s, "1", m->At(5));
        const qint64 first = m->AddTempFile(id, u"twin"_s, QByteArray("1"), m->At(5));
        const qint64 second = m->AddTempFile(id, u"twin"_s, QByteArray("2"), m->At(5));
        const auto conflict = Load(id);
        QCOMPARE(conflict->Item().FileObjects().Item(file)->CorrespondingID(), first);
        QCOMPARE(conflict->TempItem().FileObjects().Item(second)->CorrespondingID(), 0); // and is not lost
        const qint64 another = m->AddFile(id, u"TWIN"_s, "2", m->At(5)); // titles are the same in any case
        const auto again = Load(id);
        QCOMPARE(again->Item().FileObjects().Item(file)->CorrespondingID(), first);
        QCOMPARE(again->Item().FileObjects().Item(another)->CorrespondingID(), second);
        QCOMPARE(EventsOf(*again), QStringList());
    }

    void filesOfTheOtherAlone_areAConflict()
    {
        const qint64 id = m->AddConflict({}, {});
        const qint64 file = m->AddTempFile(id, u"f"_s, QByteArray("f"), m->At(5));
        const auto conflict = Load(id);
        QCOMPARE(EventsOf(*conflict), QStringList{u"Files"_s});
        CConflictFileObject* object = conflict->TempItem().FileObjects().Item(file);
        object->SetDescription(u"edited"_s);
        QVERIFY(object->Commit());
        QCOMPARE(m->Text(u"Description"_s, file, u"TempFiles"_s), u"edited"_s);
        QCOMPARE(m->Db->QueryValue(u"SELECT LastUpdated FROM TempFiles"_s).ToDate(), m->Db->NextStamp());
    }

    void newerVersion_isThatChangedLater()
    {
        const qint64 id = m->AddConflict({}, Other());
        QCOMPARE(Load(id)->NewerSide(), ConflictSide::TempItem);
        QCOMPARE(Load(id)->SideOf(2), ConflictSide::Item);
        m->Db->Execute(u"UPDATE TempItems SET LastChanged = ?"_s, {m->At(1000)}); // equal
        QCOMPARE(Load(id)->NewerSide(), ConflictSide::Item);
        m->Db->Execute(u"UPDATE TempItems SET LastChanged = ?"_s, {m->At(999)});
        QCOMPARE(Load(id)->NewerSide(), ConflictSide::Item);
        QCOMPARE(Load(id)->SideOf(2), ConflictSide::TempItem);
    }

    void keepingTheNewer_takesTheOtherVersionOver()
    {
        const qint64 id = m->AddConflict({}, Other());
        m->Db->Execute(u"UPDATE TempItems SET CodeHeaders = 3, UsageHeaders = 5"_s);
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(m->Text(u"Title"_s, id), u"other"_s);
        QCOMPARE(m->Text(u"Description"_s, id), u"other description"_s);
        QCOMPARE(m->Text(u"Info"_s, id), u"other info"_s);
        QCOMPARE(m->Text(u"Code"_s, id), u"{\\rtf1 int b;}"_s);
        QCOMPARE(m->Text(u"Notes"_s, id), u"{\\rtf1 other notes}"_s);
        QCOMPARE(m->Text(u"Example"_s, id), u"{\\rtf1 other use}"_s);
        QCOMPARE(m->Text(u"CodeHeaders"_s, id), u"3"_s); // the sections of the text that was taken
        QCOMPARE(m->Text(u"UsageHeaders"_s, id), u"5"_s);
        QCOMPARE(m->DateOf(u"LastChanged"_s, id), m->Db->NextStamp()); // so that it travels
        QCOMPARE(m->TemporaryRows(), 0);
        QCOMPARE(m_discarded, (QStringList{u"own: item Ü"_s, u"noted"_s, u"placed"_s}));
        VerifySound();
    }

    void keepingTheOlder_leavesTheOwnVersion()
    {
        const qint64 id = m->AddConflict({}, Other());
        m->AddTempFile(id, u"f"_s, QByteArray("f"), m->At(5));
        m->AddTempPage(id, u"1.htm"_s, {}, "page");
        QVERIFY(Load(id)->KeepItem(2));
        QCOMPARE(m->Text(u"Title"_s, id), u"item Ü"_s);
        QCOMPARE(m->Text(u"Code"_s, id), u"{\\rtf1 int a;}"_s);
        QCOMPARE(m->DateOf(u"LastChanged"_s, id), m->Db->NextStamp());
        QCOMPARE(m->TemporaryRows(), 0); // those of files and pages too
        QCOMPARE(m_discarded, (QStringList{u"temporary: other"_s, u"noted"_s, u"placed"_s}));
    }

    void equalDates_countTheOwnVersionAsTheNewer()
    {
        VersionTexts other = Other();
        other.Changed = m->At(1000);
        const qint64 id = m->AddConflict({}, other);
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(m->Text(u"Title"_s, id), u"item Ü"_s);
        const qint64 second = m->AddConflict({}, other);
        QVERIFY(Load(second)->KeepItem(2));
        QCOMPARE(m->Text(u"Title"_s, second), u"other"_s);
    }

    void editedVersions_areWhatIsKept()
    {
        const qint64 id = m->AddConflict({}, Other());
        const auto conflict = Load(id);
        conflict->SetTempCode(u"{\\rtf1 both}"_s);
        QVERIFY(conflict->KeepItem(1));
        QCOMPARE(m->Text(u"Code"_s, id), u"{\\rtf1 both}"_s);
        const qint64 second = m->AddConflict({}, Other());
        const auto other = Load(second);
        other->SetCode(u"{\\rtf1 own both}"_s);
        QVERIFY(other->KeepItem(2));
        QCOMPARE(m->Text(u"Code"_s, second), u"{\\rtf1 own both}"_s);
    }

    void files_goWithTheirVersionUnlessMarked_data()
    {
        QTest::addColumn<int>("which");
        QTest::addColumn<bool>("marks");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("other version") << 1 << false << QStringList{u"both"_s, u"theirs ö.bin"_s};
        QTest::newRow("other version, marked") << 1 << true << QStringList{u"both"_s, u"mine"_s};
        QTest::newRow("own version") << 2 << false << QStringList{u"both"_s, u"mine"_s};
        QTest::newRow("own version, marked") << 2 << true << QStringList{u"both"_s, u"theirs ö.bin"_s};
    }
    void files_goWithTheirVersionUnlessMarked()
    {
        QFETCH(int, which);
        QFETCH(bool, marks);
        const QByteArray large(40000, 'x');
        const qint64 id = m->AddConflict({}, Other());
        const qint64 both = m->AddFile(id, u"both"_s, "shared", m->At(-10), u"own words"_s);
        m->AddTempFile(id, u"both"_s, QByteArray("shared"), m->At(-10), u"their words"_s);
        const qint64 mine = m->AddFile(id, u"mine"_s, "mine", m->At(-20));
        m->AddTempFile(id, u"theirs ö.bin"_s, large, m->At(20), u"described"_s);
        const auto conflict = Load(id);
        for (CConflictCodeItem* side : {&conflict->Item(), &conflict->TempItem()}) {
            for (const auto& file : side->FileObjects())
                file->SetMoveToTheSecondSet(marks);
        }
        m->Clock.AddSeconds(7);
        QVERIFY(conflict->KeepItem(which));
        QTEST(TitlesOfFiles(id), "left");
        QCOMPARE(m->Text(u"Description"_s, both, u"Files"_s), which == 1 ? u"their words"_s : u"own words"_s);
        const qint64 added = m->Db->QueryValue(u"SELECT ID FROM Files WHERE Title LIKE 'theirs%'"_s).ToLong();
        if (added > 0) {
            QCOMPARE(m->StoredBytes(added), large);
            QCOMPARE(m->Text(u"Description"_s, added, u"Files"_s), u"described"_s);
            QCOMPARE(m->Text(u"FileSize"_s, added, u"Files"_s), u"40000"_s);
            const auto dateOf = [&](const QString& column) {
                return m->Db->QueryValue(u"SELECT %1 FROM Files WHERE ID = ?"_s.arg(column), {added}).ToDate();
            };
            QCOMPARE(dateOf(u"DateAdded"_s), m->Db->NextStamp()); // so that it travels
            QCOMPARE(dateOf(u"OrigDateTime"_s), m->At(-5000));
            QCOMPARE(StoredNames(m->Db->FilesFolder()).size(), 2);
            QCOMPARE(Texts(*m->Db, u"SELECT ItemID FROM DeletedFiles"_s), QStringList{QString::number(mine)});
        }
        QCOMPARE(m->TemporaryRows(), 0);
        VerifySound();
    }

    void contentsThatAreMissing_areNamedAndNotTaken()
    {
        const qint64 id = m->AddConflict({}, Other());
        m->AddTempFile(id, u"lost"_s, {}, m->At(20));
        m->AddTempFile(id, u"empty"_s, QByteArray(""), m->At(20));
        m->Prompts.ExpectMsgBox(u"Error"_s);
        QVERIFY(Load(id)->KeepItem(1));
        QVERIFY(m->Prompts.Messages.last().Text.contains(u"'lost'"_s));
        QVERIFY(m_discarded.contains(u"temporary: other"_s)); // with what it says of that file
        QCOMPARE(TitlesOfFiles(id), QStringList{u"empty"_s}); // a file of no bytes is a file
    }

    void page_ofTheOtherVersionReplacesTheOwn()
    {
        const qint64 id = AddPages(20);
        m->AddTempPage(id, u"77.htm"_s, {}, "<img src=\"77/bild ü.png\"><img src='77\\sub\\x.png'><p>77/ in words");
        m->AddTempPage(id, u"bild ü.png"_s, {}, "picture");
        m->AddTempPage(id, u"x.png"_s, u"sub\\"_s, QByteArray(50000, 'p'));
        QVERIFY(Load(id)->KeepItem(1));
        const QString folder = m->Db->HTMLFolder() + QString::number(id);
        QCOMPARE(ReadFile(folder + u".htm"_s),
                 QByteArray("<img src=\"@/bild ü.png\"><img src='@\\sub\\x.png'><p>77/ in words")
                     .replace("@", QByteArray::number(id)));
        QCOMPARE(ReadFile(folder + u"/bild ü.png"_s), QByteArray("picture"));
        QCOMPARE(ReadFile(folder + u"/sub/x.png"_s), QByteArray(50000, 'p'));
        QVERIFY(!QFile::exists(folder + u"/own.png"_s));
        QCOMPARE(m->DateOf(u"HTMLLastUpdated"_s, id), m->Db->NextStamp());
        QCOMPARE(m->TemporaryRows(), 0);
    }

    void longNamesOfAPagesFiles_areThoseThatCount()
    {
        const qint64 id = AddPages(20);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        m->AddTempPage(id, u"cut.png"_s, u"cut\\"_s, "picture");
        m->Db->AppendField(u"TempHTMLFiles"_s, {.Name = u"LongName"_s, .Type = FieldType::Memo, .OrdinalPosition = 5});
        m->Db->Execute(u"UPDATE TempHTMLFiles SET LongName = 'long folder\\long name.png' WHERE Name = 'cut.png'"_s);
        m->Reopen();
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(id) + u"/long folder/long name.png"_s), "picture");
    }

    void ownPage_isDatedToTravelWhenItIsKept()
    {
        const qint64 id = AddPages(20);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        QVERIFY(Load(id)->KeepItem(2));
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(id) + u".htm"_s), QByteArray("<p>own"));
        QCOMPARE(m->DateOf(u"HTMLLastUpdated"_s, id), m->Db->NextStamp());
        QCOMPARE(m->TemporaryRows(), 0);
    }

    void equalDatesOfPages_leaveThePageAlone()
    {
        const qint64 id = AddPages(10);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(id) + u".htm"_s), QByteArray("<p>own"));
        QCOMPARE(m->DateOf(u"HTMLLastUpdated"_s, id), m->At(10));
    }

    void versionWithoutPage_leavesTheFilesOfThePage()
    {
        VersionTexts own;
        own.HasPage = true;
        own.PageUpdated = m->At(10);
        const qint64 id = m->AddConflict(own, Other());
        m->AddPage(id, "<p>own");
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(m->Text(u"HTMLPage"_s, id), u"0"_s);
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(id) + u".htm"_s), QByteArray("<p>own"));
        QCOMPARE(m->DateOf(u"HTMLLastUpdated"_s, id), m->Db->NextStamp()); // so that it travels
    }

    void missingPageOfAnItemWithoutOne_leavesItWithoutOne()
    {
        VersionTexts other = Other();
        other.HasPage = true;
        other.PageUpdated = m->At(20);
        const qint64 id = m->AddConflict({}, other);
        m->Prompts.ExpectMsgBox(u"Error"_s);
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(m->Text(u"Title"_s, id), u"other"_s);
        QCOMPARE(m->Text(u"HTMLPage"_s, id), u"0"_s);
    }

    void missingPage_isSaidAndTheOwnOneStays()
    {
        const qint64 id = AddPages(20);
        m->Prompts.ExpectMsgBox(u"Error"_s);
        QVERIFY(Load(id)->KeepItem(1));
        QCOMPARE(m->Prompts.Messages.last().Text, u"Required HTML files missing. (CConflict; KeepItem)"_s);
        QCOMPARE(m->Prompts.Messages.last().Icon, MsgBoxIcon::Critical);
        QCOMPARE(m->Text(u"Title"_s, id), u"other"_s); // and goes on
        QCOMPARE(m->Text(u"HTMLPage"_s, id), u"-1"_s);
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(id) + u".htm"_s), QByteArray("<p>own"));
    }

    void hostileNameOfAPagesFile_isRefused()
    {
        VersionTexts other = Other();
        other.HasPage = true;
        other.PageUpdated = m->At(20);
        const qint64 id = m->AddConflict({}, other);
        m->AddTempPage(id, u"77.htm"_s, {}, "page");
        m->AddTempPage(id, u"evil"_s, u"..\\..\\"_s, "evil");
        const auto before = StateOf(m->Path);
        m->Prompts.ExpectError();
        QVERIFY(!Load(id)->KeepItem(1));
        QCOMPARE(DifferenceOf(StateOf(m->Path), before), QString());
        QVERIFY(!QFile::exists(m->Home.Path(u"Mütter/evil"_s)));
    }

    void pageOfTheOtherSide_canBeChosenAlone()
    {
        const qint64 id = AddPages(20);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        const auto conflict = Load(id);
        conflict->SetPageSide(ConflictSide::TempItem);
        QVERIFY(conflict->KeepItem(2));
        QCOMPARE(m->Text(u"Title"_s, id), u"item Ü"_s);
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(id) + u".htm"_s), QByteArray("<p>theirs"));
        const qint64 second = AddPages(20);
        m->AddTempPage(second, u"77.htm"_s, {}, "<p>theirs");
        const auto next = Load(second);
        next->SetPageSide(ConflictSide::Item);
        QVERIFY(next->KeepItem(1));
        QCOMPARE(m->Text(u"Title"_s, second), u"other"_s);
        QCOMPARE(ReadFile(m->Db->HTMLFolder() + QString::number(second) + u".htm"_s), QByteArray("<p>own"));
    }

    void failureInTheMiddle_leavesAllAsItWas()
    {
        const qint64 id = AddPages(20);
        m->AddFile(id, u"mine"_s, "mine", m->At(-20));
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        m->AddTempFile(id, u"theirs"_s, QByteArray("t"), m->At(20));
        m->Db->Execute(u"CREATE TEMP TRIGGER refuse BEFORE DELETE ON main.TempItems "
                       "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
        const auto before = StateOf(m->Path);
        m->Prompts.ExpectError();
        m->Prompts.ExpectError();
        QVERIFY(!Load(id)->KeepItem(1));
        QCOMPARE(DifferenceOf(StateOf(m->Path), before), QString());
        m->Db->Execute(u"DROP TRIGGER refuse"_s);
        QVERIFY(Load(id)->KeepItem(1)); // it is offered again
        QCOMPARE(TitlesOfFiles(id), QStringList{u"theirs"_s});
    }

    void changeMeanwhile_isRefused_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("own text") << u"UPDATE Items SET Info = 'x' WHERE ID = ?"_s;
        QTest::newRow("own code") << u"UPDATE Items SET Code = 'x' WHERE ID = ?"_s;
        QTest::newRow("other text") << u"UPDATE TempItems SET Notes = 'x' WHERE ID = ?"_s;
        QTest::newRow("own file") << u"UPDATE Files SET Description = 'x' WHERE CodeID = ?"_s;
        QTest::newRow("file gone") << u"DELETE FROM TempFiles WHERE CodeID = ?"_s;
        QTest::newRow("conflict gone") << u"DELETE FROM TempItems WHERE ID = ?"_s;
        QTest::newRow("item gone") << u"DELETE FROM Items WHERE ID = ?"_s;
    }
    void changeMeanwhile_isRefused()
    {
        QFETCH(QString, statement);
        const qint64 id = m->AddConflict({}, Other());
        m->AddFile(id, u"mine"_s, "mine", m->At(-20));
        m->AddTempFile(id, u"theirs"_s, QByteArray("t"), m->At(20));
        const auto conflict = Load(id);
        m->Db->Execute(statement, {id});
        const auto before = StateOf(m->Path);
        m->Prompts.ExpectError();
        QVERIFY(!conflict->KeepItem(1));
        QCOMPARE(DifferenceOf(StateOf(m->Path), before), QString());
        QCOMPARE(m_discarded, QStringList());
    }

    void losingVersion_isKeptBesideTheLibrary()
    {
        const qint64 id = m->AddConflict({}, Other());
        m->AddTempFile(id, u"theirs"_s, QByteArray("bytes"), m->At(20));
        CConflict conflict;
        conflict.Initialize(*m->Db, id);
        QVERIFY(conflict.KeepItem(2));
        const QDir removed(RemovedFolderOf(m->Path));
        const QStringList lists = removed.entryList({u"*.json"_s});
        QCOMPARE(lists.size(), 1);
        const RemovedIndex index = ReadRemovedIndex(removed.filePath(lists.first()));
        QCOMPARE(index.Header.Kind, RemovalKind::ConflictDecided);
        QCOMPARE(index.Entries.size(), size_t(1));
        QCOMPARE(index.Entries[0].Title, u"other"_s);
        QCOMPARE(index.Entries[0].Item, id);
        QCOMPARE(index.Entries[0].Files.size(), size_t(1));
        QVERIFY(!index.Entries[0].Files[0].IsMissing);
    }

    /// What a user made of the version that wins is not to cost what it was.
    void winnerThatDoesNotStayWhole_isKeptToo_data()
    {
        using Change = std::function<void(CConflict&)>;
        QTest::addColumn<int>("which");
        QTest::addColumn<Change>("change");
        QTest::addColumn<bool>("stays");
        const auto add = [](const char* name, bool ownStays, bool otherStays, const Change& change) {
            QTest::addRow("own version, %s", name) << 2 << change << ownStays;
            QTest::addRow("other version, %s", name) << 1 << change << otherStays;
        };
        const auto fileOf = [](CConflictCodeItem& item, bool inBoth) -> CConflictFileObject& {
            return **std::find_if(item.FileObjects().begin(), item.FileObjects().end(),
                                  [inBoth](const auto& file) { return file->HasCorrespondingID() == inBoth; });
        };
        add("as it is", true, true, [](CConflict&) {});
        add("own text edited", false, true, [](CConflict& conflict) { conflict.SetCode(u"{\\rtf1 mix}"_s); });
        add("other text edited", true, false, [](CConflict& conflict) { conflict.SetTempInfo(u"mix"_s); });
        add("own title edited", false, true, [](CConflict& conflict) { conflict.SetTitle(u"mix"_s); });
        add("status of the other", false, true, [](CConflict& conflict) {
            conflict.Item().SetItemStatus(4);
            conflict.TempItem().SetItemStatus(4);
            conflict.TempItem().SetItemChanged(true);
            conflict.TempItem().Commit();
        });
        add("rating of the other", false, true, [](CConflict& conflict) {
            conflict.Item().SetItemRating(7);
            conflict.TempItem().SetItemRating(7);
            conflict.TempItem().SetItemChanged(true);
            conflict.TempItem().Commit();
        });
        add("own page", true, false, [](CConflict& conflict) { conflict.SetPageSide(ConflictSide::Item); });
        add("other page", false, true, [](CConflict& conflict) { conflict.SetPageSide(ConflictSide::TempItem); });
        add("own file marked", false, true,
            [=](CConflict& conflict) { fileOf(conflict.Item(), false).SetMoveToTheSecondSet(true); });
        add("other file marked", true, false,
            [=](CConflict& conflict) { fileOf(conflict.TempItem(), false).SetMoveToTheSecondSet(true); });
        add("own file described", false, true,
            [=](CConflict& conflict) { fileOf(conflict.Item(), true).SetDescription(u"mix"_s); });
        add("other file described", true, false,
            [=](CConflict& conflict) { fileOf(conflict.TempItem(), true).SetDescription(u"mix"_s); });
    }
    void winnerThatDoesNotStayWhole_isKeptToo()
    {
        QFETCH(int, which);
        QFETCH(std::function<void(CConflict&)>, change);
        QFETCH(bool, stays);
        const qint64 id = AddPages(20);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        m->AddFile(id, u"both"_s, "b", m->At(5));
        m->AddTempFile(id, u"both"_s, QByteArray("b"), m->At(5));
        m->AddFile(id, u"mine"_s, "m", m->At(6));
        m->AddTempFile(id, u"theirs"_s, QByteArray("t"), m->At(7));
        const auto conflict = Load(id);
        change(*conflict);
        QVERIFY(conflict->KeepItem(which));
        QStringList expected = which == 2 ? QStringList{u"temporary: other"_s, u"own: item Ü"_s}
                                          : QStringList{u"own: item Ü"_s, u"temporary: other"_s};
        QCOMPARE(m_discarded, expected.mid(0, stays ? 1 : 2) + QStringList({u"noted"_s, u"placed"_s}));
    }

    void bothVersions_canBeBroughtBack()
    {
        const qint64 id = AddPages(20);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        m->AddFile(id, u"mine"_s, "mine", m->At(-20));
        m->AddTempFile(id, u"theirs"_s, QByteArray("bytes"), m->At(20));
        CConflict conflict;
        conflict.Initialize(*m->Db, id);
        conflict.SetTempCode(u"{\\rtf1 mix}"_s);
        QVERIFY(conflict.KeepItem(1));
        const RemovedList removed(m->Path);
        QStringList codes;
        for (const ListedEntry& entry : removed.Find({})) {
            const ReturnResult back = ReturnRemoved(*m->Db, removed, entry);
            codes << m->Text(u"Code"_s, back.Item);
            QCOMPARE(back.Files, 1);
            QVERIFY(back.Pages > 0);
        }
        QCOMPARE(codes, (QStringList{u"{\\rtf1 int a;}"_s, u"{\\rtf1 int b;}"_s}));
        QCOMPARE(m->Text(u"Code"_s, id), u"{\\rtf1 mix}"_s);
    }

    /// The decision counts all the same.
    void pageThatCanNotBePlaced_waits()
    {
        VersionTexts other = Other();
        other.HasPage = true;
        other.PageUpdated = m->At(20);
        const qint64 id = m->AddConflict({}, other);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>theirs");
        m->AddFile(id, u"mine"_s, "mine", m->At(-20));
        const QString page = m->Db->HTMLFolder() + QString::number(id) + u".htm"_s;
        QDir().mkpath(page + u"/in the way"_s);
        m->Prompts.ExpectError();
        QVERIFY(Load(id)->KeepItem(1));
        QVERIFY(m->Prompts.Errors.last().contains(u"opened next"_s));
        QCOMPARE(m->Text(u"Title"_s, id), u"other"_s);
        QCOMPARE(StoredNames(m->Db->FilesFolder()).filter(u"mine"_s), QStringList());
        QCOMPARE(m_discarded.last(), u"placed"_s);
        QVERIFY(QDir(page).removeRecursively());
        // Or for the next decision, which discards it whole.
        other.Changed = m->Db->NextStamp();
        m->AddTempItem(id, other, 0);
        m->AddTempPage(id, u"77.htm"_s, {}, "<p>another");
        CConflict conflict;
        conflict.Initialize(*m->Db, id);
        QVERIFY(conflict.KeepItem(2));
        QCOMPARE(ReadFile(page), "<p>another");
        const RemovedList removed(m->Path);
        QVERIFY(removed.Find({}).front().Entry->HasPage);
        FinishPageChanges(*m->Db);
        QCOMPARE(ReadFile(page), "<p>another");
    }

    void keptObject_isStoredAsAFile()
    {
        const qint64 id = m->AddConflict({}, {});
        m->AddTempFile(id, u"theirs"_s, QByteArray("bytes"), m->At(20), u"words"_s);
        const qint64 both = m->AddFile(id, u"both"_s, "b", m->At(30), u"old"_s);
        const qint64 temp = m->AddTempFile(id, u"both"_s, QByteArray("b"), m->At(30), u"new"_s);
        const auto conflict = Load(id);
        CConflictFileObjects& files = conflict->TempItem().FileObjects();
        CConflictFileObject& first = **files.begin();
        CConflictFileObject* second = files.Item(temp);
        QCOMPARE(first.FileField().ToBytes(), QByteArray("bytes"));
        QVERIFY(first.KeepObject());
        QVERIFY(!first.TemporaryTable());
        QCOMPARE(m->StoredBytes(first.Key().toLongLong()), QByteArray("bytes"));
        QCOMPARE(m->Text(u"Description"_s, first.Key().toLongLong(), u"Files"_s), u"words"_s);
        QVERIFY(second->KeepObject());
        QCOMPARE(m->Text(u"Description"_s, both, u"Files"_s), u"new"_s);
        QCOMPARE(m->Db->QueryValue(u"SELECT LastUpdated FROM Files WHERE ID = ?"_s, {both}).ToDate(),
                 m->Db->NextStamp());
        QCOMPARE(CountOf(*m->Db, u"Files"_s), 2);
    }

    void collection_isKeyed()
    {
        const qint64 id = m->AddConflict({}, {});
        const qint64 one = m->AddFile(id, u"one"_s, "1", m->At(5), u"d"_s);
        const auto conflict = Load(id);
        CConflictFileObjects& files = conflict->Item().FileObjects();
        QCOMPARE(files.Count(), 1);
        QVERIFY(files.Item(QString::number(one) + u'C'));
        QVERIFY(!files.Item(QString::number(one)));
        QB_VERIFY_RAISES(files.Add(one), ErrorNumber::KeyExists);
        CConflictFileObject& copy = files.CopyFileObject(*files.Item(one));
        QCOMPARE(copy.Title(), u"one"_s);
        QCOMPARE(copy.Description(), u"d"_s);
        QCOMPARE(copy.State(), RecordState::New);
        files.Remove(QString::number(one) + u'C');
        QCOMPARE(files.Count(), 1);
        QCOMPARE(CountOf(*m->Db, u"Files"_s), 1); // the row stays
        QB_VERIFY_RAISES(files.Remove(u"x"_s), ErrorNumber::InvalidCall);
        QCOMPARE(files.DB(), m->Db.get());
    }
};

QB_TEST_MAIN(TestConflictRecords)
#include "tst_conflict_records.moc"
