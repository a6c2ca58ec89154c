#pragma once

#include "platform/system/Work.h"

#include <QList>
#include <QStringList>
#include <functional>

namespace qb::test {

/// Writes down what a work tells, and ends it where the test says.
class RecordedWork : public Work {
public:
    void Say(const QString& text, int percent) override { Said << QString::number(percent) + u' ' + text; }
    void Advance(qint64 done, qint64 total) override
    {
        Done << done;
        Totals << total;
    }
    void Pulse() override { ++Pulses; }
    bool IsCancelled() override { return Ends && Ends(Done.isEmpty() ? 0 : Done.last()); }

    /// As if it were new.
    void Forget()
    {
        Said.clear();
        Done.clear();
        Totals.clear();
        Pulses = 0;
        Ends = {};
    }

    QStringList Said; ///< each "<percent> <text>"
    QList<qint64> Done;
    QList<qint64> Totals; ///< one for each of Done
    int Pulses = 0;
    /// Told how much is done; true ends the work.
    std::function<bool(qint64 done)> Ends;
};

} // namespace qb::test
