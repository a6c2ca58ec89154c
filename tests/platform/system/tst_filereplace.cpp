#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "support/FileSizeLimit.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFileInfo>
#include <sys/stat.h>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestFileReplace : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        WriteFile(From(), "new"_ba);
    }
    void cleanup() { m_home.reset(); }

    void freeName_isTaken_data() { ReplaceOrNot(); }

    void freeName_isTaken()
    {
        QFETCH(bool, replace);
        MoveIntoPlace(From(), To(), replace);
        QCOMPARE(Names(), QStringList{u"tö.txt"_s});
        QCOMPARE(ReadFile(To()), "new"_ba);
    }

    void existingFile_isReplaced()
    {
        WriteFile(To(), "old and longer"_ba);
        MoveIntoPlace(From(), To(), true);
        QCOMPARE(Names(), QStringList{u"tö.txt"_s});
        QCOMPARE(ReadFile(To()), "new"_ba);
    }

    void existingFile_isNotReplacedUnasked()
    {
        WriteFile(To(), "old"_ba);
        QB_VERIFY_RAISES(MoveIntoPlace(From(), To(), false), 75);
        QCOMPARE(ReadFile(From()), "new"_ba);
        QCOMPARE(ReadFile(To()), "old"_ba);
    }

    void missingSource_raises75AndKeepsTheTarget_data() { ReplaceOrNot(); }

    void missingSource_raises75AndKeepsTheTarget()
    {
        QFETCH(bool, replace);
        WriteFile(To(), "old"_ba);
        QB_VERIFY_RAISES(MoveIntoPlace(m_home->Path(u"data/none"_s), To(), replace), 75);
        QCOMPARE(ReadFile(To()), "old"_ba);
    }

    void missingFolder_raises75AndKeepsTheSource_data() { ReplaceOrNot(); }

    void missingFolder_raises75AndKeepsTheSource()
    {
        QFETCH(bool, replace);
        QB_VERIFY_RAISES(MoveIntoPlace(From(), m_home->Path(u"data/none/to"_s), replace), 75);
        QCOMPARE(Names(), QStringList{u"fröm.new"_s});
        QCOMPARE(ReadFile(From()), "new"_ba);
    }

    void folderInPlaceOfTheTarget_raises75_data() { ReplaceOrNot(); }

    void folderInPlaceOfTheTarget_raises75()
    {
        QFETCH(bool, replace);
        WriteFile(To() + u"/inside"_s, "x"_ba);
        QB_VERIFY_RAISES(MoveIntoPlace(From(), To(), replace), 75);
        QCOMPARE(ReadFile(From()), "new"_ba);
        QCOMPARE(ReadFile(To() + u"/inside"_s), "x"_ba);
    }

    void pipeInPlaceOfTheTarget_raises75_data() { ReplaceOrNot(); }

    void pipeInPlaceOfTheTarget_raises75()
    {
        QFETCH(bool, replace);
        QCOMPARE(::mkfifo(QFile::encodeName(To()).constData(), 0600), 0);
        QB_VERIFY_RAISES(MoveIntoPlace(From(), To(), replace), 75);
        QCOMPARE(ReadFile(From()), "new"_ba);
        QVERIFY(QFileInfo::exists(To()) && !QFileInfo(To()).isFile());
    }

    void failure_namesTheFile()
    {
        WriteFile(To(), "old"_ba);
        try {
            MoveIntoPlace(From(), To(), false);
            QFAIL("replaced");
        } catch (const RuntimeError& error) {
            QVERIFY2(error.Description().contains(QDir::toNativeSeparators(To())), error.what());
        }
    }

    void writeAll_saysWhyItCant()
    {
        QFile file(To());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(WriteAll(file, "0123", 4), QString());
        {
            const FileSizeLimit full(6);
            QCOMPARE(WriteAll(file, "4567", 4), u"File too large"_s);
        }
        QCOMPARE(ReadFile(To()), "012345"_ba);
    }

    void contents_areReplacedThroughALinkAndKeepTheirRights()
    {
        WriteFile(To(), "old"_ba);
        QVERIFY(QFile::setPermissions(To(), QFile::ReadOwner | QFile::WriteOwner));
        const QString link = m_home->Path(u"data/link"_s);
        QVERIFY(QFile::link(To(), link));
        QCOMPARE(ReplaceContents(link, "new bytes"), QString());
        QCOMPARE(ReadFile(To()), "new bytes"_ba);
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(QFile::permissions(To()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    }

    void contentsThatCanNotBeReplaced_stay()
    {
        WriteFile(To(), "old"_ba);
        {
            const FileSizeLimit full(6);
            QCOMPARE(ReplaceContents(To(), "much longer"), u"File too large"_s);
        }
        QCOMPARE(ReadFile(To()), "old"_ba);
        QCOMPARE(Names().size(), 2); // with the source of the other tests
        QVERIFY(!ReplaceContents(m_home->Path(u"data"_s), "x").isEmpty());
        QVERIFY(!ReplaceContents(m_home->Path(u"none/x"_s), "x").isEmpty());
    }

    void syncFile_missing_raises75()
    {
        SyncFile(From());
        QB_VERIFY_RAISES(SyncFile(m_home->Path(u"none"_s)), 75);
    }

private:
    QString From() const { return m_home->Path(u"data/fröm.new"_s); }
    QString To() const { return m_home->Path(u"data/tö.txt"_s); }
    QStringList Names() const
    {
        return QDir(m_home->Path(u"data"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    static void ReplaceOrNot()
    {
        QTest::addColumn<bool>("replace");
        QTest::newRow("replacing") << true;
        QTest::newRow("not replacing") << false;
    }

    std::unique_ptr<TemporaryHome> m_home;
};

QB_TEST_MAIN(TestFileReplace)
#include "tst_filereplace.moc"
