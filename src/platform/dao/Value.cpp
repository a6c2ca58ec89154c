#include "platform/dao/Value.h"

namespace qb {

qint64 Value::ToLong() const
{
    if (const auto* number = std::get_if<qint64>(&m_value))
        return *number;
    if (const auto* number = std::get_if<double>(&m_value))
        return qint64(*number);
    if (const auto* text = std::get_if<QString>(&m_value))
        return text->toLongLong();
    return 0;
}

double Value::ToDouble() const
{
    if (const auto* number = std::get_if<double>(&m_value))
        return *number;
    if (const auto* text = std::get_if<QString>(&m_value))
        return text->toDouble();
    return double(ToLong());
}

QString Value::ToText() const
{
    if (const auto* text = std::get_if<QString>(&m_value))
        return *text;
    if (const auto* number = std::get_if<qint64>(&m_value))
        return QString::number(*number);
    if (const auto* number = std::get_if<double>(&m_value))
        return QString::number(*number, 'g', QLocale::FloatingPointShortest);
    if (const auto* bytes = std::get_if<QByteArray>(&m_value))
        return QString::fromUtf8(*bytes);
    return {};
}

QByteArray Value::ToBytes() const
{
    if (const auto* bytes = std::get_if<QByteArray>(&m_value))
        return *bytes;
    return ToText().toUtf8();
}

void Value::Append(const Value& more)
{
    if (auto* bytes = std::get_if<QByteArray>(&m_value)) {
        bytes->append(more.ToBytes());
    } else if (std::holds_alternative<QByteArray>(more.m_value)) {
        m_value = ToText().toUtf8() + more.ToBytes();
    } else if (auto* text = std::get_if<QString>(&m_value)) {
        text->append(more.ToText()); // where it stands: a long value comes in many pieces
    } else {
        m_value = ToText() + more.ToText();
    }
}

} // namespace qb
