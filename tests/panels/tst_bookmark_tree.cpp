#include "panels/BookmarkTree.h"
#include "panels/PanelCaption.h"
#include "support/TestRun.h"

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The bookmarks under their groups, as the list shows them, and the captions of their panel.
class TestBookmarkTree : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_tree.Show({{1, u"zwei"_s}, {2, u"Ähre"_s}, {3, u"empty"_s}}, {{11, 101, u"item 10"_s, 1, u"b"_s},
                                                                        {12, 102, u"Item 9"_s, 1, u"a\r\nx"_s},
                                                                        {13, 101, u"item 10"_s, 2, QString()},
                                                                        {14, 103, u"äpfel"_s, 1, u"B"_s}});
        m_tree.sort(-1);
    }

    void rows_standUnderTheirGroupsInTheOrderInWhichTheyWereMade()
    {
        const QAbstractItemModelTester tester(&m_tree);
        QCOMPARE(Shape(), u"zwei (3): item 10, Item 9, äpfel | Ähre (1): item 10 | empty (0):"_s);
        QCOMPARE(m_tree.BookmarkCount(), 4);
        QCOMPARE(m_tree.headerData(0, Qt::Horizontal).toString(), u"Code Section"_s);
        QCOMPARE(m_tree.headerData(1, Qt::Horizontal).toString(), u"Bookmark Description"_s);
        QCOMPARE(m_tree.columnCount(), 2);
    }

    void row_hasKeyImageTitleAndDescriptionInOneLine()
    {
        const QModelIndex row = m_tree.index(1, 0, m_tree.index(0, 0));
        QCOMPARE(row.data(BookmarkTree::KeyRole).toString(), u"12B"_s);
        QCOMPARE(row.data(BookmarkTree::ImageRole).toString(), u"BOOKMARKED_ITEM"_s);
        QCOMPARE(row.data().toString(), u"Item 9"_s);
        QCOMPARE(row.siblingAtColumn(1).data().toString(), u"a x"_s);
        QCOMPARE(row.siblingAtColumn(1).data(Qt::ToolTipRole).toString(), u"a\r\nx"_s);
        QCOMPARE(m_tree.index(0, 0).data(BookmarkTree::KeyRole).toString(), u"1G"_s);
        QCOMPARE(m_tree.index(0, 0).data(BookmarkTree::ImageRole).toString(), u"BOOKMARK_GROUP"_s);
        QVERIFY(!row.siblingAtColumn(1).data(BookmarkTree::ImageRole).isValid());
    }

    void place_tellsWhatStandsThere()
    {
        const QModelIndex group = m_tree.index(1, 0);
        const QModelIndex row = m_tree.index(0, 1, group);
        QCOMPARE(m_tree.BookmarkAt(row), 13);
        QCOMPARE(m_tree.ItemAt(row), 101);
        QCOMPARE(m_tree.GroupAt(row), 2);
        QCOMPARE(m_tree.BookmarkAt(group), 0);
        QCOMPARE(m_tree.ItemAt(group), 0);
        QCOMPARE(m_tree.GroupAt(group), 2);
        QCOMPARE(m_tree.GroupAt({}), 0);
        QCOMPARE(m_tree.BookmarkAt({}), 0);
        QCOMPARE(m_tree.GroupName(2), u"Ähre"_s);
        QCOMPARE(m_tree.GroupName(9), QString());
    }

    void bookmark_isFoundByItsItemAndByItsKey()
    {
        QCOMPARE(m_tree.BookmarkAt(m_tree.FindBookmark(101)), 11);
        QVERIFY(!m_tree.FindBookmark(999).isValid());
        QCOMPARE(m_tree.BookmarkAt(m_tree.IndexOfKey(u"14B"_s)), 14);
        QCOMPARE(m_tree.GroupAt(m_tree.IndexOfKey(u"3G"_s)), 3);
        for (const QString& key : {u"99B"_s, u"99G"_s, u"11G"_s, u"3"_s, QString()})
            QVERIFY2(!m_tree.IndexOfKey(key).isValid(), qPrintable(key));
    }

    // Sorting

    void column_sortsGroupsAndRowsAsPeopleDo_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("order");
        QTest::addColumn<QString>("shape");
        QTest::newRow("titles") << 0 << int(Qt::AscendingOrder)
                                << u"Ähre (1): item 10 | empty (0): | zwei (3): äpfel, Item 9, item 10"_s;
        QTest::newRow("titles down") << 0 << int(Qt::DescendingOrder)
                                     << u"zwei (3): item 10, Item 9, äpfel | empty (0): | Ähre (1): item 10"_s;
        QTest::newRow("descriptions") << 1 << int(Qt::AscendingOrder)
                                      << u"zwei (3): Item 9, item 10, äpfel | Ähre (1): item 10 | empty (0):"_s;
        QTest::newRow("descriptions down")
            << 1 << int(Qt::DescendingOrder) << u"zwei (3): item 10, äpfel, Item 9 | Ähre (1): item 10 | empty (0):"_s;
        QTest::newRow("none") << -1 << int(Qt::DescendingOrder)
                              << u"zwei (3): item 10, Item 9, äpfel | Ähre (1): item 10 | empty (0):"_s;
    }
    void column_sortsGroupsAndRowsAsPeopleDo()
    {
        QFETCH(int, column);
        QFETCH(int, order);
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German));
        m_tree.sort(1, Qt::DescendingOrder);
        m_tree.sort(column, Qt::SortOrder(order));
        const QString shape = Shape();
        QLocale::setDefault(before);
        QTEST(shape, "shape");
    }

    void sorting_keepsThePlacesOfRows()
    {
        const QPersistentModelIndex row = m_tree.IndexOfKey(u"12B"_s);
        const QPersistentModelIndex cell = m_tree.IndexOfKey(u"13B"_s).siblingAtColumn(1);
        const QPersistentModelIndex group = m_tree.IndexOfKey(u"3G"_s);
        for (const Qt::SortOrder order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
            m_tree.sort(0, order);
            QCOMPARE(row.data(BookmarkTree::KeyRole).toString(), u"12B"_s);
            QCOMPARE(cell.data(BookmarkTree::KeyRole).toString(), u"13B"_s);
            QCOMPARE(cell.column(), 1);
            QCOMPARE(group.data(BookmarkTree::KeyRole).toString(), u"3G"_s);
        }
    }

    void sorting_staysWhenTheRowsAreReadAnew()
    {
        m_tree.sort(0, Qt::DescendingOrder);
        m_tree.Show({{1, u"a"_s}, {2, u"b"_s}}, {{1, 1, u"x"_s, 1, {}}, {2, 2, u"y"_s, 1, {}}});
        QCOMPARE(Shape(), u"b (0): | a (2): y, x"_s);
    }

    // Changes

    void title_isChangedInAllRowsOfTheItem()
    {
        const QSignalSpy changes(&m_tree, &BookmarkTree::dataChanged);
        m_tree.SetTitle(101, u"new"_s);
        QCOMPARE(Shape(), u"zwei (3): new, Item 9, äpfel | Ähre (1): new | empty (0):"_s);
        QCOMPARE(changes.size(), 2);
        m_tree.SetTitle(101, u"new"_s);
        m_tree.SetTitle(999, u"other"_s);
        QCOMPARE(changes.size(), 2);
    }

    void bookmarkOfAGroupThatIsNotThere_isShownAllTheSame()
    {
        m_tree.Show({}, {{1, 1, u"x"_s, 7, {}}});
        QCOMPARE(Shape(), u"(no group) (1): x"_s);
        m_tree.Clear();
        QCOMPARE(m_tree.rowCount(), 0);
        QCOMPARE(m_tree.BookmarkCount(), 0);
    }

    // Dragging

    void bookmark_canBeDroppedOnAnotherGroupAlone()
    {
        const auto data = Dragged(u"12B"_s);
        const QModelIndex own = m_tree.index(0, 0);
        const QModelIndex other = m_tree.index(1, 0);
        const auto takes = [&](const QMimeData& what, const QModelIndex& place) {
            return m_tree.canDropMimeData(&what, Qt::MoveAction, -1, -1, place);
        };
        QVERIFY(takes(*data, other));
        QVERIFY(takes(*data, m_tree.index(0, 0, other))); // one of its bookmarks
        QVERIFY(takes(*data, m_tree.index(2, 0)));        // an empty one
        QVERIFY(!takes(*data, own));
        QVERIFY(!takes(*data, m_tree.index(0, 0, own)));
        QVERIFY(!takes(*data, {}));
        QVERIFY(!takes(*Dragged(u"1G"_s), other));
        QVERIFY(!takes(QMimeData(), other));
        QVERIFY(!m_tree.canDropMimeData(data.get(), Qt::CopyAction, -1, -1, other));
        QVERIFY(m_tree.flags(m_tree.IndexOfKey(u"12B"_s)) & Qt::ItemIsDragEnabled);
        QVERIFY(!(m_tree.flags(own) & Qt::ItemIsDragEnabled));
        QVERIFY(!(m_tree.flags({}) & Qt::ItemIsDropEnabled));
    }

    void drop_asksForTheMoveAndLeavesTheRows()
    {
        const QSignalSpy asked(&m_tree, &BookmarkTree::MoveAsked);
        const auto data = Dragged(u"12B"_s);
        QVERIFY(m_tree.dropMimeData(data.get(), Qt::MoveAction, 0, 0, m_tree.index(1, 0)));
        QCOMPARE(asked, (QList<QVariantList>{{qint64(12), qint64(2)}}));
        QVERIFY(!m_tree.dropMimeData(data.get(), Qt::MoveAction, 0, 0, m_tree.index(0, 0)));
        QCOMPARE(asked.size(), 1);
        QCOMPARE(Shape(), u"zwei (3): item 10, Item 9, äpfel | Ähre (1): item 10 | empty (0):"_s);
    }

    // Captions

    void caption_isThatOfTheTab()
    {
        QCOMPARE(PanelCaption(BookmarkTab::Bookmarks, u"x"_s, 1), u" Bookmarks :"_s);
        QCOMPARE(PanelCaption(BookmarkTab::Info, u"x"_s, 1), u" Item & Database Information :"_s);
        QCOMPARE(PanelCaption(BookmarkTab::FindResults), u" Find Results :"_s);
        QCOMPARE(PanelCaption(BookmarkTab::FindResults, u"a b"_s, 1), u" Find Results : a b (Exact)"_s);
        QCOMPARE(PanelCaption(BookmarkTab::FindResults, u"a b"_s, 2), u" Find Results : a b (All)"_s);
        QCOMPARE(PanelCaption(BookmarkTab::FindResults, u"a b"_s, 3), u" Find Results : a b"_s);
    }

    void captionOfLinks_isTheLongestThatFits()
    {
        const auto widthOf = [](const QString& text) { return int(text.size()); };
        QCOMPARE(LinksCaption(100, widthOf), u"Links && Selected Link Description:"_s);
        QCOMPARE(LinksCaption(34, widthOf), u"Links && Link Description:"_s);
        QCOMPARE(LinksCaption(24, widthOf), u"Links && Link Descr.:"_s);
        QCOMPARE(LinksCaption(0, widthOf), u"Links && Link Descr.:"_s);
    }

private:
    std::unique_ptr<QMimeData> Dragged(const QString& key) const
    {
        return std::unique_ptr<QMimeData>(m_tree.mimeData({m_tree.IndexOfKey(key)}));
    }
    QString Shape() const
    {
        QStringList groups;
        for (int i = 0; i < m_tree.rowCount(); ++i) {
            const QModelIndex group = m_tree.index(i, 0);
            QStringList titles;
            for (int row = 0; row < m_tree.rowCount(group); ++row)
                titles << m_tree.index(row, 0, group).data().toString();
            groups << (group.data().toString() + u": "_s + titles.join(u", "_s)).trimmed();
        }
        return groups.join(u" | "_s);
    }

    BookmarkTree m_tree;
};

QB_TEST_MAIN(TestBookmarkTree)
#include "tst_bookmark_tree.moc"
