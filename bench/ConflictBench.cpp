// Conflicts that a synchronization has left.

#include "BenchLibrary.h"

#include "conflicts/AutomaticResolution.h"
#include "conflicts/ui/ComparedView.h"
#include "conflicts/ui/frmConflicts.h"
#include "platform/richtext/Rtf.h"
#include "store/CDBCreate.h"
#include "store/Library.h"
#include "store/PendingRemoved.h"

#include <QDir>
#include <QFile>
#include <QRadioButton>
#include <benchmark/benchmark.h>

namespace qb::bench {

using namespace Qt::StringLiterals;

namespace {

/// A library with conflicts, anew each time.
class ConflictLibrary {
public:
    ConflictLibrary()
    {
        QFile::remove(m_path);
        QDir(RemovedFolderOf(m_path)).removeRecursively(); // of the library before, which had the same name
        CDBCreate().CreateNewDB(m_path, LanguageType::Cpp, {});
        m_library = Library::Open(m_path);
        CDBCreate().CreateTemporaryTablesInMainDB(*m_library);
    }
    ~ConflictLibrary()
    {
        m_library.reset();
        QFile::remove(m_path);
    }
    ConflictLibrary(const ConflictLibrary&) = delete;
    ConflictLibrary& operator=(const ConflictLibrary&) = delete;

    Library& Db() { return *m_library; }
    void Add(const QString& title, const QString& own, const QString& other)
    {
        m_library->Execute(u"INSERT INTO Items (Title, ParentID, Code, LastChanged) VALUES (?, 0, ?, 1000)"_s,
                           {title, own});
        m_library->Execute(u"INSERT INTO TempItems (ID, Title, ParentID, Code, LastChanged, ReplicaOrigin) SELECT "
                           "max(ID), ?, 0, ?, 2000, -1 FROM Items"_s,
                           {title, other});
    }
    /// So many that differ in looks only, or for good.
    void AddMany(int count, bool isReal)
    {
        Transaction transaction(*m_library);
        for (int i = 0; i < count; ++i)
            Add(u"item %1"_s.arg(i), u"{\\rtf1 int a = %1;}"_s.arg(i),
                isReal ? u"{\\rtf1 int b = %1;}"_s.arg(i) : u"{\\rtf1\\b int a = %1;}"_s.arg(i));
        transaction.Commit();
    }
    /// One of two texts of so many characters, of which each twelfth line differs: 2,000 in a million.
    void AddLarge(qsizetype characters)
    {
        Add(u"large"_s, Large(characters, u"compute"_s), Large(characters, u"calculate"_s));
        Add(u"another"_s, {}, u"{\\rtf1 x}"_s); // so that a decision isn't the last
    }
    /// A text of so many characters with a word in each twelfth line.
    static QString Large(qsizetype characters, const QString& word)
    {
        QString text;
        for (int i = 0; text.size() < characters; ++i)
            text += u"    value_%1 = %2(value_%3, %4);\r\n"_s.arg(i)
                        .arg(i % 12 == 0 ? word : u"compute"_s)
                        .arg(i / 2)
                        .arg(i % 97);
        return RtfFromPlainText(text, CodeFont);
    }

private:
    QString m_path = DataFolder(u"conflicts"_s) + u"/conflicts.qbd"_s;
    std::unique_ptr<Library> m_library;
};

void Click(frmConflicts& form, const char* name)
{
    form.findChild<QAbstractButton*>(QString::fromLatin1(name))->click();
}

/// The automatic pass over conflicts that differ in looks only.
void ConflictsAutomatic(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        ConflictLibrary library;
        library.AddMany(int(state.range(0)), false);
        state.ResumeTiming();
        ResolveAutomatically(library.Db());
        state.PauseTiming();
        state.ResumeTiming();
    }
}

/// From nothing until the form is painted, with the automatic pass over conflicts that all stay.
void ConflictsForm(benchmark::State& state)
{
    ConflictLibrary library;
    library.AddMany(int(state.range(0)), true);
    for (auto _ : state) {
        frmConflicts form;
        form.InitializeDatabase(library.Db());
        form.Load();
        form.show();
        form.grab();
    }
}

/// Both texts read, compared and painted; with what both came from, or without.
void ConflictsField(benchmark::State& state)
{
    ConflictLibrary library;
    library.AddLarge(state.range(0));
    frmConflicts form;
    form.InitializeDatabase(library.Db());
    BaseVersion base;
    base.Code = ConflictLibrary::Large(state.range(0), u"former"_s);
    if (state.range(1) != 0)
        form.Solver().SetFindBase([&base](qint64) { return std::optional(base); });
    form.Load();
    form.show();
    for (auto _ : state) {
        state.PauseTiming();
        Click(form, "optTitle");
        state.ResumeTiming();
        Click(form, "optCode");
        form.grab();
    }
}

/// A decision about a text, with a word typed into it or none.
void ConflictsDecision(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        ConflictLibrary library;
        library.AddLarge(state.range(0));
        frmConflicts form;
        form.InitializeDatabase(library.Db());
        form.Load();
        form.show();
        if (state.range(1) != 0)
            form.findChild<ComparedView*>(u"txtCompared1"_s)->insertPlainText(u"x"_s);
        state.ResumeTiming();
        Click(form, "cmdKeepOlder");
        state.PauseTiming();
        form.close();
        state.ResumeTiming();
    }
}

BENCHMARK(ConflictsAutomatic)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(ConflictsForm)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(ConflictsField)
    ->Args({1'000'000, 0})
    ->Args({1'000'000, 1})
    ->Args({10'000'000, 0})
    ->Args({10'000'000, 1})
    ->Args({50'000'000, 0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ConflictsDecision)
    ->Args({1'000, 0})
    ->Args({1'000'000, 0})
    ->Args({1'000'000, 1})
    ->Unit(benchmark::kMillisecond);

} // namespace

} // namespace qb::bench
