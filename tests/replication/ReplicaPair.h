#pragma once

#include "maintenance/Containers.h"
#include "platform/dao/DBEngine.h"
#include "replication/ChangeFile.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaOpening.h"
#include "store/CCodeItem.h"
#include "store/CFileObject.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"

namespace qb::test {

using namespace Qt::StringLiterals;

/// A mother with a child that was given out, and the clock a minute later. Items: 1 P, 2 Q, 3 F, 4 P2 below F, 5 X
/// below P2, 6 Y; the file 1 on X; a link from X to Y; a page of Y.
struct ReplicaPair {
    ReplicaPair()
    {
        MakeMotherFile();
        Clock.AddSeconds(60);
        Child = GiveOutTo(u"child"_s);
        Clock.AddSeconds(60);
    }

    void MakeMotherFile()
    {
        QDir().mkpath(Home.Path(u"Mütter"_s));
        const auto library = MakeLibrary(MotherFile);
        AddItem(*library, 0, u"P"_s, u"int p;"_s);
        AddItem(*library, 0, u"Q"_s);
        const qint64 f = AddItem(*library, 0, u"F"_s);
        const qint64 x = AddItem(*library, AddItem(*library, f, u"P2"_s), u"X"_s, u"int x;"_s);
        const qint64 y = AddItem(*library, 0, u"Y"_s);
        library->Execute(u"INSERT INTO ItemLinks (ItemID, LinkItemID, Note, DateAdded) VALUES (?, ?, 'old', ?)"_s,
                         {x, y, Clock.Now()});
        library->Execute(u"UPDATE Files SET LastUpdated = DateAdded WHERE ID = ?"_s,
                         {AddStoredFile(*library, x, u"f Ü.bin"_s, "file f", Clock.Now())});
        library->Execute(u"UPDATE Items SET HTMLPage = -1, HTMLLastUpdated = ? WHERE ID = ?"_s, {Clock.Now(), y});
        WriteFile(library->HTMLFolder() + u"6.htm"_s, "<img src=\"6/bild.png\">");
        WriteFile(library->HTMLFolder() + u"6/bild.png"_s, "picture");
        for (const QString& folder : {library->HTMLFolder(), library->FilesFolder()})
            WriteFile(folder + u".library"_s, library->Identity().toUtf8());
    }

    /// Gives a child of the mother out and opens it; its path.
    QString GiveOutTo(const QString& name) { return GiveOutTo(name, MotherFile); }
    QString GiveOutTo(const QString& name, const QString& mother)
    {
        QDir().mkpath(Home.Path(name));
        const QString transfer = Home.Path(name + u".qbr"_s);
        Prompts.ExpectInputBox(u"Short Description"_s, name);
        GiveOutChild(mother, transfer);
        const QString path = Home.Path(name + u"/lib.qbd"_s);
        OpenReplica(transfer, path, RestoreOver::Refuse, {}, [](const QString&) { return false; });
        QFile::remove(transfer);
        return path;
    }

    std::unique_ptr<Library> OpenChild() const { return Library::Open(Child); }
    std::unique_ptr<Library> OpenMother() const { return Library::Open(MotherFile); }

    /// Exports the child's changes and opens what is in the file.
    std::unique_ptr<Database> Export(ExportAgain again = ExportAgain::No)
    {
        const auto child = OpenChild();
        Changes = WriteChanges(*child, File, again);
        return Changes ? Unpack() : nullptr;
    }
    std::unique_ptr<Database> Unpack()
    {
        const QString folder = Home.Path(u"unpacked %1"_s.arg(++m_unpacked));
        QDir().mkpath(folder);
        return DBEngine::OpenDatabase(UnpackLibraryTo(File, folder, NoWork()));
    }

    static void Edit(Library& library, qint64 id, const QString& title)
    {
        CCodeItem item;
        item.Initialise(library, QString::number(id));
        item.SetTitle(title);
        item.SetItemChanged(true);
        item.Commit();
    }
    static void DeleteItem(Library& library, qint64 id)
    {
        CCodeItem item;
        item.Initialise(library, QString::number(id));
        item.Delete();
        item.Commit();
    }
    static void Unlink(Library& library, qint64 from, qint64 to)
    {
        CCodeItem item;
        item.Initialise(library, QString::number(from));
        const std::shared_ptr<CLink> link = item.Links().Item(CLinks::KeyOf(to));
        QVERIFY(link);
        link->Direction = LinkDirection::None;
        link->DirtyFlag = true;
        item.SetLinksChanged(true);
        item.Commit();
    }
    qint64 Attach(Library& library, qint64 item, const QString& name, const QByteArray& bytes)
    {
        const QString source = Home.Path(u"sources/"_s + name);
        QDir().mkpath(Home.Path(u"sources"_s));
        WriteFile(source, bytes);
        CFileObject file;
        file.Initialise(library, {});
        file.SetCodeID(QString::number(item));
        file.SetStoredFile(source);
        file.Commit();
        return file.Key().toLongLong();
    }

    TemporaryHome Home;
    FixedClock Clock;
    ScriptedPrompts Prompts;
    QString MotherFile = Home.Path(u"Mütter/mother.qbd"_s);
    QString Child;
    QString File = Home.Path(u"changes.qbs"_s);
    std::optional<ExportedChanges> Changes;

private:
    int m_unpacked = 0;
};

} // namespace qb::test
