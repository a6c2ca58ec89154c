// Replication: children are given out and opened, and write their changes.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "cli/ProgressLine.h"
#include "conflicts/AutomaticResolution.h"
#include "platform/system/Prompts.h"
#include "removed/MergeUndo.h"
#include "replication/ChangeFile.h"
#include "replication/MergedFiles.h"
#include "replication/ReplicaCreation.h"
#include "replication/ReplicaList.h"
#include "replication/ReplicaOpening.h"
#include "replication/Synchronization.h"
#include "support/DateFormatCustom.h"

#include <QDir>
#include <map>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

QString MomentText(Date moment)
{
    return moment.IsNone() ? QString() : DateFormatCustom(moment, u"yyyy-mm-dd hh:nn:ss"_s);
}

/// Answers questions by the options of a command; where there is none, by their defaults.
class Answers : public SilentPrompts {
public:
    Answers(const Arguments& arguments, const QString& text) : m_text(text), m_before(SetCurrent(this))
    {
        const QString answer = arguments.Value(u"answer"_s);
        if (!answer.isEmpty() && answer != u"yes"_s && answer != u"no"_s) {
            SetCurrent(m_before);
            throw UsageError{u"--answer is yes or no."_s};
        }
        if (!answer.isEmpty())
            m_answer = answer == u"yes"_s ? MsgBoxResult::Yes : MsgBoxResult::No;
    }
    ~Answers() override { SetCurrent(m_before); }

    MsgBoxResult MsgBox(const Message& message) override
    {
        const MsgBoxResult byDefault = SilentPrompts::MsgBox(message);
        m_hasTold = true;
        const bool isYesOrNo = message.Buttons == MsgBoxButtons::YesNo || message.Buttons == MsgBoxButtons::YesNoCancel;
        return isYesOrNo && m_answer ? *m_answer : byDefault;
    }
    std::optional<QString> InputBox(const QString&, const QString&, const QString&) override { return m_text; }
    bool ShowError(const QString& description) override { return m_before && m_before->ShowError(description); }
    /// Whether anything was said, which is on the terminal then.
    bool HasTold() const { return m_hasTold; }

private:
    QString m_text;
    std::optional<MsgBoxResult> m_answer;
    bool m_hasTold = false;
    Prompts* m_before;
};

QJsonObject ToJson(const ExportCounts& counts)
{
    return {{u"items"_s, counts.Items},     {u"files"_s, counts.Files},    {u"contents"_s, counts.Contents},
            {u"missing"_s, counts.Missing}, {u"pages"_s, counts.Pages},    {u"missingPages"_s, counts.MissingPages},
            {u"links"_s, counts.Links},     {u"deleted"_s, counts.Deleted}};
}

int Create(const QStringList& words)
{
    const Arguments arguments(words, {{"description", "text"}, {"answer", "yes|no"}}, 2);
    const Answers answers(arguments, arguments.Value(u"description"_s));
    ProgressLine line(Parts);
    const BackUpResult result = GiveOutChild(arguments.Positional(0), arguments.Positional(1), line);
    for (const LibraryFault& fault : result.Damage)
        Complain(fault.Text);
    if (result.MissingFiles > 0)
        Complain(u"%1 stored files are missing in the library, and so in the replica."_s.arg(result.MissingFiles));
    if (arguments.Json())
        Print(QJsonObject{{u"replica"_s, result.Files.first()},
                          {u"identity"_s, result.Summary.Library},
                          {u"size"_s, result.Size},
                          {u"missing"_s, result.MissingFiles},
                          {u"damaged"_s, qint64(result.Damage.size())}});
    else
        Print(result.Summary.Library + u'\n');
    return result.Damage.empty() ? 0 : 1;
}

int Open(const QStringList& words)
{
    const Arguments arguments(words, {{"replace", ""}, {"number", ""}, {"answer", "yes|no"}}, 2);
    if (arguments.Has(u"replace"_s) && arguments.Has(u"number"_s))
        throw UsageError{u"Give either --replace or --number."_s};
    const RestoreOver over = arguments.Has(u"replace"_s)  ? RestoreOver::Replace
                             : arguments.Has(u"number"_s) ? RestoreOver::Number
                                                          : RestoreOver::Refuse;
    Answers answers(arguments, {});
    const auto mayOpenAgain = [&answers](const QString& other) {
        return answers.MsgBox({.Text = OpenAgainQuestion(other),
                               .Caption = {},
                               .Buttons = MsgBoxButtons::YesNo,
                               .Default = MsgBoxResult::No})
               == MsgBoxResult::Yes;
    };
    ProgressLine line(Parts);
    const RestoreResult result = OpenReplica(arguments.Positional(0), arguments.Positional(1), over, {}, mayOpenAgain,
                                             line);
    if (arguments.Json())
        Print(QJsonObject{{u"library"_s, result.Library},
                          {u"items"_s, result.Items},
                          {u"files"_s, result.Files},
                          {u"pages"_s, result.Pages}});
    else
        Print(QDir::toNativeSeparators(result.Library) + u'\n');
    return 0;
}

/// "ordinary", "mother", "child", or "mother and child".
QString KindOf(const Library& library)
{
    if (library.IsChildReplica())
        return library.IsMotherReplica() ? u"mother and child"_s : u"child"_s;
    return library.IsMotherReplica() ? u"mother"_s : u"ordinary"_s;
}

int Status(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const ReplicaState& state = library->Replica();
    const QString mother = state.IsChild ? library->QueryValue(u"SELECT MasterReplicaPath FROM Properties"_s).ToText()
                                         : QString();
    const auto count = [&library](const QString& sql) { return library->QueryValue(sql).ToLong(); };
    const qint64 conflicts = library->TableExists(u"TempItems"_s) ? count(u"SELECT count(*) FROM TempItems"_s) : 0;
    const qint64 deleted = library->IsReplicated() ? count(u"SELECT count(*) FROM Items WHERE LastChanged = 0"_s) : 0;
    const ExportCounts waiting = state.IsChild ? CountChanges(*library) : ExportCounts();
    const Date exported = library->LastExportedDate();
    if (arguments.Json()) {
        Print(QJsonObject{{u"kind"_s, KindOf(*library)},
                          {u"identity"_s, library->Identity()},
                          {u"mother"_s, mother},
                          {u"children"_s, state.Children},
                          {u"lastSynchronized"_s, MomentText(state.LastSynchronized)},
                          {u"exported"_s, !exported.IsNone()},
                          {u"lastExported"_s, MomentText(exported)},
                          {u"conflicts"_s, conflicts},
                          {u"waitingDeletions"_s, deleted},
                          {u"waiting"_s, waiting.Changes()},
                          {u"changes"_s, ToJson(waiting)}});
        return 0;
    }
    QString text = u"kind: %1\nidentity: %2\n"_s.arg(KindOf(*library), library->Identity());
    if (state.IsChild)
        text += u"mother: %1\nlast synchronized: %2\nexported: %3\nchanges that wait: %4\n"_s.arg(
            mother, MomentText(state.LastSynchronized), exported.IsNone() ? u"no"_s : MomentText(exported),
            QString::number(waiting.Changes()));
    text += u"children: %1\nconflicts: %2\n"_s.arg(state.Children).arg(conflicts);
    if (library->IsReplicated())
        text += u"items that wait for a decision: %1\n"_s.arg(deleted);
    Print(ForTerminal(text));
    return 0;
}

int ExportCommand(const QStringList& words)
{
    const Arguments arguments(words, {{"again", ""}, {"answer", "yes|no"}}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const Answers answers(arguments, {});
    ProgressLine line(Parts);
    const auto changes = WriteChanges(*library, arguments.Positional(1),
                                      arguments.Has(u"again"_s) ? ExportAgain::Yes : ExportAgain::No, line);
    if (!changes) {
        Complain(u"Synchronization file was not created."_s);
        return 1;
    }
    if (const QString missing = changes->Counts.MissingText(); !missing.isEmpty())
        Complain(missing);
    if (arguments.Json())
        Print(QJsonObject{{u"file"_s, changes->File},
                          {u"exported"_s, MomentText(changes->Exported)},
                          {u"changes"_s, ToJson(changes->Counts)}});
    else
        Print(u"%1 changes\n"_s.arg(changes->Counts.Changes()));
    return 0;
}

int List(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    QJsonArray list;
    int number = 0;
    for (const ChildLine& child : ChildrenOf(*library)) {
        ++number;
        list.append(QJsonObject{{u"number"_s, number},
                                {u"identity"_s, child.Identity},
                                {u"description"_s, child.Description},
                                {u"lastSynchronized"_s, MomentText(child.LastSynchronized)},
                                {u"waiting"_s, ToJson(child.Waiting)}});
        if (!arguments.Json())
            Print(ForTerminal(u"%1  %2  %3  %4  (waiting: %5)\n"_s.arg(number).arg(
                child.Identity, MomentText(child.LastSynchronized), child.Description, child.WaitingText())));
    }
    if (arguments.Json())
        Print(list);
    return 0;
}

/// The child at a number in the list.
ChildLine ChildAt(Library& library, const QString& number)
{
    const std::vector<ChildLine> children = ChildrenOf(library);
    bool isNumber = false;
    const size_t place = number.toULongLong(&isNumber);
    if (!isNumber || place == 0 || place > children.size())
        throw RuntimeError(ErrorNumber::ItemNotFound,
                           u"There is no replica '%1' in the list. Nothing was changed."_s.arg(number), u"ChildAt"_s);
    return children[place - 1];
}

int Forget(const QStringList& words)
{
    const Arguments arguments(words, {{"answer", "yes|no"}}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const Date moment = ChildAt(*library, arguments.Positional(1)).LastSynchronized;
    const std::vector<ChildLine> children = ChildrenOf(*library);
    const qint64 count = std::count_if(children.begin(), children.end(),
                                       [moment](const ChildLine& child) { return child.LastSynchronized == moment; });
    Answers answers(arguments, {});
    if (answers.MsgBox({.Text = ForgetQuestion(count),
                        .Caption = {},
                        .Buttons = MsgBoxButtons::YesNo,
                        .Default = MsgBoxResult::No})
        != MsgBoxResult::Yes) {
        Complain(u"Nothing was changed. --answer yes says that you are sure."_s);
        return 1;
    }
    const qint64 forgotten = ForgetChildren(*library, moment);
    if (arguments.Json())
        Print(QJsonObject{{u"forgotten"_s, forgotten}});
    else
        Print(u"%1 forgotten\n"_s.arg(forgotten));
    return 0;
}

QJsonObject ToJson(const MergeReport& report)
{
    QJsonArray lines;
    for (const MergeLine& line : report.Lines)
        lines.append(QJsonObject{{u"event"_s, NameOf(line.Event)},
                                 {u"item"_s, line.Item},
                                 {u"title"_s, line.Title},
                                 {u"detail"_s, line.Detail}});
    QJsonArray faults;
    for (const MergeFault& fault : report.Faults)
        faults.append(fault.Text);
    return {{u"step"_s, report.AsMother ? 2 : 3},
            {u"replica"_s, report.Replica},
            {u"file"_s, report.File},
            {u"made"_s, MomentText(report.Made)},
            {u"lines"_s, lines},
            {u"faults"_s, faults}};
}

QString TextOf(const MergeReport& report)
{
    QString text = u"%1  %2  %3\n"_s.arg(MomentText(report.Made), report.Replica, report.Summary());
    for (const MergeLine& line : report.Lines)
        text += u"  %1  %2  %3%4\n"_s.arg(NameOf(line.Event), -13)
                    .arg(line.Item)
                    .arg(line.Title, line.Detail.isEmpty() ? QString() : u"  ("_s + line.Detail + u')');
    return text;
}

int Sync(const QStringList& words)
{
    const Arguments arguments(words, {{"dry-run", ""}, {"discard-conflicts", ""}, {"answer", "yes|no"}}, 2);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    Answers answers(arguments, {});
    const bool isPreview = arguments.Has(u"dry-run"_s);
    if (!isPreview && arguments.Has(u"discard-conflicts"_s) && HasPendingConflicts(*library))
        DiscardAllConflicts(*library);
    ProgressLine line(Parts);
    const SyncResult result = Synchronize(*library, arguments.Positional(1), {.Preview = isPreview}, line);
    if (!result.Done) {
        if (!answers.HasTold())
            Complain(u"It is not possible to synchronize the current database with the file selected."_s);
        return 1;
    }
    if (arguments.Json()) {
        QJsonObject object = ToJson(result.Report);
        object[u"conflicts"_s] = result.HasConflicts;
        object[u"dryRun"_s] = isPreview;
        Print(object);
    } else {
        Print(ForTerminal(TextOf(result.Report)));
    }
    return 0;
}

int Report(const QStringList& words)
{
    const Arguments arguments(words, {{"last", "number"}}, 1);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const QString last = arguments.Value(u"last"_s);
    bool isNumber = true;
    const int most = last.isEmpty() ? 1 : last.toInt(&isNumber);
    if (!isNumber || most < 1)
        throw UsageError{u"--last is a number of synchronizations."_s};
    QJsonArray list;
    for (const MergeReport& report : ReadReports(*library, most)) {
        list.append(ToJson(report));
        if (!arguments.Json())
            Print(ForTerminal(TextOf(report)));
    }
    if (arguments.Json())
        Print(list);
    return 0;
}

int Again(const QStringList& words)
{
    const Arguments arguments(words, {}, 3);
    const auto library = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    const ChildLine child = ChildAt(*library, arguments.Positional(1));
    HandOutAgain(*library, child.Identity, arguments.Positional(2));
    if (arguments.Json())
        Print(QJsonObject{{u"file"_s, arguments.Positional(2)}, {u"identity"_s, child.Identity}});
    else
        Print(QDir::toNativeSeparators(arguments.Positional(2)) + u'\n');
    return 0;
}

int Undo(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const std::optional<UndoableMerge> merge = LastMergeOf(arguments.Positional(0));
    ProgressLine line(Parts);
    UndoMerge(arguments.Positional(0), line);
    if (arguments.Json())
        Print(QJsonObject{{u"file"_s, merge ? merge->File : QString()}});
    return 0;
}

} // namespace

int Replica(const QStringList& words)
{
    static const std::map<QString, int (*)(const QStringList&)> verbs{
        {u"create"_s, Create}, {u"open"_s, Open},     {u"status"_s, Status}, {u"export"_s, ExportCommand},
        {u"sync"_s, Sync},     {u"report"_s, Report}, {u"undo"_s, Undo},     {u"again"_s, Again},
        {u"list"_s, List},     {u"forget"_s, Forget}};
    const auto verb = verbs.find(words.value(0));
    if (verb == verbs.end())
        throw UsageError{
            u"Say what is done: create, open, status, export, sync, report, undo, again, list or forget."_s};
    return verb->second(words.mid(1));
}

} // namespace qb::cli
