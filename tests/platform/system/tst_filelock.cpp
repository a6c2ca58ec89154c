#include "platform/system/FileLock.h"
#include "support/OrdinaryUser.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <atomic>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

using Target = FileLock::Target;
using State = FileLock::State;

namespace {

/// Another process that holds a lock until it is killed.
class OtherHolder {
public:
    OtherHolder(const QString& path, Target target)
    {
        int ends[2];
        if (::pipe(ends) != 0)
            return;
        m_process = ::fork();
        if (m_process == 0) {
            const FileLock lock(path, target);
            const char answer = lock.IsHeld() ? 'y' : 'n';
            if (::write(ends[1], &answer, 1) == 1)
                ::pause();
            ::_exit(0);
        }
        ::close(ends[1]);
        char answer = 0;
        m_holds = ::read(ends[0], &answer, 1) == 1 && answer == 'y';
        ::close(ends[0]);
    }
    ~OtherHolder() { Kill(); }
    OtherHolder(const OtherHolder&) = delete;
    OtherHolder& operator=(const OtherHolder&) = delete;

    bool Holds() const { return m_holds; }
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
    bool m_holds = false;
};

} // namespace

/// A lock on a file or folder.
class TestFileLock : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(In(u"file"_s), "contents");
    }
    void cleanup() { m_home.reset(); }

    void held_keepsOthersOutUntilItIsReleased_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Target>("target");
        QTest::newRow("a file that is there") << u"file"_s << Target::Existing;
        QTest::newRow("a folder") << QString() << Target::Existing;
        QTest::newRow("a file of its own") << u"a lock ö"_s << Target::Own;
    }
    void held_keepsOthersOutUntilItIsReleased()
    {
        QFETCH(QString, name);
        QFETCH(Target, target);
        const QStringList before = Names();
        FileLock first(In(name), target);
        QVERIFY(first.IsHeld());
        for (int i = 0; i < 2; ++i) { // what is refused takes nothing away
            const FileLock second(In(name), target);
            QCOMPARE(second.Result(), State::Busy);
        }
        first.Release();
        QCOMPARE(first.Result(), State::None);
        QVERIFY(FileLock(In(name), target).IsHeld());
        QCOMPARE(Names(), before);
        QCOMPARE(ReadFile(In(u"file"_s)), "contents");
    }

    void heldByAnotherProcess_isBusyUntilThatDies()
    {
        OtherHolder other(In(u"lock"_s), Target::Own);
        QVERIFY(other.Holds());
        QVERIFY(FileLock(In(u"lock"_s), Target::Own).IsBusy());
        other.Kill();
        QVERIFY(QFile::exists(In(u"lock"_s))); // it could not clear away
        {
            const FileLock lock(In(u"lock"_s), Target::Own);
            QVERIFY(lock.IsHeld());
        }
        QVERIFY(!QFile::exists(In(u"lock"_s)));
    }

    void moved_isHeldByTheOther()
    {
        FileLock lock(In(u"file"_s), Target::Existing);
        FileLock taken(std::move(lock));
        QVERIFY(taken.IsHeld());
        QVERIFY(FileLock(In(u"file"_s), Target::Existing).IsBusy());
        taken = FileLock();
        QVERIFY(FileLock(In(u"file"_s), Target::Existing).IsHeld());
    }

    void nothingThere_isMissing()
    {
        QCOMPARE(FileLock(In(u"no such"_s), Target::Existing).Result(), State::Missing);
        QCOMPARE(FileLock(In(u"no folder/lock"_s), Target::Own).Result(), State::Missing);
        QCOMPARE(FileLock().Result(), State::None);
    }

    void fileNobodyMayOpen_isImpossible()
    {
        QVERIFY(QFile::setPermissions(In(u"file"_s), {}));
        QVERIFY(QFile::setPermissions(m_home->Path(), QFileDevice::Permissions(0x7777)));
        const OrdinaryUser user;
        QCOMPARE(FileLock(In(u"file"_s), Target::Existing).Result(), State::Impossible);
    }

    /// A file that its holder removes while others wait for it is no lock on the one that comes next.
    void fileOfItsOwn_isHeldByOneAtATime()
    {
        std::atomic<int> inside = 0;
        std::atomic<int> together = 0;
        std::atomic<int> held = 0;
        const auto take = [&] {
            for (int round = 0; round < 300; ++round) {
                const FileLock lock(In(u"lock"_s), Target::Own, FileLock::Forever);
                held += lock.IsHeld();
                together += ++inside > 1;
                std::this_thread::yield();
                --inside;
            }
        };
        std::thread one(take);
        std::thread other(take);
        take();
        one.join();
        other.join();
        QCOMPARE(held.load(), 900);
        QCOMPARE(together.load(), 0);
        QCOMPARE(Names(), QStringList{u"file"_s});
    }

    void removedFile_isNotTakenForTheOneOfItsName()
    {
        FileLock lock(In(u"file"_s), Target::Existing);
        QVERIFY(QFile::remove(In(u"file"_s)));
        WriteFile(In(u"file"_s), "another");
        lock.RemoveFile(); // which is no longer its own
        QCOMPARE(ReadFile(In(u"file"_s)), "another");
    }

private:
    QString In(const QString& name) const { return m_home->Path(u"the folder/"_s + name); }
    QStringList Names() const { return QDir(In({})).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot); }

    std::unique_ptr<TemporaryHome> m_home;
};

QB_TEST_MAIN(TestFileLock)
#include "tst_filelock.moc"
