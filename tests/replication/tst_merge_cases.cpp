#include "replication/ReplicaFamily.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

namespace {

using Family = ReplicaFamily;
using Deed = std::function<void(Family&)>;

/// What a library, or what travels, answers to a query; several rows are parted by a semicolon.
struct Answer {
    const char* Sql;
    const char* Expected;
};
using Answers = std::vector<Answer>;

/// What is done on either side, before the child exports and after it, and what each step makes of it.
struct Case {
    const char* Name;
    Deed Before;
    Answers Exported; ///< of the child's file
    Answers AtMother; ///< after she has taken it in
    Answers Returned; ///< of the file after that
    Answers AtChild;  ///< after it has taken it in
    Deed Between = {};
    QStringList Both = {}; ///< lines that both outlines have at the end
    bool EndEqual = true;  ///< what waits for a decision at the mother does not travel before
};

void DetachFrom(Family& f, const QString& path, qint64 file)
{
    f.In(path, [&](Library& library) {
        Transaction transaction(library);
        StoredFileDeletion deletion;
        deletion.Delete(library, file);
        transaction.Commit();
        deletion.Complete();
    });
}

void DescribeIn(Family& f, const QString& path, const QString& text)
{
    f.In(path, [&](Library& library) {
        library.Execute(u"UPDATE Files SET Description = ?, LastUpdated = ? WHERE ID = 1"_s,
                        {text, library.NextStamp()});
    });
}

void LinkIn(Family& f, const QString& path, qint64 from, qint64 to)
{
    f.In(path, [&](Library& library) {
        library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) "
                        "VALUES (?1, ?2, 'new', ?3, ?3)"_s,
                        {from, to, library.NextStamp()});
    });
}

void NoteIn(Family& f, const QString& path, const QString& note)
{
    f.In(path, [&](Library& library) {
        library.Execute(u"UPDATE ItemLinks SET Note = ?, DateUpdated = ? WHERE ItemID = 5"_s,
                        {note, library.NextStamp()});
    });
}

void UnlinkIn(Family& f, const QString& path)
{
    f.In(path, [](Library& library) { Family::Unlink(library, Family::X, Family::Y); });
}

constexpr const char* AllItems = "SELECT ID || ' ' || MotherRecordID || ' ' || Title FROM Items ORDER BY rowid";
constexpr const char* Verdicts =
    "SELECT Title || CASE WHEN IDChanged THEN ' renumbered' ELSE '' END || CASE WHEN ConflictItem THEN ' in conflict' "
    "ELSE '' END FROM Items ORDER BY rowid";
constexpr const char* X = "SELECT Title FROM Items WHERE ID = 5";
constexpr const char* Losers = "SELECT ID || ' ' || Title || CASE WHEN ReplicaOrigin THEN ' of the other' ELSE '' END "
                               "FROM TempItems ORDER BY ID";
constexpr const char* LaterThanStamp =
    "SELECT LastChanged > (SELECT LastSynchronized FROM Properties) FROM Items WHERE ID = 5";
constexpr const char* ParentOfX =
    "SELECT coalesce(p.Title, '/') FROM Items i LEFT JOIN Items p ON p.ID = i.ParentID WHERE i.Title LIKE 'X%'";
constexpr const char* DeletedItems = "SELECT ItemID FROM DeletedItems ORDER BY ItemID";
constexpr const char* DeletedFiles = "SELECT ItemID FROM DeletedFiles ORDER BY ItemID";
constexpr const char* DeletedLinks = "SELECT ItemID || ' ' || LinkItemID FROM DeletedItemLinks";
constexpr const char* AllFiles =
    "SELECT MotherRecordID || ' ' || MotherCodeID || ' ' || Title || ' ' || "
    "coalesce(length(File), 0) || ' ' || coalesce(Description, '') FROM Files ORDER BY rowid";
constexpr const char* FilesHere = "SELECT ID || ' ' || CodeID || ' ' || Title FROM Files ORDER BY ID";
constexpr const char* AllLinks =
    "SELECT MotherItemID || ' ' || MotherLinkItemID || CASE WHEN IDChanged THEN ' renumbered' ELSE '' END "
    "FROM ItemLinks";
constexpr const char* ExportedLinks = "SELECT ItemID || ' ' || LinkItemID FROM ItemLinks";
constexpr const char* LinksHere = "SELECT ItemID || ' ' || LinkItemID || ' ' || Note FROM ItemLinks ORDER BY ItemID";

std::vector<Case> ItemCases()
{
    return {
        {"changed on the child only",
         [](Family& f) { f.EditTitle(f.A(), Family::X, u"X by A"_s); },
         {{AllItems, "5 5 X by A"}},
         {{X, "X by A"}, {Losers, ""}},
         {{AllItems, ""}},
         {{X, "X by A"}, {LaterThanStamp, "0"}}},
        {"changed on the mother only",
         [](Family& f) { f.EditTitle(f.M(), Family::X, u"X by M"_s); },
         {{AllItems, ""}},
         {{X, "X by M"}, {Losers, ""}},
         {{Verdicts, "X by M"}},
         {{X, "X by M"}, {LaterThanStamp, "0"}}},
        {"changed on the mother after the export",
         {},
         {{AllItems, ""}},
         {{X, "X by M"}},
         {{Verdicts, "X by M"}},
         {{X, "X by M"}, // no change of the child's, a minute after the stamp
          {"SELECT LastChanged - (SELECT LastSynchronized FROM Properties) FROM Items WHERE ID = 5", "60"}},
         [](Family& f) { f.EditTitle(f.M(), Family::X, u"X by M"_s); }},
        {"changed on both, on the mother later",
         [](Family& f) {
             f.EditTitle(f.A(), Family::X, u"X by A"_s);
             f.EditTitle(f.M(), Family::X, u"X by M"_s);
         },
         {{AllItems, "5 5 X by A"}},
         {{X, "X by M"}, {Losers, "5 X by A of the other"}},
         {{Verdicts, "X by A in conflict;X by M"}},
         {{X, "X by M"}, {Losers, ""}, {LaterThanStamp, "0"}}},
        {"changed on both, on the child later",
         [](Family& f) {
             f.EditTitle(f.M(), Family::X, u"X by M"_s);
             f.EditTitle(f.A(), Family::X, u"X by A"_s);
         },
         {{AllItems, "5 5 X by A"}},
         {{X, "X by A"}, {Losers, "5 X by M"}},
         {{Verdicts, "X by A in conflict"}},
         {{X, "X by A"}, {Losers, ""}, {LaterThanStamp, "0"}}},
        {"changed on the mother, and on the child after its export",
         [](Family& f) { f.EditTitle(f.M(), Family::X, u"X by M"_s); },
         {{AllItems, ""}},
         {{X, "X by M"}},
         {{Verdicts, "X by M"}},
         {{X, "X by A"}, {Losers, "5 X by M of the other"}},
         [](Family& f) { f.EditTitle(f.A(), Family::X, u"X by A"_s); },
         {},
         false},
        {"changed on the child after its export, on the mother later",
         {},
         {{AllItems, ""}},
         {{X, "X by M"}},
         {{Verdicts, "X by M"}},
         {{X, "X by M"}, {Losers, "5 X by A"}},
         [](Family& f) {
             f.EditTitle(f.A(), Family::X, u"X by A"_s);
             f.EditTitle(f.M(), Family::X, u"X by M"_s);
         }},
        {"new on the child",
         [](Family& f) {
             f.Add(f.M(), 0, u"takes the number"_s);
             f.Add(f.A(), Family::Q, u"N"_s);
         },
         {{AllItems, "7 -1 N"}},
         {{"SELECT ID || ' ' || ParentID FROM Items WHERE Title = 'N'", "9 2"}},
         {{"SELECT ID || ' ' || MotherRecordID || ' ' || MotherParentID FROM Items WHERE IDChanged", "7 9 2"}},
         {{"SELECT ID || ' ' || ParentID || ' ' || MotherRecordID || ' ' || MotherParentID "
           "FROM Items WHERE Title = 'N'",
           "7 2 9 2"}}},
        {"new on the mother",
         [](Family& f) {
             f.Add(f.A(), 0, u"takes the number"_s);
             f.Add(f.M(), Family::Q, u"N"_s);
         },
         {{AllItems, "7 -1 takes the number"}},
         {{"SELECT ID FROM Items WHERE Title = 'N'", "7"}},
         {{"SELECT MotherRecordID || ' ' || MotherParentID FROM Items WHERE NOT IDChanged", "7 2"}},
         {{"SELECT ID || ' ' || ParentID || ' ' || MotherRecordID || ' ' || MotherParentID "
           "FROM Items WHERE Title = 'N'",
           "9 2 7 2"}}},
        {"moved on the child",
         [](Family& f) { f.Move(f.A(), Family::X, Family::Q); },
         {{AllItems, "5 5 X"}},
         {{ParentOfX, "Q"}},
         {{AllItems, ""}},
         {{ParentOfX, "Q"}}},
        {"moved on the child below what the mother has deleted",
         [](Family& f) {
             f.Move(f.A(), Family::X, Family::Q);
             f.Delete(f.M(), Family::Q);
         },
         {{AllItems, "5 5 X"}},
         {{ParentOfX, "Orphaned Items"}},
         {{"SELECT MotherParentID FROM Items WHERE ID = 5 AND IDChanged", "-2"}},
         {{ParentOfX, "Orphaned Items"}}},
    };
}

std::vector<Case> DeletedItemCases()
{
    return {
        {"deleted on the child",
         [](Family& f) { f.Delete(f.A(), Family::X); },
         {{AllItems, ""}, {DeletedItems, "5"}},
         {{X, ""}, {FilesHere, ""}, {LinksHere, ""}},
         {{AllItems, ""}, {DeletedItems, ""}},
         {{X, ""}, {DeletedItems, ""}}},
        {"deleted on the child, then changed on the mother",
         [](Family& f) {
             f.Delete(f.A(), Family::X);
             f.EditTitle(f.M(), Family::X, u"X by M"_s);
         },
         {{DeletedItems, "5"}},
         {{X, "X by M"},
          {"SELECT LastChanged FROM Items WHERE ID = 5", "0"},
          {ParentOfX, "P2"},
          {"SELECT Info LIKE '% - Original location of this item was: //F/P2%' FROM Items WHERE ID = 5", "1"},
          {FilesHere, "1 5 f Ü.bin"}},
         {{AllItems, ""}, {AllFiles, ""}},
         {{X, ""}},
         {},
         {},
         false},
        {"deleted on the child with what is above, then changed on the mother",
         [](Family& f) {
             f.Delete(f.A(), Family::F);
             f.EditTitle(f.M(), Family::X, u"X by M"_s);
         },
         {{DeletedItems, "3;4;5"}},
         {{X, "X by M"},
          {ParentOfX, "Orphaned Items"},
          {"SELECT LastChanged FROM Items WHERE ID = 5", "0"},
          {"SELECT Title FROM Items WHERE ID IN (3, 4)", ""}},
         {{AllItems, ""}},
         {{X, ""}},
         {},
         {},
         false},
        {"deleted on the child, a file added on the mother",
         [](Family& f) {
             f.Delete(f.A(), Family::X);
             f.AttachTo(f.M(), Family::X, u"new.txt"_s, "new");
         },
         {{DeletedItems, "5"}},
         {{X, "X"},
          {"SELECT LastChanged FROM Items WHERE ID = 5", "0"},
          {FilesHere, "1 5 f Ü.bin;2 5 new.txt"},
          {"SELECT Info LIKE 'Record was not deleted during synchronization because it contains at least one file, %' "
           "FROM Items WHERE ID = 5",
           "1"}},
         {{AllItems, ""}, {AllFiles, ""}},
         {{X, ""}, {FilesHere, ""}},
         {},
         {},
         false},
        {"deleted on the mother",
         [](Family& f) { f.Delete(f.M(), Family::X); },
         {{AllItems, ""}, {DeletedItems, ""}},
         {{X, ""}},
         {{AllItems, ""}, {DeletedItems, "5"}},
         {{X, ""}, {FilesHere, ""}, {LinksHere, ""}}},
        {"changed on the child, then deleted on the mother",
         [](Family& f) {
             f.EditTitle(f.A(), Family::X, u"X by A"_s);
             f.Delete(f.M(), Family::X);
         },
         {{AllItems, "5 5 X by A"}},
         {{X, ""}, {"SELECT ID FROM Items WHERE Title = 'X by A'", ""}},
         {{AllItems, ""}, {DeletedItems, "5"}},
         {{X, ""}}},
        {"deleted on the mother, then changed on the child",
         [](Family& f) {
             f.Delete(f.M(), Family::X);
             f.EditTitle(f.A(), Family::X, u"X by A"_s);
         },
         {{AllItems, "5 5 X by A"}},
         {{"SELECT ID || ' ' || ParentID || ' ' || LastChanged FROM Items WHERE Title = 'X by A'", "8 4 0"}},
         {{"SELECT ID || ' ' || MotherRecordID || ' ' || (IDChanged <> 0) FROM Items", "5 8 1"}, {DeletedItems, ""}},
         {{"SELECT ID || ' ' || MotherRecordID FROM Items WHERE Title = 'X by A'", "5 8"}, {FilesHere, "1 5 f Ü.bin"}},
         {},
         {},
         false},
    };
}

std::vector<Case> FileCases()
{
    return {
        {"file described on the child",
         [](Family& f) { DescribeIn(f, f.A(), u"by A"_s); },
         {{AllFiles, "1 5 f Ü.bin 0 by A"}},
         {{"SELECT Description FROM Files", "by A"}},
         {{AllFiles, ""}},
         {{"SELECT Description FROM Files", "by A"}},
         {},
         {u"X > f Ü.bin | by A | file f"_s}},
        {"file described on the mother",
         [](Family& f) { DescribeIn(f, f.M(), u"by M"_s); },
         {{AllFiles, ""}},
         {{"SELECT Description FROM Files", "by M"}},
         {{AllFiles, "1 5 f Ü.bin 0 by M"}},
         {{"SELECT Description FROM Files", "by M"}},
         {},
         {u"X > f Ü.bin | by M | file f"_s}},
        {"file described on the child that the mother deletes",
         [](Family& f) {
             DescribeIn(f, f.A(), u"by A"_s);
             DetachFrom(f, f.M(), 1);
         },
         {{AllFiles, "1 5 f Ü.bin 0 by A"}},
         {{FilesHere, ""}},
         {{DeletedFiles, "1"}},
         {{FilesHere, ""}}},
        {"file new on the child",
         [](Family& f) {
             f.AttachTo(f.M(), Family::P, u"takes the number"_s, "other");
             f.AttachTo(f.A(), Family::Q, u"new.txt"_s, "by A");
         },
         {{"SELECT ID || ' ' || MotherCodeID || ' ' || CAST(File AS TEXT) FROM Files", "2 2 by A"}},
         {{"SELECT ID || ' ' || CodeID FROM Files WHERE Title = 'new.txt'", "3 2"}},
         {{"SELECT ID || ' ' || MotherRecordID || ' ' || coalesce(length(File), 0) FROM Files WHERE IDChanged",
           "2 3 0"}},
         {{"SELECT ID || ' ' || MotherRecordID || ' ' || MotherCodeID FROM Files WHERE Title = 'new.txt'", "2 3 2"}},
         {},
         {u"Q > new.txt |  | by A"_s}},
        {"file new on the mother",
         [](Family& f) {
             f.AttachTo(f.A(), Family::P, u"takes the number"_s, "other");
             f.AttachTo(f.M(), Family::Q, u"new.txt"_s, "by M");
         },
         {{"SELECT Title FROM Files", "takes the number"}},
         {{"SELECT ID || ' ' || CodeID FROM Files WHERE Title = 'new.txt'", "2 2"}},
         {{"SELECT MotherRecordID || ' ' || MotherCodeID || ' ' || CAST(File AS TEXT) FROM Files WHERE NOT IDChanged",
           "2 2 by M"}},
         {{"SELECT ID || ' ' || MotherRecordID || ' ' || MotherCodeID FROM Files WHERE Title = 'new.txt'", "3 2 2"}},
         {},
         {u"Q > new.txt |  | by M"_s}},
        {"file deleted on the child",
         [](Family& f) { DetachFrom(f, f.A(), 1); },
         {{DeletedFiles, "1"}},
         {{FilesHere, ""}},
         {{DeletedFiles, ""}},
         {{FilesHere, ""}}},
        {"file deleted on the child, then described on the mother",
         [](Family& f) {
             DetachFrom(f, f.A(), 1);
             DescribeIn(f, f.M(), u"by M"_s);
         },
         {{DeletedFiles, "1"}},
         {{FilesHere, "1 5 f Ü.bin"}},
         {{"SELECT Title || ' ' || CAST(File AS TEXT) FROM Files", "f Ü.bin file f"}},
         {{"SELECT CodeID || ' ' || MotherRecordID FROM Files", "5 1"}},
         {},
         {u"X > f Ü.bin | by M | file f"_s}},
        {"file deleted on the mother",
         [](Family& f) { DetachFrom(f, f.M(), 1); },
         {{DeletedFiles, ""}},
         {{FilesHere, ""}},
         {{DeletedFiles, "1"}},
         {{FilesHere, ""}}},
    };
}

std::vector<Case> LinkCases()
{
    return {
        {"link new on the child",
         [](Family& f) { LinkIn(f, f.A(), Family::P, Family::Q); },
         {{ExportedLinks, "1 2"}},
         {{LinksHere, "1 2 new;5 6 old"}},
         {{AllLinks, ""}},
         {{LinksHere, "1 2 new;5 6 old"},
          {"SELECT MotherItemID || ' ' || MotherLinkItemID FROM ItemLinks WHERE ItemID = 1", "1 2"}}},
        {"link from what is new on the child",
         [](Family& f) {
             f.Add(f.M(), 0, u"takes the number"_s);
             LinkIn(f, f.A(), f.Add(f.A(), 0, u"N"_s), Family::Q);
         },
         {{ExportedLinks, "7 2"}},
         {{LinksHere, "5 6 old;9 2 new"}},
         {{AllLinks, "9 2 renumbered"}},
         {{"SELECT MotherItemID || ' ' || MotherLinkItemID FROM ItemLinks WHERE ItemID = 7", "9 2"}}},
        {"link new on the mother",
         [](Family& f) { LinkIn(f, f.M(), Family::P, Family::Q); },
         {{ExportedLinks, ""}},
         {{LinksHere, "1 2 new;5 6 old"}},
         {{AllLinks, "1 2"}},
         {{LinksHere, "1 2 new;5 6 old"},
          {"SELECT MotherItemID || ' ' || MotherLinkItemID FROM ItemLinks WHERE ItemID = 1", "1 2"}}},
        {"note of a link changed on the child",
         [](Family& f) { NoteIn(f, f.A(), u"by A"_s); },
         {{ExportedLinks, ""}},
         {{LinksHere, "5 6 old"}},
         {{AllLinks, ""}},
         {{LinksHere, "5 6 by A"}}},
        {"note of a link changed on the mother",
         [](Family& f) { NoteIn(f, f.M(), u"by M"_s); },
         {{ExportedLinks, ""}},
         {{LinksHere, "5 6 by M"}},
         {{AllLinks, ""}},
         {{LinksHere, "5 6 old"}}},
        {"link deleted on the child, its note then changed on the mother",
         [](Family& f) {
             UnlinkIn(f, f.A());
             NoteIn(f, f.M(), u"by M"_s);
         },
         {{DeletedLinks, "5 6"}},
         {{LinksHere, ""}},
         {{DeletedLinks, ""}},
         {{LinksHere, ""}}},
        {"link deleted on the mother",
         [](Family& f) { UnlinkIn(f, f.M()); },
         {{DeletedLinks, ""}},
         {{LinksHere, ""}},
         {{DeletedLinks, "5 6"}},
         {{LinksHere, ""}}},
    };
}

const std::vector<Case>& Cases()
{
    static const std::vector<Case> all = [] {
        std::vector<Case> cases;
        for (const auto& part : {ItemCases(), DeletedItemCases(), FileCases(), LinkCases()})
            cases.insert(cases.end(), part.begin(), part.end());
        return cases;
    }();
    return all;
}

/// What an answer is instead of the expected one, empty where it is that.
QString Wrong(Database& database, const Answers& answers)
{
    for (const Answer& answer : answers) {
        const QString sql = QString::fromUtf8(answer.Sql);
        const bool hasTable = !sql.contains(u"FROM TempItems"_s) || database.TableExists(u"TempItems"_s);
        const QString actual = hasTable ? Texts(database, sql).join(u';') : QString();
        if (actual != QString::fromUtf8(answer.Expected))
            return u"%1\n  is:       %2\n  expected: %3"_s.arg(sql, actual, QString::fromUtf8(answer.Expected));
    }
    return {};
}

} // namespace

/// Each kind of change, through the three steps of a round.
class TestMergeCases : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { FailOnWarnings(); }

    void change_goesThroughAllSteps_data()
    {
        QTest::addColumn<int>("index");
        for (size_t i = 0; i < Cases().size(); ++i)
            QTest::newRow(Cases()[i].Name) << int(i);
    }
    void change_goesThroughAllSteps()
    {
        QFETCH(int, index);
        const Case& one = Cases()[size_t(index)];
        Family f;
        if (one.Before)
            one.Before(f);
        f.ExportOf(f.A());
        QCOMPARE(Wrong(*f.Unpack(), one.Exported), QString());
        if (one.Between)
            one.Between(f);
        const SyncResult mother = f.TakeIn(f.M());
        QVERIFY(mother.Done && mother.Report.Faults.empty());
        QCOMPARE(Wrong(*Library::Open(f.M()), one.AtMother), QString());
        QCOMPARE(Wrong(*f.Unpack(), one.Returned), QString());
        const SyncResult child = f.TakeIn(f.A());
        QVERIFY(child.Done && child.Report.Faults.empty());
        QCOMPARE(Wrong(*Library::Open(f.A()), one.AtChild), QString());
        QVERIFY(Library::Open(f.A())->LastExportedDate().IsNone());
        for (const QString& line : one.Both) {
            QCOMPARE(Family::Outline(f.M()).filter(line).size(), 1);
            QCOMPARE(Family::Outline(f.A()).filter(line).size(), 1);
        }
        if (one.EndEqual)
            QCOMPARE(Family::Outline(f.A()), Family::Outline(f.M()));
    }
};

QB_TEST_MAIN(TestMergeCases)
#include "tst_merge_cases.moc"
