#pragma once

#include "platform/richtext/RichTextDocument.h"

#include <QHash>
#include <vector>

namespace qb {

/// The font table of an RTF string while it is read.
class RtfFonts {
public:
    struct Entry {
        quint16 Number = 0; ///< of the font in the document
        int CodePage = 0;   ///< of bytes in it; 0: that of the document
    };

    /// What follows describes the font of that number.
    void Begin(int number, RichTextDocument& document);
    void SetCharSet(int charSet) { m_font.CharSet = charSet; }
    void SetFamily(const QString& family) { m_font.Family = family; }
    /// A part of the font's name, which a semicolon ends.
    void TakeText(QStringView text, RichTextDocument& document);
    /// The description has ended.
    void Finish(RichTextDocument& document);
    /// The code page of bytes in the name.
    int CodePageOfName() const;
    const Entry* Find(int number) const;

private:
    FontInfo m_font;
    int m_number = 0;
    QHash<int, Entry> m_entries;
};

/// The colour table.
class RtfColors {
public:
    /// One part, 0 to 255; @p shift is 0 for red, 8 for green and 16 for blue.
    void SetPart(int value, int shift);
    /// A semicolon ends a colour; one without parts is the automatic one.
    void TakeText(QStringView text);
    quint32 Find(int number) const;

private:
    quint32 m_color = AutomaticColor;
    std::vector<quint32> m_colors;
};

/// The tables of lists and of the numbers by which the text names them.
class RtfLists {
public:
    /// A list without levels, and a level of the last list that has nothing before its paragraphs. Beyond what any
    /// real text has, nothing is added.
    void BeginList();
    void BeginLevel();
    /// The code of the level's numbers.
    void SetLevelKind(int code);
    /// In the list table: the list's own ID. In the other: the list that the next number means.
    void SetListId(int id) { m_lists.empty() ? void() : void(m_lists.back().Id = id); }
    void SetOverriddenId(int id) { m_overriddenId = id; }
    void NameOverride(int number);
    /// What stands before paragraphs of a level of the list that the text names by @p number.
    ListKind Find(int number, size_t level) const;

private:
    struct List {
        int Id = 0;
        std::vector<ListKind> Levels;
    };
    std::vector<List> m_lists;
    QHash<int, int> m_overrides;
    int m_overriddenId = 0;
};

} // namespace qb
