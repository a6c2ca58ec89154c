#include "exchange/BranchExport.h"
#include "session/ItemExchange.h"
#include "store/ItemRules.h"
#include "support/FolderContents.h"
#include "support/RecordedWork.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Branches that travel, as the window's commands do it.
class TestItemExchange : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<ItemExchange> m_exchange;
    RecordedWork m_work;
    QString m_title; ///< of the work that was watched last

    QString Path(const QString& name) const { return s->Home.Path(name); }
    Library& Open() { return *s->State.CurrentDatabase; }
    void Export(const QString& title, const QString& file, const QString& message = {})
    {
        s->Click(title);
        s->Script.ExpectFileName(u"Export Data To File :"_s, file);
        if (!message.isEmpty())
            s->Script.ExpectMsgBox(message);
        s->CommandStates.Run(u"mnuExport"_s);
    }
    void Import(const QString& file)
    {
        s->Script.ExpectFileName(u"Import Data From File :"_s, file);
        s->CommandStates.Run(u"mnuImport"_s);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_work.Forget();
        s = std::make_unique<TestSession>();
        m_exchange = std::make_unique<ItemExchange>(s->State, s->CommandStates, s->Tree, s->View, s->Shell);
        m_exchange->Watched = [this](const QString& title, const std::function<void(Work&)>& body) {
            m_title = title;
            body(m_work);
        };
        const QString one = s->LibraryFile(u"one.qbd"_s, u"first"_s);
        {
            const auto library = Library::Open(one);
            AddItem(*library, 1, u"in/ner"_s, u"code"_s);
            AddItem(*library, 0, u"second"_s);
        }
        QVERIFY(s->Start(u"%1|One;"_s.arg(one)));
    }
    void cleanup()
    {
        m_exchange.reset();
        s.reset();
    }

    void branch_isExportedAndImported()
    {
        const QString file = Path(u"ast.qbx"_s);
        Export(u"first"_s, file);
        QCOMPARE(s->Script.Questions.last().Filter, u"KT Quillbase Export|*.qbx"_s);
        QCOMPARE(s->Script.Questions.last().Name, u"first.qbx"_s);
        QVERIFY(s->Script.Questions.last().Save);
        QVERIFY(m_work.Said.contains(u"1 Exporting Code Items...."_s));
        QCOMPARE(m_title, u"Export"_s);
        QCOMPARE(s->Shell.StatusText, QString());
        QCOMPARE(s->Shell.Progress.last(), (std::pair{0, 0}));
        QVERIFY(s->Shell.Progress.size() > 1);

        s->Click(u"second"_s);
        s->Script.ExpectFileName(u"Import Data From File :"_s, file);
        s->Script.ExpectMsgBox(ApplicationTitle);
        std::vector<PreviewedItem> previewed;
        m_exchange->ChooseBranches = [&](const std::vector<PreviewedItem>& items) {
            previewed = items;
            return QStringList();
        };
        s->CommandStates.Run(u"mnuImport"_s);
        QCOMPARE(s->Script.Messages.last().Text, u"Successfully imported 2 Code snippets."_s);
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Information);
        QCOMPARE(s->Script.Questions.last().Filter, u"KT Quillbase Export|*.qbx"_s);
        QCOMPARE(previewed.size(), size_t(2));
        QVERIFY(m_work.Said.contains(u"1 Importing Items...."_s));
        QCOMPARE(Texts(Open(), u"SELECT Title FROM Items WHERE ParentID = 3"_s), QStringList{u"first"_s});
        QCOMPARE(s->Selected(), u"first"_s);
        QCOMPARE(s->View.SelectedItem()->Parent->Text(), u"second"_s);
        QCOMPARE(s->State.oCodeItem->Key(), u"4"_s);
    }

    void nameThatIsProposed_isOneOfAFile()
    {
        Export(u"in/ner"_s, {});
        QCOMPARE(s->Script.Questions.last().Name, u"in_ner.qbx"_s);
    }

    void nameWithoutExtension_getsIt()
    {
        Export(u"first"_s, Path(u"ast"_s));
        QVERIFY(QFile::exists(Path(u"ast.qbx"_s)));
    }

    void root_isExportedWhole()
    {
        s->Select(s->View.Nodes().All().front().Text());
        s->Script.ExpectFileName(u"Export Data To File :"_s, Path(u"alles.qbx"_s));
        s->CommandStates.Run(u"mnuExport"_s);
        QCOMPARE(UnpackedBranch(Path(u"alles.qbx"_s)).Items().size(), size_t(3));
    }

    void exportThatFails_isTold()
    {
        Export(u"first"_s, Path(u"one.qbd"_s) + u"/x.qbx"_s, u"Export Error"_s);
        QVERIFY(s->Script.Messages.last().Text.startsWith(
            u"Item export was not successful. File was not created.\r\n\r\n"_s));
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Critical);
    }

    void exportThatIsStopped_leavesNothingAndSaysNothing()
    {
        m_work.Ends = [](qint64) { return true; };
        Export(u"first"_s, Path(u"ast.qbx"_s));
        QVERIFY(!QFile::exists(Path(u"ast.qbx"_s)));
    }

    void missingStoredFile_isTold()
    {
        const qint64 id = AddStoredFile(Open(), 1, u"lost.bin"_s, "x", {});
        QVERIFY(QFile::remove(Open().FilesFolder() + u"%1 - lost.bin"_s.arg(id)));
        Export(u"first"_s, Path(u"ast.qbx"_s), u"Export Error"_s);
        QVERIFY(s->Script.Messages.last().Text.contains(u"lost.bin"_s));
    }

    void importThatFails_changesNothing()
    {
        WriteFile(Path(u"kein.qbx"_s), "no export");
        const QString shape = s->Shape();
        s->Click(u"second"_s);
        s->Script.ExpectFileName(u"Import Data From File :"_s, Path(u"kein.qbx"_s));
        s->Script.ExpectMsgBox(u"Import Error"_s);
        s->CommandStates.Run(u"mnuImport"_s);
        QVERIFY(
            s->Script.Messages.last().Text.startsWith(u"Import of new items from the selected file failed.\r\n\r\n"_s));
        QCOMPARE(s->Shape(), shape);
        QCOMPARE(CountOf(Open(), u"Items"_s), 3);
    }

    void importThatIsStopped_changesNothing()
    {
        Export(u"first"_s, Path(u"ast.qbx"_s));
        m_work.Forget();
        m_exchange->ChooseBranches = [this](const std::vector<PreviewedItem>&) {
            m_work.Ends = [](qint64) { return true; };
            return QStringList();
        };
        Import(Path(u"ast.qbx"_s));
        QCOMPARE(CountOf(Open(), u"Items"_s), 3);
    }

    void placeThatTakesNothingAnyMore_isTold_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<Bar>("bar");
        QTest::newRow("orphan") << u"UPDATE Items SET Title = 'Orphaned Items' WHERE Title = 'second'"_s << Bar::Orphan;
        QTest::newRow("deleted by a child")
            << u"UPDATE Items SET LastChanged = 0 WHERE Title = 'second'"_s << Bar::Deleted;
    }
    void placeThatTakesNothingAnyMore_isTold() // it became so while the user looked at the preview
    {
        QFETCH(QString, change);
        QFETCH(Bar, bar);
        Export(u"first"_s, Path(u"ast.qbx"_s));
        MakeMother(Open(), Date());
        m_exchange->ChooseBranches = [this, &change](const std::vector<PreviewedItem>&) {
            Open().Execute(change);
            return QStringList();
        };
        s->Click(u"second"_s);
        s->Script.ExpectFileName(u"Import Data From File :"_s, Path(u"ast.qbx"_s));
        s->Script.ExpectMsgBox(u"Import Error"_s);
        s->CommandStates.Run(u"mnuImport"_s);
        QVERIFY(s->Script.Messages.last().Text.startsWith(u"Import of new items from the selected file failed."_s));
        QVERIFY(s->Script.Messages.last().Text.contains(SentenceOf(bar)));
        QCOMPARE(CountOf(Open(), u"Items"_s), 3);
    }

    void previewThatIsCancelled_importsNothing()
    {
        Export(u"first"_s, Path(u"ast.qbx"_s));
        m_exchange->ChooseBranches = [](const std::vector<PreviewedItem>&) -> std::optional<QStringList> { return {}; };
        Import(Path(u"ast.qbx"_s));
        QCOMPARE(CountOf(Open(), u"Items"_s), 3);
    }

    void chosenBranch_isImportedAlone()
    {
        Export(u"first"_s, Path(u"ast.qbx"_s));
        m_exchange->ChooseBranches = [](const std::vector<PreviewedItem>&) { return QStringList{u"2"_s}; };
        s->Click(u"second"_s);
        s->Script.ExpectFileName(u"Import Data From File :"_s, Path(u"ast.qbx"_s));
        s->Script.ExpectMsgBox(ApplicationTitle);
        s->CommandStates.Run(u"mnuImport"_s);
        QCOMPARE(s->Script.Messages.last().Text, u"Successfully imported 1 Code snippets."_s);
        QCOMPARE(s->Selected(), u"in/ner"_s);
    }

    void branch_isExportedForReaders_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("proposed");
        QTest::addColumn<QString>("made");
        QTest::newRow("page") << u"mnuExportHtml"_s << u"Export As Web Page :"_s << u"first.html"_s << u"x.html"_s;
        QTest::newRow("texts") << u"mnuExportMarkdown"_s << u"Export As Markdown To New Folder :"_s << u"first"_s
                               << u"x/first.md"_s;
        QTest::newRow("files") << u"mnuExportFiles"_s << u"Export As Files To New Folder :"_s << u"first"_s
                               << u"x/in_ner"_s;
    }
    void branch_isExportedForReaders()
    {
        QFETCH(QString, command);
        QFETCH(QString, title);
        QFETCH(QString, made);
        s->Click(u"first"_s);
        s->Script.ExpectFileName(title, Path(u"x"_s));
        s->Script.ExpectMsgBox(u"Operation Successful"_s);
        s->CommandStates.Run(command);
        QTEST(s->Script.Questions.last().Name, "proposed");
        QVERIFY(QFile::exists(Path(made)));
        QCOMPARE(m_work.Done.last(), 2);
    }

    void formForReadersThatFails_isTold()
    {
        WriteFile(Path(u"x/mine"_s), "mine");
        s->Click(u"first"_s);
        s->Script.ExpectFileName(u"Export As Files To New Folder :"_s, Path(u"x"_s));
        s->Script.ExpectMsgBox(u"Export Error"_s);
        s->CommandStates.Run(u"mnuExportFiles"_s);
        QVERIFY(s->Script.Messages.last().Text.contains(u"the folder is not empty"_s));
        QCOMPARE(ContentsOf(Path(u"x"_s)), (QMap<QString, QByteArray>{{u"mine"_s, "mine"}}));
    }

    void itemThatHasToStay_keepsAllFromGoingOn()
    {
        s->Click(u"first"_s);
        s->Tree.SaveItem = [] { return false; };
        for (const QString& command : {u"mnuExport"_s, u"mnuImport"_s, u"mnuExportHtml"_s})
            s->CommandStates.Run(command);
        QVERIFY(s->Script.Questions.isEmpty());
    }

    void noLibrary_nothingHappens()
    {
        s->Libraries.CloseDatabase();
        for (const QString& command : {u"mnuExport"_s, u"mnuImport"_s, u"mnuExportHtml"_s})
            s->CommandStates.Run(command);
        QVERIFY(s->Script.Questions.isEmpty());
    }
};

QB_TEST_MAIN(TestItemExchange)
#include "tst_item_exchange.moc"
