#include "platform/system/SingleInstance.h"
#include "support/TestRun.h"

#include <QDir>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// Another process that holds the claim until it is killed.
class OtherInstance {
public:
    OtherInstance()
    {
        int ends[2];
        if (::pipe(ends) != 0)
            return;
        m_process = ::fork();
        if (m_process == 0) {
            const SingleInstance claim;
            const char answer = claim.IsFirst() ? 'y' : 'n';
            if (::write(ends[1], &answer, 1) == 1)
                ::pause();
            ::_exit(0);
        }
        ::close(ends[1]);
        char answer = 0;
        m_isFirst = ::read(ends[0], &answer, 1) == 1 && answer == 'y';
        ::close(ends[0]);
    }
    ~OtherInstance() { Kill(); }
    OtherInstance(const OtherInstance&) = delete;
    OtherInstance& operator=(const OtherInstance&) = delete;

    bool IsFirst() const { return m_isFirst; }
    void Kill()
    {
        if (m_process <= 0)
            return;
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
        m_process = 0;
    }

private:
    pid_t m_process = 0;
    bool m_isFirst = false;
};

} // namespace

class TestSingleInstance : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void secondClaim_isRefusedWhileTheFirstLives()
    {
        const TemporaryHome home;
        {
            const SingleInstance first;
            QVERIFY(first.IsFirst());
            QVERIFY(!SingleInstance().IsFirst());
            QVERIFY(!SingleInstance().IsFirst()); // a refused claim takes nothing away
        }
        QVERIFY(SingleInstance().IsFirst());
        QCOMPARE(QDir(home.Path(u"config"_s)).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void claimOfAnotherProcess_isRespected()
    {
        const TemporaryHome home;
        const OtherInstance other;
        QVERIFY(other.IsFirst());
        QVERIFY(!SingleInstance().IsFirst());
    }

    void killedProcess_leavesTheClaimFree()
    {
        const TemporaryHome home;
        OtherInstance other;
        QVERIFY(other.IsFirst());
        other.Kill();
        QVERIFY(SingleInstance().IsFirst());
    }

    void remainsOfALock_hinderNobody()
    {
        const TemporaryHome home;
        WriteFile(home.Path(u"config/quillbase.lock"_s), QByteArray());
        QVERIFY(SingleInstance().IsFirst());
    }

    void folderThatCannotBeWritten_hindersNobody()
    {
        const TemporaryHome home;
        WriteFile(home.Path(u"file"_s), "1"_ba);
        qputenv("QUILLBASE_CONFIG_HOME", QFile::encodeName(home.Path(u"file"_s)));
        QVERIFY(SingleInstance().IsFirst());
    }

    void otherUsersFolder_isAnotherClaim()
    {
        const TemporaryHome home;
        const SingleInstance first;
        const TemporaryHome otherHome;
        QVERIFY(SingleInstance().IsFirst());
    }
};

QB_TEST_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
