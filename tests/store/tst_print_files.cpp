#include "platform/system/RuntimeError.h"
#include "store/CCodeItem.h"
#include "store/CPrintFiles.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The list of stored files that is printed with an item.
class TestPrintFiles : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;
    CCodeItem m_printed;

    static constexpr auto Added = [] { return Date::FromParts(2026, 1, 2, 3, 4, 5); };

    CPrintFiles& Listed(qint64 item)
    {
        m_printed.Initialise(*m_library, QString::number(item));
        m_printed.PrintFiles().InitializeItemFilesList(*m_library, item);
        return m_printed.PrintFiles();
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"lib.qbd"_s));
        m_item = AddItem(*m_library, 0, u"item"_s);
    }
    void cleanup()
    {
        m_printed.ReleasePrintFiles();
        m_library.reset();
        m_home.reset();
    }

    void plainProperties_holdWhatTheyAreGiven()
    {
        CPrintFile file;
        QVERIFY(file.Title().isEmpty() && file.Size().isEmpty() && file.Description().isEmpty());
        QVERIFY(file.OrigDateTime().IsNone() && file.DateAdded().IsNone());
        file.SetTitle(u"a.zip"_s);
        file.SetOrigDateTime(Added());
        file.SetDateAdded(Date::FromParts(2025, 12, 31, 0, 0, 0));
        file.SetSize(u"17"_s);
        file.SetDescription(u"what it is"_s);
        QCOMPARE(file.Title(), u"a.zip"_s);
        QCOMPARE(file.OrigDateTime(), Added());
        QCOMPARE(file.DateAdded(), Date::FromParts(2025, 12, 31, 0, 0, 0));
        QCOMPARE(file.Size(), u"17"_s);
        QCOMPARE(file.Description(), u"what it is"_s);
    }

    void files_areListedInTheirOrderUnderTheirKeys()
    {
        const qint64 last = AddStoredFile(*m_library, m_item, u"zz.txt"_s, "12345"_ba, Added());
        AddStoredFile(*m_library, AddItem(*m_library, 0, u"other"_s), u"not this one"_s, "1"_ba, Added());
        const qint64 first = AddStoredFile(*m_library, m_item, u"aa.txt"_s, "1"_ba, Added());
        m_library->Execute(
            u"UPDATE Files SET Description = 'first', OrigDateTime = ?, fileSize = 1234567 WHERE ID = ?"_s,
            {Date::FromParts(2020, 5, 6, 7, 8, 9), last});
        const CPrintFiles& files = Listed(m_item);
        QCOMPARE(files.Count(), 2);
        QCOMPARE(files.Item(u"1"_s)->Title(), u"zz.txt"_s);
        QCOMPARE(files.Item(u"2"_s)->Title(), u"aa.txt"_s);
        QVERIFY(!files.Item(u"0"_s) && !files.Item(u"3"_s));
        QCOMPARE(files.Item(u"F"_s + QString::number(first))->Title(), u"aa.txt"_s);
        const auto file = files.Item(CPrintFiles::KeyOf(last));
        QCOMPARE(file->Description(), u"first"_s);
        QCOMPARE(file->OrigDateTime(), Date::FromParts(2020, 5, 6, 7, 8, 9));
        QCOMPARE(file->DateAdded(), Added());
        QCOMPARE(file->Size(), u"1,234,567"_s);
        QStringList titles;
        for (const auto& one : files)
            titles << one->Title();
        QCOMPARE(titles, (QStringList{u"zz.txt"_s, u"aa.txt"_s}));
    }

    void size_isGroupedAndEmptyForNothing_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("size");
        QTest::newRow("none") << qint64(0) << QString();
        QTest::newRow("small") << qint64(7) << u"7"_s;
        QTest::newRow("hundreds") << qint64(999) << u"999"_s;
        QTest::newRow("thousand") << qint64(1000) << u"1,000"_s;
        QTest::newRow("large") << qint64(2147483647) << u"2,147,483,647"_s;
    }
    void size_isGroupedAndEmptyForNothing()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, size);
        const qint64 id = AddStoredFile(*m_library, m_item, u"file"_s, "x"_ba, Added());
        m_library->Execute(u"UPDATE Files SET fileSize = ? WHERE ID = ?"_s, {bytes, id});
        QCOMPARE(Listed(m_item).Item(u"1"_s)->Size(), size);
    }

    void itemWithoutFiles_hasAnEmptyList() { QCOMPARE(Listed(m_item).Count(), 0); }

    void property_isMadeAtTheFirstReadAndKept()
    {
        CCodeItem item;
        CPrintFiles* list = &item.PrintFiles(); // of an item that no library knows, too
        QCOMPARE(list->Count(), 0);
        QCOMPARE(&item.PrintFiles(), list);
    }

    void releasedList_isReadAnew()
    {
        AddStoredFile(*m_library, m_item, u"one"_s, "1"_ba, Added());
        QCOMPARE(Listed(m_item).Count(), 1);
        AddStoredFile(*m_library, m_item, u"two"_s, "2"_ba, Added());
        QCOMPARE(m_printed.PrintFiles().Count(), 1); // it is what it was read as
        m_printed.ReleasePrintFiles();
        QCOMPARE(m_printed.PrintFiles().Count(), 0);
        QCOMPARE(Listed(m_item).Count(), 2);
    }

    void readTwice_holdsEachFileOnce()
    {
        AddStoredFile(*m_library, m_item, u"one"_s, "1"_ba, Added());
        Listed(m_item);
        QCOMPARE(Listed(m_item).Count(), 1);
    }

    void listThatCantBeRead_isEmptyAndSaysSo()
    {
        AddStoredFile(*m_library, m_item, u"one"_s, "1"_ba, Added());
        Listed(m_item);
        m_library->Execute(u"ALTER TABLE Files RENAME TO Gone"_s);
        bool raised = false;
        try {
            m_printed.PrintFiles().InitializeItemFilesList(*m_library, m_item);
        } catch (const RuntimeError&) {
            raised = true;
        }
        QVERIFY(raised);
        QCOMPARE(m_printed.PrintFiles().Count(), 0);
    }
};

QB_TEST_MAIN(TestPrintFiles)
#include "tst_print_files.moc"
