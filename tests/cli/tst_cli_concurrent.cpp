#include "platform/dao/DBEngine.h"
#include "support/CliRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QProcess>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// A run of the command-line program beside others.
class Run {
public:
    Run(const QStringList& arguments, const QByteArray& input)
    {
        m_process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
        m_process.write(input);
        m_process.closeWriteChannel();
        m_process.waitForStarted();
    }
    /// It waits for the library to be free.
    bool Waits()
    {
        const QString folder = u"/proc/%1/"_s.arg(m_process.processId());
        QFile place(folder + u"wchan"_s);
        return place.open(QIODevice::ReadOnly) && place.readAll().contains("nanosleep");
    }
    bool HasEnded() { return m_process.waitForFinished(0) || m_process.state() == QProcess::NotRunning; }
    Outcome Result()
    {
        m_process.waitForFinished(60000);
        return {m_process.exitCode(), QString::fromUtf8(m_process.readAllStandardOutput()),
                QString::fromUtf8(m_process.readAllStandardError())};
    }

private:
    QProcess m_process;
};

struct Command {
    QStringList Arguments;
    QByteArray Input = {};
};

} // namespace

/// Two commands at one library at a time: whatever is reported as done has been done.
class TestCliConcurrent : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;

    /// Lets all get as far as they get while the library is locked, and then go on.
    QList<Outcome> Together(const QList<Command>& commands)
    {
        std::vector<std::unique_ptr<Run>> runs;
        {
            Transaction lock(*m_library);
            for (const Command& command : commands) {
                QStringList arguments = command.Arguments;
                arguments.insert(1, m_library->Name());
                runs.push_back(std::make_unique<Run>(arguments, command.Input));
            }
            const auto waits = [](const auto& run) { return run->Waits() || run->HasEnded(); };
            if (!QTest::qWaitFor([&] { return std::all_of(runs.begin(), runs.end(), waits); }, 4000))
                QTest::qFail("The commands don't wait for the library.", __FILE__, __LINE__);
        }
        QList<Outcome> outcomes;
        for (const auto& run : runs)
            outcomes << run->Result();
        return outcomes;
    }

    QString Field(qint64 id, const QString& column)
    {
        return m_library->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {id}).ToText();
    }
    QString Code(qint64 id)
    {
        return Cli({u"show"_s, m_library->Name(), QString::number(id), u"--field"_s, u"code"_s}).Out;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = MakeLibrary(m_home->Path(u"shared é.qbd"_s));
        for (const QString& title : {u"one"_s, u"two"_s, u"three"_s, u"four"_s})
            AddItem(*m_library, 0, title, u"int old;"_s);
    }
    void cleanup()
    {
        QCOMPARE(Cli({u"check"_s, m_library->Name()}).Out, u"Nothing is wrong with the library.\n"_s);
        m_library.reset();
        m_home.reset();
    }

    void twoChangesOfOneItem_areBothThere_data()
    {
        QTest::addColumn<QStringList>("other");
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("value");
        QTest::newRow("title") << QStringList{u"set"_s, u"1"_s, u"--title"_s, u"new"_s} << u"Title"_s << u"new"_s;
        QTest::newRow("info") << QStringList{u"set"_s, u"1"_s, u"--info"_s, u"new"_s} << u"Info"_s << u"new"_s;
        QTest::newRow("move") << QStringList{u"move"_s, u"1"_s, u"3"_s} << u"ParentID"_s << u"3"_s;
        QTest::newRow("colours") << QStringList{u"colorize"_s, u"1"_s, u"--save"_s} << u"Title"_s << u"one"_s;
    }
    void twoChangesOfOneItem_areBothThere()
    {
        QFETCH(QStringList, other);
        QFETCH(QString, column);
        QFETCH(QString, value);
        for (int i = 0; i < 4; ++i) { // who comes first is up to the machine
            const QByteArray code = "int number" + QByteArray::number(i) + ";\n";
            const QList<Outcome> outcomes = Together({{other}, {{u"set"_s, u"1"_s, u"--code"_s, u"-"_s}, code}});
            QCOMPARE(outcomes[0].Status, 0);
            QCOMPARE(outcomes[1].Status, 0);
            QCOMPARE(Code(1), QString::fromUtf8(code));
            QCOMPARE(Field(1, column), value);
            m_library->Execute(u"UPDATE Items SET Title = 'one', Info = '', ParentID = 0 WHERE ID = 1"_s);
        }
    }

    void twoMovesThatMakeACycle_oneIsRefused()
    {
        for (int i = 0; i < 3; ++i) {
            const QList<Outcome> outcomes = Together({{{u"move"_s, u"1"_s, u"2"_s}}, {{u"move"_s, u"2"_s, u"1"_s}}});
            QCOMPARE(outcomes[0].Status + outcomes[1].Status, 1);
            QVERIFY((Field(1, u"ParentID"_s) == u"2"_s) != (Field(2, u"ParentID"_s) == u"1"_s));
            m_library->Execute(u"UPDATE Items SET ParentID = 0"_s);
        }
    }

    void itemAddedBelowOneThatIsDeleted_isGoneOrRefused()
    {
        for (const QString& parent : {u"1"_s, u"2"_s, u"3"_s}) {
            const QList<Outcome> outcomes = Together(
                {{{u"delete"_s, parent}}, {{u"add"_s, u"--parent"_s, parent, u"--title"_s, u"below"_s}}});
            QCOMPARE(outcomes[0].Status, 0);
            QCOMPARE(m_library->QueryValue(u"SELECT count(*) FROM Items WHERE Title = 'below'"_s).ToLong(), 0);
        }
    }

    void linkToAnItemThatIsDeleted_isGoneOrRefused()
    {
        for (const QString& target : {u"2"_s, u"3"_s, u"4"_s}) {
            const QList<Outcome> outcomes = Together({{{u"delete"_s, target}}, {{u"link"_s, u"1"_s, target}}});
            QCOMPARE(outcomes[0].Status, 0);
            QCOMPARE(CountOf(*m_library, u"ItemLinks"_s), 0);
        }
    }

    void folderImportedBelowAnItemThatIsDeleted_isGoneOrRefused()
    {
        WriteFile(m_home->Path(u"source/a.cpp"_s), "int a;"_ba);
        for (const QString& parent : {u"1"_s, u"2"_s, u"3"_s}) {
            const QList<Outcome> outcomes = Together(
                {{{u"delete"_s, parent}}, {{u"import-folder"_s, m_home->Path(u"source"_s), u"--parent"_s, parent}}});
            QCOMPARE(outcomes[0].Status, 0);
            QCOMPARE(m_library->QueryValue(u"SELECT count(*) FROM Items WHERE Title = 'a.cpp'"_s).ToLong(), 0);
        }
    }
};

QB_TEST_MAIN(TestCliConcurrent)
#include "tst_cli_concurrent.moc"
