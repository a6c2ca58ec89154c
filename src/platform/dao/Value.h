#pragma once

#include "platform/system/Date.h"

#include <QByteArray>
#include <QString>
#include <concepts>
#include <variant>
#include <vector>

namespace qb {

/// One value of a column or a statement's parameter: Null, a whole number, a floating-point
/// number, text or bytes. Dates are held as their seconds, Booleans as -1 and 0.
class Value {
public:
    Value() = default; ///< Null
    // Implicit, so that lists of values can be written as they are. Nothing but a bool becomes a Boolean, no pointer
    // either.
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) Value(Integer number) : m_value(qint64(number)) {} ///< 64 bits, signed
    template <std::same_as<bool> Boolean>
    Value(Boolean value) : m_value(qint64(value ? -1 : 0))
    {
    }
    Value(double number) : m_value(number) {}
    Value(const QString& text) : m_value(text) {}
    Value(const QByteArray& bytes) : m_value(bytes) {}
    Value(Date date) : m_value(date.Seconds()) {}

    /// An empty text is not Null, nor are empty bytes.
    bool IsNull() const { return std::holds_alternative<std::monostate>(m_value); }
    /// The value as a whole number; Null and text that is no number read as 0.
    qint64 ToLong() const;
    double ToDouble() const;
    /// The value as text; Null reads as the empty text.
    QString ToText() const;
    QByteArray ToBytes() const;
    /// Adds to the end of a text or of bytes; bytes added to a text make bytes of it.
    void Append(const Value& more);
    /// Null reads as false.
    bool ToBoolean() const { return ToLong() != 0; }
    /// Null reads as "none".
    Date ToDate() const { return Date::FromSeconds(ToLong()); }

    friend bool operator==(const Value&, const Value&) = default;

    using Variant = std::variant<std::monostate, qint64, double, QString, QByteArray>;
    /// For those who treat each type in its own way; std::monostate is Null.
    const Variant& Content() const { return m_value; }

private:
    Variant m_value;
};

using Values = std::vector<Value>;

} // namespace qb
