#include "exchange/BranchExport.h"
#include "exchange/ImportPreview.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What an import would bring, and what is chosen of it.
class TestImportPreview : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;

    /// a(b(c d) e) f
    static std::vector<PreviewedItem> Branch()
    {
        std::vector<PreviewedItem> items;
        for (const auto& [key, parent] :
             {std::pair{u"a"_s, -1}, {u"b"_s, 0}, {u"c"_s, 1}, {u"d"_s, 1}, {u"e"_s, 0}, {u"f"_s, -1}})
            items.push_back({.Key = key, .Parent = parent, .Title = key, .Bytes = 1 << items.size()});
        return items;
    }
    static QString Chosen(const BranchChoice& choice)
    {
        QString text;
        for (int place = 0; place < 6; ++place)
            text += choice.IsChosen(place) ? QChar(u'a' + place) : QChar(u'-');
        return text;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"bücher.qbd"_s));
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void titlesThatAreThere_areKnown()
    {
        const auto from = MakeLibrary(m_home->Path(u"von.qbd"_s));
        const qint64 top = AddItem(*from, 0, u"Top"_s, u"code"_s);
        const qint64 inner = AddItem(*from, top, u"inner"_s);
        AddItem(*from, inner, u"leaf"_s);
        AddItem(*from, top, u"new"_s);
        AddStoredFile(*from, inner, u"a.bin"_s, QByteArray(1000, 'a'), {});
        ExportItems(*from, top, m_home->Path(u"x.qbx"_s));
        const qint64 target = AddItem(*m_library, 0, u"target"_s);
        const qint64 there = AddItem(*m_library, target, u"tOP"_s);
        AddItem(*m_library, AddItem(*m_library, there, u"INNER"_s), u"other"_s);
        AddItem(*m_library, 0, u"Leaf"_s);
        const UnpackedBranch branch(m_home->Path(u"x.qbx"_s));
        const std::vector<PreviewedItem> items = PreviewImport(*m_library, branch, target);
        QCOMPARE(items.size(), size_t(4));
        QCOMPARE(items[0].There, Presence::Here);
        QVERIFY(items[0].Bytes > 4);
        QCOMPARE(items[1].There, Presence::Here);
        QCOMPARE(items[1].Bytes, 1000);
        QCOMPARE(items[1].Files, 1);
        QCOMPARE(items[1].Parent, 0);
        QCOMPARE(items[2].There, Presence::Elsewhere);
        QCOMPARE(items[3].There, Presence::No);
        QCOMPARE(items[3].Title, u"new"_s);
        const std::vector<PreviewedItem> atTheRoot = PreviewImport(*m_library, branch, 0);
        QCOMPARE(atTheRoot[0].There, Presence::Elsewhere);
        QCOMPARE(atTheRoot[1].There, Presence::Elsewhere);
    }

    void all_isChosenAtFirst()
    {
        const std::vector<PreviewedItem> items = Branch();
        BranchChoice choice(items);
        QCOMPARE(Chosen(choice), u"abcdef"_s);
        QCOMPARE(choice.Keys(), QStringList());
        QCOMPARE(choice.Bytes(), 63);
        choice.ChooseAll(false);
        QCOMPARE(choice.Count(), 0);
        QCOMPARE(choice.Bytes(), 0);
        choice.ChooseAll(true);
        QCOMPARE(choice.Count(), 6);
    }

    void itemThatIsLeftOut_leavesWhatIsBesideIt()
    {
        const std::vector<PreviewedItem> items = Branch();
        BranchChoice choice(items);
        choice.Choose(2, false); // c, and so neither b nor a, of which it is a part
        QCOMPARE(Chosen(choice), u"---def"_s);
        QCOMPARE(choice.Keys(), (QStringList{u"d"_s, u"e"_s, u"f"_s}));
        choice.Choose(1, true);
        QCOMPARE(Chosen(choice), u"-bcdef"_s);
        QCOMPARE(choice.Keys(), (QStringList{u"b"_s, u"e"_s, u"f"_s}));
        choice.Choose(0, false);
        QCOMPARE(Chosen(choice), u"-----f"_s);
        QCOMPARE(choice.Keys(), QStringList{u"f"_s});
        choice.Choose(0, true);
        QCOMPARE(choice.Keys(), QStringList());
    }
};

QB_TEST_MAIN(TestImportPreview)
#include "tst_import_preview.moc"
