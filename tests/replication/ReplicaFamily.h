#pragma once

#include "conflicts/AutomaticResolution.h"
#include "platform/system/SettingsStore.h"
#include "removed/MergeUndo.h"
#include "replication/MergeReport.h"
#include "replication/ReplicaPair.h"
#include "replication/Synchronization.h"
#include "store/ItemBranch.h"
#include "store/StoredFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace qb::test {

/// A mother with two children, A and B, of the items of a ReplicaPair, whose numbers are the same for all at first.
struct ReplicaFamily : ReplicaPair {
    static constexpr qint64 P = 1, Q = 2, F = 3, P2 = 4, X = 5, Y = 6;

    ReplicaFamily()
    {
        WantUndo(false);
        B = GiveOutTo(u"b"_s);
        Clock.AddSeconds(60);
    }

    /// Whether synchronizations can be undone, which takes its time.
    static void WantUndo(bool isWanted)
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"UndoSynchronization"_s, BooleanText(isWanted));
    }
    const QString& M() const { return MotherFile; }
    const QString& A() const { return Child; }

    /// Something is done in a library, a minute after what was done before.
    template <class Body>
    void In(const QString& path, Body&& body)
    {
        Clock.AddSeconds(60);
        body(*Library::Open(path));
    }
    void EditTitle(const QString& path, qint64 id, const QString& title)
    {
        In(path, [&](Library& library) { Edit(library, id, title); });
    }
    void EditCode(const QString& path, qint64 id, const QString& code)
    {
        In(path, [&](Library& library) {
            CCodeItem item;
            item.Initialise(library, QString::number(id));
            item.SetCode(code);
            item.SetItemChanged(true);
            item.Commit();
        });
    }
    void Move(const QString& path, qint64 id, qint64 parent)
    {
        In(path, [&](Library& library) { MoveItem(library, id, parent); });
    }
    void Delete(const QString& path, qint64 id)
    {
        In(path, [&](Library& library) { qb::DeleteItem(library, id); });
    }
    void DiscardConflicts(const QString& path)
    {
        In(path, [&](Library& library) { QCOMPARE(DiscardAllConflicts(library), 1); });
    }
    qint64 Add(const QString& path, qint64 parent, const QString& title)
    {
        qint64 id = 0;
        In(path, [&](Library& library) {
            CCodeItem item;
            item.Initialise(library, {});
            item.SetTitle(title);
            item.SetParentKey(QString::number(parent));
            item.Commit();
            id = item.Key().toLongLong();
        });
        return id;
    }
    qint64 AttachTo(const QString& path, qint64 item, const QString& name, const QByteArray& bytes)
    {
        qint64 id = 0;
        In(path, [&](Library& library) { id = Attach(library, item, name, bytes); });
        return id;
    }

    void Describe(const QString& path, qint64 file, const QString& description)
    {
        In(path, [&](Library& library) {
            CFileObject object;
            object.Initialise(library, QString::number(file));
            object.SetDescription(description);
            object.SetDescriptionChanged(true);
            object.Commit();
        });
    }
    void Link(const QString& path, qint64 from, qint64 to, const QString& note)
    {
        In(path, [&](Library& library) {
            library.Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded, DateUpdated) "
                            "VALUES (?1, ?2, ?3, ?4, ?4)"_s,
                            {from, to, note, library.NextStamp()});
        });
    }
    /// Gives an item a page, or takes it away.
    void SetPage(const QString& path, qint64 id, const QByteArray& page)
    {
        In(path, [&](Library& library) {
            const QString file = library.HTMLFolder() + QString::number(id) + u".htm"_s;
            if (page.isEmpty())
                QFile::remove(file);
            else
                WriteFile(file, page);
            library.Execute(u"UPDATE Items SET HTMLPage = ?1, HTMLLastUpdated = ?2, LastChanged = ?2 WHERE ID = ?3"_s,
                            {Value(!page.isEmpty()), library.NextStamp(), id});
        });
    }

    // The steps

    void ExportOf(const QString& child, ExportAgain again = ExportAgain::No)
    {
        In(child, [&](Library& library) { QVERIFY(WriteChanges(library, File, again)); });
    }
    SyncResult TakeIn(const QString& path)
    {
        SyncResult result;
        In(path, [&](Library& library) { result = Synchronize(library, File); });
        return result;
    }
    /// A full round of one child; what its mother and what it did.
    std::pair<SyncResult, SyncResult> Round(const QString& child) { return Round(child, M()); }
    std::pair<SyncResult, SyncResult> Round(const QString& child, const QString& itsMother)
    {
        ExportOf(child);
        const SyncResult mother = TakeIn(itsMother);
        const SyncResult own = TakeIn(child);
        [&] {
            QCOMPARE(mother.Result, 2);
            QVERIFY(mother.Done);
            QCOMPARE(own.Result, 1);
            QVERIFY(own.Done);
        }();
        Clock.AddSeconds(60);
        return {mother, own};
    }

    // What is there

    static Value Ask(const QString& path, const QString& sql, const Values& values = {})
    {
        return Library::Open(path, DBEngine::Access::ReadOnly)->QueryValue(sql, values);
    }
    static QString TitleOf(const QString& path, qint64 id)
    {
        return Ask(path, u"SELECT Title FROM Items WHERE ID = ?"_s, {id}).ToText();
    }
    static qint64 IdOf(const QString& path, const QString& title)
    {
        return Ask(path, u"SELECT ID FROM Items WHERE Title = ?"_s, {title}).ToLong();
    }
    /// The title of what it stands below; a slash at top level.
    static QString ParentOf(const QString& path, const QString& title)
    {
        return Ask(path,
                   u"SELECT coalesce((SELECT p.Title FROM Items p WHERE p.ID = i.ParentID), '/') FROM Items i "
                   "WHERE i.Title = ?"_s,
                   {title})
            .ToText();
    }
    /// All items by their titles and those above them, with what else both sides should have in common: texts, files
    /// with their contents, pages and links, sorted.
    static QStringList Outline(const QString& path)
    {
        const auto library = Library::Open(path);
        QStringList lines;
        Statement rows = library->Query(
            u"WITH RECURSIVE t(ID, Way) AS (SELECT ID, Title FROM Items WHERE ParentID = 0 UNION ALL SELECT i.ID, "
            "t.Way || '/' || i.Title FROM t JOIN Items i ON i.ParentID = t.ID) SELECT t.ID, t.Way, i.Code, "
            "i.HTMLPage <> 0 FROM t JOIN Items i ON i.ID = t.ID"_s);
        while (rows.Step()) {
            const qint64 id = rows.Long(0);
            QString line = rows.Text(1) + u" | "_s + rows.Text(2).right(20);
            if (rows.Long(3) != 0)
                line += u" | page "_s
                        + QString::fromUtf8(ReadFile(library->HTMLFolder() + QString::number(id) + u".htm"_s))
                              .replace(u"\""_s + QString::number(id) + u'/', u"\"N/"_s);
            lines << line;
            Statement files = library->Query(u"SELECT ID, Title, Description FROM Files WHERE CodeID = ?"_s, {id});
            while (files.Step())
                lines << rows.Text(1) + u" > "_s + files.Text(1) + u" | "_s + files.Text(2) + u" | "_s
                             + QString::fromUtf8(ReadFile(StoredFilePath(*library, files.Long(0), files.Text(1))));
        }
        Statement links = library->Query(
            u"SELECT a.Title, b.Title FROM ItemLinks l JOIN Items a ON a.ID = l.ItemID JOIN "
            "Items b ON b.ID = l.LinkItemID"_s);
        while (links.Step())
            lines << links.Text(0) + u" --> "_s + links.Text(1);
        lines.sort();
        return lines;
    }
    /// Whether all three have the same now.
    bool AreEqual() const
    {
        const QStringList mother = Outline(M());
        for (const QString& child : {A(), B}) {
            if (const QStringList other = Outline(child); other != mother) {
                qWarning().noquote() << u"mother:\n  "_s + mother.join(u"\n  "_s)
                                     << u"\nchild:\n  "_s + other.join(u"\n  "_s);
                return false;
            }
        }
        return true;
    }
    /// The titles of what waits for the solver.
    static QStringList Conflicts(const QString& path)
    {
        const auto library = Library::Open(path, DBEngine::Access::ReadOnly);
        return library->TableExists(u"TempItems"_s) ? Texts(*library, u"SELECT Title FROM TempItems ORDER BY ID"_s)
                                                    : QStringList();
    }
    /// The titles of what was kept of what was taken away.
    QStringList Kept(const QString& path) const
    {
        QStringList titles;
        const QString folder = path.chopped(4) + u"_Removed"_s;
        for (const QFileInfo& index : QDir(folder).entryInfoList({u"*.json"_s}, QDir::Files)) {
            const QByteArray bytes = ReadFile(index.filePath());
            const QJsonArray entries = QJsonDocument::fromJson(bytes).object().value(u"entries"_s).toArray();
            for (const QJsonValue& entry : entries)
                titles << entry.toObject().value(u"title"_s).toString();
        }
        titles.sort();
        return titles;
    }

    QString B;
};

} // namespace qb::test
