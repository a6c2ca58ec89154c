#include "finder/ReplacePlan.h"
#include "finder/ReplaceUndo.h"
#include "platform/richtext/RtfPlainText.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Choosing among the changes of a replacement, making them, and taking them back.
class TestReplacePlan : public QObject {
    Q_OBJECT

private:
    static FindMatcher MatcherFor(const QString& text)
    {
        FindQuery query;
        query.Text = text;
        return FindMatcher(query);
    }
    QString Stored(qint64 item, const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {item}).ToText();
    }
    QString Code(qint64 item) { return PlainTextFromRtf(Stored(item, u"Code"_s)); }
    QStringList Rows(const ReplacePlan& plan)
    {
        QStringList rows;
        for (int row = 0; row < plan.rowCount(); ++row) {
            const int state = plan.data(plan.index(row), Qt::CheckStateRole).toInt();
            rows << QString(QChar(state == Qt::Checked            ? u'+'
                                  : state == Qt::PartiallyChecked ? u'~'
                                                                  : u'-'))
                        + plan.data(plan.index(row), Qt::DisplayRole).toString();
        }
        return rows;
    }
    void Uncheck(ReplacePlan& plan, int row) { plan.setData(plan.index(row), Qt::Unchecked, Qt::CheckStateRole); }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_a = 0, m_b = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"plan ä.qbd"_s), LanguageType::None);
        m_a = AddItem(*m_library, 0, u"old one"_s, u"an old line"_s);
        m_b = AddItem(*m_library, 0, u"two"_s, u"old, old"_s);
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void plan_listsEachChangeUnderItsItem()
    {
        ReplacePlan plan;
        const QAbstractItemModelTester tester(&plan);
        QVERIFY(plan.Collect(*m_library, {m_a, m_b}, MatcherFor(u"old"_s), u"new"_s));
        QCOMPARE(Rows(plan),
                 (QStringList{u"+old one"_s, u"+T 1: old one → new one"_s, u"+C 1: an old line → an new line"_s,
                              u"+two"_s, u"+C 1: old, old → new, old"_s, u"+C 1: old, old → old, new"_s}));
        QCOMPARE(plan.StatusText(), u"4 of 4 changes in 2 items"_s);
    }

    void boxes_chooseChangesAndWholeItems()
    {
        ReplacePlan plan;
        plan.Collect(*m_library, {m_a, m_b}, MatcherFor(u"old"_s), u"new"_s);
        QSignalSpy changed(&plan, &ReplacePlan::ChosenChanged);
        Uncheck(plan, 1);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(Rows(plan).first(3),
                 (QStringList{u"~old one"_s, u"-T 1: old one → new one"_s, u"+C 1: an old line → an new line"_s}));
        Uncheck(plan, 3);
        QCOMPARE(plan.StatusText(), u"1 of 4 changes in 1 item"_s);
        QCOMPARE(plan.Chosen().size(), size_t(1));
        QCOMPARE(plan.Chosen().front().Field, FindField::Code);
        QCOMPARE(Rows(plan)[4].first(1), u"-"_s);
        plan.ChooseAll(true);
        QCOMPARE(plan.Chosen().size(), size_t(4));
        plan.ChooseAll(false);
        QVERIFY(plan.Chosen().empty());
    }

    void itemsThatMayNotBeChanged_areListedWithTheReason()
    {
        MakeMother(*m_library, Date::FromParts(2026, 1, 1));
        m_library->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {m_a}); // a child has deleted it
        ReplacePlan plan;
        plan.Collect(*m_library, {m_a, m_b, 99}, MatcherFor(u"old"_s), u"new"_s);
        QVERIFY2(Rows(plan)[0].startsWith(u"-old one: "_s), qPrintable(Rows(plan)[0]));
        QVERIFY2(Rows(plan).last().startsWith(u"-"_s), qPrintable(Rows(plan).last()));
        QVERIFY(!plan.setData(plan.index(1), Qt::Checked, Qt::CheckStateRole));
        plan.ChooseAll(true);
        QCOMPARE(plan.StatusText(), u"2 of 4 changes in 1 item"_s);
    }

    void nothingToChange_isSaid()
    {
        ReplacePlan plan;
        plan.Collect(*m_library, {m_a}, MatcherFor(u"xyz"_s), u"new"_s);
        QCOMPARE(plan.rowCount(), 0);
        QVERIFY(plan.StatusText().startsWith(u"There is nothing to change"_s));
    }

    void cancelledCollecting_leavesNothing()
    {
        class Impatient : public Work {
        public:
            bool IsCancelled() override { return true; }
        };
        Impatient work;
        ReplacePlan plan;
        QVERIFY(!plan.Collect(*m_library, {m_a, m_b}, MatcherFor(u"old"_s), u"new"_s, work));
        QCOMPARE(plan.rowCount(), 0);
    }

    // Making and taking back

    void undo_putsAllTextsBack()
    {
        const QString code = Stored(m_b, u"Code"_s);
        ReplacePlan plan;
        plan.Collect(*m_library, {m_a, m_b}, MatcherFor(u"old"_s), u"new"_s);
        Uncheck(plan, 5);
        ReplaceUndo undo;
        QVERIFY(!undo.CanUndo());
        undo.Replace(*m_library, plan.Chosen());
        QCOMPARE(Stored(m_a, u"Title"_s), u"new one"_s);
        QCOMPARE(Code(m_b), u"new, old"_s);
        QVERIFY(undo.CanUndo());
        const ReplaceUndo::Outcome outcome = undo.Undo(*m_library);
        QCOMPARE(outcome.Restored, size_t(3));
        QCOMPARE(outcome.Kept, QStringList());
        QCOMPARE(outcome.Text(), u"3 texts are as they were before."_s);
        QCOMPARE(Stored(m_a, u"Title"_s), u"old one"_s);
        QCOMPARE(Stored(m_b, u"Code"_s), code);
        QVERIFY(!undo.CanUndo());
        QCOMPARE(undo.Undo(*m_library).Restored, size_t(0));
    }

    void undo_leavesWhatWasChangedSinceAndSaysSo()
    {
        ReplacePlan plan;
        plan.Collect(*m_library, {m_a, m_b}, MatcherFor(u"old"_s), u"new"_s);
        ReplaceUndo undo;
        undo.Replace(*m_library, plan.Chosen());
        m_library->Execute(u"UPDATE Items SET Code = 'mine' WHERE ID = ?"_s, {m_a});
        m_library->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {m_b});
        const ReplaceUndo::Outcome outcome = undo.Undo(*m_library);
        QCOMPARE(outcome.Restored, size_t(1));
        QCOMPARE(outcome.Kept, (QStringList{u"“new one”: its code was changed since."_s,
                                            u"Item %1: it is not in the library any more."_s.arg(m_b)}));
        QCOMPARE(Stored(m_a, u"Title"_s), u"old one"_s);
        QCOMPARE(Stored(m_a, u"Code"_s), u"mine"_s);
        QCOMPARE(outcome.Text(), u"One text is as it was before.\n\nNot put back:\n“new one”: its code was changed "
                                 "since.\nItem %1: it is not in the library any more."_s.arg(m_b));
    }

    void undo_goesBackReplacementByReplacement()
    {
        ReplaceUndo undo;
        for (const auto& [from, to] : {std::pair(u"old"_s, u"new"_s), std::pair(u"new"_s, u"newest"_s)}) {
            ReplacePlan plan;
            plan.Collect(*m_library, {m_b}, MatcherFor(from), to);
            undo.Replace(*m_library, plan.Chosen());
        }
        QCOMPARE(Code(m_b), u"newest, newest"_s);
        undo.Undo(*m_library);
        QCOMPARE(Code(m_b), u"new, new"_s);
        undo.Undo(*m_library);
        QCOMPARE(Code(m_b), u"old, old"_s);
        QVERIFY(!undo.CanUndo());
    }

    void replacementThatFails_changesNothingAndIsNotRemembered()
    {
        ReplacePlan plan;
        plan.Collect(*m_library, {m_a, m_b}, MatcherFor(u"old"_s), u"new"_s);
        m_library->Execute(u"UPDATE Items SET Code = 'mine' WHERE ID = ?"_s, {m_b});
        ReplaceUndo undo;
        QB_VERIFY_RAISES(undo.Replace(*m_library, plan.Chosen()), ErrorNumber::ValueNotAllowed);
        QCOMPARE(Stored(m_a, u"Title"_s), u"old one"_s);
        QVERIFY(!undo.CanUndo());
    }
};

QB_TEST_MAIN(TestReplacePlan)
#include "tst_replace_plan.moc"
