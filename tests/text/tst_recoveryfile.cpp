#include "support/FileSizeLimit.h"
#include "support/InZone.h"
#include "support/TestRun.h"
#include "text/RecoveryFile.h"

#include <QFileInfo>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestRecoveryFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void texts_comeBackAsTheyWere()
    {
        const TemporaryHome home;
        const RecoveryFile file(home.Path(u"lib.qbd"_s));
        QVERIFY(!file.Read());
        const Date changed = Date::FromParts(2026, 3, 2, 14, 30, 5);
        file.Write({.Item = 1LL << 40,
                    .LastChanged = changed,
                    .Code = u"{\\rtf1 \u00e9 \"x\"\r\n}"_s,
                    .Notes = QString(u""_s),
                    .Usage = {},
                    .Info = u"plain\r\n'\""_s});
        const auto texts = file.Read();
        QVERIFY(texts);
        QCOMPARE(texts->Item, 1LL << 40);
        QCOMPARE(texts->LastChanged, changed);
        QCOMPARE(texts->Code, std::optional(u"{\\rtf1 \u00e9 \"x\"\r\n}"_s));
        QVERIFY(texts->Notes && texts->Notes->isEmpty());
        QVERIFY(!texts->Usage);
        QCOMPARE(texts->Info, std::optional(u"plain\r\n'\""_s));
        file.Remove();
        QVERIFY(!file.Read());
    }

    void fileOfAnOlderVersion_saysWhatTheClockRead()
    {
        const InZone here(MiddleEurope);
        const TemporaryHome home;
        const RecoveryFile file(home.Path(u"lib.qbd"_s));
        const Date changed = Date::FromParts(2026, 7, 1, 12);
        file.Write({.Item = 1, .LastChanged = changed, .Code = u"x"_s, .Notes = {}, .Usage = {}});
        QByteArray bytes = ReadFile(file.Path());
        const QByteArray now = QByteArray::number(changed.Seconds());
        QVERIFY(bytes.contains("\"changed\""));
        bytes.replace("\"changed\"", "\"lastChanged\"").replace(now, QByteArray::number(changed.WallSeconds()));
        QVERIFY(!bytes.contains(now));
        WriteFile(file.Path(), bytes);
        QCOMPARE(file.Read()->LastChanged, changed);
    }

    void fullDisk_keepsWhatWasWrittenLast()
    {
        const TemporaryHome home;
        const RecoveryFile file(home.Path(u"lib.qbd"_s));
        file.Write({.Item = 1, .LastChanged = {}, .Code = u"first"_s, .Notes = {}, .Usage = {}});
        {
            const FileSizeLimit full(10);
            file.Write({.Item = 1, .LastChanged = {}, .Code = u"second"_s, .Notes = {}, .Usage = {}});
        }
        QVERIFY(file.Read());
        QCOMPARE(file.Read()->Code, std::optional(u"first"_s));
    }

    void eachLibrary_hasItsOwn()
    {
        const TemporaryHome home;
        const RecoveryFile one(home.Path(u"a/lib.qbd"_s));
        const RecoveryFile other(home.Path(u"b/lib.qbd"_s));
        one.Write({.Item = 1, .LastChanged = {}, .Code = u"x"_s, .Notes = {}, .Usage = {}});
        QVERIFY(!other.Read());
        // Even under the other's name it is not taken for the other's.
        WriteFile(other.Path(), ReadFile(one.Path()));
        QVERIFY(!other.Read());
    }

    void damagedFile_isNothing()
    {
        const TemporaryHome home;
        const RecoveryFile file(home.Path(u"lib.qbd"_s));
        file.Write({.Item = 1, .LastChanged = {}, .Code = u"x"_s, .Notes = {}, .Usage = {}});
        const QByteArray whole = ReadFile(file.Path());
        for (qsizetype length = 0; length < whole.size(); ++length) {
            WriteFile(file.Path(), whole.first(length));
            QVERIFY2(!file.Read(), QByteArray::number(length));
        }
    }
};

QB_TEST_MAIN(TestRecoveryFile)
#include "tst_recoveryfile.moc"
