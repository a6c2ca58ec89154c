#include "platform/system/Interims.h"
#include "support/TestRun.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Names of files that are being made, and what becomes of those that a dead process left.
class TestInterims : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        QVERIFY(QDir().mkpath(Folder()));
    }
    void cleanup() { m_home.reset(); }

    void name_isHiddenBesideTheTargetAndAnotherOneEachTime()
    {
        const QString one = InterimName(Folder() + u"/%1 ü"_s);
        QVERIFY2(one.startsWith(Folder() + u"/.%1 ü."_s), qPrintable(one));
        QVERIFY(one != InterimName(Folder() + u"/%1 ü"_s));
        const QString longest = InterimName(Folder() + u'/' + QString(80, QChar(0x4e2d))); // 240 bytes
        WriteFile(longest, "x");
    }

    void leftoversOfADeadProcess_go_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::newRow("file") << QString();
        QTest::newRow("its journal") << u"-journal"_s;
        QTest::newRow("of the zip library") << u".aB3xYz"_s;
    }
    void leftoversOfADeadProcess_go()
    {
        QFETCH(QString, suffix);
        const QString dead = OfProcess(DeadProcess()) + suffix;
        const QString living = OfProcess(getpid()) + suffix;
        WriteFile(dead, "x");
        WriteFile(living, "x");
        RemoveStaleInterims(Folder());
        QVERIFY(!QFile::exists(dead));
        QVERIFY(QFile::exists(living));
    }

    void filesOfTheUser_stay_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("interim") << u"my.interim"_s;
        QTest::newRow("hidden") << u".my.interim"_s;
        QTest::newRow("a process") << u".a.qbd.12345.new"_s;
        QTest::newRow("not hidden") << QFileInfo(OfProcess(DeadProcess())).fileName().mid(1);
        QTest::newRow("more behind it") << QFileInfo(OfProcess(DeadProcess())).fileName() + u"-copy"_s;
    }
    void filesOfTheUser_stay()
    {
        QFETCH(QString, name);
        WriteFile(Folder() + u'/' + name, "mine");
        RemoveStaleInterims(Folder());
        QVERIFY(QFile::exists(Folder() + u'/' + name));
    }

    void linkOfSuchAName_isNotFollowed()
    {
        const QString file = Folder() + u"/file"_s;
        WriteFile(file, "mine");
        const QString link = OfProcess(DeadProcess());
        QVERIFY(QFile::link(file, link));
        RemoveStaleInterims(Folder());
        QVERIFY(QFile::exists(file) && QFileInfo(link).isSymLink());
    }

    void leftoversOfAnotherMachine_goWhenTheyAreOld()
    {
        QString name = OfProcess(DeadProcess());
        name.replace(QRegularExpression(u"[0-9a-f]{8}-"_s), u"00000000-"_s);
        WriteFile(name, "x");
        RemoveStaleInterims(Folder());
        QVERIFY(QFile::exists(name));
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(-30), QFileDevice::FileModificationTime));
        file.close();
        RemoveStaleInterims(Folder());
        QVERIFY(!QFile::exists(name));
    }

private:
    QString Folder() const { return m_home ? m_home->Path(u"földer"_s) : u"/nowhere"_s; }
    static qint64 DeadProcess()
    {
        QProcess process;
        process.start(u"true"_s, QStringList());
        const bool started = process.waitForStarted();
        const qint64 id = started ? process.processId() : 0;
        process.waitForFinished();
        return id;
    }
    QString OfProcess(qint64 process) const
    {
        return InterimName(Folder() + u"/lib.qbd"_s).replace(u"-%1-"_s.arg(getpid()), u"-%1-"_s.arg(process));
    }

    std::unique_ptr<TemporaryHome> m_home;
};

QB_TEST_MAIN(TestInterims)
#include "tst_interims.moc"
