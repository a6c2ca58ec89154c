#include "removed/RemovedRows.h"

namespace qb {

using namespace Qt::StringLiterals;

RemovedRows RemovedRows::OfLibrary(const QString& where, const Values& parameters)
{
    return {.Where = where, .Parameters = parameters};
}

RemovedRows RemovedRows::InColumns(const QString& schema, const QString& where, const Values& parameters,
                                   const QString& prefix)
{
    return {.Where = where,
            .Parameters = parameters,
            .Schema = schema,
            .Items = prefix + u"Items"_s,
            .Files = prefix + u"Files"_s,
            .Pages = prefix + u"HTMLFiles"_s,
            .Lie = Contents::InColumns,
            .Links = {}};
}

} // namespace qb
