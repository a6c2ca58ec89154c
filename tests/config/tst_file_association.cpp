#include "support/AssociationFiles.h"

#include <QXmlStreamReader>

#include <algorithm>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A program as the one for files of an extension: its keys, and what the desktop is told.
class TestFileAssociation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_registry = std::make_unique<RegistryHome>();
    }
    void cleanup() { m_registry.reset(); }

    // CreateEXEAssociation: the keys

    void association_writesItsKeys()
    {
        Associate(Usual());
        const QMap<QString, QString> expected{
            {u".qnote"_s, u"Quill.Note"_s},
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
        const QMap<QString, QString> expected{
            {u".qnote"_s, u"Quill.Note"_s},
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
        QCOMPARE(ReadFile(PackagePath(u"Quill.Note"_s)),
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
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
            QCOMPARE(Text(Classes + u"Quill.Note\\DefaultIcon"_s),
                     (icon.isEmpty() ? association.Program : icon) + u",0"_s);
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
        const QStringList programs{
            u"quill"_s,    u"/usr/bin/quill"_s, u"/opt/a b/quill"_s,     u"C:\\Program Files\\Quill\\q.exe"_s,
            u"/o/\"q\""_s, u"/o/$(HOME)`x`"_s,  u"/o/it's;&|<>*?#~()"_s, u"/ö/ß😀"_s,
            u"/o/\\"_s,    u"/o/a\nb\tc\rd"_s};
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
        const QString program = m_registry->Home.Path(name);
        const QString trace = m_registry->Home.Path(u"trace"_s);
        MakeProgram(program, "printf '%s\\n' \"$@\" > '" + QFile::encodeName(trace) + ".new'\nmv '"
                                 + QFile::encodeName(trace) + ".new' '" + QFile::encodeName(trace) + "'\n");
        EXEAssociation association = Usual();
        association.Program = program;
        Associate(association);
        const QString file = m_registry->Home.Path(u"data/it's a \"$file\" %f.qnote"_s);
        WriteFile(file, "x");
        m_registry->Programs.reset();
        QVERIFY(!QStandardPaths::findExecutable(u"gio"_s).isEmpty());
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
        const QStringList names{QString(), u"."_s,     u".."_s,  u"..."_s,  u"../a"_s,    u"a/b"_s,         u"/etc/a"_s,
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
        QTest::addColumn<QString>("file");   // in the place of a folder
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
                 StoreError
                     + u"Failed to set registry value Key: 'HKEY_CURRENT_USER',"
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
        QCOMPARE(ErrorOf([&] { association.PutInPlace(); }), u"75 Test: Failed to register the file type 'qnote'. '"_s
                                                                 + PackagePath(u"Quill.Note"_s)
                                                                 + u"' can't be written."_s);
        QVERIFY(!QFileInfo::exists(EntryPath(u"Quill.Note"_s)));
    }

    // The desktop's programs

    void association_tellsTheDesktop()
    {
        const QString trace = m_registry->Home.Path(u"trace"_s);
        for (const char* name : {"update-mime-database", "update-desktop-database"}) {
            MakeProgram(m_registry->Home.Path(u"programs/"_s + QString::fromLatin1(name)),
                        QByteArray("echo ") + name + " \"$@\" >> '" + QFile::encodeName(trace)
                            + "'\necho noise; echo noise >&2; exit 3\n");
        }
        Associate(Usual());
        QCOMPARE(QFile::decodeName(ReadFile(trace)), u"update-mime-database "_s + DataPath(u"mime"_s)
                                                         + u"\nupdate-desktop-database "_s + DataPath(u"applications"_s)
                                                         + u'\n');
    }

    void association_withoutTheDesktopsPrograms_isWritten()
    {
        Associate(Usual());
        QCOMPARE(DataFiles().keys(), QStringList({EntryPath(u"Quill.Note"_s), PackagePath(u"Quill.Note"_s)}));
    }

    void association_isInTheDesktopsLists()
    {
        m_registry->Programs.reset();
        EXEAssociation association = Usual();
        association.ClassName = u"My \"<Class>\" ä"_s;
        Associate(association);
        const QByteArray type = "application/x-my$20$22$3cclass$3e$22$20$c3$a4";
        QVERIFY(ReadFile(DataPath(u"mime/globs2"_s)).contains("50:" + type + ":*.qnote\n"));
        QCOMPARE(Complaint(u"update-mime-database"_s, {DataPath(u"mime"_s)}), QByteArray());
        QVERIFY(ReadFile(DataPath(u"applications/mimeinfo.cache"_s))
                    .contains(type + "=My \"<Class>\" \xc3\xa4.desktop;\n"));
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

    std::unique_ptr<RegistryHome> m_registry;
};

QB_TEST_MAIN(TestFileAssociation)
#include "tst_file_association.moc"
