#include "platform/dao/Schema.h"

#include <algorithm>

namespace qb {

namespace {

template <class Named>
const Named* FindByName(const std::vector<Named>& all, const QString& name)
{
    const auto found = std::find_if(
        all.begin(), all.end(), [&name](const Named& one) { return one.Name.compare(name, Qt::CaseInsensitive) == 0; });
    return found == all.end() ? nullptr : &*found;
}

} // namespace

int Field::Attributes() const
{
    if (AutoIncrement)
        return SchemaAttribute::FixedField | SchemaAttribute::AutoIncrField;
    const bool variable = Type == FieldType::Text || Type == FieldType::Memo || Type == FieldType::LongBinary;
    return variable ? SchemaAttribute::VariableField : SchemaAttribute::FixedField;
}

const Field* TableDef::FindField(const QString& name) const
{
    return FindByName(Fields, name);
}

const Index* TableDef::FindIndex(const QString& name) const
{
    return FindByName(Indexes, name);
}

QString Quoted(const QString& name)
{
    QString inner = name;
    inner.replace(u'"', QLatin1StringView("\"\""));
    return u'"' + inner + u'"';
}

QString Qualified(const QString& schema, const QString& name)
{
    return Quoted(schema.isEmpty() ? MainSchema : schema) + u'.' + Quoted(name);
}

} // namespace qb
