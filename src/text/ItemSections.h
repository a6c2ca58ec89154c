#pragma once

#include "text/CodeSections.h"
#include "text/ItemEditor.h"

namespace qb {

/// The sections of the code or usage text that is shown: in the text, and in the item's bits. On any other
/// tab the user is told so.
class ItemSections : public QObject {
    Q_OBJECT

public:
    explicit ItemSections(ItemEditor& editor) : m_editor(editor) {}

    /// Adds a section to the item and its line to the text, or goes to the one that is there.
    void CreateCodeSection(CCodeItem& item, quint8 header, quint32 color);
    /// Where such a section would be put, in words: "before line 3".
    QString PlaceOfNewSection(quint8 header) const;
    bool GoToCodeSection(quint8 header, bool stayOnHeader);
    /// The text from the caret's line to the end of its section; with 0 the whole text.
    QString TextToCopy(quint8 header) const;
    void DeleteCodeSection(quint8 header);
    /// Deletes the header that is selected, and only that.
    void DeleteSelectedHeader(quint8 header);
    /// The section that holds the caret, or 0.
    quint8 CurrentSection() const;
    /// Undo and redo take header lines away and bring them back; the item's bits go with them.
    void TextTakenBack(ItemText text);
    /// The section lines of a text.
    CodeSections SectionsOf(ItemText text) const;

Q_SIGNALS:
    /// A header was looked for and is not in the text of Code or (not) of Usage.
    void HeaderMissing(quint8 header, bool isCode);
    void SectionDeleted(quint8 header);
    /// The item has other sections than before an undo or redo.
    void SectionsTakenBack();

private:
    ItemEditor& m_editor;
};

} // namespace qb
