#include "maintenance/CDBManipulate.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryRestore.h"
#include "platform/archive/BrindletonZip.h"
#include "replication/ReplicaCreation.h"
#include "store/Checksums.h"
#include "store/LibraryUse.h"
#include "store/PendingPages.h"
#include "support/ErrorRoutine.h"
#include "support/FileSizeLimit.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A library into one file and back.
class TestBackup : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FixedClock> m_clock;
    RecordedWork m_work;
    QString m_library;

    QString In(const QString& name) const { return m_home->Path(u"bücher und backups/"_s + name); }
    QString Backup() const { return In(u"Bäume260302.qbb"_s); }
    QStringList Names() const
    {
        return QDir(In({})).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    /// Items with texts, links, bookmarks, stored files of all sizes about a chunk, and pages with folders.
    void MakeFullLibrary()
    {
        QDir().mkpath(In({}));
        const auto library = MakeLibrary(m_library);
        const qint64 one = AddItem(*library, 0, u"Ünï 漢字"_s, u"int main() { return 0; }"_s);
        const qint64 two = AddItem(*library, one, u"two"_s);
        AddItem(*library, 0, u"three"_s);
        library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (1, 2, 'därüber')"_s);
        library->Execute(u"INSERT INTO BookmarkGroups (\"Group\") VALUES ('Größe')"_s);
        library->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (2, 1)"_s);
        for (const int size : {0, 1, 16383, 16384, 16385, 32768, 100000}) {
            QByteArray bytes(size, Qt::Uninitialized);
            for (int i = 0; i < size; ++i)
                bytes[i] = char(i * 31 + size);
            AddStoredFile(*library, size % 2 ? one : two, u"datei %1 ß.bin"_s.arg(size), bytes, m_clock->Now());
        }
        library->Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = 3900000000 WHERE ID IN (1, 2)"_s);
        const QString pages = library->HTMLFolder();
        WriteFile(pages + u"1.htm"_s, "<p>one</p>");
        WriteFile(pages + u"1/1.htm"_s, "a file of the page's own name");
        WriteFile(pages + u"1/bild ü.png"_s, QByteArray(20000, 'p'));
        WriteFile(pages + u"1/sub/tief/er.css"_s, "css");
        WriteFile(pages + u"1/"_s + QString(120, u'n') + u".txt"_s, "a long name");
        WriteFile(pages + u"2.htm"_s, QByteArray());
        WriteFile(pages + u"3.htm"_s, "of an item that is said to have none");
        WriteFile(pages + u"3/pic.png"_s, "picture");
        WriteFile(pages + u"default.htm"_s, "welcome");
        WriteFile(pages + u"default/logo.png"_s, "logo");
        WriteFile(pages + u"default2.htm"_s, "template");
        WriteFile(pages + u".library"_s, library->Identity().toUtf8());
        WriteFile(library->FilesFolder() + u".library"_s, library->Identity().toUtf8());
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_clock = std::make_unique<FixedClock>();
        m_work.Forget();
        m_library = m_home->Path(u"lib ö/Bäume.qbd"_s);
        QDir().mkpath(m_home->Path(u"lib ö"_s));
        MakeFullLibrary();
    }
    void cleanup()
    {
        m_clock.reset();
        m_home.reset();
    }

    void backup_comesBackByteByByte()
    {
        const QMap<QString, QByteArray> before = StateOf(m_library);
        const BackUpResult result = BackUpLibrary(m_library, Backup(), {}, m_work);
        QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
        QCOMPARE(result.Files, QStringList{Backup()});
        QCOMPARE(result.Summary.Files.Count, 7);
        QCOMPARE(result.Summary.Files.Bytes, 0 + 1 + 16383 + 16384 + 16385 + 32768 + 100000);
        QCOMPARE(result.Summary.Pages.Count, 11);
        QCOMPARE(DifferenceOf(StateOf(m_library), before), QString());
        const RestoreResult restored = RestoreLibrary(Backup(), In(u"zurück.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(restored.Library, In(u"zurück.qbd"_s));
        QCOMPARE(restored.Items, 3);
        QCOMPARE(DifferenceOf(StateOf(restored.Library), before), QString());
        QCOMPARE(Names(), (QStringList{u"Bäume260302.qbb"_s, u"zurück.qbd"_s, u"zurück_Files"_s, u"zurück_HTML"_s}));
        const auto library = Library::Open(restored.Library);
        QCOMPARE(ReadFile(library->FilesFolder() + u".library"_s).trimmed(), library->Identity().toUtf8());
        QCOMPARE(library->GetTableDef(u"Files"_s).FindField(u"File"_s), nullptr);
    }

    void backup_isOneEntryWithTheContentsInItsTables()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        BrindletonZip zip;
        QCOMPARE(zip.FirstFileName(Backup()), u"Bäume260302.qbt"_s);
        QCOMPARE(zip.Entries(Backup()).size(), size_t(1));
        QVERIFY(zip.ExtractTo(Backup(), In({})));
        const auto database = DBEngine::OpenDatabase(In(u"Bäume260302.qbt"_s));
        const std::vector<Field>& fields = database->GetTableDef(u"Files"_s).Fields;
        QCOMPARE(fields[3].Name, u"File"_s);
        QCOMPARE(fields[3].OrdinalPosition, 4);
        QCOMPARE(Texts(*database, u"SELECT ItemIDRef || ' ' || Name || ' ' || Folder FROM HTMLFiles WHERE length(Name) "
                                  "< 50 ORDER BY rowid"_s),
                 (QStringList{u"1 1.htm "_s, u"1 1.htm "_s, u"1 bild ü.png "_s, u"1 er.css sub\\tief\\"_s,
                              u"2 2.htm "_s, u"0 default.htm "_s, u"0 logo.png default\\"_s, u"0 default2.htm "_s,
                              u"0 pic.png 3\\"_s, u"0 3.htm "_s}));
        QCOMPARE(database->QueryValue(u"SELECT length(File) FROM Files WHERE Title = 'datei 16385 ß.bin'"_s),
                 Value(16385));
    }

    void summary_isReadWithoutUnpacking()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        const auto summary = ReadBackupSummary(Backup());
        QVERIFY(summary);
        QCOMPARE(summary->Name, u"Bäume"_s);
        QCOMPARE(summary->Made, m_clock->Now());
        QCOMPARE(summary->Rows.value(u"Items"_s), 3);
        QCOMPARE(summary->Library, Library::Open(m_library)->Identity());
        QVERIFY(!ReadBackupSummary(m_library));
        QVERIFY(CheckBackup(Backup(), In({}), m_work).Faults.isEmpty());
        QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
    }

    void volumes_areMadeAndRestoredFrom()
    {
        const QMap<QString, QByteArray> before = StateOf(m_library);
        const BackUpResult result = BackUpLibrary(m_library, Backup(), {.VolumeSize = 3000}, m_work);
        QVERIFY(result.Files.size() > 2);
        QCOMPARE(Names().size(), result.Files.size());
        QCOMPARE(ReadBackupSummary(result.Files[1])->Files, result.Summary.Files);
        RestoreLibrary(result.Files[1], In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(DifferenceOf(StateOf(In(u"r.qbd"_s)), before), QString());
        QB_VERIFY_RAISES(BackUpLibrary(m_library, Backup(), {.VolumeSize = 3000}, m_work), 3204);
        QCOMPARE(Names().filter(u".qbb."_s).size(), result.Files.size());
        QFile::remove(result.Files[1]);
        const QStringList left = Names();
        QB_VERIFY_RAISES(RestoreLibrary(result.Files[0], In(u"s.qbd"_s), RestoreOver::Refuse, m_work), 75);
        QCOMPARE(Names(), left);
    }

    void progress_growsToItsEnd()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        QVERIFY(std::is_sorted(m_work.Done.begin(), m_work.Done.end()));
        QCOMPARE(m_work.Done.last(), m_work.Totals.last());
        QCOMPARE(m_work.Said.last(), u"101 Successfully backed up"_s);
        QVERIFY(m_work.Said.contains(u"28 Saving files..."_s)); // the third of seven
        QCOMPARE(m_work.Said.count(u"101 "_s), 2);
        m_work.Forget();
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QVERIFY(std::is_sorted(m_work.Done.begin(), m_work.Done.end()));
        QCOMPARE(m_work.Said.first(), u"25 Unpacking Database..."_s);
        QVERIFY(m_work.Said.contains(u"50 Unpacking Database..."_s));
        QVERIFY(m_work.Said.contains(u"75 Copying Database..."_s));
    }

    void cancelledWork_leavesWhatWasThere()
    {
        WriteFile(Backup(), "the one before");
        for (const int part : {0, 20, 60, 400, 900}) {
            m_work.Forget();
            m_work.Ends = [part](qint64 done) { return done >= part; };
            QVERIFY(!CDBManipulate(m_work).BackUp(m_library, Backup()));
            QCOMPARE(ReadFile(Backup()), "the one before");
            QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
        }
        m_work.Forget();
        QVERIFY(CDBManipulate(m_work).BackUp(m_library, Backup()));
        for (const int part : {0, 300, 500}) {
            m_work.Forget();
            m_work.Ends = [part](qint64 done) { return done >= part; };
            QString target = In(u"r.qbd"_s);
            QVERIFY(!CDBManipulate(m_work).Restore(target, Backup(), false, false));
            QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
        }
    }

    void cancelledPulse_leavesWhatWasThere()
    {
        WriteFile(Backup(), "the one before");
        int cancelled = 0;
        for (int pulse = 1; pulse < 1000; ++pulse) {
            m_work.Forget();
            m_work.Ends = [&](qint64) { return m_work.Pulses >= pulse; };
            if (CDBManipulate(m_work).BackUp(m_library, Backup()))
                break;
            ++cancelled;
            QCOMPARE(ReadFile(Backup()), "the one before");
            QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
        }
        QVERIFY(cancelled >= 4); // folders, pages, files and the comparison at least
        QVERIFY(ReadBackupSummary(Backup()));
    }

    void restore_showsThatItGoesOnInEachStep()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        struct : RecordedWork {
            void Pulse() override { PulsesAt << (Done.isEmpty() ? 0 : Done.last()); }
            QList<qint64> PulsesAt;
        } work;
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, work);
        QVERIFY(work.PulsesAt.count(750) >= 3); // the columns go, the check, the flush
        work.PulsesAt.clear();
        work.Forget();
        QVERIFY(CheckBackup(Backup(), In({}), work).Faults.isEmpty());
        QVERIFY(work.PulsesAt.contains(600)); // the check of the structure
    }

    void largeFile_showsThatItGoesOnWhileItGetsRoom()
    {
        const auto library = Library::Open(m_library);
        library->AppendField(u"Files"_s, {.Name = u"File"_s, .Type = FieldType::LongBinary, .OrdinalPosition = 4});
        CDBManipulate contents(m_work);
        contents.Use(*library);
        WriteFile(In(u"large"_s), QByteArray(1024 * 1024, 'x'));
        WriteFile(In(u"empty"_s), {});
        Transaction transaction(*library);
        contents.ImportFileToField({*library, u"Files"_s, 1}, In(u"empty"_s));
        QCOMPARE(m_work.Done, QList<qint64>{0}); // many of them would take their time
        QCOMPARE(m_work.Pulses, 0);
        contents.ImportFileToField({*library, u"Files"_s, 1}, In(u"large"_s));
        QVERIFY(m_work.Pulses >= 1);
        m_work.Ends = [](qint64) { return true; };
        CDBManipulate other(m_work);
        other.Use(*library);
        QB_VERIFY_RAISES(other.ImportFileToField({*library, u"Files"_s, 2}, In(u"large"_s)), 18);
    }

    void backupOfAnotherLibrary_isNotReplaced()
    {
        const QString other = m_home->Path(u"other.qbd"_s);
        MakeLibrary(other).reset();
        BackUpLibrary(other, Backup(), {}, m_work);
        const QByteArray before = ReadFile(Backup());
        QB_VERIFY_RAISES(BackUpLibrary(m_library, Backup(), {}, m_work), 3204);
        QCOMPARE(ReadFile(Backup()), before);
        QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
        BackUpLibrary(other, Backup(), {}, m_work);
    }

    void volumesOfAnotherSet_areRefused()
    {
        const BackUpResult result = BackUpLibrary(m_library, Backup(), {.VolumeSize = 3000}, m_work);
        BackUpLibrary(m_library, In(u"later.qbb"_s), {.VolumeSize = 3000}, m_work);
        WriteFile(In(u"later.qbb.002"_s), ReadFile(In(u"later.qbb.002"_s)).replace(0, 8, "another!"));
        const QByteArray first = ReadFile(result.Files[0]), second = ReadFile(result.Files[1]);
        const QStringList names = Names();
        const auto refuses = [&](const QByteArray& one, const QByteArray& two) {
            WriteFile(result.Files[0], one);
            WriteFile(result.Files[1], two);
            QB_VERIFY_RAISES(RestoreLibrary(result.Files[0], In(u"r.qbd"_s), RestoreOver::Refuse, m_work), 75);
            QCOMPARE(Names(), names);
        };
        refuses(first, ReadFile(In(u"later.qbb.002"_s)));
        refuses(second, first); // in the wrong order
        refuses(first, second.chopped(1));
        WriteFile(result.Files[1], second);
        RestoreLibrary(result.Files[0], In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
    }

    void missingPage_isNotedAndGoneInTheBackupOnly()
    {
        QFile::remove(HTMLFolderOf(m_library) + u"1.htm"_s);
        BackUpLibrary(m_library, Backup(), {}, m_work);
        const QByteArray log = ReadFile(ErrorLogFile());
        QVERIFY2(
            log.contains("50000, Missing web pages to an item., CDBManipulte, ImportAllHTMLFiles, ItemId: 1, Title: "),
            log.constData());
        QCOMPARE(Library::Open(m_library)->QueryValue(u"SELECT HTMLPage FROM Items WHERE ID = 1"_s), Value(-1));
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        const auto restored = Library::Open(In(u"r.qbd"_s));
        QCOMPARE(restored->QueryValue(u"SELECT HTMLPage || HTMLLastUpdated FROM Items WHERE ID = 1"_s), Value(u"00"_s));
        QCOMPARE(ReadFile(restored->HTMLFolder() + u"1/sub/tief/er.css"_s), "css"); // nothing else is lost
    }

    void missingFile_comesBackEmpty()
    {
        QFile::remove(FilesFolderOf(m_library) + u"3 - datei 16383 ß.bin"_s);
        QCOMPARE(BackUpLibrary(m_library, Backup(), {}, m_work).MissingFiles, 1);
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(ReadFile(FilesFolderOf(In(u"r.qbd"_s)) + u"3 - datei 16383 ß.bin"_s), QByteArray());
    }

    void linkInTheFolders_isNotFollowed()
    {
        WriteFile(m_home->Path(u"secret.txt"_s), "secret");
        QFile::remove(FilesFolderOf(m_library) + u"2 - datei 1 ß.bin"_s);
        QVERIFY(QFile::link(m_home->Path(u"secret.txt"_s), FilesFolderOf(m_library) + u"2 - datei 1 ß.bin"_s));
        QVERIFY(QFile::link(m_home->Path(u"secret.txt"_s), HTMLFolderOf(m_library) + u"1/link.txt"_s));
        BackUpLibrary(m_library, Backup(), {}, m_work);
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(ReadFile(FilesFolderOf(In(u"r.qbd"_s)) + u"2 - datei 1 ß.bin"_s), QByteArray());
        QVERIFY(!QFileInfo::exists(HTMLFolderOf(In(u"r.qbd"_s)) + u"1/link.txt"_s));
    }

    void nameThatEndsInT_isABackupLikeOthers()
    {
        const QMap<QString, QByteArray> before = StateOf(m_library);
        BackUpLibrary(m_library, In(u"x.qbt"_s), {}, m_work);
        QCOMPARE(Names(), QStringList{u"x.qbt"_s});
        RestoreLibrary(In(u"x.qbt"_s), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(DifferenceOf(StateOf(In(u"r.qbd"_s)), before), QString());
    }

    void databaseUnderTheName_isNotReplaced()
    {
        const QMap<QString, QByteArray> before = StateOf(m_library);
        QB_VERIFY_RAISES(BackUpLibrary(m_library, m_library, {}, m_work), 3204);
        const QString other = In(u"Bäume260302.qbd"_s);
        MakeLibrary(other).reset();
        QB_VERIFY_RAISES(BackUpLibrary(m_library, other, {}, m_work), 3204);
        QVERIFY(Library::Open(other));
        QCOMPARE(DifferenceOf(StateOf(m_library), before), QString());
    }

    void fullDisk_leavesTheBackupBefore()
    {
        WriteFile(Backup(), "the one before");
        for (const rlim_t limit : {1000U, 60'000U, 150'000U, 250'000U, 300'000U}) {
            const FileSizeLimit full(limit);
            ScriptedPrompts script;
            script.ExpectError();
            QVERIFY(!CDBManipulate(m_work).BackUp(m_library, Backup()));
        }
        QCOMPARE(ReadFile(Backup()), "the one before");
        QCOMPARE(Names(), QStringList{u"Bäume260302.qbb"_s});
    }

    void libraryThatCanOnlyBeRead_isBackedUp()
    {
        const QMap<QString, QByteArray> before = StateOf(m_library);
        constexpr QFileDevice::Permissions ForAll(0x7777);
        constexpr QFileDevice::Permissions ToRead(0x5555);
        for (const QString& folder : {m_home->Path(), m_home->Path(u"lib ö"_s)})
            QVERIFY(QFile::setPermissions(folder, ToRead));
        QVERIFY(QFile::setPermissions(In({}), ForAll));
        QVERIFY(QFile::setPermissions(m_library, QFileDevice::Permissions(0x4444)));
        {
            const OrdinaryUser user;
            BackUpLibrary(m_library, Backup(), {}, m_work);
        }
        for (const QString& folder : {m_home->Path(), m_home->Path(u"lib ö"_s)})
            QVERIFY(QFile::setPermissions(folder, ForAll));
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(DifferenceOf(StateOf(In(u"r.qbd"_s)), before), QString());
    }

    void libraryOfALaterVersion_isRefused()
    {
        DBEngine::OpenDatabase(m_library)->Execute(u"PRAGMA user_version = 3"_s);
        QB_VERIFY_RAISES(BackUpLibrary(m_library, Backup(), {}, m_work), 3051);
        QCOMPARE(Names(), QStringList());
    }

    // Restoring over a library

    void existingLibrary_isReplacedOrGetsANumber()
    {
        const QMap<QString, QByteArray> full = StateOf(m_library);
        BackUpLibrary(m_library, Backup(), {}, m_work);
        const QString other = In(u"other.qbd"_s);
        {
            const auto library = MakeLibrary(other);
            AddItem(*library, 0, u"of the other"_s);
            AddStoredFile(*library, 1, u"own.txt"_s, "own", {});
        }
        const QMap<QString, QByteArray> before = StateOf(other);
        ScriptedPrompts script;
        const QString caption = u"Replace Current Database?"_s;
        script.ExpectMsgBox(caption, MsgBoxResult::No);
        QString target = other;
        QVERIFY(CDBManipulate(m_work).Restore(target, Backup(), false, false));
        QCOMPARE(target, In(u"other1.qbd"_s));
        QCOMPARE(DifferenceOf(StateOf(target), full), QString());
        QCOMPARE(DifferenceOf(StateOf(other), before), QString());
        QCOMPARE(script.Messages.last().DefaultAnswer(), MsgBoxResult::No);
        QCOMPARE(script.Messages.last().Icon, MsgBoxIcon::Exclamation);

        script.ExpectMsgBox(caption, MsgBoxResult::Yes);
        target = other;
        QVERIFY(CDBManipulate(m_work).Restore(target, Backup(), false, false));
        QCOMPARE(target, other);
        QCOMPARE(DifferenceOf(StateOf(other), full), QString()); // nothing of the other one's files is left
        target = other;
        QVERIFY(CDBManipulate(m_work).Restore(target, Backup(), false, true)); // without a question
        QB_VERIFY_RAISES(RestoreLibrary(Backup(), other, RestoreOver::Refuse, m_work), 3204);
    }

    void openLibrary_isNotReplaced()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        const QMap<QString, QByteArray> before = StateOf(m_library);
        const auto open = Library::Open(m_library);
        QB_VERIFY_RAISES(RestoreLibrary(Backup(), m_library, RestoreOver::Replace, m_work), 3045);
        QCOMPARE(DifferenceOf(StateOf(m_library), before), QString());
        BackUpLibrary(m_library, Backup(), {}, m_work); // but it is backed up
    }

    void restoreThatFails_leavesTheLibraryBefore()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        const QMap<QString, QByteArray> before = StateOf(m_library);
        const QByteArray whole = ReadFile(Backup());
        for (const int percent : {0, 1, 10, 50, 90, 99}) {
            WriteFile(Backup(), whole.left(whole.size() * percent / 100));
            ScriptedPrompts script;
            script.ExpectMsgBox(u"Replace Current Database?"_s, MsgBoxResult::Yes);
            script.ExpectError();
            QString target = m_library;
            QVERIFY(!CDBManipulate(m_work).Restore(target, Backup(), false, false));
            QCOMPARE(DifferenceOf(StateOf(m_library), before), QString());
        }
        WriteFile(Backup(), whole);
        for (const rlim_t limit : {1000U, 60'000U, 150'000U}) {
            const FileSizeLimit full(limit);
            QVERIFY(!Raised([&] { RestoreLibrary(Backup(), m_library, RestoreOver::Replace, m_work); }).isEmpty());
        }
        QCOMPARE(DifferenceOf(StateOf(m_library), before), QString());
        QCOMPARE(QDir(m_home->Path(u"lib ö"_s))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
                 (QStringList{u"Bäume.qbd"_s, u"Bäume_Files"_s, u"Bäume_HTML"_s}));
    }

    void foldersWithoutLibrary_areKeptUnderOtherNames()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        WriteFile(In(u"r_Files/1 - mine.txt"_s), "mine");
        QDir().mkpath(In(u"r_HTML"_s)); // an empty one is nobody's
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QCOMPARE(ReadFile(In(u"r_Files(1)/1 - mine.txt"_s)), "mine");
        QVERIFY(!QFileInfo::exists(In(u"r_Files/1 - mine.txt"_s)));
        QVERIFY(!QFileInfo::exists(In(u"r_HTML(1)"_s)));
    }

    void folderWithoutLibrary_neverTakesThePlaceOfTheNewOne()
    {
        const QString plain = m_home->Path(u"plain.qbd"_s); // without pages: its folder of them is empty
        MakeLibrary(plain).reset();
        BackUpLibrary(plain, Backup(), {}, m_work);
        WriteFile(In(u"r_HTML/1.htm"_s), "mine");
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Refuse, m_work);
        QVERIFY(!QFileInfo::exists(In(u"r_HTML/1.htm"_s)));
        QCOMPARE(ReadFile(In(u"r_HTML(1)/1.htm"_s)), "mine");
    }

    void rights_areNoMoreThanThoseOfTheLibrary()
    {
        const QFile::Permissions own = QFile::ReadOwner | QFile::WriteOwner;
        const auto rightsOf = [](const QString& file) {
            return QFile::permissions(file) & ~(QFile::ReadUser | QFile::WriteUser);
        };
        const auto restored = [&] {
            QFile::remove(In(u"r.qbd"_s));
            RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Number, m_work);
            return rightsOf(In(u"r.qbd"_s));
        };
        BackUpLibrary(m_library, Backup(), {}, m_work);
        QVERIFY(rightsOf(Backup()) != own);
        QVERIFY(restored() != own);
        QVERIFY(QFile::setPermissions(In(u"r.qbd"_s), own));
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Replace, m_work);
        QCOMPARE(rightsOf(In(u"r.qbd"_s)), own);
        QVERIFY(QFile::setPermissions(Backup(), own));
        QCOMPARE(restored(), own);
        QVERIFY(QFile::setPermissions(m_library, own));
        QFile::remove(Backup());
        BackUpLibrary(m_library, Backup(), {}, m_work);
        QCOMPARE(rightsOf(Backup()), own);
    }

    void foldersOfAnotherLibrary_areNotBackedUp()
    {
        WriteFile(HTMLFolderOf(m_library) + u".library"_s, "another one");
        WriteFile(FilesFolderOf(m_library) + u".library"_s, "another one");
        const BackUpResult result = BackUpLibrary(m_library, Backup(), {}, m_work);
        QCOMPARE(result.Summary.Files.Count, 0);
        QCOMPARE(result.Summary.Pages.Count, 0);
    }

    /// It counts once the library knows its mark.
    void pageThatIsOnItsWay_isBackedUpOnceItCounts()
    {
        const QString mark(32, u'a');
        const QString folder = HTMLFolderOf(m_library) + u".changing-pages-%1/"_s.arg(mark);
        WriteFile(folder + u"new/1.htm"_s, "new");
        QCOMPARE(BackUpLibrary(m_library, Backup(), {}, m_work).Summary.Pages.Count, 11);
        WriteFile(folder + u"changes"_s, "1 replace\n");
        QCOMPARE(BackUpLibrary(m_library, Backup(), {}, m_work).Summary.Pages.Count, 11);
        WriteChecksums(*Library::Open(m_library), u"PageChange"_s, 1, 0, {{mark, 0}});
        BackUpLibrary(m_library, Backup(), {}, m_work);
        RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Replace, m_work);
        FinishPendingPages(*Library::Open(In(u"r.qbd"_s)));
        QCOMPARE(ReadFile(HTMLFolderOf(In(u"r.qbd"_s)) + u"1.htm"_s), "new");
    }

    void libraryOfTheNameWithAnotherExtension_keepsItsFolders()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        MakeLibrary(In(u"r.qbr"_s)).reset();
        QB_VERIFY_RAISES(RestoreLibrary(Backup(), In(u"r.qbd"_s), RestoreOver::Replace, m_work), 3204);
    }

    // Bad input

    void hostileContents_areRefusedWithNothingWritten_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<int>("number");
        QTest::newRow("name") << u"UPDATE HTMLFiles SET Name = '../x' WHERE rowid = 2"_s << 75;
        QTest::newRow("name of a folder") << u"UPDATE HTMLFiles SET Name = '..' WHERE rowid = 2"_s << 75;
        QTest::newRow("backslash") << u"UPDATE HTMLFiles SET Name = '..\\x' WHERE rowid = 2"_s << 75;
        QTest::newRow("empty name") << u"UPDATE HTMLFiles SET Name = Null WHERE rowid = 2"_s << 75;
        QTest::newRow("mark") << u"UPDATE HTMLFiles SET ItemIDRef = 0, Name = '.library', Folder = ''"_s << 75;
        QTest::newRow("folder") << u"UPDATE HTMLFiles SET Folder = '..\\..\\' WHERE rowid = 3"_s << 75;
        QTest::newRow("slashes") << u"UPDATE HTMLFiles SET Folder = 'a/../../' WHERE rowid = 3"_s << 75;
        QTest::newRow("root") << u"UPDATE HTMLFiles SET Folder = '\\etc\\' WHERE rowid = 3"_s << 75;
        QTest::newRow("title") << u"UPDATE Files SET Title = '/../../x' WHERE ID = 3"_s << 75;
        QTest::newRow("file in the place of a folder")
            << u"UPDATE HTMLFiles SET ItemIDRef = 0, Name = '1', Folder = '' WHERE rowid = 1"_s << 75;
        QTest::newRow("trigger") << u"CREATE TRIGGER t AFTER INSERT ON Items BEGIN DELETE FROM Files; END"_s << 3343;
        QTest::newRow("view") << u"CREATE VIEW v AS SELECT * FROM Items"_s << 3343;
        QTest::newRow("no library") << u"DROP TABLE DBVersion"_s << 3343;
        QTest::newRow("no contents") << u"DROP TABLE HTMLFiles"_s << 3343;
        QTest::newRow("no properties") << u"DELETE FROM Properties"_s << 3049;
        QTest::newRow("newer") << u"PRAGMA user_version = 99"_s << 3051;
    }
    void hostileContents_areRefusedWithNothingWritten()
    {
        QFETCH(QString, sql);
        QFETCH(int, number);
        BackUpLibrary(m_library, In(u"x.qbb"_s), {}, m_work);
        BrindletonZip zip;
        QVERIFY(zip.ExtractTo(In(u"x.qbb"_s), In({})));
        DBEngine::OpenDatabase(In(u"x.qbt"_s))->Execute(sql);
        zip.SetZipFileName(In(u"x.qbb"_s));
        zip.AddFile(In(u"x.qbt"_s));
        QVERIFY(zip.Zip());
        QFile::remove(In(u"x.qbt"_s));
        const QMap<QString, QByteArray> before = ContentsOf(m_home->Path());
        QB_VERIFY_RAISES(RestoreLibrary(In(u"x.qbb"_s), In(u"r.qbd"_s), RestoreOver::Refuse, m_work), number);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void archiveOfOtherThings_isRefused()
    {
        WriteFile(In(u"a.txt"_s), "a");
        BrindletonZip zip;
        zip.SetZipFileName(In(u"x.qbb"_s));
        zip.AddFile(In(u"a.txt"_s));
        QVERIFY(zip.Zip());
        QB_VERIFY_RAISES(RestoreLibrary(In(u"x.qbb"_s), In(u"r.qbd"_s), RestoreOver::Refuse, m_work), 3343);
        QCOMPARE(Names(), (QStringList{u"a.txt"_s, u"x.qbb"_s}));
        QCOMPARE(CheckBackup(In(u"x.qbb"_s), In({}), m_work).Faults.size(), 1);
    }

    void damagedBackup_hasFaults()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        const QByteArray whole = ReadFile(Backup());
        QByteArray flipped = whole;
        flipped[whole.size() / 3] = char(flipped[whole.size() / 3] ^ 1);
        WriteFile(Backup(), flipped);
        QVERIFY(!CheckBackup(Backup(), In({}), m_work).Faults.isEmpty());
        WriteFile(Backup(), whole);
        QVERIFY(CheckBackup(Backup(), In({}), m_work).Faults.isEmpty());
    }

    /// Packed anew with other contents, it is whole but not what it says.
    void changedContents_areNoticed()
    {
        BackUpLibrary(m_library, In(u"x.qbb"_s), {}, m_work);
        const QByteArray comment = ReadBackupSummary(In(u"x.qbb"_s))->ToComment();
        for (const QString& sql :
             {u"UPDATE Files SET File = X'00' WHERE ID = 3"_s, u"DELETE FROM Items WHERE ID = 3"_s,
              u"DELETE FROM HTMLFiles WHERE rowid = 2"_s, u"UPDATE HTMLFiles SET File = X'00' WHERE rowid = 2"_s,
              u"UPDATE Properties SET DBID = 'another'"_s}) {
            BrindletonZip zip;
            QVERIFY(zip.ExtractTo(In(u"x.qbb"_s), In({})));
            DBEngine::OpenDatabase(In(u"x.qbt"_s))->Execute(sql);
            zip.SetZipFileName(In(u"y.qbb"_s));
            zip.AddFile(In(u"x.qbt"_s));
            zip.SetComment(comment);
            QVERIFY(zip.Zip());
            QVERIFY(!CheckBackup(In(u"y.qbb"_s), In({}), m_work).Faults.isEmpty());
        }
    }

    void containerOfOtherBytes_isNotAsItWasPacked()
    {
        BackUpLibrary(m_library, Backup(), {}, m_work);
        BrindletonZip zip;
        QVERIFY(zip.ExtractTo(Backup(), In({})));
        const QString database = Backup().chopped(1) + u't';
        const QByteArray whole = ReadFile(database);
        QCOMPARE(WhyNotAsPacked(database, Backup(), m_work), QString());
        QByteArray flipped = whole;
        flipped[whole.size() / 2] = char(flipped[whole.size() / 2] ^ 1);
        for (const QByteArray& other : {flipped, whole.left(whole.size() - 1), whole + 'x'}) {
            WriteFile(database, other);
            QVERIFY(!WhyNotAsPacked(database, Backup(), m_work).isEmpty());
        }
    }

    // Transfer files

    void transferFile_goesOnceItsLibraryIsWhole()
    {
        ScriptedPrompts script;
        script.ExpectInputBox(u"Short Description"_s, u"Laptop"_s);
        GiveOutChild(m_library, In(u"child.qbr"_s));
        QString target = In(u"child.qbd"_s);
        QVERIFY(CDBManipulate(m_work).Restore(target, In(u"child.qbr"_s), false, true));
        QVERIFY(!QFileInfo::exists(In(u"child.qbr"_s)));
        QCOMPARE(ContentsOf(FilesFolderOf(target)).keys(), ContentsOf(FilesFolderOf(m_library)).keys());
        QVERIFY(Library::Open(target)->IsChildReplica());
    }

    void backupNamedAsATransferFile_isNone()
    {
        BackUpLibrary(m_library, In(u"child.qbr"_s), {}, m_work);
        QString target = In(u"child.qbd"_s);
        ScriptedPrompts script;
        script.ExpectError();
        QVERIFY(!CDBManipulate(m_work).Restore(target, In(u"child.qbr"_s), false, true));
        QVERIFY(QFileInfo::exists(In(u"child.qbr"_s)));
        QVERIFY(!QFileInfo::exists(target));
    }

    void unpackedDatabase_becomesALibraryInItsPlace()
    {
        BackUpLibrary(m_library, In(u"x.qbb"_s), {}, m_work);
        QVERIFY(BrindletonZip().ExtractTo(In(u"x.qbb"_s), In({})));
        QString target = In(u"x.qbt"_s);
        QVERIFY(CDBManipulate(m_work).Restore(target, {}, false, false));
        QCOMPARE(DifferenceOf(StateOf(In(u"x.qbt"_s)), StateOf(m_library)), QString());
    }

    // The pieces

    void contents_goThereAndBackInOddPieces()
    {
        const auto library = Library::Open(m_library);
        library->AppendField(u"Files"_s, {.Name = u"File"_s, .Type = FieldType::LongBinary, .OrdinalPosition = 4});
        CDBManipulate contents;
        contents.Use(*library);
        const PackedField field{*library, u"Files"_s, 1};
        for (const int size : {0, 1, 16383, 16384, 16385, 50000}) {
            const QByteArray bytes = QByteArray("0123456789abcdefg").repeated(size / 17 + 1).left(size);
            WriteFile(In(u"in"_s), bytes);
            Transaction transaction(*library);
            contents.ImportFileToField(field, In(u"in"_s));
            transaction.Commit();
            WriteFile(In(u"out"_s), "there before");
            contents.SaveToFile(field, In(u"out"_s));
            QCOMPARE(ReadFile(In(u"out"_s)), bytes);
        }
    }

    void secondUse_isKeptOut()
    {
        {
            const SoleUse alone(m_library, u"test"_s);
            QB_VERIFY_RAISES(Library::Open(m_library), 3045);
            QB_VERIFY_RAISES(SoleUse(m_library, u"test"_s), 3045);
        }
        {
            const auto open = Library::Open(m_library);
            QB_VERIFY_RAISES(SoleUse(m_library, u"test"_s), 3045);
            const auto again = Library::Open(m_library);
        }
        const SoleUse alone(m_library, u"test"_s);
        QCOMPARE(QDir(m_home->Path(u"lib ö"_s)).entryList({u"*open*"_s}, QDir::Files | QDir::Hidden), QStringList());
    }
};

QB_TEST_MAIN(TestBackup)
#include "tst_backup.moc"
