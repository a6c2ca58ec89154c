#include "platform/system/SettingsStore.h"
#include "session/FileDialogs.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Where the dialogs of files start, and what they give.
class TestFileDialogs : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_script = std::make_unique<ScriptedPrompts>();
    }
    void cleanup()
    {
        m_script.reset();
        m_home.reset();
    }

    void fileDialog_startsInTheRememberedFolder_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::newRow("there") << true;
        QTest::newRow("gone") << false;
    }
    void fileDialog_startsInTheRememberedFolder()
    {
        QFETCH(bool, exists);
        const QString folder = m_home->Path(u"früher"_s);
        if (exists)
            QDir().mkpath(folder);
        SaveSetting(SettingsApplication, u"Settings"_s, u"InitDir"_s, folder);
        m_script->ExpectFileName(u"Ttl"_s, {});
        QCOMPARE(GetFileName(true, u"Ttl"_s, u"Flt|*.f"_s), QString());
        const FileQuestion& question = m_script->Questions.first();
        QCOMPARE(question.Folder, exists ? folder : QDir::homePath());
        QCOMPARE(question.Filter, u"Flt|*.f"_s);
        QVERIFY(question.Save);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"InitDir"_s), folder); // a cancel changes nothing
    }

    void chosenFolder_isRemembered()
    {
        const QString path = m_home->Path(u"nëu/x.qbd"_s);
        m_script->ExpectFileName(u"t"_s, path);
        QCOMPARE(GetFileName(true, u"t"_s, {}), path);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"InitDir"_s), m_home->Path(u"nëu"_s));
    }

    void severalNames_areCutToTheFirst()
    {
        const QString path = m_home->Path(u"x.qbd"_s);
        m_script->ExpectFileName(u"t"_s, path + QChar(u'\0') + u"y.qbd"_s);
        QCOMPARE(GetFileName(true, u"t"_s, {}), path);
    }

    void fileToOpenThatDoesNotExist_isRefused()
    {
        m_script->ExpectFileName(u"t"_s, m_home->Path(u"no such.qbd"_s));
        m_script->ExpectMsgBox(u"File not found"_s);
        QCOMPARE(GetFileName(false, u"t"_s, {}), QString());
        QCOMPARE(m_script->Messages[0].Text,
                 u"No file of the entered name exists in the selected directory. Please select an existing file."_s);
        QVERIFY(!m_script->Questions.first().Save);
    }

    void proposedName_isPassedOn()
    {
        m_script->ExpectFileName(u"Save File As : "_s, {});
        QCOMPARE(GetFileName(true, u"Save File As : "_s, u"All Files|*"_s, u"a.txt"_s), QString());
        QCOMPARE(m_script->Questions.first().Name, u"a.txt"_s);
    }

    void severalFiles_areChosenTogether()
    {
        const QStringList paths{m_home->Path(u"in/a"_s), m_home->Path(u"in/b"_s)};
        m_script->ExpectFileNames(u"t"_s, paths);
        QCOMPARE(GetFileNames(u"t"_s, u"All Files|*"_s), paths);
        QCOMPARE(GetSetting(SettingsApplication, u"Settings"_s, u"InitDir"_s), m_home->Path(u"in"_s));
        m_script->ExpectFileNames(u"t"_s, {});
        QCOMPARE(GetFileNames(u"t"_s, u"All Files|*"_s), QStringList());
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_script;
};

QB_TEST_MAIN(TestFileDialogs)
#include "tst_file_dialogs.moc"
