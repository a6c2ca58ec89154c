#include "config/CSettings.h"
#include "platform/system/Paths.h"
#include "replication/ReplicaOpening.h"
#include "session/Replicas.h"
#include "session/Synchronizing.h"
#include "store/CCodeItem.h"
#include "support/LibraryState.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Synchronization files are taken in as the window's command does it.
class TestSynchronizing : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<Replicas> m_replicas;
    std::unique_ptr<Synchronizing> m_synchronizing;
    QString m_one;
    QString m_child;
    QString m_file;
    int m_previews = 0;

    QString Path(const QString& name) const { return s->Home.Path(name); }
    const Message& LastMessage() const { return s->Script.Messages.last(); }

    static void Rename(const QString& library, const QString& title)
    {
        const auto open = Library::Open(library);
        CCodeItem item;
        item.Initialise(*open, open->QueryValue(u"SELECT min(ID) FROM Items"_s).ToText());
        item.SetTitle(title);
        item.SetItemChanged(true);
        item.Commit();
    }
    QString Title(const QString& library) const
    {
        return Library::Open(library, DBEngine::Access::ReadOnly)
            ->QueryValue(u"SELECT Title FROM Items ORDER BY ID LIMIT 1"_s)
            .ToText();
    }
    void Export()
    {
        s->Time.AddSeconds(60);
        WriteChanges(*Library::Open(m_child), m_file, ExportAgain::No);
        s->Time.AddSeconds(60);
    }
    void Synchronize(const QStringList& captions)
    {
        s->Script.ExpectFileName(u"Select a synchronization file"_s, m_file);
        for (const QString& caption : captions)
            s->Script.ExpectMsgBox(caption);
        s->CommandStates.Run(u"mnuDBToolsSynchronizeItem"_s);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        m_replicas = std::make_unique<Replicas>(s->State, s->Shell, s->CommandStates, s->Libraries, s->Tree);
        m_synchronizing = std::make_unique<Synchronizing>(s->State, s->Shell, s->CommandStates, s->Libraries, s->Tree,
                                                          *m_replicas);
        m_previews = 0;
        m_synchronizing->ShowPreview = [this](const MergeReport&, bool&) {
            ++m_previews;
            return true;
        };
        m_one = s->LibraryFile(u"one.qbd"_s, u"first"_s);
        QVERIFY(s->Start(u"%1|One;"_s.arg(m_one)));
        s->Script.ExpectFileName(u"Select destination folder and file name of the new replica transfer file"_s,
                                 Path(u"child.qbr"_s));
        s->Script.ExpectInputBox(u"Short Description"_s, u"away"_s);
        s->Script.ExpectMsgBox(u"Replica Created"_s);
        s->CommandStates.Run(u"mnuDBToolsCreateReplicaItem"_s);
        QDir().mkpath(Path(u"away"_s));
        m_child = Path(u"away/child.qbd"_s);
        OpenReplica(Path(u"child.qbr"_s), m_child, RestoreOver::Refuse, {}, [](const QString&) { return false; });
        m_file = Path(u"changes.qbs"_s);
        s->Time.AddSeconds(60);
    }
    void cleanup()
    {
        m_synchronizing.reset();
        m_replicas.reset();
        s.reset();
    }

    void changesOfAChild_areTakenInAndShown()
    {
        Rename(m_child, u"by the child"_s);
        Export();
        s->Click(u"first"_s);
        Synchronize({u"Step 2 of 3 complete - Mother database successfully synchronized"_s});
        QCOMPARE(s->Script.Questions.last().Filter, u"Quillbase Synchro File|*.qbs"_s);
        QCOMPARE(
            LastMessage().Text,
            u"Current database have been seccessfully synchronized with %1.\r\n\r\nTo be able to work with the child "
            "database, which this synchronization file was created from, you first have to synchronize back the "
            "above mentioned file with the originating child database!!!"_s.arg(QDir::toNativeSeparators(m_file)));
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Information);
        QCOMPARE(m_previews, 1);
        QCOMPARE(s->OpenPath(), m_one);
        QCOMPARE(s->State.CurrentDatabase->QueryValue(u"SELECT Title FROM Items"_s).ToText(), u"by the child"_s);
        QCOMPARE(s->Shape(), u"One Library(by the child)"_s);
        QCOMPARE(s->State.oCodeItem->Title(), u"by the child"_s);
        QCOMPARE(s->Shell.StatusText, u"1 item changed"_s);
    }

    void itemThatIsGone_isShownNoMore()
    {
        {
            const auto child = Library::Open(m_child);
            CCodeItem item;
            item.Initialise(*child, u"1"_s);
            item.Delete();
            item.Commit();
        }
        AddItem(*Library::Open(m_child), 0, u"new"_s);
        Export();
        s->Click(u"first"_s);
        Synchronize({u"Step 2 of 3 complete - Mother database successfully synchronized"_s});
        QCOMPARE(s->Shape(), u"One Library(new)"_s);
        QVERIFY(!s->State.oCodeItem);
        QVERIFY(!s->Tree.WalksProblems());
    }

    void answer_freesTheChild()
    {
        Rename(m_child, u"by the child"_s);
        s->Time.AddSeconds(10);
        Rename(m_one, u"by the mother"_s);
        Export();
        Synchronize(
            {u"Step 2 of 3 complete - Mother database successfully synchronized"_s, u"Conflicts have occured"_s});
        QCOMPARE(LastMessage().Text,
                 u"There are some conflicting items after the synchronization.\r\nPlease be aware, that you have to "
                 "resolve all conflicts before you will be able to synchronize the mother database again with this or "
                 "any other replica."_s);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Child"_s);
        s->Libraries.SelectDatabase(m_child);
        QVERIFY(!s->Enabled(u"mnuDBToolsExportChangesItem"_s));
        QVERIFY(s->Enabled(u"mnuDBToolsSynchronizeItem"_s));
        Synchronize({u"Step 3 of 3 - Synchronization Complete"_s});
        QCOMPARE(LastMessage().Text, u"Current child database have been seccessfully synchronized with %1.\r\nAll "
                                     "restriction on the child database have been removed until you generate a new "
                                     "synchronization file."_s.arg(QDir::toNativeSeparators(m_file)));
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Information);
        QCOMPARE(Title(m_child), u"by the mother"_s);
        QCOMPARE(s->Shape(), u"Child Library(by the mother)"_s);
        QVERIFY(s->State.LastExportedDate().IsNone());
        QVERIFY(s->Enabled(u"mnuDBToolsExportChangesItem"_s));
        QVERIFY(!s->Enabled(u"mnuDBToolsSynchronizeItem"_s));
        QVERIFY(!QFile::exists(m_file));
    }

    void fileThatDidNotGoThroughTheMother_isAskedAbout()
    {
        Export();
        const QByteArray file = ReadFile(m_file);
        s->Script.ExpectInputBox(u"Include to Favourites List"_s, u"Child"_s);
        s->Libraries.SelectDatabase(m_child);
        Synchronize({u"Can't synchronize"_s, u"Synchronization not possible"_s});
        const Message question = s->Script.Messages[s->Script.Messages.size() - 2];
        QCOMPARE(question.Text,
                 u"The synchronization file has not been synchronized with the mother database yet. Please synchronize "
                 "with the mother database first.\r\nOn this place you can also decide to delete the synchro file and "
                 "thus not synchronize the child and the mother databases. Do you want to delete the synchro file from "
                 "your hard drive?"_s);
        QCOMPARE(question.Buttons, MsgBoxButtons::YesNo);
        QCOMPARE(question.Icon, MsgBoxIcon::Question);
        QCOMPARE(question.DefaultAnswer(), MsgBoxResult::Yes);
        QVERIFY(!s->State.LastExportedDate().IsNone());
    }

    void conflicts_areToldAndStandBeforeTheNextFile()
    {
        Rename(m_child, u"by the child"_s);
        s->Time.AddSeconds(10);
        Rename(m_one, u"by the mother"_s);
        Export();
        Synchronize(
            {u"Step 2 of 3 complete - Mother database successfully synchronized"_s, u"Conflicts have occured"_s});
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Exclamation);
        QVERIFY(s->Tree.WalksProblems()); // by red arrows
        QCOMPARE(s->Image(u"by the mother"_s), u"CONFLICT_ITEM"_s);
        int asked = 0;
        m_synchronizing->ResolvePendingConflicts = [&] {
            ++asked;
            return false;
        };
        s->CommandStates.Run(u"mnuDBToolsSynchronizeItem"_s);
        QCOMPARE(asked, 1);
    }

    void previewThatIsRefused_leavesEverything()
    {
        Rename(m_child, u"by the child"_s);
        Export();
        MergeReport seen;
        m_synchronizing->ShowPreview = [&](const MergeReport& report, bool& showAgain) {
            seen = report;
            showAgain = m_previews++ == 0;
            return false;
        };
        const auto before = StateOf(m_one);
        Synchronize({});
        QCOMPARE(seen.CountOf(MergeEvent::ItemChanged), 1);
        QCOMPARE(seen.Replica, u"away"_s);
        QCOMPARE(DifferenceOf(StateOf(m_one), before), QString());
        QVERIFY(s->State.moSettings->PreviewSynchronization());
        Synchronize({});
        QCOMPARE(Title(m_one), u"first"_s);
        QVERIFY(!s->State.moSettings->PreviewSynchronization());
        m_synchronizing->ShowPreview = [](const MergeReport&, bool&) -> bool { qFatal("it is switched off"); };
        Synchronize({u"Step 2 of 3 complete - Mother database successfully synchronized"_s});
        QCOMPARE(Title(m_one), u"by the child"_s);
    }

    void fileOfAnother_isNotPossible()
    {
        Export();
        {
            const auto child = Library::Open(m_one);
            child->Execute(u"DELETE FROM ChildCopies"_s);
            child->Execute(u"INSERT INTO ChildCopies (DBCopyID, LastSynchronized) VALUES ('other', 1)"_s);
        }
        const auto before = StateOf(m_one);
        Synchronize({u"Synchronization not possible"_s});
        QCOMPARE(LastMessage().Text,
                 u"It is not possible to synchronize the current database with the file selected."_s);
        QCOMPARE(LastMessage().Icon, MsgBoxIcon::Critical);
        QCOMPARE(DifferenceOf(StateOf(m_one), before), QString());
    }

    void fileThatWasTakenIn_isOld()
    {
        Export();
        Synchronize({u"Step 2 of 3 complete - Mother database successfully synchronized"_s});
        Synchronize({u"Old synchronization file"_s, u"Synchronization not possible"_s});
        QCOMPARE(s->Script.Messages[s->Script.Messages.size() - 2].Text,
                 u"This export file has already been synchronized with the mother database."_s);
    }
};

QB_TEST_MAIN(TestSynchronizing)
#include "tst_synchronizing.moc"
