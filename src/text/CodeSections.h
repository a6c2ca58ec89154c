#pragma once

#include "platform/richtext/IRichTextBox.h"
#include "platform/system/Hook.h"

#include <span>
#include <utility>

namespace qb {

/// One of the named sections that a code or usage text can be divided into.
struct SectionRow {
    quint8 Bit;
    const char* Title;    ///< in the line; the one that begins with a blank is meant so
    const char* Key;      ///< of the toolbar's button
    const char* GoImage;  ///< the section is present
    const char* AddImage; ///< it is missing
    const char* AddTip;
    const char* GoTip;
    const char* CopyTip;
    const char* Menu;        ///< name of the menu's entry
    const char* MenuCaption; ///< behind "Add" or "Delete"
};

/// All sections, in the order of their bits.
std::span<const SectionRow> SectionTable();
const SectionRow* SectionOf(quint8 bit);

/// The sections of the text in one box. A section begins with a protected, bold comment line; the
/// text decides which there are, and the item keeps them as a sum of bits.
class CodeSections {
public:
    /// @p commentIdentifier opens a comment in the library's language.
    CodeSections(IRichTextBox& box, const QString& commentIdentifier);

    /// A header was looked for and is not in the text.
    Hook<void(quint8 bit)> HeaderMissing;

    /// What any header begins with.
    QString StartMarker() const;
    /// The whole line of a header, with its line end.
    QString HeaderLine(quint8 bit) const;

    /// Writes the line of a section that is not there yet, where the caret is, or with
    /// @p choosesPlace where such a section belongs. @p color 0 stands for the usual one. The caret
    /// then stands where the section's text goes.
    /// False when the place is protected; nothing is written then.
    bool Create(quint8 bit, quint32 color, bool choosesPlace);
    /// The headers that were written with another comment identifier get this one.
    void TakeOverHeaders(const QString& formerIdentifier);
    /// The bits of the sections whose whole lines are in the text.
    quint8 Present() const;
    /// What is left of @p bits by the text: those whose titles are found in it, and those of whole lines.
    quint8 BorneOut(quint8 bits) const;
    /// Where Create chooses to put a section, in words.
    QString ChosenPlace(quint8 bit) const;
    /// Puts the caret on the first line with the section's title; behind the blanks before it,
    /// unless it is to stay on the header. False when there is none.
    bool GoTo(quint8 bit, bool stayOnHeader);
    /// The text from the begin of the caret's line to the end of its section, in whole lines; with 0 the
    /// whole text.
    QString TextToCopy(quint8 bit) const;
    /// Deletes the section whose header the caret is on, with the header.
    void Delete();
    /// Deletes the header that is selected, and only that.
    void DeleteSelectedHeader();
    /// The bit of the section that holds the caret, or 0. What is selected is a header itself where it is bold
    /// and as long as one.
    quint8 Current() const;
    /// A header is selected.
    bool IsOnHeader() const;
    /// What a deletion of the selection meets.
    enum class Touched { Nothing, Header, RestOfHeader };
    /// A header is deleted whole or not at all: a selection that touches a part of one, or of what is left of
    /// one, and no other text, becomes all of it. Any other selection stays, and meets nothing.
    Touched WidenToHeader();
    /// Deletes what is selected of a header that lacks its begin.
    void DeleteRestOfHeader();

private:
    std::pair<qsizetype, qsizetype> ProtectedRange() const;
    void ChoosePlace(quint8 bit);
    void PartFromTextBefore();
    bool WriteHeader(quint8 bit, quint32 color);
    void PlaceCaretBehind(qsizetype header, qsizetype length);

    IRichTextBox& m_box;
    QString m_commentIdentifier;
};

} // namespace qb
