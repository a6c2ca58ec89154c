#include "config/cRegistry.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "support/TestRun.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <QXmlStreamReader>

#include <algorithm>
#include <functional>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(qb::Value)

namespace {

const QString Section = u"Software\\Quill Base"_s;
const QString Classes = u"SOFTWARE\\Classes\\"_s;
const QString FileCode = u"%f"_s;
/// What has a meaning in XML, in a desktop entry, in a shell or in QString::arg.
const QString Hostile = u"ä <b>&amp; \"q\" 'a' `c` $HOME \\n %f %% %1 ; # ]]> = ~ * ? ( ) | > 😀"_s;

/// An environment variable that has another value for as long as the object lives.
class Variable {
public:
    Variable(const char* name, const QString& value) : m_name(name), m_before(qgetenv(name)) { qputenv(name, QFile::encodeName(value)); }
    ~Variable() { m_before.isNull() ? qunsetenv(m_name) : qputenv(m_name, m_before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* m_name;
    QByteArray m_before;
};

QString StoreFile()
{
    return ConfigFolder() + u"Registry.json"_s;
}

QByteArray StoreBytes()
{
    return QFileInfo(StoreFile()).isFile() ? ReadFile(StoreFile()) : QByteArray();
}

cRegistry At(const QString& section, const QString& value = {}, RegistryHive hive = RegistryHive::CurrentUser)
{
    cRegistry registry;
    registry.SetClassKey(hive);
    registry.SetSectionKey(section);
    registry.SetValueKey(value);
    return registry;
}

void Let(const QString& section, const QString& name, const Value& value, RegistryType type = RegistryType::String)
{
    cRegistry registry = At(section, name);
    registry.SetValueType(type);
    registry.SetValue(value);
}

QString Text(const QString& section, const QString& name = {}, RegistryHive hive = RegistryHive::CurrentUser)
{
    cRegistry registry = At(section, name, hive);
    registry.SetDefault(u"(missing)"_s);
    return registry.Value().ToText();
}

bool Exists(const QString& section)
{
    return At(section).KeyExists();
}

/// Names of values or sections; "(failed)" when the operation says false.
QStringList Names(const QString& section, bool (cRegistry::*enumerate)(QStringList&, int&) const)
{
    QStringList names{u"from before"_s};
    int count = 17;
    const bool isDone = (At(section).*enumerate)(names, count);
    return count == names.size() && (isDone || names.isEmpty()) ? (isDone ? names : QStringList{u"(failed)"_s})
                                                                 : QStringList{u"(inconsistent)"_s};
}
QStringList ValuesOf(const QString& section)
{
    return Names(section, &cRegistry::EnumerateValues);
}
QStringList SectionsOf(const QString& section)
{
    return Names(section, &cRegistry::EnumerateSections);
}

/// The error that @p action raises: number, source, text; "(none)" when it raises none.
QString ErrorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const RuntimeError& error) {
        return QString::number(error.Number()) + u' ' + error.Source() + u": "_s + error.Description();
    }
    return u"(none)"_s;
}

const QString StoreError = u"75 KTQuillbase.cRegistry: "_s;
const QString CallError = u"5 KTQuillbase.cRegistry: "_s;

/// An operation that changes the store, on section `a\b` and its value `v`.
struct Change {
    const char* Name;
    std::function<void(cRegistry&)> Run;
    QString Error;
};

QList<Change> AllChanges()
{
    const QString place = u"'HKEY_CURRENT_USER',Section: 'a\\b'"_s;
    return {{"CreateKey", [](cRegistry& registry) { registry.CreateKey(); }, u"Failed to create registry Key: "_s + place},
            {"DeleteKey", [](cRegistry& registry) { registry.DeleteKey(); }, u"Failed to delete registry Key: "_s + place},
            {"DeleteValue", [](cRegistry& registry) { registry.DeleteValue(); },
             u"Failed to open key "_s + place + u" for delete access"_s},
            {"Value", [](cRegistry& registry) { registry.SetValue(u"text"_s); },
             u"Failed to set registry value Key: "_s + place + u",Key: 'v' to value: 'text'"_s}};
}

// Associations

EXEAssociation Usual()
{
    EXEAssociation association;
    association.Program = u"/opt/Quill Base/quill"_s;
    association.ClassName = u"Quill.Note"_s;
    association.Description = u"Quill note"_s;
    association.Extension = u"qnote"_s;
    return association;
}

void Associate(const EXEAssociation& association)
{
    cRegistry().CreateEXEAssociation(association);
}

/// All sections below the classes that have a default, with it.
QMap<QString, QString> ClassTexts(RegistryHive hive = RegistryHive::CurrentUser)
{
    QMap<QString, QString> texts;
    const std::function<void(const QString&)> collect = [&](const QString& section) {
        const cRegistry registry = At(Classes + section, {}, hive);
        if (!registry.Value().IsNull())
            texts.insert(section, registry.Value().ToText());
        QStringList names;
        int count = 0;
        registry.EnumerateSections(names, count);
        for (const QString& name : names)
            collect(section.isEmpty() ? name : section + u'\\' + name);
    };
    collect({});
    return texts;
}

QString DataPath(const QString& name)
{
    return qEnvironmentVariable("XDG_DATA_HOME") + u'/' + name;
}
QString PackagePath(const QString& className)
{
    return DataPath(u"mime/packages/"_s + className + u".xml"_s);
}
QString EntryPath(const QString& className)
{
    return DataPath(u"applications/"_s + className + u".desktop"_s);
}

/// The files of the data folder with their bytes.
QMap<QString, QByteArray> DataFiles()
{
    QMap<QString, QByteArray> files;
    const std::function<void(const QString&)> collect = [&](const QString& folder) {
        const auto entries = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            if (entry.isDir())
                collect(entry.filePath());
            else
                files.insert(entry.filePath(), ReadFile(entry.filePath()));
        }
    };
    collect(DataPath({}));
    return files;
}

/// The values of a desktop entry as they stand there, by "group/key".
QMap<QString, QString> EntryOf(const QString& className)
{
    QMap<QString, QString> values;
    QString group;
    const QStringList lines = QString::fromUtf8(ReadFile(EntryPath(className))).split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const QString key = line.section(u'=', 0, 0);
        if (line.startsWith(u'['))
            group = line.mid(1).chopped(1);
        else if (line.contains(u'=') && !values.contains(group + u'/' + key))
            values.insert(group + u'/' + key, line.section(u'=', 1));
        else
            values.insert(u"(faulty)"_s, line);
    }
    return values;
}

QChar CharacterAt(const QString& text, qsizetype index)
{
    return index < text.size() ? text[index] : QChar(QChar::ReplacementCharacter);
}

/// A value without its escapes, as a desktop reads it.
QString Unescaped(const QString& value)
{
    const QMap<QChar, QChar> escapes{{u'n', u'\n'}, {u't', u'\t'}, {u'r', u'\r'}, {u's', u' '}, {u'\\', u'\\'}};
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i)
        text += value[i] == u'\\' ? escapes.value(CharacterAt(value, ++i), QChar::ReplacementCharacter) : value[i];
    return text;
}

/// The words of an Exec line, as a desktop reads them. A field code in quotes becomes "(code)".
QStringList WordsOf(const QString& value)
{
    const QString line = Unescaped(value);
    QStringList words;
    for (qsizetype i = 0; i < line.size(); ++i) {
        QString word;
        const bool isQuoted = line[i] == u'"';
        for (i += isQuoted ? 1 : 0; i < line.size() && line[i] != (isQuoted ? u'"' : u' '); ++i) {
            if (isQuoted && line[i] == u'\\')
                word += CharacterAt(line, ++i);
            else if (line[i] == u'%')
                word += CharacterAt(line, ++i) == u'%' ? u"%"_s : isQuoted ? u"(code)"_s : u'%' + line[i];
            else
                word += line[i];
        }
        i += isQuoted ? 1 : 0;
        words << word;
    }
    return words;
}

/// What a validator prints, with its exit status unless that is 0; empty too when it is not there.
QByteArray Complaint(const QString& program, const QStringList& arguments)
{
    const QString path = QStandardPaths::findExecutable(program, {u"/usr/bin"_s, u"/usr/local/bin"_s});
    if (path.isEmpty())
        return {};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(path, arguments);
    if (!process.waitForFinished())
        return "does not end";
    return process.readAll() + (process.exitCode() == 0 ? QByteArray() : QByteArray::number(process.exitCode()));
}

/// What is wrong with the files of a class.
QByteArray ComplaintsOf(const QString& className)
{
    return Complaint(u"xmllint"_s, {u"--noout"_s, PackagePath(className)}) + Complaint(u"desktop-file-validate"_s, {EntryPath(className)});
}

} // namespace

class TestCRegistry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_dataHome = std::make_unique<Variable>("XDG_DATA_HOME", m_home->Path(u"shared data"_s));
        m_path = std::make_unique<Variable>("PATH", m_home->Path(u"programs"_s)); // none
    }
    void cleanup()
    {
        m_path.reset();
        m_dataHome.reset();
        m_home.reset();
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
        const QStringList texts{QString(), u"text"_s, u"0012"_s, u"12"_s, u"  blanks  "_s, u"a\r\nb\tc"_s, Hostile, u"C:\\new\\x41"_s,
                                u"{\"base64\": \"\"}"_s, QString(QChar(0)) + QChar(0x1f), QString(QChar(0xd800)) + u'x',
                                QString(100000, u'ß')};
        for (const QString& text : texts)
            QTest::addRow("text %s", text.left(20).toUtf8().toPercentEncoding().constData()) << Value(text) << RegistryType::String;
        for (const qint64 number : {qint64(0), qint64(-1), std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()})
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
        for (const Value& value : {Value(u"five"_s), Value(), Value(1.5), Value(1e30), Value(u"99999999999999999999"_s), Value("x"_ba)}) {
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
        const QStringList others{u"s\\a b"_s, u"s\\a-b"_s, u"s\\a!"_s, u"s\\ab"_s, u"s\\a_"_s, u"s\\a]"_s, u"s\\_a"_s, u"a"_s};
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
                     StoreError + u"Failed to delete registry Key: 'HKEY_CURRENT_USER',Section: '"_s + section + u"'"_s);
        }
        QCOMPARE(StoreBytes(), before);
    }

    void deleteKey_ofTheHiveItself_fails()
    {
        Let(u"a"_s, u"v"_s, u"text"_s);
        for (const QString& section : {QString(), u"\\"_s}) {
            QCOMPARE(ErrorOf([&] { At(section).DeleteKey(); }),
                     StoreError + u"Failed to delete registry Key: 'HKEY_CURRENT_USER',Section: '"_s + section + u"'"_s);
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
        const QJsonObject values{{u"text"_s, u"x"_s}, {u"number"_s, 7}, {u"bytes"_s, QJsonObject{{u"base64"_s, u"/w=="_s}}}};
        const QJsonObject expected{{u"HKEY_CURRENT_USER"_s, QJsonObject{{u"a"_s, QJsonObject()}, {u"a\\b"_s, values}}}};
        QCOMPARE(QJsonDocument::fromJson(StoreBytes()).object(), expected);
        QCOMPARE(QDir(ConfigFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{u"Registry.json"_s});
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
        const QByteArray values[] = {"1.5", "99999999999999999999", "true", "null", "[]", "{}", "{\"base64\": 1}", "{\"base64\": \"!\"}",
                                     "{\"base64\": \"\", \"more\": 1}", "1, \"V\": 2"};
        for (const QByteArray& value : values)
            QTest::addRow("value %s", value.constData()) << QByteArray("{\"HKEY_CURRENT_USER\": {\"a\\\\b\": {\"v\": " + value + "}}}");
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
        QCOMPARE(QDir(ConfigFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList{u"Registry.json"_s});
    }

    void change_inAFolderThatIsNone_raisesItsText()
    {
        const Variable config("QUILLBASE_CONFIG_HOME", m_home->Path(u"file"_s));
        WriteFile(m_home->Path(u"file"_s), "a file");
        const QList<Change> changes = AllChanges();
        for (const Change& change : changes) {
            cRegistry registry = At(u"a\\b"_s, u"v"_s);
            QCOMPARE(ErrorOf([&] { change.Run(registry); }), StoreError + change.Error);
        }
    }

    void change_thatFails_keepsTheFile()
    {
        Let(u"a\\b"_s, u"v"_s, u"old"_s);
        const QString aside = m_home->Path(u"aside.json"_s);
        QVERIFY(QFile::rename(StoreFile(), aside));
        QVERIFY(QDir().mkpath(StoreFile() + u"/inside"_s));
        QB_VERIFY_RAISES(Let(u"a\\b"_s, u"v"_s, u"new"_s), 75);
        QVERIFY(QDir(StoreFile()).removeRecursively());
        QVERIFY(QFile::rename(aside, StoreFile()));
        QCOMPARE(Text(u"a\\b"_s, u"v"_s), u"old"_s);
    }

    // CreateEXEAssociation: the keys

    void association_writesItsKeys()
    {
        Associate(Usual());
        const QMap<QString, QString> expected{{u".qnote"_s, u"Quill.Note"_s},
                                              {u"Quill.Note"_s, u"Quill note"_s},
                                              {u"Quill.Note\\shell\\open"_s, u"&Open"_s},
                                              {u"Quill.Note\\shell\\open\\command"_s, u"\"/opt/Quill Base/quill\" \"%1\""_s},
                                              {u"Quill.Note\\DefaultIcon"_s, u"/opt/Quill Base/quill,0"_s}};
        QCOMPARE(ClassTexts(), expected);
    }

    void association_writesWhatIsAskedFor()
    {
        EXEAssociation association = Usual();
        association.Print = association.New = association.Install = true;
        association.IconFile = u"/opt/icons.ico"_s;
        association.IconIndex = 3;
        Associate(association);
        const QMap<QString, QString> expected{{u".qnote"_s, u"Quill.Note"_s},
                                              {u"Quill.Note"_s, u"Quill note"_s},
                                              {u"Quill.Note\\shell\\open"_s, u"&Open"_s},
                                              {u"Quill.Note\\shell\\open\\command"_s, u"\"/opt/Quill Base/quill\" \"%1\""_s},
                                              {u"Quill.Note\\shell\\print"_s, u"&Print"_s},
                                              {u"Quill.Note\\shell\\print\\command"_s, u"/opt/Quill Base/quill /p \"%1\""_s},
                                              {u"Quill.Note\\shell\\new"_s, u"&New"_s},
                                              {u"Quill.Note\\shell\\new\\command"_s, u"/opt/Quill Base/quill /n \"%1\""_s},
                                              {u"Quill.Note\\shell\\add"_s, u"&Install Quill note"_s},
                                              {u"Quill.Note\\shell\\add\\command"_s, u"/opt/Quill Base/quill /a \"%1\""_s},
                                              {u"Quill.Note\\DefaultIcon"_s, u"/opt/icons.ico,3"_s}};
        QCOMPARE(ClassTexts(), expected);
    }

    void association_takesEachFlagByItself_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("print");
        QTest::addColumn<bool>("isNew");
        QTest::addColumn<bool>("install");
        QTest::newRow("print") << u"print"_s << true << false << false;
        QTest::newRow("new") << u"new"_s << false << true << false;
        QTest::newRow("install") << u"add"_s << false << false << true;
    }

    void association_takesEachFlagByItself()
    {
        QFETCH(QString, name);
        QFETCH(bool, print);
        QFETCH(bool, isNew);
        QFETCH(bool, install);
        EXEAssociation association = Usual();
        association.Print = print;
        association.New = isNew;
        association.Install = install;
        Associate(association);
        QStringList sections{u"open"_s, name};
        sections.sort();
        QCOMPARE(SectionsOf(Classes + u"Quill.Note\\shell"_s), sections);
        QCOMPARE(EntryOf(u"Quill.Note"_s).value(u"Desktop Entry/Actions"_s), name + u';');
    }

    void association_takesCaptions()
    {
        EXEAssociation association = Usual();
        association.Print = association.New = association.Install = true;
        association.OpenCaption = u"Ö&ffnen"_s;
        association.PrintCaption = u"&Drucken"_s;
        association.NewCaption = u"&Neu"_s;
        association.InstallCaption = u"&Hinzufügen"_s;
        Associate(association);
        const QMap<QString, QString> texts = ClassTexts();
        QCOMPARE(texts[u"Quill.Note\\shell\\open"_s], u"Ö&ffnen"_s);
        QCOMPARE(texts[u"Quill.Note\\shell\\print"_s], u"&Drucken"_s);
        QCOMPARE(texts[u"Quill.Note\\shell\\new"_s], u"&Neu"_s);
        QCOMPARE(texts[u"Quill.Note\\shell\\add"_s], u"&Hinzufügen"_s);
    }

    void association_goesToTheChosenHive()
    {
        cRegistry registry = At(u"elsewhere"_s, u"v"_s, RegistryHive::LocalMachine);
        registry.SetValueType(RegistryType::Number);
        registry.CreateEXEAssociation(Usual());
        QCOMPARE(ClassTexts(), (QMap<QString, QString>()));
        QCOMPARE(ClassTexts(RegistryHive::LocalMachine).size(), 5);
        QCOMPARE(registry.SectionKey(), u"elsewhere"_s);
        QCOMPARE(registry.ValueKey(), u"v"_s);
        QCOMPARE(registry.ValueType(), RegistryType::Number);
        QVERIFY(!registry.KeyExists());
    }

    void association_madeAgain_replacesItsTexts()
    {
        Associate(Usual());
        Let(Classes + u"Quill.Note"_s, u"other"_s, u"kept"_s);
        EXEAssociation association = Usual();
        association.Description = u"Another note"_s;
        Associate(association);
        QCOMPARE(Text(Classes + u"Quill.Note"_s), u"Another note"_s);
        QCOMPARE(Text(Classes + u"Quill.Note"_s, u"other"_s), u"kept"_s);
        QVERIFY(ReadFile(PackagePath(u"Quill.Note"_s)).contains("Another note"));
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Entry/Name"_s], u"Another note"_s);
    }

    // CreateEXEAssociation: the desktop

    void association_describesTheType()
    {
        Associate(Usual());
        QCOMPARE(ReadFile(PackagePath(u"Quill.Note"_s)), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                          "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
                                                          "  <mime-type type=\"application/x-quill.note\">\n"
                                                          "    <comment>Quill note</comment>\n"
                                                          "    <glob pattern=\"*.qnote\"/>\n"
                                                          "  </mime-type>\n"
                                                          "</mime-info>\n"_ba);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void association_describesTheProgram()
    {
        EXEAssociation association = Usual();
        association.Print = association.New = association.Install = true;
        association.IconFile = u"/opt/quill.svg"_s;
        Associate(association);
        QCOMPARE(ReadFile(EntryPath(u"Quill.Note"_s)), "[Desktop Entry]\n"
                                                        "Type=Application\n"
                                                        "Terminal=false\n"
                                                        "Name=Quill note\n"
                                                        "Exec=\"/opt/Quill Base/quill\" %f\n"
                                                        "Icon=/opt/quill.svg\n"
                                                        "MimeType=application/x-quill.note;\n"
                                                        "Actions=print;new;add;\n"
                                                        "\n"
                                                        "[Desktop Action print]\n"
                                                        "Name=Print\n"
                                                        "Exec=\"/opt/Quill Base/quill\" /p %f\n"
                                                        "\n"
                                                        "[Desktop Action new]\n"
                                                        "Name=New\n"
                                                        "Exec=\"/opt/Quill Base/quill\" /n %f\n"
                                                        "\n"
                                                        "[Desktop Action add]\n"
                                                        "Name=Install Quill note\n"
                                                        "Exec=\"/opt/Quill Base/quill\" /a %f\n"_ba);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void association_withoutActions_namesNone()
    {
        Associate(Usual());
        QVERIFY(!EntryOf(u"Quill.Note"_s).contains(u"Desktop Entry/Actions"_s));
    }

    void association_icon_isAFileOfThisSystem()
    {
        for (const QString& icon : {QString(), u"quill"_s, u"icons/quill.svg"_s, u"C:\\icons\\quill.ico"_s}) {
            EXEAssociation association = Usual();
            association.IconFile = icon;
            Associate(association);
            QVERIFY(!EntryOf(u"Quill.Note"_s).contains(u"Desktop Entry/Icon"_s));
            QCOMPARE(Text(Classes + u"Quill.Note\\DefaultIcon"_s), (icon.isEmpty() ? association.Program : icon) + u",0"_s);
        }
    }

    void association_holdsAnyText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::newRow("hostile") << Hostile << Hostile;
        QTest::newRow("line ends") << u" a\r\n\tb\\"_s << u" a\r\n\tb\\"_s;
        QTest::newRow("entry in it") << u"a\n[Desktop Action x]\nExec=rm"_s << u"a\n[Desktop Action x]\nExec=rm"_s;
        QTest::newRow("element in it") << u"</comment><x a='\""_s << u"</comment><x a='\""_s;
        QTest::newRow("control characters") << u"a\u0001b\u0085c\u007f"_s << u"a\ufffdb\ufffdc\ufffd"_s;
        QTest::newRow("nul") << u"a"_s + QChar(0) + u"b"_s << u"a\ufffdb"_s;
        QTest::newRow("no characters") << u"a"_s + QChar(0xd800) + u"b"_s + QChar(0xffff) << u"a?b\ufffd"_s;
        QTest::newRow("empty") << QString() << u"Quill.Note"_s;
    }

    void association_holdsAnyText()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        EXEAssociation association = Usual();
        association.Description = text;
        association.Print = true;
        association.PrintCaption = u'&' + text;
        association.IconFile = u'/' + (text.isEmpty() ? u"icon"_s : text);
        Associate(association);
        QCOMPARE(Text(Classes + u"Quill.Note"_s), text);
        QString comment = TextsOf(u"Quill.Note"_s).value(0);
        QString inXml = shown;
        QCOMPARE(comment.remove(u'\r'), inXml.remove(u'\r')); // readers of XML drop it
        const QMap<QString, QString> entry = EntryOf(u"Quill.Note"_s);
        QCOMPARE(Unescaped(entry[u"Desktop Entry/Name"_s]), shown);
        QCOMPARE(Unescaped(entry[u"Desktop Action print/Name"_s]), text.isEmpty() ? u"print"_s : shown);
        QCOMPARE(Unescaped(entry[u"Desktop Entry/Icon"_s]), u'/' + (text.isEmpty() ? u"icon"_s : shown));
        QVERIFY(!entry.contains(u"(faulty)"_s));
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void association_captions_loseTheirAccessKey()
    {
        EXEAssociation association = Usual();
        association.Description = u"R&D"_s;
        association.Install = association.Print = true;
        association.PrintCaption = u"Save && &Print"_s;
        Associate(association);
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Action add/Name"_s], u"Install R&D"_s);
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Action print/Name"_s], u"Save & &Print"_s);
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Entry/Name"_s], u"R&D"_s);
    }

    void association_startsAnyProgram_data()
    {
        QTest::addColumn<QString>("program");
        const QStringList programs{u"quill"_s,   u"/usr/bin/quill"_s, u"/opt/a b/quill"_s,   u"C:\\Program Files\\Quill\\q.exe"_s,
                                   u"/o/\"q\""_s, u"/o/$(HOME)`x`"_s,  u"/o/it's;&|<>*?#~()"_s, u"/ö/ß😀"_s, u"/o/\\"_s,
                                   u"/o/a\nb\tc\rd"_s};
        for (const QString& program : programs)
            QTest::addRow("%s", program.toUtf8().toPercentEncoding().constData()) << program;
    }

    void association_startsAnyProgram()
    {
        QFETCH(QString, program);
        EXEAssociation association = Usual();
        association.Program = program;
        association.Print = true;
        Associate(association);
        const QMap<QString, QString> entry = EntryOf(u"Quill.Note"_s);
        QCOMPARE(WordsOf(entry[u"Desktop Entry/Exec"_s]), QStringList({program, FileCode}));
        QCOMPARE(WordsOf(entry[u"Desktop Action print/Exec"_s]), QStringList({program, u"/p"_s, FileCode}));
        QCOMPARE(Text(Classes + u"Quill.Note\\shell\\open\\command"_s), u'"' + program + u"\" \"%1\""_s);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void association_runsItsProgram_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << u"quill"_s;
        QTest::newRow("hostile") << u"it's \"a\" $x `b` %f \\n ;&ä"_s;
        QTest::newRow("percent sign") << u"100%1 %% %f%"_s;
        QTest::newRow("equals sign") << u"a=b \"c\" 'd' $e"_s;
    }

    /// As the desktop does it, where its launcher is there.
    void association_runsItsProgram()
    {
        QFETCH(QString, name);
        const QString program = m_home->Path(name);
        const QString trace = m_home->Path(u"trace"_s);
        MakeProgram(program, "printf '%s\\n' \"$@\" > '" + QFile::encodeName(trace) + ".new'\nmv '" + QFile::encodeName(trace)
                                  + ".new' '" + QFile::encodeName(trace) + "'\n");
        EXEAssociation association = Usual();
        association.Program = program;
        Associate(association);
        const QString file = m_home->Path(u"data/it's a \"$file\" %f.qnote"_s);
        WriteFile(file, "x");
        m_path.reset();
        if (QStandardPaths::findExecutable(u"gio"_s).isEmpty())
            return;
        QCOMPARE(Complaint(u"gio"_s, {u"launch"_s, EntryPath(u"Quill.Note"_s), file}), QByteArray());
        QTRY_VERIFY(QFileInfo::exists(trace));
        QCOMPARE(QFile::decodeName(ReadFile(trace)), file + u'\n');
    }

    void association_namesItsType_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("type");
        QTest::newRow("usual") << u"Quill.Note"_s << u"application/x-quill.note"_s;
        QTest::newRow("signs") << u"C++_1-a.B"_s << u"application/x-c++_1-a.b"_s;
        QTest::newRow("blank") << u"My Class"_s << u"application/x-my$20class"_s;
        QTest::newRow("hostile") << u"a\"'<&>%:$=~"_s << u"application/x-a$22$27$3c$26$3e$25$3a$24$3d$7e"_s;
        QTest::newRow("letters") << u"ÄÖ"_s << u"application/x-$c3$a4$c3$b6"_s;
        QTest::newRow("hidden") << u"..a"_s << u"application/x-..a"_s;
        QTest::newRow("long") << QString(200, u'N') << u"application/x-"_s + QString(200, u'n');
    }

    void association_namesItsType()
    {
        QFETCH(QString, className);
        QFETCH(QString, type);
        EXEAssociation association = Usual();
        association.ClassName = className;
        Associate(association);
        QCOMPARE(TextsOf(className).value(1), type);
        QCOMPARE(EntryOf(className)[u"Desktop Entry/MimeType"_s], type + u';');
        QCOMPARE(Text(Classes + u".qnote"_s), className);
        QCOMPARE(ComplaintsOf(className), QByteArray());
    }

    void association_patternIsTheExtension_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("pattern");
        QTest::newRow("usual") << u"qnote"_s << u"*.qnote"_s;
        QTest::newRow("two") << u"tar.QN"_s << u"*.tar.QN"_s;
        QTest::newRow("special") << u"a*b?c[d]"_s << u"*.a[*]b[?]c[[]d]"_s;
        QTest::newRow("hostile") << u"a\"'<&>ä b"_s << u"*.a\"'<&>ä b"_s;
    }

    void association_patternIsTheExtension()
    {
        QFETCH(QString, extension);
        EXEAssociation association = Usual();
        association.Extension = extension;
        Associate(association);
        QTEST(TextsOf(u"Quill.Note"_s).value(2), "pattern");
        QCOMPARE(Text(Classes + u'.' + extension), u"Quill.Note"_s);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void association_thatCantBe_isRefused_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("reason");
        const QStringList names{QString(),  u"."_s,     u".."_s,  u"..."_s,  u"../a"_s,    u"a/b"_s,          u"/etc/a"_s,
                                u"a\\b"_s, u"..\\a"_s, u"a;b"_s, u"a\nb"_s, u"a\u007f"_s, u"a"_s + QChar(0)};
        for (const QString& name : names) {
            const QByteArray shown = name.toUtf8().toPercentEncoding();
            QTest::addRow("class %s", shown.constData())
                << name << u"qnote"_s << u"quill"_s << u"'"_s + name + u"' can't be the name of a class."_s;
            QTest::addRow("extension %s", shown.constData())
                << u"Quill"_s << name << u"quill"_s << u"'"_s + name + u"' can't be an extension."_s;
        }
        QTest::newRow("no program") << u"Quill"_s << u"qnote"_s << QString() << u"No program is given."_s;
        QTest::newRow("control character")
            << u"Quill"_s << u"qnote"_s << u"quill\u0001"_s << u"The command 'open' has control characters."_s;
    }

    void association_thatCantBe_isRefused()
    {
        QFETCH(QString, className);
        QFETCH(QString, extension);
        QFETCH(QString, program);
        QFETCH(QString, reason);
        EXEAssociation association = Usual();
        association.ClassName = className;
        association.Extension = extension;
        association.Program = program;
        cRegistry registry;
        QCOMPARE(ErrorOf([&] { registry.CreateEXEAssociation(association); }),
                 CallError + u"Failed to register the file type '"_s + extension + u"'. "_s + reason);
        QVERIFY(!QFileInfo::exists(StoreFile()));
        QVERIFY(!QFileInfo::exists(DataPath({})));
        QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations({}); }), CallError + NoClass);
    }

    void association_thatCantBeWritten_changesNothing_data()
    {
        QTest::addColumn<QString>("folder"); // in the place of a file
        QTest::addColumn<QString>("file"); // in the place of a folder
        QTest::newRow("package") << u"mime/packages/Quill.Note.xml"_s << QString();
        QTest::newRow("entry") << u"applications/Quill.Note.desktop"_s << QString();
        QTest::newRow("folder of packages") << QString() << u"mime"_s;
        QTest::newRow("folder of entries") << QString() << u"applications"_s;
    }

    void association_thatCantBeWritten_changesNothing()
    {
        QFETCH(QString, folder);
        QFETCH(QString, file);
        Let(u"a"_s, u"v"_s, u"kept"_s);
        const QByteArray before = StoreBytes();
        if (file.isEmpty())
            QVERIFY(QDir().mkpath(DataPath(folder + u"/inside"_s)));
        else
            WriteFile(DataPath(file), "a file");
        const QMap<QString, QByteArray> filesBefore = DataFiles();
        cRegistry registry;
        const QString error = ErrorOf([&] { registry.CreateEXEAssociation(Usual()); });
        QVERIFY2(error.startsWith(StoreError + u"Failed to register the file type 'qnote'. '"_s), qPrintable(error));
        QVERIFY2(error.endsWith(u"' can't be written."_s), qPrintable(error));
        QVERIFY(error.contains(DataPath(folder.isEmpty() ? file : folder)));
        QCOMPARE(StoreBytes(), before);
        QCOMPARE(DataFiles(), filesBefore);
        QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations({}); }), CallError + NoClass);
    }

    void association_thatTheStoreRefuses_changesNothing()
    {
        Associate(Usual());
        const QMap<QString, QByteArray> before = DataFiles();
        QVERIFY(QFile::remove(StoreFile()) && QDir().mkpath(StoreFile()));
        EXEAssociation association = Usual();
        association.Description = u"Another note"_s;
        QCOMPARE(ErrorOf([&] { Associate(association); }),
                 StoreError + u"Failed to set registry value Key: 'HKEY_CURRENT_USER',"
                              "Section: 'SOFTWARE\\Classes\\.qnote',Key: '' to value: 'Quill.Note'"_s);
        QCOMPARE(DataFiles(), before);
    }

    void fileAssociation_thatIsDropped_changesNothing()
    {
        Associate(Usual());
        const QMap<QString, QByteArray> before = DataFiles();
        EXEAssociation association = Usual();
        association.Description = u"Another note"_s;
        {
            const FileAssociation dropped(FileTypeOf(association), u"Test"_s);
        }
        QCOMPARE(DataFiles(), before);
    }

    void fileAssociation_thatCantReplace_raises()
    {
        FileAssociation association(FileTypeOf(Usual()), u"Test"_s);
        QVERIFY(QDir().mkpath(PackagePath(u"Quill.Note"_s) + u"/inside"_s));
        QCOMPARE(ErrorOf([&] { association.PutInPlace(); }),
                 u"75 Test: Failed to register the file type 'qnote'. '"_s + PackagePath(u"Quill.Note"_s) + u"' can't be written."_s);
        QVERIFY(!QFileInfo::exists(EntryPath(u"Quill.Note"_s)));
    }

    // The desktop's programs

    void association_tellsTheDesktop()
    {
        const QString trace = m_home->Path(u"trace"_s);
        for (const char* name : {"update-mime-database", "update-desktop-database"}) {
            MakeProgram(m_home->Path(u"programs/"_s + QString::fromLatin1(name)),
                        QByteArray("echo ") + name + " \"$@\" >> '" + QFile::encodeName(trace)
                            + "'\necho noise; echo noise >&2; exit 3\n");
        }
        Associate(Usual());
        QCOMPARE(QFile::decodeName(ReadFile(trace)),
                 u"update-mime-database "_s + DataPath(u"mime"_s) + u"\nupdate-desktop-database "_s + DataPath(u"applications"_s) + u'\n');
    }

    void association_withoutTheDesktopsPrograms_isWritten()
    {
        Associate(Usual());
        QCOMPARE(DataFiles().keys(), QStringList({EntryPath(u"Quill.Note"_s), PackagePath(u"Quill.Note"_s)}));
    }

    void association_isInTheDesktopsLists()
    {
        m_path.reset();
        EXEAssociation association = Usual();
        association.ClassName = u"My \"<Class>\" ä"_s;
        Associate(association);
        const QByteArray type = "application/x-my$20$22$3cclass$3e$22$20$c3$a4";
        if (!QStandardPaths::findExecutable(u"update-mime-database"_s).isEmpty()) {
            QVERIFY(ReadFile(DataPath(u"mime/globs2"_s)).contains("50:" + type + ":*.qnote\n"));
            QCOMPARE(Complaint(u"update-mime-database"_s, {DataPath(u"mime"_s)}), QByteArray());
        }
        if (!QStandardPaths::findExecutable(u"update-desktop-database"_s).isEmpty())
            QVERIFY(ReadFile(DataPath(u"applications/mimeinfo.cache"_s)).contains(type + "=My \"<Class>\" \xc3\xa4.desktop;\n"));
    }

    // CreateAdditionalEXEAssociations

    void additional_writesItsKeysAndActions()
    {
        cRegistry registry;
        EXEAssociation association = Usual();
        association.Print = true;
        registry.CreateEXEAssociation(association);
        const QMap<QString, QString> before = ClassTexts();
        registry.CreateAdditionalEXEAssociations({u"check"_s, u"&Check it"_s, u"\"/opt/Quill Base/quill\" /c \"%1\""_s, //
                                                  u"send by mail"_s, u"Send…"_s, u"xdg-email --attach %1"_s});
        QMap<QString, QString> expected = before;
        expected[u"Quill.Note\\shell\\check"_s] = u"&Check it"_s;
        expected[u"Quill.Note\\shell\\check\\command"_s] = u"\"/opt/Quill Base/quill\" /c \"%1\""_s;
        expected[u"Quill.Note\\shell\\send by mail"_s] = u"Send…"_s;
        expected[u"Quill.Note\\shell\\send by mail\\command"_s] = u"xdg-email --attach %1"_s;
        QCOMPARE(ClassTexts(), expected);

        const QMap<QString, QString> entry = EntryOf(u"Quill.Note"_s);
        QCOMPARE(entry[u"Desktop Entry/Actions"_s], u"print;check;send-20by-20mail;"_s);
        QCOMPARE(entry[u"Desktop Action check/Name"_s], u"Check it"_s);
        QCOMPARE(WordsOf(entry[u"Desktop Action check/Exec"_s]), QStringList({u"/opt/Quill Base/quill"_s, u"/c"_s, FileCode}));
        QCOMPARE(entry[u"Desktop Action send-20by-20mail/Name"_s], u"Send…"_s);
        QCOMPARE(entry[u"Desktop Action send-20by-20mail/Exec"_s], u"xdg-email --attach %f"_s);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void additional_addsToWhatWasAdded()
    {
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        registry.CreateAdditionalEXEAssociations({u"one"_s, u"One"_s, u"quill 1"_s});
        registry.CreateAdditionalEXEAssociations({u"two"_s, u"Two"_s, u"quill 2"_s});
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Entry/Actions"_s], u"one;two;"_s);
        EXEAssociation other = Usual();
        other.ClassName = u"Other"_s;
        other.Extension = u"other"_s;
        registry.CreateEXEAssociation(other);
        registry.CreateAdditionalEXEAssociations({u"three"_s, u"Three"_s, u"quill 3"_s});
        QCOMPARE(EntryOf(u"Other"_s)[u"Desktop Entry/Actions"_s], u"three;"_s);
        QCOMPARE(SectionsOf(Classes + u"Other\\shell"_s), QStringList({u"open"_s, u"three"_s}));
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Entry/Actions"_s], u"one;two;"_s);
    }

    void additional_ofANameThatIsTaken_replacesIt()
    {
        cRegistry registry;
        EXEAssociation association = Usual();
        association.Print = true;
        registry.CreateEXEAssociation(association);
        registry.CreateAdditionalEXEAssociations({u"PRINT"_s, u"Plot"_s, u"plot %1"_s, u"open"_s, u"View"_s, u"view %1"_s});
        QCOMPARE(SectionsOf(Classes + u"Quill.Note\\shell"_s), QStringList({u"open"_s, u"print"_s}));
        QCOMPARE(Text(Classes + u"Quill.Note\\shell\\print\\command"_s), u"plot %1"_s);
        const QMap<QString, QString> entry = EntryOf(u"Quill.Note"_s);
        QCOMPARE(entry[u"Desktop Entry/Exec"_s], u"view %f"_s);
        QCOMPARE(entry[u"Desktop Entry/Actions"_s], u"PRINT;"_s);
        QCOMPARE(entry[u"Desktop Action PRINT/Name"_s], u"Plot"_s);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void additional_holdsAnyText()
    {
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        const QString name = QString(Hostile).remove(u'\\');
        registry.CreateAdditionalEXEAssociations({name, Hostile, u"quill '$x' `a` 100% \\ \"a  b\" %1"_s, u"-"_s, QString(), u"quill"_s});
        QCOMPARE(Text(Classes + u"Quill.Note\\shell\\"_s + name), Hostile);
        const QMap<QString, QString> entry = EntryOf(u"Quill.Note"_s);
        const QString id = entry[u"Desktop Entry/Actions"_s].section(u';', 0, 0);
        QCOMPARE(entry[u"Desktop Entry/Actions"_s].section(u';', 1), u"-2D;"_s);
        QCOMPARE(Unescaped(entry[u"Desktop Action %1/Name"_s.arg(id)]), QString(Hostile).remove(Hostile.indexOf(u'&'), 1));
        QCOMPARE(WordsOf(entry[u"Desktop Action %1/Exec"_s.arg(id)]),
                 QStringList({u"quill"_s, u"'$x'"_s, u"`a`"_s, u"100%"_s, u"\\"_s, u"a  b"_s, FileCode}));
        QCOMPARE(entry[u"Desktop Action -2D/Name"_s], u"-"_s);
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());
    }

    void additional_withoutACommand_isNoAction()
    {
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        registry.CreateAdditionalEXEAssociations({u"empty"_s, u"Empty"_s, u" "_s});
        QCOMPARE(Text(Classes + u"Quill.Note\\shell\\empty\\command"_s), u" "_s);
        QVERIFY(!EntryOf(u"Quill.Note"_s).contains(u"Desktop Entry/Actions"_s));
    }

    void additional_takesTheFileAnywhere_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("words"); // the file stands for %1
        QTest::newRow("part of a word") << u"\"%0\" --file=%1 x"_s << QStringList{u"--file=%1"_s, u"x"_s};
        QTest::newRow("part of a word in quotes")
            << u"\"%0\" \"it's $HOME `b` \\ 100%f: %1!\""_s << QStringList{u"it's $HOME `b` \\ 100%f: %1!"_s};
        QTest::newRow("twice") << u"\"%0\" %1 - \"%1\""_s << QStringList{u"%1"_s, u"-"_s, u"%1"_s};
        QTest::newRow("not at all") << u"\"%0\" a"_s << QStringList{u"a"_s};
        QTest::newRow("alone") << u"\"%0\" \"%1\""_s << QStringList{u"%1"_s};
    }

    /// Runs the action's line with a file's name in the place of the field code.
    void additional_takesTheFileAnywhere()
    {
        QFETCH(QString, command);
        QFETCH(QStringList, words);
        const QString program = m_home->Path(u"my program"_s);
        MakeProgram(program, "printf '%s\\n' \"$@\"\n");
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        registry.CreateAdditionalEXEAssociations({u"x"_s, u"X"_s, QString(command).replace(u"%0"_s, program)});
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());

        const QString file = m_home->Path(u"it's \"a\" $file.qnote"_s);
        QStringList line = WordsOf(EntryOf(u"Quill.Note"_s)[u"Desktop Action x/Exec"_s]);
        QVERIFY(line.count(FileCode) <= 1);
        std::replace(line.begin(), line.end(), FileCode, file);
        m_path.reset();
        QProcess process;
        process.start(line[0], line.mid(1));
        QVERIFY(process.waitForFinished());
        words.replaceInStrings(u"%1"_s, file);
        QCOMPARE(QString::fromUtf8(process.readAll()), words.join(u'\n') + u'\n');
    }

    void additional_listOfAnotherLength_isRefused()
    {
        const QString error =
            CallError + u"Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command"_s;
        cRegistry fresh;
        QCOMPARE(ErrorOf([&] { fresh.CreateAdditionalEXEAssociations({u"a"_s, u"b"_s, u"c"_s, u"d"_s}); }), error);
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        const QByteArray before = StoreBytes();
        const QMap<QString, QByteArray> filesBefore = DataFiles();
        for (const qsizetype count : {1, 2, 4, 5, 7})
            QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations(QStringList(count, u"a"_s)); }), error);
        QCOMPARE(StoreBytes(), before);
        QCOMPARE(DataFiles(), filesBefore);
    }

    void additional_beforeThereIsAClass_isRefused()
    {
        Associate(Usual()); // by another object
        const QByteArray before = StoreBytes();
        cRegistry registry;
        QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations({u"a"_s, u"b"_s, u"c"_s}); }), CallError + NoClass);
        QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations({}); }), CallError + NoClass);
        QCOMPARE(StoreBytes(), before);
    }

    void additional_emptyList_changesNothing()
    {
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        const QByteArray before = StoreBytes();
        registry.CreateAdditionalEXEAssociations({});
        QCOMPARE(StoreBytes(), before);
    }

    void additional_thatCantBe_isRefused_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::addColumn<QString>("error");
        QTest::newRow("no name") << QStringList{QString(), u"b"_s, u"c"_s} << u"'' can't be the name of a command."_s;
        QTest::newRow("path") << QStringList{u"open\\command"_s, u"b"_s, u"c"_s} << u"'open\\command' can't be the name of a command."_s;
        QTest::newRow("control character") << QStringList{u"a"_s, u"b"_s, u"c \u0001"_s}
                                           << u"Failed to register the file type 'qnote'. The command 'a' has control characters."_s;
        QTest::newRow("nothing opens") << QStringList{u"open"_s, u"b"_s, QString()}
                                       << u"Failed to register the file type 'qnote'. No program is given."_s;
    }

    void additional_thatCantBe_isRefused()
    {
        QFETCH(QStringList, command);
        QFETCH(QString, error);
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        const QByteArray before = StoreBytes();
        const QMap<QString, QByteArray> filesBefore = DataFiles();
        const QStringList commands = QStringList{u"x"_s, u"X"_s, u"x"_s} + command;
        QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations(commands); }), CallError + error);
        QCOMPARE(StoreBytes(), before);
        QCOMPARE(DataFiles(), filesBefore);
    }

    void additional_thatCantBeWritten_changesNothing()
    {
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        const QByteArray store = StoreBytes();
        const QMap<QString, QByteArray> files = DataFiles();
        QVERIFY(QFile::remove(StoreFile()) && QDir().mkpath(StoreFile()));
        QCOMPARE(ErrorOf([&] { registry.CreateAdditionalEXEAssociations({u"x"_s, u"X"_s, u"quill"_s}); }),
                 StoreError + u"Failed to set registry value Key: 'HKEY_CURRENT_USER',"
                              "Section: 'SOFTWARE\\Classes\\Quill.Note\\shell\\x',Key: '' to value: 'X'"_s);
        QCOMPARE(DataFiles(), files);
        QVERIFY(QDir().rmdir(StoreFile()));
        WriteFile(StoreFile(), store);
        registry.CreateAdditionalEXEAssociations({u"y"_s, u"Y"_s, u"quill"_s});
        QCOMPARE(EntryOf(u"Quill.Note"_s)[u"Desktop Entry/Actions"_s], u"y;"_s);
    }

private:
    inline static const QString NoClass = u"Error - attempt to create additional associations before class defined."_s;

    static void MakeProgram(const QString& path, const QByteArray& script)
    {
        WriteFile(path, "#!/bin/sh\nPATH=/usr/bin:/bin\n" + script);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    /// Comment, type and pattern of a class's package.
    static QStringList TextsOf(const QString& className)
    {
        QXmlStreamReader xml(ReadFile(PackagePath(className)));
        QString comment;
        QString type;
        QString pattern;
        while (xml.readNextStartElement()) {
            const QString name = xml.name().toString();
            type += xml.attributes().value(u"type"_s);
            pattern += xml.attributes().value(u"pattern"_s);
            if (name == u"comment"_s)
                comment += xml.readElementText();
            else if (name == u"glob"_s)
                xml.skipCurrentElement();
        }
        return {comment, type, pattern};
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Variable> m_dataHome;
    std::unique_ptr<Variable> m_path;
};

QB_TEST_MAIN(TestCRegistry)
#include "tst_cregistry.moc"
