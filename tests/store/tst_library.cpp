#include "store/ItemBranch.h"
#include "store/Library.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestLibrary : public QObject {
    Q_OBJECT

private:
    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"Session ö.qbd"_s), LanguageType::None);
    }

    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void sideFolders_standBesideTheLibrary_data()
    {
        QTest::addColumn<QString>("library");
        QTest::addColumn<QString>("base");
        QTest::newRow("common") << u"/x y/ünï.qbd"_s << u"/x y/ünï"_s;
        QTest::newRow("no extension") << u"/x/name"_s << u"/x/name"_s;
        QTest::newRow("four letters") << u"/x/name.html"_s << u"/x/name"_s;
        QTest::newRow("five letters") << u"/x/name.htmls"_s << u"/x/name.htmls"_s;
        QTest::newRow("only a dot") << u"/x/name."_s << u"/x/name"_s;
        QTest::newRow("several dots") << u"/x/1.2.qbd"_s << u"/x/1.2"_s;
        QTest::newRow("early dot") << u"/x/Version 1.2 notes"_s << u"/x/Version 1.2 notes"_s;
        QTest::newRow("dot in the folder") << u"/x.y/name"_s << u"/x.y/name"_s;
        QTest::newRow("backslashes") << u"D:\\x\\name.qbd"_s << u"D:\\x\\name"_s;
    }
    void sideFolders_standBesideTheLibrary()
    {
        QFETCH(QString, library);
        QFETCH(QString, base);
        QCOMPARE(FilesFolderOf(library), base + u"_Files/"_s);
        QCOMPARE(HTMLFolderOf(library), base + u"_HTML/"_s);
    }

    void plainLibrary_isNeitherChildNorMother()
    {
        QVERIFY(!m_library->IsChildReplica() && !m_library->IsMotherReplica());
        QVERIFY(m_library->LastExportedDate().IsNone());
        QCOMPARE(m_library->FilesFolder(), m_home->Path(u"Session ö_Files/"_s));
        QCOMPARE(m_library->HTMLFolder(), m_home->Path(u"Session ö_HTML/"_s));
        QVERIFY(!QFileInfo::exists(m_library->FilesFolder())); // it is made when it is needed
    }

    void childsDates_areRead()
    {
        MakeChild(*m_library, u"/Mütter/m.qbd"_s, Date::FromSeconds(100));
        QVERIFY(m_library->IsChildReplica() && !m_library->IsMotherReplica());
        QVERIFY(m_library->LastExportedDate().IsNone());
        m_library->Execute(u"UPDATE Properties SET LastExported = 200"_s);
        m_library->ReadReplica();
        QCOMPARE(m_library->LastExportedDate().Seconds(), 200);
        QCOMPARE(ReadReplicaState(*m_library).LastSynchronized.Seconds(), 100);
    }

    void columnsOfAChildWithoutAMother_makeNoChild()
    {
        MakeChild(*m_library, QString(u""_s), Date::FromSeconds(100));
        m_library->Execute(u"UPDATE Properties SET LastExported = 200"_s);
        m_library->ReadReplica();
        QVERIFY(!m_library->IsChildReplica());
        QVERIFY(m_library->LastExportedDate().IsNone());
    }

    void mothersChildren_areCounted()
    {
        MakeMother(*m_library, Date::FromSeconds(100));
        m_library->Execute(u"INSERT INTO ChildCopies (DBCopyID) VALUES ('Second')"_s);
        const ReplicaState state = ReadReplicaState(*m_library);
        QVERIFY(state.IsMother && !state.IsChild);
        QCOMPARE(state.Children, 2);
    }

    void librariesThatAreOpenAtATime_haveValuesOfTheirOwn()
    {
        MakeChild(*m_library, u"/m.qbd"_s, Date::FromSeconds(100));
        MakeMother(*m_library, Date::FromSeconds(100));
        const auto other = MakeLibrary(m_home->Path(u"other.qbd"_s), LanguageType::None);
        QVERIFY(m_library->IsChildReplica() && m_library->IsMotherReplica());
        QVERIFY(!other->IsChildReplica() && !other->IsMotherReplica());
        QVERIFY(other->Identity() != m_library->Identity() && !other->Identity().isEmpty());
        QCOMPARE(other->FilesFolder(), m_home->Path(u"other_Files/"_s));
        QCOMPARE(m_library->FilesFolder(), m_home->Path(u"Session ö_Files/"_s));
    }

    void deletionInOneOfTwoLibraries_leavesTheFilesOfTheOther()
    {
        const auto other = MakeLibrary(m_home->Path(u"other.qbd"_s), LanguageType::None);
        const qint64 item = AddItem(*m_library, 0, u"one"_s);
        QCOMPARE(AddItem(*other, 0, u"other's one"_s), item);
        QCOMPARE(AddStoredFile(*m_library, item, u"a.txt"_s, "own", {}),
                 AddStoredFile(*other, item, u"a.txt"_s, "x", {}));
        DeleteBranch(*other, item);
        QCOMPARE(StoredNames(other->FilesFolder()), QStringList());
        QCOMPARE(ReadFile(m_library->FilesFolder() + u"1 - a.txt"_s), "own");
    }

    void databaseThatIsNoLibrary_isRefused()
    {
        const QString path = m_home->Path(u"none.qbd"_s);
        DBEngine::CreateDatabase(path)->Execute(u"CREATE TABLE Items (ID INTEGER)"_s);
        try {
            Library::Open(path);
            QFAIL("it was opened");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), ErrorNumber::NotADatabase);
        }
    }

    void library_isKnownByFourTables_data()
    {
        QTest::addColumn<bool>("needed");
        for (const char* table : {"Items", "Files", "Bookmarks", "DBVersion"})
            QTest::newRow(table) << true;
        for (const char* table : {"Keywords", "ItemLinks", "ChildCopies"})
            QTest::newRow(table) << false;
    }
    void library_isKnownByFourTables()
    {
        QFETCH(bool, needed);
        QVERIFY(IsLibrary(*m_library));
        m_library->Execute(u"PRAGMA foreign_keys = OFF"_s);
        m_library->Execute(u"DROP TABLE "_s + QString::fromLatin1(QTest::currentDataTag()));
        QCOMPARE(IsLibrary(*m_library), !needed);
    }
};

QB_TEST_MAIN(TestLibrary)
#include "tst_library.moc"
