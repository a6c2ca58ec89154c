#include "conflicts/ConflictOrigin.h"

#include "replication/MergeReport.h"

namespace qb {

using namespace Qt::StringLiterals;

std::optional<Date> LastCommonMoment(Library& library)
{
    const std::vector<MergeReport> reports = ReadReports(library, 1);
    if (reports.empty() || reports.front().Since.IsNone())
        return std::nullopt;
    return reports.front().Since;
}

ConflictOrigin::ConflictOrigin(CConflict& conflict, std::optional<Date> since,
                               std::function<QString(ConflictSide)> nameOf)
    : m_conflict(conflict), m_since(since), m_nameOf(std::move(nameOf))
{
}

/// @p one has a place for the name of the version that alone was changed.
QString ConflictOrigin::Sentence(bool own, bool other, const QString& one, const QString& both) const
{
    if (own && other)
        return both;
    return own || other ? one.arg(m_nameOf(own ? ConflictSide::Item : ConflictSide::TempItem)) : QString();
}

QString ConflictOrigin::OfText(const ConflictText& text, const std::optional<BaseVersion>& base,
                               const std::optional<MergedText>& merged) const
{
    const QString own = (m_conflict.Item().*text.Get)();
    const QString other = (m_conflict.TempItem().*text.Get)();
    if (own == other)
        return {};
    if (!base)
        return u"The version that both came from is not known"_s;
    const QString lines = !merged              ? QString()
                          : merged->HasClash() ? u", in the same lines too"_s
                                               : u", in different lines"_s;
    const QString& former = (*base).*text.Base;
    return Sentence(own != former, other != former, u"Only the %1 version was changed since both were the same"_s,
                    u"Both versions were changed since they were the same"_s + lines);
}

QString ConflictOrigin::OfFile(const ConflictFileRow& row) const
{
    const bool isOther = row.Mark == u'Y';
    CConflictFileObject* file =
        m_conflict.Side(isOther ? ConflictSide::TempItem : ConflictSide::Item).FileObjects().Item(row.File);
    if (!m_since || !file)
        return {};
    if (CConflictFileObject* other = m_conflict.TempItem().FileObjects().Item(file->CorrespondingID())) {
        if (file->Description() == other->Description())
            return {};
        return Sentence(file->LastUpdated() > *m_since, other->LastUpdated() > *m_since,
                        u"Only the %1 version describes it otherwise since both were the same"_s,
                        u"Both versions describe it otherwise since they were the same"_s);
    }
    if (file->DateAdded() > *m_since)
        return Sentence(!isOther, isOther, u"It was added to the %1 version since both were the same"_s, {});
    // What one version has from before may have come to it from elsewhere; the own one gets all that the other has.
    return Sentence(isOther, false, u"It was deleted from the %1 version since both were the same"_s, {});
}

QString ConflictOrigin::OfPage() const
{
    const Date own = m_conflict.HTMLLastUpdated();
    const Date other = m_conflict.TempHTMLLastUpdated();
    if (!m_since || own == other)
        return {};
    return Sentence(own > *m_since, other > *m_since,
                    u"Only the page of the %1 version was changed since both were the same"_s,
                    u"Both versions have changed the page since they were the same"_s);
}

} // namespace qb
