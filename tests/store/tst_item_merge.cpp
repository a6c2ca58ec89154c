#include "platform/dao/DBEngine.h"
#include "platform/richtext/RtfPlainText.h"
#include "store/ItemMerge.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QString Rtf(const QString& text)
{
    return RtfFromPlainText(text, CodeFont);
}

} // namespace

/// The saving of an item that was changed here and by another program.
class TestItemMerge : public QObject {
    Q_OBJECT

    TemporaryHome m_home;
    FixedClock m_clock;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_library;
    std::unique_ptr<CCodeItem> m_item;
    qint64 m_id = 0;

    void Elsewhere(const QString& column, const Value& value)
    {
        Library::Open(m_library->Name())->Execute(u"UPDATE Items SET %1 = ? WHERE ID = ?"_s.arg(column), {value, m_id});
    }
    QString Row(const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {m_id}).ToText();
    }
    MergedSave Save()
    {
        m_item->SetItemChanged(true);
        return SaveMerged(*m_item, *m_library);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_library = MakeLibrary(m_home.Path(u"merge Ω.qbd"_s), LanguageType::None);
        m_id = AddItem(*m_library, 0, u"title"_s, u"one\r\ntwo"_s);
        m_item = std::make_unique<CCodeItem>();
        m_item->Initialise(*m_library, QString::number(m_id));
        m_item->ReadWhole(); // as what is shown
    }
    void cleanup()
    {
        m_item.reset();
        m_library.reset();
        m_prompts.reset();
        QFile::remove(m_home.Path(u"merge Ω.qbd"_s));
    }

    void whatWasNotChangedHere_isTaken()
    {
        m_item->SetCode(Rtf(u"mine"_s));
        Elsewhere(u"Title"_s, u"their title"_s);
        Elsewhere(u"Notes"_s, Rtf(u"their notes"_s));
        const MergedSave save = Save();
        QVERIFY(save.Saved);
        QCOMPARE(save.Taken, (std::vector<size_t>{CCodeItem::TitleColumn, CCodeItem::NotesColumn}));
        QCOMPARE(m_item->Title(), u"their title"_s);
        QCOMPARE(Row(u"Code"_s), Rtf(u"mine"_s));
        QCOMPARE(Row(u"Notes"_s), Rtf(u"their notes"_s));
    }

    void textChangedOnBothSides_isAskedFor_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<ChosenText>("answer");
        QTest::addColumn<QString>("result");
        for (const QString& column : {u"Title"_s, u"Description"_s, u"Info"_s, u"Code"_s, u"Example"_s, u"Notes"_s}) {
            QTest::addRow("%s, own", qPrintable(column)) << column << ChosenText::Own << u"mine"_s;
            QTest::addRow("%s, theirs", qPrintable(column)) << column << ChosenText::Theirs << u"theirs"_s;
            QTest::addRow("%s, neither", qPrintable(column)) << column << ChosenText::Cancel << u"theirs"_s;
        }
    }
    void textChangedOnBothSides_isAskedFor()
    {
        QFETCH(QString, column);
        QFETCH(ChosenText, answer);
        QFETCH(QString, result);
        const QHash<QString, void (ItemRow::*)(const QString&)> setters{
            {u"Title"_s, &CCodeItem::SetTitle},     {u"Description"_s, &CCodeItem::SetDescription},
            {u"Info"_s, &CCodeItem::SetInfo},       {u"Code"_s, &CCodeItem::SetCode},
            {u"Example"_s, &CCodeItem::SetExample}, {u"Notes"_s, &CCodeItem::SetNotes}};
        ((*m_item).*setters[column])(u"mine"_s);
        Elsewhere(column, u"theirs"_s);
        m_prompts->ExpectTextChoice(answer);
        const MergedSave save = Save();
        QCOMPARE(save.Saved, answer != ChosenText::Cancel);
        QCOMPARE(m_item->ItemChanged(), answer == ChosenText::Cancel);
        QCOMPARE(Row(column), result);
        QCOMPARE(m_prompts->Choices[0].Own, u"mine"_s);
        QCOMPARE(m_prompts->Choices[0].Theirs, u"theirs"_s);
    }

    void coloursAlone_areNoChangeOfAText()
    {
        const QString coloured = Rtf(u"one\r\ntwo"_s).replace(u"\\fs"_s, u"\\b\\fs"_s);
        QVERIFY(coloured != m_item->Code());
        m_item->SetCode(coloured);
        Elsewhere(u"Code"_s, Rtf(u"theirs"_s));
        QVERIFY(Save().Saved);
        QCOMPARE(Row(u"Code"_s), Rtf(u"theirs"_s));
        m_item->SetCode(Rtf(u"mine"_s));
        Elsewhere(u"Code"_s, Rtf(u"theirs"_s).replace(u"\\fs"_s, u"\\b\\fs"_s));
        QVERIFY(Save().Saved);
        QCOMPARE(Row(u"Code"_s), Rtf(u"mine"_s));
    }

    void sectionsOfAText_goWithIt()
    {
        m_item->SetCode(Rtf(u"mine"_s));
        m_item->SetCodeHeaders(3);
        Elsewhere(u"Code"_s, Rtf(u"theirs"_s));
        Elsewhere(u"CodeHeaders"_s, 4);
        m_prompts->ExpectTextChoice(ChosenText::Theirs);
        QVERIFY(Save().Saved);
        QCOMPARE(Row(u"CodeHeaders"_s), u"4"_s);
    }

    void otherValuesChangedOnBothSides_areKeptAsHere()
    {
        m_clock.AddSeconds(60);
        m_item->SetItemRating(5);
        Elsewhere(u"ItemRating"_s, 6);
        Elsewhere(u"LastChanged"_s, 7);
        QVERIFY(Save().Saved);
        QCOMPARE(Row(u"ItemRating"_s), u"5"_s);
        QCOMPARE(m_item->LastChanged(), m_clock.Now());
    }

    void rowThatIsGone_raises3167()
    {
        m_item->SetTitle(u"mine"_s);
        Elsewhere(u"ID"_s, m_id + 100);
        m_item->SetItemChanged(true);
        QB_VERIFY_RAISES(SaveMerged(*m_item, *m_library), 3167);
        QVERIFY(m_item->ItemChanged());
        QVERIFY(!m_library->InTransaction());
    }
};

QB_TEST_MAIN(TestItemMerge)
#include "tst_item_merge.moc"
