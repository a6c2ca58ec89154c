#include "panels/TextStore.h"
#include "panels/TreeNodes.h"
#include "support/TestRun.h"

using namespace qb;
using namespace Qt::StringLiterals;

/// The texts of a tree's nodes, and where the nodes are found.
class TestTextStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_areGivenBackAsTheyWere()
    {
        TextStore store;
        QByteArrayList texts{"a", "\xC3\xA4 \xF0\x9F\x98\x80", QByteArray("with\0nothing", 12)};
        // A block has room for some of these; the largest get one of their own, amid the others.
        for (const int size : {1000, 32 * 1024, 32 * 1024 + 1, 300'000, 5, 256 * 1024, 7})
            texts << QByteArray(size, char('a' + texts.size()));
        for (int i = 0; i < 20'000; ++i)
            texts << QByteArray::number(i).repeated(1 + i % 9);
        std::vector<KeptText> kept;
        std::vector<QChar> room;
        for (const QByteArray& text : texts)
            kept.push_back(store.Keep(text));
        for (size_t i = 0; i < kept.size(); ++i) {
            QCOMPARE(kept[i].Utf8().toByteArray(), texts[qsizetype(i)]);
            QVERIFY(!kept[i].IsEmpty());
            QCOMPARE(kept[i].In(room).toString(), kept[i].ToString());
        }
        QCOMPARE(kept[1].ToString(), u"ä 😀"_s);
    }
    void emptyText_takesNoRoom()
    {
        TextStore store;
        const KeptText kept = store.Keep({});
        QVERIFY(kept.IsEmpty());
        QVERIFY(KeptText().IsEmpty());
        QCOMPARE(kept.Utf8().size(), 0);
        std::vector<QChar> room;
        QCOMPARE(kept.In(room).size(), 0);
        QCOMPARE(kept.ToString(), QString());
    }
    void storeThatWasCleared_keepsNewTexts()
    {
        TextStore store;
        store.Keep("before");
        store.Clear();
        const KeptText first = store.Keep("first");
        const KeptText second = store.Keep("second");
        QCOMPARE(first.ToString() + second.ToString(), u"firstsecond"_s);
    }

    void nodes_areFoundByTheirIds()
    {
        NodesById nodes;
        std::array<TreeNode, 6> all;
        const std::array<qint64, 6> ids{0, 15, 16, 17, 2'000'000'000, -7}; // beside each other, and far apart
        for (size_t i = 0; i < all.size(); ++i)
            QVERIFY(nodes.Insert(ids[i], &all[i]));
        for (size_t i = 0; i < all.size(); ++i) {
            QCOMPARE(nodes.Find(ids[i]), &all[i]);
            QVERIFY(!nodes.Insert(ids[i], &all[0]));
        }
        QCOMPARE(nodes.Count(), 6);
        for (const qint64 id : {1, 14, 18, 32, 2'000'000'001, -8})
            QCOMPARE(nodes.Find(id), nullptr);
        nodes.Remove(16);
        nodes.Remove(16);
        nodes.Remove(18);
        nodes.Remove(99);
        QCOMPARE(nodes.Count(), 5);
        QCOMPARE(nodes.Find(16), nullptr);
        QCOMPARE(nodes.Find(17), &all[3]);
        QVERIFY(nodes.Insert(16, &all[2]));
        nodes.Clear();
        QCOMPARE(nodes.Count(), 0);
        QCOMPARE(nodes.Find(17), nullptr);
    }
};

QB_TEST_MAIN(TestTextStore)
#include "tst_text_store.moc"
