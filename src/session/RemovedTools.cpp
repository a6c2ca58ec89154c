#include "session/RemovedTools.h"

#include "platform/system/Prompts.h"
#include "removed/MergeUndo.h"
#include "session/ItemTree.h"
#include "session/LibraryList.h"
#include "support/ErrorRoutine.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString ModuleName = u"RemovedTools"_s;

QString Moment(Date date)
{
    return date.IsNone() ? QString() : QLocale().toString(QDateTime(date.Day(), date.Time()), QLocale::ShortFormat);
}

QString TitleOf(const ListedEntry& entry)
{
    const RemovedEntry& removed = *entry.Entry;
    QString title = removed.Title;
    if (removed.Part == RemovedPart::Page)
        title += u" (web page)"_s;
    else if (removed.Part != RemovedPart::Item && !removed.Files.empty())
        title += u" (%1)"_s.arg(removed.Files.front().Title);
    return entry.Below == 0 ? title : title + u" and %1 below it"_s.arg(entry.Below);
}

void Tell(const QString& text, MsgBoxIcon icon)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = u"Undo Last Synchronization"_s, .Icon = icon});
}

} // namespace

// The list

RemovedBrowser::RemovedBrowser(Library& library)
    : m_library(library), m_list(std::make_unique<RemovedList>(library.Name()))
{
}

std::vector<RemovedLine> RemovedBrowser::Lines(const QString& words) const
{
    std::vector<RemovedLine> lines;
    for (const ListedEntry& entry : m_list->Find(words))
        lines.push_back({.Id = entry.Id(),
                         .When = Moment(entry.Event->Index.Header.Moment),
                         .Kind = CaptionOf(entry.Event->Index.Header.Kind),
                         .Title = TitleOf(entry),
                         .Path = entry.Entry->Path,
                         .Size = QLocale().formattedDataSize(entry.Entry->Bytes)});
    return lines;
}

QString RemovedBrowser::Notice(const QString& words) const
{
    return words.trimmed().isEmpty()
               ? u"Nothing is kept here yet. What you delete, or what loses in a synchronization, can be brought back "
                 "from here for a while."_s
               : u"Nothing that was removed fits “%1”."_s.arg(words.trimmed());
}

QString RemovedBrowser::Summary() const
{
    const QString kept =
        u"%1 kept in %2 events."_s.arg(QLocale().formattedDataSize(m_list->Bytes())).arg(m_list->Events().size());
    return m_list->Problems().isEmpty() ? kept : kept + u' ' + m_list->Problems().join(u' ');
}

QString RemovedBrowser::Preview(const QString& id) const
{
    try {
        const ListedEntry entry = m_list->At(id);
        return PreviewOf(entry, ReadRemoved(*m_list, entry));
    } catch (const RuntimeError& error) {
        return error.Description();
    }
}

bool RemovedBrowser::NeedsPlace(const QString& id) const
{
    const ListedEntry entry = m_list->At(id);
    return PlaceOfReturn(m_library, entry) == ReturnPlace::None && entry.Entry->Parent != 0;
}

ReturnResult RemovedBrowser::BringBack(const QString& id, qint64 parent, Work& work)
{
    return ReturnRemoved(m_library, *m_list, m_list->At(id), {.Parent = parent}, work);
}

QString RemovedBrowser::DoneText(const QString& title, const ReturnResult& result)
{
    QString text = result.Items == 0 ? u"“%1” got it back."_s.arg(title)
                   : result.IsBeside ? u"“%1” was brought back, as a new item."_s.arg(title)
                                     : u"“%1” was brought back."_s.arg(title);
    if (!result.Missing.isEmpty())
        text += u" The contents of %1 were missing."_s.arg(result.Missing.join(u", "_s));
    return text;
}

// The commands

RemovedTools::RemovedTools(SessionState& session, Commands& commands, LibraryList& libraries, ItemTree& tree)
    : m_session(session), m_libraries(libraries), m_tree(tree)
{
    commands.Register(u"mnuRemovedItems"_s, this, &RemovedTools::mnuRemovedItems_Click);
    commands.Register(u"mnuUndoSynchronization"_s, this, &RemovedTools::mnuUndoSynchronization_Click);
}

void RemovedTools::mnuRemovedItems_Click()
{
    Guarded(ModuleName, u"mnuRemovedItems_Click"_s, [this] {
        if (m_session.CurrentDatabase && m_tree.SaveItem())
            ShowList(*m_session.CurrentDatabase);
    });
}

qint64 RemovedTools::AskPlace()
{
    CCodeItem* item = m_session.oCodeItem.get();
    const qint64 shown = item ? item->Key().toLongLong() : 0;
    const QString question =
        shown == 0 ? u"The item below which it stood is not there any more.\n\nBring it back to the top of "
                     "the tree?"_s
                   : u"The item below which it stood is not there any more.\n\nBring it back below “%1”, "
                     "which is shown in the window? With No it comes to the top of the tree."_s.arg(item->Title());
    const MsgBoxResult answer = Prompts::Current().MsgBox(
        {.Text = question,
         .Caption = u"Removed Items"_s,
         .Buttons = shown == 0 ? MsgBoxButtons::OkCancel : MsgBoxButtons::YesNoCancel,
         .Icon = MsgBoxIcon::Question,
         .Default = MsgBoxResult::Cancel});
    if (answer == MsgBoxResult::Cancel)
        return -1;
    return answer == MsgBoxResult::Yes ? shown : 0;
}

void RemovedTools::mnuUndoSynchronization_Click()
{
    Guarded(ModuleName, u"mnuUndoSynchronization_Click"_s, [this] {
        if (!m_session.CurrentDatabase || !m_tree.SaveItem())
            return;
        const QString library = m_session.CurrentDatabasePath;
        if (const QString why = WhyMergeNotUndone(library); !why.isEmpty())
            return Tell(why + u" Nothing was changed."_s, MsgBoxIcon::Information);
        const UndoableMerge merge = *LastMergeOf(library);
        const QString file = merge.File.isEmpty() ? QString() : u" and %1"_s.arg(QFileInfo(merge.File).fileName());
        if (Prompts::Current().MsgBox(
                {.Text = u"Bring the library%1 back to what they were before the synchronization of %2?"_s.arg(
                     file, Moment(merge.Moment)),
                 .Caption = u"Undo Last Synchronization"_s,
                 .Buttons = MsgBoxButtons::YesNo,
                 .Icon = MsgBoxIcon::Question,
                 .Default = MsgBoxResult::No})
            != MsgBoxResult::Yes)
            return;
        m_libraries.CloseDatabase();
        Guarded(ModuleName, u"UndoMerge"_s,
                [&] { Watched(u"Undo Last Synchronization"_s, [&library](Work& work) { UndoMerge(library, work); }); });
        if (!m_libraries.SetupDBConnection())
            return m_libraries.ShowNoLibrary();
        m_libraries.NewHistory();
        m_libraries.ShowLibrary();
    });
}

} // namespace qb
