#pragma once

#include "conflicts/AutomaticResolution.h"
#include "conflicts/ConflictFields.h"
#include "conflicts/ConflictFileRows.h"
#include "conflicts/LineComparison.h"
#include "platform/system/Hook.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace qb {

using FindBaseVersion = std::function<std::optional<BaseVersion>(qint64 item)>;

/// The walk through the conflicts of a library and the decisions on the way, without a window.
class ConflictSolver {
public:
    /// The library must outlive the solver.
    explicit ConflictSolver(Library& library);

    /// For the item alone instead of all conflicts.
    void SetOnly(qint64 item) { m_only = item; }
    void SetFindBase(FindBaseVersion find) { m_findBase = std::move(find); }
    /// An item is no conflict any more: its node gets its usual image.
    Hook<void(qint64 item)> Decided;
    /// All conflicts are solved: whether any still occur is to be looked at.
    Hook<void()> AllSolved;

    /// Resolves what can be without the user, and shows the first of the rest. False when nothing is left; the user has
    /// been told so.
    bool Load();
    /// What needed nobody, and what of it was dropped.
    const AutomaticResolution& Settled() const { return m_settled; }

    // Where it stands
    int Count() const { return m_count; }
    int Number() const { return m_number; }
    QString StatusText() const; ///< "Conflict No. 1 of 3"
    bool CanMoveNext() const { return m_place + 1 < m_items.size(); }
    bool CanMovePrevious() const { return m_place > 0 && !m_items.empty(); }
    /// There is a conflict to look at. False after the last decision, or when it could not be shown.
    bool HasConflict() const { return m_conflict != nullptr; }
    CConflict& Conflict() { return *m_conflict; }

    QString ItemTitle() const { return m_title; }
    /// Shortened from the left with "..." until @p fits says that it does.
    QString ItemPath(const std::function<bool(const QString&)>& fits) const;
    /// "Main" or "Replica".
    QString SideName(ConflictSide side);
    /// " Database Item (5/03/2026 14:30:05)", with that before it.
    QString Caption(ConflictSide side);

    // Fields
    bool IsInConflict(SolverField field) const { return m_inConflict[size_t(field)]; }
    SolverField Field() const { return m_field; }
    /// Saves what was edited of the former field.
    void SelectField(SolverField field);
    bool NextField();
    bool PreviousField();
    bool IsRich(SolverField field) const;
    /// What a version says in the current field is a text, which can be edited.
    bool IsText(ConflictSide side);
    /// What a version says in the current field, as RTF or as plain text; of Item Info what there is to tell.
    QString RawText(ConflictSide side);
    /// It is so long that it is not read, but for its begin.
    bool IsHuge(ConflictSide side) { return RawText(side).size() > LongestRead; }
    /// The same without looks.
    const QString& PlainText(ConflictSide side);
    /// Compares the two plain texts of the field.
    LineComparison Compare();
    enum class Difference { None, Content, Format };
    Difference DifferenceOfField();
    QString DifferenceText(); ///< "Content conflict" or "Format conflict"; empty where nothing differs

    /// What the user made of one side, to be saved by SaveEditedField.
    void Edited(ConflictSide side, const QString& text);
    bool IsEdited() const;
    void SaveEditedField();
    void Swap() { m_swapped = !m_swapped; }
    /// Whose text stands on the left, or on the right.
    ConflictSide LeftSide() const { return m_swapped ? ConflictSide::TempItem : ConflictSide::Item; }
    ConflictSide RightSide() const { return OtherSide(LeftSide()); }

    // Files
    std::vector<ConflictFileRow>& FileRows() { return m_files; }
    /// Whose descriptions the two boxes show from now on; those edited are saved first.
    void SelectFile(int row);
    int SelectedFile() const { return m_file; }
    /// Marks, or unmarks, the file of a row.
    void MoveFile(int row, FileMove move);

    // Three ways

    /// The version that both came from is known.
    bool HasBase() const { return m_conflict && m_base; }
    /// What it says in the current field, as RawText.
    QString BaseText() const;
    /// Who has changed what is shown, in a sentence; of files the selected one. Empty where nothing differs.
    QString OriginText();
    /// What both made of the base; nothing where no base is known, or for fields without text.
    const std::optional<MergedText>& Merge();
    /// Lets both versions have what only one side has changed, in all fields, with its looks; status and rating too.
    /// Where both changed the same lines each keeps its own, and the field stays in conflict. False when there is no
    /// base.
    bool TakeMerged();

    // Status and rating: no conflict, and to be chosen all the same
    /// Whose the item has after a decision; the library's own unless another was chosen.
    ConflictSide StatusSide() const { return m_statusSide; }
    void SetStatusSide(ConflictSide side) { m_statusSide = side; }
    ConflictSide RatingSide() const { return m_ratingSide; }
    void SetRatingSide(ConflictSide side) { m_ratingSide = side; }

    // Decisions and moves
    /// 1 keeps the newer version, 2 the older one. False when that failed, or when it was the last conflict.
    bool Keep(int which);
    /// Keeps it in all conflicts that differ in the same fields as this one. Returns how many were decided.
    int KeepAllLikeThis(int which);
    bool MoveNext();
    bool MovePrevious();
    /// Asks about what was edited, before the solver goes.
    bool MayClose() { return MayLeave(u"close the solver"); }

private:
    void ReadItems();
    bool DisplayItem();
    void SelectFirstConflict();
    void Forget();
    QString PathOf(qint64 item) const;
    CConflictFileObject* ShownFile(ConflictSide side);
    void SetText(ConflictSide side, const QString& text);
    bool MayLeave(QStringView way);
    bool Decide(int which);
    void AfterDecision();

    Library& m_library;
    AutomaticResolution m_settled;
    std::optional<qint64> m_only;
    FindBaseVersion m_findBase;
    std::vector<qint64> m_items;
    size_t m_place = 0;
    int m_count = 0;
    int m_number = 0;
    std::unique_ptr<CConflict> m_conflict;
    QString m_title;
    QStringList m_path;
    std::array<bool, SolverFieldCount> m_inConflict{};
    SolverField m_field = SolverField::Title;
    bool m_swapped = false;
    bool m_wasEdited = false; ///< also of fields that were left
    std::array<std::optional<QString>, 2> m_edited;
    std::vector<ConflictFileRow> m_files;
    int m_file = -1;
    std::optional<BaseVersion> m_base;
    std::optional<Date> m_since; ///< when both were the same
    ConflictSide m_statusSide = ConflictSide::Item;
    ConflictSide m_ratingSide = ConflictSide::Item;

    // Of the field that is shown, once it was asked for
    std::array<std::optional<QString>, 2> m_plain;
    std::optional<Difference> m_difference;
    std::optional<std::optional<MergedText>> m_merged;
};

} // namespace qb
