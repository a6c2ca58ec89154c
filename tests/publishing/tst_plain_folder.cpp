#include "maintenance/FolderImport.h"
#include "platform/richtext/RtfPlainText.h"
#include "platform/system/SafeNames.h"
#include "publishing/BranchPublisher.h"
#include "store/CCodeItem.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/RecordedWork.h"
#include "support/TestRun.h"

#include <sys/stat.h>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A branch as the files that a folder import would take it from.
class TestPlainFolder : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;

    QString Source(const QString& name = {}) const
    {
        return m_home->Path(u"Quëllen"_s) + (name.isEmpty() ? name : u'/' + name);
    }
    QString Target() const { return m_home->Path(u"wieder da"_s); }
    PublishResult Publish(qint64 item, Work& work = NoWork())
    {
        return PublishBranch(*m_library, item, ReaderForm::Files, Target(), work);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"bücher.qbd"_s));
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void importedFolder_isHadBack()
    {
        WriteFile(Source(u"main.cpp"_s), "int main()\n{\n}\n");
        WriteFile(Source(u"windows.bat"_s), "@echo off\r\n");
        WriteFile(Source(u"mixed.txt"_s), "a\r\nb\nc\rd");
        WriteFile(Source(u"marked.txt"_s), "\xEF\xBB\xBFtext\n");
        WriteFile(Source(u"wide.txt"_s), QByteArray("\xFF\xFE\xE4\0\r\0\n\0", 8));
        WriteFile(Source(u"old.c"_s), "/* gr\xF6\xDF"
                                      "e */\n");
        WriteFile(Source(u"empty.py"_s), {});
        WriteFile(Source(u".hidden/.profile"_s), "export A=1");
        WriteFile(Source(u"deep/er/A"_s), "capital");
        WriteFile(Source(u"deep/er/a"_s), "small");
        WriteFile(Source(u"deep/er/we ird\n\"name\"\\$`"_s), "\t#!\\{}\n\n");
        WriteFile(Source(u"script.py"_s), "#!/usr/bin/env python3\r\nprint('x')\r\n");
        const qint64 root =
            ImportFolder(*m_library, Source(), {.Globs = {}, .Fallback = FallbackEncoding::Latin1}).RootItem;
        const PublishResult result = Publish(root);
        QCOMPARE(ContentsOf(Target()), ContentsOf(Source()));
        QCOMPARE(result.Items, 16);
        QCOMPARE(result.Target, Target());
    }

    void itemWithCodeAndOthersBelow_hasItsCodeInside()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s, u"of top"_s);
        const qint64 inner = AddItem(*m_library, top, u"inner"_s, u"of inner"_s);
        AddItem(*m_library, inner, u"inner"_s, u"leaf"_s);
        Publish(top);
        const QMap<QString, QByteArray> expected{
            {u"top"_s, "of top"}, {u"inner/"_s, {}}, {u"inner/inner"_s, "leaf"}, {u"inner/inner(1)"_s, "of inner"}};
        QCOMPARE(ContentsOf(Target()), expected);
    }

    void wholeLibrary_hasItsItemsInTheFolder()
    {
        AddItem(*m_library, AddItem(*m_library, 0, u"a"_s), u"b"_s, u"1"_s);
        AddItem(*m_library, 0, u"c"_s, u"2"_s);
        Publish(0);
        QCOMPARE(ContentsOf(Target()), (QMap<QString, QByteArray>{{u"a/"_s, {}}, {u"a/b"_s, "1"}, {u"c"_s, "2"}}));
    }

    void emptyLibrary_givesAnEmptyFolder()
    {
        QCOMPARE(Publish(0).Items, 0);
        QVERIFY(QFileInfo(Target()).isDir());
        QCOMPARE(ContentsOf(Target()), (QMap<QString, QByteArray>()));
    }

    void hostileTitles_stayInTheFolder()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s);
        for (const QString& title : {u"."_s, u".."_s, u"../../up"_s, u"/etc/passwd"_s, u"a/b"_s, u"a_b"_s})
            AddItem(*m_library, top, title, u"x"_s);
        Publish(top);
        QCOMPARE(ContentsOf(Target()).keys(),
                 (QStringList{u".._.._up"_s, u"_"_s, u"__"_s, u"_etc_passwd"_s, u"a_b"_s, u"a_b(1)"_s}));
        QVERIFY(!QFile::exists(m_home->Path(u"up"_s)));
    }

    void branchThatIsTooDeep_isRefused()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s);
        qint64 item = top;
        for (int depth = 0; depth < 20; ++depth)
            item = AddItem(*m_library, item, QString(200, u'd'));
        QVERIFY(Raised([&] { Publish(top); }).startsWith(u"3163: "_s));
        QVERIFY(!QFile::exists(Target()));
    }

    void folderThatHoldsSomething_isRefused()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s, u"x"_s);
        WriteFile(Target() + u"/.mine"_s, "mine");
        QB_VERIFY_REFUSES(Publish(top), u"the folder is not empty"_s);
        QCOMPARE(ContentsOf(Target()), (QMap<QString, QByteArray>{{u".mine"_s, "mine"}}));
        QVERIFY(QDir(Target()).removeRecursively());
        WriteFile(Target(), "a file");
        QB_VERIFY_REFUSES(Publish(top), u"a file stands there"_s);
        QCOMPARE(ReadFile(Target()), "a file");
    }

    void emptyFolder_isFilled()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s, u"x"_s);
        QVERIFY(QDir().mkpath(Target() + u"/.unpacking-"_s + QString(32, u'a'))); // of a dead process
        Publish(top);
        QCOMPARE(ContentsOf(Target()), (QMap<QString, QByteArray>{{u"top"_s, "x"}}));
    }

    void exportThatIsStopped_leavesNothing()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s);
        for (int item = 0; item < 5; ++item)
            AddItem(*m_library, top, QString::number(item), u"x"_s);
        RecordedWork work;
        work.Ends = [](qint64 done) { return done == 3; };
        QVERIFY(Raised([&] { Publish(top, work); }).startsWith(u"3059: "_s));
        QVERIFY(!QFile::exists(Target()));
        work.Forget();
        Publish(top, work);
        QCOMPARE(work.Done, (QList<qint64>{1, 2, 3, 4, 5, 6}));
        QCOMPARE(work.Totals.last(), 6);
        QCOMPARE(work.Said.first(), u"1 Exporting Code Items...."_s);
    }

    void itemThatIsNotThere_isNamed()
    {
        QVERIFY(Raised([&] { Publish(4711); }).contains(u"4711"_s));
        QVERIFY(!QFile::exists(Target()));
    }

    void filesOfAPrivateLibrary_arePrivate()
    {
        const qint64 top = AddItem(*m_library, 0, u"top"_s, u"x"_s);
        QVERIFY(QFile::setPermissions(m_library->Name(), QFile::ReadOwner | QFile::WriteOwner));
        Publish(top);
        struct stat state {};
        QCOMPARE(::stat(QFile::encodeName(Target() + u"/top"_s).constData(), &state), 0);
        QCOMPARE(int(state.st_mode & 0077), 0);
    }

    // Names

    void titles_makeSafeNames_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("name");
        QTest::newRow("usual") << u"Größe 1.2 (b)"_s << u"Größe 1.2 (b)"_s;
        QTest::newRow("up") << u"../../x"_s << u"_.._x"_s;
        QTest::newRow("separators") << u"a/b\\c:d*e?f\"g<h>i|j"_s << u"a_b_c_d_e_f_g_h_i_j"_s;
        QTest::newRow("hidden") << u".profile"_s << u"profile"_s;
        QTest::newRow("an option") << u"--help"_s << u"help"_s;
        QTest::newRow("dots and blanks at its end") << u"a. . "_s << u"a"_s;
        QTest::newRow("nothing") << QString() << u"item"_s;
        QTest::newRow("nothing but dots") << u"..."_s << u"item"_s;
        QTest::newRow("a device") << u"con.txt"_s << u"_con.txt"_s;
        QTest::newRow("a numbered device") << u"LPT1"_s << u"_LPT1"_s;
        QTest::newRow("no device") << u"console"_s << u"console"_s;
        QTest::newRow("controls") << u"a\nb\tc\u202Ed\u0085"_s << u"a_b_c_d_"_s;
        QTest::newRow("half a character") << u"a"_s + QChar(0xd800) << u"a_"_s;
        QTest::newRow("a picture") << u"\U0001F600"_s << u"\U0001F600"_s;
        QTest::newRow("long") << QString(200, u'x') << QString(100, u'x');
        QTest::newRow("long, of four bytes each") << u"\U0001F600"_s.repeated(50) << u"\U0001F600"_s.repeated(25);
    }
    void titles_makeSafeNames()
    {
        QFETCH(QString, title);
        QTEST(SafeName(title), "name");
    }

    void longNames_keepWhatProgramsKnowThemBy()
    {
        QCOMPARE(FileNameOf(QString(300, u'x') + u".cpp"_s), QString(251, u'x') + u".cpp"_s);
        QCOMPARE(FileNameOf(QString(200, u'ä') + u".h"_s), QString(126, u'ä') + u".h"_s);
        QCOMPARE(FileNameOf(QString(300, u'.')), QString(254, u'.') + u"."_s);
    }

    void names_areGivenOnce()
    {
        UniqueNames exact(UniqueNames::Compare::Exactly);
        QCOMPARE(exact.Take(u"f"_s, u"a.b"_s), u"a.b"_s);
        QCOMPARE(exact.Take(u"f"_s, u"a.b"_s), u"a(1).b"_s);
        QCOMPARE(exact.Take(u"f"_s, u"A.b"_s), u"A.b"_s);
        QCOMPARE(exact.Take(u"g"_s, u"a.b"_s), u"a.b"_s);
        QCOMPARE(exact.Take(u"f"_s, u"a.b"_s), u"a(2).b"_s);
        const QString longest(255, u'x');
        QCOMPARE(exact.Take(u"f"_s, longest), longest);
        QCOMPARE(exact.Take(u"f"_s, longest), QString(252, u'x') + u"(1)"_s);
        UniqueNames folded(UniqueNames::Compare::Folded);
        const QStringList endings{u".md"_s, u".files"_s};
        QCOMPARE(folded.Take({}, u"A"_s, endings), u"A"_s);
        QCOMPARE(folded.Take({}, u"a"_s, endings), u"a(1)"_s);
        QCOMPARE(folded.Take({}, u"a.MD"_s, endings), u"a.MD(1)"_s);
        QCOMPARE(folded.Take({}, u"b.md"_s, endings), u"b.md"_s);
        QCOMPARE(folded.Take({}, u"b"_s, endings), u"b(1)"_s);
    }
};

QB_TEST_MAIN(TestPlainFolder)
#include "tst_plain_folder.moc"
