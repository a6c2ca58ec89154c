#include "support/AssociationFiles.h"

#include <QXmlStreamReader>

#include <algorithm>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Commands that are added to a type of files.
class TestAdditionalAssociations : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_registry = std::make_unique<RegistryHome>();
    }
    void cleanup() { m_registry.reset(); }

    // CreateAdditionalEXEAssociations

    void additional_writesItsKeysAndActions()
    {
        cRegistry registry;
        EXEAssociation association = Usual();
        association.Print = true;
        registry.CreateEXEAssociation(association);
        const QMap<QString, QString> before = ClassTexts();
        registry.CreateAdditionalEXEAssociations({u"check"_s, u"&Check it"_s,
                                                  u"\"/opt/Quill Base/quill\" /c \"%1\""_s, //
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
        QCOMPARE(WordsOf(entry[u"Desktop Action check/Exec"_s]),
                 QStringList({u"/opt/Quill Base/quill"_s, u"/c"_s, FileCode}));
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
        registry.CreateAdditionalEXEAssociations(
            {u"PRINT"_s, u"Plot"_s, u"plot %1"_s, u"open"_s, u"View"_s, u"view %1"_s});
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
        registry.CreateAdditionalEXEAssociations(
            {name, Hostile, u"quill '$x' `a` 100% \\ \"a  b\" %1"_s, u"-"_s, QString(), u"quill"_s});
        QCOMPARE(Text(Classes + u"Quill.Note\\shell\\"_s + name), Hostile);
        const QMap<QString, QString> entry = EntryOf(u"Quill.Note"_s);
        const QString id = entry[u"Desktop Entry/Actions"_s].section(u';', 0, 0);
        QCOMPARE(entry[u"Desktop Entry/Actions"_s].section(u';', 1), u"-2D;"_s);
        QCOMPARE(Unescaped(entry[u"Desktop Action %1/Name"_s.arg(id)]),
                 QString(Hostile).remove(Hostile.indexOf(u'&'), 1));
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
        const QString program = m_registry->Home.Path(u"my program"_s);
        MakeProgram(program, "printf '%s\\n' \"$@\"\n");
        cRegistry registry;
        registry.CreateEXEAssociation(Usual());
        registry.CreateAdditionalEXEAssociations({u"x"_s, u"X"_s, QString(command).replace(u"%0"_s, program)});
        QCOMPARE(ComplaintsOf(u"Quill.Note"_s), QByteArray());

        const QString file = m_registry->Home.Path(u"it's \"a\" $file.qnote"_s);
        QStringList line = WordsOf(EntryOf(u"Quill.Note"_s)[u"Desktop Action x/Exec"_s]);
        QVERIFY(line.count(FileCode) <= 1);
        std::replace(line.begin(), line.end(), FileCode, file);
        m_registry->Programs.reset();
        QProcess process;
        process.start(line[0], line.mid(1));
        QVERIFY(process.waitForFinished());
        words.replaceInStrings(u"%1"_s, file);
        QCOMPARE(QString::fromUtf8(process.readAll()), words.join(u'\n') + u'\n');
    }

    void additional_listOfAnotherLength_isRefused()
    {
        const QString error =
            CallError
            + u"Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command"_s;
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
        QCOMPARE(ErrorOf([&] {
                     registry.CreateAdditionalEXEAssociations({u"a"_s, u"b"_s, u"c"_s});
                 }),
                 CallError + NoClass);
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
        QTest::newRow("path") << QStringList{u"open\\command"_s, u"b"_s, u"c"_s}
                              << u"'open\\command' can't be the name of a command."_s;
        QTest::newRow("control character")
            << QStringList{u"a"_s, u"b"_s, u"c \u0001"_s}
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
        QCOMPARE(ErrorOf([&] {
                     registry.CreateAdditionalEXEAssociations({u"x"_s, u"X"_s, u"quill"_s});
                 }),
                 StoreError
                     + u"Failed to set registry value Key: 'HKEY_CURRENT_USER',"
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

    std::unique_ptr<RegistryHome> m_registry;
};

QB_TEST_MAIN(TestAdditionalAssociations)
#include "tst_additional_associations.moc"
