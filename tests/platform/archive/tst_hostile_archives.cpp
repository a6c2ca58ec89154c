#include "platform/archive/BrindletonZip.h"
#include "support/ArchiveBytes.h"
#include "support/FolderContents.h"

#include <QElapsedTimer>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr quint32 Gigabyte = 1u << 30;

RawEntry Entry(const QByteArray& name, const QByteArray& data = "data")
{
    return {.Name = name, .Data = data};
}

QByteArray ArchiveOf(const std::vector<RawEntry>& entries)
{
    ArchiveBytes archive;
    for (const RawEntry& entry : entries)
        archive.Add(entry);
    return archive.Bytes();
}

/// A harmless file, and then another entry.
QByteArray With(const RawEntry& entry)
{
    return ArchiveOf({Entry("harmless.txt"), entry});
}

/// Many entries of the directory that share one deflated file.
QByteArray Overlapping()
{
    const RawEntry shared = ArchiveBytes::DeflatedEntry("shared", QByteArray(100000, '\0'));
    ArchiveBytes archive;
    archive.Add(shared);
    for (int i = 0; i < 200; ++i) {
        RawEntry another = shared;
        another.Name = "shared" + QByteArray::number(i);
        archive.AddToDirectory(another, 0);
    }
    return archive.Bytes();
}

} // namespace

/// Archives that are made to do harm, or came to harm: they are refused, and nothing is changed by them.
class TestHostileArchives : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(m_home->Path(u"target/mine.txt"_s), "mine");
        WriteFile(m_home->Path(u"target/harmless.txt"_s), "old");
        WriteFile(m_home->Path(u"target/sub/mine too"_s), "too");
        WriteFile(m_home->Path(u"target/other/file"_s), "other");
        WriteFile(m_home->Path(u"beside.txt"_s), "beside");
    }
    void cleanup() { m_home.reset(); }

    void hostileName_isRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QString>("why");
        const auto name = [](const char* row, const QByteArray& stored, const QString& why) {
            RawEntry entry = Entry(stored);
            entry.Flags = QByteArray(row).endsWith("UTF-8") ? ArchiveBytes::Utf8 : 0;
            QTest::newRow(row) << With(entry) << why;
        };
        const QString elsewhere = u"is refused, its name leads to a place of its own, outside the folder"_s;
        name("absolute", "/x", elsewhere);
        name("two slashes", "//x", elsewhere);
        name("absolute, backslash", "\\x", elsewhere);
        name("drive", "C:\\x", elsewhere);
        name("drive, slash", "c:/x", elsewhere);
        name("drive, relative", "C:x", elsewhere);
        name("share", "\\\\server\\share\\x", elsewhere);
        const QString out = u"is refused, its name leads out of the folder"_s;
        name("up", "../beside.txt", out);
        name("up, backslash", "..\\beside.txt", out);
        name("up within", "a/../../beside.txt", out);
        name("up within, mixed", "a\\..\\../beside.txt", out);
        name("up, staying inside", "a/../b", out);
        name("up at the end", "a/..", out);
        name("up alone", "..", out);
        name("up, folder", "../out/", out);
        name("up after a dot", "./.././beside.txt", out);
        const QString nothing = u"'' is refused, it has no name"_s;
        name("dot", ".", nothing.mid(3));
        name("dots", "././", nothing.mid(3));
        name("empty", "", nothing);
        const QString controls = u"'a\ufffdb' is refused, its name has control characters"_s;
        name("line feed", "a\nb", controls);
        name("delete",
             "a\x7f"
             "b",
             controls);
        name("escape, UTF-8",
             "a\x1b"
             "b",
             u"Zip archive inconsistent"_s);
        name("later control, UTF-8", "a\u0085b", controls);
        name("turned direction",
             "a\u202e"
             "b",
             controls);
        name("isolated direction",
             "a\u2067"
             "b",
             controls);
        name("controls, leading out", "../a\nb", controls.mid(2));
        const QString longName = u"is refused, its name is too long"_s;
        name("long part", QByteArray(256, 'n'), longName);
        name("long folder", QByteArray(256, 'n') + "/a", longName);
        name("long in bytes, UTF-8", QByteArray("ä").repeated(128), longName);
        name("deep", QByteArray("a/").repeated(32000) + "a", longName);
    }
    void hostileName_isRefused() { Refuse(); }

    void hostileEntry_isRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QString>("why");
        const QString twice = u"is refused, its name stands there twice"_s;
        const QString below = u"is refused, a file stands there where it needs a folder"_s;
        QTest::newRow("twice") << ArchiveOf({Entry("a"), Entry("b"), Entry("a", "other")}) << twice;
        QTest::newRow("twice, with a dot") << ArchiveOf({Entry("./a"), Entry("a")}) << twice;
        QTest::newRow("twice, with slashes") << ArchiveOf({Entry("a/b"), Entry("a//b")}) << twice;
        QTest::newRow("twice, with a backslash") << ArchiveOf({Entry("a\\b"), Entry("a/b")}) << twice;
        QTest::newRow("folder of its name") << ArchiveOf({Entry("a"), Entry("a/", {})}) << twice;
        QTest::newRow("folder of its name before") << ArchiveOf({Entry("a/", {}), Entry("a")}) << twice;
        QTest::newRow("file as a folder") << ArchiveOf({Entry("a"), Entry("a/b")}) << below;
        QTest::newRow("file as a folder, after") << ArchiveOf({Entry("a/b"), Entry("a.b"), Entry("a")}) << below;
        QTest::newRow("file as a folder, deep")
            << ArchiveOf({Entry("a/b"), Entry("a/b.c"), Entry("a/b-"), Entry("a/b/c/d/e")}) << below;
        QTest::newRow("file as a folder, two")
            << ArchiveOf({Entry("a"), Entry("a/b", "x"), Entry("a/c/", {})}) << below;
        const auto kind = [](const char* row, quint32 mode, const QString& why) {
            RawEntry entry = Entry("kind", "../beside.txt");
            entry.Mode = mode | 0777;
            QTest::newRow(row) << With(entry) << u"'kind' is refused, "_s + why;
        };
        kind("symbolic link", S_IFLNK, u"it is a link"_s);
        kind("pipe", S_IFIFO, u"it is neither a file nor a folder"_s);
        kind("device of characters", S_IFCHR, u"it is neither a file nor a folder"_s);
        kind("device of blocks", S_IFBLK, u"it is neither a file nor a folder"_s);
        kind("socket", S_IFSOCK, u"it is neither a file nor a folder"_s);
        RawEntry entry = Entry("secret");
        entry.Flags = ArchiveBytes::Encrypted;
        QTest::newRow("encrypted") << With(entry) << u"'secret' is refused, it is encrypted"_s;
        entry = Entry("odd");
        entry.Method = 77;
        QTest::newRow("unknown method") << With(entry)
                                        << u"'odd' is refused, it is packed by a method that is not known here (77)"_s;
    }
    void hostileEntry_isRefused() { Refuse(); }

    void wrongSize_isRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QString>("why");
        RawEntry bomb = ArchiveBytes::DeflatedEntry("bomb", QByteArray(5000, '\0'));
        bomb.Size = Gigabyte + 1;
        QTest::newRow("bomb") << With(
            bomb) << u"it would unpack to more than 1.00 GiB, which is the limit for an archive of its size ("_s;
        RawEntry half = bomb;
        half.Name = "half";
        half.Size = bomb.Size = Gigabyte / 2 + 1;
        QTest::newRow("bomb of two") << ArchiveOf({half, bomb}) << u"it would unpack to more than 1.00 GiB"_s;
        bomb.Size = 0xfffffffe;
        QTest::newRow("bomb of many") << ArchiveOf(std::vector(2000, bomb)) << u"it would unpack to more than"_s;
        RawEntry grown = ArchiveBytes::DeflatedEntry("grown", QByteArray(1000000, 'x'));
        grown.Size = 1000;
        QTest::newRow("larger than declared") << With(grown) << u"'grown': it is larger than it declares"_s;
        grown.Size = 999999;
        QTest::newRow("a byte larger") << With(grown) << u"'grown': it is larger than it declares"_s;
        grown.Size = 0;
        QTest::newRow("declared empty") << With(grown) << u"'grown': it is larger than it declares"_s;
        RawEntry shrunk = ArchiveBytes::DeflatedEntry("shrunk", "short");
        shrunk.Size = 6;
        QTest::newRow("smaller than declared") << With(shrunk) << u"'shrunk': "_s;
        RawEntry stored = Entry("stored", "stored data");
        stored.Size = 5;
        QTest::newRow("stored, larger") << With(stored) << u"'stored': "_s;
        stored.Size = 20;
        QTest::newRow("stored, smaller") << With(stored) << u"'stored': "_s;
        stored.PackedSize = 0xfffffffe;
        QTest::newRow("packed beyond the end")
            << With(stored) << u"its entries overlap, as those of an archive that is made to do harm"_s;
        QTest::newRow("overlapping") << Overlapping() << u"its entries overlap"_s;
        RawEntry crc = Entry("changed");
        crc.Crc = 1;
        QTest::newRow("wrong checksum") << With(crc) << u"'changed': CRC error"_s;
        crc = ArchiveBytes::DeflatedEntry("changed", "contents");
        crc.Crc = 1;
        QTest::newRow("wrong checksum, deflated") << With(crc) << u"'changed': CRC error"_s;
        RawEntry broken = ArchiveBytes::DeflatedEntry("broken", QByteArray(1000, 'x'));
        broken.Data = QByteArray(broken.Data.size(), '\xff');
        QTest::newRow("data that can't be inflated") << With(broken) << u"'broken': Zlib error"_s;
        broken = ArchiveBytes::DeflatedEntry("broken", QByteArray("many words ").repeated(100));
        broken.Data.chop(4);
        QTest::newRow("data that end early") << With(broken) << u"'broken': "_s;
    }
    void wrongSize_isRefused() { Refuse(); }

    void brokenArchive_isRefused_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QString>("why");
        const QString none = u"Not a zip archive"_s;
        QTest::newRow("empty file") << QByteArray() << u"the file is empty"_s;
        QTest::newRow("text") << QByteArray("no archive at all\n").repeated(1000) << none;
        QTest::newRow("short text") << QByteArray("PK") << none;
        QTest::newRow("only the beginning") << QByteArray("PK\3\4").leftJustified(100, '\0') << none;
        ArchiveBytes archive;
        archive.Add(Entry("a")).Add(Entry("b"));
        QTest::newRow("directory beyond the end") << archive.Bytes({}, 0x7fffffff) << QString();
        QTest::newRow("directory elsewhere") << archive.Bytes({}, 0) << QString();
        QByteArray more = archive.Bytes();
        more[more.size() - 14] = more[more.size() - 12] = 9; // entries
        QTest::newRow("entries that are not there") << more << QString();
        more[more.size() - 13] = more[more.size() - 11] = '\x7f';
        QTest::newRow("many entries that are not there") << more << QString();
        RawEntry beyond = Entry("beyond");
        beyond.Offset = 0x7ffffff0;
        QTest::newRow("entry beyond the end") << With(beyond) << QString();
        beyond.Offset = 7;
        QTest::newRow("entry in the middle of another") << With(beyond) << u"'beyond': "_s;
    }
    void brokenArchive_isRefused() { Refuse(); }

    void cutArchive_isRefused()
    {
        const QByteArray whole = ArchiveOf({Entry("a/b"), ArchiveBytes::DeflatedEntry("c", QByteArray(5000, 'c'))});
        const QMap<QString, QByteArray> before = ContentsOf(m_home->Path());
        for (qsizetype length = 0; length < whole.size(); ++length) {
            WriteFile(Archive(), whole.left(length));
            QB_VERIFY_REFUSES(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"target"_s)),
                              u"can't be extracted: "_s);
            QVERIFY(QFile::remove(Archive()));
        }
        QCOMPARE(ContentsOf(m_home->Path()), before);
        WriteFile(Archive(), whole);
        QVERIFY(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"target"_s)));
    }

    void noFile_isRefused_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << u"none.zip"_s;
        QTest::newRow("folder") << u"target"_s;
        QTest::newRow("no name") << QString();
    }
    void noFile_isRefused()
    {
        QFETCH(QString, path);
        const QMap<QString, QByteArray> before = ContentsOf(m_home->Path());
        BrindletonZip zip;
        const QString archive = path.isEmpty() ? path : m_home->Path(path);
        QB_VERIFY_REFUSES(zip.ExtractTo(archive, m_home->Path(u"target"_s)),
                          u"The archive '%1' can't be extracted: "_s.arg(archive));
        QB_VERIFY_REFUSES(zip.Entries(archive), u"can't be extracted: "_s);
        QB_VERIFY_REFUSES(zip.FirstFileName(archive), u"can't be extracted: "_s);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

    void entriesOfHostileArchive_tellTheProblem()
    {
        WriteFile(Archive(), ArchiveOf({Entry("b"), Entry("../a"), Entry("b")}));
        const std::vector<ArchiveEntry> entries = BrindletonZip().Entries(Archive());
        QCOMPARE(entries.size(), size_t(3));
        QCOMPARE(entries[0].Problem, QString());
        QCOMPARE(entries[1].Problem, u"its name leads out of the folder"_s);
        QCOMPARE(entries[2].Problem, u"its name stands there twice"_s);
    }

    void harmlessEntriesOfHostileArchive_areExtractedAlone()
    {
        WriteFile(Archive(), ArchiveOf({Entry("good", "1"), Entry("../bad", "2")}));
        const QString target = m_home->Path(u"new"_s);
        QB_VERIFY_REFUSES(BrindletonZip().ExtractEntries(Archive(), target, {0, 1}), u"'../bad' is refused"_s);
        QVERIFY(!QFileInfo::exists(target));
        QVERIFY(BrindletonZip().ExtractEntries(Archive(), target, {0}));
        QCOMPARE(ContentsOf(target), (QMap<QString, QByteArray>{{u"good"_s, "1"}}));
    }

    void manyDeepNames_areCheckedQuickly()
    {
        ArchiveBytes archive;
        for (int i = 0; i < 1000; ++i)
            archive.Add(Entry(QByteArray::number(i) + "/" + QByteArray("a/").repeated(2000) + "a"));
        WriteFile(Archive(), archive.Bytes());
        QElapsedTimer time;
        time.start();
        for (const ArchiveEntry& entry : BrindletonZip().Entries(Archive()))
            QCOMPARE(entry.Problem, QString());
        QVERIFY2(time.elapsed() < 5000, qPrintable(QString::number(time.elapsed())));
    }

    // Harmless oddities

    void harmlessOddity_isExtracted_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QStringList>("names");
        const auto row = [](const char* what, const RawEntry& entry, const QStringList& names) {
            QTest::newRow(what) << ArchiveOf({entry}) << names;
        };
        const auto inUtf8 = [](const QByteArray& name) {
            RawEntry entry = Entry(name);
            entry.Flags = ArchiveBytes::Utf8;
            return entry;
        };
        row("dot before", Entry("./a.txt"), {u"a.txt"_s});
        row("dot within", Entry("a/./b"), {u"a/"_s, u"a/b"_s});
        row("two slashes", Entry("a//b"), {u"a/"_s, u"a/b"_s});
        row("backslashes", Entry("a\\b\\c.txt"), {u"a/"_s, u"a/b/"_s, u"a/b/c.txt"_s});
        row("dots at the end", Entry("a.. ."), {u"a.. ."_s});
        row("three dots", Entry(".../a"), {u".../"_s, u".../a"_s});
        row("dots in a part", Entry("a..b/..c"), {u"a..b/"_s, u"a..b/..c"_s});
        row("hidden", Entry(".profile"), {u".profile"_s});
        row("colon", Entry("at 12:30"), {u"at 12:30"_s});
        row("colon of a later part", Entry("a/C:/b"), {u"a/"_s, u"a/C:/"_s, u"a/C:/b"_s});
        row("place markers", Entry("%1 %2"), {u"%1 %2"_s});
        row("long part", Entry(QByteArray(255, 'n')), {QString(255, u'n')});
        row("old code page",
            Entry("gr\x94\xe1"
                  "e"),
            {u"größe"_s});
        row("old code page, escape", Entry("a\x1b[2J"), {u"a\u2190[2J"_s});
        row("UTF-8", inUtf8("größe 漢字 🎈"), {u"größe 漢字 🎈"_s});
        row("UTF-8, not declared", Entry("größe 漢字"), {u"größe 漢字"_s});
        row("folder", Entry("only/folder/", {}), {u"only/"_s, u"only/folder/"_s});
        row("folder, backslash", Entry("only\\folder\\", {}), {u"only/"_s, u"only/folder/"_s});
        RawEntry entry = Entry("link", "elsewhere");
        entry.Mode = S_IFLNK | 0777;
        entry.MadeOn = 0;
        row("kind of another system", entry, {u"link"_s});
        entry.MadeOn = 3;
        entry.Mode = 0;
        row("no kind", entry, {u"link"_s});
        row("empty file", Entry("empty", {}), {u"empty"_s});
        QTest::newRow("folder twice") << ArchiveOf({Entry("a/", {}), Entry("a/b"), Entry("a/", {})})
                                      << QStringList{u"a/"_s, u"a/b"_s};
        QTest::newRow("names that begin alike") << ArchiveOf({Entry("a"), Entry("a.b"), Entry("ab/c"), Entry("A")})
                                                << QStringList{u"A"_s, u"a"_s, u"a.b"_s, u"ab/"_s, u"ab/c"_s};
        ArchiveBytes archive;
        archive.Add(Entry("a"));
        QTest::newRow("comment") << archive.Bytes(QByteArray("a comment").repeated(1000)) << QStringList{u"a"_s};
        QTest::newRow("no entries") << ArchiveBytes().Bytes() << QStringList{};
        const QByteArray program = "#!/bin/sh\nexec unzip \"$0\"\n";
        QTest::newRow("program before") << ArchiveBytes().AddPlain(program).Add(Entry("a")).Bytes()
                                        << QStringList{u"a"_s};
    }
    void harmlessOddity_isExtracted()
    {
        QFETCH(QByteArray, archive);
        WriteFile(Archive(), archive);
        const QString target = m_home->Path(u"new"_s);
        QCOMPARE(Raised([&] { QVERIFY(BrindletonZip().ExtractTo(Archive(), target)); }), QString());
        QTEST(QStringList(ContentsOf(target).keys()), "names");
    }

    void programBeforeThatNoOffsetCounts_isRefused()
    {
        WriteFile(Archive(), "#!/bin/sh\nexec unzip \"$0\"\n" + ArchiveOf({Entry("a")}));
        QB_VERIFY_REFUSES(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"new"_s)), u"can't be extracted: "_s);
    }

    // Contents of the folder

    void linkOnTheWay_isRefused_data()
    {
        QTest::addColumn<QString>("leadsTo");
        QTest::newRow("to a folder") << u"elsewhere"_s;
        QTest::newRow("to nothing") << u"nowhere"_s;
        QTest::newRow("within the folder") << u"target/sub"_s;
    }
    void linkOnTheWay_isRefused()
    {
        QFETCH(QString, leadsTo);
        WriteFile(m_home->Path(u"elsewhere/precious"_s), "precious");
        QVERIFY(QFile::link(m_home->Path(leadsTo), m_home->Path(u"target/link"_s)));
        for (const RawEntry& entry : {Entry("link/precious"), Entry("link/new/"), Entry("link/a/b"), Entry("link/")}) {
            WriteFile(Archive(), With(entry));
            const QMap<QString, QByteArray> before = ContentsOf(m_home->Path());
            QB_VERIFY_REFUSES(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"target"_s)),
                              u"target/link' can't be written: a link stands there"_s);
            QCOMPARE(ContentsOf(m_home->Path()), before);
        }
    }

    void linkInPlaceOfAFile_isReplacedNotFollowed()
    {
        WriteFile(m_home->Path(u"elsewhere/precious"_s), "precious");
        QVERIFY(QFile::link(m_home->Path(u"elsewhere/precious"_s), m_home->Path(u"target/link"_s)));
        WriteFile(Archive(), ArchiveOf({Entry("link", "new")}));
        QVERIFY(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"target"_s)));
        QCOMPARE(ReadFile(m_home->Path(u"elsewhere/precious"_s)), "precious");
        QCOMPARE(ContentsOf(m_home->Path(u"target"_s)).value(u"link"_s), "new");
    }

    void laterFileThatCantBePlaced_restoresTheEarlierOnes_data()
    {
        QTest::addColumn<QByteArray>("later");
        QTest::addColumn<QString>("why");
        QTest::newRow("over a folder") << "other"_ba << u"target/other' can't be written: a folder stands there"_s;
        QTest::newRow("below a file") << "mine.txt/a"_ba << u"target/mine.txt' can't be written: a file stands there"_s;
        QTest::newRow("folder over a file")
            << "mine.txt/"_ba << u"target/mine.txt' can't be written: a file stands there"_s;
    }
    void laterFileThatCantBePlaced_restoresTheEarlierOnes()
    {
        QFETCH(QByteArray, later);
        QFETCH(QString, why);
        WriteFile(Archive(), ArchiveOf({Entry("harmless.txt", "new"), Entry("sub/mine too", "new"), Entry("fresh/a/b"),
                                        Entry(later)}));
        const QMap<QString, QByteArray> before = ContentsOf(m_home->Path());
        QB_VERIFY_REFUSES(BrindletonZip().ExtractTo(Archive(), m_home->Path(u"target"_s)), why);
        QCOMPARE(ContentsOf(m_home->Path()), before);
    }

private:
    QString Archive() const { return m_home->Path(u"the archive.zip"_s); }

    /// Extracts the row's archive to a folder that is there, and to one that is not.
    void Refuse()
    {
        QFETCH(QByteArray, archive);
        QFETCH(QString, why);
        WriteFile(Archive(), archive);
        const QMap<QString, QByteArray> before = ContentsOf(m_home->Path());
        for (const QString& folder : {u"target"_s, u"new/deeper"_s}) {
            BrindletonZip zip;
            const QString message = u"The archive '%1' can't be extracted: "_s.arg(Archive());
            const QString raised = Raised([&] { zip.ExtractTo(Archive(), m_home->Path(folder)); });
            QVERIFY2(IsRefusal(raised, why) && raised.startsWith(u"75: "_s + message), qPrintable(raised));
            QCOMPARE(ContentsOf(m_home->Path()), before);
            QCOMPARE(zip.UnzippedPath(), QString());
        }
    }

    std::unique_ptr<TemporaryHome> m_home;
};

QTEST_GUILESS_MAIN(TestHostileArchives)
#include "tst_hostile_archives.moc"
