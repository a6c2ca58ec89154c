#include "store/LibrarySwap.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QDir>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// A library that takes the place of another, and what the next opening does where that was not brought to its end.
class TestLibrarySwap : public QObject {
    Q_OBJECT

    std::optional<TemporaryHome> m_home;

    QString Path() const { return m_home->Path(u"büch.qbd"_s); }
    QStringList Titles() const { return Texts(*Library::Open(Path()), u"SELECT Title FROM Items"_s); }
    QStringList Names() const
    {
        return QDir(m_home->Path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    /// A whole library, with a stored file, for the place of the one that is there.
    static void MakeNew(const LibrarySwap& swap)
    {
        const auto library = MakeLibrary(swap.NewLibrary());
        AddStoredFile(*library, AddItem(*library, 0, u"new"_s), u"new.txt"_s, "new", {});
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        const auto library = MakeLibrary(Path());
        AddStoredFile(*library, AddItem(*library, 0, u"old"_s), u"old.txt"_s, "old", {});
    }
    void cleanup() { m_home.reset(); }

    void newLibrary_takesThePlaceWithItsFolders()
    {
        {
            LibrarySwap swap(Path());
            MakeNew(swap);
            swap.PutInPlace(LibrarySwap::Parts::WithFolders);
        }
        QCOMPARE(Titles(), QStringList{u"new"_s});
        QCOMPARE(ContentsOf(m_home->Path(u"büch_Files"_s)).value(u"1 - new.txt"_s), "new"_ba);
        QVERIFY(!QFile::exists(m_home->Path(u"büch_Files/1 - old.txt"_s)));
        QVERIFY(!QFile::exists(m_home->Path(u"büch_Files/.swap-mark"_s)));
    }

    void unfinishedPreparation_leavesWhatWasThere()
    {
        const QStringList before = Names();
        {
            LibrarySwap swap(Path());
            MakeNew(swap);
        }
        QCOMPARE(Names(), before);
        QCOMPARE(Titles(), QStringList{u"old"_s});
    }

    void markThatCouldNotBeRemoved_goesAtTheNextOpening()
    {
        WriteFile(m_home->Path(u"büch_Files/.swap-mark"_s), {});
        QCOMPARE(Titles(), QStringList{u"old"_s});
        QVERIFY(!QFile::exists(m_home->Path(u"büch_Files/.swap-mark"_s)));
    }

    void markOfASwapUnderWay_stays()
    {
        const LibrarySwap swap(Path());
        WriteFile(m_home->Path(u"büch_Files/.swap-mark"_s), {});
        QCOMPARE(Titles(), QStringList{u"old"_s});
        QVERIFY(QFile::exists(m_home->Path(u"büch_Files/.swap-mark"_s)));
    }
};

QB_TEST_MAIN(TestLibrarySwap)
#include "tst_library_swap.moc"
