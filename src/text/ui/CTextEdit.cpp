#include "text/ui/CTextEdit.h"

#include <array>

namespace qb {

QString CTextEdit::Translated(UndoType type)
{
    static constexpr std::array<const char*, 6> words{"Last Action", "Typing", "Delete", "Drag Drop", "Cut", "Paste"};
    const auto number = size_t(type);
    return number < words.size() ? QString::fromLatin1(words[number]) : QString();
}

} // namespace qb
