#include "finder/ui/FindOptions.h"

#include "panels/ItemInfo.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// In the order of the fields.
constexpr const char* FieldCaptions[] = {"&Title",      "&Description", "&Code",           "N&otes",   "&Usage",
                                         "File &names", "File te&xts",  "&Links and info", "Web &page"};
static_assert(std::size(FieldCaptions) == FindFields);

QComboBox* MakeCombo(const QString& name, const QString& accessible)
{
    auto* combo = new QComboBox;
    combo->setObjectName(name);
    combo->setAccessibleName(accessible);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(10);
    return combo;
}

/// The number that is chosen; nothing for the first entry, which is any.
std::optional<qint32> NumberOf(const QComboBox& combo)
{
    return combo.currentIndex() <= 0 ? std::nullopt : std::optional(qint32(combo.currentData().toInt()));
}

void SelectNumber(QComboBox& combo, const std::optional<qint32>& number)
{
    combo.setCurrentIndex(number ? qMax(0, combo.findData(*number)) : 0);
}

} // namespace

FindOptions::FindOptions(QWidget* parent)
    : QWidget(parent), chkBranch(new QCheckBox), chkSince(new QCheckBox(u"Changed &since"_s)),
      dteSince(new QDateEdit(QDate::currentDate().addDays(-7))), cboStatus(MakeCombo(u"cboStatus"_s, u"Status"_s)),
      cboRating(MakeCombo(u"cboRating"_s, u"Rating"_s)), cboLanguage(MakeCombo(u"cboLanguage"_s, u"Language"_s))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(MakeFields(), 3);
    layout->addWidget(MakeLimits(), 2);
    SetItem(0, {});
    SetLanguages({});
}

QWidget* FindOptions::MakeFields()
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(0, 0, 0, 0);
    constexpr int Columns = 3;
    for (size_t i = 0; i < FindFields; ++i) {
        auto* box = new QCheckBox(QString::fromLatin1(FieldCaptions[i]));
        box->setObjectName(u"chkField"_s + LetterOf(FindField(i)));
        box->setChecked(true);
        connect(box, &QCheckBox::toggled, this, &FindOptions::Changed);
        grid->addWidget(box, int(i) / Columns, int(i) % Columns);
        m_fields[i] = box;
    }
    chkBranch->setObjectName(u"chkBranch"_s);
    connect(chkBranch, &QCheckBox::toggled, this, &FindOptions::Changed);
    grid->addWidget(chkBranch, Columns, 0, 1, Columns);
    return page;
}

QWidget* FindOptions::MakeLimits()
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(0, 0, 0, 0);
    chkSince->setObjectName(u"chkSince"_s);
    dteSince->setObjectName(u"dteSince"_s);
    dteSince->setCalendarPopup(true);
    dteSince->setEnabled(false);
    connect(chkSince, &QCheckBox::toggled, dteSince, &QWidget::setEnabled);
    connect(chkSince, &QCheckBox::toggled, this, &FindOptions::Changed);
    connect(dteSince, &QDateEdit::dateChanged, this, &FindOptions::Changed);
    cboStatus->addItem(u"Any status"_s);
    for (const StatusRow& row : StatusRows())
        cboStatus->addItem(QString::fromLatin1(row.Caption).remove(u'&'), qint32(row.Status));
    cboRating->addItem(u"Any rating"_s);
    for (qint32 rating = 1; rating <= BestRating; ++rating)
        cboRating->addItem(RatingText(rating), rating);
    grid->addWidget(chkSince, 0, 0);
    grid->addWidget(dteSince, 0, 1);
    grid->addWidget(cboStatus, 1, 0);
    grid->addWidget(cboRating, 1, 1);
    grid->addWidget(cboLanguage, 2, 0, 1, 2);
    for (QComboBox* combo : {cboStatus, cboRating, cboLanguage})
        connect(combo, &QComboBox::currentIndexChanged, this, &FindOptions::Changed);
    return page;
}

void FindOptions::SetItem(qint64 item, const QString& title)
{
    m_item = item;
    const QSignalBlocker blocker(chkBranch);
    if (item == 0)
        chkBranch->setChecked(false);
    chkBranch->setEnabled(item != 0);
    constexpr int Longest = 240;
    const QString shown = chkBranch->fontMetrics().elidedText(title, Qt::ElideRight, Longest).replace(u'&', u"&&"_s);
    chkBranch->setText(item == 0 ? u"Only the &branch of the item that is shown"_s
                                 : u"Only the &branch of “%1”"_s.arg(shown));
}

void FindOptions::SetLanguages(const QStringList& languages)
{
    if (cboLanguage->count() > 0 && languages == m_languages)
        return;
    m_languages = languages;
    const QSignalBlocker blocker(cboLanguage);
    const QString chosen = cboLanguage->currentIndex() > 0 ? cboLanguage->currentText() : QString();
    cboLanguage->clear();
    cboLanguage->addItem(u"Any language"_s);
    cboLanguage->addItems(languages);
    if (!chosen.isEmpty() && !languages.contains(chosen))
        cboLanguage->addItem(chosen);
    cboLanguage->setCurrentIndex(chosen.isEmpty() ? 0 : cboLanguage->findText(chosen));
}

void FindOptions::Put(FindQuery& query) const
{
    query.Fields = 0;
    for (size_t i = 0; i < FindFields; ++i) {
        if (m_fields[i]->isChecked())
            query.Fields |= BitOf(FindField(i));
    }
    query.Branch = chkBranch->isChecked() ? m_item : 0;
    query.ChangedSince = chkSince->isChecked() ? Date::FromParts(dteSince->date()) : Date();
    query.Status = NumberOf(*cboStatus);
    query.Rating = NumberOf(*cboRating);
    query.Language = cboLanguage->currentIndex() > 0 ? cboLanguage->currentText() : QString();
}

void FindOptions::Show(const FindQuery& query)
{
    {
        const QSignalBlocker blocker(this); // one change
        for (size_t i = 0; i < FindFields; ++i)
            m_fields[i]->setChecked(query.Fields & BitOf(FindField(i)));
        chkBranch->setChecked(query.Branch != 0 && query.Branch == m_item);
        chkSince->setChecked(!query.ChangedSince.IsNone());
        if (!query.ChangedSince.IsNone())
            dteSince->setDate(query.ChangedSince.Day());
        SelectNumber(*cboStatus, query.Status);
        SelectNumber(*cboRating, query.Rating);
        if (!query.Language.isEmpty() && cboLanguage->findText(query.Language) < 0)
            cboLanguage->addItem(query.Language);
        cboLanguage->setCurrentIndex(query.Language.isEmpty() ? 0 : cboLanguage->findText(query.Language));
    }
    Q_EMIT Changed();
}

bool FindOptions::IsNarrow() const
{
    FindQuery query;
    Put(query);
    return query.Fields != AllFindFields || query.Branch != 0 || !query.ChangedSince.IsNone() || query.Status
           || query.Rating || !query.Language.isEmpty();
}

} // namespace qb
