// Languages on the command line: those that come with the program, and the one of an item.

#include "platform/richtext/Rtf.h"
#include "store/Library.h"
#include "support/CliRun.h"
#include "support/TestRun.h"

#include <QJsonArray>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

class TestCliLanguages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_library = m_home->Path(u"the library 'é'.qbd"_s);
    }
    void cleanup() { m_home.reset(); }

    void languages_areListedWithTheNamesOfTheirFiles()
    {
        const Outcome outcome = Cli({u"languages"_s, u"--json"_s});
        QCOMPARE(outcome.Status, 0);
        const QJsonArray list = QJsonDocument::fromJson(outcome.Out.toUtf8()).array();
        QVERIFY(list.size() >= 75);
        bool python = false;
        for (const QJsonValue& value : list) {
            QVERIFY(!value[u"key"].toString().isEmpty() && !value[u"name"].toString().isEmpty());
            python = python
                     || (value[u"key"] == u"python"_s && value[u"files"].toArray().contains(u"*.py"_s)
                         && value[u"interpreters"].toArray().contains(u"python"_s));
        }
        QVERIFY(python);
        QVERIFY(Cli({u"languages"_s}).Out.contains(u"cpp23            C++ (current)"_s));
    }

    void newLibrary_takesALanguageByKeyAndByName()
    {
        QCOMPARE(Cli({u"new"_s, m_library, u"--language"_s, u"C++ (current)"_s}).Status, 0);
        const QJsonObject language = Cli({u"language"_s, m_library, u"--json"_s}).Object();
        QCOMPARE(language[u"language"].toString(), u"C++ (current)"_s);
        QVERIFY(language[u"rules"].toString().contains(u"block: /* */"_s));
        QCOMPARE(Cli({u"new"_s, m_home->Path(u"b.qbd"_s), u"--language"_s, u"python"_s}).Status, 0);
        const Outcome unknown = Cli({u"new"_s, m_home->Path(u"c.qbd"_s), u"--language"_s, u"klingon"_s});
        QCOMPARE(unknown.Status, 2);
        QVERIFY(unknown.Error.contains(u"klingon"_s));
        QVERIFY(!QFileInfo::exists(m_home->Path(u"c.qbd"_s)));
    }

    void colorizeByRules_keepsEveryCharacter()
    {
        const QByteArray code = "class A:\n    x = Name.Class  # If\n    REM = f\"{x}\" or \"none\"\n";
        const QString file = m_home->Path(u"größe.py"_s);
        WriteFile(file, code);
        const Outcome rtf = Cli({u"colorize"_s, u"--language"_s, u"python"_s, file, u"--rtf"_s});
        QCOMPARE(rtf.Status, 0);
        QCOMPARE(PlainTextFromRtf(rtf.Out).replace(u"\r\n"_s, u"\n"_s), QString::fromUtf8(code));
        const QStringList marks =
            Cli({u"colorize"_s, u"--language"_s, u"Python"_s, file, u"--marks"_s}).Out.split(u'\n');
        QCOMPARE(marks.value(0), u"class A:"_s);
        QCOMPARE(marks.value(1), u"kkkkk"_s);
        QCOMPARE(marks.value(3), u"                    cccc"_s);
        QVERIFY(Cli({u"colorize"_s, u"--language"_s, u"python"_s, file, u"--html"_s}).Out.contains(u"class"_s));
    }

    void colorize_refusesWhatItCantDo()
    {
        const QString file = m_home->Path(u"a.py"_s);
        WriteFile(file, "x\n");
        QCOMPARE(Cli({u"colorize"_s, u"--language"_s, u"klingon"_s, file, u"--rtf"_s}).Status, 2);
        QCOMPARE(Cli({u"colorize"_s, u"--language"_s, u"python"_s, file}).Status, 2);
        QCOMPARE(Cli({u"colorize"_s, u"--language"_s, u"python"_s, file, u"--rtf"_s, u"--html"_s}).Status, 2);
        QCOMPARE(Cli({u"colorize"_s, u"--language"_s, u"vb"_s, file, u"--marks"_s}).Status, 1);
    }

    void item_hasALanguageOfItsOwn()
    {
        Cli({u"new"_s, m_library, u"--language"_s, u"python"_s});
        const QString file = m_home->Path(u"a.sh"_s);
        WriteFile(file, "if true; then echo; fi # x\n");
        const QString id = Cli({u"add"_s, m_library, u"--title"_s, u"a"_s, u"--code"_s, file, u"--language"_s,
                                u"bash"_s})
                               .Out.trimmed();
        QCOMPARE(Language(id), u"Bash"_s);
        QCOMPARE(Cli({u"show"_s, m_library, id, u"--field"_s, u"code"_s}).Out, u"if true; then echo; fi # x\n"_s);
        // A text that is replaced keeps it.
        WriteFile(file, "echo\n");
        QCOMPARE(Cli({u"set"_s, m_library, id, u"--code"_s, file}).Status, 0);
        QCOMPARE(Language(id), u"Bash"_s);
        QCOMPARE(Cli({u"set"_s, m_library, id, u"--language"_s, u"fish"_s}).Status, 0);
        QCOMPARE(Language(id), u"Fish"_s);
        QCOMPARE(Cli({u"colorize"_s, m_library, id, u"--save"_s}).Status, 0);
        QCOMPARE(Language(id), u"Fish"_s);
        QCOMPARE(Cli({u"set"_s, m_library, id, u"--language"_s, u"klingon"_s}).Status, 2);
        QCOMPARE(Language(id), u"Fish"_s);
        QCOMPARE(Cli({u"set"_s, m_library, id, u"--language"_s, u"none"_s}).Status, 0);
        QCOMPARE(Language(id), QString());
        QCOMPARE(Cli({u"show"_s, m_library, id, u"--field"_s, u"code"_s}).Out, u"echo\n"_s);
    }

    void importedFile_isOfTheLanguageThatItsNameOrFirstLineTells()
    {
        Cli({u"new"_s, m_library, u"--language"_s, u"python"_s});
        QVERIFY(QDir().mkpath(m_home->Path(u"source"_s)));
        WriteFile(m_home->Path(u"source/a.py"_s), "x\n");
        WriteFile(m_home->Path(u"source/b.rs"_s), "x\n");
        WriteFile(m_home->Path(u"source/run"_s), "#!/bin/sh\necho\n");
        WriteFile(m_home->Path(u"source/words.txt"_s), "x\n");
        QCOMPARE(Cli({u"import-folder"_s, m_library, m_home->Path(u"source"_s)}).Status, 0);
        QCOMPARE(Language(u"2"_s), QString()); // the library's
        QCOMPARE(Language(u"3"_s), u"Rust"_s);
        QCOMPARE(Language(u"4"_s), u"Bash"_s);
        QCOMPARE(Language(u"5"_s), QString());
        QCOMPARE(Cli({u"import-folder"_s, m_library, m_home->Path(u"source"_s), u"--library-language"_s}).Status, 0);
        QCOMPARE(Language(u"8"_s), QString());
        QCOMPARE(Cli({u"check"_s, m_library}).Status, 0);
    }

    void check_namesASecondRowOfRules()
    {
        Cli({u"new"_s, m_library, u"--language"_s, u"python"_s});
        QCOMPARE(Cli({u"check"_s, m_library}).Status, 0);
        Library::Open(m_library)->Execute(u"INSERT INTO LanguageRules (Rules) VALUES ('line: #')"_s);
        const Outcome outcome = Cli({u"check"_s, m_library});
        QCOMPARE(outcome.Status, 1);
        QVERIFY(outcome.Out.contains(u"LanguageRules has 2 rows"_s));
    }

private:
    QString Language(const QString& id)
    {
        return Cli({u"show"_s, m_library, id, u"--json"_s}).Object()[u"language"].toString();
    }

    std::unique_ptr<TemporaryHome> m_home;
    QString m_library;
};

QB_TEST_MAIN(TestCliLanguages)
#include "tst_cli_languages.moc"
