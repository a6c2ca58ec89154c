#include "conflicts/ConflictChoice.h"

#include "conflicts/ConflictFileRows.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/RuntimeError.h"

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void Refuse(const QString& what)
{
    throw RuntimeError(ErrorNumber::InvalidCall, what + u" Nothing was changed."_s, u"ConflictChoice"_s);
}

using Item = CConflictCodeItem;

/// How a field is taken from one version into the other.
struct TextField {
    QString Name;
    QString (Item::*Get)();
    void (Item::*Set)(const QString&);
    bool IsRich = false;
    quint8 (Item::*GetHeaders)() = nullptr; ///< sections, which go with the text
    void (Item::*SetHeaders)(quint8) = nullptr;
};

const std::vector<TextField>& TextFields()
{
    static const std::vector<TextField> fields{
        {u"title"_s, &Item::Title, &Item::SetTitle},
        {u"description"_s, &Item::Description, &Item::SetDescription},
        {u"info"_s, &Item::Info, &Item::SetInfo},
        {u"code"_s, &Item::Code, &Item::SetCode, true, &Item::CodeHeaders, &Item::SetCodeHeaders},
        {u"notes"_s, &Item::Notes, &Item::SetNotes, true},
        {u"usage"_s, &Item::Example, &Item::SetExample, true, &Item::UsageHeaders, &Item::SetUsageHeaders},
    };
    return fields;
}

const TextField* TextFieldOf(const QString& name)
{
    const auto found = std::find_if(TextFields().begin(), TextFields().end(),
                                    [&name](const TextField& field) { return field.Name == name; });
    return found == TextFields().end() ? nullptr : &*found;
}

void TakeText(Item& from, Item& to, const TextField& field)
{
    (to.*field.Set)((from.*field.Get)());
    if (field.GetHeaders)
        (to.*field.SetHeaders)((from.*field.GetHeaders)());
}

/// All files as the other version has them: those of both with its descriptions, the others change sides.
void TakeFiles(CConflict& conflict, ConflictSide from)
{
    CConflictFileObjects& theirs = conflict.Side(from).FileObjects();
    CConflictFileObjects& ours = conflict.Side(OtherSide(from)).FileObjects();
    for (const auto& file : ours) {
        if (CConflictFileObject* other = theirs.Item(file->CorrespondingID()))
            file->SetDescription(other->Description());
        file->SetMoveToTheSecondSet(true);
    }
    for (const auto& file : theirs)
        file->SetMoveToTheSecondSet(true);
}

void TakeField(CConflict& conflict, const QString& name, ConflictSide from, ConflictSide winner)
{
    Item& source = conflict.Side(from);
    if (const TextField* field = TextFieldOf(name); field && from != winner)
        TakeText(source, conflict.Side(winner), *field);
    else if (name == u"page"_s)
        conflict.SetPageSide(from);
    else if (name == u"files"_s && from != winner)
        TakeFiles(conflict, from);
    else if (name == u"status"_s)
        conflict.Item().SetItemStatus(source.ItemStatus());
    else if (name == u"rating"_s)
        conflict.Item().SetItemRating(source.ItemRating());
}

void MarkFile(CConflict& conflict, const QString& tag)
{
    std::vector<ConflictFileRow> rows = FileRowsOf(conflict);
    std::erase_if(rows,
                  [&tag](const ConflictFileRow& row) { return row.Tag() != tag && QString::number(row.File) != tag; });
    if (rows.empty())
        Refuse(u"There is no file '%1' in this conflict."_s.arg(tag));
    if (rows.size() > 1)
        Refuse(u"Two files have the number %1: name it with the letter behind it."_s.arg(tag));
    const ConflictFileRow& row = rows.front();
    if (row.Mark != u'X' && row.Mark != u'Y')
        Refuse(u"The file '%1' is in both versions."_s.arg(tag));
    CConflictCodeItem& side = row.Mark == u'X' ? conflict.Item() : conflict.TempItem();
    CConflictFileObject* file = side.FileObjects().Item(row.File);
    file->SetMoveToTheSecondSet(!file->MoveToTheSecondSet());
}

} // namespace

QStringList ConflictFieldNames()
{
    QStringList names;
    for (const TextField& field : TextFields())
        names << field.Name;
    return names << u"page"_s << u"files"_s << u"status"_s << u"rating"_s;
}

QStringList DifferingFields(CConflict& conflict)
{
    QStringList names;
    const auto note = [&](void (CConflict::*event)(), const QString& name) {
        return QObject::connect(&conflict, event, &conflict, [&names, name] { names << name; });
    };
    const QMetaObject::Connection connections[] = {
        note(&CConflict::TitleConflict, u"title"_s), note(&CConflict::DescriptionConflict, u"description"_s),
        note(&CConflict::InfoConflict, u"info"_s),   note(&CConflict::CodeConflict, u"code"_s),
        note(&CConflict::NotesConflict, u"notes"_s), note(&CConflict::UsageConflict, u"usage"_s),
        note(&CConflict::HTMLConflict, u"page"_s),   note(&CConflict::FilesConflict, u"files"_s),
    };
    conflict.CompareItems();
    for (const QMetaObject::Connection& connection : connections)
        QObject::disconnect(connection);
    if (conflict.Item().ItemStatus() != conflict.TempItem().ItemStatus())
        names << u"status"_s;
    if (conflict.Item().ItemRating() != conflict.TempItem().ItemRating())
        names << u"rating"_s;
    return names;
}

QString PlainFieldText(CConflict& conflict, ConflictSide side, const QString& field)
{
    const TextField* text = TextFieldOf(field);
    if (!text)
        return {};
    const QString stored = (conflict.Side(side).*text->Get)();
    return text->IsRich ? PlainTextFromRtf(stored) : stored;
}

bool Decide(CConflict& conflict, const ConflictChoice& choice)
{
    const ConflictSide winner = conflict.SideOf(choice.Which);
    for (auto field = choice.Fields.begin(); field != choice.Fields.end(); ++field) {
        if (!ConflictFieldNames().contains(field.key()))
            Refuse(u"There is no field '%1' to choose."_s.arg(field.key()));
        TakeField(conflict, field.key(), conflict.SideOf(field.value()), winner);
    }
    for (const QString& tag : choice.MovedFiles)
        MarkFile(conflict, tag);
    return conflict.KeepItem(choice.Which);
}

} // namespace qb
