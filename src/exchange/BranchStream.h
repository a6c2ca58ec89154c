#pragma once

#include "platform/system/Date.h"
#include "platform/system/Work.h"

#include <QFile>
#include <QString>
#include <vector>

namespace qb {

/// An item as it stands in the stream of an export (see docs/file-formats.md).
struct BranchItem {
    QString Title; ///< empty: nothing is read behind it
    QString Key;   ///< the item's ID in the exporting library
    QString ParentKey;
    QString Spare;
    QString ParentNodeKey; ///< the parent's key in the tree
    QString Description;
    QString Info;
    QString User;
    qint32 ItemStatus = 0;
    qint32 ItemRating = 0;
    QString Code; ///< RTF, as Notes and Example
    quint8 CodeHeaders = 0;
    QString Notes;
    QString Example;
    quint8 UsageHeaders = 0;
    bool HTMLPage = false;
    Date HTMLLastUpdated;
};

/// A stored file; its contents follow.
struct BranchFile {
    QString Title;
    Date OrigDateTime;
    Date DateAdded;
    qint64 Size = 0; ///< in bytes
    QString Description;
};

/// A file of an item's web page; its contents follow.
struct BranchPage {
    QString Name;      ///< "17.htm", or the path below the folder of the page, with "\" between its parts
    Date Modified;     ///< of the file
    qint32 Number = 0; ///< the name as a number, where it is one
    qint64 Size = 0;   ///< in bytes
};

/// A link between two items of the branch, by their keys.
struct BranchLink {
    QString From;
    QString To;
    QString Note;
};

/// What an item's code is coloured as.
struct BranchLanguage {
    QString Key;
    QString Language;
};

/// What stands behind the last record, where older readers don't look.
struct BranchTrailer {
    std::vector<BranchLink> Links;
    std::vector<BranchLanguage> Languages;
};

/// Writes the stream of an export. Whatever can't be written raises RuntimeError 75.
class BranchWriter {
public:
    /// Makes the file anew and writes the mark of UTF-8 and the number of items.
    BranchWriter(const QString& path, qint32 items);

    void Write(const BranchItem& item);
    /// Before the stored files of an item, or the files of its page.
    void WriteCount(qint32 count) { Value(count); }
    void Write(const BranchFile& file);
    void Write(const BranchPage& page);
    /// What belongs to the record that was just written: @p size bytes of @p source. Raises 75 when it has fewer.
    void WriteContents(QFile& source, qint64 size, Work& work);
    /// A piece of it, where the contents come from elsewhere.
    void WriteContents(const QByteArray& piece) { Bytes(piece.constData(), piece.size()); }
    void Write(const BranchTrailer& trailer);
    /// Another number of items than was known at the begin.
    void SetCount(qint32 items);
    void Close();

private:
    friend struct BranchForm;
    void Value(const QString& text);
    void Value(qint32 number);
    void Value(quint8 number);
    void Value(bool truth);
    void Value(Date moment);
    void Value(qint64 size);
    void Bytes(const char* bytes, qint64 size);
    template <class Number>
    void LittleEndian(Number number);

    QFile m_file;
};

/// Reads the stream of an export. What is cut, or says what can't be, raises RuntimeError 3049.
class BranchReader {
public:
    /// Raises RuntimeError 3024 when there is no such file.
    explicit BranchReader(const QString& path);

    qint32 Count() const { return m_count; } ///< of items
    void Read(BranchItem& item);
    qint32 ReadCount();
    void Read(BranchFile& file);
    void Read(BranchPage& page);
    /// What belongs to the record that was just read; to nowhere where there is no @p target.
    void ReadContents(QFile* target, qint64 size, Work& work);
    /// Empty in what an older program wrote.
    BranchTrailer ReadTrailer();

private:
    friend struct BranchForm;
    void Value(QString& text);
    void Value(qint32& number);
    void Value(quint8& number);
    void Value(bool& truth);
    void Value(Date& moment);
    void Value(qint64& size);
    QByteArray Bytes(qint64 size);
    template <class Number>
    Number LittleEndian();
    [[noreturn]] void Fail(const QString& why) const;

    QFile m_file;
    bool m_isUtf8 = false;
    qint32 m_count = 0;
};

} // namespace qb
