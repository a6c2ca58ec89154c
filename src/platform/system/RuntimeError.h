#pragma once

#include <QString>
#include <exception>
#include <utility>

namespace qb {

/// The numbers of the errors that code tests for by name. They are the numbers that the
/// error log and the messages show.
namespace ErrorNumber {
inline constexpr long InvalidCall = 5;
inline constexpr long Overflow = 6;
inline constexpr long UserInterrupt = 18;
inline constexpr long Internal = 51;
inline constexpr long PathAccess = 75;
inline constexpr long ObjectNotSet = 91;
inline constexpr long KeyExists = 457;
inline constexpr long UniqueKeyRefused = 2032;
inline constexpr long Engine = 3000;
inline constexpr long TableExists = 3010;
inline constexpr long RelationExists = 3012;
inline constexpr long NoCurrentRecord = 3021;
inline constexpr long FileNotFound = 3024;
inline constexpr long DiskFull = 3026;
inline constexpr long ReadOnly = 3027;
inline constexpr long ResourceExceeded = 3035;
inline constexpr long DiskError = 3043;
inline constexpr long InUse = 3045;
inline constexpr long Corrupt = 3049;
inline constexpr long CannotOpen = 3051;
inline constexpr long Cancelled = 3059;
inline constexpr long SyntaxError = 3075;
inline constexpr long TooLong = 3163;
inline constexpr long RecordDeleted = 3167;
inline constexpr long FieldExists = 3191;
inline constexpr long RelatedRecordRequired = 3201;
inline constexpr long DatabaseExists = 3204;
inline constexpr long ItemNotFound = 3265;
inline constexpr long IndexExists = 3284;
inline constexpr long NullNotAllowed = 3314;
inline constexpr long ZeroLengthNotAllowed = 3315;
inline constexpr long ValueNotAllowed = 3317;
inline constexpr long NotADatabase = 3343;
inline constexpr long NodeNotFound = 35601;
inline constexpr long NodeKeyExists = 35602;
inline constexpr long NodeCycle = 35614;
// Misuse of a record object. The numbers are 32 bits, signed.
inline constexpr long RecordAboutToBeDeleted = int(0x80040201);
inline constexpr long RecordHasBeenDeleted = int(0x80040202);
inline constexpr long RecordNotCreated = int(0x80040203);
} // namespace ErrorNumber

/// The one exception type of the program: a number to test for, a description that a user
/// can read, and the source (class and procedure) that raised it.
class RuntimeError : public std::exception {
public:
    /// @p number is one of ErrorNumber, for which code tests; the description is for the user, the source for the
    /// error log.
    RuntimeError(long number, QString description, QString source)
        : m_number(number), m_description(std::move(description)), m_source(std::move(source)),
          m_what(m_description.toUtf8())
    {
    }

    // As they were given; what() is the description in UTF-8.
    long Number() const { return m_number; }
    const QString& Description() const { return m_description; }
    const QString& Source() const { return m_source; }
    const char* what() const noexcept override { return m_what.constData(); }

private:
    long m_number;
    QString m_description;
    QString m_source;
    QByteArray m_what;
};

} // namespace qb
