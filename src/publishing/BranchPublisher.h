#pragma once

#include "platform/system/StagedFiles.h"
#include "platform/system/Work.h"
#include "publishing/PublishedBranch.h"
#include "text/TokenPalette.h"

#include <QFile>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace qb {

/// The forms in which a branch is given to readers who have not got the program.
enum class ReaderForm {
    Html,     ///< one page that stands for itself
    Markdown, ///< a folder of texts, with the stored files beside
    Files,    ///< a folder of the code texts under their titles, as a folder is imported
};

/// The form of a name ("html", "markdown", "files").
std::optional<ReaderForm> ReaderFormNamed(const QString& name);
/// The form that is one file, not a folder.
inline bool IsOneFile(ReaderForm form)
{
    return form == ReaderForm::Html;
}

struct PublishResult {
    QString Target; ///< the file, or the folder
    int Items = 0;
    int Files = 0;       ///< stored files that are in there
    QStringList Missing; ///< stored files that are not where they should be, by title
};

/// Writes an item and everything below it, with @p item 0 the whole library, to @p target: a file, which is replaced
/// when the new one is complete, or a folder, which must be empty or not there. @p work counts items. Raises an error
/// with nothing written; 3059, or 18, when it was cancelled.
PublishResult PublishBranch(Library& library, qint64 item, ReaderForm form, const QString& target,
                            Work& work = NoWork(), const TokenPalette& palette = TokenPalette::Default());

/// What makes one of the forms: it is told of the whole branch, then of each item in the order of the places, and
/// makes its files by @p Stage.
class BranchPublisher {
public:
    struct Task {
        Library& From;
        const PublishedBranch& Branch;
        StagedFiles& Stage;
        QString Name; ///< of the file that is made, where it is one
        const TokenPalette& Palette;
        PublishResult& Result;
        Work& Watcher;
    };

    explicit BranchPublisher(const Task& task) : m_task(task) {}
    virtual ~BranchPublisher() = default;
    BranchPublisher(const BranchPublisher&) = delete;
    BranchPublisher& operator=(const BranchPublisher&) = delete;

    virtual void Add(int place, const PublishedItem& item) = 0;
    virtual void Finish() {}

protected:
    const PublishedBranch& Branch() const { return m_task.Branch; }
    Library& From() const { return m_task.From; }
    StagedFiles& Stage() const { return m_task.Stage; }
    const QString& Name() const { return m_task.Name; }
    const TokenPalette& Palette() const { return m_task.Palette; }
    PublishResult& Result() const { return m_task.Result; }

    /// Makes a file of the stage.
    void WriteStaged(const QString& name, const QByteArray& bytes);
    /// Puts a copy of a stored file there; counts it, or notes that it is missing. False then.
    bool CopyStored(const PublishedFile& file, const QString& name);
    /// A file of a web page, @p path below the folder of pages. A page comes with a policy by which a browser runs
    /// nothing of it, and loads nothing but files beside it. Raises RuntimeError 75 where it can't be read.
    QByteArray ReadPageFile(const QString& path) const;
    /// Puts a copy of such a file there.
    void CopyPageFile(const QString& path, const QString& name);

private:
    void CopyContents(const QString& source, const QString& copy);

    Task m_task;
};

std::unique_ptr<BranchPublisher> MakeHtmlPage(const BranchPublisher::Task& task);
std::unique_ptr<BranchPublisher> MakeMarkdownFolder(const BranchPublisher::Task& task);
std::unique_ptr<BranchPublisher> MakePlainFolder(const BranchPublisher::Task& task);

/// Writes all of @p bytes; raises RuntimeError 75 where that can't be.
void WriteOrRaise(QFile& file, const QByteArray& bytes);
/// Opens a file that is to be written; raises RuntimeError 75 where that can't be.
void OpenToWrite(QFile& file);

} // namespace qb
