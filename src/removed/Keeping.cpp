#include "removed/Keeping.h"

#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"
#include "store/PendingFiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Numbers as one parameter of a statement, however many they are.
QString ListOf(const std::vector<qint64>& numbers)
{
    QJsonArray list;
    for (const qint64 number : numbers)
        list.append(number);
    return QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact));
}

bool MayGoForGood(const Library& library, const RuntimeError& error)
{
    return Prompts::Current().MsgBox(
               {.Text = u"What is removed can't be kept in '%1':\n\n%2\n\nRemove it all the same? It can't be brought "
                        "back then."_s.arg(QDir::toNativeSeparators(RemovedFolderOf(library.Name()).chopped(1)),
                                           error.Description()),
                .Caption = u"Removed Items"_s,
                .Buttons = MsgBoxButtons::YesNo,
                .Icon = MsgBoxIcon::Exclamation,
                .Default = MsgBoxResult::No})
           == MsgBoxResult::Yes;
}

} // namespace

void Keeping::Add(const std::function<void(RemovedEvent&)>& add)
{
    if (!m_event)
        return;
    m_hasFailed = true;
    add(*m_event);
    m_hasFailed = false;
}

void Keeping::Take(Library&, const std::vector<qint64>& items)
{
    Add([&items](RemovedEvent& event) {
        event.Add(RemovedRows::OfLibrary(u"r.ID IN (SELECT value FROM json_each(?))"_s, {ListOf(items)}), u"deleted"_s);
    });
}

void Keeping::Note()
{
    Add([](RemovedEvent& event) { event.Note(); });
}

void Keeping::Place()
{
    if (m_event)
        m_event->Place();
}

void Kept(Library& library, RemovalKind kind, const QString& what, const std::function<void(Keeping&)>& change)
{
    RemovedEvent event(library, kind, what);
    Keeping keeping(&event);
    try {
        change(keeping);
    } catch (const RuntimeError& error) {
        if (!keeping.HasFailed() || !MayGoForGood(library, error))
            throw;
        Keeping nothing(nullptr);
        change(nothing);
    }
}

void DeleteStoredFiles(Library& library, const std::vector<qint64>& files)
{
    Kept(library, RemovalKind::DeletedByUser, u"Stored files deleted"_s, [&](Keeping& keeping) {
        StoredFileDeletion deletion;
        Transaction transaction(library);
        keeping.Add([&files](RemovedEvent& event) {
            event.AddFiles(RemovedRows::OfLibrary(u"f.ID IN (SELECT value FROM json_each(?))"_s, {ListOf(files)}),
                           u"deleted"_s);
        });
        for (const qint64 file : files)
            deletion.Delete(library, file);
        keeping.Note();
        transaction.Commit();
        keeping.Place();
        deletion.Complete();
    });
}

} // namespace qb
