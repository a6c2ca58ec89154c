#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SettingsStore.h"
#include "support/FileSizeLimit.h"
#include "support/TestRun.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

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
        const QStringList values{{},
                                 u"plain"_s,
                                 u"a|b;c"_s,
                                 u"say \"it's\""_s,
                                 u"one\r\ntwo\n\tthree"_s,
                                 u"äöü ß 😀"_s,
                                 u"a=b"_s,
                                 u"1,2,3"_s,
                                 u"C:\\new\\x41"_s,
                                 u"  blanks  "_s,
                                 u"@Invalid()"_s,
                                 u"@@x"_s,
                                 u"%41 %%"_s,
                                 u"# [x] ; y"_s,
                                 u"0012"_s,
                                 u"True"_s,
                                 u"/home/ä b/"_s,
                                 u"\"quoted\""_s,
                                 u","_s,
                                 QString(100000, u'ß')};
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

    void valueInTheFormOfOtherWriters_isRead_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("value");
        QTest::newRow("escapes") << "InitDir=a\\x20ac\\tb\\\\"_ba << u"a€\tb\\"_s;
        QTest::newRow("quotes") << "InitDir=\" a;b \" "_ba << u" a;b "_s;
        QTest::newRow("blanks") << "  InitDir = value  "_ba << u"value"_s;
        QTest::newRow("key in other letters") << "INITDIR=value"_ba << u"value"_s;
        QTest::newRow("list") << "InitDir=1,2"_ba << u"1,2"_s;
        QTest::newRow("other value") << "InitDir=@Invalid()"_ba << QString();
        QTest::newRow("twice") << "InitDir=one\nInitDir=two"_ba << u"two"_s;
        QTest::newRow("remark") << "; InitDir=one\nInitDir=two\n;InitDir=three"_ba << u"two"_s;
    }
    void valueInTheFormOfOtherWriters_isRead()
    {
        QFETCH(QByteArray, line);
        WriteFile(StoreFile(),
                  "[Other]\r\nInitDir=wrong\r\n\r\n[Settings]\r\n" + line + "\r\n[Last]\nInitDir=wrong"_ba);
        QTEST(Read(u"fallback"_s), "value");
    }

    void otherLines_stayAsTheyStand()
    {
        WriteFile(
            StoreFile(),
            "\xff\xfe nonsense\r\n[Settings]\r\n; a remark\r\nInitDir=old\r\nOther = x\r\n\r\n[Last]\nInitDir=z"_ba);
        SaveSettings(SettingsApplication,
                     {{Section, Key, u"new"_s}, {Section, u"More"_s, u"a,b"_s}, {u"Last"_s, u"More"_s, u"y"_s}});
        QCOMPARE(ReadFile(StoreFile()),
                 "\xff\xfe nonsense\r\n[Settings]\r\n; a remark\r\nInitDir=new\nOther = x\r\nMore=\"a,b\"\n\r\n[Last]"
                 "\nInitDir=z\nMore=y\n"_ba);
    }

    void valueThatIsAsItWasRead_leavesWhatOthersWrote()
    {
        Save(u"theirs"_s);
        SaveSettings(SettingsApplication,
                     {{Section, Key, u"read"_s, u"read"_s}, {Section, u"Missing"_s, u"read"_s, u"read"_s}});
        QCOMPARE(Read(), u"theirs"_s);
        QCOMPARE(GetSetting(SettingsApplication, Section, u"Missing"_s), u"read"_s);
    }

    /// A full disk must not cost the settings that are there.
    void saveOnAFullDisk_leavesTheStoreAsItWas()
    {
        Save(QString(5000, u'x'));
        const QByteArray before = ReadFile(StoreFile());
        {
            const FileSizeLimit limit(1000);
            QB_VERIFY_RAISES(Save(u"new"_s + QString(6000, u'y')), 75);
        }
        QCOMPARE(ReadFile(StoreFile()), before);
        QCOMPARE(QDir(ConfigFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{SettingsApplication + u".ini"_s});
    }

    void storeThatCanNotBeRead_isNotReplaced()
    {
        QVERIFY(QFile::link(u"/proc/self/mem"_s, StoreFile()));
        QB_VERIFY_RAISES(Save(u"new"_s), 75);
        QVERIFY(QFileInfo(StoreFile()).isSymLink());
    }

    void allSettings_areWrittenInOneStep()
    {
        Save(u"old"_s);
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        QVERIFY(::inotify_add_watch(watch, QFile::encodeName(ConfigFolder()).constData(), IN_MOVED_TO) >= 0);
        std::vector<StoredSetting> all;
        for (int i = 0; i < 30; ++i)
            all.push_back({Section, QString::number(i), u"x"_s});
        SaveSettings(SettingsApplication, all);
        SaveSettings(SettingsApplication, all); // nothing changes
        char events[8192];
        qsizetype moves = 0;
        const ssize_t size = ::read(watch, events, sizeof events);
        for (ssize_t at = 0; at < size; ++moves) {
            inotify_event event{};
            memcpy(&event, events + at, sizeof event);
            at += ssize_t(sizeof event + event.len);
        }
        ::close(watch);
        QCOMPARE(moves, 1);
    }

    /// Each of many programs at a time sets a key of its own.
    void programsThatSaveAtOnce_loseNothing()
    {
        constexpr int Count = 12;
        std::vector<std::unique_ptr<QProcess>> all;
        const QStringList names{u"SaveFormLayout"_s, u"ShowStatusBar"_s, u"DBBackupAutomatic"_s, u"ExpandBranches"_s};
        for (int i = 0; i < Count; ++i) {
            all.push_back(std::make_unique<QProcess>());
            all.back()->start(qEnvironmentVariable("QUILLBASE_CLI"), {u"settings"_s, u"set"_s, names[i % names.size()],
                                                                      i < Count / 2 ? u"False"_s : u"True"_s});
            if (i == Count / 2 - 1 || i == Count - 1) {
                for (const auto& process : all)
                    QVERIFY(process->waitForFinished() && process->exitCode() == 0);
                for (const QString& name : names) {
                    QProcess get;
                    get.start(qEnvironmentVariable("QUILLBASE_CLI"), {u"settings"_s, u"get"_s, name});
                    get.waitForFinished();
                    QCOMPARE(get.readAllStandardOutput(), i < Count / 2 ? "False\n"_ba : "True\n"_ba);
                }
                all.clear();
            }
        }
    }

    void lockOfADeadProgram_holdsNobodyUp()
    {
        WriteFile(StoreFile() + u".lock"_s, "999999\nquillbase-cli\nhere\n"_ba);
        QElapsedTimer timer;
        timer.start();
        Save(u"new"_s);
        QVERIFY(timer.elapsed() < 5000);
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
