#include "maintenance/FolderImport.h"
#include "platform/richtext/RtfPlainText.h"
#include "session/LoadTree.h"
#include "store/CCodeItem.h"
#include "support/OrdinaryUser.h"
#include "support/RecordedWork.h"
#include "support/TestSession.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <unistd.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestFolderImport : public QObject {
    Q_OBJECT

private:
    QString Source(const QString& name = {}) const
    {
        return m_home->Path(name.isEmpty() ? u"Quëllen"_s : u"Quëllen/"_s + name);
    }

    FolderImportResult Import(const FolderImportOptions& options = {}, Work& work = NoWork())
    {
        return ImportFolder(*m_library, Source(), options, work);
    }

    QString Shape()
    {
        TreeNodes nodes;
        LoadTree(*m_library, nodes, u"root"_s);
        return TestSession::Shape(nodes.TopLevel());
    }

    QString CodeOf(const QString& title)
    {
        CCodeItem item;
        item.Initialise(*m_library, m_library->QueryValue(u"SELECT ID FROM Items WHERE Title = ?"_s, {title}).ToText());
        return PlainTextFromRtf(item.Code());
    }

    static QStringList Skipped(const FolderImportResult& result)
    {
        QStringList texts;
        for (const SkippedFile& file : result.Skipped)
            texts << file.Path + u": "_s + file.Reason;
        return texts;
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"Ziel.qbd"_s), LanguageType::None);
        QDir().mkpath(Source());
    }

    void whatCannotBeTakenIn_isNamed()
    {
        WriteFile(Source(u"good.c"_s), "int x;\n");
        WriteFile(Source(u"plain"_s), "x");
        const QByteArray folder = QFile::encodeName(Source());
        // A name that is no text, a link to a folder and a link to nothing
        QCOMPARE(::rename((folder + "/plain").constData(), (folder + "/bad\xff.c").constData()), 0);
        QCOMPARE(::symlink("/tmp", (folder + "/folder").constData()), 0);
        QCOMPARE(::symlink("/no/such", (folder + "/dangling").constData()), 0);
        const FolderImportResult result = Import();
        QCOMPARE(result.Files, 1);
        QCOMPARE(result.Folders, 1);
        QStringList reasons = Skipped(result);
        reasons.sort();
        QCOMPARE(reasons, (QStringList{Source(u"bad\u00ff.c: its name is no text"_s),
                                       Source(u"dangling: it is a link to nothing"_s),
                                       Source(u"folder: it is a link to a folder"_s)}));
        QCOMPARE(Shape(), u"root(Quëllen(good.c))"_s);
    }

    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    /// A link to it reads like a file on a broken disk.
    void fileThatFailsWhileItIsRead_isNamed()
    {
        WriteFile(Source(u"good.c"_s), "int x;\n");
        QVERIFY(QFile::link(u"/proc/self/mem"_s, Source(u"bad.c"_s)));
        const FolderImportResult result = Import();
        QCOMPARE(result.Files, 1);
        QCOMPARE(result.Skipped.size(), 1u);
        QCOMPARE(result.Skipped[0].Path, Source(u"bad.c"_s));
        QCOMPARE(Shape(), u"root(Quëllen(good.c))"_s);
    }

    void folderThatCanNotBeRead_isAnError()
    {
        WriteFile(Source(u"good.c"_s), "int x;\n");
        WriteFile(Source(u"inner/other.c"_s), "int y;\n");
        QFile::setPermissions(Source(u"inner"_s), {});
        long number = 0;
        {
            QFile::setPermissions(m_home->Path(), QFile::permissions(m_home->Path()) | QFile::ReadGroup
                                                      | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
            const OrdinaryUser user;
            try {
                Import();
            } catch (const RuntimeError& error) {
                number = error.Number();
            }
        }
        QFile::setPermissions(Source(u"inner"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(number, 75);
        QCOMPARE(Shape(), u"root"_s);
    }

    void folder_becomesABranch()
    {
        WriteFile(Source(u"b.txt"_s), "b");
        WriteFile(Source(u"Straße/ünï cöde.cpp"_s), "u");
        WriteFile(Source(u"Straße/tief/x y.h"_s), "x");
        const FolderImportResult result = Import();
        QCOMPARE(Shape(), u"root(Quëllen(b.txt Straße(tief(x y.h) ünï cöde.cpp)))"_s);
        QCOMPARE(result.Folders, 3);
        QCOMPARE(result.Files, 3);
        QCOMPARE(result.RootItem, m_library->QueryValue(u"SELECT ID FROM Items WHERE Title = 'Quëllen'"_s).ToLong());
        QVERIFY(result.Skipped.empty());
        QVERIFY(!m_library->InTransaction());
    }

    void folder_isPutUnderTheItem()
    {
        WriteFile(Source(u"b.txt"_s), "b");
        const qint64 parent = AddItem(*m_library, 0, u"parent"_s);
        Import({.Parent = parent, .Globs = {}, .Fallback = {}});
        QCOMPARE(Shape(), u"root(parent(Quëllen(b.txt)))"_s);
    }

    void folderNamedWithASeparatorAtItsEnd_keepsItsName()
    {
        WriteFile(Source(u"b.txt"_s), "b");
        ImportFolder(*m_library, Source() + u'/', {});
        QCOMPARE(Shape(), u"root(Quëllen(b.txt))"_s);
    }

    void emptyFolder_becomesAnItem()
    {
        QDir().mkpath(Source(u"leer"_s));
        const FolderImportResult result = Import();
        QCOMPARE(Shape(), u"root(Quëllen(leer))"_s);
        QCOMPARE(result.Folders, 2);
        QCOMPARE(result.Files, 0);
    }

    void hiddenFiles_areTakenIn()
    {
        WriteFile(Source(u".hidden"_s), "h");
        WriteFile(Source(u".folder/inner"_s), "i");
        Import();
        QCOMPARE(Shape(), u"root(Quëllen(.folder(inner) .hidden))"_s);
    }

    void globs_chooseFilesAndTheirFolders_data()
    {
        QTest::addColumn<QStringList>("globs");
        QTest::addColumn<QString>("shape");
        QTest::newRow("none") << QStringList() << u"root(Quëllen(a.cpp b.h deep(c.cpp) empty notes(d.txt)))"_s;
        QTest::newRow("one") << QStringList{u"*.cpp"_s} << u"root(Quëllen(a.cpp deep(c.cpp)))"_s;
        QTest::newRow("two") << QStringList{u"*.h"_s, u"d.*"_s} << u"root(Quëllen(b.h notes(d.txt)))"_s;
        QTest::newRow("without a match") << QStringList{u"*.py"_s} << u"root(Quëllen)"_s;
    }
    void globs_chooseFilesAndTheirFolders()
    {
        QFETCH(QStringList, globs);
        for (const QString& name : {u"a.cpp"_s, u"b.h"_s, u"deep/c.cpp"_s, u"notes/d.txt"_s})
            WriteFile(Source(name), "x");
        QDir().mkpath(Source(u"empty"_s));
        Import({.Parent = 0, .Globs = globs, .Fallback = {}});
        QTEST(Shape(), "shape");
    }

    void linksToFolders_areNotFollowed()
    {
        WriteFile(Source(u"real/a.txt"_s), "a");
        QVERIFY(QFile::link(Source(u"real"_s), Source(u"link"_s)));
        QVERIFY(QFile::link(Source(), Source(u"real/up"_s)));
        QVERIFY(QFile::link(Source(u"nowhere"_s), Source(u"broken"_s)));
        Import();
        QCOMPARE(Shape(), u"root(Quëllen(real(a.txt)))"_s);
    }

    void folderThatIsItselfALink_isTakenInUnderItsTrueName()
    {
        WriteFile(Source(u"a.txt"_s), "a");
        const QString link = m_home->Path(u"link"_s);
        QVERIFY(QFile::link(Source(), link));
        ImportFolder(*m_library, link, {});
        QCOMPARE(Shape(), u"root(Quëllen(a.txt))"_s);
    }

    void code_isTheTextOfTheFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("code");
        QTest::newRow("plain") << QByteArray("int main()\n{\n\treturn 0;\n}\n")
                               << u"int main()\r\n{\r\n\treturn 0;\r\n}\r\n"_s;
        QTest::newRow("CR LF") << QByteArray("a\r\nb") << u"a\r\nb"_s;
        QTest::newRow("RTF's own letters") << QByteArray("{\\rtf1 \\b x}") << u"{\\rtf1 \\b x}"_s;
        QTest::newRow("UTF-8") << QByteArray("Größe = \"€𝄞\"") << u"Größe = \"€𝄞\""_s;
        QTest::newRow("UTF-8 with a mark") << QByteArray("\xef\xbb\xbf"
                                                         "ä")
                                           << u"ä"_s;
        QTest::newRow("UTF-16") << QByteArray("\xff\xfe\xe4\x00x\x00", 6) << u"äx"_s;
        QTest::newRow("empty") << QByteArray() << QString();
    }
    void code_isTheTextOfTheFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, code);
        WriteFile(Source(u"f"_s), bytes);
        QCOMPARE(Import().Files, 1);
        QCOMPARE(CodeOf(u"f"_s), code);
    }

    void filesThatAreNoText_areSkippedAndNamed()
    {
        WriteFile(Source(u"a.txt"_s), "a");
        WriteFile(Source(u"bild ü.png"_s), QByteArray("\x89PNG\0\0", 6));
        WriteFile(Source(u"latin.txt"_s), "gr\xfc\xdf");
        const FolderImportResult result = Import();
        QCOMPARE(Shape(), u"root(Quëllen(a.txt))"_s);
        QCOMPARE(result.Files, 1);
        const QString reason = u": it is no text in a known encoding"_s;
        QCOMPARE(Skipped(result), (QStringList{Source(u"bild ü.png"_s) + reason, Source(u"latin.txt"_s) + reason}));
    }

    void fallback_readsWhatIsNoUnicode_data()
    {
        QTest::addColumn<FallbackEncoding>("fallback");
        QTest::addColumn<QString>("code");
        QTest::newRow("Latin 1") << FallbackEncoding::Latin1 << u"gr\u00fc\u00df \u0080"_s;
        QTest::newRow("Windows 1252") << FallbackEncoding::Windows1252 << u"grüß €"_s;
    }
    void fallback_readsWhatIsNoUnicode()
    {
        QFETCH(FallbackEncoding, fallback);
        WriteFile(Source(u"f"_s), "gr\xfc\xdf \x80");
        WriteFile(Source(u"binary"_s), QByteArray("\xfc\0x", 3)); // is none in any encoding
        WriteFile(Source(u"utf8"_s), "grüß");                     // needs no fallback
        const FolderImportResult result = Import({.Parent = 0, .Globs = {}, .Fallback = fallback});
        QTEST(CodeOf(u"f"_s), "code");
        QCOMPARE(CodeOf(u"utf8"_s), u"grüß"_s);
        QCOMPARE(Skipped(result), QStringList{Source(u"binary"_s) + u": it is no text in a known encoding"_s});
    }

    void progress_countsEveryFile()
    {
        for (const QString& name : {u"a"_s, u"b"_s, u"sub/c"_s})
            WriteFile(Source(name), "x");
        WriteFile(Source(u"sub/binary"_s), QByteArray(1, '\0'));
        RecordedWork work;
        Import({}, work);
        QCOMPARE(work.Done, (QList<qint64>{1, 2, 3, 4}));
        QCOMPARE(work.Totals, (QList<qint64>{4, 4, 4, 4}));
    }

    // Imports that change nothing

    void stoppedImport_changesNothing()
    {
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
            WriteFile(Source(name), "x");
        try {
            RecordedWork work;
            work.Ends = [](qint64 done) { return done == 2; };
            Import({}, work);
            QFAIL("was not stopped");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Description(), u"The import was stopped; nothing was changed."_s);
        }
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
        QVERIFY(!m_library->InTransaction());
    }

    void sourceThatIsNoFolder_isRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << u"no such folder"_s;
        QTest::newRow("file") << u"file.txt"_s;
    }
    void sourceThatIsNoFolder_isRefused()
    {
        QFETCH(QString, name);
        WriteFile(m_home->Path(u"file.txt"_s), "x");
        const QString path = m_home->Path(name);
        try {
            ImportFolder(*m_library, path, {});
            QFAIL("was taken");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), ErrorNumber::FileNotFound);
            QCOMPARE(error.Description(),
                     u"'%1' is not a folder; nothing was changed."_s.arg(QDir::toNativeSeparators(path)));
        }
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
    }

    void missingParent_isRefused()
    {
        WriteFile(Source(u"a"_s), "x");
        try {
            Import({.Parent = 4711, .Globs = {}, .Fallback = {}});
            QFAIL("was taken");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Number(), ErrorNumber::ItemNotFound);
            QCOMPARE(error.Description(), u"There is no item 4711 in the library; nothing was changed."_s);
        }
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
    }

    void reservedName_isRefusedUnderTheRootOnly()
    {
        const QString path = Source(u"Orphaned Items"_s);
        WriteFile(path + u"/a"_s, "x");
        QB_VERIFY_RAISES(ImportFolder(*m_library, path, {}), ErrorNumber::ValueNotAllowed);
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
        Import();
        QCOMPARE(Shape(), u"root(Quëllen(Orphaned Items(a)))"_s);
    }

    void itemThatCannotBeStored_endsTheImport()
    {
        for (const QString& name : {u"a"_s, u"b"_s})
            WriteFile(Source(name), "x");
        m_library->Execute(
            u"CREATE TEMP TRIGGER stop BEFORE INSERT ON Items WHEN new.Title = 'b' BEGIN SELECT raise(ABORT, "
            "'stopped'); END"_s);
        ScriptedPrompts prompts;
        prompts.ExpectError();
        try {
            Import();
            QFAIL("was taken");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.Description(), u"'b' could not be stored; nothing was changed."_s);
        }
        QCOMPARE(CountOf(*m_library, u"Items"_s), 0);
        QVERIFY(!m_library->InTransaction());
    }
};

QB_TEST_MAIN(TestFolderImport)
#include "tst_folder_import.moc"
