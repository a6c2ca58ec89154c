#include "find/FindCache.h"
#include "find/FindRun.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/CCodeItem.h"
#include "support/FileSizeLimit.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <condition_variable>
#include <sys/stat.h>
#include <thread>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestFindCache : public QObject {
    Q_OBJECT

private:
    static std::vector<qint64> IdsIn(const std::shared_ptr<const FindSnapshot>& texts, const QString& text)
    {
        FindQuery query;
        query.Text = text;
        std::vector<qint64> ids;
        for (const FindHit& hit : FindAll(texts, query).Hits)
            ids.push_back(hit.Id);
        std::sort(ids.begin(), ids.end());
        return ids;
    }
    /// What a process that starts now finds.
    std::vector<qint64> FoundAnew(const QString& text)
    {
        FindCache cache(m_library->Name());
        const std::vector<qint64> ids = IdsIn(cache.Update(), text);
        m_warning = cache.Warning();
        return ids;
    }
    using Ids = std::vector<qint64>;

    void SetTitle(qint64 id, const QString& title)
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(id));
        item.SetTitle(title);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
    }
    QString CacheFile() { return FindCache(m_library->Name()).FilePath(); }
    quint64 InodeOfCache()
    {
        struct stat state {};
        return ::stat(QFile::encodeName(CacheFile()).constData(), &state) == 0 ? state.st_ino : 0;
    }
    void Patch(qint64 offset, const QByteArray& bytes)
    {
        QFile file(CacheFile());
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(offset) && file.write(bytes) == bytes.size());
    }
    void Truncate(qint64 size) { QVERIFY(QFile::resize(CacheFile(), size)); }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_a = 0, m_b = 0, m_c = 0;
    QString m_warning;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"cache ä.qbd"_s), LanguageType::None);
        m_a = AddItem(*m_library, 0, u"alpha"_s, u"std::move(x) one"_s);
        m_b = AddItem(*m_library, m_a, u"beta"_s, u"two\r\nlines"_s);
        m_c = AddItem(*m_library, m_b, u"gamma"_s, u"three"_s);
        m_warning.clear();
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void firstUpdate_writesAPrivateFileOutsideOfTheLibrary()
    {
        QCOMPARE(FoundAnew(u"std::move"_s), Ids{m_a});
        QVERIFY(CacheFile().startsWith(m_home->Path(u"cache"_s)));
        QCOMPARE(QFile::permissions(CacheFile()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        QCOMPARE(QDir(QFileInfo(CacheFile()).path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void nothingChanged_secondProcessReadsNoText()
    {
        FoundAnew(u"x"_s);
        const QByteArray before = ReadFile(CacheFile());
        QCOMPARE(FoundAnew(u"three"_s), Ids{m_c});
        QCOMPARE(ReadFile(CacheFile()), before);
    }

    void changesBehindTheProgramsBack_areSeen()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        // No date moves, and the length stays.
        m_library->Execute(u"UPDATE Items SET Code = replace(Code, 'three', 'seven') WHERE ID = ?"_s, {m_c});
        QCOMPARE(IdsIn(cache.Update(), u"three"_s), Ids{});
        QCOMPARE(IdsIn(cache.Last(), u"seven"_s), Ids{m_c});
        m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_a});
        QCOMPARE(IdsIn(cache.Update(), u"move"_s), Ids{});
        QCOMPARE(FoundAnew(u"seven"_s), Ids{m_c});
        QCOMPARE(FoundAnew(u"alpha"_s), Ids{});
    }

    void fileThatTakesTheLibrarysPlace_isReadInstead()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        const QString other = m_home->Path(u"other.qbd"_s);
        DBEngine::CompactDatabase(m_library->Name(), other);
        DBEngine::OpenDatabase(other)->Execute(u"UPDATE Items SET Title = 'compacted' WHERE ID = ?"_s, {m_b});
        QVERIFY(std::rename(QFile::encodeName(other).constData(), QFile::encodeName(m_library->Name()).constData())
                == 0);
        QCOMPARE(IdsIn(cache.Update(), u"compacted"_s), Ids{m_b});
        QCOMPARE(IdsIn(cache.Last(), u"beta"_s), Ids{});
        DBEngine::OpenDatabase(m_library->Name())->Execute(u"UPDATE Items SET Title = 'again' WHERE ID = ?"_s, {m_c});
        QCOMPARE(IdsIn(cache.Saved({m_c}), u"again"_s), Ids{m_c});
    }

    void changedLinksAndFiles_areSeen()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, 'noted')"_s, {m_a, m_b});
        const qint64 file = AddStoredFile(*m_library, m_b, u"notes ü.txt"_s, "stored words", {});
        QCOMPARE(IdsIn(cache.Update(), u"noted"_s), Ids{m_a});
        QCOMPARE(IdsIn(cache.Last(), u"stored words"_s), Ids{m_b});
        QCOMPARE(IdsIn(cache.Last(), u"notes ü"_s), Ids{m_b});
        // The file alone, which moves nothing in the database.
        WriteFile(m_library->FilesFolder() + QString::number(file) + u" - notes ü.txt"_s, "other, longer words");
        QCOMPARE(IdsIn(cache.Update(), u"stored words"_s), Ids{});
        QCOMPARE(FoundAnew(u"longer words"_s), Ids{m_b});
    }

    void otherWordsOfALinkOrAFile_areSeen()
    {
        m_library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note) VALUES (?, ?, 'noted')"_s, {m_a, m_b});
        AddStoredFile(*m_library, m_b, u"x.bin"_s, QByteArray(1, '\0'), {});
        FindCache cache(m_library->Name());
        cache.Update();
        m_library->Execute(u"UPDATE ItemLinks SET Note = 'written'"_s);
        QCOMPARE(IdsIn(cache.Update(), u"written"_s), Ids{m_a});
        m_library->Execute(u"UPDATE Files SET Description = 'described'"_s);
        QCOMPARE(IdsIn(cache.Update(), u"described"_s), Ids{m_b});
        m_library->Execute(u"UPDATE Files SET Title = 'other.bin'"_s);
        QCOMPARE(IdsIn(cache.Update(), u"other.bin"_s), Ids{m_b});
    }

    void languageOfTheLibrary_isThatOfItemsWithoutOne()
    {
        FindCache cache(m_library->Name());
        FindQuery query;
        query.Text = u"three"_s;
        const auto found = [&](const QString& language) {
            query.Language = language;
            return FindAll(cache.Update(), query).Hits.size();
        };
        m_library->Execute(u"UPDATE Properties SET LanguageUsed = 'vb'"_s);
        QCOMPARE(found(u"VB"_s), size_t(1));
        m_library->Execute(u"UPDATE Properties SET LanguageUsed = 'sql'"_s);
        QCOMPARE(found(u"vb"_s), size_t(0));
        QCOMPARE(found(u"sql"_s), size_t(1));
    }

    void textThatIsTooLarge_isLeftOutAndCounted()
    {
        const QByteArray large(qsizetype(LargestSearchedFile), 'x');
        AddStoredFile(*m_library, m_a, u"large.log"_s, large + "y needle", {});
        AddStoredFile(*m_library, m_a, u"large.bin"_s, QByteArray(1, '\0') + large, {});
        AddStoredFile(*m_library, m_b, u"just.log"_s, large.chopped(7) + " needle", {});
        FindCache cache(m_library->Name());
        FindQuery query;
        query.Text = u"needle"_s;
        for (int i = 0; i < 2; ++i) { // read, then taken out of the cache
            const FindResult result = FindAll(FindCache(m_library->Name()).Update(), query);
            QCOMPARE(result.Hits.size(), size_t(1));
            QCOMPARE(result.Hits.front().Id, m_b);
            QCOMPARE(result.Outcome.LeftOut, size_t(1));
            QVERIFY(result.Outcome.IsComplete());
        }
        const auto leftOut = [&] { return FindAll(cache.Update(), query).Outcome.LeftOut; };
        query.Branch = m_b;
        QCOMPARE(leftOut(), size_t(0));
        query.Branch = m_a;
        QCOMPARE(leftOut(), size_t(1));
        query.Fields = AllFindFields & ~BitOf(FindField::FileTexts);
        QCOMPARE(leftOut(), size_t(0));
        query.Fields = AllFindFields;
        m_library->Execute(u"DELETE FROM Files WHERE Title = 'large.log'"_s);
        QCOMPARE(leftOut(), size_t(0));
    }

    void pageThatIsTooLarge_isLeftOutAndCounted()
    {
        m_library->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {m_a});
        QDir().mkpath(m_library->HTMLFolder());
        WriteFile(m_library->HTMLFolder() + QString::number(m_a) + u".htm"_s,
                  QByteArray(qsizetype(LargestSearchedFile), 'x') + " needle");
        FindCache cache(m_library->Name());
        FindQuery query;
        query.Text = u"needle"_s;
        const FindResult result = FindAll(cache.Update(), query);
        QVERIFY(result.Hits.empty());
        QCOMPARE(result.Outcome.LeftOut, size_t(1));
        query.Fields = AllFindFields & ~BitOf(FindField::WebPage);
        QCOMPARE(FindAll(cache.Update(), query).Outcome.LeftOut, size_t(0));
    }

    void saved_readsTheItemAlone()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        SetTitle(m_b, u"renamed"_s);
        QCOMPARE(IdsIn(cache.Saved({m_b}), u"renamed"_s), Ids{m_b});
        QCOMPARE(IdsIn(cache.Last(), u"beta"_s), Ids{});
        QCOMPARE(IdsIn(cache.Last(), u"lines"_s), Ids{m_b});
        const qint64 added = AddItem(*m_library, 0, u"delta"_s, u"four"_s);
        QCOMPARE(IdsIn(cache.Saved({added}), u"four"_s), Ids{added});
        m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_a});
        QCOMPARE(IdsIn(cache.Saved({m_a}), u"alpha"_s), Ids{});
        QCOMPARE(IdsIn(cache.Last(), u"renamed"_s), Ids{m_b});
        QCOMPARE(cache.Last()->Items(), size_t(3));
        QCOMPARE(cache.Last()->Layers().size(), size_t(2)); // what is in memory lies together
    }

    void savedBesideAForeignChange_seesBoth()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        m_library->Execute(u"UPDATE Items SET Title = 'foreign' WHERE ID = ?"_s, {m_c});
        SetTitle(m_b, u"own"_s);
        QCOMPARE(IdsIn(cache.Saved({m_b}), u"foreign"_s), Ids{m_c});
        QCOMPARE(IdsIn(cache.Last(), u"own"_s), Ids{m_b});
    }

    void kept_isThereForTheNextProcess()
    {
        const QString file = CacheFile();
        {
            FindCache cache(m_library->Name());
            cache.Update();
            const quint64 inode = InodeOfCache();
            SetTitle(m_b, u"renamed"_s);
            cache.Saved({m_b});
            const qint64 size = QFileInfo(file).size();
            cache.Keep();
            QCOMPARE(InodeOfCache(), inode); // something was added to it
            QVERIFY(QFileInfo(file).size() > size);
        }
        const QByteArray before = ReadFile(file);
        QCOMPARE(FoundAnew(u"renamed"_s), Ids{m_b});
        QCOMPARE(FoundAnew(u"beta"_s), Ids{});
        QCOMPARE(ReadFile(file), before);
    }

    void itemThatWentBeforeAnotherWasSaved_isGoneForTheNextProcess()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_c});
        cache.Saved({m_c});
        SetTitle(m_b, u"renamed"_s);
        cache.Saved({m_b});
        cache.Keep();
        const QByteArray kept = ReadFile(CacheFile());
        QCOMPARE(FoundAnew(u"three"_s), Ids{});
        QCOMPARE(FoundAnew(u"renamed"_s), Ids{m_b});
        QCOMPARE(ReadFile(CacheFile()), kept);
    }

    void manyChanges_theFileIsWrittenAnewBeforeItHasTooManyPieces()
    {
        for (int i = 0; i < 40; ++i) {
            FindCache cache(m_library->Name());
            SetTitle(m_b, u"name %1"_s.arg(i));
            QCOMPARE(IdsIn(cache.Update(), u"name %1"_s.arg(i)), Ids{m_b});
            QVERIFY(cache.Last()->Layers().size() <= 17);
        }
        QCOMPARE(FoundAnew(u"name 39"_s), Ids{m_b});
        QCOMPARE(FoundAnew(u"std::move"_s), Ids{m_a});
    }

    void twoCaches_takeWhatTheOtherHasRead()
    {
        FindCache one(m_library->Name());
        FindCache other(m_library->Name());
        one.Update();
        other.Update();
        SetTitle(m_b, u"first"_s);
        QCOMPARE(IdsIn(one.Update(), u"first"_s), Ids{m_b});
        const QByteArray before = ReadFile(one.FilePath());
        QCOMPARE(IdsIn(other.Update(), u"first"_s), Ids{m_b});
        QCOMPARE(ReadFile(one.FilePath()), before);
        SetTitle(m_c, u"second"_s);
        QCOMPARE(IdsIn(other.Update(), u"second"_s), Ids{m_c});
        QCOMPARE(IdsIn(one.Update(), u"second"_s), Ids{m_c});
    }

    void unusableFiles_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("offset");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char* name, qint64 size, qint64 offset, const QByteArray& bytes) {
            QTest::newRow(name) << size << offset << bytes;
        };
        row("empty", 0, 0, {});
        row("a part of the header", 100, 0, {});
        row("the header alone", 4096, 0, {});
        row("without its tables", 5000, 0, {});
        row("foreign", -1, 0, "SQLite format 3");
        row("another library", -1, 16, "12345678");
        row("damaged header", -1, 70, "xxxx");
        row("damaged tables", -1, 8192 + 60, "xxxx");
    }
    void unusableFiles()
    {
        QFETCH(const qint64, size);
        QFETCH(const qint64, offset);
        QFETCH(const QByteArray, bytes);
        FoundAnew(u"x"_s);
        if (size >= 0)
            Truncate(size);
        else
            Patch(offset, bytes);
        QCOMPARE(FoundAnew(u"three"_s), Ids{m_c});
        QCOMPARE(m_warning, QString());
        const QByteArray repaired = ReadFile(CacheFile());
        QCOMPARE(FoundAnew(u"std::move"_s), Ids{m_a});
        QCOMPARE(ReadFile(CacheFile()), repaired);
    }

    void fileOfAnotherVersion_isMadeAnew_data()
    {
        QTest::addColumn<QByteArray>("version");
        QTest::newRow("older") << QByteArray("\x02\0\0\0", 4);
        QTest::newRow("newer") << QByteArray("\x7f\0\0\0", 4);
    }
    void fileOfAnotherVersion_isMadeAnew()
    {
        QFETCH(const QByteArray, version);
        FoundAnew(u"x"_s);
        const QByteArray own = ReadFile(CacheFile());
        Patch(8, version);
        constexpr qsizetype Hashed = 1344; // bytes of the header, behind which their hash stands
        RowHasher hasher;
        hasher.Add(QByteArrayView(ReadFile(CacheFile())).first(Hashed));
        const quint64 hash = hasher.Result();
        Patch(Hashed, QByteArray(reinterpret_cast<const char*>(&hash), sizeof hash));
        QCOMPARE(FoundAnew(u"three"_s), Ids{m_c});
        QCOMPARE(ReadFile(CacheFile()).mid(8, 4), own.mid(8, 4));
    }

    void fileCutShortWhileItIsMapped_isNoticedAndReadAnew()
    {
        FindCache cache(m_library->Name());
        const auto texts = cache.Update();
        Truncate(0);
        FindQuery query;
        query.Text = u"three"_s;
        const FindResult result = FindAll(texts, query);
        QVERIFY(result.Outcome.IsDamaged);
        QVERIFY(result.Hits.empty());
        QCOMPARE(IdsIn(cache.Update(), u"three"_s), Ids{m_c});
    }

    void fullDisk_findsTheSameFromMemory()
    {
        const QString text = QString(3'000'000, u'y') + u" needle"_s;
        AddItem(*m_library, 0, u"big"_s, text);
        FindCache cache(m_library->Name());
        const FileSizeLimit limit(1'000'000);
        QCOMPARE(IdsIn(cache.Update(), u"three"_s), Ids{m_c});
        QVERIFY2(cache.Warning().contains(cache.FilePath()), qPrintable(cache.Warning()));
        QCOMPARE(IdsIn(cache.Last(), u"needle"_s).size(), size_t(1));
        QCOMPARE(QDir(QFileInfo(CacheFile()).path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void fullDiskWhileSomethingIsAdded_leavesTheFileAsItWas()
    {
        FindCache cache(m_library->Name());
        cache.Update();
        const qint64 size = QFileInfo(cache.FilePath()).size();
        SetTitle(m_b, u"renamed"_s);
        {
            const FileSizeLimit limit{rlim_t(size)};
            QCOMPARE(IdsIn(cache.Update(), u"renamed"_s), Ids{m_b});
        }
        QCOMPARE(FoundAnew(u"renamed"_s), Ids{m_b});
        QCOMPARE(FoundAnew(u"beta"_s), Ids{});
    }

    void cancelled_leavesNothingBehind()
    {
        class Impatient : public Work {
        public:
            bool IsCancelled() override { return true; }
        };
        Impatient work;
        FindCache cache(m_library->Name());
        QB_VERIFY_RAISES(cache.Update(work), ErrorNumber::Cancelled);
        QCOMPARE(QDir(QFileInfo(CacheFile()).path()).entryList(QDir::Files | QDir::Hidden), QStringList());
        QCOMPARE(IdsIn(cache.Update(), u"three"_s), Ids{m_c});
    }

    void itemsChangedWhileARunGoesOn_areFoundAsTheyWere()
    {
        FindCache cache(m_library->Name());
        const auto texts = cache.Update();
        FindQuery query;
        query.Text = u"t"_s;
        std::vector<qint64> ids;
        FindRun run(texts, query, [&](std::vector<FindHit>&& batch) {
            for (const FindHit& hit : batch)
                ids.push_back(hit.Id);
        });
        SetTitle(m_a, u"no more"_s);
        cache.Update();
        QVERIFY(run.Wait().IsComplete());
        std::sort(ids.begin(), ids.end());
        QCOMPARE(ids, (Ids{m_a, m_b, m_c}));
    }

    void cancelledRun_sendsNothingMore()
    {
        {
            Transaction transaction(*m_library);
            for (int i = 0; i < 20; ++i)
                AddItem(*m_library, 0, u"item %1"_s.arg(i), QString(700'000, u'e'));
            transaction.Commit();
        }
        FindCache cache(m_library->Name());
        const auto texts = cache.Update();
        QVERIFY(texts->Layers()[0].Segment->All().Chunks.size() > 5);
        FindQuery query;
        query.Text = u"e"_s;
        std::mutex mutex;
        std::condition_variable changed;
        int batches = 0;
        bool cancelled = false;
        FindRun run(texts, query, [&](std::vector<FindHit>&&) {
            std::unique_lock lock(mutex);
            ++batches;
            changed.notify_all();
            changed.wait(lock, [&] { return cancelled; });
        });
        {
            std::unique_lock lock(mutex);
            changed.wait(lock, [&] { return batches > 0; });
            run.Cancel();
            cancelled = true;
        }
        changed.notify_all();
        QVERIFY(run.Wait().IsCancelled);
        QCOMPARE(batches, 1);
    }

    void hopelessExpression_stopsAtItsDeadline()
    {
        {
            Transaction transaction(*m_library);
            for (int i = 0; i < 300; ++i)
                AddItem(*m_library, 0, u"item %1"_s.arg(i), QString(3000, u'x') + u"z y"_s);
            transaction.Commit();
        }
        FindCache cache(m_library->Name());
        const auto texts = cache.Update();
        FindQuery query;
        query.Text = u"(x+x+)+[yz]{2}"_s;
        query.Mode = FindMode::Expression;
        query.Deadline = std::chrono::milliseconds(200);
        const FindOutcome outcome = FindAll(texts, query).Outcome;
        QVERIFY(outcome.DeadlineReached || outcome.GivenUp > 0);
        QVERIFY(!outcome.IsComplete());
    }

    void libraryInAnotherPlace_hasTextsOfItsOwn()
    {
        const QString copy = m_home->Path(u"copy.qbd"_s);
        QVERIFY(QFile::copy(m_library->Name(), copy));
        FindCache own(m_library->Name());
        FindCache other(copy);
        QVERIFY(own.FilePath() != other.FilePath());
    }

    void forgottenFile_goesWithTheNextReading()
    {
        const QString old = QFileInfo(CacheFile()).path() + u"/old.qbfind"_s;
        WriteFile(old, "x");
        const FixedClock clock(Date::FromDateTime(QDateTime::currentDateTime()).AddDays(200));
        FoundAnew(u"x"_s);
        QVERIFY(!QFile::exists(old));
        QVERIFY(QFile::exists(CacheFile()));
    }
};

QB_TEST_MAIN(TestFindCache)
#include "tst_find_cache.moc"
