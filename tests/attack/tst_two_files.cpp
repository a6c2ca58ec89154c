#include "platform/dao/DBEngine.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <cerrno>
#include <cstdio>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int Rows = 12;

QString LibraryIn(const QString& folder)
{
    return folder + u"/library ö/lib.qbd"_s;
}

QString OtherIn(const QString& folder)
{
    return folder + u"/elsewhere/other.qbs"_s;
}

void MakeFile(const QString& path, const QString& text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    const auto database = DBEngine::CreateDatabase(path);
    database->AppendTableDef({.Name = u"Items"_s,
                              .Fields = {{.Name = u"Title"_s, .Type = FieldType::Memo}},
                              .Indexes = {{.Name = u"ByTitle"_s, .Fields = {u"Title"_s}}}});
    Transaction transaction(*database);
    for (int i = 0; i < Rows; ++i)
        database->Execute(u"INSERT INTO Items (Title) VALUES (?)"_s, {text + QString(1500, u'x')});
    transaction.Commit();
}

/// The work of the child process: one transaction over the two files, which does not fit the cache.
int ChangeBoth(const QString& folder)
{
    try {
        const auto database = DBEngine::OpenDatabase(LibraryIn(folder));
        const AttachedFile other(*database, OtherIn(folder), u"synchro"_s);
        database->Execute(u"PRAGMA cache_size = 5"_s);
        Transaction transaction(*database);
        for (const QString& table : {u"Items"_s, u"synchro.Items"_s})
            database->Execute(u"UPDATE %1 SET Title = 'new' || Title"_s.arg(table));
        transaction.Commit();
        return 0;
    } catch (const RuntimeError& error) {
        std::fputs(error.what(), stderr);
        return 1;
    }
}

/// "old", "new", or what else a file says.
QString StateOf(Database& database)
{
    QStringList states;
    Statement rows = database.Query(u"SELECT DISTINCT substr(Title, 1, 3) FROM Items"_s);
    while (rows.Step())
        states << rows.Text(0);
    if (database.QueryValue(u"PRAGMA integrity_check"_s).ToText() != u"ok"_s)
        states << u"damaged"_s;
    if (database.QueryValue(u"SELECT count(*) FROM Items"_s).ToLong() != Rows)
        states << u"other rows"_s;
    return states.join(u'+');
}

QStringList FilesBelow(const QString& folder)
{
    QStringList all;
    for (const QString& path : {LibraryIn(folder), OtherIn(folder)}) {
        const QDir dir = QFileInfo(path).dir();
        all += dir.entryList(QDir::Files | QDir::Hidden);
    }
    return all;
}

} // namespace

/// A transaction over two files in different folders counts for both or for neither, at whatever call its
/// process is killed or its disk fails.
class TestTwoFiles : public QObject {
    Q_OBJECT

    std::unique_ptr<TemporaryHome> m_home;
    QString m_pristine;
    QString m_work;

    static void Copy(const QString& from, const QString& to)
    {
        QDir(to).removeRecursively();
        for (const QString& path : {LibraryIn({}), OtherIn({})})
            WriteFile(to + path, ReadFile(from + path));
    }

    /// The exit status of the child; below 0 when it was killed.
    int Run(const QStringList& variables) const
    {
        QProcess process;
        process.setEnvironment(QProcess::systemEnvironment() + variables
                               << u"LD_PRELOAD="_s + qEnvironmentVariable("QUILLBASE_INJECT"));
        process.start(QCoreApplication::applicationFilePath(), {u"--change-both"_s, m_work});
        if (!process.waitForFinished(60000))
            return -2;
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    /// The states of both after the next opening, alone or as an attached file.
    QStringList Look(long turn) const
    {
        if (turn % 3 == 0) {
            const auto other = DBEngine::OpenDatabase(OtherIn(m_work));
            return {StateOf(*DBEngine::OpenDatabase(LibraryIn(m_work))), StateOf(*other)};
        }
        if (turn % 3 == 1) {
            const auto library = DBEngine::OpenDatabase(LibraryIn(m_work), DatabaseAccess::ReadOnly);
            return {StateOf(*library), StateOf(*DBEngine::OpenDatabase(OtherIn(m_work), DatabaseAccess::ReadOnly))};
        }
        const auto library = DBEngine::OpenDatabase(LibraryIn(m_work));
        library->Attach(OtherIn(m_work), u"synchro"_s, DatabaseAccess::ReadOnly);
        const QString other = library->QueryValue(u"SELECT max(substr(Title, 1, 3)) FROM synchro.Items"_s).ToText();
        library->Detach(u"synchro"_s);
        return {StateOf(*library), other};
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_pristine = m_home->Path(u"pristine"_s);
        m_work = m_home->Path(u"work"_s);
        for (const QString& path : {LibraryIn({}), OtherIn({})}) {
            MakeFile(m_pristine + path, u"old"_s);
            QDir().mkpath(QFileInfo(m_work + path).absolutePath());
        }
    }
    void cleanup() { m_home.reset(); }

    void transactionThatIsCutOff_countsForBothOrForNeither_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("killed") << u"kill"_s;
        QTest::newRow("killed within a write") << u"half"_s;
        QTest::newRow("disk full") << QString::number(ENOSPC);
        QTest::newRow("disk broken") << QString::number(EIO);
    }
    void transactionThatIsCutOff_countsForBothOrForNeither()
    {
        QFETCH(QString, how);
        const QString count = m_home->Path(u"count"_s);
        Copy(m_pristine, m_work);
        QCOMPARE(Run({u"ATTACK_COUNT="_s + count}), 0);
        QCOMPARE(Look(0), (QStringList{u"new"_s, u"new"_s}));
        const long calls = ReadFile(count).toLong();
        QVERIFY(calls > 20);
        int before = 0, after = 0;
        constexpr long CommitCalls = 60;
        const long step = how == u"kill" ? 1 : 3;
        for (long at = 1; at <= calls; at += calls - at > CommitCalls ? 25 : step) {
            Copy(m_pristine, m_work);
            const int status = Run({u"ATTACK_AT=%1"_s.arg(at), u"ATTACK_HOW="_s + how});
            const QStringList states = Look(at);
            const QByteArray where =
                u"call %1 of %2: status %3, %4"_s.arg(at).arg(calls).arg(status).arg(states.join(u", "_s)).toUtf8();
            const bool isBefore = states == QStringList{u"old"_s, u"old"_s};
            const bool isAfter = states == QStringList{u"new"_s, u"new"_s};
            QVERIFY2(status < 0 ? isBefore || isAfter : status == 0 ? isAfter : isBefore, where.constData());
            for (const QString& path : {OtherIn(m_work), LibraryIn(m_work)}) // the next change clears away
                DBEngine::OpenDatabase(path)->Execute(u"UPDATE Items SET Title = Title"_s);
            DBEngine::OpenDatabase(LibraryIn(m_work));
            QVERIFY2(FilesBelow(m_work).filter(u"-mj"_s).isEmpty(), where.constData());
            (isBefore ? before : after) += 1;
        }
        QVERIFY(before > 0);
        QVERIFY(after > 0);
    }

    void fileWithoutTheOtherOne_isNotOpened()
    {
        // Of the last call before the commit both journals are left.
        const QString count = m_home->Path(u"count"_s);
        Copy(m_pristine, m_work);
        QCOMPARE(Run({u"ATTACK_COUNT="_s + count}), 0);
        long at = ReadFile(count).toLong();
        for (bool both = false; !both && at > 1; --at) {
            Copy(m_pristine, m_work);
            Run({u"ATTACK_AT=%1"_s.arg(at), u"ATTACK_HOW=kill"_s});
            both = FilesBelow(m_work).filter(u"-mj"_s).size() == 1;
        }
        const QString moved = m_home->Path(u"moved"_s);
        QVERIFY(QDir().rename(m_work, moved));
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(OtherIn(moved)), 3343);
        QB_VERIFY_RAISES(DBEngine::OpenDatabase(LibraryIn(moved)), 3343);
        QVERIFY(QDir().rename(moved, m_work)); // back in their place they are whole
        QCOMPARE(Look(0), (QStringList{u"old"_s, u"old"_s}));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == u"--change-both")
        return ChangeBoth(arguments.value(2));
    TestTwoFiles test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_two_files.moc"
