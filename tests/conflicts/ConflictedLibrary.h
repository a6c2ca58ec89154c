#pragma once

#include "conflicts/CConflict.h"
#include "store/CDBCreate.h"
#include "store/CFileObject.h"
#include "support/LibraryBuilder.h"
#include "support/LibraryState.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

#include <QDir>

namespace qb::test {

using namespace Qt::StringLiterals;

/// The texts of one version.
struct VersionTexts {
    QString Title = u"item Ü"_s;
    QString Description = u"described"_s;
    QString Info = u"info"_s;
    QString Code = u"{\\rtf1 int a;}"_s;
    QString Notes = u"{\\rtf1 notes}"_s;
    QString Usage = u"{\\rtf1 use}"_s;
    Date Changed = {};
    bool HasPage = false;
    Date PageUpdated = {};
};

/// A mother with temporary tables, as a merge leaves them, and an hour since her child was synchronized.
struct ConflictedLibrary {
    ConflictedLibrary()
    {
        QDir().mkpath(Home.Path(u"Mütter"_s));
        Db = MakeLibrary(Path);
        Synchronized = Clock.Now();
        MakeMother(*Db, Synchronized);
        CDBCreate().CreateTemporaryTablesInMainDB(*Db);
        Clock.AddSeconds(3600);
        Reopen();
    }
    void Reopen()
    {
        Db.reset();
        Db = Library::Open(Path);
    }

    Date At(qint64 seconds) const { return Date::FromSeconds(Synchronized.Seconds() + seconds); }

    /// Adds an item with both versions; its ID. The library's own was changed at 1000, the other one at 2000, unless
    /// they say otherwise.
    qint64 AddConflict(VersionTexts own, VersionTexts other, qint64 parent = 0)
    {
        own.Changed = own.Changed.IsNone() ? At(1000) : own.Changed;
        other.Changed = other.Changed.IsNone() ? At(2000) : other.Changed;
        const qint64 id = AddItem(*Db, parent, own.Title);
        Db->Execute(
            u"UPDATE Items SET Description = ?, Info = ?, Code = ?, Notes = ?, Example = ?, LastChanged = ?, "
            "HTMLPage = ?, HTMLLastUpdated = ? WHERE ID = ?"_s,
            {own.Description, own.Info, own.Code, own.Notes, own.Usage, own.Changed, own.HasPage, own.PageUpdated, id});
        AddTempItem(id, other, parent);
        return id;
    }
    void AddTempItem(qint64 id, const VersionTexts& other, qint64 parent)
    {
        Db->Execute(u"INSERT INTO TempItems (ID, Title, Description, Info, Created, LastChanged, ItemStatus, Code, "
                    "CodeHeaders, Notes, Example, UsageHeaders, HTMLPage, HTMLLastUpdated, ParentID, ReplicaOrigin, "
                    "ReplicaRecordID) VALUES (?, ?, ?, ?, ?, ?, 0, ?, 0, ?, ?, 0, ?, ?, ?, -1, ?)"_s,
                    {id, other.Title, other.Description, other.Info, Synchronized, other.Changed, other.Code,
                     other.Notes, other.Usage, other.HasPage, other.PageUpdated, parent, id + 1000});
    }

    /// A stored file of the library's own version; its ID.
    qint64 AddFile(qint64 item, const QString& title, const QByteArray& bytes, Date added, const QString& text = {})
    {
        const qint64 id = AddStoredFile(*Db, item, title, bytes, added);
        Db->Execute(u"UPDATE Files SET Description = ?, LastUpdated = DateAdded WHERE ID = ?"_s, {text, id});
        return id;
    }
    /// One of the other version, as it comes out of a file of changes; its ID in `TempFiles`.
    qint64 AddTempFile(qint64 item, const QString& title, const Value& bytes, Date added, const QString& text = {})
    {
        Db->Execute(u"INSERT INTO TempFiles (CodeID, Title, File, OrigDateTime, DateAdded, FileSize, Description, "
                    "LastUpdated) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"_s,
                    {item, title, bytes, At(-5000), added, bytes.ToBytes().size(), text, added});
        return Db->QueryValue(u"SELECT max(ID) FROM TempFiles"_s).ToLong();
    }
    void AddTempPage(qint64 item, const QString& name, const QString& folder, const QByteArray& bytes)
    {
        Db->Execute(u"INSERT INTO TempHTMLFiles (ItemIDRef, Name, Folder, File) VALUES (?, ?, ?, ?)"_s,
                    {item, name, folder, bytes});
    }
    /// Gives the library's own version a page with a picture.
    void AddPage(qint64 item, const QByteArray& page)
    {
        WriteFile(Db->HTMLFolder() + QString::number(item) + u".htm"_s, page);
        QDir().mkpath(Db->HTMLFolder() + QString::number(item));
        WriteFile(Db->HTMLFolder() + QString::number(item) + u"/own.png"_s, "own picture");
    }

    QString Text(const QString& column, qint64 item, const QString& table = u"Items"_s) const
    {
        return Db->QueryValue(u"SELECT %1 FROM %2 WHERE ID = ?"_s.arg(column, table), {item}).ToText();
    }
    Date DateOf(const QString& column, qint64 item) const
    {
        return Db->QueryValue(u"SELECT %1 FROM Items WHERE ID = ?"_s.arg(column), {item}).ToDate();
    }
    QByteArray StoredBytes(qint64 file) const
    {
        return ReadFile(Db->FilesFolder() + u"%1 - %2"_s.arg(file).arg(Text(u"Title"_s, file, u"Files"_s)));
    }
    /// Rows that are left of conflicts.
    qint64 TemporaryRows() const
    {
        return CountOf(*Db, u"TempItems"_s) + CountOf(*Db, u"TempFiles"_s) + CountOf(*Db, u"TempHTMLFiles"_s);
    }

    TemporaryHome Home;
    FixedClock Clock;
    ScriptedPrompts Prompts;
    QString Path = Home.Path(u"Mütter/mother.qbd"_s);
    Date Synchronized;
    std::unique_ptr<Library> Db;
};

/// Writes down what is discarded.
class RecordedDiscard : public DiscardedVersions {
public:
    explicit RecordedDiscard(Library& library, QStringList& record) : m_library(library), m_record(record) {}

    void AddTemporary(const QString& where, const Values& parameters, const QString&) override
    {
        m_record << u"temporary: "_s
                        + Texts(m_library, u"SELECT r.Title FROM TempItems r WHERE "_s + where, parameters).join(u',');
    }
    void AddOwn(qint64 item, const QString&) override
    {
        m_record << u"own: "_s + m_library.QueryValue(u"SELECT Title FROM Items WHERE ID = ?"_s, {item}).ToText();
    }
    void Note() override { m_record << (m_library.InTransaction() ? u"noted"_s : u"noted too late"_s); }
    void Place() override { m_record << (m_library.InTransaction() ? u"placed too soon"_s : u"placed"_s); }

    static DiscardInto Into(QStringList& record)
    {
        return [&record](Library& library, DiscardKind) { return std::make_unique<RecordedDiscard>(library, record); };
    }

private:
    Library& m_library;
    QStringList& m_record;
};

} // namespace qb::test
