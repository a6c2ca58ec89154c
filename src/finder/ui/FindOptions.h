#pragma once

#include "find/FindQuery.h"

#include <QWidget>
#include <array>

class QCheckBox;
class QComboBox;
class QDateEdit;

namespace qb {

/// Where a find looks: texts, branch, date, status, rating and language.
class FindOptions : public QWidget {
    Q_OBJECT

public:
    explicit FindOptions(QWidget* parent = nullptr);

    /// Puts what is chosen into a query.
    void Put(FindQuery& query) const;
    /// Shows what a query says.
    void Show(const FindQuery& query);
    /// The item below which the find can be kept; 0: none is shown.
    void SetItem(qint64 item, const QString& title);
    void SetLanguages(const QStringList& languages);
    /// Something narrows the find.
    bool IsNarrow() const;

Q_SIGNALS:
    void Changed();

private:
    QWidget* MakeFields();
    QWidget* MakeLimits();

    std::array<QCheckBox*, FindFields> m_fields{};
    QCheckBox* chkBranch;
    QCheckBox* chkSince;
    QDateEdit* dteSince;
    QComboBox* cboStatus;
    QComboBox* cboRating;
    QComboBox* cboLanguage;
    qint64 m_item = 0;
    QStringList m_languages;
};

} // namespace qb
