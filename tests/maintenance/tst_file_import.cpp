#include "maintenance/FileImport.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/RuntimeError.h"
#include "store/Library.h"
#include "store/PendingFiles.h"
#include "support/FileSizeLimit.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Files on their way into an item: as they are, each compressed, all in one archive.
class TestFileImport : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"the library.qbd"_s));
        m_item = QString::number(AddItem(*m_database, 0, u"owner"_s));
        for (const QString& name : {u"a.txt"_s, u"b.c"_s, u"Makefile"_s})
            WriteFile(In(name), name.toUtf8().repeated(100));
        m_work.Forget();
        m_options = {};
    }
    void cleanup()
    {
        m_database.reset();
        m_prompts.reset();
        m_home.reset();
    }

    // The plan

    void filesWithoutArchive_canBeCompressed()
    {
        const FileImportPlan plan = PlanFileImport({In(u"a.txt"_s), In(u"Makefile"_s)});
        QCOMPARE(plan.Files, (QStringList{In(u"a.txt"_s), In(u"Makefile"_s)}));
        QCOMPARE(plan.Candidates.size(), 2u);
        QCOMPARE(plan.Candidates[0].ZipName, u"a.zip"_s);
        QCOMPARE(plan.Candidates[1].ZipName, u"Makefile.zip"_s);
        QCOMPARE(plan.Candidates[1].Index, 1);
    }

    void archiveBesideAFile_takesItsPlace()
    {
        WriteFile(In(u"a.zip"_s), "archive");
        const FileImportPlan plan = PlanFileImport({In(u"a.txt"_s), In(u"b.c"_s)});
        QCOMPARE(plan.Files, (QStringList{In(u"a.zip"_s), In(u"b.c"_s)}));
        QCOMPARE(plan.Candidates.size(), 1u);
        QCOMPARE(plan.Candidates[0].Index, 1);
        QCOMPARE(PlanFileImport({In(u"a.txt"_s), In(u"a.zip"_s)}).Files, QStringList{In(u"a.zip"_s)}); // once
    }

    void archives_areNeverCompressed()
    {
        WriteFile(In(u"B.ZIP"_s), "archive");
        const FileImportPlan plan = PlanFileImport({In(u"B.ZIP"_s)});
        QCOMPARE(plan.Files, QStringList{In(u"B.ZIP"_s)});
        QVERIFY(plan.Candidates.empty());
        m_options.Option = ImportOption::ZipEach;
        QVERIFY(ImportStoredFiles(*m_database, m_item, plan, m_options, m_work).Complete);
        QCOMPARE(Stored(), QStringList{u"1 - B.ZIP"_s});
        QCOMPARE(ReadFile(Place(u"1 - B.ZIP"_s)), "archive");
    }

    // The import

    void files_areTakenInAsTheyAre()
    {
        m_options.Description = u"described"_s;
        const FileImportResult result = Import({u"a.txt"_s, u"b.c"_s});
        QVERIFY(result.Complete);
        QCOMPARE(result.Keys, (QStringList{u"1"_s, u"2"_s}));
        QCOMPARE(Stored(), (QStringList{u"1 - a.txt"_s, u"2 - b.c"_s}));
        QCOMPARE(Texts(*m_database, u"SELECT Description FROM Files"_s), (QStringList{u"described"_s, u"described"_s}));
        QCOMPARE(m_work.Said.last(), u"100 "_s);
        QVERIFY(m_work.Said.contains(u"61 Adding a.txt"_s));
    }

    void takenName_getsANumber()
    {
        QVERIFY(Import({u"a.txt"_s, u"Makefile"_s}).Complete);
        QVERIFY(Import({u"a.txt"_s, u"Makefile"_s}).Complete);
        WriteFile(In(u"A.TXT"_s), "capitals");
        QVERIFY(Import({u"A.TXT"_s}).Complete);
        QCOMPARE(Stored(), (QStringList{u"1 - a.txt"_s, u"2 - Makefile"_s, u"3 - a(1).txt"_s, u"4 - Makefile(1)"_s,
                                        u"5 - A(2).TXT"_s}));
        QCOMPARE(ReadFile(Place(u"3 - a(1).txt"_s)), ReadFile(In(u"a.txt"_s)));
        const QString other = QString::number(AddItem(*m_database, 0, u"other"_s));
        QVERIFY(ImportStoredFiles(*m_database, other, PlanFileImport({In(u"a.txt"_s)}), m_options, m_work).Complete);
        QVERIFY(Stored().contains(u"6 - a.txt"_s)); // names are an item's own
    }

    void eachFile_hasAnArchive()
    {
        WriteFile(In(u"a.c"_s), "the same name");
        m_options.Option = ImportOption::ZipEach;
        QVERIFY(Import({u"a.txt"_s, u"a.c"_s, u"b.c"_s}).Complete);
        QCOMPARE(Stored(), (QStringList{u"1 - a.zip"_s, u"2 - a(1).zip"_s, u"3 - b.zip"_s}));
        QCOMPARE(InArchive(u"1 - a.zip"_s), QStringList{u"a.txt"_s});
        QCOMPARE(InArchive(u"2 - a(1).zip"_s), QStringList{u"a.c"_s});
        QVERIFY(m_work.Said.contains(u"1 Adding a.txt "_s));
        QVERIFY(m_work.Said.contains(u"67 Adding a.c "_s));
        QCOMPARE(InFolder().size(), 4); // nothing is made beside the files
    }

    /// There is room for the archive once, and not twice.
    void archive_isMovedIn()
    {
        m_options.Option = ImportOption::ZipEach;
        QVERIFY(Import({u"a.txt"_s}).Complete);
        const QFileInfo stored(Place(u"1 - a.zip"_s));
        QVERIFY(stored.isFile());
        const Date date = m_database->QueryValue(u"SELECT OrigDateTime FROM Files"_s).ToDate();
        QVERIFY(qAbs(date.Seconds() - Date::FromDateTime(stored.lastModified()).Seconds()) <= 1);
        QCOMPARE(m_work.Said.filter(u"Adding a.zip"_s).size(), 0); // nothing of it was copied
    }

    void packingThatFails_namesTheArchive()
    {
        m_options.Option = ImportOption::ZipAll;
        m_options.ZipName = u"together"_s;
        const FileSizeLimit full(50);
        try {
            Import({u"a.txt"_s, u"b.c"_s});
            QFAIL("was made");
        } catch (const RuntimeError& error) {
            QVERIFY2(error.Description().startsWith(u"The archive 'together.zip' can't be made: "_s),
                     qPrintable(error.Description()));
        }
        QCOMPARE(Stored(), QStringList());
    }

    void allFiles_areInOneArchive()
    {
        WriteFile(In(u"a.zip"_s), "archive");
        m_options.Option = ImportOption::ZipAll;
        m_options.ZipName = u"together"_s;
        QVERIFY(Import({u"a.txt"_s, u"Makefile"_s, u"b.c"_s}).Complete);
        QCOMPARE(Stored(), QStringList{u"1 - together.zip"_s});
        QCOMPARE(InArchive(u"1 - together.zip"_s), (QStringList{u"a.zip"_s, u"Makefile"_s, u"b.c"_s}));
    }

    void nameThatLeadsElsewhere_isRefused()
    {
        m_options.Option = ImportOption::ZipAll;
        for (const QString& name : {u"../x"_s, u"a\\b"_s, u"/tmp/x"_s, QString()}) {
            m_options.ZipName = name;
            QB_VERIFY_RAISES(Import({u"a.txt"_s}), 75);
        }
        QCOMPARE(Stored(), QStringList());
    }

    // Failures

    void cancelledPacking_leavesNothing()
    {
        m_options.Option = ImportOption::ZipEach;
        m_work.Ends = [](qint64) { return true; };
        const FileImportResult result = Import({u"a.txt"_s, u"b.c"_s});
        QVERIFY(result.Cancelled);
        QVERIFY(!result.Complete);
        QCOMPARE(Stored(), QStringList());
    }

    void cancelledImport_keepsWhatIsComplete()
    {
        m_work.Ends = [this](qint64) { return m_work.Done.size() == 2; };
        const FileImportResult result = Import({u"a.txt"_s, u"b.c"_s, u"Makefile"_s});
        QVERIFY(result.Cancelled);
        QVERIFY(!result.Complete);
        QCOMPARE(result.Keys, QStringList{u"1"_s});
        QCOMPARE(Stored(), QStringList{u"1 - a.txt"_s});
    }

    void fullDisk_leavesNothingOfTheFile()
    {
        WriteFile(In(u"big"_s), QByteArray(500'000, 'x'));
        m_prompts->ExpectError();
        {
            const FileSizeLimit full(200'000);
            const FileImportResult result = Import({u"a.txt"_s, u"big"_s, u"b.c"_s});
            QVERIFY(!result.Complete && !result.Cancelled);
            QCOMPARE(result.Keys, QStringList{u"1"_s});
        }
        QCOMPARE(Stored(), QStringList{u"1 - a.txt"_s});
        QCOMPARE(m_database->QueryValue(u"SELECT count(*) FROM Files"_s).ToLong(), 1);
    }

    void missingFile_isNamed()
    {
        m_options.Option = ImportOption::ZipEach;
        QB_VERIFY_RAISES(Import({u"a.txt"_s, u"gone"_s}), 75);
        QCOMPARE(Stored(), QStringList());
        m_options.Option = ImportOption::AsTheyAre;
        m_prompts->ExpectError();
        QVERIFY(!Import({u"gone"_s}).Complete);
        QVERIFY2(m_prompts->Errors.first().contains(u"gone"_s), qPrintable(m_prompts->Errors.first()));
    }

    void archivesOfAKilledProcess_goWithTheNextOpening()
    {
        const QString folder = m_database->FilesFolder();
        QVERIFY(QDir().mkpath(folder + u".packing-0123456789abcdef0123456789abcdef-0"_s));
        WriteFile(folder + u".packing-0123456789abcdef0123456789abcdef-0/half.zip"_s, "half");
        PendingWork living(*m_database);
        WriteFile(living.PackingFolder() + u"mine.zip"_s, "mine");
        FinishPendingFiles(*m_database);
        QVERIFY(QFile::exists(living.PackingFolder() + u"mine.zip"_s));
        QCOMPARE(QDir(folder).entryList({u".packing-*"_s}, QDir::Dirs | QDir::Hidden).size(), 1);
    }

private:
    QString In(const QString& name) const { return m_home->Path(u"in ö/"_s + name); }
    QStringList InFolder() const
    {
        return QDir(m_home->Path(u"in ö"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QString Place(const QString& name) const { return m_database->FilesFolder() + name; }
    QStringList Stored() const { return StoredNames(m_database->FilesFolder()); }
    FileImportResult Import(const QStringList& names)
    {
        QStringList files;
        for (const QString& name : names)
            files << In(name);
        return ImportStoredFiles(*m_database, m_item, PlanFileImport(files), m_options, m_work);
    }
    QStringList InArchive(const QString& name) const
    {
        QStringList names;
        BrindletonZip zip;
        for (const ArchiveEntry& entry : zip.Entries(Place(name)))
            names << entry.Name;
        return names;
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    QString m_item;
    RecordedWork m_work;
    FileImportOptions m_options;
};

QB_TEST_MAIN(TestFileImport)
#include "tst_file_import.moc"
