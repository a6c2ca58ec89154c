#include "replication/ReplicaList.h"

#include "platform/system/Prompts.h"
#include "store/ReplicaLog.h"
#include "support/ErrorRoutine.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

QString ChildLine::WaitingText() const
{
    const std::pair<qint64, const char*> parts[] = {{Waiting.Items, "changed item"},
                                                    {Waiting.Files, "stored file"},
                                                    {Waiting.Pages, "web page"},
                                                    {Waiting.Links, "link"},
                                                    {Waiting.Deleted, "deletion"}};
    QStringList texts;
    for (const auto& [count, noun] : parts) {
        if (count > 0)
            texts << u"%1 %2%3"_s.arg(count).arg(QLatin1StringView(noun), count == 1 ? u""_s : u"s"_s);
    }
    return texts.isEmpty() ? u"nothing"_s : texts.join(u", "_s);
}

std::vector<ChildLine> ChildrenOf(Database& mother)
{
    std::vector<ChildLine> lines;
    Statement rows = mother.Query(u"SELECT DBCopyID, ShortDescr, LastSynchronized FROM ChildCopies ORDER BY rowid"_s);
    while (rows.Step())
        lines.push_back({rows.Text(0), rows.Text(1), rows.Column(2).ToDate(), {}});
    for (ChildLine& line : lines)
        line.Waiting = CountChangesFor(mother, line.Identity);
    return lines;
}

qint64 ForgetChildren(Database& mother, Date lastSynchronized)
{
    Transaction transaction(mother);
    const qint64 count = mother.Execute(u"DELETE FROM ChildCopies WHERE coalesce(LastSynchronized, 0) = ?"_s,
                                        {lastSynchronized});
    ReplicaLog(mother).Trim();
    transaction.Commit();
    return count;
}

QString ForgetQuestion(qint64 count)
{
    const QString question =
        u"Are you sure that you want to remove the selected replica connection from the currently opened main "
        "database? If you do so, you won't be able to synchronize the main database with the selected replica any "
        "more!"_s;
    if (count == 1)
        return question;
    return question
           + u"\r\n\r\nThe connections of %1 replicas go together, since they were last synchronized at the same "
             "moment."_s.arg(count);
}

bool ReplicaList::Forget(size_t index)
{
    const Date moment = m_lines.at(index).LastSynchronized;
    const qint64 count = std::count_if(m_lines.begin(), m_lines.end(),
                                       [moment](const ChildLine& line) { return line.LastSynchronized == moment; });
    Prompts& prompts = Prompts::Current();
    if (prompts.MsgBox({.Text = ForgetQuestion(count),
                        .Caption = u"Confirm removal"_s,
                        .Buttons = MsgBoxButtons::YesNo,
                        .Icon = MsgBoxIcon::Question,
                        .Default = MsgBoxResult::No})
        != MsgBoxResult::Yes)
        return false;
    const bool isDone = Guarded(u"frmReplicaList"_s, u"cmdForget_Click"_s, [&] {
        ForgetChildren(m_mother, moment);
        m_lines = ChildrenOf(m_mother);
    });
    if (!isDone || !m_lines.empty())
        return false;
    prompts.MsgBox({.Text = u"There is no other replica link in the database. Form will be closed."_s,
                    .Caption = u"Closing form..."_s,
                    .Icon = MsgBoxIcon::Information});
    return true;
}

} // namespace qb
