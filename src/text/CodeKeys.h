#pragma once

#include "text/ItemSections.h"

namespace qb {

/// A key that was pressed.
struct KeyPress {
    int Key = 0; ///< a Qt::Key
    Qt::KeyboardModifiers Modifiers = Qt::NoModifier;
    QString Text; ///< that it types
};

/// What keys mean in the boxes of an item's texts, before the boxes see them.
class CodeKeys {
public:
    /// Both must outlive this.
    CodeKeys(ItemEditor& editor, ItemSections& sections) : m_editor(editor), m_sections(sections) {}

    /// True when that was all there is to the key.
    bool KeyDown(ItemText text, const KeyPress& press);
    /// What is typed beside a header is no part of it.
    void TypeNormally(ItemText text);

private:
    bool NotesKeyDown(const KeyPress& press);
    bool HeaderKeyDown(int key);
    bool IndentKeyDown(ItemTextBox& box, const KeyPress& press);
    bool DeletesIndent(ItemTextBox& box);
    bool NewLine(ItemTextBox& box);

    ItemEditor& m_editor;
    ItemSections& m_sections;
};

} // namespace qb
