#include "publishing/BranchPublisher.h"

#include "maintenance/PhasedWork.h"
#include "maintenance/ReplacedFile.h"
#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/RuntimeError.h"
#include "web/LocalPages.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString Procedure = u"PublishBranch"_s;

struct FormRow {
    ReaderForm Form;
    const char* Name;
    std::unique_ptr<BranchPublisher> (*Make)(const BranchPublisher::Task& task);
};

constexpr FormRow Forms[] = {
    {ReaderForm::Html, "html", MakeHtmlPage},
    {ReaderForm::Markdown, "markdown", MakeMarkdownFolder},
    {ReaderForm::Files, "files", MakePlainFolder},
};

[[noreturn]] void Refuse(const QString& path, const QString& why)
{
    throw RuntimeError(ErrorNumber::PathAccess,
                       u"'%1' can't be written: %2. Nothing was changed."_s.arg(QDir::toNativeSeparators(path), why),
                       Procedure);
}

/// A folder that is not there gets to its place in one step; into an empty one, which may be somebody's own place to
/// put things, the files are put.
enum class Place { File, NewFolder, EmptyFolder };

Place PlaceOf(ReaderForm form, const QFileInfo& target)
{
    return IsOneFile(form) ? Place::File : target.exists() ? Place::EmptyFolder : Place::NewFolder;
}

/// A folder that holds something else would be left with files of both.
void RequireEmptyFolder(const QString& folder)
{
    const QFileInfo info(folder);
    if (!info.exists() && !info.isSymLink())
        return;
    if (!info.isDir())
        Refuse(folder, u"a file stands there"_s);
    const QStringList names = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                                     | QDir::NoDotAndDotDot);
    const bool isEmpty = std::all_of(names.begin(), names.end(), [](const QString& name) {
        return name.startsWith(u".unpacking-"_s); // what a dead process left, which goes
    });
    if (!isEmpty)
        Refuse(folder, u"the folder is not empty"_s);
}

void RequireNotCancelled(Work& work)
{
    if (work.IsCancelled())
        throw RuntimeError(ErrorNumber::Cancelled, u"The export was stopped; nothing was written."_s, Procedure);
}

void AddAll(Library& library, const PublishedBranch& branch, BranchPublisher& publisher, PublishResult& result,
            Work& work)
{
    const QString language = library.QueryValue(u"SELECT LanguageUsed FROM Properties"_s).ToText();
    const int count = int(branch.Nodes().size());
    for (int place = 0; place < count; ++place) {
        publisher.Add(place, ReadPublishedItem(library, branch.Node(place).Item, language));
        work.Advance(++result.Items, count);
        RequireNotCancelled(work);
    }
    publisher.Finish();
}

} // namespace

std::optional<ReaderForm> ReaderFormNamed(const QString& name)
{
    for (const FormRow& row : Forms) {
        if (name == QLatin1StringView(row.Name))
            return row.Form;
    }
    return std::nullopt;
}

PublishResult PublishBranch(Library& library, qint64 item, ReaderForm form, const QString& target, Work& work,
                            const TokenPalette& palette)
{
    const QFileInfo place(target);
    if (IsOneFile(form))
        RequireReplaceable(target, library.Name(), u"a page"_s);
    else
        RequireEmptyFolder(target);
    std::optional<Transaction> moment; // others wait, so that what is written is the library of one moment
    if (!library.IsReadOnly())
        moment.emplace(library);
    const PublishedBranch branch(library, item);
    const Place kind = PlaceOf(form, place);
    StagedFiles stage(kind == Place::EmptyFolder ? place.absoluteFilePath() : place.absolutePath());
    PublishResult result{.Target = place.absoluteFilePath(), .Missing = {}};
    const auto row = std::find_if(std::begin(Forms), std::end(Forms),
                                  [form](const FormRow& one) { return one.Form == form; });
    const std::unique_ptr<BranchPublisher> publisher = row->Make(
        {library, branch, stage, place.fileName(), palette, result, work});
    work.Say(u"Exporting Code Items...."_s, 1);
    AddAll(library, branch, *publisher, result, work);
    moment.reset();
    stage.Flush(work); // which may take its time
    RequireNotCancelled(work);
    if (kind == Place::NewFolder)
        stage.PutInPlaceAsFolder(place.fileName(), work);
    else
        stage.PutInPlace(false, work);
    stage.Flush(work); // what is reported as done outlives the machine
    work.Say({}, 100);
    return result;
}

// Files of the stage

void OpenToWrite(QFile& file)
{
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        Refuse(file.fileName(), file.errorString());
}

void WriteOrRaise(QFile& file, const QByteArray& bytes)
{
    if (const QString why = WriteAll(file, bytes.constData(), bytes.size()); !why.isEmpty())
        Refuse(file.fileName(), why);
}

void BranchPublisher::WriteStaged(const QString& name, const QByteArray& bytes)
{
    QFile file(Stage().PathFor(name));
    OpenToWrite(file);
    WriteOrRaise(file, bytes);
    file.close();
    KeepNoMoreRightsThan(From().Name(), file.fileName());
}

void BranchPublisher::CopyContents(const QString& source, const QString& copy)
{
    UncountedWork work(m_task.Watcher);
    CopyFileContents(source, copy, work);
    KeepNoMoreRightsThan(From().Name(), copy);
}

bool BranchPublisher::CopyStored(const PublishedFile& file, const QString& name)
{
    if (file.Path.isEmpty()) {
        Result().Missing << file.Title;
        return false;
    }
    const QString copy = Stage().PathFor(name);
    CopyContents(file.Path, copy);
    ++Result().Files;
    return true;
}

QByteArray BranchPublisher::ReadPageFile(const QString& path) const
{
    QFile file(From().HTMLFolder() + path);
    QByteArray bytes;
    const QString why = file.open(QIODevice::ReadOnly) ? ReadAll(file, bytes) : file.errorString();
    if (!why.isEmpty())
        throw RuntimeError(
            ErrorNumber::PathAccess,
            u"'%1' can't be read: %2. Nothing was written."_s.arg(QDir::toNativeSeparators(file.fileName()), why),
            Procedure);
    return IsPageName(path) ? WithPagePolicy(bytes, "file") : bytes;
}

void BranchPublisher::CopyPageFile(const QString& path, const QString& name)
{
    if (IsPageName(path))
        return WriteStaged(name, ReadPageFile(path));
    const QString copy = Stage().PathFor(name);
    CopyContents(From().HTMLFolder() + path, copy);
}

} // namespace qb
