#include "conflicts/ConflictSolver.h"
#include "conflicts/ConflictedLibrary.h"
#include "replication/MergeReport.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Who has changed what two versions differ in.
class TestConflictOrigin : public QObject {
    Q_OBJECT

    std::unique_ptr<ConflictedLibrary> m;
    std::unique_ptr<ConflictSolver> m_solver;

    /// The versions were the same at 0.
    void NoteMerge(bool asMother = true)
    {
        KeepReport(*m->Db, {.AsMother = asMother, .Since = asMother ? m->At(0) : Date()});
    }
    ConflictSolver& Solve(const std::optional<BaseVersion>& base = {})
    {
        m_solver = std::make_unique<ConflictSolver>(*m->Db);
        m_solver->SetFindBase([base](qint64) { return base; });
        m_solver->Load();
        return *m_solver;
    }
    void SetDate(const QString& table, const QString& column, qint64 own)
    {
        m->Db->Execute(u"UPDATE %1 SET %2 = ?"_s.arg(table, column), {m->At(own)});
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m = std::make_unique<ConflictedLibrary>();
    }
    void cleanup()
    {
        m_solver.reset();
        m.reset();
    }

    void texts_areToldByTheBase_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("own");
        QTest::addColumn<QString>("other");
        QTest::addColumn<QString>("origin");
        const auto add = [](const char* name, const char* base, const char* own, const char* other, const char* told) {
            QTest::newRow(name) << QString::fromUtf8(base) << QString::fromUtf8(own) << QString::fromUtf8(other)
                                << QString::fromUtf8(told);
        };
        add("own", "base", "own", "base", "Only the Main version was changed since both were the same");
        add("other", "base", "base", "other", "Only the Replica version was changed since both were the same");
        add("both", "base", "own", "other",
            "Both versions were changed since they were the same, in the same lines too");
        add("lines", "a\r\nb\r\nc", "1\r\nb\r\nc", "a\r\nb\r\n3",
            "Both versions were changed since they were the same, in different lines");
        add("the same change", "base", "new", "new", "");
    }
    void texts_areToldByTheBase()
    {
        QFETCH(QString, base);
        QFETCH(QString, own);
        QFETCH(QString, other);
        QFETCH(QString, origin);
        m->AddConflict({.Info = own}, {.Title = u"another"_s, .Info = other});
        BaseVersion known;
        known.Info = base;
        ConflictSolver& solver = Solve(known);
        solver.SelectField(SolverField::ItemInfo);
        QCOMPARE(solver.OriginText(), origin);
        QCOMPARE(solver.BaseText(), base);
        ConflictSolver& withoutBase = Solve();
        withoutBase.SelectField(SolverField::ItemInfo);
        QCOMPARE(withoutBase.OriginText(),
                 own == other ? QString() : u"The version that both came from is not known"_s);
        QCOMPARE(withoutBase.BaseText(), QString());
    }

    void pages_areToldByTheirDates_data()
    {
        QTest::addColumn<int>("own");
        QTest::addColumn<int>("other");
        QTest::addColumn<QString>("origin");
        QTest::newRow("own") << 10 << -10
                             << u"Only the page of the Main version was changed since both were the same"_s;
        QTest::newRow("other") << 0 << 10
                               << u"Only the page of the Replica version was changed since both were the same"_s;
        QTest::newRow("both") << 10 << 20 << u"Both versions have changed the page since they were the same"_s;
        QTest::newRow("equal") << 10 << 10 << QString();
    }
    void pages_areToldByTheirDates()
    {
        QFETCH(int, own);
        QFETCH(int, other);
        QFETCH(QString, origin);
        m->AddConflict({}, {.Title = u"another"_s});
        SetDate(u"Items"_s, u"HTMLLastUpdated"_s, own);
        SetDate(u"TempItems"_s, u"HTMLLastUpdated"_s, other);
        NoteMerge(false); // of a child it is not known
        Solve().SelectField(SolverField::HTML);
        QCOMPARE(m_solver->OriginText(), QString());
        NoteMerge();
        Solve().SelectField(SolverField::HTML);
        QCOMPARE(m_solver->OriginText(), origin);
    }

    void files_areToldByTheirDates_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("origin");
        const auto add = [](const char* name, const char* change, const char* told) {
            QTest::newRow(name) << QString::fromUtf8(change) << QString::fromUtf8(told);
        };
        const auto dates = [](int own, int other) {
            return u"UPDATE Files SET LastUpdated = SYNC + %1; UPDATE TempFiles SET Description = 'x', LastUpdated = "
                   "SYNC + %2"_s.arg(own)
                       .arg(other)
                       .toUtf8();
        };
        add("the same", "UPDATE Files SET LastUpdated = SYNC + 9", "");
        add("described in the own", dates(10, -5),
            "Only the Main version describes it otherwise since both were the same");
        add("described in the other", dates(0, 10),
            "Only the Replica version describes it otherwise since both were the same");
        add("described in both", dates(10, 20), "Both versions describe it otherwise since they were the same");
        add("added to the own", "UPDATE Files SET DateAdded = SYNC + 1; DELETE FROM TempFiles",
            "It was added to the Main version since both were the same");
        add("came to the own from elsewhere", "UPDATE Files SET DateAdded = SYNC; DELETE FROM TempFiles", "");
        add("added to the other", "UPDATE TempFiles SET DateAdded = SYNC + 1; DELETE FROM Files",
            "It was added to the Replica version since both were the same");
        add("deleted from the own", "UPDATE TempFiles SET DateAdded = SYNC; DELETE FROM Files",
            "It was deleted from the Main version since both were the same");
    }
    void files_areToldByTheirDates()
    {
        QFETCH(QString, change);
        QFETCH(QString, origin);
        const qint64 id = m->AddConflict({}, {.Title = u"another"_s});
        m->AddFile(id, u"f"_s, "f", m->At(-10), u"d"_s);
        m->AddTempFile(id, u"f"_s, QByteArray("f"), m->At(-10), u"d"_s);
        for (const QString& statement : change.split(u';'))
            m->Db->Execute(QString(statement).replace(u"SYNC"_s, QString::number(m->At(0).Seconds())));
        Solve().SelectField(SolverField::Files);
        QCOMPARE(m_solver->OriginText(), QString()); // without a merge
        NoteMerge();
        Solve().SelectField(SolverField::Files);
        QCOMPARE(m_solver->OriginText(), origin);
    }
};

QB_TEST_MAIN(TestConflictOrigin)
#include "tst_conflict_origin.moc"
