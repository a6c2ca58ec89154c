#include "platform/system/RuntimeError.h"
#include "support/FileSizeLimit.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "web/LinkItems.h"
#include "web/PageEditing.h"
#include "web/PictureSize.h"

#include <QFile>
#include <QJsonDocument>
#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

QJsonArray Range(int number, int begin, int end)
{
    return {number, begin, end};
}

/// A page as the source view has it.
QString PlainLines(const QByteArray& page)
{
    QString text = PageBytes(page).Text();
    return text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
}

} // namespace

/// What lies between a page's file and the pane in which it is edited.
class TestPageEditing : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_path = m_home->Path(u"pages/17.htm"_s);
        m_calls.clear();
        m_answers.clear();
        m_failures.clear();
    }
    void cleanup() { m_prompts.reset(); }

    void pieces_keepTheBytesOfThePage()
    {
        WriteFile(m_path, "\xef\xbb\xbf<p>\xc3\xa4\xff</p>\r\nend");
        const EditedPage page(m_path);
        QCOMPARE(page.Text(0), u"<p>ä\ufffd</p>\r\nend"_s);
        QCOMPARE(page.Composed({Range(0, 0, 5), u"<b>\n€</b>"_s, Range(0, 5, 14)}),
                 "\xef\xbb\xbf<p>\xc3\xa4\xff<b>\r\n\xe2\x82\xac</b></p>\r\nend");
        for (const QJsonArray& wrong :
             {QJsonArray{Range(0, 0, 99)}, QJsonArray{Range(1, 0, 1)}, QJsonArray{Range(0, 3, 2)},
              QJsonArray{Range(0, -1, 2)}, QJsonArray{17}, QJsonArray{QJsonArray{0, 1}}})
            QB_VERIFY_RAISES(page.Composed(wrong), ErrorNumber::Internal);
    }

    void typedSource_keepsWhatIsTheSame_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("after");
        const QByteArray windows = "<meta charset=latin1>\x80\r\nb\r\n\xe4";
        QTest::newRow("in its middle") << windows << u"<meta charset=latin1>€\nü中\nä"_s
                                       << QByteArray("<meta charset=latin1>\x80\r\n\xfc&#20013;\r\n\xe4");
        QTest::newRow("a line more") << windows << u"<meta charset=latin1>€\nb\nc\nä"_s
                                     << QByteArray("<meta charset=latin1>\x80\r\nb\r\nc\r\n\xe4");
        QTest::newRow("nothing left") << windows << u""_s << QByteArray();
        QTest::newRow("mixed line ends") << QByteArray("a\r\nb\nc\rd") << u"a\nb\nc\nde"_s
                                         << QByteArray("a\r\nb\nc\rde");
        QTest::newRow("broken characters")
            << QByteArray("<meta charset=utf-8>\xff|\xfe") << u"<meta charset=utf-8>\ufffd+\ufffd"_s
            << QByteArray("<meta charset=utf-8>\xff+\xfe");
        QTest::newRow("half of a pair") << QByteArray("<meta charset=utf-8>\xf0\x9f\x98\x80")
                                        << u"<meta charset=utf-8>😁"_s
                                        << QByteArray("<meta charset=utf-8>\xf0\x9f\x98\x81");
    }
    void typedSource_keepsWhatIsTheSame()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, typed);
        WriteFile(m_path, before);
        EditedPage page(m_path);
        page.TakeText(before, typed);
        QTEST(page.Bytes(1), "after");
        page.TakeText(page.Bytes(1), PlainLines(before));
        if (!before.contains("c\rd") && !typed.isEmpty())
            QCOMPARE(page.Bytes(2), before);
    }

    void pageThatCantBeEdited_isRefused()
    {
        QB_VERIFY_RAISES(EditedPage(m_home->Path(u"none.htm"_s)), ErrorNumber::PathAccess);
        WriteFile(m_home->Path(u"secret.txt"_s), "secret");
        WriteFile(m_home->Path(u"pages/x"_s), "");
        QVERIFY(QFile::link(m_home->Path(u"secret.txt"_s), m_path));
        QB_VERIFY_RAISES(EditedPage{m_path}, ErrorNumber::PathAccess);
        QFile::remove(m_path);
        QFile large(m_path);
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(50 << 20));
        QB_VERIFY_RAISES(EditedPage{m_path}, ErrorNumber::ResourceExceeded);
    }

    void save_writesWhatThePaneSays()
    {
        PageEditing& editing = Open("<p>a</p>");
        QVERIFY(!editing.IsUnsaved());
        Tell("state", {{u"revision"_s, 3}});
        QVERIFY(editing.IsUnsaved());
        QVERIFY(
            Saved({{u"revision"_s, 3}, {u"isEmpty"_s, false}, {u"pieces"_s, QJsonArray{Range(0, 0, 3), u"b</p>"_s}}}));
        QCOMPARE(ReadFile(m_path), "<p>b</p>");
        QVERIFY(!editing.IsUnsaved());
        QVERIFY(editing.Outcome().IsChanged && !editing.Outcome().IsEmptied);
        QVERIFY(Saved({{u"revision"_s, 4}, {u"isEmpty"_s, true}, {u"pieces"_s, QJsonArray{}}}));
        QVERIFY(editing.Outcome().IsChanged && editing.Outcome().IsEmptied);
        QVERIFY(Saved({{u"revision"_s, 5}, {u"isEmpty"_s, false}, {u"pieces"_s, QJsonArray{Range(0, 0, 8)}}}));
        QVERIFY(!editing.Outcome().IsChanged);
    }

    void emptyPageThatIsNotChanged_isNotEmptied()
    {
        PageEditing& editing = Open("<p></p>");
        QVERIFY(Saved({{u"isEmpty"_s, true}, {u"pieces"_s, QJsonArray{Range(0, 0, 7)}}}));
        QVERIFY(!editing.Outcome().IsEmptied && !editing.Outcome().IsChanged);
    }

    void fullDisk_keepsTheFileAndSaysSo()
    {
        PageEditing& editing = Open("<p>a</p>");
        Tell("state", {{u"revision"_s, 1}});
        const FileSizeLimit limit(1000);
        QVERIFY(!Saved({{u"revision"_s, 1}, {u"pieces"_s, QJsonArray{QString(5000, u'x')}}}));
        QVERIFY(m_failures.value(0).contains(u"your text is still here"_s));
        QVERIFY(editing.IsUnsaved());
        QCOMPARE(ReadFile(m_path), "<p>a</p>");
        QCOMPARE(QDir(m_home->Path(u"pages"_s)).entryList(QDir::Files | QDir::Hidden), QStringList(u"17.htm"_s));
    }

    void pageThatBecomesTooLarge_isWrittenOnlyIfThatIsWanted()
    {
        PageEditing& editing = Open("<p>a</p>");
        const QString most(EditedPage::MostBytes, u'x');
        QVERIFY(Saved({{u"revision"_s, 1}, {u"pieces"_s, QJsonArray{most}}})); // which still can be edited
        EditedPage{m_path};
        const QJsonObject larger{{u"revision"_s, 2}, {u"pieces"_s, QJsonArray{most, u"y"_s}}};
        Tell("state", {{u"revision"_s, 2}});
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Cancel);
        QVERIFY(!Saved(larger));
        QVERIFY(m_prompts->Messages.last().Text.contains(u"larger than 8 MB"_s));
        QVERIFY(editing.IsUnsaved());
        QCOMPARE(QFileInfo(m_path).size(), EditedPage::MostBytes);
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Ok);
        QVERIFY(Saved(larger));
        QCOMPARE(QFileInfo(m_path).size(), EditedPage::MostBytes + 1);
        QVERIFY(Saved(larger)); // as it stands there: nobody is asked
    }

    void answerThatIsNone_writesNothing()
    {
        Open("<p>a</p>");
        QVERIFY(!Saved({{u"pieces"_s, QJsonArray{Range(7, 0, 1)}}}));
        QCOMPARE(m_failures.size(), 1);
        bool isSaved = true;
        m_editing->Save([&isSaved](bool done) { isSaved = done; });
        m_answers.takeLast()(QJsonValue(QJsonValue::Undefined)); // the pane has died
        QVERIFY(!isSaved);
        QCOMPARE(ReadFile(m_path), "<p>a</p>");
    }

    void closing_waitsForKeysButNotForEver()
    {
        PageEditing& editing = Open("<p>a</p>");
        int runs = 0;
        int marks = 0;
        const auto run = [&runs] { ++runs; };
        editing.SendMark = [&marks] { ++marks; };
        editing.AfterKeys(run);
        QCOMPARE(marks, 1);
        QCOMPARE(runs, 0);
        Tell("after_keys", {});
        Tell("after_keys", {});
        QCOMPARE(runs, 1);
        editing.AfterKeys(run);
        editing.Died();
        QCOMPARE(runs, 2);
        editing.AfterKeys(run); // and a pane that hangs while it opens
        QTRY_COMPARE(runs, 3);
        QVERIFY(!editing.IsSilent()); // nothing can be in it
        Tell("shown", {});
        editing.AfterKeys(run); // or later
        QTRY_COMPARE(runs, 4);
        QVERIFY(editing.IsSilent());
        Tell("after_keys", {});
        QVERIFY(!editing.IsSilent());
        editing.AfterKeys(run);
        QTRY_COMPARE(runs, 5);
        editing.Died(); // what it had told is there
        QVERIFY(!editing.IsSilent());
    }

    void fileThatSomebodyElseChanged_isNotWrittenOverUnasked()
    {
        Open("<p>a</p>");
        WriteFile(m_path, "<p>foreign</p>");
        const QJsonObject mine{{u"pieces"_s, QJsonArray{u"mine"_s}}};
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Cancel);
        QVERIFY(!Saved(mine));
        QCOMPARE(ReadFile(m_path), "<p>foreign</p>");
        m_prompts->ExpectMsgBox(ApplicationTitle, MsgBoxResult::Ok);
        QVERIFY(Saved(mine));
        QCOMPARE(ReadFile(m_path), "mine");
    }

    void fileThatBecameALink_isNotFollowed()
    {
        Open("<p>a</p>");
        WriteFile(m_home->Path(u"target"_s), "<p>a</p>");
        QVERIFY(QFile::remove(m_path) && QFile::link(m_home->Path(u"target"_s), m_path));
        QVERIFY(!Saved({{u"pieces"_s, QJsonArray{u"mine"_s}}}));
        QCOMPARE(ReadFile(m_home->Path(u"target"_s)), "<p>a</p>");
    }

    void paneThatDies_losesNothing()
    {
        PageEditing& editing = Open("<p>a</p>");
        Tell("state", {{u"revision"_s, 2}});
        Tell("kept", {{u"revision"_s, 2}, {u"pieces"_s, QJsonArray{u"<p>typed</p>"_s}}});
        editing.Died();
        QVERIFY(editing.IsUnsaved());
        m_calls.clear();
        Tell("ready", {});
        QCOMPARE(m_calls.value(0).first, u"open"_s);
        QCOMPARE(m_calls.value(0).second[u"text"_s].toString(), u"<p>typed</p>"_s);
        QCOMPARE(m_calls.value(0).second[u"base"_s].toInt(), 1);
        Tell("state", {{u"revision"_s, 0}});
        QVERIFY(editing.IsUnsaved());
        QVERIFY(Saved({{u"revision"_s, 0}, {u"pieces"_s, QJsonArray{Range(1, 0, 12)}}}));
        QCOMPARE(ReadFile(m_path), "<p>typed</p>");
    }

    void pageWithoutBody_isEditedAsSource()
    {
        const QByteArray frames = "<frameset cols='*'><frame src=a></frameset>";
        PageEditing& editing = Open(frames);
        bool isTold = false;
        editing.OnlySource = [&isTold] { isTold = true; };
        m_answers.takeLast()(false);
        QVERIFY(isTold);
        QString source;
        editing.AskForSource([&source](const QString& text) { source = text; });
        QCOMPARE(source, QString::fromUtf8(frames));
        editing.TakeSource(source.replace(u"src=a"_s, u"src=b"_s), [](bool) {});
        m_answers.takeLast()(false);
        QVERIFY(editing.IsUnsaved());
        bool isSaved = false;
        editing.Save([&isSaved](bool done) { isSaved = done; });
        QVERIFY(isSaved);
        QVERIFY(!editing.IsUnsaved());
        QCOMPARE(ReadFile(m_path), QByteArray(frames).replace("src=a", "src=b"));
    }

    void halvesOfCharacters_reachThePaneAsOnePlaceEach()
    {
        const QByteArray bytes("\xff\xfe"
                               "a\0\x00\xd8"
                               "b\0",
                               8);
        Open(bytes);
        QCOMPARE(m_calls.value(0).second[u"text"_s].toString(), u"a\ufffdb"_s);
        QVERIFY(Saved({{u"pieces"_s, QJsonArray{Range(0, 0, 3)}}}));
        QCOMPARE(ReadFile(m_path), bytes);
    }

    void pictureThatIsNone_isRefused()
    {
        Open("<p>a</p>");
        m_calls.clear();
        Tell("picture", {{u"name"_s, u"x.png"_s}, {u"data"_s, QString::fromLatin1(QByteArray("text").toBase64())}});
        QCOMPARE(m_failures.size(), 1);
        QVERIFY(m_calls.isEmpty());
        const QByteArray gif("GIF89a\x07\0\x05\0", 10);
        Tell("picture", {{u"name"_s, u"x.gif"_s}, {u"data"_s, QString::fromLatin1(gif.toBase64())}});
        QCOMPARE(m_calls.value(0).second[u"source"_s].toString(), u"17/x.gif"_s);
        QCOMPARE(ReadFile(m_home->Path(u"pages/17/x.gif"_s)), gif);
    }

    void lockedRatio_holds()
    {
        PictureSize size(400, 300);
        size.SetWidth(200);
        QCOMPARE(size.Height(), 150);
        size.SetHeight(75);
        QCOMPARE(size.Width(), 100);
        size.SetLocked(false);
        size.SetWidth(10);
        QCOMPARE(size.Height(), 75);
        size.SetLocked(true);
        QCOMPARE(size.Height(), 8);
        size.SetWidth(1);
        QCOMPARE(size.Height(), 1);
        size.SetHeight(99999999);
        QCOMPARE(size.Height(), PictureSize::Most);
        QCOMPARE(PictureSize(0, 0).Width(), 1);
    }

    void items_areFoundByWords()
    {
        const std::vector<LinkableItem> items{
            {1, u"Array list"_s, u"Java"_s}, {2, u"List"_s, u"C++"_s}, {3, u"Map"_s, u"C++"_s}};
        const auto ids = [&items](const QString& text, size_t most = 10) {
            QList<qint64> found;
            for (const LinkableItem& item : MatchingItems(items, text, most))
                found << item.ID;
            return found;
        };
        QCOMPARE(ids(u""_s), (QList<qint64>{1, 2, 3}));
        QCOMPARE(ids(u"list"_s), (QList<qint64>{2, 1}));
        QCOMPARE(ids(u"c++ LI"_s), QList<qint64>{2});
        QCOMPARE(ids(u"list"_s, 1), QList<qint64>{2});
        QCOMPARE(ids(u"x"_s), QList<qint64>());
        QCOMPARE(ItemAddress(17), u"local://Item17"_s);
    }

private:
    PageEditing& Open(const QByteArray& page)
    {
        WriteFile(m_path, page);
        m_editing = std::make_unique<PageEditing>(
            m_path, PageEditingTools{},
            [this](const QString& function, const QJsonValue& argument, const PageEditing::Answer& answer) {
                m_calls.append({function, argument.toObject()});
                if (answer)
                    m_answers << answer;
            });
        m_editing->Failed = [this](const QString& text) { m_failures << text; };
        Tell("ready", {});
        return *m_editing;
    }
    void Tell(const char* what, const QJsonObject& value) { m_editing->Told(QString::fromLatin1(what), value); }
    bool Saved(const QJsonObject& written)
    {
        bool isSaved = false;
        m_editing->Save([&isSaved](bool done) { isSaved = done; });
        m_answers.takeLast()(QString::fromUtf8(QJsonDocument(written).toJson()));
        return isSaved;
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    QString m_path;
    std::unique_ptr<PageEditing> m_editing;
    QList<std::pair<QString, QJsonObject>> m_calls;
    QList<PageEditing::Answer> m_answers;
    QStringList m_failures;
};

QB_TEST_MAIN(TestPageEditing)
#include "tst_page_editing.moc"
