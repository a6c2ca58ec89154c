#include "conflicts/ComparedBoxes.h"
#include "conflicts/ConflictSolver.h"
#include "conflicts/ConflictedLibrary.h"
#include "platform/richtext/Rtf.h"

#include <QRandomGenerator>
#include <QRegularExpression>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A side without a window.
struct PlainSide : ComparedSide {
    explicit PlainSide(std::vector<SideLine> lines) : Lines(std::move(lines)) {}

    int LineCount() const override { return int(Lines.size()); }
    QString LineText(int line) const override { return Lines[size_t(line)].Text; }
    LineLook LookOf(int line) const override { return Lines[size_t(line)].Look; }
    void SetLook(int line, LineLook look) override { Lines[size_t(line)].Look = look; }

    std::vector<SideLine> Lines;
};

/// Hears what the user has to wait for.
struct WaitingPrompts : ScriptedPrompts {
    std::unique_ptr<Information> InformUser(const QString& text) override
    {
        Told << text;
        return ScriptedPrompts::InformUser(text);
    }
    QStringList Told;
};

std::pair<PlainSide, PlainSide> SidesOf(const QString& first, const QString& second)
{
    const LineComparison comparison = CompareLines(first, second);
    return {PlainSide(SideLinesOf(comparison, LineOwner::First)),
            PlainSide(SideLinesOf(comparison, LineOwner::Second))};
}

} // namespace

/// The walk through the conflicts of a library, and what the two boxes hold on the way.
class TestConflictSolver : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    std::unique_ptr<ConflictSolver> m_solver;
    QList<qint64> m_decided;

    qint64 AddOne(const QString& title) { return m->AddConflict({.Title = title}, {.Title = title + u" too"_s}); }
    ConflictSolver& Solve(FindBaseVersion findBase = {})
    {
        m_solver = std::make_unique<ConflictSolver>(*m->Db);
        m_solver->SetFindBase(std::move(findBase));
        m_solver->Decided = [this](qint64 item) { m_decided << item; };
        m_solver->Load();
        return *m_solver;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m = std::make_unique<ConflictedLibrary>();
        m_decided.clear();
    }
    void cleanup()
    {
        m_solver.reset();
        m.reset();
    }

    void nothingToDecide_isSaid()
    {
        m->AddConflict({}, {});
        WaitingPrompts prompts;
        prompts.ExpectMsgBox(u"All problems resolved"_s);
        ConflictSolver solver(*m->Db);
        QVERIFY(!solver.Load());
        QCOMPARE(prompts.Told, QStringList{u"Trying to resolve problems automaticaly. Please wait..."_s});
        QCOMPARE(prompts.Messages.last().Text, u"All conflicts were resolved automaticaly."_s);
        QCOMPARE(prompts.Messages.last().Icon, MsgBoxIcon::Information);
        QVERIFY(!solver.HasConflict());
    }

    void onlyConflict_hasNoWayOn()
    {
        const qint64 one = AddOne(u"one"_s);
        ConflictSolver& solver = Solve();
        bool allSolved = false;
        solver.AllSolved = [&allSolved] { allSolved = true; };
        QCOMPARE(solver.StatusText(), u"Conflict No. 1 of 1"_s);
        QVERIFY(!solver.CanMoveNext() && !solver.CanMovePrevious());
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        QVERIFY(!solver.Keep(1));
        QCOMPARE(m->Prompts.Messages.last().Text, u"All conflicts have been solved."_s);
        QVERIFY(allSolved);
        QVERIFY(!solver.HasConflict());
        QCOMPARE(m_decided, QList<qint64>{one});
        QCOMPARE(m->Text(u"Title"_s, one), u"one too"_s);
    }

    void decisions_goOnToTheNextAndBackAtTheEnd()
    {
        for (const QString& title : {u"a"_s, u"b"_s, u"c"_s})
            AddOne(title);
        ConflictSolver& solver = Solve();
        QVERIFY(solver.MoveNext());
        QCOMPARE(solver.StatusText(), u"Conflict No. 2 of 3"_s);
        QVERIFY(solver.Keep(2));
        QCOMPARE(solver.StatusText(), u"Conflict No. 2 of 2"_s);
        QCOMPARE(solver.ItemTitle(), u"c"_s);
        QVERIFY(solver.Keep(2)); // the last of the row: back
        QCOMPARE(solver.ItemTitle(), u"a"_s);
        QCOMPARE(solver.StatusText(), u"Conflict No. 1 of 1"_s);
    }

    void changedRecord_isAskedAbout()
    {
        AddOne(u"a"_s);
        const qint64 b = AddOne(u"b"_s);
        ConflictSolver& solver = Solve();
        solver.Edited(ConflictSide::Item, u"edited"_s);
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        QVERIFY(!solver.MoveNext());
        QCOMPARE(m->Prompts.Messages.last().Text,
                 u"The actually displayed record has been changed! You should press one of the coloured buttons ('Keep "
                 "New Version' or 'Keep Old Version') to choose which version of the record you want to keep and which "
                 "version to discard.\r\nYou can also cancel all changes and just move to the next record."_s);
        QCOMPARE(m->Prompts.Messages.last().Buttons, MsgBoxButtons::OkCancel);
        QCOMPARE(solver.Number(), 1);
        m->Prompts.ExpectMsgBox(u"Save changes?"_s);
        QVERIFY(solver.MoveNext());
        QVERIFY(!solver.IsEdited());
        solver.Edited(ConflictSide::TempItem, u"decided"_s);
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        QVERIFY(!solver.MovePrevious());
        QVERIFY(m->Prompts.Messages.last().Text.endsWith(u"move to the previous record."_s));
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        QVERIFY(!solver.MayClose());
        QVERIFY(m->Prompts.Messages.last().Text.endsWith(u"cancel all changes and just close the solver."_s));
        QVERIFY(solver.Keep(1)); // a decision keeps the edits
        QVERIFY(solver.MayClose());
        QCOMPARE(m->Text(u"Title"_s, b), u"decided"_s);
    }

    void editsOfAFieldThatWasLeft_areAskedAbout()
    {
        AddOne(u"a"_s);
        AddOne(u"b"_s);
        ConflictSolver& solver = Solve();
        solver.Edited(ConflictSide::Item, u"edited"_s);
        solver.SelectField(SolverField::Code);
        m->Prompts.ExpectMsgBox(u"Save changes?"_s, MsgBoxResult::Cancel);
        QVERIFY(!solver.MoveNext());
        QCOMPARE(solver.Conflict().Title(), u"edited"_s);
    }

    void swappedSides_areOfThatConflictAlone()
    {
        AddOne(u"a"_s);
        AddOne(u"b"_s);
        ConflictSolver& solver = Solve();
        solver.Swap();
        QCOMPARE(solver.LeftSide(), ConflictSide::TempItem);
        solver.MoveNext();
        QCOMPARE(solver.LeftSide(), ConflictSide::Item);
    }

    void fields_areGoneThroughInTheirOrder()
    {
        const qint64 id = m->AddConflict({}, {.Title = u"x"_s, .Info = u"x"_s, .Notes = u"{\\rtf1 x}"_s});
        m->AddFile(id, u"f"_s, "f", m->At(5));
        ConflictSolver& solver = Solve();
        QCOMPARE(solver.Field(), SolverField::Title);
        QVERIFY(solver.IsInConflict(SolverField::Notes) && !solver.IsInConflict(SolverField::Code));
        QVERIFY(!solver.PreviousField());
        QVERIFY(solver.NextField());
        QCOMPARE(solver.Field(), SolverField::Notes);
        QVERIFY(solver.NextField());
        QCOMPARE(solver.Field(), SolverField::Files);
        QVERIFY(solver.NextField());
        QCOMPARE(solver.Field(), SolverField::ItemInfo);
        QVERIFY(!solver.NextField());
        QVERIFY(solver.PreviousField());
        QCOMPARE(solver.Field(), SolverField::Files);
    }

    void captionsAndPath_tellTheVersions()
    {
        const qint64 top = AddItem(*m->Db, 0, u"top"_s);
        const qint64 mid = AddItem(*m->Db, top, u"middle"_s);
        m->AddConflict({.Title = u"leaf"_s}, {.Title = u"x"_s}, mid);
        ConflictSolver& solver = Solve();
        QVERIFY(solver.Caption(ConflictSide::Item).startsWith(u"Main Database Item ("_s));
        QVERIFY(solver.Caption(ConflictSide::TempItem).startsWith(u"Replica Database Item ("_s));
        const QRegularExpression pattern(u"^Main Database Item \\(\\d{1,2}/\\d\\d/\\d{4} \\d\\d?:\\d\\d:\\d\\d\\)$"_s);
        QVERIFY(pattern.match(solver.Caption(ConflictSide::Item)).hasMatch());
        QCOMPARE(solver.ItemPath([](const QString&) { return true; }), u"top/middle/leaf"_s);
        QCOMPARE(solver.ItemPath([](const QString& text) { return text.size() <= 8; }), u".../leaf"_s);
        m->Db->Execute(u"UPDATE TempItems SET ReplicaOrigin = 0"_s);
        QVERIFY(Solve().Caption(ConflictSide::Item).startsWith(u"Replica"_s));
    }

    void versionFromOutside_isTheMainOneInAChild()
    {
        AddOne(u"a"_s);
        MakeChild(*m->Db, u"mother.qbd"_s, m->At(0));
        m->Reopen();
        ConflictSolver& solver = Solve();
        QVERIFY(solver.Caption(ConflictSide::Item).startsWith(u"Replica"_s));
        QVERIFY(solver.Caption(ConflictSide::TempItem).startsWith(u"Main"_s));
        m->Db->Execute(u"UPDATE TempItems SET ReplicaOrigin = 0"_s); // what it was before
        QVERIFY(Solve().Caption(ConflictSide::TempItem).startsWith(u"Replica"_s));
    }

    void differences_areOfContentOrFormat()
    {
        m->AddConflict({}, {.Info = u"x"_s, .Code = u"{\\rtf1\\b int a;}"_s, .Notes = u"{\\rtf1 else}"_s});
        ConflictSolver& solver = Solve();
        solver.SelectField(SolverField::Code);
        QCOMPARE(solver.DifferenceText(), u"Format conflict"_s);
        solver.SelectField(SolverField::Notes);
        QCOMPARE(solver.DifferenceText(), u"Content conflict"_s);
        solver.SelectField(SolverField::Title);
        QCOMPARE(solver.DifferenceText(), QString());
    }

    void itemThatHasGone_isReported()
    {
        const qint64 gone = AddOne(u"a"_s);
        AddOne(u"b"_s);
        m->Db->Execute(u"DELETE FROM Items WHERE ID = ?"_s, {gone});
        m->Prompts.ExpectError();
        ConflictSolver& solver = Solve();
        QCOMPARE(m->Prompts.Errors.last(), u"Reqired item not fount in the database."_s);
        QVERIFY(!solver.HasConflict());
        QVERIFY(!solver.Keep(1));
        QVERIFY(solver.MoveNext()); // the others can be decided
        QCOMPARE(solver.ItemTitle(), u"b"_s);
    }

    void changeMeanwhile_showsTheItemAnew()
    {
        const qint64 id = AddOne(u"a"_s);
        ConflictSolver& solver = Solve();
        m->Db->Execute(u"UPDATE Items SET Title = 'another' WHERE ID = ?"_s, {id});
        m->Prompts.ExpectError();
        QVERIFY(!solver.Keep(1));
        QCOMPARE(solver.ItemTitle(), u"another"_s);
        QCOMPARE(solver.Count(), 1);
    }

    void likeThis_isDecidedTogether()
    {
        AddOne(u"a"_s);
        const qint64 other = m->AddConflict({}, {.Info = u"x"_s});
        AddOne(u"b"_s);
        ConflictSolver& solver = Solve();
        QCOMPARE(solver.KeepAllLikeThis(1), 2);
        QCOMPARE(solver.Count(), 1);
        QCOMPARE(solver.StatusText(), u"Conflict No. 1 of 1"_s);
        QCOMPARE(solver.Conflict().Key(), QString::number(other));
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        QCOMPARE(solver.KeepAllLikeThis(2), 1);
        QCOMPARE(m->TemporaryRows(), 0);
    }

    void fileRows_haveTheirMarks()
    {
        const qint64 id = m->AddConflict({}, {});
        for (const QString& title : {u"both"_s, u"described"_s}) {
            m->AddFile(id, title, "x", m->At(5), u"words"_s);
            m->AddTempFile(id, title, QByteArray("x"), m->At(5), title == u"both"_s ? u"words"_s : u"others"_s);
        }
        const qint64 own = m->AddFile(id, u"own"_s, "123", m->At(5), u"my file"_s);
        const qint64 their = m->AddTempFile(id, u"theirs"_s, QByteArray("x"), m->At(5), u"their file"_s);
        ConflictSolver& solver = Solve();
        QCOMPARE(solver.Field(), SolverField::Files);
        std::vector<ConflictFileRow>& rows = solver.FileRows();
        QCOMPARE(rows.size(), size_t(4));
        QCOMPARE(rows[0].Icon, u"DUALEMPTY"_s);
        QCOMPARE(rows[0].ToolTip, u"This file occures in both item versions."_s);
        QCOMPARE(rows[1].Mark, u'Z');
        QCOMPARE(rows[1].Icon, u"DUAL"_s);
        QCOMPARE(rows[1].ToolTip, u"This file occures in both item versions, but its descriptions are conflicting."_s);
        QCOMPARE(rows[2].Tag(), QString::number(own) + u'X');
        QCOMPARE(rows[2].Icon, u"RED"_s);
        QCOMPARE(rows[2].ToolTip, u"This file occures only in the newer item."_s);
        QCOMPARE(rows[2].Columns.mid(0, 2), (QStringList{u"own"_s, u"3"_s}));
        QCOMPARE(rows[3].Tag(), QString::number(their) + u'Y');
        QCOMPARE(rows[3].Icon, u"BLUE"_s);
        QCOMPARE(rows[3].ToolTip, u"This file occures only in the older item."_s);
        solver.SelectFile(1);
        QCOMPARE(solver.RawText(ConflictSide::Item), u"words"_s);
        QCOMPARE(solver.RawText(ConflictSide::TempItem), u"others"_s);
        solver.Edited(ConflictSide::TempItem, u"edited"_s);
        solver.SelectFile(2);
        QCOMPARE(solver.RawText(ConflictSide::Item), u"my file"_s);
        solver.SelectFile(3);
        QCOMPARE(solver.RawText(ConflictSide::TempItem), u"their file"_s);
        QCOMPARE(solver.RawText(ConflictSide::Item), QString());
        solver.SelectFile(1);
        QCOMPARE(solver.RawText(ConflictSide::TempItem), u"edited"_s);
    }

    void moves_setMarksAndTheirWords()
    {
        const qint64 id = m->AddConflict({}, {});
        const qint64 own = m->AddFile(id, u"own"_s, "1", m->At(5));
        m->AddTempFile(id, u"theirs"_s, QByteArray("x"), m->At(5));
        m->AddFile(id, u"both"_s, "1", m->At(6));
        m->AddTempFile(id, u"both"_s, QByteArray("1"), m->At(6));
        ConflictSolver& solver = Solve();
        std::vector<ConflictFileRow>& rows = solver.FileRows();
        QCOMPARE(MoveOffered(rows[0]), FileMove::ToOlder);
        QCOMPARE(MoveOffered(rows[1]), FileMove::None);
        QCOMPARE(MoveOffered(rows[2]), FileMove::ToNewer);
        solver.MoveFile(0, FileMove::ToOlder);
        QCOMPARE(rows[0].ToolTip, u"This file is marked for move to the older item."_s);
        QCOMPARE(rows[0].Icon, u"HALFBLUE"_s);
        QVERIFY(solver.Conflict().Item().FileObjects().Item(own)->MoveToTheSecondSet());
        QVERIFY(solver.IsEdited());
        QCOMPARE(MoveOffered(rows[0]), FileMove::ToNewer); // of a marked one the opposite
        solver.MoveFile(2, FileMove::ToNewer);
        QCOMPARE(rows[2].ToolTip, u"This file is marked for move to the newer item."_s);
        QCOMPARE(rows[2].Icon, u"HALFRED"_s);
        // The same command takes a mark away with the words of the opposite version.
        solver.MoveFile(0, FileMove::ToOlder);
        QCOMPARE(rows[0].ToolTip, u"This file occures only in the older item."_s);
        QCOMPARE(rows[0].Icon, u"BLUE"_s);
        QVERIFY(!solver.Conflict().Item().FileObjects().Item(own)->MoveToTheSecondSet());
        solver.MoveFile(2, FileMove::ToNewer);
        QCOMPARE(rows[2].ToolTip, u"This file occures only in the newer item."_s);
        QCOMPARE(rows[2].Icon, u"RED"_s);
    }

    void base_letsBothSidesHaveAllChanges()
    {
        const auto rtf = [](const QString& text) { return RtfFromPlainText(text, CodeFont); };
        BaseVersion base;
        base.Title = u"title"_s;
        base.Code = rtf(u"1\r\n2\r\n3\r\n4\r\n5"_s);
        const qint64 id = m->AddConflict(
            {.Title = u"own title"_s, .Code = rtf(u"one\r\n2\r\n3\r\n4\r\n5"_s)},
            {.Title = u"title"_s, .Info = u"their info"_s, .Code = rtf(u"1\r\n2\r\n3\r\n4\r\nfive"_s)});
        m->AddConflict({}, {.Title = u"another"_s}); // of which nobody knows it
        ConflictSolver& solver = Solve([&](qint64 item) {
            if (item != id)
                return std::optional<BaseVersion>();
            base.Info = m->Text(u"Info"_s, id);
            return std::optional(base);
        });
        QVERIFY(solver.HasBase());
        solver.SelectField(SolverField::Code);
        QVERIFY(solver.Merge() && !solver.Merge()->HasClash());
        QVERIFY(solver.TakeMerged());
        for (const SolverField field : {SolverField::Title, SolverField::Code, SolverField::ItemInfo})
            QVERIFY(!solver.IsInConflict(field));
        QVERIFY(solver.IsEdited());
        QVERIFY(solver.Keep(2));
        QCOMPARE(m->Text(u"Title"_s, id), u"own title"_s);
        QCOMPARE(m->Text(u"Info"_s, id), u"their info"_s);
        QCOMPARE(PlainTextFromRtf(m->Text(u"Code"_s, id)), u"one\r\n2\r\n3\r\n4\r\nfive"_s);
        QVERIFY(!solver.HasBase());
        QVERIFY(!solver.TakeMerged());
    }

    void clashes_stayWithEachSide()
    {
        const qint64 id = m->AddConflict({.Title = u"own"_s, .Notes = u"{\\rtf1 \\b 1\\b0\\par mine\\par 3}"_s},
                                         {.Title = u"theirs"_s, .Notes = u"{\\rtf1 1\\par yours\\par 3\\par 4}"_s});
        BaseVersion base;
        base.Title = u"title"_s;
        base.Notes = u"{\\rtf1 1\\par 2\\par 3}"_s;
        ConflictSolver& solver = Solve([&](qint64) { return std::optional(base); });
        QVERIFY(solver.Merge()->HasClash()); // of the title
        QVERIFY(solver.TakeMerged());
        QVERIFY(solver.IsInConflict(SolverField::Title) && solver.IsInConflict(SolverField::Notes));
        solver.SelectField(SolverField::Notes);
        QVERIFY(solver.Merge()->HasClash());
        QCOMPARE(solver.PlainText(ConflictSide::Item), u"1\r\nmine\r\n3\r\n4"_s);
        QCOMPARE(solver.PlainText(ConflictSide::TempItem), u"1\r\nyours\r\n3\r\n4"_s);
        QVERIFY(solver.RawText(ConflictSide::Item).contains(u"\\b"_s)); // lines keep their looks
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        solver.Keep(1);
        QCOMPARE(m->Text(u"Title"_s, id), u"theirs"_s);
    }

    void statusAndRating_areMergedToo()
    {
        AddOne(u"a"_s);
        m->Db->Execute(u"UPDATE Items SET ItemStatus = 1, ItemRating = 4"_s);
        m->Db->Execute(u"UPDATE TempItems SET ItemStatus = 3, ItemRating = 2"_s);
        BaseVersion base;
        base.Status = 1; // changed by the other alone
        base.Rating = 2; // by the own alone
        ConflictSolver& solver = Solve([&](qint64) { return std::optional(base); });
        QVERIFY(solver.TakeMerged());
        QCOMPARE(solver.StatusSide(), ConflictSide::TempItem);
        QCOMPARE(solver.RatingSide(), ConflictSide::Item);
        base.Status = 2; // by both
        base.Rating = 4;
        QVERIFY(Solve([&](qint64) { return std::optional(base); }).TakeMerged());
        QCOMPARE(m_solver->StatusSide(), ConflictSide::Item);
        QCOMPARE(m_solver->RatingSide(), ConflictSide::TempItem);
    }

    void statusAndRating_areChosen()
    {
        const qint64 id = AddOne(u"a"_s);
        m->Db->Execute(u"UPDATE Items SET ItemStatus = 1, ItemRating = 2 WHERE ID = ?"_s, {id});
        m->Db->Execute(u"UPDATE TempItems SET ItemStatus = 3, ItemRating = 8"_s);
        ConflictSolver& solver = Solve();
        QCOMPARE(solver.StatusSide(), ConflictSide::Item);
        QVERIFY(!solver.IsEdited());
        solver.SetRatingSide(ConflictSide::TempItem);
        QVERIFY(solver.IsEdited());
        m->Prompts.ExpectMsgBox(u"All confilicts solved"_s);
        solver.Keep(1);
        QCOMPARE(m->Text(u"ItemStatus"_s, id), u"1"_s);
        QCOMPARE(m->Text(u"ItemRating"_s, id), u"8"_s);
    }

    void sides_giveBackTheirTexts()
    {
        QRandomGenerator random(7);
        const QStringList words{u"a"_s, u""_s, u"b c"_s, u"Ü"_s};
        for (int i = 0; i < 200; ++i) {
            QStringList texts[2];
            for (QStringList& lines : texts) {
                for (int n = random.bounded(1, 8); n > 0; --n)
                    lines << words[random.bounded(words.size())];
            }
            const QString first = texts[0].join(u"\r\n"_s);
            const QString second = texts[1].join(u"\r\n"_s);
            const auto [left, right] = SidesOf(first, second);
            QCOMPARE(left.LineCount(), right.LineCount());
            for (int line = 0; line < left.LineCount(); ++line)
                QCOMPARE(left.LineText(line), right.LineText(line));
            const QString firstRtf = RtfFromPlainText(first, CodeFont);
            const QString secondRtf = RtfFromPlainText(second, CodeFont);
            QCOMPARE(PlainTextFromRtf(LinesWithLooks(KeptLines(left), firstRtf, secondRtf)), first);
            QCOMPARE(PlainTextFromRtf(LinesWithLooks(KeptLines(right), secondRtf, firstRtf)), second);
        }
    }

    void sides_keepLooks()
    {
        const QString own = u"{\\rtf1 plain\\par \\b bold\\b0\\par end}"_s;
        const QString other = u"{\\rtf1 plain\\par \\i slanted\\i0\\par end}"_s;
        const auto [left, right] = SidesOf(PlainTextFromRtf(own), PlainTextFromRtf(other));
        QCOMPARE(left.LookOf(1), LineLook::Own);
        QCOMPARE(right.LookOf(1), LineLook::Filler);
        QCOMPARE(ColorOf(LineLook::Same), 0U);
        QCOMPARE(ColorOf(left.LookOf(1)), 255U);
        QCOMPARE(ColorOf(right.LookOf(1)), 0xffffffU);
        const QString kept = LinesWithLooks(KeptLines(left), own, other);
        QVERIFY(kept.contains(u"\\b "_s) || kept.contains(u"\\b\\"_s));
        QCOMPARE(PlainTextFromRtf(kept), u"plain\r\nbold\r\nend"_s);
    }

    void movedLines_changeSides()
    {
        auto [left, right] = SidesOf(u"a\r\nmine\r\nz"_s, u"a\r\nb1\r\nb2\r\nz"_s);
        QVERIFY(MoveLines(right, left, 2, 3));
        QCOMPARE(KeptLines(left), (QStringList{u"a"_s, u"mine"_s, u"b1"_s, u"b2"_s, u"z"_s}));
        QCOMPARE(KeptLines(right), (QStringList{u"a"_s, u"z"_s}));
        QVERIFY(!MoveLines(right, left, 0, 0)); // an equal line has nowhere to go
        right.Lines[2].Text = u"typed"_s;
        QVERIFY(!MoveLines(left, right, 2, 2)); // nor one that stands beside another
    }
};

QB_TEST_MAIN(TestConflictSolver)
#include "tst_conflict_solver.moc"
