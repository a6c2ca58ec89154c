#include "conflicts/ConflictSolver.h"

#include "conflicts/ComparedBoxes.h"
#include "conflicts/ConflictOrigin.h"
#include "platform/richtext/Rtf.h"
#include "platform/system/Prompts.h"
#include "support/DateFormatCustom.h"
#include "support/ErrorRoutine.h"

#include <QSet>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString FormName = u"frmConflicts"_s;

} // namespace

ConflictSolver::ConflictSolver(Library& library) : m_library(library) {}

bool ConflictSolver::Load()
{
    auto info = Prompts::Current().InformUser(u"Trying to resolve problems automaticaly. Please wait..."_s);
    AutomaticResolveProblems(m_library, &m_settled);
    ReadItems();
    m_count = int(m_items.size());
    if (m_items.empty()) {
        info.reset();
        Prompts::Current().MsgBox({.Text = u"All conflicts were resolved automaticaly."_s,
                                   .Caption = u"All problems resolved"_s,
                                   .Icon = MsgBoxIcon::Information});
        return false;
    }
    m_number = 1;
    m_since = LastCommonMoment(m_library);
    DisplayItem();
    return true;
}

void ConflictSolver::ReadItems()
{
    m_items.clear();
    m_place = 0;
    if (!m_library.TableExists(u"TempItems"_s))
        return;
    Statement rows = m_library.Query(u"SELECT ID FROM TempItems ORDER BY rowid"_s);
    while (rows.Step()) {
        if (!m_only || *m_only == rows.Long(0))
            m_items.push_back(rows.Long(0));
    }
}

QString ConflictSolver::StatusText() const
{
    return u"Conflict No. %1 of %2"_s.arg(m_number).arg(m_count);
}

bool ConflictSolver::DisplayItem()
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
        [this] {
            const qint64 item = m_items[m_place];
            if (m_library.QueryValue(u"SELECT 1 FROM Items WHERE ID = ?"_s, {item}).IsNull())
                throw RuntimeError(ErrorNumber::RecordDeleted, u"Reqired item not fount in the database."_s,
                                   u"frmConflicts; DisplayItem"_s);
            auto conflict = std::make_unique<CConflict>();
            conflict->Initialize(m_library, item);
            m_conflict = std::move(conflict);
            m_title = m_conflict->Title();
            m_path = PathOf(item).split(u'/');
            m_inConflict = FieldsInConflict(*m_conflict);
            m_files = FileRowsOf(*m_conflict);
            if (m_findBase)
                m_base = m_findBase(item);
            SelectFirstConflict();
            return true;
        },
        false);
}

/// The titles above an item, from the root on.
QString ConflictSolver::PathOf(qint64 item) const
{
    QStringList titles;
    QSet<qint64> seen;
    while (item > 0 && !seen.contains(item)) {
        seen.insert(item);
        Statement row = m_library.Query(u"SELECT ID, Title, ParentID FROM Items WHERE ID = ?"_s, {item});
        if (!row.Step())
            break;
        titles.prepend(row.Text(1).replace(u'/', u'\u2215'));
        item = row.Long(2);
    }
    return titles.join(u'/');
}

QString ConflictSolver::ItemPath(const std::function<bool(const QString&)>& fits) const
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

QString ConflictSolver::SideName(ConflictSide side)
{
    const bool isFromOutside = (side == ConflictSide::TempItem) == m_conflict->TempItemIsFromReplica();
    return isFromOutside == m_library.IsChildReplica() ? u"Main"_s : u"Replica"_s;
}

QString ConflictSolver::Caption(ConflictSide side)
{
    return SideName(side)
           + u" Database Item (%1)"_s.arg(
               DateFormatCustom(m_conflict->Side(side).LastChanged(), u"d/mm/yyyy hh:nn:ss"_s));
}

void ConflictSolver::SelectFirstConflict()
{
    const auto found = std::find(m_inConflict.begin(), m_inConflict.end(), true);
    m_field = found == m_inConflict.end() ? SolverField::Title : SolverField(found - m_inConflict.begin());
    m_file = m_files.empty() ? -1 : 0;
}

// Fields

void ConflictSolver::SelectField(SolverField field)
{
    SaveEditedField();
    m_field = field;
    Forget();
}

/// What is known of the field that was shown.
void ConflictSolver::Forget()
{
    m_plain = {};
    m_difference.reset();
    m_merged.reset();
}

bool ConflictSolver::NextField()
{
    for (int field = int(m_field) + 1; field < SolverFieldCount; ++field) {
        if (m_inConflict[size_t(field)]) {
            SelectField(SolverField(field));
            return true;
        }
    }
    return false;
}

bool ConflictSolver::PreviousField()
{
    for (int field = int(m_field) - 1; field >= 0; --field) {
        if (m_inConflict[size_t(field)]) {
            SelectField(SolverField(field));
            return true;
        }
    }
    return false;
}

bool ConflictSolver::IsRich(SolverField field) const
{
    const ConflictText* text = ConflictTextOf(field);
    return text && text->IsRich;
}

bool ConflictSolver::IsText(ConflictSide side)
{
    return ConflictTextOf(m_field) || ShownFile(side);
}

/// The selected file as a version has it; null where it has none, or files are not shown.
CConflictFileObject* ConflictSolver::ShownFile(ConflictSide side)
{
    if (m_field != SolverField::Files || m_file < 0)
        return nullptr;
    const ConflictFileRow& row = m_files[size_t(m_file)];
    const ConflictSide home = row.Mark == u'Y' ? ConflictSide::TempItem : ConflictSide::Item;
    CConflictFileObject* file = m_conflict->Side(home).FileObjects().Item(row.File);
    return !file || side == home ? file : m_conflict->Side(side).FileObjects().Item(file->CorrespondingID());
}

QString ConflictSolver::RawText(ConflictSide side)
{
    if (const ConflictText* text = ConflictTextOf(m_field))
        return (m_conflict->Side(side).*text->Get)();
    CConflictFileObject* file = ShownFile(side);
    return file ? file->Description() : QString();
}

const QString& ConflictSolver::PlainText(ConflictSide side)
{
    std::optional<QString>& plain = m_plain[size_t(side)];
    if (!plain) {
        const ConflictText* text = ConflictTextOf(m_field);
        plain = text ? text->Plain(RawText(side)) : RawText(side);
    }
    return *plain;
}

LineComparison ConflictSolver::Compare()
{
    if (IsHuge(ConflictSide::Item) || IsHuge(ConflictSide::TempItem))
        return {.Lines = {}, .IsTooLarge = true};
    return CompareLines(PlainText(ConflictSide::Item), PlainText(ConflictSide::TempItem));
}

ConflictSolver::Difference ConflictSolver::DifferenceOfField()
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

QString ConflictSolver::DifferenceText()
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

void ConflictSolver::Edited(ConflictSide side, const QString& text)
{
    m_edited[size_t(side)] = text;
}

bool ConflictSolver::IsEdited() const
{
    const bool isMarked = std::any_of(m_files.begin(), m_files.end(),
                                      [](const ConflictFileRow& row) { return row.Icon.startsWith(u"HALF"_s); });
    const bool isChosen = m_statusSide != ConflictSide::Item || m_ratingSide != ConflictSide::Item;
    return m_wasEdited || m_edited[0] || m_edited[1] || isMarked || isChosen;
}

void ConflictSolver::SetText(ConflictSide side, const QString& text)
{
    if (const ConflictText* field = ConflictTextOf(m_field))
        (m_conflict->Side(side).*field->Set)(text);
    else if (CConflictFileObject* file = ShownFile(side))
        file->SetDescription(text);
}

void ConflictSolver::SaveEditedField()
{
    if (!m_conflict)
        return;
    Guarded(FormName, u"SaveEditedField"_s, [this] {
        for (const ConflictSide side : {ConflictSide::Item, ConflictSide::TempItem}) {
            if (const std::optional<QString> text = std::exchange(m_edited[size_t(side)], std::nullopt)) {
                SetText(side, *text);
                m_wasEdited = true;
                Forget();
            }
        }
    });
}

void ConflictSolver::SelectFile(int row)
{
    SaveEditedField();
    m_file = row >= 0 && size_t(row) < m_files.size() ? row : -1;
    Forget();
}

void ConflictSolver::MoveFile(int row, FileMove move)
{
    if (row >= 0 && size_t(row) < m_files.size())
        ToggleMove(*m_conflict, m_files[size_t(row)], move);
}

// Three ways

QString ConflictSolver::BaseText() const
{
    const ConflictText* text = ConflictTextOf(m_field);
    return text && HasBase() ? (*m_base).*text->Base : QString();
}

QString ConflictSolver::OriginText()
{
    if (!m_conflict)
        return {};
    const ConflictOrigin origin(*m_conflict, m_since, std::bind_front(&ConflictSolver::SideName, this));
    if (const ConflictText* text = ConflictTextOf(m_field))
        return origin.OfText(*text, m_base, Merge());
    if (m_field == SolverField::HTML)
        return origin.OfPage();
    return m_file >= 0 ? origin.OfFile(m_files[size_t(m_file)]) : QString();
}

const std::optional<MergedText>& ConflictSolver::Merge()
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

bool ConflictSolver::TakeMerged()
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

// Decisions and moves

bool ConflictSolver::Decide(int which)
{
    const qint64 item = m_items[m_place];
    if (m_statusSide == ConflictSide::TempItem)
        m_conflict->Item().SetItemStatus(m_conflict->TempItem().ItemStatus());
    if (m_ratingSide == ConflictSide::TempItem)
        m_conflict->Item().SetItemRating(m_conflict->TempItem().ItemRating());
    if (!m_conflict->KeepItem(which)) {
        DisplayItem(); // both versions as they are now
        return false;
    }
    m_conflict.reset();
    m_count -= 1;
    Decided(item);
    return true;
}

bool ConflictSolver::Keep(int which)
{
    if (!m_conflict)
        return false;
    SaveEditedField();
    if (!Decide(which))
        return false;
    AfterDecision();
    return HasConflict();
}

/// The next one takes the place of the one that was decided, at the end the one before.
void ConflictSolver::AfterDecision()
{
    m_items.erase(m_items.begin() + std::ptrdiff_t(m_place));
    if (m_items.empty()) {
        m_number = 0;
        Prompts::Current().MsgBox({.Text = u"All conflicts have been solved."_s,
                                   .Caption = u"All confilicts solved"_s,
                                   .Icon = MsgBoxIcon::Information});
        AllSolved();
        return;
    }
    m_place = std::min(m_place, m_items.size() - 1);
    m_number = int(m_place) + 1;
    DisplayItem();
}

int ConflictSolver::KeepAllLikeThis(int which)
{
    if (!m_conflict)
        return 0;
    SaveEditedField();
    auto info = Prompts::Current().InformUser(u"All items that differ like this are decided. Please wait..."_s);
    const std::array<bool, SolverFieldCount> like = m_inConflict;
    int decided = 0;
    for (m_place = 0; m_place < m_items.size();) {
        const bool isLike = DisplayItem() && m_inConflict == like;
        if (!isLike || !Decide(which)) {
            ++m_place;
            continue;
        }
        m_items.erase(m_items.begin() + std::ptrdiff_t(m_place));
        ++decided;
    }
    info.reset();
    m_place = 0;
    if (m_items.empty()) {
        m_items.push_back(0); // that was decided last
        AfterDecision();
    } else {
        m_number = 1;
        DisplayItem();
    }
    return decided;
}

bool ConflictSolver::MayLeave(QStringView way)
{
    if (!IsEdited())
        return true;
    return Prompts::Current().MsgBox(
               {.Text = u"The actually displayed record has been changed! You should press one of the coloured buttons "
                        "('Keep New Version' or 'Keep Old Version') to choose which version of the record you want to "
                        "keep and which version to discard.\r\nYou can also cancel all changes and just %1."_s.arg(way),
                .Caption = u"Save changes?"_s,
                .Buttons = MsgBoxButtons::OkCancel})
           == MsgBoxResult::Ok;
}

bool ConflictSolver::MoveNext()
{
    if (!CanMoveNext() || !MayLeave(u"move to the next record"))
        return false;
    ++m_place;
    ++m_number;
    DisplayItem();
    return true;
}

bool ConflictSolver::MovePrevious()
{
    if (!CanMovePrevious() || !MayLeave(u"move to the previous record"))
        return false;
    --m_place;
    --m_number;
    DisplayItem();
    return true;
}

} // namespace qb
