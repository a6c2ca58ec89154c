#include "platform/dao/TemporaryDatabase.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString Items = u"Items"_s;
const QString Title = u"Title"_s;

/// The titles from the current row to the end.
QStringList Rest(Recordset& rows)
{
    QStringList titles;
    for (; !rows.AtEnd(); rows.MoveNext())
        titles << rows[Title].ToText();
    return titles;
}

QString Current(const Recordset& rows)
{
    return rows[Title].ToText();
}

} // namespace

class TestRecordset : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_database = std::make_unique<TemporaryDatabase>();
        Db().AppendTableDef(ItemsTable());
        AddItems(Db(), {u"cherry"_s, u"apple"_s, u"banana"_s});
    }
    void cleanup() { m_database.reset(); }

    // Moving

    void rows_comeInTheOrderAskedFor()
    {
        Recordset rows = Db().OpenRecordset(Items, u"ID > ?"_s, {0}, u"Title"_s);
        QCOMPARE(rows.RecordCount(), 3);
        QCOMPARE(Rest(rows), QStringList({u"apple"_s, u"banana"_s, u"cherry"_s}));
        Recordset backwards = Db().OpenRecordset(Items, {}, {}, u"Title DESC"_s);
        QCOMPARE(Current(backwards), u"cherry"_s);
    }

    void rowsWithoutAnOrder_comeAsTheyWereAdded()
    {
        Db().AppendIndex(Items, {.Name = u"ByRating"_s, .Fields = {u"Rating"_s}});
        Db().Execute(u"UPDATE Items SET Rating = -ID"_s);
        Recordset rows = Db().OpenRecordset(Items);
        QCOMPARE(Rest(rows), QStringList({u"cherry"_s, u"apple"_s, u"banana"_s}));
    }

    void moves_reachBothEnds()
    {
        Recordset rows = OpenSorted();
        QVERIFY(!rows.AtBegin() && !rows.AtEnd());
        rows.MoveLast();
        QCOMPARE(Current(rows), u"cherry"_s);
        rows.MoveNext();
        QVERIFY(rows.AtEnd() && !rows.AtBegin());
        QB_VERIFY_RAISES(rows.MoveNext(), 3021);
        QB_VERIFY_RAISES(rows[Title], 3021);
        rows.MovePrevious();
        QCOMPARE(Current(rows), u"cherry"_s);
        rows.MoveFirst();
        rows.MovePrevious();
        QVERIFY(rows.AtBegin() && !rows.AtEnd());
        QB_VERIFY_RAISES(rows.MovePrevious(), 3021);
        QB_VERIFY_RAISES(rows[Title], 3021);
        rows.MoveNext();
        QCOMPARE(Current(rows), u"apple"_s);
    }

    void emptyRecordset_isAtBothEnds()
    {
        Recordset rows = Db().OpenRecordset(Items, u"ID > 99"_s);
        QVERIFY(rows.IsEmpty() && rows.AtBegin() && rows.AtEnd());
        QCOMPARE(rows.RecordCount(), 0);
        QB_VERIFY_RAISES(rows.MoveFirst(), 3021);
        QB_VERIFY_RAISES(rows.MoveLast(), 3021);
        QB_VERIFY_RAISES(rows.MoveNext(), 3021);
        QB_VERIFY_RAISES(rows.MovePrevious(), 3021);
        QB_VERIFY_RAISES(rows.Bookmark(), 3021);
        QB_VERIFY_RAISES(rows[Title], 3021);
        QB_VERIFY_RAISES(rows.Edit(), 3021);
        QB_VERIFY_RAISES(rows.Delete(), 3021);
    }

    void keyset_doesNotSeeLaterRows()
    {
        Recordset rows = OpenSorted();
        AddItems(*m_database->OpenSecond(), {u"aardvark"_s});
        QCOMPARE(Rest(rows), QStringList({u"apple"_s, u"banana"_s, u"cherry"_s}));
    }

    void findFirst_goesToTheFirstFittingRow()
    {
        Recordset rows = OpenSorted();
        rows.FindFirst(u"Title LIKE ?"_s, {u"%n%"_s});
        QVERIFY(!rows.NoMatch());
        QCOMPARE(Current(rows), u"banana"_s);
        rows.FindFirst(u"ID >= 1"_s, {});
        QCOMPARE(Current(rows), u"apple"_s);
        rows.FindFirst(u"Title = ?"_s, {u"CHERRY"_s});
        QCOMPARE(Current(rows), u"cherry"_s);
    }

    void findFirst_withoutAnOrder_goesToTheFirstOfTheRecordset()
    {
        Db().AppendIndex(Items, {.Name = u"ByTitle"_s, .Fields = {Title}});
        Recordset rows = Db().OpenRecordset(Items);
        const QStringList order = Rest(rows);
        rows.FindFirst(u"Title > ?"_s, {u"a"_s});
        QCOMPARE(Current(rows), order.first());
    }

    void findFirst_withoutAMatch_stays()
    {
        Recordset rows = OpenSorted();
        rows.MoveNext();
        rows.FindFirst(u"Title = ?"_s, {u"grape"_s});
        QVERIFY(rows.NoMatch());
        QCOMPARE(Current(rows), u"banana"_s);
        rows.FindFirst(u"Title = ?"_s, {u"apple"_s});
        QVERIFY(!rows.NoMatch());
    }

    void findFirst_staysWithinTheRecordset()
    {
        Recordset rows = Db().OpenRecordset(Items, u"Title <> ?"_s, {u"apple"_s}, Title);
        rows.FindFirst(u"Title = ?"_s, {u"apple"_s});
        QVERIFY(rows.NoMatch());
    }

    void findFirst_isNotMisledByARowAddedElsewhere()
    {
        Recordset rows = OpenSorted();
        AddItems(*m_database->OpenSecond(), {u"aardvark"_s});
        rows.MoveLast();
        rows.FindFirst(u"Title LIKE ?"_s, {u"a%"_s});
        QVERIFY(!rows.NoMatch());
        QCOMPARE(Current(rows), u"apple"_s);
    }

    void bookmark_leadsBack()
    {
        Recordset rows = OpenSorted();
        rows.MoveNext();
        const Recordset::Mark mark = rows.Bookmark();
        rows.MoveLast();
        rows.SetBookmark(mark);
        QCOMPARE(Current(rows), u"banana"_s);
        QB_VERIFY_RAISES(rows.SetBookmark(99), 3021);
        QCOMPARE(Current(rows), u"banana"_s);
    }

    void clone_movesOnItsOwn()
    {
        Recordset rows = OpenSorted();
        Recordset clone = rows.Clone();
        clone.MoveLast();
        QCOMPARE(Current(rows), u"apple"_s);
        QCOMPARE(Current(clone), u"cherry"_s);
        clone.SetBookmark(rows.Bookmark());
        QCOMPARE(Current(clone), u"apple"_s);
    }

    // Columns

    void columns_areNamedInAnyCase()
    {
        Recordset rows = OpenSorted();
        QCOMPARE(rows[u"TITLE"_s].ToText(), u"apple"_s);
        rows.Edit();
        rows.Set(u"rating"_s, 3);
        QCOMPARE(rows[u"Rating"_s].ToLong(), 3);
    }

    void unknownColumn_raises3265()
    {
        Recordset rows = OpenSorted();
        QB_VERIFY_RAISES(rows[u"None"_s], 3265);
        QB_VERIFY_RAISES(rows.GetChunk(u"None"_s, 0, 1), 3265);
        rows.Edit();
        QB_VERIFY_RAISES(rows.Set(u"None"_s, 1), 3265);
        QB_VERIFY_RAISES(rows.AppendChunk(u"None"_s, 1), 3265);
    }

    // Changing

    void addNew_showsDefaultsAndAddsOneRow()
    {
        Recordset rows = OpenSorted();
        rows.AddNew();
        QCOMPARE(rows[u"Rating"_s].ToLong(), 7);
        QVERIFY(rows[Title].IsNull());
        rows.Set(Title, u"date"_s);
        QCOMPARE(rows[Title].ToText(), u"date"_s);
        rows.Update();
        QCOMPARE(Current(rows), u"apple"_s);
        QCOMPARE(rows.RecordCount(), 4);
        rows.SetBookmark(rows.LastModified());
        QCOMPARE(Current(rows), u"date"_s);
        QCOMPARE(rows[u"ID"_s].ToLong(), 4);
        QCOMPARE(StoredTitles(), QStringList({u"cherry"_s, u"apple"_s, u"banana"_s, u"date"_s}));
    }

    void addNew_atEitherEnd_leavesThePlace_data()
    {
        QTest::addColumn<bool>("atEnd");
        QTest::newRow("before the first row") << false;
        QTest::newRow("behind the last row") << true;
    }

    void addNew_atEitherEnd_leavesThePlace()
    {
        QFETCH(bool, atEnd);
        Recordset rows = OpenSorted();
        if (atEnd) {
            rows.MoveLast();
            rows.MoveNext();
        } else {
            rows.MovePrevious();
        }
        rows.AddNew();
        rows.Set(Title, u"date"_s);
        rows.Update();
        QCOMPARE(rows.AtBegin(), !atEnd);
        QCOMPARE(rows.AtEnd(), atEnd);
        QCOMPARE(rows.RecordCount(), 4);
    }

    void addNew_toAnEmptyRecordset_canBeReadAfterMoveFirst()
    {
        Recordset rows = Db().OpenRecordset(Items, u"ID > 99"_s);
        rows.AddNew();
        rows.Set(Title, u"date"_s);
        rows.Update();
        rows.MoveFirst();
        QCOMPARE(Rest(rows), QStringList{u"date"_s});
    }

    void addNew_withoutAnyValue_addsARowOfDefaults()
    {
        Db().AppendTableDef({.Name = u"Plain"_s, .Fields = {{.Name = u"N"_s, .DefaultValue = 5}}, .Indexes = {}});
        Recordset rows = Db().OpenRecordset(u"Plain"_s);
        rows.AddNew();
        rows.Update();
        rows.MoveFirst();
        QCOMPARE(rows[u"N"_s].ToLong(), 5);
    }

    void edit_changesOnlyWhatWasSet()
    {
        Recordset rows = OpenSorted();
        rows.MoveNext();
        rows.Edit();
        rows.Set(Title, u"blueberry"_s);
        QCOMPARE(StoredTitles(), QStringList({u"cherry"_s, u"apple"_s, u"banana"_s}));
        rows.Update();
        QCOMPARE(Current(rows), u"blueberry"_s);
        QCOMPARE(rows[u"Rating"_s].ToLong(), 7);
        QCOMPARE(rows.LastModified(), rows.Bookmark());
        QCOMPARE(StoredTitles(), QStringList({u"cherry"_s, u"apple"_s, u"blueberry"_s}));
    }

    void edit_readsTheRowAnew()
    {
        Recordset rows = OpenSorted();
        QCOMPARE(Current(rows), u"apple"_s);
        m_database->OpenSecond()->Execute(u"UPDATE Items SET Title = 'apricot' WHERE Title = 'apple'"_s);
        rows.Edit();
        QCOMPARE(Current(rows), u"apricot"_s);
    }

    void cancelledChange_isForgotten_data()
    {
        QTest::addColumn<bool>("byMoving");
        QTest::newRow("CancelUpdate") << false;
        QTest::newRow("a move") << true;
    }

    void cancelledChange_isForgotten()
    {
        QFETCH(bool, byMoving);
        Recordset rows = OpenSorted();
        rows.Edit();
        rows.Set(Title, u"changed"_s);
        byMoving ? rows.MoveFirst() : rows.CancelUpdate();
        QCOMPARE(Current(rows), u"apple"_s);
        QB_VERIFY_RAISES(rows.Update(), 3021);
        QCOMPARE(StoredTitles(), QStringList({u"cherry"_s, u"apple"_s, u"banana"_s}));
    }

    void cancelledAddNew_addsNothing()
    {
        Recordset rows = OpenSorted();
        rows.AddNew();
        rows.Set(Title, u"date"_s);
        rows.CancelUpdate();
        QCOMPARE(Current(rows), u"apple"_s);
        QCOMPARE(rows.RecordCount(), 3);
        QCOMPARE(StoredTitles().size(), 3);
    }

    void changeWithoutEdit_raises3021()
    {
        Recordset rows = OpenSorted();
        QB_VERIFY_RAISES(rows.Set(Title, u"x"_s), 3021);
        QB_VERIFY_RAISES(rows.AppendChunk(u"Notes"_s, u"x"_s), 3021);
        QB_VERIFY_RAISES(rows.Update(), 3021);
        QCOMPARE(Current(rows), u"apple"_s);
    }

    void failedUpdate_keepsTheEdit()
    {
        Recordset rows = OpenSorted();
        rows.Edit();
        rows.Set(Title, QString(51, u'x'));
        QB_VERIFY_RAISES(rows.Update(), 3163);
        QCOMPARE(Current(rows), QString(51, u'x'));
        rows.Set(Title, u"short"_s);
        rows.Update();
        QCOMPARE(StoredTitles(), QStringList({u"cherry"_s, u"short"_s, u"banana"_s}));
    }

    void failedAddNew_keepsTheNewRow()
    {
        Recordset rows = OpenSorted();
        rows.AddNew();
        rows.Set(u"Rating"_s, 1);
        QB_VERIFY_RAISES(rows.Update(), 3314);
        QCOMPARE(rows.RecordCount(), 3);
        rows.Set(Title, u"date"_s);
        rows.Update();
        rows.SetBookmark(rows.LastModified());
        QCOMPARE(rows[u"Rating"_s].ToLong(), 1);
    }

    void delete_putsTheNextRowInItsPlace()
    {
        Recordset rows = OpenSorted();
        rows.MoveNext();
        rows.Delete();
        QCOMPARE(Current(rows), u"cherry"_s);
        rows.Delete();
        QVERIFY(rows.AtEnd());
        rows.MoveFirst();
        QCOMPARE(Current(rows), u"apple"_s);
        rows.Delete();
        QVERIFY(rows.IsEmpty() && rows.AtBegin() && rows.AtEnd());
        QCOMPARE(StoredTitles(), QStringList());
    }

    void delete_keepsFindingTheOthers()
    {
        Recordset rows = OpenSorted();
        rows.FindFirst(u"Title = 'cherry'"_s, {});
        const Recordset::Mark cherry = rows.Bookmark();
        rows.MoveFirst();
        rows.Delete();
        rows.SetBookmark(cherry);
        QCOMPARE(Current(rows), u"cherry"_s);
        QCOMPARE(rows.RecordCount(), 2);
    }

    void rowDeletedByAnother_raises3167()
    {
        Recordset rows = OpenSorted();
        m_database->OpenSecond()->Execute(u"DELETE FROM Items WHERE Title = 'apple'"_s);
        QB_VERIFY_RAISES(rows[Title], 3167);
        QB_VERIFY_RAISES(rows[u"Notes"_s], 3167);
        QB_VERIFY_RAISES(rows.Edit(), 3167);
        QB_VERIFY_RAISES(rows.Delete(), 3167);
        rows.MoveNext();
        QCOMPARE(Current(rows), u"banana"_s);
    }

    void rowDeletedByAnotherDuringTheEdit_raises3167()
    {
        Recordset rows = OpenSorted();
        rows.Edit();
        rows.Set(Title, u"changed"_s);
        m_database->OpenSecond()->Execute(u"DELETE FROM Items WHERE Title = 'apple'"_s);
        QB_VERIFY_RAISES(rows.Update(), 3167);
        QCOMPARE(StoredTitles(), QStringList({u"cherry"_s, u"banana"_s}));
    }

    // Long values

    void chunks_ofText_addUp()
    {
        Recordset rows = OpenSorted();
        rows.Edit();
        for (const QString& part : {u"Größe "_s, u"und "_s, u"😀"_s})
            rows.AppendChunk(u"Notes"_s, part);
        QCOMPARE(rows[u"Notes"_s].ToText(), u"Größe und 😀"_s);
        rows.Update();
        QCOMPARE(rows[u"Notes"_s].ToText(), u"Größe und 😀"_s);
        const QByteArray stored = u"Größe und 😀"_s.toUtf8();
        QCOMPARE(rows.GetChunk(u"Notes"_s, 0, 1000), stored);
        QCOMPARE(rows.GetChunk(u"Notes"_s, 2, 3), stored.mid(2, 3));
    }

    void chunks_ofBytes_addUp()
    {
        QByteArray bytes;
        for (int i = 0; i < 50000; ++i)
            bytes += char(i * 7);
        constexpr qsizetype ChunkSize = 16384;
        Recordset rows = OpenSorted();
        rows.Edit();
        for (qsizetype at = 0; at < bytes.size(); at += ChunkSize)
            rows.AppendChunk(u"Page"_s, bytes.mid(at, ChunkSize));
        rows.Update();
        QByteArray read;
        for (QByteArray chunk; !(chunk = rows.GetChunk(u"Page"_s, read.size(), ChunkSize)).isEmpty();)
            read += chunk;
        QCOMPARE(read, bytes);
        QCOMPARE(rows[u"Page"_s].ToBytes(), bytes);
    }

    /// A chunk may end within a character.
    void textCopiedByChunks_isTheSameText()
    {
        const QString text = u"äöü😀ß"_s;
        Db().Execute(u"UPDATE Items SET Notes = ? WHERE Title = 'apple'"_s, {text});
        Recordset from = OpenSorted();
        Recordset to = OpenSorted();
        to.MoveLast();
        to.Edit();
        for (qint64 at = 0;; at += 3) {
            const QByteArray chunk = from.GetChunk(u"Notes"_s, at, 3);
            if (chunk.isEmpty())
                break;
            to.AppendChunk(u"Notes"_s, chunk);
        }
        to.Update();
        QVERIFY(to[u"Notes"_s] == Value(text));
    }

    void firstChunk_replacesTheOldValue()
    {
        Db().Execute(u"UPDATE Items SET Notes = 'old'"_s);
        Recordset rows = OpenSorted();
        rows.Edit();
        rows.AppendChunk(u"Notes"_s, u"new"_s);
        rows.Update();
        QCOMPARE(rows[u"Notes"_s].ToText(), u"new"_s);
    }

    void chunkBeyondTheEnd_isEmpty()
    {
        Db().Execute(u"UPDATE Items SET Page = ?"_s, {"12345"_ba});
        const Recordset rows = OpenSorted();
        QCOMPARE(rows.GetChunk(u"Page"_s, 5, 10), QByteArray());
        QCOMPARE(rows.GetChunk(u"Page"_s, 99, 10), QByteArray());
        QCOMPARE(rows.GetChunk(u"Page"_s, 4, 10), "5"_ba);
        QCOMPARE(rows.GetChunk(u"Notes"_s, 0, 10), QByteArray()); // Null
    }

private:
    Database& Db() { return **m_database; }
    Recordset OpenSorted() { return Db().OpenRecordset(Items, {}, {}, Title); }
    QStringList StoredTitles() { return Texts(Db(), u"SELECT Title FROM Items ORDER BY ID"_s); }

    std::unique_ptr<TemporaryDatabase> m_database;
};

QB_TEST_MAIN(TestRecordset)
#include "tst_recordset.moc"
