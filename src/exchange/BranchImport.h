#pragma once

#include "exchange/BranchStream.h"
#include "platform/system/Hook.h"
#include "platform/system/Work.h"
#include "store/Library.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <vector>

namespace qb {

/// An item of an export, as it is looked at before it is taken in.
struct OutlinedItem {
    QString Key;     ///< its ID in the exporting library
    int Parent = -1; ///< place of the item that it stands below, among those before it; -1: it stands at the top
    QString Title;
    qint64 TextBytes = 0; ///< of code, usage and notes, as they are stored
    int Files = 0;
    qint64 FileBytes = 0;
    int Pages = 0; ///< files of its web page
    qint64 PageBytes = 0;
};

/// An export, unpacked into a folder that goes with the object, and read to its end once: whatever is wrong with it
/// is found before a library is touched.
class UnpackedBranch {
public:
    /// Raises RuntimeError 3049 for what is no export, is cut, or says what can't be; 3059 when it was cancelled.
    explicit UnpackedBranch(const QString& file, Work& work = NoWork());

    const QString& Stream() const { return m_stream; }
    /// Parents before their children.
    const std::vector<OutlinedItem>& Items() const { return m_items; }
    const BranchTrailer& Trailer() const { return m_trailer; }

private:
    void Survey(Work& work);
    void SurveyItem(BranchReader& reader, const BranchItem& item, Work& work);
    int PlaceOfParent(const BranchItem& item) const;

    QTemporaryDir m_folder;
    QString m_stream;
    std::vector<OutlinedItem> m_items;
    BranchTrailer m_trailer;
    QHash<QString, int> m_places; ///< of items, by key
};

struct BranchImportResult {
    qint64 Top = 0; ///< the first item that was made
    int Items = 0;
    int Files = 0;
    int Pages = 0;
    int Links = 0;
};

struct BranchImportOptions {
    qint64 Parent = 0; ///< the item under which the branch is put; 0: the root
    QStringList Only;  ///< keys of items whose branches are taken; empty: all
    /// Told what was imported before it counts. What it raises takes everything back.
    Hook<void(const BranchImportResult&)> BeforeCommit{};
};

/// Takes an export in: items, stored files and web pages, and the links between its items. All or nothing: on an
/// error, which is raised, the library is as it was; to be cancelled is one too. @p work counts items.
BranchImportResult ImportItems(Library& library, const UnpackedBranch& branch, const BranchImportOptions& options,
                               Work& work = NoWork());

} // namespace qb
