#pragma once

#include "exchange/BranchExport.h"
#include "exchange/BranchImport.h"
#include "maintenance/BackupFile.h"
#include "maintenance/ContentCheck.h"
#include "maintenance/LibraryBackup.h"
#include "maintenance/LibraryCheck.h"
#include "platform/archive/BrindletonZip.h"
#include "platform/dao/DBEngine.h"
#include "platform/system/Interims.h"
#include "removed/Keeping.h"
#include "removed/RemovedList.h"
#include "replication/ChangeFile.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaOpening.h"
#include "replication/SynchroFile.h"
#include "replication/Synchronization.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/Library.h"
#include "store/LibrarySwap.h"
#include "store/PendingFiles.h"
#include "store/PendingPages.h"
#include "support/FolderContents.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"
#include "web/DefaultPages.h"

#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace qb::test {

using namespace Qt::StringLiterals;

/// The commands that are attacked; a new one joins by its line. LIB stands for the library, CHILD for one that is the
/// child of another, MERGE for a folder with a mother and a child that are to be synchronized, DONE for one with the
/// mother after that, IN for a folder of files, OUT for a folder to write to.
struct AttackedCommand {
    const char* Name;
    const char* Arguments; ///< parted by blanks
    /// What is there afterwards is the same however often it is run: a second try must work, and leave nothing behind.
    bool MayBeRepeated = false;
};
inline constexpr AttackedCommand Commands[] = {
    {"add", "add LIB --parent 1 --title new --code IN/a.txt"},
    {"set", "set LIB 2 --title other --code IN/big.txt --status tested --rating 7"},
    {"move", "move LIB 2 3"},
    {"link", "link LIB 2 3 --two-way"},
    {"unlink", "unlink LIB 1 2"},
    {"delete", "delete LIB 1"},
    {"remove-deleted", "remove-deleted LIB", true},
    {"bookmark", "bookmark LIB 3 --group new --text here"},
    {"bookmark-remove", "bookmark-remove LIB 1"},
    {"attach", "attach LIB 2 IN/a.txt IN/big.txt"},
    {"attach zipped", "attach LIB 2 IN/a.txt IN/big.txt --zip all both"},
    {"detach", "detach LIB 1"},
    {"file describe", "file describe LIB 1 --description other"},
    {"extract", "extract LIB 1 OUT/taken"},
    {"import-folder", "import-folder LIB IN --parent 3"},
    {"colorize", "colorize LIB 2 --save"},
    {"replace", "find LIB two --replace zwei"},
    {"new", "new OUT/made.qbd --language cpp"},
    {"language export", "language export LIB OUT/words.qbl"},
    {"settings", "settings set ExpandBranches True"},
    {"backup", "backup LIB OUT/made.qbb", true},
    {"backup in volumes", "backup LIB OUT/made.qbb --volume 4000"},
    {"restore", "restore IN/b.qbb OUT/restored.qbd --replace", true},
    {"restore over", "restore IN/b.qbb LIB --replace", true},
    {"restore-item", "restore-item IN/b.qbb 2 LIB"},
    {"export", "export LIB 1 OUT/made.qbx"},
    {"export html", "export LIB 1 OUT/made.html"},
    {"export markdown", "export LIB 1 OUT/markdown --as markdown"},
    {"export files", "export LIB 1 OUT/files --as files"},
    {"import", "import LIB IN/e.qbx --parent 3"},
    {"page set", "page set LIB 2 IN/p.htm --with IN/pics"},
    {"page set anew", "page set LIB 3 IN/p.htm --with IN/pics"},
    {"page picture", "page picture LIB 2 IN/pic.gif"},
    {"page link", "page link LIB 3 example.org --text there"},
    {"page delete", "page delete LIB 2"},
    {"page export", "page export LIB 2 OUT/page"},
    {"page defaults", "page defaults OUT/made.qhd", true},
    {"compact", "compact LIB", true},
    {"undo-session", "undo-session LIB", true},
    {"removed restore", "removed restore LIB 20260101120000.1"},
    {"replica create", "replica create LIB OUT/made.qbr --description away"},
    {"replica open", "replica open IN/r.qbr OUT/restored.qbd --replace", true},
    {"replica export", "replica export CHILD OUT/made.qbs --again", true},
    {"replica forget", "replica forget LIB 1 --answer yes"},
    {"replica sync", "replica sync MERGE/mother.qbd MERGE/changes.qbs"},
    {"replica sync back", "replica sync MERGE/child.qbd MERGE/answer.qbs"},
    {"replica undo", "replica undo DONE/mother.qbd"},
    {"replica again", "replica again DONE/mother.qbd 1 OUT/made.qbs", true},
    {"conflicts resolve", "conflicts resolve DONE/mother.qbd 4 --keep older"},
    {"conflicts auto", "conflicts auto DONE/mother.qbd", true},
    {"conflicts discard", "conflicts discard DONE/mother.qbd", true},
};

/// What a user has: the rows without their moments, the stored files, what lies in the folder to write to,
/// and the settings.
using State = QMap<QString, QByteArray>;

/// How a command ended.
struct Attacked {
    int Status = -1; ///< below 0: killed
    QString Error;
    bool HasEnded = true; ///< in time
};

/// A small library with stored files and pages, and copies of it on which commands are run and attacked.
class AttackedLibrary {
public:
    AttackedLibrary() : m_pristine(m_home.Path(u"pristine"_s)), m_work(m_home.Path(u"work ö"_s)) { MakePristine(); }

    QString Path(const QString& name) const { return m_home.Path(name); }
    const QString& Work() const { return m_work; }
    const QString& Pristine() const { return m_pristine; }
    QString LibraryFile() const { return m_work + u"/lib.qbd"_s; }
    /// The library is as it was before any command.
    void Reset() const
    {
        CopyFolder(m_pristine, m_work);
        CopyFolder(m_home.Path(u"pristine log"_s), m_home.Path(u"log"_s));
    }

    static void CopyFolder(const QString& from, const QString& to)
    {
        QDir(to).removeRecursively();
        QDir().mkpath(to);
        const QMap<QString, QByteArray> all = ContentsOf(from);
        for (auto entry = all.begin(); entry != all.end(); ++entry) {
            if (entry.key().endsWith(u'/'))
                QDir(to).mkpath(entry.key());
            else
                WriteFile(to + u'/' + entry.key(), entry.value());
        }
    }

    void MakePristine() const
    {
        QDir().mkpath(m_pristine + u"/out"_s);
        WriteFile(m_pristine + u"/in/a.txt"_s, "int a;\r\n"_ba);
        WriteFile(m_pristine + u"/in/big.txt"_s, QByteArray("text of many lines\n").repeated(6000));
        const auto database = MakeLibrary(m_pristine + u"/lib.qbd"_s);
        const qint64 one = AddItem(*database, 0, u"one"_s, u"int one;"_s);
        AddItem(*database, one, u"two"_s, u"int two; // "_s + QString(9000, u'x'));
        AddItem(*database, 0, u"three"_s);
        database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (1, 2)"_s);
        database->Execute(u"INSERT INTO BookmarkGroups (\"Group\") VALUES ('old')"_s);
        database->Execute(u"INSERT INTO Bookmarks (CodeID, BookmarkGroup) VALUES (1, 1)"_s);
        AddStoredFile(*database, one, u"stored.bin"_s, QByteArray(20000, 's'), {});
        WriteFile(m_pristine + u"/in/p.htm"_s, "<img src=\"pics/n.png\">");
        WriteFile(m_pristine + u"/in/pics/deep/n.png"_s, QByteArray(9000, 'n'));
        WriteFile(m_pristine + u"/in/pic.gif"_s,
                  QByteArray::fromHex("47494638396101000100800000ffffff00000021f904010000"
                                      "00002c00000000010001000002024401003b"));
        WriteFile(database->HTMLFolder() + u"2.htm"_s, "<p><img src=\"2/pic.png\"></p>\r\n<!--End-->");
        for (const QString& name : {u"default.htm"_s, u"default2.htm"_s})
            WriteFile(database->HTMLFolder() + name, "<p></p>\r\n<!--End-->");
        WriteFile(database->HTMLFolder() + u"2/pic.png"_s, "picture");
        database->Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = 2"_s);
        for (const QString& folder : {database->FilesFolder(), database->HTMLFolder()})
            WriteFile(folder + u".library"_s, database->Identity().toUtf8());
        BackUpLibrary(database->Name(), m_pristine + u"/in/b.qbb"_s, {});
        ExportItems(*database, one, m_pristine + u"/in/e.qbx"_s);
        MakeReplicas();
        DBEngine::CompactDatabase(database->Name(), m_home.Path(u"start.qbd"_s));
        WriteFile(m_home.Path(u"pristine log/KTSStartupBackup.qbd"_s), ReadFile(m_home.Path(u"start.qbd"_s)));
        // What a backup and the start of the session don't have, and room that is not needed.
        CCodeItem four;
        four.Initialise(*database, QString::number(AddItem(*database, 0, u"four"_s, QString(300'000, u'y'))));
        four.SetCode({});
        four.SetItemChanged(true);
        four.Commit();
        AddStoredFile(*database, one, u"late.bin"_s, "late", {});
        RemoveOne(*database);
        MakeMother(*database, Date::FromParts(2026, 1, 1));
        const qint64 gone = AddItem(*database, 0, u"gone"_s, u"int gone;"_s);
        AddItem(*database, gone, u"left"_s);
        AddStoredFile(*database, gone, u"gone.bin"_s, "gone", {});
        database->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (3, ?), (?, 3)"_s, {gone, gone});
        database->Execute(u"UPDATE Items SET LastChanged = 0 WHERE ID = ?"_s, {gone}); // a child has deleted it
    }

    /// Something that can be brought back.
    static void RemoveOne(Library& library)
    {
        const FixedClock clock(Date::FromParts(2026, 1, 1, 12));
        const qint64 removed = AddItem(library, 0, u"removed"_s, u"int removed;"_s);
        AddStoredFile(library, removed, u"removed.bin"_s, QByteArray(20000, 'r'), {});
        WriteFile(library.HTMLFolder() + u"%1.htm"_s.arg(removed), "<p></p>");
        library.Execute(u"UPDATE Items SET HTMLPage = -1 WHERE ID = ?"_s, {removed});
        library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID) VALUES (3, ?)"_s, {removed});
        Kept(library, RemovalKind::DeletedByUser, {},
             [&](Keeping& keeping) { DeleteBranch(library, removed, NoWork(), keeping); });
    }

    /// A child with changes, and one in a transfer file.
    void MakeReplicas() const
    {
        QDir().mkpath(m_pristine + u"/child"_s);
        const auto child = MakeLibrary(m_pristine + u"/child/child.qbd"_s);
        MakeChild(*child, u"mother.qbd"_s, Date::FromParts(2026, 1, 1));
        AddStoredFile(*child, AddItem(*child, 0, u"changed"_s), u"new.bin"_s, QByteArray(20000, 'n'),
                      Date::FromParts(2026, 2, 1));
        const QString mother = m_home.Path(u"mother.qbd"_s);
        {
            const auto library = MakeLibrary(mother);
            AddStoredFile(*library, AddItem(*library, 0, u"hers"_s), u"hers.bin"_s, "hers", {});
        }
        GiveOutChild(mother, m_pristine + u"/in/r.qbr"_s);
        MakeMerges();
    }

    /// A mother and a child with changes on both sides, the child's in a file and the mother's answer to them in
    /// another.
    void MakeMerges() const
    {
        const QString folder = m_pristine + u"/merge/"_s;
        QDir().mkpath(folder);
        FixedClock clock(Date::FromParts(2026, 2, 1, 12));
        {
            const auto mother = MakeLibrary(folder + u"mother.qbd"_s);
            for (const QString& title : {u"kept"_s, u"edited"_s, u"deleted"_s, u"clash"_s, u"same"_s})
                AddStoredFile(*mother, AddItem(*mother, 0, title, u"int "_s + title), u"of "_s + title + u".bin"_s,
                              QByteArray(9000, 'k'), clock.Now());
            for (const QString& side : {mother->FilesFolder(), mother->HTMLFolder()})
                WriteFile(side + u".library"_s, mother->Identity().toUtf8());
        }
        GiveOutChild(folder + u"mother.qbd"_s, folder + u"child.qbr"_s);
        OpenReplica(folder + u"child.qbr"_s, folder + u"child.qbd"_s, RestoreOver::Refuse, {},
                    [](const QString&) { return false; });
        QFile::remove(folder + u"child.qbr"_s);
        ChangeForMerge(folder + u"child.qbd"_s, u"child"_s, clock);
        ChangeForMerge(folder + u"mother.qbd"_s, u"mother"_s, clock);
        clock.AddSeconds(60);
        WriteChanges(*Library::Open(folder + u"child.qbd"_s), folder + u"changes.qbs"_s, ExportAgain::No);
        clock.AddSeconds(60);
        const QString aside = m_home.Path(u"merge aside/"_s);
        CopyFolder(folder.chopped(1), aside.chopped(1));
        Synchronize(*Library::Open(aside + u"mother.qbd"_s), aside + u"changes.qbs"_s);
        WriteFile(folder + u"answer.qbs"_s, ReadFile(aside + u"changes.qbs"_s));
        const QString done = m_pristine + u"/done/"_s;
        CopyFolder(aside.chopped(1), done.chopped(1));
        // Where the file belongs that comes back.
        for (const QString& name : ContentsOf(done + u"mother_Undo"_s).keys()) {
            if (name.endsWith(u"state.json"_s)) {
                const QString state = done + u"mother_Undo/"_s + name;
                WriteFile(state, ReadFile(state).replace(aside.toUtf8(), (m_work + u"/done/"_s).toUtf8()));
            }
        }
    }
    static void ChangeForMerge(const QString& path, const QString& side, FixedClock& clock)
    {
        clock.AddSeconds(60);
        const auto library = Library::Open(path);
        const auto edit = [&](const QString& title, const QString& to) {
            CCodeItem item;
            item.Initialise(*library, library->QueryValue(u"SELECT ID FROM Items WHERE Title = ?"_s, {title}).ToText());
            item.SetTitle(to);
            item.SetItemChanged(true);
            item.Commit();
        };
        edit(u"clash"_s, u"clash of the "_s + side);
        AddFileAndPage(*library, library->QueryValue(u"SELECT ID FROM Items WHERE Title LIKE 'clash%'"_s).ToLong(),
                       side);
        edit(u"same"_s, u"the same"_s);
        if (side == u"child"_s)
            edit(u"edited"_s, u"edited by the child"_s);
        else
            DeleteItem(*library, library->QueryValue(u"SELECT ID FROM Items WHERE Title = 'deleted'"_s).ToLong());
        AddFileAndPage(*library, AddItem(*library, 0, u"new of the "_s + side), side);
    }
    static void AddFileAndPage(Library& library, qint64 item, const QString& side)
    {
        library.Execute(u"UPDATE Items SET LastChanged = ?1, HTMLPage = ?2, HTMLLastUpdated = ?1 WHERE ID = ?3"_s,
                        {library.NextStamp(), Value(true), item});
        WriteFile(library.HTMLFolder() + QString::number(item) + u".htm"_s, "<p>" + side.toUtf8() + "</p>");
        library.Execute(u"UPDATE Files SET LastUpdated = DateAdded WHERE ID = ?"_s,
                        {AddStoredFile(library, item, u"new.bin"_s, QByteArray(9000, side.front().toLatin1()),
                                       library.NextStamp())});
    }

    /// Runs a command with further environment variables.
    Attacked Run(const AttackedCommand& command, const QStringList& variables) const
    {
        return RunWith(ArgumentsOf(command), variables);
    }

    QStringList ArgumentsOf(const AttackedCommand& command) const
    {
        QStringList arguments = QString::fromLatin1(command.Arguments).split(u' ');
        for (QString& argument : arguments) {
            argument.replace(u"LIB"_s, m_work + u"/lib.qbd"_s).replace(u"CHILD"_s, m_work + u"/child/child.qbd"_s);
            argument.replace(u"MERGE/"_s, m_work + u"/merge/"_s).replace(u"DONE/"_s, m_work + u"/done/"_s);
            argument.replace(u"IN/"_s, m_work + u"/in/"_s).replace(u"OUT/"_s, m_work + u"/out/"_s);
            if (argument == u"IN"_s)
                argument = m_work + u"/in"_s;
        }
        return arguments;
    }

    Attacked RunWith(const QStringList& arguments, const QStringList& variables) const
    {
        QProcess process;
        QStringList environment = QProcess::systemEnvironment() + variables;
        environment << u"QUILLBASE_CONFIG_HOME="_s + m_work + u"/config"_s
                    << u"QUILLBASE_DATA_HOME="_s + m_home.Path(u"log"_s);
        process.setEnvironment(environment);
        process.start(qEnvironmentVariable("QUILLBASE_CLI"), arguments);
        if (!process.waitForStarted())
            return {.Status = -1, .Error = process.errorString(), .HasEnded = true};
        if (!process.waitForFinished(60000))
            return {.Status = -1, .Error = {}, .HasEnded = false};
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardError())};
    }

    /// The state after the next opening, and the next writing to a folder, of which nothing interim is left.
    static State Look(const QString& work)
    {
        State state;
        FinishSwap(work + u"/out/restored.qbd"_s);
        const auto database = Library::Open(work + u"/lib.qbd"_s);
        state[u"room"_s] = database->QueryValue(u"PRAGMA freelist_count"_s).ToLong() > 20 ? "some"_ba : "none"_ba;
        FinishPendingFiles(*database);
        FinishPendingPages(*database);
        for (const QString& folder : {u"/out"_s, u"/config"_s})
            RemoveStaleInterims(work + folder);
        const std::pair<QString, QString> tables[] = {
            {u"Items"_s, u"ID, ParentID, Title, Code, Notes, Example, CodeHeaders, ItemStatus, ItemRating, HTMLPage"_s},
            {u"BookmarkGroups"_s, u"ID, \"Group\""_s},
            {u"Bookmarks"_s, u"ID, CodeID, BookmarkGroup, Description"_s},
            {u"Files"_s, u"ID, CodeID, Title, Description, FileSize"_s},
            {u"ItemLinks"_s, u"ItemID, LinkItemID, Note"_s},
            {u"ChildCopies"_s, u"ShortDescr"_s},
            {u"Properties"_s, u"DBID, LanguageUsed"_s}};
        for (const auto& [table, columns] : tables) {
            Statement rows = database->Query(u"SELECT %1 FROM %2"_s.arg(columns, table));
            for (int row = 0; rows.Step(); ++row) {
                for (int i = 0; i < rows.ColumnCount(); ++i)
                    state[table + QString::number(row)] += rows.Column(i).ToBytes() + '|';
            }
        }
        state[u"exported"_s] = Library::Open(work + u"/child/child.qbd"_s)->LastExportedDate().IsNone() ? "no" : "yes";
        std::vector<LibraryFault> faults = CheckLibrary(*database);
        const ContentCheck contents = CheckContents(*database);
        faults.insert(faults.end(), contents.Faults.begin(), contents.Faults.end());
        for (const LibraryFault& fault : faults)
            state[u"fault"_s] += fault.Text.toUtf8();
        AddRemoved(work + u"/lib"_s, state);
        AddMerged(work + u"/merge/"_s, {u"mother"_s, u"child"_s}, {}, state);
        AddMerged(work + u"/done/"_s, {u"mother"_s}, u"done "_s, state);
        for (const QString& folder : {u"lib_Files"_s, u"lib_HTML"_s, u"out"_s, u"config"_s}) {
            const QMap<QString, QByteArray> all = ContentsOf(work + u'/' + folder);
            for (auto entry = all.begin(); entry != all.end(); ++entry) {
                const bool isInterim = folder != u"lib_Files"_s && IsInterim(entry.key());
                if (!isInterim)
                    state[folder + u'/' + entry.key()] = Contents(work + u'/' + folder + u'/' + entry.key(),
                                                                  entry.value());
            }
        }
        if (!state.contains(u"out/made.qbb.001"_s)) // without the first volume there is no backup
            state.removeIf([](const auto& entry) { return entry.key().startsWith(u"out/made.qbb."_s); });
        return state;
    }

    /// The libraries that are synchronized, with all that belongs to them, and whether the file fits the mother.
    static void AddMerged(const QString& folder, const QStringList& names, const QString& prefix, State& state)
    {
        for (const QString& file : names) {
            const QString name = prefix + file;
            const auto library = Library::Open(folder + file + u".qbd"_s);
            FinishPendingFiles(*library);
            FinishPendingPages(*library);
            for (const QString& table : {u"Items"_s, u"TempItems"_s, u"Files"_s, u"TempFiles"_s}) {
                if (library->TableExists(table))
                    state[name + table] =
                        Texts(*library, u"SELECT Title FROM %1 ORDER BY ID"_s.arg(table)).join(u'|').toUtf8();
            }
            for (const LibraryFault& fault : CheckLibrary(*library))
                state[name + u" fault"_s] += fault.Text.toUtf8();
            for (const LibraryFault& fault : CheckContents(*library).Faults)
                state[name + u" fault"_s] += fault.Text.toUtf8();
            for (const QString& side : {u"_Files"_s, u"_HTML"_s}) {
                const QMap<QString, QByteArray> all = ContentsOf(folder + file + side);
                for (auto entry = all.begin(); entry != all.end(); ++entry)
                    state[name + side + entry.key()] = entry.value();
            }
            for (const QString& kept : ContentsOf(folder + file + u"_Merged"_s).keys()) {
                if (kept != u".library"_s && !kept.endsWith(u".qbs"_s) && !IsInterim(kept) && !kept.startsWith(u'.'))
                    state[name + u" stray"_s] += kept.toUtf8();
            }
            AddRemoved(folder + file, state);
        }
        const QTemporaryDir scratch;
        const SynchroFacts facts = FactsOf(
            *DBEngine::OpenDatabase(UnpackSynchroFile(folder + u"changes.qbs"_s, scratch.path(), NoWork())));
        const auto mother = Library::Open(folder + u"mother.qbd"_s);
        state[prefix + u"changes.qbs"_s] = mother->QueryValue(u"SELECT LastSynchronized FROM ChildCopies"_s).ToDate()
                                                   == facts.LastSynchronized
                                               ? "fits"
                                               : "does not";
    }

    /// What is kept of removed items, whose names hold moments; nothing may be half kept, or on its way.
    static void AddRemoved(const QString& library, State& state)
    {
        const RemovedList list(library + u".qbd"_s);
        for (const QString& problem : list.Problems())
            state[u"removed, broken"_s] += problem.toUtf8();
        for (const ListedEvent& event : list.Events()) {
            for (const RemovedEntry& entry : event.Index.Entries)
                state[u"removed"_s] += entry.Title.toUtf8() + '|';
            state[u"removed"_s] += Contents(list.ItemsFile(event), {}) + ';';
        }
        for (const QString& name : ContentsOf(library + u"_Removed"_s).keys()) {
            if (name.startsWith(u".event"_s))
                state[u"removed, on its way"_s] += name.toUtf8();
        }
    }

    /// What is compared of a file: its bytes, or what is in it where the bytes hold moments or depend on the order of
    /// writing.
    static QByteArray Contents(const QString& path, const QByteArray& bytes)
    {
        try {
            if (path.endsWith(u".qbd"_s))
                return "library with faults: " + QByteArray::number(CheckLibrary(*Library::Open(path)).size());
            if (path.endsWith(u".qbx"_s)) {
                QByteArray outline;
                const UnpackedBranch branch(path);
                for (const OutlinedItem& item : branch.Items())
                    outline += item.Title.toUtf8() + ' ' + QByteArray::number(item.TextBytes + item.FileBytes) + '|';
                return outline;
            }
            if (path.endsWith(u".qhd"_s)) {
                const QTemporaryDir pages;
                ReadDefaultPages(path, pages.path() + u'/');
                return ContentsOf(pages.path()).keys().join(u'|').toUtf8();
            }
            if (path.endsWith(u".qbb"_s) || path.endsWith(u".qbb.001"_s) || path.endsWith(u".qbr"_s)) {
                const QTemporaryDir scratch;
                return CheckBackup(path, scratch.path(), NoWork()).Faults.join(u'|').toUtf8();
            }
            if (path.endsWith(u".zip"_s) || path.endsWith(u".qbs"_s))
                return BrindletonZip().ReadFirstFile(path, [](const QByteArray&) { return true; }) ? "whole" : "cut";
        } catch (const RuntimeError& error) {
            return error.what();
        }
        return QFileInfo(path).completeSuffix().startsWith(u"qbb."_s) ? "volume"_ba : bytes;
    }

    /// Also what is only remembered, not worth an error: which backups are checked.
    static bool IsInterim(const QString& name)
    {
        static const QRegularExpression volume(u"\\.qbb\\.\\d{3}$"_s);
        return name.startsWith(u'.') || name == u"CheckedBackups.json"
               || (name.count(u'.') > 1 && !volume.match(name).hasMatch());
    }

    /// What a command that was ended left beside the library, or where it was to write, after another one.
    QStringList LeftBehind() const
    {
        QStringList left;
        for (const QString& folder : {m_work, m_work + u"/out"_s})
            left += QDir(folder).entryList({u".*"_s}, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        return left;
    }

    /// A second try after an attack; says what is wrong, empty when nothing is.
    QString TryAgain(const AttackedCommand& command, const State& after) const
    {
        const Attacked outcome = Run(command, {});
        const State state = Look(m_work);
        const QStringList left = LeftBehind();
        if (outcome.Status == 0 && state == after && left.isEmpty())
            return {};
        return u"the second try: status %1, %2; differs in %3; leaves %4"_s.arg(outcome.Status)
            .arg(outcome.Error.trimmed(), Difference(after, state), left.join(u", "_s));
    }

    static QString Difference(const State& left, const State& right)
    {
        QStringList names;
        for (const QString& name : left.keys() + right.keys()) {
            if ((left.value(name) != right.value(name) || left.contains(name) != right.contains(name))
                && !names.contains(name))
                names << (right.contains(name) ? QString() : u"lacks "_s) + name + u": "_s
                             + QString::fromUtf8(right.value(name).left(60));
        }
        return names.join(u"; "_s);
    }

private:
    TemporaryHome m_home;
    QString m_pristine; ///< folder of the library as it is before a command
    QString m_work;     ///< folder of the one that is attacked
};

} // namespace qb::test
