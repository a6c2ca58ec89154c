#include "attack/AttackedLibrary.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <sqlite3.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Commands beyond those that are killed: these only read, and are handed hostile libraries all the same.
constexpr AttackedCommand Readers[] = {
    {"info", "info LIB"},         {"tree", "tree LIB"},
    {"show", "show LIB 2"},       {"show as RTF", "show LIB 2 --rtf"},
    {"links", "links LIB 1"},     {"files", "files LIB 1"},
    {"language", "language LIB"}, {"settings of a library", "settings list --library LIB"},
    {"check", "check LIB"},       {"check deep", "check LIB --deep"},
};

/// What a stranger may put into a schema, by statements.
struct HostileSchema {
    const char* Name;
    const char* Statements; ///< parted by semicolons at line ends
};
const HostileSchema Schemas[] = {
    {"trigger that deletes", "CREATE TRIGGER t AFTER UPDATE ON Items BEGIN DELETE FROM Items WHERE ID = 3; END"},
    {"trigger on inserts", "CREATE TRIGGER t AFTER INSERT ON Items BEGIN DELETE FROM Items WHERE ID = 3; END"},
    {"trigger without an end",
     "CREATE TRIGGER t AFTER UPDATE ON Items BEGIN SELECT x FROM (WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x "
     "+ 1 FROM n) SELECT max(x) AS x FROM n); END"},
    {"view in the place of a table",
     "ALTER TABLE ItemLinks RENAME TO L;\nCREATE VIEW ItemLinks AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL "
     "SELECT x + 1 FROM n) SELECT x AS ID, x AS ItemID, x AS LinkItemID, x AS Note, x AS DateAdded FROM n"},
    {"view for the checksums", "DROP TABLE IF EXISTS own_Checksums;\nCREATE VIEW own_Checksums AS SELECT 1 AS OfTable"},
    {"other checksums",
     "DROP TABLE IF EXISTS own_Checksums;\nCREATE TABLE own_Checksums (OfTable, OfRow, Stamp, Sums CHECK (0))"},
    {"checksums that name other columns",
     "UPDATE own_Checksums SET Sums = 'Title\"; DROP TABLE Items; --=00000000 File=00000000 '"},
    {"index over an expression", "CREATE INDEX x ON Items (length(hex(zeroblob(length(Title) * 1000000))))"},
    {"titles that lead out", "UPDATE Files SET Title = '../../../../tmp/quillbase-attack'"},
    {"title with control characters", "UPDATE Items SET Title = char(27) || '[2J' || char(7)"},
    {"parents in a cycle", "UPDATE Items SET ParentID = 2 WHERE ID = 1"},
    {"texts that are numbers", "UPDATE Items SET Code = 1e308, Notes = x'ff00ff'"},
    {"numbers that are texts", "UPDATE Files SET FileSize = 'many', LastUpdated = 'never'"},
    {"extra properties", "INSERT INTO Properties (DBID) SELECT DBID || 'x' FROM Properties"},
    {"deep RTF", "UPDATE Items SET Code = replace(hex(zeroblob(200000)), '00', '{'), Notes = "
                 "replace(hex(zeroblob(200000)), '00', '\\par')"},
};

} // namespace

/// Libraries that are damaged or come from a stranger, for each command: it ends in time and by itself, and what it
/// must not touch stays.
class TestHostileLibrary : public QObject {
    Q_OBJECT

    std::unique_ptr<AttackedLibrary> m_library;

    static std::vector<AttackedCommand> AllCommands()
    {
        std::vector<AttackedCommand> all(std::begin(Commands), std::end(Commands));
        all.insert(all.end(), std::begin(Readers), std::end(Readers));
        return all;
    }

    /// Runs a command on the library as it is; says what is wrong.
    QString Survives(const AttackedCommand& command) const
    {
        const QByteArray input = ReadFile(m_library->Work() + u"/in/a.txt"_s);
        const Attacked outcome = m_library->Run(command, {});
        if (!outcome.HasEnded)
            return u"%1 does not end"_s.arg(QLatin1StringView(command.Name));
        if (outcome.Status < 0)
            return u"%1 was killed: %2"_s.arg(QLatin1StringView(command.Name), outcome.Error);
        if (outcome.Status > 1)
            return u"%1 gave %2: %3"_s.arg(QLatin1StringView(command.Name)).arg(outcome.Status).arg(outcome.Error);
        if (outcome.Status == 1 && outcome.Error.isEmpty() && !QByteArray(command.Arguments).startsWith("check"))
            return u"%1 failed and does not say why"_s.arg(QLatin1StringView(command.Name));
        if (ReadFile(m_library->Work() + u"/in/a.txt"_s) != input)
            return u"%1 changed what it was to read"_s.arg(QLatin1StringView(command.Name));
        if (outcome.Error.contains(u'\033') || outcome.Error.contains(u'\007'))
            return u"%1 commands the terminal"_s.arg(QLatin1StringView(command.Name));
        return {};
    }

    /// By the engine alone, which lets everything be made.
    static QString Apply(const QString& path, const QByteArray& statements)
    {
        sqlite3* connection = nullptr;
        sqlite3_open(path.toUtf8().constData(), &connection);
        char* error = nullptr;
        sqlite3_exec(connection, "PRAGMA ignore_check_constraints = ON", nullptr, nullptr, nullptr);
        sqlite3_exec(connection, statements.constData(), nullptr, nullptr, &error);
        const QString text = QString::fromUtf8(error ? error : "");
        sqlite3_free(error);
        sqlite3_close(connection);
        return text;
    }

    static qint64 ShareOf(size_t parts)
    {
        const int seconds = qEnvironmentVariableIntValue("ATTACK_SECONDS");
        return (seconds > 0 ? seconds * 1000LL : 15000LL) / qint64(parts);
    }

private Q_SLOTS:
    void initTestCase()
    {
        FailOnWarnings();
        m_library = std::make_unique<AttackedLibrary>();
    }
    void init() { FailOnWarnings(); }
    void cleanupTestCase() { m_library.reset(); }

    void hostileSchema_isSurvivedByEachCommand_data()
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < std::size(Schemas); ++i)
            QTest::newRow(Schemas[i].Name) << int(i);
    }
    void hostileSchema_isSurvivedByEachCommand()
    {
        QFETCH(int, index);
        const std::vector<AttackedCommand> all = AllCommands();
        const bool isLong = qEnvironmentVariableIntValue("ATTACK_SECONDS") > 0;
        QStringList losses;
        for (size_t i = 0; i < all.size(); ++i) {
            if (!isLong && i % 5 != size_t(index) % 5) // the rest of them in the long form
                continue;
            m_library->Reset();
            QCOMPARE(Apply(m_library->LibraryFile(), Schemas[index].Statements), QString());
            QElapsedTimer timer;
            timer.start();
            if (const QString loss = Survives(all[i]); !loss.isEmpty())
                losses << loss;
            if (timer.elapsed() > 30000)
                losses << u"%1 took %2 s"_s.arg(QLatin1StringView(all[i].Name)).arg(timer.elapsed() / 1000);
            const QByteArray trigger = QByteArray(Schemas[index].Statements).left(14);
            if (trigger == "CREATE TRIGGER" && QByteArray(all[i].Arguments) != "delete LIB 3"
                && Apply(m_library->LibraryFile(),
                         "CREATE TEMP TABLE gone AS SELECT 1 / (SELECT count(*) FROM Items "
                         "WHERE ID = 3) AS x; CREATE TEMP TABLE none (x NOT NULL); INSERT INTO "
                         "none SELECT x FROM gone")
                       != QString())
                losses << u"%1 ran a trigger"_s.arg(QLatin1StringView(all[i].Name));
        }
        QVERIFY2(losses.isEmpty(), qPrintable(u'\n' + losses.join(u'\n')));
        QVERIFY(!QFile::exists(u"/tmp/quillbase-attack"_s));
    }

    void flippedBytes_areSurvivedByEachCommand_data()
    {
        QTest::addColumn<int>("index");
        const std::vector<AttackedCommand> all = AllCommands();
        for (size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].Name) << int(i);
    }
    void flippedBytes_areSurvivedByEachCommand()
    {
        QFETCH(int, index);
        const std::vector<AttackedCommand> all = AllCommands();
        const QByteArray whole = ReadFile(m_library->Pristine() + u"/lib.qbd"_s);
        QRandomGenerator random(4711 + quint32(index));
        QElapsedTimer timer;
        timer.start();
        QStringList losses;
        int runs = 0;
        do {
            m_library->Reset();
            QByteArray bytes = whole;
            constexpr int MostFlips = 30;
            for (int flips = random.bounded(MostFlips) + 1; flips > 0; --flips)
                bytes[qsizetype(random.bounded(quint32(bytes.size())))] = char(random.bounded(256));
            WriteFile(m_library->LibraryFile(), bytes);
            ++runs;
            if (const QString loss = Survives(all[size_t(index)]); !loss.isEmpty()) {
                losses << loss;
                WriteFile(m_library->Path(u"flipped-%1.qbd"_s.arg(runs)), bytes);
            }
        } while (timer.elapsed() < ShareOf(all.size()));
        qInfo("%s: %d damaged libraries", all[size_t(index)].Name, runs);
        QVERIFY2(losses.isEmpty(), qPrintable(u'\n' + losses.mid(0, 5).join(u'\n')));
    }
};

QB_TEST_MAIN(TestHostileLibrary)
#include "tst_hostile_library.moc"
