#pragma once

#include "conflicts/ConflictFields.h"
#include "conflicts/ConflictFileRows.h"
#include "conflicts/LineComparison.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace qb {

using FindBaseVersion = std::function<std::optional<BaseVersion>(qint64 item)>;

/// The one conflict that is looked at: its fields and texts, how they differ and who has changed them, and what the
/// user makes of them before a decision.
class ShownConflict {
public:
    void SetFindBase(FindBaseVersion find) { m_findBase = std::move(find); }

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

protected:
    explicit ShownConflict(Library& library) : m_library(library) {}
    ~ShownConflict() = default;

    Library& OwnLibrary() { return m_library; }
    /// Looks at the conflict of another item. False when it could not be shown, which is reported.
    bool Show(qint64 item);
    /// Nothing is looked at any more.
    void Leave() { m_conflict.reset(); }
    /// The item gets the status and the rating that were chosen, with the decision.
    void ApplyChosenSides();
    const std::array<bool, SolverFieldCount>& FieldsOfConflict() const { return m_inConflict; }
    /// When both libraries were the same last.
    void SetSince(std::optional<Date> since) { m_since = since; }

private:
    void SelectFirstConflict();
    void Forget();
    CConflictFileObject* ShownFile(ConflictSide side);

    Library& m_library;
    FindBaseVersion m_findBase;
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
