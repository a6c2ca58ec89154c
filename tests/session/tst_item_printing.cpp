#include "printing/PrintRequest.h"
#include "session/ItemPrinting.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

/// What a print component was given.
struct Given {
    QString Title;
    int Files = 0;
    QString PagePath;
    QString LibraryName;
    std::optional<QString> TypedCode;
};

class RecordingComponent : public PrintComponent {
public:
    RecordingComponent(QList<Given>& given, int& living) : m_given(given), m_living(living) { ++m_living; }
    ~RecordingComponent() override { --m_living; }
    void Print(const PrintRequest& request) override
    {
        m_given << Given{.Title = request.Item.Title(),
                         .Files = request.Item.PrintFiles().Count(),
                         .PagePath = request.PagePath,
                         .LibraryName = request.LibraryName,
                         .TypedCode = request.Typed.Code};
    }

private:
    QList<Given>& m_given;
    int& m_living;
};

} // namespace

/// The print commands of the window.
class TestItemPrinting : public QObject {
    Q_OBJECT

    std::unique_ptr<TestSession> s;
    std::unique_ptr<ItemPrinting> m_printing;
    qint64 m_item = 0;
    QList<Given> m_given;
    int m_components = 0;

    void AddFile(const QString& title)
    {
        AddStoredFile(*s->State.CurrentDatabase, m_item, title, "x"_ba, Date::FromParts(2026, 1, 1, 0, 0, 0));
    }
    bool Enabled() const
    {
        const bool button = s->Enabled(u"PRINT"_s);
        return button == s->Enabled(u"mnuFilePrint"_s) && button;
    }
    bool Disabled() const { return !s->Enabled(u"PRINT"_s) && !s->Enabled(u"mnuFilePrint"_s); }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_given.clear();
        s = std::make_unique<TestSession>();
        m_item = AddItem(s->OpenLibrary(), 0, u"item"_s);
        s->State.oCodeItem = std::make_unique<CCodeItem>();
        m_printing = std::make_unique<ItemPrinting>(s->State, s->CommandStates);
        m_printing->MakeComponent = [this] { return std::make_unique<RecordingComponent>(m_given, m_components); };
        s->Tree.FillTree();
    }
    void cleanup()
    {
        m_printing.reset();
        s.reset();
    }

    void commands_areThereForItemsOnly()
    {
        QVERIFY(Disabled());
        s->Click(u"item"_s);
        QVERIFY(Enabled());
        s->Click(u"Ali äs Library"_s);
        QVERIFY(Disabled());
        s->Click(u"item"_s);
        QVERIFY(Enabled());
    }

    void libraryThatCanOnlyBeRead_isPrinted()
    {
        s->Click(u"item"_s);
        ItemStanding standing = s->CommandStates.Standing();
        standing.ReadOnly = standing.Deleted = standing.Conflict = standing.Orphan = standing.IsChild = true;
        s->CommandStates.SetStanding(standing);
        QVERIFY(Enabled());
        standing.NoLibrary = true;
        s->CommandStates.SetStanding(standing);
        QVERIFY(Disabled());
    }

    void component_isGivenItemFilesAndPage()
    {
        AddFile(u"one"_s);
        s->Click(u"item"_s);
        m_printing->TypedTexts = [this] {
            return UnsavedTexts{.Item = m_item, .LastChanged = {}, .Code = u"typed"_s, .Notes = {}, .Usage = {}};
        };
        s->CommandStates.Run(u"PRINT"_s);
        QCOMPARE(m_given.size(), 1);
        QCOMPARE(m_given[0].Title, u"item"_s);
        QCOMPARE(m_given[0].Files, 1);
        QCOMPARE(m_given[0].PagePath, s->State.CurrentHTMLFolder() + QString::number(m_item) + u".htm"_s);
        QCOMPARE(m_given[0].LibraryName, u"Bäume und Äste"_s);
        QCOMPARE(m_given[0].TypedCode, u"typed"_s);
        QCOMPARE(m_components, 0); // it is released
    }

    void listOfFiles_isReleasedAndReadAnew()
    {
        s->Click(u"item"_s);
        s->CommandStates.Run(u"mnuFilePrint"_s);
        QCOMPARE(s->State.oCodeItem->PrintFiles().Count(), 0);
        AddFile(u"one"_s);
        s->CommandStates.Run(u"mnuFilePrint"_s);
        QCOMPARE(s->State.oCodeItem->PrintFiles().Count(), 0); // another list, not read
        AddFile(u"two"_s);
        s->CommandStates.Run(u"PRINT"_s);
        QCOMPARE(m_given.size(), 3);
        QCOMPARE(m_given[0].Files, 0);
        QCOMPARE(m_given[1].Files, 1);
        QCOMPARE(m_given[2].Files, 2);
    }

    void listThatCantBeRead_isReportedAndNothingPrinted()
    {
        s->Click(u"item"_s);
        s->State.CurrentDatabase->Execute(u"ALTER TABLE Files RENAME TO Gone"_s);
        s->Script.ExpectError();
        s->CommandStates.Run(u"PRINT"_s);
        QVERIFY(m_given.isEmpty());
        QCOMPARE(m_components, 0);
    }

    void printing_changesNothing()
    {
        s->Click(u"item"_s);
        const Date before = s->State.oCodeItem->LastChanged();
        s->CommandStates.Run(u"PRINT"_s);
        QVERIFY(!s->State.oCodeItem->Unsaved());
        QCOMPARE(s->State.oCodeItem->LastChanged(), before);
    }
};

QB_TEST_MAIN(TestItemPrinting)
#include "tst_item_printing.moc"
