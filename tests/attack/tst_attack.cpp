#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryCheck.h"
#include "platform/dao/DBEngine.h"
#include "store/Library.h"
#include "store/LibrarySwap.h"
#include "store/PendingFiles.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <algorithm>
#include <cerrno>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// The commands that are attacked; a new one joins by its line. LIB stands for the library, IN for a folder
/// of files, OUT for a folder to write to.
struct AttackedCommand {
    const char* Name;
    const char* Arguments; ///< parted by blanks
    /// What is there afterwards is the same however often it is run: a second try must work, and leave nothing behind.
    bool MayBeRepeated = false;
};
constexpr AttackedCommand Commands[] = {
    {"add", "add LIB --parent 1 --title new --code IN/a.txt"},
    {"set", "set LIB 2 --title other --code IN/big.txt --status tested --rating 7"},
    {"move", "move LIB 2 3"},
    {"link", "link LIB 2 3 --two-way"},
    {"unlink", "unlink LIB 1 2"},
    {"delete", "delete LIB 1"},
    {"bookmark", "bookmark LIB 3 --group new --text here"},
    {"bookmark-remove", "bookmark-remove LIB 1"},
    {"attach", "attach LIB 2 IN/a.txt IN/big.txt"},
    {"attach zipped", "attach LIB 2 IN/a.txt IN/big.txt --zip all both"},
    {"detach", "detach LIB 1"},
    {"extract", "extract LIB 1 OUT/taken"},
    {"import-folder", "import-folder LIB IN --parent 3"},
    {"colorize", "colorize LIB 2 --save"},
    {"new", "new OUT/made.qbd --language cpp"},
    {"language export", "language export LIB OUT/words.qbl"},
    {"settings", "settings set ExpandBranches True"},
    {"backup", "backup LIB OUT/made.qbb", true},
    {"backup in volumes", "backup LIB OUT/made.qbb --volume 4000"},
    {"restore", "restore IN/b.qbb OUT/restored.qbd --replace", true},
    {"restore over", "restore IN/b.qbb LIB --replace", true},
    {"restore-item", "restore-item IN/b.qbb 2 LIB"},
    {"compact", "compact LIB", true},
    {"undo-session", "undo-session LIB", true},
};

/// What a user has: the rows without their moments, the stored files, what lies in the folder to write to,
/// and the settings.
using State = QMap<QString, QByteArray>;

} // namespace

/// Ends commands at, or lets fail, every call that changes a file: whatever happens, the library is as it
/// was before the command or as it is after it, it passes its check, and what a command says is true.
/// ATTACK_SECONDS sets for how long calls are tried; without it some of each command's are.
class TestAttack : public QObject {
    Q_OBJECT

    struct Attacked {
        int Status = -1; ///< below 0: killed
        QString Error;
    };

    std::unique_ptr<TemporaryHome> m_home;
    QString m_pristine; ///< folder of the library as it is before a command
    QString m_work;     ///< folder of the one that is attacked
    int m_runs = 0;

    static void CopyFolder(const QString& from, const QString& to)
    {
        QDir(to).removeRecursively();
        QDir().mkpath(to);
        const QMap<QString, QByteArray> all = ContentsOf(from);
        for (auto entry = all.begin(); entry != all.end(); ++entry) {
            if (entry.key().endsWith(u'/'))
                QDir(to).mkpath(entry.key());
            else
                WriteFile(to + u'/' + entry.key(), entry.value());
        }
    }

    void MakePristine()
    {
        m_pristine = m_home->Path(u"pristine"_s);
        m_work = m_home->Path(u"work ö"_s);
        QDir().mkpath(m_pristine + u"/out"_s);
        WriteFile(m_pristine + u"/in/a.txt"_s, "int a;\r\n"_ba);
        WriteFile(m_pristine + u"/in/big.txt"_s, QByteArray("text of many lines\n").repeated(6000));
        const auto database = MakeLibrary(m_pristine + u"/lib.qbd"_s);
        const qint64 one = AddItem(*database, 0, u"one"_s, u"int one;"_s);
        AddItem(*database, one, u"two"_s, u"int two; // "_s + QString(9000, u'x'));
        AddItem(*database, 0, u"three"_s);
        database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (1, 2)"_s);
        database->Execute(u"INSERT INTO BookmarkGroups (\"Group\") VALUES ('old')"_s);
        database->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (1, 1)"_s);
        AddStoredFile(*database, one, u"stored.bin"_s, QByteArray(20000, 's'), {});
        WriteFile(database->HTMLFolder() + u"2.htm"_s, "<img src=\"2/pic.png\">");
        WriteFile(database->HTMLFolder() + u"2/pic.png"_s, "picture");
        database->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = 2"_s);
        for (const QString& folder : {database->FilesFolder(), database->HTMLFolder()})
            WriteFile(folder + u".library"_s, database->Identity().toUtf8());
        BackUpLibrary(database->Name(), m_pristine + u"/in/b.qbb"_s, {});
        DBEngine::CompactDatabase(database->Name(), m_home->Path(u"start.qbd"_s));
        WriteFile(m_home->Path(u"log/KTSStartupBackup.qbd"_s), ReadFile(m_home->Path(u"start.qbd"_s)));
        // What a backup and the start of the session don't have, and room that is not needed.
        AddItem(*database, 0, u"four"_s, QString(300'000, u'y'));
        database->Execute(u"UPDATE Items SET Code = Null WHERE Title = 'four'"_s);
        AddStoredFile(*database, one, u"late.bin"_s, "late", {});
    }

    Attacked Run(const AttackedCommand& command, const QStringList& variables)
    {
        QStringList arguments = QString::fromLatin1(command.Arguments).split(u' ');
        for (QString& argument : arguments) {
            argument.replace(u"LIB"_s, m_work + u"/lib.qbd"_s);
            argument.replace(u"IN/"_s, m_work + u"/in/"_s).replace(u"OUT/"_s, m_work + u"/out/"_s);
            if (argument == u"IN"_s)
                argument = m_work + u"/in"_s;
        }
        QProcess process;
        QStringList environment = QProcess::systemEnvironment() + variables;
        environment << u"LD_PRELOAD="_s + qEnvironmentVariable("QUILLBASE_INJECT")
                    << u"QUILLBASE_CONFIG_HOME="_s + m_work + u"/config"_s
                    << u"QUILLBASE_DATA_HOME="_s + m_home->Path(u"log"_s);
        process.setEnvironment(environment);
        process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
        if (!process.waitForFinished(60000))
            return {};
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardError())};
    }

    /// The state after the next opening. Interim names of a killed command in the folder to write to don't
    /// count: a name is the user's when the command gives it.
    State Look()
    {
        State state;
        FinishSwap(m_work + u"/out/restored.qbd"_s);
        const auto database = Library::Open(m_work + u"/lib.qbd"_s);
        state[u"room"_s] = database->QueryValue(u"PRAGMA freelist_count"_s).ToLong() > 20 ? "some"_ba : "none"_ba;
        FinishPendingFiles(*database);
        const std::pair<QString, QString> tables[] = {
            {u"Items"_s, u"ID, ParentID, Title, Code, Notes, Example, CodeHeaders, ItemStatus, ItemRating"_s},
            {u"BookmarkGroups"_s, u"ID, \"Group\""_s},
            {u"Bookmarks"_s, u"ID, CodeID, BookmarkGroup, Description"_s},
            {u"Files"_s, u"ID, CodeID, Title, FileSize"_s},
            {u"ItemLinks"_s, u"ItemID, LinkItemID, Note"_s},
            {u"Properties"_s, u"DBID, LanguageUsed"_s}};
        for (const auto& [table, columns] : tables) {
            Statement rows = database->Query(u"SELECT %1 FROM %2"_s.arg(columns, table));
            for (int row = 0; rows.Step(); ++row) {
                for (int i = 0; i < rows.ColumnCount(); ++i)
                    state[table + QString::number(row)] += rows.Column(i).ToBytes() + '|';
            }
        }
        const std::vector<LibraryFault> faults = CheckLibrary(*database);
        for (const LibraryFault& fault : faults)
            state[u"fault"_s] += fault.Text.toUtf8();
        for (const QString& folder : {u"lib_Files"_s, u"lib_HTML"_s, u"out"_s, u"config"_s}) {
            const QMap<QString, QByteArray> all = ContentsOf(m_work + u'/' + folder);
            for (auto entry = all.begin(); entry != all.end(); ++entry) {
                const bool isInterim = folder != u"lib_Files"_s && IsInterim(entry.key());
                if (!isInterim)
                    state[folder + u'/' + entry.key()] = IsCompared(entry.key()) ? entry.value() : "there"_ba;
            }
        }
        if (!state.contains(u"out/made.qbb.001"_s)) // without the first volume there is no backup
            state.removeIf([](const auto& entry) { return entry.key().startsWith(u"out/made.qbb."_s); });
        for (auto entry = state.begin(); entry != state.end(); ++entry) {
            if (entry.key().endsWith(u".zip"_s)) // its bytes hold moments
                entry.value() = "archive"_ba;
        }
        return state;
    }

    /// The bytes of others hold moments, or depend on the order of writing.
    static bool IsCompared(const QString& name)
    {
        static const QRegularExpression others(u"\\.(qbd|zip|qbb(\\.\\d+)?)$"_s);
        return !others.match(name).hasMatch();
    }

    /// Also what is only remembered, not worth an error: which backups are checked.
    static bool IsInterim(const QString& name)
    {
        static const QRegularExpression volume(u"\\.qbb\\.\\d{3}$"_s);
        return name.startsWith(u'.') || name == u"CheckedBackups.json"
               || (name.count(u'.') > 1 && !volume.match(name).hasMatch());
    }

    /// What a command that was ended left beside the library, or where it was to write, after another one.
    QStringList LeftBehind() const
    {
        QStringList left;
        for (const QString& folder : {m_work, m_work + u"/out"_s})
            left += QDir(folder).entryList({u".*"_s}, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        return left;
    }

    /// A second try after an attack; says what is wrong, empty when nothing is.
    QString TryAgain(const AttackedCommand& command, const State& after)
    {
        const Attacked outcome = Run(command, {});
        const State state = Look();
        const QStringList left = LeftBehind();
        if (outcome.Status == 0 && state == after && left.isEmpty())
            return {};
        return u"the second try: status %1, %2; differs in %3; leaves %4"_s.arg(outcome.Status)
            .arg(outcome.Error.trimmed(), Difference(after, state), left.join(u", "_s));
    }

    static QString Difference(const State& left, const State& right)
    {
        QStringList names;
        for (const QString& name : left.keys() + right.keys()) {
            if ((left.value(name) != right.value(name) || left.contains(name) != right.contains(name))
                && !names.contains(name))
                names << (right.contains(name) ? QString() : u"lacks "_s) + name + u": "_s
                             + QString::fromUtf8(right.value(name).left(60));
        }
        return names.join(u"; "_s);
    }

    /// One attack; says what is wrong, empty when nothing is.
    QString Attack(const AttackedCommand& command, const QString& how, bool once, long at, const State& before,
                   const State& after)
    {
        CopyFolder(m_pristine, m_work);
        QStringList variables{u"ATTACK_AT=%1"_s.arg(at), u"ATTACK_HOW="_s + how};
        if (once)
            variables << u"ATTACK_ONCE=1"_s;
        const Attacked outcome = Run(command, variables);
        ++m_runs;
        State state;
        try {
            state = Look();
        } catch (const RuntimeError& error) {
            return u"%1 at call %2 (%3): can't be opened: %4"_s.arg(QString::fromLatin1(command.Name))
                .arg(at)
                .arg(how, error.Description());
        }
        const bool isBefore = state == before;
        const bool isAfter = state == after;
        const bool killed = outcome.Status < 0;
        const bool isTrue = killed                ? isBefore || isAfter
                            : outcome.Status == 0 ? isAfter
                                                  : isBefore || (isAfter && IsLate(outcome));
        const QString again = isTrue && command.MayBeRepeated ? TryAgain(command, after) : QString();
        if (isTrue && again.isEmpty())
            return {};
        return again
               + u"%1 at call %2 (%3): status %4, %5; differs from before in %6; from after in %7"_s
                     .arg(QString::fromLatin1(command.Name))
                     .arg(at)
                     .arg(how)
                     .arg(outcome.Status)
                     .arg(outcome.Error.trimmed(), Difference(before, state), Difference(after, state));
    }

    /// The failure is one of tidying up after the command had been done.
    static bool IsLate(const Attacked& outcome) { return !outcome.Error.isEmpty(); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        MakePristine();
    }
    void cleanup() { m_home.reset(); }

    void command_isDoneOrNot_data()
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < std::size(Commands); ++i)
            QTest::newRow(Commands[i].Name) << int(i);
    }
    void command_isDoneOrNot()
    {
        QFETCH(int, index);
        const AttackedCommand& command = Commands[index];
        CopyFolder(m_pristine, m_work);
        const State before = Look();
        QVERIFY2(!before.contains(u"fault"_s), before.value(u"fault"_s).constData());
        const QString count = m_home->Path(u"count"_s);
        CopyFolder(m_pristine, m_work);
        const Attacked whole = Run(command, {u"ATTACK_COUNT="_s + count});
        QVERIFY2(whole.Status == 0, qPrintable(whole.Error));
        const long calls = ReadFile(count).toLong();
        const State after = Look();
        QVERIFY(calls > 0);
        QVERIFY(after != before);
        struct Way {
            const char* How;
            bool Once;
        };
        static const QByteArray full = QByteArray::number(ENOSPC), broken = QByteArray::number(EIO);
        const Way ways[] = {{"kill", false}, {"half", false}, {full.constData(), false}, {broken.constData(), true}};
        std::vector<std::pair<long, const Way*>> attacks;
        for (long at = 1; at <= calls; ++at) {
            for (const Way& way : ways)
                attacks.emplace_back(at, &way);
        }
        QRandomGenerator random(20260302 + quint32(index));
        std::shuffle(attacks.begin(), attacks.end(), random);
        const int seconds = qEnvironmentVariableIntValue("ATTACK_SECONDS");
        const qint64 share = (seconds > 0 ? seconds * 1000LL : 30000LL) / qint64(std::size(Commands));
        QElapsedTimer timer;
        timer.start();
        QStringList losses;
        m_runs = 0;
        for (const auto& [at, way] : attacks) {
            if (timer.elapsed() > share)
                break;
            const QString loss = Attack(command, QString::fromLatin1(way->How), way->Once, at, before, after);
            if (!loss.isEmpty())
                losses << loss;
        }
        qInfo("%s: %d of %zu attacks on %ld calls, %d losses", command.Name, m_runs, attacks.size(), calls,
              int(losses.size()));
        QVERIFY2(losses.isEmpty(), qPrintable(u'\n' + losses.mid(0, 5).join(u'\n')));
    }
};

QB_TEST_MAIN(TestAttack)
#include "tst_attack.moc"
