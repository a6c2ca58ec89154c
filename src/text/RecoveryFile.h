#pragma once

#include "platform/system/Date.h"

#include <QString>
#include <optional>
#include <vector>

namespace qb {

/// Edited texts of an item that were not saved yet.
struct UnsavedTexts {
    qint64 Item = 0;
    Date LastChanged;            ///< of the row that was edited
    std::optional<QString> Code; ///< RTF; nothing for a text that was not edited
    std::optional<QString> Notes;
    std::optional<QString> Usage;
    std::optional<QString> Info = {}; ///< plain
};

/// The file that keeps a library's unsaved texts while they are typed, so that they survive the
/// program: one a library, in the program's folder, as JSON.
class RecoveryFile {
public:
    /// For the library at that path, which need not exist. Its file is found by the path alone: a library that was
    /// moved has another one. Nothing is read or made yet.
    explicit RecoveryFile(const QString& library);

    /// Keeps the texts. A failure is no error: the file is only a net.
    void Write(const UnsavedTexts& texts) const;
    /// What was kept; nothing when there is no file, or it is damaged or another library's.
    std::optional<UnsavedTexts> Read() const;
    void Remove() const;
    QString Path() const { return m_path; }

    /// All of a library: the one that is written now, and those that were set aside.
    static std::vector<RecoveryFile> All(const QString& library);
    /// Gives the file a name under which it is offered again, and nothing is written over it.
    RecoveryFile SetAside() const;
    /// Gives the file a name under which it is not offered any more; returns its path.
    QString Keep() const;

private:
    RecoveryFile RenamedTo(const QString& path) const;
    QString m_library;
    QString m_path;
};

} // namespace qb
