#pragma once

#include "cli/Output.h"
#include "platform/system/Work.h"

#include <QElapsedTimer>
#include <cstdio>

namespace qb::cli {

/// The unit of works that are made of several.
inline const QString Parts = QStringLiteral("parts of a thousand");

/// A line on standard error that is written over while it changes.
class ProgressLine : public Work {
public:
    /// @p units is what the work counts, in the plural.
    explicit ProgressLine(const QString& units) : m_units(units.toUtf8()) { m_timer.start(); }
    ~ProgressLine() override
    {
        if (m_shown)
            std::fputs("\n", stderr);
    }

    void Advance(qint64 done, qint64 total) override
    {
        constexpr int TerminalInterval = 100; // milliseconds
        constexpr int FileInterval = 2000;
        const bool terminal = ErrorIsTerminal();
        if (done < total && m_timer.elapsed() < (terminal ? TerminalInterval : FileInterval))
            return;
        m_timer.restart();
        std::fprintf(stderr, terminal ? "\r%lld of %lld %s" : "%lld of %lld %s\n", done, total, m_units.constData());
        std::fflush(stderr);
        m_shown = terminal && done < total;
        if (terminal && done >= total)
            std::fputs("\n", stderr);
    }

private:
    QByteArray m_units;
    QElapsedTimer m_timer;
    bool m_shown = false;
};

} // namespace qb::cli
