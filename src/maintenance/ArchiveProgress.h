#pragma once

#include "platform/system/Work.h"

#include <QString>

namespace qb {

/// Turns the zip engine's lines into what a work says, while a library is packed into a container or unpacked.
class LibraryZipProgress {
public:
    /// @p work is told of it, and must outlive the object.
    explicit LibraryZipProgress(Work& work) : m_work(work) {}

    /// Chooses the words: "Extracting", or "Compacting" as at first. To be set before the engine runs.
    void SetExtracting(bool extracting) { m_extracting = extracting; }
    /// One line of the engine.
    void m_oZip_Progress(const QString& text);

private:
    Work& m_work;
    bool m_extracting = false;
};

/// The same while items are exported or imported. It takes the bar away once a file's figures are known.
class ExportZipProgress {
public:
    /// @p work is told of it, and must outlive the object.
    explicit ExportZipProgress(Work& work) : m_work(work) {}

    /// Chooses the words, and what of a line is the name. To be set before the engine runs; false at first.
    void SetExtracting(bool extracting) { m_extracting = extracting; }
    /// One line of the engine; lines of other forms than it knows say nothing.
    void m_oZip_Progress(const QString& text);

private:
    Work& m_work;
    bool m_extracting = false;
};

/// The same while stored files are packed or extracted. Percents come in steps of three or more, and
/// 100 only with the end.
class StoredFileZipProgress {
public:
    /// @p work must outlive the object. A run that was cancelled leaves its count: the next one needs another object.
    explicit StoredFileZipProgress(Work& work) : m_work(work) {}

    /// @p files is the number of files that are being added, or the engine's FileCount.
    void m_oZipUnzip_Progress(int fileNo, const QString& text, int files);

private:
    void Adding(int fileNo, const QString& text, int files);
    void Extracting(int fileNo, const QString& text, int files);
    void Report(const QString& caption, double part);
    void Finish();

    Work& m_work;
    int m_total = 0;
    int m_count = 0;
    int m_lastPercent = 0;
};

/// Turns the file splitter's events into progress of one split or merge.
class VolumeProgress {
public:
    /// @p work must outlive the object.
    explicit VolumeProgress(Work& work) : m_work(work) {}

    /// To be told before the first Progress.
    void TotalChunks(int total) { m_total = total; }
    /// @p volumeNo counts from 1. Nothing is said before the next Progress.
    void NextVolume(int volumeNo, bool creating);
    /// So many chunks are done. The first says 0 %, the last 100 %, and others only a growth of 3 % or more.
    void Progress(int chunkNo);

private:
    Work& m_work;
    QString m_caption;
    int m_total = 0;
    int m_lastPercent = 0;
};

} // namespace qb
