// The commands on items.

#include "cli/Arguments.h"
#include "cli/CommandTable.h"
#include "cli/Input.h"
#include "cli/OpenLibrary.h"
#include "cli/Output.h"
#include "config/CSettings.h"
#include "panels/TreeNodes.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/TextEncoding.h"
#include "removed/Keeping.h"
#include "session/LoadTree.h"
#include "store/CCodeItem.h"
#include "store/ItemBranch.h"
#include "store/ItemRules.h"
#include "store/ItemStatus.h"
#include "store/Library.h"
#include "store/ShippedLanguages.h"

#include <climits>

namespace qb::cli {

using namespace Qt::StringLiterals;

namespace {

/// A text of an item: the name of its field and option, and how it is read and written.
struct TextField {
    const char* Name;
    QString (ItemRow::*Get)();
    void (ItemRow::*Set)(const QString&);
    enum { Plain, Code, Notes } Form; ///< plain text, or RTF in the font of code or of notes
};
constexpr TextField TextFields[] = {
    {"title", &CCodeItem::Title, &CCodeItem::SetTitle, TextField::Plain},
    {"description", &CCodeItem::Description, &CCodeItem::SetDescription, TextField::Plain},
    {"info", &CCodeItem::Info, &CCodeItem::SetInfo, TextField::Plain},
    {"code", &CCodeItem::Code, &CCodeItem::SetCode, TextField::Code},
    {"usage", &CCodeItem::Example, &CCodeItem::SetExample, TextField::Code},
    {"notes", &CCodeItem::Notes, &CCodeItem::SetNotes, TextField::Notes},
};

QString NameOf(const TextField& field)
{
    return QString::fromLatin1(field.Name);
}

QList<Arguments::Option> WithTextOptions(QList<Arguments::Option> options)
{
    for (const TextField& field : TextFields)
        options.append(Arguments::Option{field.Name, "text"});
    return options;
}

QString ReadText(const QString& name)
{
    const auto text = DecodeText(ReadInput(name));
    if (!text)
        throw RuntimeError(ErrorNumber::ValueNotAllowed, u"'%1' is no text; nothing was changed."_s.arg(name),
                           u"ReadText"_s);
    return *text;
}

RtfFont NotesFont()
{
    const CSettings settings({});
    return {settings.DefaultFontName(), settings.DefaultFontSize()};
}

QString RewrittenRtf(const QString& stored)
{
    RichTextDocument document;
    ReadRtf(stored, document);
    return stored.isEmpty() ? QString() : WriteRtf(document);
}

/// The texts that are given as options. They are read before the library is locked: an input may keep
/// one waiting.
using GivenTexts = std::vector<std::pair<const TextField*, QString>>;
GivenTexts ReadTexts(const Arguments& arguments)
{
    GivenTexts texts;
    for (const TextField& field : TextFields) {
        if (!arguments.Has(NameOf(field)))
            continue;
        QString value = arguments.Value(NameOf(field));
        if (field.Form != TextField::Plain)
            value = RtfFromPlainText(ReadText(value), field.Form == TextField::Code ? CodeFont : NotesFont());
        texts.emplace_back(&field, value);
    }
    return texts;
}

/// The language that an item's code or, if it has none, its usage names; empty: the library's.
QString LanguageOf(CCodeItem& item)
{
    const QString language = LanguageInRtf(item.Code());
    return language.isEmpty() ? LanguageInRtf(item.Example()) : language;
}

/// The name of the language that is asked for; "none" stands for the library's.
QString LanguageAskedFor(const QString& name)
{
    if (name.compare("none"_L1, Qt::CaseInsensitive) == 0)
        return {};
    const ShippedLanguage* language = ShippedLanguageNamed(name);
    if (!language)
        throw UsageError{u"Unknown language '%1'; `quillbase-cli languages` lists them."_s.arg(name)};
    return language->Name;
}

/// The code texts that name a language anew: all of them once a language is given.
std::vector<const TextField*> FieldsThatNameALanguage(const Arguments& arguments)
{
    std::vector<const TextField*> fields;
    for (const TextField& field : TextFields) {
        if (field.Form == TextField::Code && (arguments.Has(u"language"_s) || arguments.Has(NameOf(field))))
            fields.push_back(&field);
    }
    return fields;
}

/// A text that is replaced keeps the item's language, unless another one is given.
void TakeTextsAndLanguage(const Arguments& arguments, const GivenTexts& texts, CCodeItem& item)
{
    const std::vector<const TextField*> fields = FieldsThatNameALanguage(arguments);
    const QString former = fields.empty() ? QString() : LanguageOf(item); // a title alone reads no long texts
    for (const auto& [field, text] : texts)
        (item.*field->Set)(text);
    const QString language = arguments.Has(u"language"_s) ? LanguageAskedFor(arguments.Value(u"language"_s)) : former;
    for (const TextField* field : fields)
        (item.*field->Set)(WithLanguageInRtf((item.*field->Get)(), language));
}

/// The status and the rating that are asked for; nothing where none is.
struct GivenFacts {
    std::optional<ItemStatus> Status;
    std::optional<qint32> Rating;
};
GivenFacts FactsAskedFor(const Arguments& arguments)
{
    GivenFacts facts;
    if (arguments.Has(u"status"_s)) {
        facts.Status = StatusNamed(arguments.Value(u"status"_s));
        if (!facts.Status)
            throw UsageError{u"Unknown status '%1': own, downloaded, tested, not-working or none."_s.arg(
                arguments.Value(u"status"_s))};
    }
    if (arguments.Has(u"rating"_s)) {
        facts.Rating = arguments.NumberOption(u"rating"_s, 0);
        if (*facts.Rating > BestRating)
            throw UsageError{u"A rating is 0 for none, or 1 to %1 half stars."_s.arg(BestRating)};
    }
    return facts;
}

void TakeFacts(const GivenFacts& facts, CCodeItem& item)
{
    if (facts.Status)
        item.SetItemStatus(qint32(*facts.Status));
    if (facts.Rating)
        item.SetItemRating(*facts.Rating);
}

/// The text as it is printed: lines end as they do on this system.
QString Printed(const QString& text)
{
    return QString(text).replace("\r\n"_L1, "\n"_L1);
}

enum class Printing { PlainText, Stored, Rtf };

QString PrintedField(const TextField& field, CCodeItem& item, Printing as)
{
    const QString stored = (item.*field.Get)();
    if (as == Printing::Rtf) // in the program's own writing, whatever wrote the text
        return field.Form == TextField::Plain ? RtfFromPlainText(stored, NotesFont()) : RewrittenRtf(stored);
    return field.Form == TextField::Plain || as == Printing::Stored ? stored : Printed(PlainTextFromRtf(stored));
}

/// In UTF-8, as the titles are kept: there may be very many.
QByteArray Outline(const TreeNode& node, int deepest)
{
    constexpr int Indent = 2;
    struct Waiting {
        const TreeNode* Node;
        int Depth;
    };
    QByteArray out;
    std::vector<Waiting> waiting{{&node, 0}};
    while (!waiting.empty()) {
        const auto [at, level] = waiting.back();
        waiting.pop_back();
        if (level > 0)
            out.append((level - 1) * Indent, ' ')
                .append(at->Title.Utf8())
                .append(" [")
                .append(QByteArray::number(at->Id))
                .append("]\n");
        if (level < deepest) {
            for (auto child = at->Children.rbegin(); child != at->Children.rend(); ++child)
                waiting.push_back({*child, level + 1});
        }
    }
    return out;
}

void ListNode(const TreeNode& node, int deepest, QJsonArray& out)
{
    std::vector<std::pair<const TreeNode*, int>> waiting{{&node, 0}};
    while (!waiting.empty()) {
        const auto [at, level] = waiting.back();
        waiting.pop_back();
        if (level > 0)
            out.append(QJsonObject{{u"id"_s, at->Id},
                                   {u"parent"_s, at->Parent->Id},
                                   {u"depth"_s, level},
                                   {u"title"_s, at->Text()},
                                   {u"description"_s, at->Tag()}});
        if (level < deepest) {
            for (auto child = at->Children.rbegin(); child != at->Children.rend(); ++child)
                waiting.emplace_back(*child, level + 1);
        }
    }
}

} // namespace

int Tree(const QStringList& words)
{
    const Arguments arguments(words, {{"depth", "n"}}, 1);
    const int depth = arguments.NumberOption(u"depth"_s, INT_MAX);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    TreeNodes nodes;
    const std::vector<qint64> lost = LoadTree(*database, nodes, {});
    if (arguments.Json()) {
        QJsonArray list;
        ListNode(*nodes.Root(), depth, list);
        Print(list);
    } else {
        Print(Outline(*nodes.Root(), depth));
    }
    if (!lost.empty())
        Complain(u"%1 items have lost their place in the tree; \"check\" names them."_s.arg(lost.size()));
    return lost.empty() ? 0 : 1;
}

int Show(const QStringList& words)
{
    const Arguments arguments(words, {{"field", "name"}, {"raw", ""}, {"rtf", ""}}, 2);
    const QString wanted = arguments.Value(u"field"_s).toLower();
    const auto* field = std::find_if(std::begin(TextFields), std::end(TextFields),
                                     [&wanted](const TextField& one) { return NameOf(one) == wanted; });
    if (arguments.Has(u"field"_s) && field == std::end(TextFields))
        throw UsageError{u"Unknown field '%1'."_s.arg(wanted)};
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadOnly);
    RequireItem(*database, arguments.Id(1));
    CCodeItem item;
    item.Initialise(*database, QString::number(arguments.Id(1)));
    item.Title();
    if (item.ReadFailed())
        return 1; // which has been reported
    const Printing as = arguments.Has(u"rtf"_s)   ? Printing::Rtf
                        : arguments.Has(u"raw"_s) ? Printing::Stored
                                                  : Printing::PlainText;
    if (field != std::end(TextFields) && !arguments.Json()) {
        const QString text = PrintedField(*field, item, as);
        // A text goes out as it is, so that it can be sent into a file.
        const bool endLine = field->Form == TextField::Plain || (OutputIsTerminal() && !text.endsWith(u'\n'));
        Print(endLine ? text + u'\n' : text);
        return 0;
    }
    const Reader reader = arguments.Json() ? Reader::Program : Reader::Person;
    QJsonObject object{{u"id"_s, item.Key().toLongLong()},
                       {u"parent"_s, item.ParentKey().toLongLong()},
                       {u"created"_s, MomentText(item.Created(), reader)},
                       {u"language"_s, LanguageOf(item)},
                       {u"changed"_s, MomentText(item.LastChanged(), reader)}};
    for (const TextField& one : TextFields) {
        if (field == std::end(TextFields) || field == &one)
            object.insert(NameOf(one), PrintedField(one, item, as));
    }
    if (arguments.Json()) {
        Print(object);
        return 0;
    }
    Print(u"%1 [%2]\n"_s.arg(item.Title(), item.Key()));
    Print(u"created: %1\nchanged: %2\n"_s.arg(object.value(u"created"_s).toString(),
                                              object.value(u"changed"_s).toString()));
    for (const TextField& one : TextFields) {
        const QString text = PrintedField(one, item, as);
        if (&one != &TextFields[0] && !text.isEmpty())
            Print(u"\n--- %1\n%2%3"_s.arg(NameOf(one), text, text.endsWith(u'\n') ? QString() : u"\n"_s));
    }
    return 0;
}

// A change reads, checks and writes in one transaction, so that nothing happens to the library in between.

int Add(const QStringList& words)
{
    const Arguments arguments(words, WithTextOptions({{"parent", "id"}, {"language", "name"}}), 1);
    if (arguments.Value(u"title"_s).isEmpty())
        throw UsageError{u"--title is missing."_s};
    const qint64 parent = arguments.IdOption(u"parent"_s);
    const GivenTexts texts = ReadTexts(arguments);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    Transaction transaction(*database);
    RequireChange(*database, parent, {ItemChange::Add});
    RefuseReservedTitle(arguments.Value(u"title"_s), parent);
    CCodeItem item;
    item.Initialise(*database, {});
    item.SetParentKey(QString::number(parent));
    TakeTextsAndLanguage(arguments, texts, item);
    if (!item.Commit())
        return 1;
    // Before the commit: whoever is not told of the item must not get one.
    if (arguments.Json())
        Print(QJsonObject{{u"id"_s, item.Key().toLongLong()}});
    else
        Print(item.Key() + u'\n');
    transaction.Commit();
    return 0;
}

int Set(const QStringList& words)
{
    const Arguments arguments(words, WithTextOptions({{"language", "name"}, {"status", "name"}, {"rating", "n"}}), 2);
    const GivenFacts facts = FactsAskedFor(arguments);
    const GivenTexts texts = ReadTexts(arguments);
    if (texts.empty() && !arguments.Has(u"language"_s) && !facts.Status && !facts.Rating)
        throw UsageError{u"Nothing to set: --title, --description, --info, --code, --usage, --notes, --language, "
                         "--status or --rating."_s};
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    Transaction transaction(*database);
    RequireChange(*database, arguments.Id(1), {ItemChange::EditUnasked});
    if (arguments.Has(u"title"_s))
        RequireChange(*database, arguments.Id(1), {ItemChange::Rename});
    CCodeItem item;
    item.Initialise(*database, QString::number(arguments.Id(1)));
    item.SetDontUpdateLastChangedDate(!MovesDate(ItemChange::Edit, StandingOf(*database, arguments.Id(1))));
    TakeTextsAndLanguage(arguments, texts, item);
    TakeFacts(facts, item);
    if (arguments.Has(u"title"_s))
        RefuseReservedTitle(item.Title(), item.ParentKey().toLongLong());
    item.SetItemChanged(true);
    if (!item.Commit())
        return 1;
    transaction.Commit();
    return 0;
}

int Move(const QStringList& words)
{
    const Arguments arguments(words, {}, 3);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    MoveItem(*database, arguments.Id(1), arguments.Id(2));
    return 0;
}

int Delete(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    Kept(*database, RemovalKind::DeletedByUser, u"Items deleted"_s,
         [&](Keeping& keeping) { DeleteItem(*database, arguments.Id(1), keeping); });
    return 0;
}

int Keep(const QStringList& words)
{
    const Arguments arguments(words, {}, 2);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    const qint64 id = arguments.Id(1);
    Transaction transaction(*database);
    RequireChange(*database, id, {ItemChange::Keep});
    CCodeItem item;
    item.Initialise(*database, QString::number(id));
    item.SetItemChanged(true);
    if (!item.Commit())
        return 1;
    transaction.Commit();
    return 0;
}

int RemoveDeleted(const QStringList& words)
{
    const Arguments arguments(words, {}, 1);
    const auto database = OpenLibrary(arguments.Positional(0), DBEngine::Access::ReadWrite);
    if (!database->IsMotherReplica())
        throw RuntimeError(ErrorNumber::ValueNotAllowed,
                           u"Only a mother library has items that its children have deleted; nothing was changed."_s,
                           u"RemoveDeleted"_s);
    const auto tell = [&arguments](const RemovedItems& removed) {
        if (arguments.Json())
            Print(QJsonObject{{u"removed"_s, qint64(removed.Items.size())}, {u"orphaned"_s, removed.Orphans}});
        else
            Print(u"%1 items removed\n"_s.arg(removed.Items.size()));
        if (removed.Orphans > 0)
            Complain(u"%1 items that stood below them are in the folder '%2' now."_s.arg(removed.Orphans)
                         .arg(OrphanedItemsTitle));
    };
    Kept(*database, RemovalKind::RemoveAllDeleted, u"Deleted items removed"_s,
         [&](Keeping& keeping) { RemoveItemsMarkedForDelete(*database, tell, keeping); });
    return 0;
}

} // namespace qb::cli
