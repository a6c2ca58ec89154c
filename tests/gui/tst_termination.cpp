#include "session/ui/Termination.h"
#include "support/EditingWindow.h"

#include <QProcess>
#include <csignal>
#include <cstdio>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int Item = 1;
const QString Typed = u"typed a moment ago"_s;

/// The child process: a window with a text that was typed just now, over the library that the parent has made.
int TypeAndWait()
{
    SilentPrompts prompts;
    Prompts::SetCurrent(&prompts);
    frmCodeLib window;
    window.Form_Load();
    window.show();
    KeepTextsAtTermination(window);
    window.GoToNode(u'C' + QString::number(Item));
    auto* code = window.findChild<CodeBox*>(u"rtbCode"_s);
    QTest::keyClicks(code, Typed);
    std::puts("typed");
    std::fflush(stdout);
    return QApplication::exec();
}

} // namespace

/// The end of the program by the system.
class TestTermination : public QObject, private EditingWindow {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void termination_keepsWhatWasTyped()
    {
        m_database.reset();
        QProcess child;
        child.setProcessChannelMode(QProcess::SeparateChannels);
        child.start(QCoreApplication::applicationFilePath(), {u"--type-and-wait"_s});
        QByteArray said;
        QTRY_VERIFY_WITH_TIMEOUT(
            (child.waitForReadyRead(100), said += child.readAllStandardOutput(), said.contains("typed")), 30000);
        ::kill(pid_t(child.processId()), SIGTERM); // before the half second after which it would be kept anyway
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitStatus(), QProcess::CrashExit); // ended by the signal, as its sender expects
        QCOMPARE(child.exitCode(), SIGTERM);
        QCOMPARE(UnsavedFiles().size(), 1);
        const QByteArray kept = ReadFile(m_home->Path(u"data/"_s + UnsavedFiles().first()));
        QVERIFY2(kept.contains(Typed.toUtf8()), kept.constData());
    }
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    InitialiseIcons();
    if (QApplication::arguments().value(1) == u"--type-and-wait"_s)
        return TypeAndWait();
    TestTermination test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_termination.moc"
