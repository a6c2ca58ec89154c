#include "support/TestSession.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A settings store that can't be written costs the settings, and nothing else.
class TestUnwritableSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        m_one = s->LibraryFile(u"one.qbd"_s, u"first"_s);
        m_two = s->LibraryFile(u"two.qbd"_s, u"second"_s);
        QVERIFY(s->Start(u"%1|One;%2|Two;"_s.arg(m_one, m_two)));
        const QString store = s->Home.Path(u"config/KTQuillbase.ini"_s);
        QVERIFY(QFile::remove(store));
        QVERIFY(QDir().mkpath(store + u"/in the way"_s));
    }

    void cleanup() { s.reset(); }

    void chosenLibrary_isOpenAndStaysInTheList()
    {
        s->Script.ExpectError();
        s->Shell.SetComboIndex(1);
        QCOMPARE(s->OpenPath(), m_two);
        QCOMPARE(s->Shape(), u"Two Library(second)"_s);
        QCOMPARE(s->Shell.Aliases, (QStringList{u"One"_s, u"Two"_s}));
        QVERIFY(s->Enabled(u"NEXT"_s));
    }

    void addedLibrary_isShown()
    {
        const QString three = s->LibraryFile(u"three.qbd"_s, u"third"_s);
        s->Script.ExpectFileName(u"Select a Quillbase Library Database"_s, three);
        s->Script.ExpectError(); // of the folder
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Three"_s);
        s->Script.ExpectError(); // of the list
        s->Script.ExpectError(); // of the library used last
        s->Libraries.mnuOpenDatabase_Click();
        QCOMPARE(s->OpenPath(), three);
        QCOMPARE(s->Shape(), u"Three Library(third)"_s);
    }

    void removedLibrary_givesWayToTheNext()
    {
        s->Script.ExpectMsgBox(u"Remove Database"_s, MsgBoxResult::Yes);
        for (int i = 0; i < 3; ++i) // the library used last, the list, and the library used last again
            s->Script.ExpectError();
        s->Libraries.mnuRemoveDBItem_Click();
        QCOMPARE(s->OpenPath(), m_two);
        QCOMPARE(s->Shape(), u"Two Library(second)"_s);
        QVERIFY(QFileInfo::exists(m_one));
    }

private:
    std::unique_ptr<TestSession> s;
    QString m_one;
    QString m_two;
};

QB_TEST_MAIN(TestUnwritableSettings)
#include "tst_unwritable_settings.moc"
