#include "platform/system/SettingsStore.h"
#include "support/GuiRun.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QFileInfo>
#include <QImage>
#include <QProcess>

#include <csignal>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The program as a process of its own.
class TestProgram : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
    }

    void cleanup() { m_home.reset(); }

    void start_tracesItsStagesAndWritesAPicture()
    {
        AddItem(*MakeLibrary(m_home->Path(u"data/QBLib.qbd"_s)), 0, u"shown"_s, u"code"_s);
        const auto program = Start(
            u"a"_s, {{u"QUILLBASE_PICTURE"_s, m_home->Path(u"picture.png"_s)}, {u"QUILLBASE_SHOW"_s, u"1"_s}});
        QVERIFY(program->waitForFinished());
        QCOMPARE(program->exitCode(), 0);
        QStringList stages;
        double before = 0;
        for (const QString& line : Trace(u"a"_s).split(u'\n', Qt::SkipEmptyParts)) {
            stages << line.section(u' ', 0, 0);
            QVERIFY(line.section(u' ', 1).toDouble() >= before);
            before = line.section(u' ', 1).toDouble();
        }
        QCOMPARE(stages, (QStringList{u"process"_s, u"window"_s, u"library"_s, u"tree_painted"_s}));
        QVERIFY(!QImage(m_home->Path(u"picture.png"_s)).isNull());
    }

    void secondInstance_isRefusedAndTheFirstGoesOn()
    {
        const auto first = Start(u"first"_s);
        QTRY_VERIFY(Trace(u"first"_s).contains(u"tree_painted"_s));
        const auto second = Start(u"second"_s);
        QTRY_VERIFY(Trace(u"second"_s).contains(u"refused"_s));
        QVERIFY(!Trace(u"second"_s).contains(u"window"_s));
        QCOMPARE(first->state(), QProcess::Running);
        second->kill();
        second->waitForFinished();
        first->kill();
        first->waitForFinished();
    }

    void crashOfTheFirst_leavesNoLockBehind()
    {
        const auto first = Start(u"first"_s);
        QTRY_VERIFY(Trace(u"first"_s).contains(u"tree_painted"_s));
        ::kill(pid_t(first->processId()), SIGKILL);
        first->waitForFinished();
        const auto second = Start(u"second"_s, {{u"QUILLBASE_PICTURE"_s, m_home->Path(u"picture.png"_s)}});
        QVERIFY(second->waitForFinished());
        QVERIFY(Trace(u"second"_s).contains(u"tree_painted"_s));
    }

    void commandLineArguments_haveNoEffect()
    {
        const auto program = Start(u"a"_s, {{u"QUILLBASE_PICTURE"_s, m_home->Path(u"picture.png"_s)}},
                                   {u"/p"_s, u"nothing.qbd"_s});
        QVERIFY(program->waitForFinished());
        QCOMPARE(program->exitCode(), 0);
        QVERIFY(QFileInfo::exists(m_home->Path(u"data/QBLib.qbd"_s)));
        QCOMPARE(GetSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s),
                 m_home->Path(u"data/QBLib.qbd"_s) + u"|KT Quillbase;"_s);
    }

private:
    std::unique_ptr<QProcess> Start(const QString& name, const QMap<QString, QString>& variables = {},
                                    const QStringList& arguments = {})
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QUILLBASE_TRACE"_s, TraceFile(name));
        for (auto variable = variables.begin(); variable != variables.end(); ++variable)
            environment.insert(variable.key(), variable.value());
        process->setProcessEnvironment(environment);
        process->start(qEnvironmentVariable("QUILLBASE_PROGRAM"), arguments);
        return process;
    }

    QString TraceFile(const QString& name) const { return m_home->Path(name + u".trace"_s); }
    QString Trace(const QString& name) const
    {
        return QFileInfo::exists(TraceFile(name)) ? QString::fromUtf8(ReadFile(TraceFile(name))) : QString();
    }

    std::unique_ptr<TemporaryHome> m_home;
};

QB_GUI_TEST_MAIN(TestProgram)
#include "tst_program.moc"
