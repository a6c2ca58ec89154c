#include "maintenance/ContentCheck.h"
#include "maintenance/LibraryBackup.h"
#include "platform/dao/DBEngine.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "store/OwnIndexes.h"
#include "store/StoredFiles.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the program has written is told from what has rotted since, and from what other programs have written.
class TestContentCheck : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::optional<FixedClock> m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;

    QString Path() const { return m_home->Path(u"fäule.qbd"_s); }

    QStringList Faults(qint64 unknown = 0)
    {
        const ContentCheck found = CheckContents(*m_library);
        if (found.UnknownRows != unknown)
            return {u"%1 rows are unknown"_s.arg(found.UnknownRows)};
        QStringList texts;
        for (const LibraryFault& fault : found.Faults)
            texts << u"%1 %2 %3: %4"_s.arg(FaultName(fault.What), fault.Table).arg(fault.Id).arg(fault.Text);
        return texts;
    }

    /// Flips the lowest bit of a letter in the library's file.
    void FlipBit(const QByteArray& word)
    {
        m_library.reset();
        QByteArray bytes = ReadFile(Path());
        const qsizetype at = bytes.indexOf(word);
        QVERIFY(at > 0 && bytes.indexOf(word, at + 1) < 0);
        bytes[at] = char(bytes[at] ^ 1);
        WriteFile(Path(), bytes);
        m_library = Library::Open(Path());
    }

    void Change(void (ItemRow::*set)(const QString&), const QString& text, bool stamps = true)
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        (item.*set)(text);
        item.SetDontUpdateLastChangedDate(!stamps);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
    }

    qint64 Attach(const QString& title, const QByteArray& bytes)
    {
        WriteFile(m_home->Path(title), bytes);
        CFileObject file;
        file.Initialise(*m_library, {});
        file.SetCodeID(QString::number(m_item));
        file.SetStoredFile(m_home->Path(title));
        return file.Commit() ? file.Key().toLongLong() : 0;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_clock.emplace();
        m_library = MakeLibrary(Path());
        CCodeItem item;
        item.Initialise(*m_library, {});
        item.SetTitle(u"Schlüssel"_s);
        item.SetDescription(u"describes"_s);
        item.SetInfo(u"informs"_s);
        item.SetCode(u"int codeText; "_s + QString(20000, u'x'));
        item.SetExample(u"usageText"_s);
        item.SetNotes(u"noteText"_s);
        QVERIFY(item.Commit());
        m_item = item.Key().toLongLong();
    }
    void cleanup()
    {
        m_library.reset();
        m_clock.reset();
        m_home.reset();
    }

    void backup_looksForDamageFirst()
    {
        const QString file = m_home->Path(u"b.qbb"_s);
        QVERIFY(BackUpLibrary(Path(), file, {}).Damage.empty());
        QCOMPARE(CheckBackup(file, m_home->Path(), NoWork()).Faults, QStringList());
        FlipBit("usageText");
        QB_VERIFY_RAISES(BackUpLibrary(Path(), file, {}), 3204); // the good one stays
        QCOMPARE(CheckBackup(file, m_home->Path(), NoWork()).Faults, QStringList());
        QFile::remove(file);
        const std::vector<LibraryFault> damage = BackUpLibrary(Path(), file, {}).Damage;
        QCOMPARE(damage.size(), size_t(1));
        QVERIFY(damage[0].Text.contains(u"has a damaged usage"_s));
        QCOMPARE(ReadBackupSummary(file)->Damaged, 1);
        QVERIFY(CheckBackup(file, m_home->Path(), NoWork()).Faults.join(u' ').contains(u"were damaged already"_s));
        QCOMPARE(BackUpLibrary(Path(), file, {}).Damage.size(), size_t(1)); // it is no better
    }

    void cancelledCheck_ends()
    {
        struct Cancelled : Work {
            bool IsCancelled() override { return true; }
        } cancelled;
        QB_VERIFY_RAISES(CheckContents(*m_library, cancelled), 18);
    }

    void largeFile_showsThatItGoesOnAndCanBeCancelled()
    {
        QVERIFY(Attach(u"file.txt"_s, "contents") > 0);
        RecordedWork work;
        CheckContents(*m_library, work);
        QCOMPARE(work.Done, (QList<qint64>{1, 2}));
        QVERIFY(work.Pulses >= 1);
        work.Forget();
        work.Ends = [&work](qint64) { return work.Pulses >= 1; };
        QB_VERIFY_RAISES(CheckContents(*m_library, work), 18);
        QCOMPARE(work.Done, QList<qint64>{1}); // it is not taken for damage
    }

    void lines_areTenAtMost()
    {
        std::vector<LibraryFault> faults(10, {.What = {}, .Table = {}, .Id = 1, .Text = u"bad"_s});
        QCOMPARE(LinesOf(faults), u"bad\r\n"_s.repeated(10));
        faults.insert(faults.end(), 3, faults[0]);
        QCOMPARE(LinesOf(faults), u"bad\r\n"_s.repeated(10) + u"... and 3 more\r\n"_s);
    }

    void whatWasWritten_hasNoFaults()
    {
        Attach(u"stored ü.bin"_s, QByteArray(3 << 20, 's'));
        QCOMPARE(Faults(), QStringList());
        m_clock->AddSeconds(5);
        Change(&CCodeItem::SetNotes, u"other notes, \U0001F600 and ä"_s);
        Change(&CCodeItem::SetCode, {}, false);
        QCOMPARE(Faults(), QStringList());
    }

    void flippedBit_isNamedByItemAndField_data()
    {
        QTest::addColumn<QByteArray>("word");
        QTest::addColumn<QString>("field");
        QTest::newRow("info") << "informs"_ba << u"info"_s;
        QTest::newRow("code") << "codeText"_ba << u"code"_s;
        QTest::newRow("usage") << "usageText"_ba << u"usage"_s;
        QTest::newRow("notes") << "noteText"_ba << u"notes"_s;
    }
    void flippedBit_isNamedByItemAndField()
    {
        QFETCH(QByteArray, word);
        QFETCH(QString, field);
        AddItem(*m_library, 0, u"healthy"_s);
        FlipBit(word);
        QVERIFY(CheckLibrary(*m_library).empty()); // which doesn't see it
        QCOMPARE(Faults(),
                 QStringList{u"damaged-text Items %1: The item %1 'Schlüssel' has a damaged %2: it is not what was "
                             "written."_s.arg(m_item)
                                 .arg(field)});
    }

    void flippedBit_isNotTakenForGoodByTheNextSave()
    {
        FlipBit("noteText");
        m_clock->AddSeconds(60);
        Change(&CCodeItem::SetCode, u"other code"_s);
        QCOMPARE(Faults().size(), 1);
        QVERIFY2(Faults()[0].contains(u"damaged notes"), qPrintable(Faults()[0]));
        Change(&CCodeItem::SetNotes, u"written anew"_s);
        QCOMPARE(Faults(), QStringList());
    }

    void storedFile_isNamedWhenItRots()
    {
        const qint64 file = Attach(u"stored ü.bin"_s, QByteArray(100000, 's'));
        const QString path = StoredFilePath(*m_library, file, u"stored ü.bin"_s);
        QByteArray bytes = ReadFile(path);
        bytes[70000] = char(bytes[70000] ^ 4);
        WriteFile(path, bytes);
        QVERIFY(CheckLibrary(*m_library).empty());
        QCOMPARE(Faults(), QStringList{u"damaged-file Files %1: The stored file %1 'stored ü.bin' is damaged: its "
                                       "contents are not what was stored."_s.arg(file)});
        m_clock->AddSeconds(60);
        CFileObject described; // which is no reason to take it for good
        described.Initialise(*m_library, QString::number(file));
        described.SetDescription(u"described"_s);
        described.SetDescriptionChanged(true);
        QVERIFY(described.Commit());
        QCOMPARE(Faults().size(), 1);
    }

    void rowOfAnotherProgram_isNotKnown()
    {
        m_library->Execute(u"UPDATE Items SET Code = 'foreign', LastChanged = LastChanged + 9 WHERE ID = ?"_s,
                           {m_item});
        m_library->Execute(u"INSERT INTO Items (Title, ParentID) VALUES ('foreign', 0)"_s);
        QCOMPARE(Faults(2), QStringList());
        m_clock->AddSeconds(60);
        Change(&CCodeItem::SetInfo, u"known from now on"_s);
        QCOMPARE(Faults(1), QStringList());
        FlipBit("noteText"); // a text that was not written since is known, too
        QCOMPARE(Faults(1).size(), 1);
    }

    void libraryOfAnOlderVersion_getsTheTableAndItsSums()
    {
        m_library->Execute(u"DROP TABLE own_Checksums"_s);
        QCOMPARE(Faults(1), QStringList());
        CompleteOwnIndexes(*m_library);
        QCOMPARE(Faults(1), QStringList());
        Change(&CCodeItem::SetInfo, u"known"_s);
        QCOMPARE(Faults(), QStringList());
        QVERIFY(!m_library->TableNames().contains(u"own_Checksums"_s));
    }

    void tableOfAnotherMaking_keepsNobodyFromSaving_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::newRow("other columns") << u"CREATE TABLE own_Checksums (Nonsense TEXT CHECK (0))"_s;
        QTest::newRow("a view") << u"CREATE VIEW own_Checksums AS SELECT 1 AS OfTable"_s;
        QTest::newRow("none") << QString();
    }
    void tableOfAnotherMaking_keepsNobodyFromSaving()
    {
        QFETCH(QString, sql);
        m_library->Execute(u"DROP TABLE own_Checksums"_s);
        if (!sql.isEmpty())
            m_library->Execute(sql);
        CompleteOwnIndexes(*m_library);
        m_library = Library::Open(Path());
        Change(&CCodeItem::SetInfo, u"saved"_s);
        QCOMPARE(m_library->QueryValue(u"SELECT Info FROM Items WHERE ID = ?"_s, {m_item}).ToText(), u"saved"_s);
        QCOMPARE(Faults(sql.isEmpty() ? 0 : 1), QStringList());
    }

    void rotInTheNoteItself_isNoneOfTheText()
    {
        m_library->Execute(u"UPDATE own_Checksums SET Sums = replace(Sums, 'Code=', 'Code=0')"_s);
        const QStringList faults = Faults(1);
        QCOMPARE(faults.size(), 1);
        QVERIFY2(faults[0].startsWith(u"damaged-checksum Items"), qPrintable(faults[0]));
    }

    void deletedRows_leaveNoNote()
    {
        const qint64 file = Attach(u"a.txt"_s, "x");
        CFileObject object;
        object.Initialise(*m_library, QString::number(file));
        object.Delete();
        QVERIFY(object.Commit());
        QCOMPARE(CountOf(*m_library, u"own_Checksums"_s), 1);
        CCodeItem item;
        item.Initialise(*m_library, QString::number(m_item));
        item.Delete();
        QVERIFY(item.Commit());
        QCOMPARE(CountOf(*m_library, u"own_Checksums"_s), 0);
    }

    void rowThatCanNotBeRead_isNamedAndTheRestIsChecked()
    {
        const qint64 healthy = AddItem(*m_library, 0, u"behind it"_s, u"healthy words"_s);
        constexpr int Link = 4; // a page of a long text begins with the number of the next one
        m_library.reset();
        QByteArray bytes = ReadFile(Path());
        const qsizetype middle = bytes.indexOf(QByteArray(4096 - Link, 'x'));
        QVERIFY(middle > 0);
        bytes.replace(middle - Link, Link, QByteArray(Link, char(0x7f)));
        bytes.replace(bytes.indexOf("healthy words"), 1, "H");
        WriteFile(Path(), bytes);
        m_library = Library::Open(Path());
        const QStringList faults = Faults();
        QCOMPARE(faults.size(), 2);
        QVERIFY2(faults[0].contains(u"The item %1 'Schlüssel' can't be read"_s.arg(m_item)), qPrintable(faults[0]));
        QVERIFY2(faults[1].contains(u"The item %1 'behind it' has a damaged code"_s.arg(healthy)),
                 qPrintable(faults[1]));
    }

    void commandLine_saysWhatIsDamagedAndHowMuchIsUnknown()
    {
        QCOMPARE(Cli({u"check"_s, Path(), u"--deep"_s}).Out, u"Nothing is wrong with the library.\n"_s);
        FlipBit("noteText");
        m_library->Execute(u"INSERT INTO Items (Title, ParentID) VALUES ('foreign', 0)"_s);
        QCOMPARE(Cli({u"check"_s, Path()}).Status, 0);
        const Outcome deep = Cli({u"check"_s, Path(), u"--deep"_s});
        QCOMPARE(deep.Status, 1);
        QCOMPARE(deep.Out, u"The item %1 'Schlüssel' has a damaged notes: it is not what was written.\n"
                           "What is damaged comes back from an earlier backup: quillbase-cli restore-item BACKUP.qbb "
                           "ID LIBRARY.\n"
                           "Of 1 items and stored files out of 2 no checksum is known; they get one when they are "
                           "saved.\n"_s.arg(m_item));
    }
};

QB_TEST_MAIN(TestContentCheck)
#include "tst_content_check.moc"
