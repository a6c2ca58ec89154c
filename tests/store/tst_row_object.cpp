#include "platform/dao/DBEngine.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What row objects share: they write what was changed, and know what others have written.
class TestRowObject : public QObject {
    Q_OBJECT

    TemporaryHome m_home;
    FixedClock m_clock;
    std::unique_ptr<Library> m_library;
    qint64 m_id = 0;

    CCodeItem& Item(CCodeItem& item)
    {
        item.Initialise(*m_library, QString::number(m_id));
        return item;
    }
    QString Row(const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {m_id}).ToText();
    }
    void Elsewhere(const QString& column, const Value& value)
    {
        Library::Open(m_library->Name())->Execute(u"UPDATE Items SET %1 = ? WHERE ID = ?"_s.arg(column), {value, m_id});
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_library = MakeLibrary(m_home.Path(u"rows Ω.qbd"_s), LanguageType::None);
        m_id = AddItem(*m_library, 0, u"title"_s, u"code"_s);
    }
    void cleanup()
    {
        m_library.reset();
        QFile::remove(m_home.Path(u"rows Ω.qbd"_s));
    }

    void commit_writesNoColumnThatWasNotChanged()
    {
        CCodeItem item;
        Item(item).SetTitle(u"own title"_s);
        Elsewhere(u"Code"_s, u"their code"_s);
        Elsewhere(u"ParentID"_s, 0);
        Elsewhere(u"ItemRating"_s, 7);
        Elsewhere(u"HTMLPage"_s, true);
        Elsewhere(u"Created"_s, 77);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Title"_s), u"own title"_s);
        QCOMPARE(Row(u"Code"_s), u"their code"_s);
        QCOMPARE(Row(u"ItemRating"_s), u"7"_s);
        QCOMPARE(Row(u"HTMLPage"_s), u"-1"_s);
        QCOMPARE(Row(u"Created"_s), u"77"_s);
    }

    void columnSetBackToWhatWasRead_isNotWritten()
    {
        CCodeItem item;
        Item(item).SetTitle(u"other"_s);
        item.SetTitle(u"title"_s);
        Elsewhere(u"Title"_s, u"theirs"_s);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Title"_s), u"theirs"_s);
    }

    void failedCommit_keepsWhatWasChangedForTheNext()
    {
        CCodeItem item;
        Item(item).SetTitle(QString(300, u'x'));
        item.SetInfo(u"info"_s);
        item.SetItemChanged(true);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        QVERIFY(!item.Commit());
        QCOMPARE(Row(u"Info"_s), QString());
        item.SetTitle(u"shorter"_s);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Title"_s) + Row(u"Info"_s), u"shorterinfo"_s);
    }

    void foreignChanges_sayWhatOthersHaveWritten()
    {
        CCodeItem item;
        Item(item).ReadWhole();
        item.SetTitle(u"own"_s);
        item.SetInfo(u"same"_s);
        QVERIFY(item.ForeignChanges().empty());
        Elsewhere(u"Title"_s, u"theirs"_s);
        Elsewhere(u"Notes"_s, u"their notes"_s);
        Elsewhere(u"Info"_s, u"same"_s);
        const std::vector<RowObject::ForeignChange> changes = item.ForeignChanges();
        QCOMPARE(changes.size(), 3u);
        QCOMPARE(changes[0].Column, size_t(CCodeItem::TitleColumn));
        QCOMPARE(changes[0].Theirs.ToText(), u"theirs"_s);
        QVERIFY(changes[0].OwnChanged);
        QCOMPARE(changes[1].Column, size_t(CCodeItem::InfoColumn));
        QVERIFY(!changes[1].OwnChanged); // to the same
        QCOMPARE(changes[2].Column, size_t(CCodeItem::NotesColumn));
        QVERIFY(!changes[2].OwnChanged);
        item.TakeTheirs(changes[2]);
        QCOMPARE(item.Notes(), u"their notes"_s);
        item.KeepOwn(changes[0]);
        QCOMPARE(item.ForeignChanges().size(), 1u);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Title"_s) + Row(u"Notes"_s), u"owntheir notes"_s);
        QVERIFY(item.ForeignChanges().empty());
    }

    void memo_isReadWhenItIsAskedFor()
    {
        CCodeItem item;
        QCOMPARE(Item(item).Title(), u"title"_s);
        Elsewhere(u"Code"_s, u"their code"_s);
        QVERIFY(item.ForeignChanges().empty()); // nothing is known of it that could differ
        QCOMPARE(item.Code(), u"their code"_s);
        Elsewhere(u"Code"_s, u"newer code"_s);
        QCOMPARE(item.ForeignChanges().size(), 1u);
        item.SetCode(u"own code"_s);
        QVERIFY(item.ForeignChanges().at(0).OwnChanged);
        item.SetTitle(u"own title"_s);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Title"_s) + Row(u"Code"_s) + Row(u"Notes"_s), u"own titleown code"_s);
    }

    void memoThatWasNotAskedFor_staysAsOthersWroteIt()
    {
        CCodeItem item;
        Item(item).SetTitle(u"own title"_s);
        Elsewhere(u"Code"_s, u"their code"_s);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Title"_s) + Row(u"Code"_s), u"own titletheir code"_s);
        QCOMPARE(item.Code(), u"their code"_s);
    }

    void memoThatWasSetUnseen_isAChangeOfWhatStandsThere()
    {
        CCodeItem item;
        Item(item).SetCode(Row(u"Code"_s)); // what it says already
        Elsewhere(u"Code"_s, u"their code"_s);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
        QCOMPARE(Row(u"Code"_s), u"their code"_s);
    }

    void wholeRow_isOfOneMoment()
    {
        const QString code = Row(u"Code"_s);
        CCodeItem item;
        Item(item).ReadWhole();
        Elsewhere(u"Title"_s, u"their title"_s);
        Elsewhere(u"Code"_s, u"their code"_s);
        QCOMPARE(item.Title() + item.Code(), u"title"_s + code);
        QCOMPARE(item.ForeignChanges().size(), 2u);
    }

    void memosOfARow_areToldOfUnread()
    {
        m_library->Execute(u"UPDATE Items SET Notes = NULL, Example = '' WHERE ID = ?"_s, {m_id});
        CCodeItem item;
        QStringList told;
        QObject::connect(&item, &CCodeItem::CodeLoaded, &item,
                         [&told](bool has) { told << u"code"_s << (has ? u"1"_s : u"0"_s); });
        QObject::connect(&item, &CCodeItem::NotesLoaded, &item,
                         [&told](bool has) { told << u"notes"_s << (has ? u"1"_s : u"0"_s); });
        QObject::connect(&item, &CCodeItem::UsageLoaded, &item,
                         [&told](bool has) { told << u"usage"_s << (has ? u"1"_s : u"0"_s); });
        Item(item).Title();
        QCOMPARE(told, (QStringList{u"code"_s, u"1"_s, u"notes"_s, u"0"_s, u"usage"_s, u"0"_s}));
    }

    void foreignChangesOfARowThatIsGone_raise3167()
    {
        CCodeItem item;
        Item(item).SetTitle(u"own"_s);
        Library::Open(m_library->Name())->Execute(u"DELETE FROM Items"_s);
        QB_VERIFY_RAISES(item.ForeignChanges(), 3167);
    }

    void storedFile_itsDescriptionLeavesWhatOthersWrote()
    {
        const qint64 id = AddStoredFile(*m_library, m_id, u"a.txt"_s, "text"_ba, m_clock.Now());
        CFileObject file;
        file.Initialise(*m_library, QString::number(id));
        file.SetDescription(u"words"_s);
        file.SetDescriptionChanged(true);
        const qint64 other = AddItem(*m_library, 0, u"other"_s);
        Library::Open(m_library->Name())->Execute(u"UPDATE Files SET CodeID = ?"_s, {other});
        QVERIFY(file.Commit());
        QCOMPARE(m_library->QueryValue(u"SELECT CodeID FROM Files"_s).ToLong(), other);
        QCOMPARE(m_library->QueryValue(u"SELECT Description FROM Files"_s).ToText(), u"words"_s);
    }
};

QB_TEST_MAIN(TestRowObject)
#include "tst_row_object.moc"
