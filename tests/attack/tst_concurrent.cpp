#include "attack/AttackedLibrary.h"
#include "platform/richtext/RtfPlainText.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSet>
#include <QThread>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// What a command was to do, and whether it has reported that it is done.
struct Done {
    enum Kind { Added, Titled, Coded, Moved, Deleted, Attached } What;
    qint64 Item = 0;
    qint64 Parent = 0;
    QByteArray Text;
};

struct Ran {
    int Status = -1;
    QByteArray Output;
};

Ran RunCommand(const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput()};
}

/// One of several programs that work on a library at the same time. Titles are set by one, codes by another, so that
/// the last one that was reported must be the one that stands.
class Worker : public QThread {
public:
    Worker(const QString& library, const QString& file, int number, qint64 milliseconds)
        : m_library(library), m_file(file), m_number(number), m_milliseconds(milliseconds),
          m_random(quint32(number) + 77)
    {
    }
    std::vector<Done> AllDone;
    std::vector<QByteArray> Crashes;
    int Runs = 0;

protected:
    void run() override
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < m_milliseconds) {
            Step();
            ++Runs;
        }
    }

private:
    qint64 AnyItem() { return m_random.bounded(m_highest) + 1; }

    void Note(const Ran& ran, const Done& done)
    {
        if (ran.Status < 0 || ran.Status > 1)
            Crashes.push_back("status " + QByteArray::number(ran.Status));
        if (ran.Status == 0)
            AllDone.push_back(done);
    }

    void Step()
    {
        const qint64 item = AnyItem();
        const qint64 parent = m_random.bounded(6) == 0 ? 0 : AnyItem();
        const QString id = QString::number(item), below = QString::number(parent);
        const QByteArray text = QByteArray::number(m_number) + '-' + QByteArray::number(++m_texts);
        switch (m_random.bounded(10)) {
        case 0:
        case 1:
        case 2: {
            const Ran ran = RunCommand({u"add"_s, m_library, u"--parent"_s, below, u"--title"_s, u"new"_s});
            const qint64 added = ran.Output.trimmed().toLongLong();
            m_highest = std::max(m_highest, int(added));
            Note(ran, {Done::Added, added, parent, {}});
            break;
        }
        case 3:
        case 4:
        case 5:
            if (m_number % 2 == 0)
                Note(RunCommand({u"set"_s, m_library, id, u"--title"_s, QString::fromLatin1(text)}),
                     {Done::Titled, item, 0, text});
            else
                Note(RunCommand({u"set"_s, m_library, id, u"--code"_s, u"-"_s}, text), {Done::Coded, item, 0, text});
            break;
        case 6:
        case 7:
            Note(RunCommand({u"move"_s, m_library, id, below}), {Done::Moved, item, parent, {}});
            break;
        case 8:
            Note(RunCommand({u"attach"_s, m_library, id, m_file}), {Done::Attached, item, 0, {}});
            break;
        default:
            if (item > 3) // some stay, so that the tree grows
                Note(RunCommand({u"delete"_s, m_library, id}), {Done::Deleted, item, 0, {}});
        }
    }

    QString m_library;
    QString m_file;
    int m_number;
    qint64 m_milliseconds;
    QRandomGenerator m_random;
    int m_highest = 3;
    int m_texts = 0;
};

/// What must be true of the library by what the programs have reported.
class Model {
public:
    explicit Model(const std::vector<Worker*>& workers)
    {
        for (const qint64 item : {1, 2, 3}) {
            m_added.insert(item);
            m_parents[item].insert(0);
        }
        for (const Worker* worker : workers) {
            for (const Done& done : worker->AllDone)
                Take(done);
        }
    }

    const QMap<qint64, QByteArray>& Titles() const { return m_titles; }
    const QMap<qint64, QByteArray>& Codes() const { return m_codes; }
    const QSet<qint64>& Added() const { return m_added; }
    const QSet<qint64>& Deleted() const { return m_deleted; }

    /// Whether an item may have gone with another one: it was below one that was deleted, at some time.
    bool MayBeGone(qint64 item) const
    {
        QSet<qint64> seen;
        QList<qint64> waiting{item};
        while (!waiting.isEmpty()) {
            const qint64 at = waiting.takeLast();
            if (at == 0 || seen.contains(at))
                continue;
            if (m_deleted.contains(at))
                return true;
            seen.insert(at);
            waiting += m_parents.value(at).values();
        }
        return false;
    }

private:
    void Take(const Done& done)
    {
        switch (done.What) {
        case Done::Added:
            m_added.insert(done.Item);
            [[fallthrough]];
        case Done::Moved:
            m_parents[done.Item].insert(done.Parent);
            break;
        case Done::Titled:
            m_titles[done.Item] = done.Text;
            break;
        case Done::Coded:
            m_codes[done.Item] = done.Text;
            break;
        case Done::Deleted:
            m_deleted.insert(done.Item);
            break;
        case Done::Attached:
            break;
        }
    }

    QMap<qint64, QByteArray> m_titles;
    QMap<qint64, QByteArray> m_codes;
    QMap<qint64, QSet<qint64>> m_parents;
    QSet<qint64> m_added;
    QSet<qint64> m_deleted;
};

} // namespace

/// Programs that change one library at the same time: what each has reported as done is there in the end, and the
/// library is whole. ATTACK_SECONDS sets for how long they work.
class TestConcurrent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void commandsAtTheSameTime_loseNothingThatWasReported()
    {
        const TemporaryHome home;
        const QString path = home.Path(u"zugleich ü.qbd"_s);
        const QString file = home.Path(u"file.txt"_s);
        WriteFile(file, "stored");
        {
            const auto library = MakeLibrary(path);
            for (const QString& title : {u"a"_s, u"b"_s, u"c"_s})
                AddItem(*library, 0, title);
        }
        const int seconds = qEnvironmentVariableIntValue("ATTACK_SECONDS");
        const qint64 share = seconds > 0 ? seconds * 1000LL : 15000LL;
        Worker titles(path, file, 0, share), codes(path, file, 1, share);
        const std::vector<Worker*> workers{&titles, &codes};
        for (Worker* worker : workers)
            worker->start();
        int runs = 0;
        int done = 0;
        for (Worker* worker : workers) {
            QVERIFY(worker->wait(QDeadlineTimer(share + 130000)));
            QVERIFY2(worker->Crashes.empty(), worker->Crashes.empty() ? "" : worker->Crashes[0].constData());
            runs += worker->Runs;
            done += int(worker->AllDone.size());
        }
        const auto library = Library::Open(path);
        FinishPendingFiles(*library);
        QStringList losses;
        for (const LibraryFault& fault : CheckLibrary(*library))
            losses << fault.Text;
        for (const LibraryFault& fault : CheckContents(*library).Faults)
            losses << fault.Text;
        const Model model(workers);
        for (const qint64 item : model.Added())
            losses += LossesOf(*library, model, item);
        QCOMPARE(StoredNames(library->FilesFolder()).size(), CountOf(*library, u"Files"_s));
        qInfo("%d commands at the same time, %d of them done, %d losses", runs, done, int(losses.size()));
        QVERIFY(done > 20);
        QVERIFY2(losses.isEmpty(), qPrintable(u'\n' + losses.join(u'\n')));
    }

private:
    static QStringList LossesOf(Library& library, const Model& model, qint64 item)
    {
        Statement row = library.Query(u"SELECT Title, Code FROM Items WHERE ID = ?"_s, {item});
        if (!row.Step())
            return model.MayBeGone(item) ? QStringList() : QStringList{u"the item %1 is gone"_s.arg(item)};
        QStringList losses;
        if (model.Deleted().contains(item))
            losses << u"the item %1 was deleted, and is there"_s.arg(item);
        if (model.Titles().contains(item) && row.Text(0).toLatin1() != model.Titles()[item])
            losses << u"the item %1 has the title %2 in place of %3"_s.arg(item).arg(
                row.Text(0), QString::fromLatin1(model.Titles()[item]));
        if (model.Codes().contains(item) && PlainTextFromRtf(row.Text(1)).trimmed().toLatin1() != model.Codes()[item])
            losses << u"the item %1 has the code %2 in place of %3"_s.arg(item).arg(
                PlainTextFromRtf(row.Text(1)), QString::fromLatin1(model.Codes()[item]));
        return losses;
    }
};

QB_TEST_MAIN(TestConcurrent)
#include "tst_concurrent.moc"
