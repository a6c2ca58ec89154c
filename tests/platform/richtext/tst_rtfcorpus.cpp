#include "platform/richtext/Rtf.h"
#include "support/TestRun.h"

#include <QDir>
#include <random>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// What was read is written, read and written again: the text and the bytes stay.
void CheckIsStable(const QByteArray& body)
{
    RichTextDocument first, second;
    ReadRtf(u"{\\rtf1 "_s + QString::fromLatin1(body), first);
    const QString written = WriteRtf(first);
    ReadRtf(written, second);
    QVERIFY2(second.Text() == first.Text(), body.toPercentEncoding(" {}\\;").constData());
    QVERIFY2(WriteRtf(second) == written, body.toPercentEncoding(" {}\\;").constData());
}

} // namespace

/// The seeds of the fuzzer, whole, cut at every byte and changed at random.
class TestRtfCorpus : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void seed_staysWhatItIs_data()
    {
        QTest::addColumn<QString>("file");
        const QDir seeds(QStringLiteral(QUILLBASE_SEEDS));
        const QStringList files = seeds.entryList({u"*.rtf"_s});
        QVERIFY(!files.isEmpty());
        for (const QString& file : files)
            QTest::newRow(qPrintable(file)) << seeds.filePath(file);
    }

    void seed_staysWhatItIs()
    {
        QFETCH(QString, file);
        const QByteArray seed = ReadFile(file);
        for (qsizetype length = 0; length <= seed.size(); ++length)
            CheckIsStable(seed.first(length));
        std::mt19937 random(1);
        for (int round = 0; round < 1500; ++round) {
            QByteArray changed = seed;
            for (int change = 0; change < 4; ++change)
                changed[qsizetype(random() % size_t(seed.size()))] = seed[qsizetype(random() % size_t(seed.size()))];
            CheckIsStable(changed);
        }
    }
};

QB_TEST_MAIN(TestRtfCorpus)
#include "tst_rtfcorpus.moc"
