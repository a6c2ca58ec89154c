#include "web/InetFileLoad.h"

#include "platform/system/FileCopy.h"
#include "platform/system/FileReplace.h"
#include "platform/system/Interims.h"
#include "platform/system/Paths.h"
#include "platform/system/RuntimeError.h"
#include "web/WebAccess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>
#include <chrono>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString WorkTitle = u"Storing a Loaded File"_s;

/// A copy of a file beside the place that it is to have.
QString CopyBeside(const QString& file, const QString& place, Work& work)
{
    const QString interim = InterimName(place);
    work.Say(QFileInfo(place).fileName(), 0);
    CopyFileContents(file, interim, work);
    return interim;
}

/// Copies a file to a place, over what is there; on failure that stays.
void CopyOver(const QString& file, const QString& place, Work& work)
{
    const QString interim = CopyBeside(file, place, work);
    try {
        MoveIntoPlace(interim, place, true);
    } catch (const RuntimeError&) {
        QFile::remove(interim);
        throw;
    }
}

/// Copies a file into a folder under the first name that is free, whoever else takes names there.
QString CopyInto(const QString& file, const QString& folder, Work& work)
{
    const QDir target(folder);
    if (!QDir().mkpath(folder))
        throw RuntimeError(ErrorNumber::PathAccess,
                           u"The folder '%1' can't be made."_s.arg(QDir::toNativeSeparators(folder)), u"CopyInto"_s);
    const QString name = QFileInfo(file).fileName();
    const QString interim = CopyBeside(file, target.filePath(name), work);
    for (;;) {
        const QString place = NumberedPath(target.filePath(name));
        try {
            MoveIntoPlace(interim, place, false);
            return place;
        } catch (const RuntimeError&) {
            if (!QFileInfo::exists(place)) {
                QFile::remove(interim);
                throw;
            }
        }
    }
}

QString TroubleOf(const RuntimeError& error)
{
    return error.Number() == ErrorNumber::UserInterrupt ? u"It is not saved: this was cancelled."_s
                                                        : error.Description();
}

/// What a process left that has not ended by itself; a file that takes longer than this is not loaded.
void RemoveOldDownloads()
{
    constexpr int Days = 7;
    const QDateTime oldest = QDateTime::currentDateTime().addDays(-Days);
    const QDir cache(CacheFolder());
    for (const QFileInfo& folder : cache.entryInfoList({u"download-*"_s}, QDir::Dirs | QDir::NoSymLinks)) {
        if (folder.lastModified() < oldest)
            DeleteFolder(folder.filePath());
    }
}

} // namespace

InetFileLoad::InetFileLoad(FetchMaker maker, QObject* parent) : QObject(parent), m_maker(std::move(maker))
{
    RemoveOldDownloads();
}

InetFileLoad::~InetFileLoad() = default;

QString InetFileLoad::FolderOf(const DownloadChoices& choices)
{
    return choices.SavePath.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)
                                      : choices.SavePath;
}

int InetFileLoad::Loading() const
{
    return int(std::count_if(m_files.begin(), m_files.end(), [](const std::unique_ptr<LoadingFile>& file) {
        return file->Load->Now() == Download::State::Loading;
    }));
}

void InetFileLoad::Load(const QUrl& url, const DownloadTarget& target, const DownloadChoices& choices)
{
    LoadingFile* file = m_files.emplace_back(std::make_unique<LoadingFile>()).get();
    file->Target = target;
    file->Choices = choices;
    file->Load = std::make_unique<Download>(url, m_maker);
    file->Load->WhyKeptOut = &WebAccess::WhyKeptOut;
    connect(file->Load.get(), &Download::Changed, this, [this, file] {
        Q_EMIT FileChanged(file);
        TellFinished();
    });
    connect(file->Load.get(), &Download::Loaded, this, [this, file] { Loaded(*file); });
    connect(file->Load.get(), &Download::IsPage, this, &InetFileLoad::IsPage);
    Q_EMIT Added(file);
    file->Load->Start();
}

void InetFileLoad::Loaded(LoadingFile& file)
{
    constexpr std::chrono::milliseconds Soon(500);
    if (IsBusy())
        return QTimer::singleShot(Soon, file.Load.get(), [this, &file] { Loaded(file); });
    const bool toFolder = file.Choices.SaveToDir || !file.Choices.AutosaveToItem;
    if (toFolder)
        Save(file);
    if (file.Choices.AutosaveToItem)
        StoreWithItem(file);
    if (!file.IsStored && file.SavedAs.isEmpty() && !toFolder)
        Save(file);
    Q_EMIT FileChanged(&file);
    TellFinished();
}

void InetFileLoad::StoreWithItem(LoadingFile& file)
{
    try {
        file.IsStored = FileLoaded && FileLoaded(file.Load->File(), file.Target);
        if (!file.IsStored)
            file.Trouble = u"It could not be stored with the item."_s;
    } catch (const RuntimeError& error) {
        file.Trouble = error.Description();
    }
}

void InetFileLoad::Save(LoadingFile& file)
{
    try {
        Watched(WorkTitle,
                [&file](Work& work) { file.SavedAs = CopyInto(file.Load->File(), FolderOf(file.Choices), work); });
    } catch (const RuntimeError& error) {
        file.Trouble = TroubleOf(error);
    }
}

void InetFileLoad::SaveAs(LoadingFile& file, const QString& path)
{
    try {
        Watched(WorkTitle, [&](Work& work) { CopyOver(file.Load->File(), path, work); });
        file.SavedAs = path;
        file.Trouble.clear();
    } catch (const RuntimeError& error) {
        file.Trouble = TroubleOf(error);
    }
    Q_EMIT FileChanged(&file);
}

void InetFileLoad::TellFinished()
{
    const auto isOver = [](const std::unique_ptr<LoadingFile>& file) {
        const bool isPlaced = file->IsStored || !file->SavedAs.isEmpty();
        return file->Load->Now() == Download::State::Cancelled
               || (file->Load->Now() == Download::State::Loaded && isPlaced && file->Trouble.isEmpty());
    };
    if (!m_files.empty() && std::all_of(m_files.begin(), m_files.end(), isOver))
        Q_EMIT Finished();
}

void InetFileLoad::ApplyWebAccess()
{
    if (WebAccess::WhyKeptOut().isEmpty())
        return;
    for (const std::unique_ptr<LoadingFile>& file : m_files)
        file->Load->Stop();
}

void InetFileLoad::Close()
{
    for (const std::unique_ptr<LoadingFile>& file : m_files)
        file->Load->Cancel();
    Q_EMIT DestroyClass();
}

} // namespace qb
