#include "conflicts/ShownConflict.h"

#include "conflicts/ComparedBoxes.h"
#include "conflicts/ConflictOrigin.h"
#include "platform/richtext/Rtf.h"
#include "support/DateFormatCustom.h"
#include "support/ErrorRoutine.h"

#include <QSet>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString FormName = u"frmConflicts"_s;

/// The titles above an item, from the root on.
QString PathOf(Library& library, qint64 item)
{
    QStringList titles;
    QSet<qint64> seen;
    while (item > 0 && !seen.contains(item)) {
        seen.insert(item);
        Statement row = library.Query(u"SELECT ID, Title, ParentID FROM Items WHERE ID = ?"_s, {item});
        if (!row.Step())
            break;
        titles.prepend(row.Text(1).replace(u'/', u'\u2215'));
        item = row.Long(2);
    }
    return titles.join(u'/');
}

} // namespace

bool ShownConflict::Show(qint64 item)
{
    m_conflict.reset();
    m_edited = {};
    m_wasEdited = m_swapped = false;
    m_inConflict = {};
    m_base.reset();
    m_statusSide = m_ratingSide = ConflictSide::Item;
    Forget();
    m_title.clear();
    m_path.clear();
    return Guarded(
        FormName, u"DisplayItem"_s,
        [&] {
            if (m_library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {item}).IsNull())
                throw RuntimeError(ErrorNumber::RecordDeleted, u"Reqired item not fount in the database."_s,
                                   u"frmConflicts; DisplayItem"_s);
            auto conflict = std::make_unique<CConflict>();
            conflict->Initialize(m_library, item);
            m_conflict = std::move(conflict);
            m_title = m_conflict->Title();
            m_path = PathOf(m_library, item).split(u'/');
            m_inConflict = FieldsInConflict(*m_conflict);
            m_files = FileRowsOf(*m_conflict);
            if (m_findBase)
                m_base = m_findBase(item);
            SelectFirstConflict();
            return true;
        },
        false);
}

QString ShownConflict::ItemPath(const std::function<bool(const QString&)>& fits) const
{
    const QString whole = m_path.join(u'/');
    if (fits(whole))
        return whole;
    for (qsizetype cut = 1; cut < whole.size(); ++cut) {
        const QString shortened = u"..."_s + whole.mid(cut);
        if (fits(shortened))
            return shortened;
    }
    return u"..."_s;
}

QString ShownConflict::SideName(ConflictSide side)
{
    const bool isFromOutside = (side == ConflictSide::TempItem) == m_conflict->TempItemIsFromReplica();
    return isFromOutside == m_library.IsChildReplica() ? u"Main"_s : u"Replica"_s;
}

QString ShownConflict::Caption(ConflictSide side)
{
    return SideName(side)
           + u" Database Item (%1)"_s.arg(
               DateFormatCustom(m_conflict->Side(side).LastChanged(), u"d/mm/yyyy hh:nn:ss"_s));
}

void ShownConflict::SelectFirstConflict()
{
    const auto found = std::find(m_inConflict.begin(), m_inConflict.end(), true);
    m_field = found == m_inConflict.end() ? SolverField::Title : SolverField(found - m_inConflict.begin());
    m_file = m_files.empty() ? -1 : 0;
}

// Fields

void ShownConflict::SelectField(SolverField field)
{
    SaveEditedField();
    m_field = field;
    Forget();
}

/// What is known of the field that was shown.
void ShownConflict::Forget()
{
    m_plain = {};
    m_difference.reset();
    m_merged.reset();
}

bool ShownConflict::NextField()
{
    for (int field = int(m_field) + 1; field < SolverFieldCount; ++field) {
        if (m_inConflict[size_t(field)]) {
            SelectField(SolverField(field));
            return true;
        }
    }
    return false;
}

bool ShownConflict::PreviousField()
{
    for (int field = int(m_field) - 1; field >= 0; --field) {
        if (m_inConflict[size_t(field)]) {
            SelectField(SolverField(field));
            return true;
        }
    }
    return false;
}

bool ShownConflict::IsRich(SolverField field) const
{
    const ConflictText* text = ConflictTextOf(field);
    return text && text->IsRich;
}

bool ShownConflict::IsText(ConflictSide side)
{
    return ConflictTextOf(m_field) || ShownFile(side);
}

/// The selected file as a version has it; null where it has none, or files are not shown.
CConflictFileObject* ShownConflict::ShownFile(ConflictSide side)
{
    if (m_field != SolverField::Files || m_file < 0)
        return nullptr;
    const ConflictFileRow& row = m_files[size_t(m_file)];
    const ConflictSide home = row.Mark == u'Y' ? ConflictSide::TempItem : ConflictSide::Item;
    CConflictFileObject* file = m_conflict->Side(home).FileObjects().Item(row.File);
    return !file || side == home ? file : m_conflict->Side(side).FileObjects().Item(file->CorrespondingID());
}

QString ShownConflict::RawText(ConflictSide side)
{
    if (const ConflictText* text = ConflictTextOf(m_field))
        return (m_conflict->Side(side).*text->Get)();
    CConflictFileObject* file = ShownFile(side);
    return file ? file->Description() : QString();
}

const QString& ShownConflict::PlainText(ConflictSide side)
{
    std::optional<QString>& plain = m_plain[size_t(side)];
    if (!plain) {
        const ConflictText* text = ConflictTextOf(m_field);
        plain = text ? text->Plain(RawText(side)) : RawText(side);
    }
    return *plain;
}

LineComparison ShownConflict::Compare()
{
    if (IsHuge(ConflictSide::Item) || IsHuge(ConflictSide::TempItem))
        return {.Lines = {}, .IsTooLarge = true};
    return CompareLines(PlainText(ConflictSide::Item), PlainText(ConflictSide::TempItem));
}

ShownConflict::Difference ShownConflict::DifferenceOfField()
{
    if (!ConflictTextOf(m_field))
        return Difference::None;
    if (!m_difference) {
        if (RawText(ConflictSide::Item) == RawText(ConflictSide::TempItem))
            m_difference = Difference::None;
        else if (IsHuge(ConflictSide::Item) || IsHuge(ConflictSide::TempItem))
            m_difference = Difference::Content; // the automatic pass has read them
        else
            m_difference = PlainText(ConflictSide::Item) == PlainText(ConflictSide::TempItem) ? Difference::Format
                                                                                              : Difference::Content;
    }
    return *m_difference;
}

QString ShownConflict::DifferenceText()
{
    switch (DifferenceOfField()) {
    case Difference::Content:
        return u"Content conflict"_s;
    case Difference::Format:
        return u"Format conflict"_s;
    case Difference::None:
        break;
    }
    return {};
}

void ShownConflict::Edited(ConflictSide side, const QString& text)
{
    m_edited[size_t(side)] = text;
}

bool ShownConflict::IsEdited() const
{
    const bool isMarked = std::any_of(m_files.begin(), m_files.end(),
                                      [](const ConflictFileRow& row) { return row.Icon.startsWith(u"HALF"_s); });
    const bool isChosen = m_statusSide != ConflictSide::Item || m_ratingSide != ConflictSide::Item;
    return m_wasEdited || m_edited[0] || m_edited[1] || isMarked || isChosen;
}

void ShownConflict::SaveEditedField()
{
    if (!m_conflict)
        return;
    Guarded(FormName, u"SaveEditedField"_s, [this] {
        for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem}) {
            const std::optional<QString> text = std::exchange(m_edited[size_t(side)], std::nullopt);
            if (!text)
                continue;
            if (const ConflictText* field = ConflictTextOf(m_field))
                (m_conflict->Side(side).*field->Set)(*text);
            else if (CConflictFileObject* file = ShownFile(side))
                file->SetDescription(*text);
            m_wasEdited = true;
            Forget();
        }
    });
}

void ShownConflict::SelectFile(int row)
{
    SaveEditedField();
    m_file = row >= 0 && size_t(row) < m_files.size() ? row : -1;
    Forget();
}

void ShownConflict::MoveFile(int row, FileMove move)
{
    if (row >= 0 && size_t(row) < m_files.size())
        ToggleMove(*m_conflict, m_files[size_t(row)], move);
}

void ShownConflict::ApplyChosenSides()
{
    if (m_statusSide == ConflictSide::TempItem)
        m_conflict->Item().SetItemStatus(m_conflict->TempItem().ItemStatus());
    if (m_ratingSide == ConflictSide::TempItem)
        m_conflict->Item().SetItemRating(m_conflict->TempItem().ItemRating());
}

// Three ways

QString ShownConflict::BaseText() const
{
    const ConflictText* text = ConflictTextOf(m_field);
    return text && HasBase() ? (*m_base).*text->Base : QString();
}

QString ShownConflict::OriginText()
{
    if (!m_conflict)
        return {};
    const ConflictOrigin origin(*m_conflict, m_since, std::bind_front(&ShownConflict::SideName, this));
    if (const ConflictText* text = ConflictTextOf(m_field))
        return origin.OfText(*text, m_base, Merge());
    if (m_field == SolverField::HTML)
        return origin.OfPage();
    return m_file >= 0 ? origin.OfFile(m_files[size_t(m_file)]) : QString();
}

const std::optional<MergedText>& ShownConflict::Merge()
{
    if (m_merged)
        return *m_merged;
    m_merged.emplace();
    const ConflictText* field = ConflictTextOf(m_field);
    const bool canMerge = field && HasBase() && DifferenceOfField() != Difference::None && !IsHuge(ConflictSide::Item)
                          && !IsHuge(ConflictSide::TempItem) && PlainText(ConflictSide::Item).size() <= LongestCompared
                          && PlainText(ConflictSide::TempItem).size() <= LongestCompared;
    if (canMerge)
        *m_merged = MergeTexts(field->Plain((*m_base).*field->Base), PlainText(ConflictSide::Item),
                               PlainText(ConflictSide::TempItem));
    return *m_merged;
}

bool ShownConflict::TakeMerged()
{
    if (!HasBase())
        return false;
    SaveEditedField();
    return Guarded(
        FormName, u"TakeMerged"_s,
        [this] {
            CConflictCodeItem& own = m_conflict->Item();
            CConflictCodeItem& other = m_conflict->TempItem();
            MergeVersions(own, other, *m_base);
            if (own.ItemStatus() == m_base->Status)
                m_statusSide = ConflictSide::TempItem;
            if (own.ItemRating() == m_base->Rating)
                m_ratingSide = ConflictSide::TempItem;
            m_wasEdited = true;
            m_inConflict = FieldsInConflict(*m_conflict);
            Forget();
            return true;
        },
        false);
}

} // namespace qb
