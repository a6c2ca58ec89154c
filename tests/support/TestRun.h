#pragma once

#include "platform/system/Clock.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>

namespace qb::test {

/// Data and settings folders of its own for as long as it lives, below a folder whose name has
/// blanks and letters beyond ASCII.
class TemporaryHome {
public:
    TemporaryHome();
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    /// A path below the folder; it ends in no separator.
    QString Path(const QString& name = {}) const;

private:
    QTemporaryDir m_folder;
    QByteArray m_dataBefore;
    QByteArray m_configBefore;
    QByteArray m_cacheBefore;
};

/// A clock that stands until it is set.
class FixedClock {
public:
    explicit FixedClock(Date now = Date::FromParts(2026, 3, 2, 14, 30, 5));
    ~FixedClock();
    FixedClock(const FixedClock&) = delete;
    FixedClock& operator=(const FixedClock&) = delete;

    void Set(Date now) { m_now = now; }
    void AddSeconds(qint64 seconds) { m_now = Date::FromSeconds(m_now.Seconds() + seconds); }
    Date Now() const { return m_now; }

private:
    Date m_now;
    Clock::Source m_before;
};

/// Makes any warning that the test does not announce with QTest::ignoreMessage fail it. It holds
/// for one test function, so each test class calls it in its init slot.
void FailOnWarnings();

/// All bytes of a file; fails the test when it can't be read.
QByteArray ReadFile(const QString& path);
void WriteFile(const QString& path, const QByteArray& bytes);

} // namespace qb::test

/// A test program without a window.
#define QB_TEST_MAIN(TestClass)                                                                                        \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        QCoreApplication application(argc, argv);                                                                      \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }

/// Expects @p expression to raise RuntimeError with @p number.
#define QB_VERIFY_RAISES(expression, number)                                                                           \
    do {                                                                                                               \
        long raised = 0;                                                                                               \
        try {                                                                                                          \
            expression;                                                                                                \
        } catch (const qb::RuntimeError& error) {                                                                      \
            raised = error.Number();                                                                                   \
        }                                                                                                              \
        QCOMPARE(raised, long(number));                                                                                \
    } while (false)
