#include "support/FileSizeLimit.h"
#include "support/RegistryAccess.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <algorithm>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(qb::Value)

/// The registry: its values, sections and file.
class TestCRegistry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_registry = std::make_unique<RegistryHome>();
    }
    void cleanup() { m_registry.reset(); }

    void fullDisk_keepsTheStore()
    {
        Let(u"a"_s, u"v"_s, u"old"_s);
        {
            const FileSizeLimit full(1000); // enough for the lock
            QB_VERIFY_RAISES(Let(u"a"_s, u"v"_s, QString(2000, u'n')), 75);
        }
        QCOMPARE(Text(u"a"_s, u"v"_s), u"old"_s);
    }

    // Properties

    void properties_ofANewObject()
    {
        const cRegistry registry;
        QCOMPARE(registry.ValueType(), RegistryType::String);
        QCOMPARE(registry.ClassKey(), RegistryHive::CurrentUser);
        QCOMPARE(registry.SectionKey(), QString());
        QCOMPARE(registry.ValueKey(), QString());
        QVERIFY(registry.Default().IsNull());
        QVERIFY(registry.Value().IsNull());
        QVERIFY(!QFileInfo::exists(StoreFile()));
    }

    void properties_keepWhatTheyAreGiven()
    {
        cRegistry registry;
        registry.SetValueType(RegistryType::Binary);
        registry.SetClassKey(RegistryHive::Users);
        registry.SetSectionKey(u"\\a\\\\b\\"_s);
        registry.SetValueKey(u"v"_s);
        registry.SetDefault(7);
        QCOMPARE(registry.ValueType(), RegistryType::Binary);
        QCOMPARE(registry.ClassKey(), RegistryHive::Users);
        QCOMPARE(registry.SectionKey(), u"\\a\\\\b\\"_s);
        QCOMPARE(registry.ValueKey(), u"v"_s);
        QCOMPARE(registry.Default(), Value(7));
    }

    // Values

    void value_thatIsMissing_givesTheDefault()
    {
        Let(Section, u"other"_s, u"text"_s);
        for (const QString& section : {Section, Section + u"\\below"_s, u"Software"_s, QString()}) {
            cRegistry registry = At(section, u"missing"_s);
            QVERIFY(registry.Value().IsNull());
            for (const Value& fallback : {Value(u"fallback"_s), Value(12), Value("\0\1"_ba)}) {
                registry.SetDefault(fallback);
                QCOMPARE(registry.Value(), fallback);
            }
        }
        QVERIFY(!Exists(Section + u"\\below"_s));
    }

    void value_thatIsThere_isNotTheDefault()
    {
        Let(Section, u"v"_s, QString());
        cRegistry registry = At(Section, u"v"_s);
        registry.SetDefault(u"fallback"_s);
        QCOMPARE(registry.Value(), Value(QString()));
    }

    void value_comesBackWithItsType_data()
    {
        QTest::addColumn<Value>("value");
        QTest::addColumn<RegistryType>("type");
        const QStringList texts{QString(),
                                u"text"_s,
                                u"0012"_s,
                                u"12"_s,
                                u"  blanks  "_s,
                                u"a\r\nb\tc"_s,
                                Hostile,
                                u"C:\\new\\x41"_s,
                                u"{\"base64\": \"\"}"_s,
                                QString(QChar(0)) + QChar(0x1f),
                                QString(QChar(0xd800)) + u'x',
                                QString(100000, u'ß')};
        for (const QString& text : texts)
            QTest::addRow("text %s", text.left(20).toUtf8().toPercentEncoding().constData())
                << Value(text) << RegistryType::String;
        for (const qint64 number :
             {qint64(0), qint64(-1), std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()})
            QTest::addRow("number %lld", static_cast<long long>(number)) << Value(number) << RegistryType::Number;
        for (const QByteArray& bytes : {QByteArray(""), "\0\xff\xfe"_ba, "text"_ba, QByteArray(100000, '\x80')})
            QTest::addRow("bytes %s", bytes.left(5).toHex().constData()) << Value(bytes) << RegistryType::Binary;
    }

    void value_comesBackWithItsType()
    {
        QFETCH(Value, value);
        QFETCH(RegistryType, type);
        Let(Section, u"v"_s, value, type);
        Let(Section, u"w"_s, u"another"_s); // the file is read and written once more
        QCOMPARE(At(Section, u"v"_s).Value(), value);
    }

    void value_isWrittenAsItsType_data()
    {
        QTest::addColumn<Value>("value");
        QTest::addColumn<RegistryType>("type");
        QTest::addColumn<Value>("stored");
        QTest::newRow("number as text") << Value(12) << RegistryType::String << Value(u"12"_s);
        QTest::newRow("Null as text") << Value() << RegistryType::String << Value(QString());
        QTest::newRow("bytes as text") << Value("\xc3\xa4"_ba) << RegistryType::String << Value(u"ä"_s);
        QTest::newRow("text as number") << Value(u"-12"_s) << RegistryType::Number << Value(-12);
        QTest::newRow("whole double as number") << Value(3.0) << RegistryType::Number << Value(3);
        QTest::newRow("Boolean as number") << Value(true) << RegistryType::Number << Value(-1);
        QTest::newRow("text as bytes") << Value(u"ä"_s) << RegistryType::Binary << Value("\xc3\xa4"_ba);
        QTest::newRow("number as bytes") << Value(12) << RegistryType::Binary << Value("12"_ba);
    }

    void value_isWrittenAsItsType()
    {
        QFETCH(Value, value);
        QFETCH(RegistryType, type);
        Let(Section, u"v"_s, value, type);
        QTEST(At(Section, u"v"_s).Value(), "stored");
    }

    void value_thatIsNoNumber_isNotWrittenAsOne()
    {
        Let(Section, u"v"_s, 5, RegistryType::Number);
        const QByteArray before = StoreBytes();
        for (const Value& value :
             {Value(u"five"_s), Value(), Value(1.5), Value(1e30), Value(u"99999999999999999999"_s), Value("x"_ba)}) {
            QCOMPARE(ErrorOf([&] { Let(Section, u"v"_s, value, RegistryType::Number); }),
                     StoreError + u"Failed to set registry value Key: 'HKEY_CURRENT_USER',Section: '"_s + Section
                         + u"',Key: 'v' to value: '"_s + value.ToText() + u'\'');
            QCOMPARE(StoreBytes(), before);
        }
        QCOMPARE(At(Section, u"v"_s).Value(), Value(5));
    }

    void value_isReplaced_withItsType()
    {
        Let(Section, u"v"_s, u"text"_s);
        Let(Section, u"v"_s, 3, RegistryType::Number);
        QCOMPARE(At(Section, u"v"_s).Value(), Value(3));
        QCOMPARE(ValuesOf(Section), QStringList{u"v"_s});
    }

    void value_let_makesTheSection()
    {
        Let(u"a\\b\\c"_s, u"v"_s, u"text"_s);
        QVERIFY(Exists(u"a"_s));
        QVERIFY(Exists(u"a\\b"_s));
        QCOMPARE(Text(u"a\\b\\c"_s, u"v"_s), u"text"_s);
    }

    void value_let_keepsTheOthers()
    {
        Let(Section, u"v"_s, u"one"_s);
        Let(Section, u"w"_s, 2, RegistryType::Number);
        Let(Section + u"\\below"_s, u"v"_s, u"three"_s);
        Let(Section, u"v"_s, u"four"_s);
        QCOMPARE(Text(Section, u"v"_s), u"four"_s);
        QCOMPARE(At(Section, u"w"_s).Value(), Value(2));
        QCOMPARE(Text(Section + u"\\below"_s, u"v"_s), u"three"_s);
    }

    void value_withoutAName_isTheSectionsOwn()
    {
        Let(Section, QString(), u"own"_s);
        Let(Section, u"v"_s, u"named"_s);
        QCOMPARE(Text(Section), u"own"_s);
        QCOMPARE(ValuesOf(Section), QStringList({QString(), u"v"_s}));
    }

    void value_ofTheHiveItself()
    {
        Let(QString(), u"v"_s, u"text"_s);
        QCOMPARE(Text(QString(), u"v"_s), u"text"_s);
        QCOMPARE(ValuesOf(QString()), QStringList{u"v"_s});
        QCOMPARE(SectionsOf(QString()), QStringList());
    }

    void value_ofAnotherProcess_isSeen()
    {
        cRegistry registry = At(u"a\\B"_s, u"V"_s);
        QVERIFY(registry.Value().IsNull());
        WriteFile(StoreFile(), "{\"HKEY_CURRENT_USER\": {\"A\\\\b\": {\"v\": \"written elsewhere\"}}}");
        QCOMPARE(registry.Value(), Value(u"written elsewhere"_s));
        QCOMPARE(SectionsOf(QString()), QStringList{u"A"_s});
    }

    void values_ofTwoThreads_areAllWritten()
    {
        constexpr int Count = 8;
        const auto writing = [](const QString& section) {
            return std::unique_ptr<QThread>(QThread::create([section] {
                for (int i = 0; i < Count; ++i)
                    Let(section, QString::number(i), i, RegistryType::Number);
            }));
        };
        const auto one = writing(u"one"_s);
        const auto two = writing(u"two"_s);
        one->start();
        two->start();
        QVERIFY(one->wait() && two->wait());
        QCOMPARE(ValuesOf(u"one"_s).size(), Count);
        QCOMPARE(ValuesOf(u"two"_s).size(), Count);
    }

    // Names

    void names_areFoundInAnyCase_andKeepTheirs()
    {
        Let(u"Software\\Größe"_s, u"Änderung"_s, u"one"_s);
        QCOMPARE(Text(u"SOFTWARE\\GRÖßE"_s, u"änderung"_s), u"one"_s);
        QVERIFY(Exists(u"software"_s));
        Let(u"software\\größe"_s, u"ÄNDERUNG"_s, u"two"_s);
        At(u"SOFTWARE\\größe\\Below"_s).CreateKey();
        QCOMPARE(SectionsOf(QString()), QStringList{u"Software"_s});
        QCOMPARE(SectionsOf(u"SoftWare"_s), QStringList{u"Größe"_s});
        QCOMPARE(SectionsOf(u"software\\größe"_s), QStringList{u"Below"_s});
        QCOMPARE(ValuesOf(u"software\\größe"_s), QStringList{u"Änderung"_s});
        QCOMPARE(Text(u"Software\\Größe"_s, u"Änderung"_s), u"two"_s);
        QVERIFY(At(u"SOFTWARE"_s).DeleteKey());
        QCOMPARE(SectionsOf(QString()), QStringList());
    }

    void names_mayBeAnything_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("hostile") << QString(Hostile).remove(u'\\');
        QTest::newRow("slash") << u"../a/b"_s;
        QTest::newRow("line ends") << u"a\r\n[b]\n"_s;
        QTest::newRow("nul") << u"a"_s + QChar(0) + u"b"_s;
        QTest::newRow("blanks") << u"  "_s;
        QTest::newRow("long") << QString(70000, u'x');
    }

    void names_mayBeAnything()
    {
        QFETCH(QString, name);
        const QString section = u"a\\"_s + name;
        Let(section, name, u"text"_s);
        Let(section + u"\\b"_s, name, u"below"_s);
        QCOMPARE(Text(section, name), u"text"_s);
        QCOMPARE(ValuesOf(section), QStringList{name});
        QCOMPARE(SectionsOf(u"a"_s), QStringList{name});
        QVERIFY(At(section, name).DeleteValue());
        QVERIFY(At(section).DeleteKey());
        QCOMPARE(SectionsOf(u"a"_s), QStringList());
    }

    void sectionsOfManyLevels_areNoTrouble()
    {
        const QString deep = u"x\\"_s.repeated(500) + u"x"_s;
        Let(deep, u"v"_s, u"text"_s);
        QCOMPARE(Text(deep, u"v"_s), u"text"_s);
        QVERIFY(At(u"x\\x"_s).DeleteKey());
        QCOMPARE(SectionsOf(u"x"_s), QStringList());
    }

    void separators_atTheEndsAndRepeated_meanNothing()
    {
        QVERIFY(At(u"\\a\\\\b\\"_s).CreateKey());
        QVERIFY(Exists(u"a\\b"_s));
        QVERIFY(Exists(u"a\\b\\\\"_s));
        QCOMPARE(SectionsOf(u"\\a"_s), QStringList{u"b"_s});
        QVERIFY(Exists(u"\\"_s));
    }

    void hives_areSeparate()
    {
        const RegistryHive hives[] = {RegistryHive::ClassesRoot, RegistryHive::CurrentUser, RegistryHive::LocalMachine,
                                      RegistryHive::Users};
        for (const RegistryHive hive : hives) {
            QVERIFY(!At(u"a"_s, {}, hive).KeyExists());
            At(u"a"_s, u"v"_s, hive).SetValue(int(hive));
        }
        for (const RegistryHive hive : hives)
            QCOMPARE(Text(u"a"_s, u"v"_s, hive), QString::number(int(hive)));
        QVERIFY(At(u"a"_s, {}, RegistryHive::Users).DeleteKey());
        QVERIFY(!At(u"a"_s, {}, RegistryHive::Users).KeyExists());
        QVERIFY(Exists(u"a"_s));
    }

    void hives_areNamedInErrors()
    {
        const QPair<RegistryHive, QString> names[] = {{RegistryHive::ClassesRoot, u"HKEY_CLASSES_ROOT"_s},
                                                      {RegistryHive::CurrentUser, u"HKEY_CURRENT_USER"_s},
                                                      {RegistryHive::LocalMachine, u"HKEY_LOCAL_MACHINE"_s},
                                                      {RegistryHive::Users, u"HKEY_USERS"_s}};
        for (const auto& [hive, name] : names) {
            cRegistry registry = At(u"a"_s, {}, hive);
            QCOMPARE(ErrorOf([&] { registry.DeleteKey(); }),
                     StoreError + u"Failed to delete registry Key: '"_s + name + u"',Section: 'a'"_s);
        }
    }

    // Keys

    void createKey_makesWhatIsMissingAbove()
    {
        QVERIFY(!Exists(u"a"_s));
        QVERIFY(At(u"a\\b\\c"_s).CreateKey());
        QVERIFY(Exists(u"a"_s) && Exists(u"a\\b"_s) && Exists(u"a\\b\\c"_s));
        QVERIFY(!Exists(u"a\\c"_s));
        QVERIFY(!Exists(u"b"_s));
    }

    void createKey_ofOneThatIsThere_keepsIt()
    {
        Let(Section, u"v"_s, u"text"_s);
        At(Section + u"\\below"_s).CreateKey();
        QVERIFY(At(Section).CreateKey());
        QCOMPARE(Text(Section, u"v"_s), u"text"_s);
        QCOMPARE(SectionsOf(Section), QStringList{u"below"_s});
        QVERIFY(At(QString()).CreateKey());
    }

    void keyExists_ofTheHiveItself()
    {
        QVERIFY(Exists(QString()));
        QVERIFY(!QFileInfo::exists(StoreFile()));
    }

    void deleteKey_takesEverythingBelow_andNothingElse()
    {
        const QStringList others{u"s\\a b"_s, u"s\\a-b"_s, u"s\\a!"_s, u"s\\ab"_s,
                                 u"s\\a_"_s,  u"s\\a]"_s,  u"s\\_a"_s, u"a"_s};
        for (const QString& section : others)
            Let(section, u"v"_s, u"kept"_s);
        for (const QString& section : {u"s\\a"_s, u"s\\a\\b"_s, u"s\\A\\b\\c d"_s, u"s\\a\\z"_s})
            Let(section, u"v"_s, u"gone"_s);
        QVERIFY(At(u"S\\A"_s).DeleteKey());
        for (const QString& section : {u"s\\a"_s, u"s\\a\\b"_s, u"s\\a\\b\\c d"_s, u"s\\a\\z"_s})
            QVERIFY(!Exists(section));
        for (const QString& section : others)
            QCOMPARE(Text(section, u"v"_s), u"kept"_s);
        QCOMPARE(SectionsOf(u"s"_s).size(), others.size() - 1);
    }

    void deleteKey_thatIsMissing_fails()
    {
        Let(u"a"_s, u"v"_s, u"text"_s);
        const QByteArray before = StoreBytes();
        for (const QString& section : {u"a\\b"_s, u"%1 %2"_s}) {
            QCOMPARE(ErrorOf([&] { At(section).DeleteKey(); }),
                     StoreError + u"Failed to delete registry Key: 'HKEY_CURRENT_USER',Section: '"_s + section
                         + u"'"_s);
        }
        QCOMPARE(StoreBytes(), before);
    }

    void deleteKey_ofTheHiveItself_fails()
    {
        Let(u"a"_s, u"v"_s, u"text"_s);
        for (const QString& section : {QString(), u"\\"_s}) {
            QCOMPARE(ErrorOf([&] { At(section).DeleteKey(); }),
                     StoreError + u"Failed to delete registry Key: 'HKEY_CURRENT_USER',Section: '"_s + section
                         + u"'"_s);
        }
        QCOMPARE(Text(u"a"_s, u"v"_s), u"text"_s);
    }

    void deleteValue_takesTheValueAlone()
    {
        Let(Section, u"v"_s, u"one"_s);
        Let(Section, u"w"_s, u"two"_s);
        QVERIFY(At(Section, u"V"_s).DeleteValue());
        QCOMPARE(ValuesOf(Section), QStringList{u"w"_s});
        QVERIFY(At(Section, u"w"_s).DeleteValue());
        QVERIFY(Exists(Section));
        QCOMPARE(ValuesOf(Section), QStringList());
    }

    void deleteValue_inAMissingSection_fails()
    {
        QCOMPARE(ErrorOf([] { At(u"a\\b"_s, u"v"_s).DeleteValue(); }),
                 StoreError + u"Failed to open key 'HKEY_CURRENT_USER',Section: 'a\\b' for delete access"_s);
        QVERIFY(!QFileInfo::exists(StoreFile()));
    }

    void deleteValue_thatIsMissing_fails()
    {
        Let(u"a\\b"_s, u"w"_s, u"text"_s);
        const QByteArray before = StoreBytes();
        QCOMPARE(ErrorOf([] { At(u"a\\b"_s, u"v%1"_s).DeleteValue(); }),
                 StoreError + u"Failed to delete registry Key: 'HKEY_CURRENT_USER',Section: 'a\\b',Key: 'v%1'"_s);
        QCOMPARE(StoreBytes(), before);
    }

    // Enumerations

    void enumerations_giveNamesAndCount()
    {
        Let(Section, u"beta"_s, u"1"_s);
        Let(Section, u"Alpha"_s, 2, RegistryType::Number);
        Let(Section, u"gamma"_s, "3"_ba, RegistryType::Binary);
        for (const QString& name : {u"zwei"_s, u"Drei\\vier"_s, u"eins"_s})
            At(Section + u'\\' + name).CreateKey();
        QCOMPARE(ValuesOf(Section), QStringList({u"Alpha"_s, u"beta"_s, u"gamma"_s}));
        QCOMPARE(SectionsOf(Section), QStringList({u"Drei"_s, u"eins"_s, u"zwei"_s}));
        QCOMPARE(ValuesOf(Section + u"\\eins"_s), QStringList());
        QCOMPARE(SectionsOf(Section + u"\\eins"_s), QStringList());
        QCOMPARE(SectionsOf(QString()), QStringList{u"Software"_s});
    }

    void enumerations_ofAMissingSection_areFalse()
    {
        At(u"a\\bc"_s).CreateKey();
        QCOMPARE(ValuesOf(u"a\\b"_s), QStringList{u"(failed)"_s});
        QCOMPARE(SectionsOf(u"a\\b"_s), QStringList{u"(failed)"_s});
    }

    // The file

    void store_isOneFile()
    {
        Let(u"a\\b"_s, u"text"_s, u"x"_s);
        Let(u"a\\b"_s, u"number"_s, 7, RegistryType::Number);
        Let(u"a\\b"_s, u"bytes"_s, "\xff"_ba, RegistryType::Binary);
        const QJsonObject values{
            {u"text"_s, u"x"_s}, {u"number"_s, 7}, {u"bytes"_s, QJsonObject{{u"base64"_s, u"/w=="_s}}}};
        const QJsonObject expected{{u"HKEY_CURRENT_USER"_s, QJsonObject{{u"a"_s, QJsonObject()}, {u"a\\b"_s, values}}}};
        QCOMPARE(QJsonDocument::fromJson(StoreBytes()).object(), expected);
        QCOMPARE(QDir(ConfigFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"Registry.json"_s});
    }

    void change_thatCantBeWritten_raisesItsText_data()
    {
        QTest::addColumn<QByteArray>("bytes"); // of the file; Null: a folder in its place
        QTest::newRow("folder") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("nonsense") << "nonsense"_ba;
        QTest::newRow("cut") << "{\"HKEY_CURRENT_USER\": {\"a\\\\b\": {\"v\": \"te"_ba;
        QTest::newRow("array") << "[]"_ba;
        QTest::newRow("unknown hive") << "{\"HKEY_CURRENT_USER\": {\"a\\\\b\": {\"v\": \"text\"}}, \"HKEY\": {}}"_ba;
        QTest::newRow("hive is no object") << "{\"HKEY_CURRENT_USER\": []}"_ba;
        QTest::newRow("section is no object") << "{\"HKEY_CURRENT_USER\": {\"a\\\\b\": \"text\"}}"_ba;
        const QByteArray values[] = {"1.5",
                                     "99999999999999999999",
                                     "true",
                                     "null",
                                     "[]",
                                     "{}",
                                     "{\"base64\": 1}",
                                     "{\"base64\": \"!\"}",
                                     "{\"base64\": \"\", \"more\": 1}",
                                     "1, \"V\": 2"};
        for (const QByteArray& value : values)
            QTest::addRow("value %s", value.constData())
                << QByteArray("{\"HKEY_CURRENT_USER\": {\"a\\\\b\": {\"v\": " + value + "}}}");
    }

    void change_thatCantBeWritten_raisesItsText()
    {
        QFETCH(QByteArray, bytes);
        if (bytes.isNull())
            QVERIFY(QDir().mkpath(StoreFile() + u"/inside"_s));
        else
            WriteFile(StoreFile(), bytes);
        const QList<Change> changes = AllChanges();
        for (const Change& change : changes) {
            cRegistry registry = At(u"a\\b"_s, u"v"_s);
            QCOMPARE(ErrorOf([&] { change.Run(registry); }), StoreError + change.Error);
            registry.SetDefault(u"fallback"_s);
            QCOMPARE(registry.Value(), Value(u"fallback"_s));
        }
        QVERIFY(!Exists(u"a\\b"_s));
        QVERIFY(!Exists(QString()));
        QCOMPARE(ValuesOf(u"a\\b"_s), QStringList{u"(failed)"_s});
        QCOMPARE(SectionsOf(u"a"_s), QStringList{u"(failed)"_s});
        QCOMPARE(StoreBytes(), bytes);
        QCOMPARE(QDir(ConfigFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"Registry.json"_s});
    }

    void change_inAFolderThatIsNone_raisesItsText()
    {
        const Variable config("QUILLBASE_CONFIG_HOME", m_registry->Home.Path(u"file"_s));
        WriteFile(m_registry->Home.Path(u"file"_s), "a file");
        const QList<Change> changes = AllChanges();
        for (const Change& change : changes) {
            cRegistry registry = At(u"a\\b"_s, u"v"_s);
            QCOMPARE(ErrorOf([&] { change.Run(registry); }), StoreError + change.Error);
        }
    }

    void change_thatFails_keepsTheFile()
    {
        Let(u"a\\b"_s, u"v"_s, u"old"_s);
        const QString aside = m_registry->Home.Path(u"aside.json"_s);
        QVERIFY(QFile::rename(StoreFile(), aside));
        QVERIFY(QDir().mkpath(StoreFile() + u"/inside"_s));
        QB_VERIFY_RAISES(Let(u"a\\b"_s, u"v"_s, u"new"_s), 75);
        QVERIFY(QDir(StoreFile()).removeRecursively());
        QVERIFY(QFile::rename(aside, StoreFile()));
        QCOMPARE(Text(u"a\\b"_s, u"v"_s), u"old"_s);
    }

private:
    std::unique_ptr<RegistryHome> m_registry;
};

QB_TEST_MAIN(TestCRegistry)
#include "tst_cregistry.moc"
