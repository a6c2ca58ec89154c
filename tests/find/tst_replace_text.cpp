#include "find/ReplaceText.h"
#include "platform/richtext/RichText.h"
#include "platform/richtext/Rtf.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"
#include "text/CodeSections.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestReplaceText : public QObject {
    Q_OBJECT

private:
    static FindQuery QueryOf(const QString& text, FindMode mode = FindMode::Phrase)
    {
        FindQuery query;
        query.Text = text;
        query.Mode = mode;
        return query;
    }
    std::vector<ReplaceChange> Changes(qint64 item, const FindQuery& query, const QString& replacement)
    {
        return ChangesIn(*m_library, item, FindMatcher(query), replacement);
    }
    QString Stored(qint64 item, const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {item}).ToText();
    }
    QString Plain(qint64 item, const QString& column) { return PlainTextFromRtf(Stored(item, column)); }
    static QString Bold(const QString& text, qsizetype begin, qsizetype length)
    {
        RichText box;
        box.SetText(text);
        box.SetSelStart(begin);
        box.SetSelLength(length);
        box.SetSelBold(true);
        return WithLanguageInRtf(box.TextRTF(), u"Python"_s);
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_item = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"ersetzen ä.qbd"_s), LanguageType::None);
        m_item = AddItem(*m_library, 0, u"old title"_s, u"an old line\r\nand an OLD one"_s);
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void changes_areToldBeforeTheyAreMade()
    {
        const auto changes = Changes(m_item, QueryOf(u"old"_s), u"new"_s);
        QCOMPARE(changes.size(), size_t(3));
        QCOMPARE(changes[0].After, u"new title"_s);
        QCOMPARE(changes[2].Line, 2);
        QCOMPARE(changes[2].Before, u"and an OLD one"_s);
        QCOMPARE(changes[2].After, u"and an new one"_s);
        QCOMPARE(Stored(m_item, u"Title"_s), u"old title"_s);
    }

    void madeChanges_areThoseThatWereChosen()
    {
        const FixedClock clock;
        auto changes = Changes(m_item, QueryOf(u"old"_s), u"new"_s);
        changes.erase(changes.begin() + 1);
        MakeChanges(*m_library, changes);
        QCOMPARE(Stored(m_item, u"Title"_s), u"new title"_s);
        QCOMPARE(Plain(m_item, u"Code"_s), u"an old line\r\nand an new one"_s);
        QCOMPARE(m_library->QueryValue(u"SELECT LastChanged FROM Items"_s).ToDate(), clock.Now());
    }

    void formats_staysWhatTheyWere()
    {
        m_library->Execute(u"UPDATE Items SET Code = ?"_s, {Bold(u"plain old plain"_s, 6, 3)});
        MakeChanges(*m_library, Changes(m_item, QueryOf(u"old"_s), u"fairly new"_s));
        const QString rtf = Stored(m_item, u"Code"_s);
        QCOMPARE(rtf, Bold(u"plain fairly new plain"_s, 6, 10));
        QCOMPARE(LanguageInRtf(rtf), u"Python"_s);
    }

    void markup_isNeverLookedAt()
    {
        const QString before = Stored(m_item, u"Code"_s);
        QVERIFY(before.contains(u"fonttbl"_s));
        QVERIFY(Changes(m_item, QueryOf(u"fonttbl"_s), u"x"_s).empty());
        MakeChanges(*m_library, Changes(m_item, QueryOf(u"an old"_s), u"{\\b $1} \\"_s));
        QCOMPARE(Plain(m_item, u"Code"_s), u"{\\b $1} \\ line\r\nand {\\b $1} \\ one"_s);
    }

    void groups_standForWhatTheyMatched()
    {
        MakeChanges(*m_library,
                    Changes(m_item, QueryOf(u"(an) (old)|(x)"_s, FindMode::Expression), u"\\2\\3 \\1\\\\\\n"_s));
        QCOMPARE(Plain(m_item, u"Code"_s), u"old an\\\r\n line\r\nand OLD an\\\r\n one"_s);
    }

    void protectedHeaders_areLeftAlone()
    {
        RichText box;
        box.SetText(u"old code old"_s);
        box.SetSelStart(0);
        box.SetSelLength(8);
        box.SetSelProtected(true);
        m_library->Execute(u"UPDATE Items SET Code = ?"_s, {box.TextRTF()});
        FindQuery query = QueryOf(u"old"_s);
        query.Fields = BitOf(FindField::Code);
        MakeChanges(*m_library, Changes(m_item, query, u"new"_s));
        QCOMPARE(Plain(m_item, u"Code"_s), u"old code new"_s);
    }

    void textChangedMeanwhile_isRefusedAndNothingIsWritten()
    {
        const qint64 other = AddItem(*m_library, 0, u"old other"_s);
        auto changes = Changes(m_item, QueryOf(u"old"_s), u"new"_s);
        const auto more = Changes(other, QueryOf(u"old"_s), u"new"_s);
        changes.insert(changes.end(), more.begin(), more.end());
        m_library->Execute(u"UPDATE Items SET Title = 'another' WHERE ID = ?"_s, {other});
        QB_VERIFY_RAISES(MakeChanges(*m_library, changes), ErrorNumber::ValueNotAllowed);
        QCOMPARE(Stored(m_item, u"Title"_s), u"old title"_s);
        QCOMPARE(Plain(m_item, u"Code"_s), u"an old line\r\nand an OLD one"_s);
    }

    void titles_areHeldToTheirRules()
    {
        FindQuery query = QueryOf(u"old title"_s);
        QB_VERIFY_RAISES(MakeChanges(*m_library, Changes(m_item, query, u" "_s)), ErrorNumber::ZeroLengthNotAllowed);
        QB_VERIFY_RAISES(MakeChanges(*m_library, Changes(m_item, query, QString(256, u'x'))), ErrorNumber::TooLong);
        QB_VERIFY_RAISES(MakeChanges(*m_library, Changes(m_item, query, OrphanedItemsTitle)),
                         ErrorNumber::ValueNotAllowed);
        QCOMPARE(Stored(m_item, u"Title"_s), u"old title"_s);
    }

    void itemThatMayNotBeChanged_isRefused()
    {
        MakeMother(*m_library, Date::FromParts(2026, 1, 1));
        m_library->Execute(u"UPDATE Items SET LastChanged = 0"_s); // a child has deleted it
        QB_VERIFY_RAISES(MakeChanges(*m_library, Changes(m_item, QueryOf(u"line"_s), u"row"_s)),
                         ErrorNumber::ValueNotAllowed);
        QCOMPARE(Plain(m_item, u"Code"_s), u"an old line\r\nand an OLD one"_s);
    }

    void missingItem_isAnError() { QB_VERIFY_RAISES(Changes(4711, QueryOf(u"x"_s), {}), ErrorNumber::ItemNotFound); }

    void everythingReplacedByNothing_leavesNoText()
    {
        FindQuery query = QueryOf(u"[\\s\\S]+"_s, FindMode::Expression);
        query.Fields = BitOf(FindField::Code);
        MakeChanges(*m_library, Changes(m_item, query, {}));
        QCOMPARE(Stored(m_item, u"Code"_s), QString());
    }

    void wordsWithinOthers_goOnce()
    {
        m_library->Execute(u"UPDATE Items SET Title = 'abc ab'"_s);
        FindQuery query = QueryOf(u"ab abc"_s, FindMode::AllWords);
        query.Fields = BitOf(FindField::Title);
        MakeChanges(*m_library, Changes(m_item, query, u"x"_s));
        QCOMPARE(Stored(m_item, u"Title"_s), u"xc x"_s);
    }
};

QB_TEST_MAIN(TestReplaceText)
#include "tst_replace_text.moc"
