#include "text/ui/UndoNames.h"

namespace qb {

void UndoNames::Note(int before, int after, UndoType type)
{
    m_names.erase(m_names.upper_bound(before), m_names.end());
    if (after > before)
        m_names[after] = type;
}

UndoType UndoNames::Undoes(int count) const
{
    const auto found = m_names.find(count);
    return found == m_names.end() ? UndoType::Unknown : found->second;
}

UndoType UndoNames::Redoes(int count) const
{
    const auto found = m_names.upper_bound(count);
    return found == m_names.end() ? UndoType::Unknown : found->second;
}

} // namespace qb
