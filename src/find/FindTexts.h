#pragma once

#include "find/FindQuery.h"

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

namespace qb {

/// One text of an item as it is searched: plain, in UTF-8, lines ended by LF.
struct FindText {
    FindField Field = FindField::Title;
    quint16 Piece =
        0; ///< which of the texts of one source: 0 a file's name, 1 its description; 0 an item's info, 1 a note
    qint64 Source = 0; ///< the ID of the stored file or of the linked item; 0: the item itself
    QByteArray Text;
};

/// A larger file is not looked through: it is hardly a text that somebody has written.
inline constexpr qint64 LargestSearchedFile = 16 << 20;

/// A file on the disk that a text was read from, and how it was then.
struct FindSource {
    qint64 File = 0;     ///< the ID of the stored file; 0: the item's web page
    qint64 Size = -1;    ///< -1: there was none
    qint64 Modified = 0; ///< nanoseconds
    quint64 Inode = 0;
    quint64 IsLeftOut = 0; ///< 1: a text that is too large

    /// Nothing has happened to the file.
    bool IsAs(const FindSource& then) const
    {
        return File == then.File && Size == then.Size && Modified == then.Modified && Inode == then.Inode;
    }
};

/// What a find knows of an item beside its texts.
struct FindItem {
    qint64 Id = 0;
    qint64 Parent = 0;
    qint64 LastChanged = 0; ///< as the library holds it
    quint64 RowHash = 0;    ///< of its row, and those of its files and links: differs when any of them does
    qint32 Status = 0;
    qint32 Rating = 0;
};

/// An item with all of its texts.
struct FindItemTexts {
    FindItem Item;
    QString Language; ///< that its code names; empty: the library's
    std::vector<FindText> Texts;
    std::vector<FindSource> Sources;
};

/// A text as it is searched, from one as a library holds it: plain or RTF.
QByteArray SearchedText(const QString& stored);
/// The same from the bytes of a stored file; empty when it is none.
QByteArray SearchedFileText(const QByteArray& bytes);
/// The same from those of a web page: what a reader sees of it.
QByteArray SearchedPageText(const QByteArray& bytes);

/// A quick hash of 64 bits; not to be relied on against somebody who wants two texts to have the same.
class RowHasher {
public:
    void Add(qint64 number) { Mix(quint64(number)); }
    void Add(QByteArrayView bytes);
    quint64 Result() const;

private:
    void Mix(quint64 word)
    {
        constexpr quint64 Odd = 0x9e3779b97f4a7c15u;
        m_state = (m_state ^ word) * Odd;
        m_state ^= m_state >> 29;
    }

    quint64 m_state = 0x2545f4914f6cdd1du;
};

} // namespace qb
