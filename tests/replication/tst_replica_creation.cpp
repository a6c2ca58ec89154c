#include "platform/dao/DBEngine.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaOpening.h"
#include "store/CDBCreate.h"
#include "store/LibraryUse.h"
#include "store/PendingReplica.h"
#include "store/ReplicaLog.h"
#include "support/FileSizeLimit.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "support/Unasked.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Children are given out.
class TestReplicaCreation : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_clock;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    QString m_mother;

    QString Path(const QString& name) const { return m_home->Path(name); }
    QString Transfer() const { return Path(u"out/child.qbr"_s); }

    void MakeMotherFile()
    {
        const auto library = MakeLibrary(m_mother);
        const qint64 one = AddItem(*library, 0, u"Ünï 漢字"_s, u"int one;"_s);
        const qint64 two = AddItem(*library, one, u"two"_s);
        AddItem(*library, 0, u"three"_s);
        library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (1, 2, 'därüber'), (3, 1, '')"_s);
        library->Execute(u"INSERT INTO BookmarkGroups (\"Group\") VALUES ('Größe')"_s);
        library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (2, 1)"_s);
        for (const int size : {0, 16383, 16384, 16385, 40000})
            AddStoredFile(*library, size % 2 ? one : two, u"datei \"%1\" Ü.bin"_s.arg(size), QByteArray(size, 'f'),
                          m_clock->Now());
        library->Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = 3900000000 WHERE ID = 2"_s);
        WriteFile(library->HTMLFolder() + u"2.htm"_s, "<p>two</p>");
        WriteFile(library->HTMLFolder() + u"2/sub/bild ü.png"_s, "picture");
        WriteFile(library->HTMLFolder() + u"default.htm"_s, "welcome");
        for (const QString& folder : {library->HTMLFolder(), library->FilesFolder()})
            WriteFile(folder + u".library"_s, library->Identity().toUtf8());
    }
    BackUpResult GiveOut(const QString& description = u"for Änne"_s)
    {
        m_prompts->ExpectInputBox(u"Short Description"_s, description);
        return GiveOutChild(m_mother, Transfer());
    }
    QString OpenChild(const QString& name = u"child.qbd"_s) const
    {
        return OpenReplica(Transfer(), Path(name), RestoreOver::Refuse, {}, [](const QString&) { return true; })
            .Library;
    }
    QStringList OutNames() const
    {
        return QDir(Path(u"out"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    /// The mother is as an ordinary library is.
    void VerifyNothingWasGivenOut(const QMap<QString, QByteArray>& before)
    {
        QVERIFY(!Library::Open(m_mother)->IsMotherReplica()); // and what was pending is finished
        QCOMPARE(DifferenceOf(StateOf(m_mother), before), QString());
    }

    /// As if the process had died before the child got its name.
    void NoteUnfinished(bool first)
    {
        const auto mother = DBEngine::OpenDatabase(m_mother);
        const QString identity = mother->QueryValue(u"SELECT DBCopyID FROM ChildCopies"_s).ToText();
        NotePendingReplica(*mother, {.File = Transfer(),
                                     .Complete = Transfer(),
                                     .Locked = Path(u"gone"_s),
                                     .Identity = identity,
                                     .IsFirst = first});
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_clock = std::make_unique<FixedClock>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_mother = Path(u"Mütter/mother.qbd"_s);
        QDir().mkpath(Path(u"Mütter"_s));
        QDir().mkpath(Path(u"out"_s));
        MakeMotherFile();
    }
    void cleanup()
    {
        m_prompts.reset();
        m_clock.reset();
        m_home.reset();
    }

    void child_hasAllOfItsMother()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        GiveOut();
        QCOMPARE(OutNames(), QStringList{u"child.qbr"_s});
        const QString child = OpenChild();
        QMap<QString, QByteArray> state = StateOf(child);
        for (auto entry = before.begin(); entry != before.end(); ++entry) {
            const bool isSame = entry.key().startsWith(u"files/"_s) || entry.key().startsWith(u"pages/"_s)
                                || entry.key().startsWith(u"Bookmark"_s) || entry.key().startsWith(u"Keywords"_s);
            if (isSame)
                QCOMPARE(state.value(entry.key()), entry.value());
        }
        const auto library = Library::Open(child);
        QVERIFY(!library->TableExists(u"HTMLFiles"_s));
        QVERIFY(!library->GetTableDef(u"Files"_s).FindField(u"File"_s));
        QCOMPARE(Texts(*library, u"SELECT Title FROM Items ORDER BY ID"_s),
                 (QStringList{u"Ünï 漢字"_s, u"two"_s, u"three"_s}));
        QCOMPARE(CountOf(*library, u"own_Checksums"_s), CountOf(*DBEngine::OpenDatabase(m_mother), u"own_Checksums"_s));
    }

    void motherAndChild_knowEachOther()
    {
        GiveOut();
        const auto mother = Library::Open(m_mother);
        const auto child = Library::Open(OpenChild());
        QVERIFY(mother->IsMotherReplica());
        QVERIFY(!mother->IsChildReplica());
        QVERIFY(child->IsChildReplica());
        QVERIFY(!child->IsMotherReplica());
        QVERIFY(child->Identity() != mother->Identity());
        QCOMPARE(Texts(*mother, u"SELECT DBCopyID || ' ' || ShortDescr FROM ChildCopies"_s),
                 QStringList{child->Identity() + u" for Änne"_s});
        const auto properties = child->OpenRecordset(u"Properties"_s);
        QCOMPARE(properties[u"MasterReplicaPath"_s].ToText(), m_mother);
        QCOMPARE(properties[u"LastSynchronized"_s].ToDate(), m_clock->Now());
        QVERIFY(properties[u"LastExported"_s].IsNull());
        QCOMPARE(mother->QueryValue(u"SELECT LastSynchronized FROM ChildCopies"_s).ToDate(), m_clock->Now());
        for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s}) {
            QCOMPARE(CountOf(*mother, table), 0);
            QCOMPARE(CountOf(*child, table), 0);
        }
    }

    void child_knowsItsMothersNumbers()
    {
        GiveOut();
        const auto child = Library::Open(OpenChild());
        QCOMPARE(Texts(*child, u"SELECT count(*) FROM Items WHERE MotherRecordID = ID AND MotherParentID = ParentID"_s),
                 QStringList{u"3"_s});
        QCOMPARE(Texts(*child, u"SELECT count(*) FROM Files WHERE MotherRecordID = ID AND MotherCodeID = CodeID"_s),
                 QStringList{u"5"_s});
        QCOMPARE(Texts(*child, u"SELECT count(*) FROM ItemLinks WHERE MotherItemID = ItemID AND MotherLinkItemID = "
                               "LinkItemID"_s),
                 QStringList{u"2"_s});
        const qint64 item = AddItem(*child, 1, u"new"_s);
        QCOMPARE(child->QueryValue(u"SELECT MotherRecordID FROM Items WHERE ID = ?"_s, {item}), Value(-1));
    }

    void secondChild_leavesTheFirstAlone()
    {
        GiveOut(u"one"_s);
        const QString first = OpenChild();
        {
            const auto mother = Library::Open(m_mother);
            mother->Execute(u"INSERT INTO DeletedItems (ItemID, DateDeleted) VALUES (77, ?)"_s, {m_clock->Now()});
            ReplicaLog(*mother).Note({.Table = u"Items"_s, .Record = 77});
        }
        QFile::remove(Transfer());
        m_clock->AddSeconds(60);
        GiveOut(u"two"_s);
        const auto mother = Library::Open(m_mother);
        QCOMPARE(mother->Replica().Children, 2);
        QCOMPARE(Texts(*mother, u"SELECT ShortDescr FROM ChildCopies ORDER BY LastSynchronized"_s),
                 (QStringList{u"one"_s, u"two"_s}));
        QCOMPARE(CountOf(*mother, u"DeletedItems"_s), 1); // the first has not heard of it
        const auto second = Library::Open(OpenChild(u"second.qbd"_s));
        QCOMPARE(CountOf(*second, u"DeletedItems"_s), 0);
        QCOMPARE(CountOf(*mother, u"ReplicaLog"_s), 1);
        QCOMPARE(CountOf(*second, u"ReplicaLog"_s), 0);
        QCOMPARE(CountOf(*second, u"ChildCopies"_s), 0);
        QVERIFY(second->Identity() != Library::Open(first)->Identity());
    }

    void childOfAnExportedChild_isFreeAndKnowsTheFirst()
    {
        GiveOut();
        const QString first = OpenChild();
        {
            const auto child = Library::Open(first);
            child->Execute(u"UPDATE Properties SET LastExported = LastSynchronized + 5"_s);
            child->Execute(u"UPDATE Items SET MotherRecordID = 4711"_s);
            child->Execute(u"INSERT INTO DeletedItems (ItemID) VALUES (9)"_s);
            CDBCreate().CreateTemporaryTablesInMainDB(*child);
            child->Execute(u"INSERT INTO TempItems (ID, Title) VALUES (1, 'lost')"_s);
        }
        m_mother = first;
        QFile::remove(Transfer());
        GiveOut();
        const auto grandchild = Library::Open(OpenChild(u"grandchild.qbd"_s));
        QCOMPARE(grandchild->QueryValue(u"SELECT MasterReplicaPath FROM Properties"_s).ToText(), first);
        QVERIFY(grandchild->LastExportedDate().IsNone());
        QCOMPARE(CountOf(*grandchild, u"DeletedItems"_s), 0);
        QVERIFY(!grandchild->TableExists(u"TempItems"_s));
        QCOMPARE(Texts(*grandchild, u"SELECT max(MotherRecordID) FROM Items"_s), QStringList{u"3"_s});
        const auto child = Library::Open(first);
        QVERIFY(child->IsChildReplica() && child->IsMotherReplica());
        QVERIFY(!child->LastExportedDate().IsNone());
        QCOMPARE(CountOf(*child, u"TempItems"_s), 1);
    }

    void fileOfABrokenDeletion_isInTheChild()
    {
        const QString stored = Library::Open(m_mother)->FilesFolder() + u"2 - datei \"16383\" Ü.bin"_s;
        QVERIFY(QFile::rename(stored, Library::Open(m_mother)->FilesFolder()
                                          + u".leaving-0123456789abcdef0123456789abcdef-2"_s));
        GiveOut();
        QCOMPARE(ReadFile(Library::Open(OpenChild())->FilesFolder() + QFileInfo(stored).fileName()),
                 QByteArray(16383, 'f'));
        QVERIFY(QFile::exists(stored));
    }

    void secondOfTheStamps_isOverAfterwards()
    {
        m_clock.reset(); // it is the system's, which goes on
        GiveOut();
        QVERIFY(Clock::Now()
                > DBEngine::OpenDatabase(m_mother)->QueryValue(u"SELECT LastSynchronized FROM ChildCopies"_s).ToDate());
        m_clock = std::make_unique<FixedClock>();
    }

    void description_isCutOrEmpty()
    {
        GiveOut(QString(300, u'ä'));
        GiveOut(QString());
        m_prompts->ExpectInputBox(u"Short Description"_s, std::nullopt);
        GiveOutChild(m_mother, Transfer());
        QCOMPARE(m_prompts->InputTexts.last(), u"Please type short description for the new child database."_s);
        QCOMPARE(Texts(*DBEngine::OpenDatabase(m_mother), u"SELECT ShortDescr FROM ChildCopies ORDER BY rowid"_s),
                 (QStringList{QString(255, u'ä'), {}, {}}));
    }

    void longPathOfTheMother_isCut()
    {
        QString folder = Path({});
        for (int i = 0; i < 6; ++i)
            folder += u'/' + QString(60, QChar(u'a' + i));
        QDir().mkpath(folder);
        const QString moved = folder + u"/mother.qbd"_s;
        MakeLibrary(moved);
        m_mother = moved;
        GiveOut();
        const auto child = Library::Open(OpenChild());
        QCOMPARE(child->QueryValue(u"SELECT MasterReplicaPath FROM Properties"_s).ToText(), moved.left(255));
    }

    // What fails leaves no child that is not there, and none that is not known

    void libraryOpenElsewhere_isRefused()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        {
            const auto open = Library::Open(m_mother);
            QB_VERIFY_RAISES(GiveOutChild(m_mother, Transfer()), 3045);
            m_prompts->ExpectError();
            QVERIFY(!CreateChildDB(m_mother, Transfer()));
        }
        QCOMPARE(OutNames(), QStringList());
        VerifyNothingWasGivenOut(before);
    }

    void library_isNobodyElsesMeanwhile()
    {
        class Peek : public RecordedWork {
        public:
            QString Path;
            int Refused = 0;
            void Advance(qint64, qint64) override
            {
                if (Refused > 0) // which takes its time
                    return;
                try {
                    Library::Open(Path);
                } catch (const RuntimeError& error) {
                    Refused += error.Number() == ErrorNumber::InUse ? 1 : 1000;
                }
            }
        } peek;
        peek.Path = m_mother;
        m_prompts->ExpectInputBox(u"Short Description"_s, QString());
        GiveOutChild(m_mother, Transfer(), peek);
        QVERIFY(peek.Refused > 0 && peek.Refused < 1000);
    }

    void targetThatIsNone_isRefused()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        QB_VERIFY_RAISES(GiveOutChild(m_mother, m_mother), 3204);
        QB_VERIFY_RAISES(GiveOutChild(m_mother, Path(u"out"_s)), 75);
        WriteFile(Path(u"file"_s), {});
        QB_VERIFY_RAISES(GiveOutChild(m_mother, Path(u"file/child.qbr"_s)), 75);
        VerifyNothingWasGivenOut(before);
    }

    void cancelledWork_leavesWhatWasThere()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        WriteFile(Transfer(), "the one before");
        for (const int part : {0, 100, 300, 700, 950}) {
            RecordedWork work;
            work.Ends = [part](qint64 done) { return done >= part; };
            const Unasked unasked;
            QVERIFY(!CreateChildDB(m_mother, Transfer(), work));
            QCOMPARE(ReadFile(Transfer()), "the one before");
            QCOMPARE(OutNames(), QStringList{u"child.qbr"_s});
            VerifyNothingWasGivenOut(before);
        }
    }

    void fullDisk_leavesWhatWasThere()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        for (const rlim_t limit : {rlim_t(20000), rlim_t(90000), rlim_t(160000)}) {
            const Unasked unasked;
            QString raised;
            {
                const FileSizeLimit full(limit);
                raised = Raised([&] { GiveOutChild(m_mother, Transfer()); });
            }
            QVERIFY2(!raised.isEmpty(), qPrintable(QString::number(limit)));
            QCOMPARE(OutNames(), QStringList());
            VerifyNothingWasGivenOut(before);
        }
    }

    /// The mother knows the child by then, and forgets it again.
    void placeThatIsTakenMeanwhile_leavesNoChild()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        RecordedWork work;
        work.Ends = [this](qint64 done) {
            if (done > 700)
                QDir().mkpath(Transfer() + u"/in the way"_s);
            return false;
        };
        m_prompts->ExpectInputBox(u"Short Description"_s, QString());
        QB_VERIFY_RAISES(GiveOutChild(m_mother, Transfer(), work), 75);
        QCOMPARE(OutNames(), QStringList{u"child.qbr"_s});
        QCOMPARE(CountOf(*DBEngine::OpenDatabase(m_mother), u"ChildCopies"_s), 0);
        VerifyNothingWasGivenOut(before);
        // A mother stays one, with what she keeps for the others.
        QVERIFY(QDir(Transfer()).removeRecursively());
        GiveOut();
        QFile::remove(Transfer());
        const QMap<QString, QByteArray> asMother = StateOf(m_mother);
        m_prompts->ExpectInputBox(u"Short Description"_s, QString());
        QB_VERIFY_RAISES(GiveOutChild(m_mother, Transfer(), work), 75);
        QCOMPARE(DifferenceOf(StateOf(m_mother), asMother), QString());
    }

    void tablesThatCantBeMade_areTold()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        RefuseWord(*DBEngine::OpenDatabase(m_mother), u"ChildCopies"_s, u"ShortDescr"_s, u"refused"_s);
        m_prompts->ExpectInputBox(u"Short Description"_s, u"refused"_s);
        m_prompts->ExpectError();
        m_prompts->ExpectMsgBox(u"Error while creating child database"_s);
        m_prompts->ExpectError();
        QVERIFY(!CreateChildDB(m_mother, Transfer()));
        QCOMPARE(m_prompts->Messages.last().Text, u"Child database could not be created."_s);
        QCOMPARE(m_prompts->Messages.last().Icon, MsgBoxIcon::Critical);
        QCOMPARE(OutNames(), QStringList());
        VerifyNothingWasGivenOut(before);
    }

    // What a dead process left

    void childThatNeverGotItsName_isTakenBackAtTheNextOpening()
    {
        const QMap<QString, QByteArray> before = StateOf(m_mother);
        GiveOut();
        NoteUnfinished(true);
        QVERIFY(Library::Open(m_mother)->IsMotherReplica()); // the file is there
        QVERIFY(!DBEngine::OpenDatabase(m_mother)->TableExists(u"own_PendingReplica"_s));
        NoteUnfinished(true);
        QDir().mkpath(Path(u"gone"_s));
        {
            const FileLock living(Path(u"gone"_s), FileLock::Target::Existing);
            QFile::rename(Transfer(), Path(u"elsewhere"_s));
            QVERIFY(Library::Open(m_mother)->IsMotherReplica()); // whoever makes it is still at it
        }
        QDir().rename(Path(u"out"_s), Path(u"unplugged"_s));
        QVERIFY(Library::Open(m_mother)->IsMotherReplica()); // it may lie on what is not there now
        QDir().rename(Path(u"unplugged"_s), Path(u"out"_s));
        WriteFile(Transfer(), "another file");
        VerifyNothingWasGivenOut(before);
        QVERIFY(!DBEngine::OpenDatabase(m_mother)->TableExists(u"own_PendingReplica"_s));
    }

    void childThatNeverGotItsName_leavesTheListsThatWereThereBefore()
    {
        GiveOut();
        NoteUnfinished(false);
        QFile::remove(Transfer());
        QVERIFY(!Library::Open(m_mother)->IsMotherReplica());
        for (const QString& table : {u"DeletedFiles"_s, u"DeletedItems"_s, u"DeletedItemLinks"_s, u"ReplicaLog"_s})
            QVERIFY2(DBEngine::OpenDatabase(m_mother)->TableExists(table), qPrintable(table));
    }
};

QB_TEST_MAIN(TestReplicaCreation)
#include "tst_replica_creation.moc"
