#include "platform/dao/Schema.h"

#include <algorithm>
#include <cmath>

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

std::optional<ValueRange> RangeOf(FieldType type)
{
    switch (type) {
    case FieldType::Boolean:
        return ValueRange{-1, 0};
    case FieldType::Byte:
        return ValueRange{0, 255};
    case FieldType::Integer:
        return ValueRange{-32768, 32767};
    case FieldType::Long:
        return ValueRange{-2147483648LL, 2147483647};
    case FieldType::Date: // from the year 100 to the year 9999
        return ValueRange{-56802297600, 255611462399};
    case FieldType::Text:
    case FieldType::Memo:
    case FieldType::LongBinary:
        break;
    }
    return std::nullopt;
}

bool Field::IsInRange(const Value& value) const
{
    const std::optional<ValueRange> range = RangeOf(Type);
    if (!range || value.IsNull())
        return true;
    if (std::holds_alternative<QByteArray>(value.Content()))
        return false;
    // A text of a number is stored as the number.
    bool isNumber = true;
    const auto* text = std::get_if<QString>(&value.Content());
    const double number = text ? text->toDouble(&isNumber) : value.ToDouble();
    return isNumber && number == std::floor(number) && number >= double(range->Low) && number <= double(range->High);
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
