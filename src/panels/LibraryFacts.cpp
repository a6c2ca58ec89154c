#include "panels/LibraryFacts.h"

#include <QFileInfo>
#include <QLocale>

namespace qb {

using namespace Qt::StringLiterals;

LibraryFacts ReadLibraryFacts(Library& library)
{
    const ReplicaState state = ReadReplicaState(library);
    LibraryFacts facts;
    facts.Size = QFileInfo(library.Name()).size();
    if (state.IsChild) {
        facts.Type = ReplicaType::Child;
        facts.LastSynchronized = state.LastExported.IsNone() ? state.LastSynchronized : state.LastExported;
    }
    if (state.IsMother) {
        facts.Type = ReplicaType::Mother;
        facts.Children = state.Children;
        if (!state.IsChild)
            facts.LastSynchronized = library.QueryValue(u"SELECT max(LastSynchronized) FROM ChildCopies"_s).ToDate();
    }
    return facts;
}

QString CaptionOf(ReplicaType type)
{
    switch (type) {
    case ReplicaType::Mother:
        return u"Mother Replica"_s;
    case ReplicaType::Child:
        return u"Child Replica"_s;
    case ReplicaType::None:
        break;
    }
    return u"No Replication"_s;
}

QString ToolTipOf(ReplicaType type)
{
    switch (type) {
    case ReplicaType::Mother:
        return u"The current database is 'Mother replica'"_s;
    case ReplicaType::Child:
        return u"The current database is a 'Child Replica'"_s;
    case ReplicaType::None:
        break;
    }
    return u"This database has no replication set"_s;
}

QString DayOrNever(Date date)
{
    return date.IsNone() ? u"Never"_s : QLocale().toString(date.Day(), QLocale::ShortFormat);
}

QString SizeText(qint64 bytes)
{
    constexpr qint64 Kilobyte = 1024;
    return QLocale(QLocale::English).toString((bytes + Kilobyte / 2) / Kilobyte) + u" kB"_s;
}

} // namespace qb
