#pragma once

#include "conflicts/CConflict.h"

#include <QString>
#include <array>
#include <vector>

namespace qb {

/// What of a conflict is shown, in the order in which one steps through it.
enum class SolverField { Title, Description, Code, Notes, Usage, Files, HTML, ItemInfo };
inline constexpr int SolverFieldCount = 8;

/// The version that both sides came from, where somebody knows it.
struct BaseVersion {
    QString Title;
    QString Description;
    QString Info;
    QString Code; ///< as the next two RTF
    QString Notes;
    QString Usage;
    quint8 CodeHeaders = 0; ///< the sections of these texts
    quint8 UsageHeaders = 0;
    qint32 Status = 0;
    qint32 Rating = 0;
};

/// One text of a version: by which name it goes, and how it is read and written.
struct ConflictText {
    SolverField Field;
    QString Name;
    bool IsRich;
    QString (CConflictCodeItem::*Get)();
    void (CConflictCodeItem::*Set)(const QString&);
    QString BaseVersion::*Base;
    // The sections that go with it; null for a text without.
    quint8 (CConflictCodeItem::*GetHeaders)() = nullptr;
    void (CConflictCodeItem::*SetHeaders)(quint8) = nullptr;
    quint8 BaseVersion::*BaseHeaders = nullptr;

    /// Without looks.
    QString Plain(const QString& stored) const;
};

/// "title", "description", "info", "code", "notes", "usage".
const std::vector<ConflictText>& ConflictTexts();
/// Null for a field that is no text.
const ConflictText* ConflictTextOf(SolverField field);
const ConflictText* ConflictTextOf(const QString& name);

/// Marks the fields in which the two versions differ.
std::array<bool, SolverFieldCount> FieldsInConflict(CConflict& conflict);

/// Lets both versions have what only one side has changed since the base, in all texts, with looks and sections.
/// Where both changed the same lines each keeps its own.
void MergeVersions(CConflictCodeItem& own, CConflictCodeItem& other, const BaseVersion& base);

} // namespace qb
