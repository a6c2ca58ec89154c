#pragma once

#include "platform/system/Date.h"

#include <QString>

namespace qb {

/// A stored file as it is printed.
class CPrintFile {
public:
    QString Title() const { return m_title; }
    void SetTitle(const QString& value) { m_title = value; }
    Date OrigDateTime() const { return m_origDateTime; } ///< the source file's own date
    void SetOrigDateTime(Date value) { m_origDateTime = value; }
    Date DateAdded() const { return m_dateAdded; }
    void SetDateAdded(Date value) { m_dateAdded = value; }
    /// In bytes, as it is printed: "1,234,567"; empty for 0.
    QString Size() const { return m_size; }
    void SetSize(const QString& value) { m_size = value; }
    QString Description() const { return m_description; }
    void SetDescription(const QString& value) { m_description = value; }

private:
    QString m_title;
    Date m_origDateTime;
    Date m_dateAdded;
    QString m_size;
    QString m_description;
};

} // namespace qb
