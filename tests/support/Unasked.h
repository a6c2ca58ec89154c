#pragma once

#include "platform/system/Prompts.h"

namespace qb::test {

/// Asks nobody, whether a work gets so far that it asks or not.
class Unasked : public SilentPrompts {
public:
    Unasked() : m_before(SetCurrent(this)) {}
    ~Unasked() override { SetCurrent(m_before); }
    bool ShowError(const QString&) override { return false; }

private:
    Prompts* m_before;
};

} // namespace qb::test
