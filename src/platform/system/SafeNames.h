#pragma once

#include <QHash>
#include <QSet>
#include <QString>

namespace qb {

/// A title as the name of a file that any system takes, and that leads nowhere: no separators, no dots at its begin,
/// no names of devices, nothing that can't be seen, and not too long for what is put behind it.
QString SafeName(const QString& title);

/// A title as the name of a file here, changed only where no file can be called so; what was a file's name stays what
/// it was.
QString FileNameOf(const QString& title);

/// Names that are given once in each folder.
class UniqueNames {
public:
    /// With Folded, names that differ only in case count as the same.
    enum class Compare { Exactly, Folded };
    explicit UniqueNames(Compare compare) : m_compare(compare) {}

    /// @p name, or with a number in brackets, under which, alone and with each of @p endings behind it, nothing has
    /// been taken in @p folder. All of these are taken then.
    QString Take(const QString& folder, const QString& name, const QStringList& endings = {});

private:
    QString Key(const QString& name) const { return m_compare == Compare::Folded ? name.toCaseFolded() : name; }

    Compare m_compare;
    QHash<QString, QSet<QString>> m_taken; ///< by folder
    QHash<QString, int> m_next;            ///< the number to try first, by folder and name
};

} // namespace qb
