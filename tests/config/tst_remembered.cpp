#include "config/Remembered.h"
#include "platform/system/Paths.h"
#include "platform/system/SettingsStore.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What the program remembers beside the settings.
class TestRemembered : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
    }
    void cleanup()
    {
        m_prompts.reset();
        m_home.reset();
    }

    void memory_liesUnderItsKey_data()
    {
        QTest::addColumn<Memory>("what");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("before");
        const auto row = [](const char* key, Memory what, const QString& section, const QString& before) {
            QTest::newRow(key) << what << section << QString::fromLatin1(key) << before;
        };
        row("LastDB", Memory::LastDB, u"Settings"_s, {});
        row("InitDir", Memory::InitDir, u"Settings"_s, u"C:\\"_s);
        row("FileImportOperation", Memory::FileImportOperation, u"Settings"_s, u"1"_s);
        row("PreviousExportPaths", Memory::PreviousExportPaths, u"StoredData"_s, u"C:\\"_s);
        row("FindHistory", Memory::FindHistory, u"StoredData"_s, {});
        row("SavedFinds", Memory::SavedFinds, u"StoredData"_s, {});
        row("RulesOffered", Memory::RulesOffered, u"StoredData"_s, {});
        row("KeywordDefiner", Memory::KeywordDefinerColours, u"Colours"_s, u"33280,8650752"_s);
        row("ChosenDatabases", Memory::ChosenDatabases, u"Databases"_s, {});
    }
    void memory_liesUnderItsKey()
    {
        QFETCH(Memory, what);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, before);
        QCOMPARE(Remembered(what), before);
        QVERIFY(Remember(what, u"/größe|ä;"_s));
        QCOMPARE(Remembered(what), u"/größe|ä;"_s);
        QCOMPARE(GetSetting(SettingsApplication, section, key), u"/größe|ä;"_s);
    }

    void memoryThatCantBeWritten_isReported()
    {
        QVERIFY(QDir().mkpath(ConfigFolder() + SettingsApplication + u".ini/inside"_s));
        m_prompts->ExpectError();
        QVERIFY(!Remember(Memory::LastDB, u"x"_s));
        QCOMPARE(Remembered(Memory::LastDB), QString());
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
};

QB_TEST_MAIN(TestRemembered)
#include "tst_remembered.moc"
