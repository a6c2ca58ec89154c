#include "conflicts/ConflictChoice.h"

#include "conflicts/ConflictFields.h"
#include "conflicts/ConflictFileRows.h"
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

void TakeText(Item& from, Item& to, const ConflictText& text)
{
    (to.*text.Set)((from.*text.Get)());
    if (text.GetHeaders)
        (to.*text.SetHeaders)((from.*text.GetHeaders)());
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
    if (const ConflictText* text = ConflictTextOf(name); text && from != winner)
        TakeText(source, conflict.Side(winner), *text);
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
    for (const ConflictText& text : ConflictTexts())
        names << text.Name;
    return names << u"page"_s << u"files"_s << u"status"_s << u"rating"_s;
}

QStringList DifferingFields(CConflict& conflict)
{
    const std::array<bool, SolverFieldCount> differ = FieldsInConflict(conflict);
    QStringList names;
    for (const ConflictText& text : ConflictTexts()) {
        if (differ[size_t(text.Field)])
            names << text.Name;
    }
    if (differ[size_t(SolverField::HTML)])
        names << u"page"_s;
    if (differ[size_t(SolverField::Files)])
        names << u"files"_s;
    if (conflict.Item().ItemStatus() != conflict.TempItem().ItemStatus())
        names << u"status"_s;
    if (conflict.Item().ItemRating() != conflict.TempItem().ItemRating())
        names << u"rating"_s;
    return names;
}

QString PlainFieldText(CConflict& conflict, ConflictSide side, const QString& field)
{
    const ConflictText* text = ConflictTextOf(field);
    return text ? text->Plain((conflict.Side(side).*text->Get)()) : QString();
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
