#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"
#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <QSettings>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

const QString Section = u"Settings"_s;
const QString Key = u"InitDir"_s;

QString StoreFile()
{
    return ConfigFolder() + SettingsApplication + u".ini"_s;
}

QString Read(const QString& fallback = {})
{
    return GetSetting(SettingsApplication, Section, Key, fallback);
}

void Save(const QString& value)
{
    SaveSetting(SettingsApplication, Section, Key, value);
}

/// Moves the store to another path, where nothing of it is remembered.
void MoveStore(const TemporaryHome& home, const QString& name)
{
    const QString from = StoreFile();
    qputenv("QUILLBASE_CONFIG_HOME", QFile::encodeName(home.Path(name)));
    QVERIFY(QFile::rename(from, StoreFile()));
}

} // namespace

class TestSettingsStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
    }
    void cleanup() { m_home.reset(); }

    void missingKey_yieldsTheFallback()
    {
        QCOMPARE(Read(u"C:\\"_s), u"C:\\"_s);
        QCOMPARE(Read(), QString());
        SaveSetting(SettingsApplication, Section, u"Other"_s, u"x"_s);
        SaveSetting(SettingsApplication, u"StoredData"_s, Key, u"y"_s);
        SaveSetting(u"OtherProgram"_s, Section, Key, u"z"_s);
        QCOMPARE(Read(u"C:\\"_s), u"C:\\"_s);
    }

    void value_comesBack_data()
    {
        QTest::addColumn<QString>("value");
        const QStringList values{{},          u"plain"_s,      u"a|b;c"_s,      u"say \"it's\""_s, u"one\r\ntwo\n\tthree"_s,
                                 u"äöü ß 😀"_s, u"a=b"_s,       u"1,2,3"_s,      u"C:\\new\\x41"_s, u"  blanks  "_s,
                                 u"@Invalid()"_s, u"@@x"_s,     u"%41 %%"_s,     u"# [x] ; y"_s,    u"0012"_s,
                                 u"True"_s,     u"/home/ä b/"_s, u"\"quoted\""_s, u","_s,            QString(100000, u'ß')};
        for (const QString& value : values)
            QTest::addRow("%s", value.left(20).toUtf8().toPercentEncoding().constData()) << value;
    }

    void value_comesBack()
    {
        QFETCH(QString, value);
        Save(value);
        QCOMPARE(Read(u"fallback"_s), value);
        MoveStore(*m_home, u"data"_s);
        QCOMPARE(Read(u"fallback"_s), value);
    }

    void valuesOfOtherKeys_areKept()
    {
        Save(u"one"_s);
        SaveSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s, u"two"_s);
        Save(u"three"_s);
        MoveStore(*m_home, u"data"_s);
        QCOMPARE(Read(), u"three"_s);
        QCOMPARE(GetSetting(SettingsApplication, u"Databases"_s, u"ChosenDatabases"_s), u"two"_s);
    }

    void changeByAnotherProgram_isSeen()
    {
        Save(u"one"_s);
        QCOMPARE(Read(), u"one"_s);
        WriteFile(StoreFile(), "[Settings]\nInitDir=changed elsewhere\n"_ba);
        QCOMPARE(Read(), u"changed elsewhere"_s);
    }

    void faultyLines_arePassedOver()
    {
        WriteFile(StoreFile(), "\xff\xfe nonsense\n[Settings]\nnonsense\nInitDir=old\n"_ba);
        QCOMPARE(Read(), u"old"_s);
        QCOMPARE(GetSetting(SettingsApplication, Section, u"nonsense"_s, u"fallback"_s), u"fallback"_s);
        QB_VERIFY_RAISES(Save(u"new"_s), 0);
        MoveStore(*m_home, u"data"_s);
        QCOMPARE(Read(), u"new"_s);
    }

    void storeThatIsAFolder_raises75AndKeepsNothing()
    {
        QVERIFY(QDir().mkpath(StoreFile() + u"/inside"_s));
        QB_VERIFY_RAISES(Save(u"new"_s), 75);
        QCOMPARE(Read(u"fallback"_s), u"fallback"_s);
        QVERIFY(QFileInfo(StoreFile()).isDir());
        QCOMPARE(QDir(ConfigFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{SettingsApplication + u".ini"_s});
    }

    void failedSave_leavesTheOldValue()
    {
        Save(u"old"_s);
        const QString aside = m_home->Path(u"aside.ini"_s);
        QVERIFY(QFile::rename(StoreFile(), aside));
        QVERIFY(QDir().mkpath(StoreFile() + u"/inside"_s));
        QB_VERIFY_RAISES(Save(u"new"_s), 75);
        QVERIFY(QDir(StoreFile()).removeRecursively());
        QVERIFY(QFile::rename(aside, StoreFile()));
        QCOMPARE(Read(), u"old"_s);
        SaveSetting(SettingsApplication, Section, u"Other"_s, u"x"_s);
        MoveStore(*m_home, u"data"_s);
        QCOMPARE(Read(), u"old"_s);
    }

    void booleanText_isReadInEveryForm_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("value");
        QTest::newRow("True") << u"True"_s << true;
        QTest::newRow("TRUE") << u"TRUE"_s << true;
        QTest::newRow("-1") << u"-1"_s << true;
        QTest::newRow("1") << u"1"_s << true;
        QTest::newRow("False") << u"False"_s << false;
        QTest::newRow("0") << u"0"_s << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("other word") << u"Truely"_s << false;
    }

    void booleanText_isReadInEveryForm()
    {
        QFETCH(QString, text);
        QTEST(BooleanFromText(text), "value");
    }

    void boolean_isWrittenAsAWord()
    {
        QCOMPARE(BooleanText(true), u"True"_s);
        QCOMPARE(BooleanText(false), u"False"_s);
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
};

QB_TEST_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
