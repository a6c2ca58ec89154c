#pragma once

#include "platform/system/Work.h"

#include <QString>

namespace qb {

/// Turns the zip engine's lines into what a work says, while a library is packed into a container or unpacked.
class LibraryZipProgress {
public:
    explicit LibraryZipProgress(Work& work) : m_work(work) {}

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
    explicit ExportZipProgress(Work& work) : m_work(work) {}

    void SetExtracting(bool extracting) { m_extracting = extracting; }
    void m_oZip_Progress(const QString& text);

private:
    Work& m_work;
    bool m_extracting = false;
};

/// The same while stored files are packed or extracted. Percents come in steps of three or more, and
/// 100 only with the end.
class StoredFileZipProgress {
public:
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
    explicit VolumeProgress(Work& work) : m_work(work) {}

    void TotalChunks(int total) { m_total = total; }
    void NextVolume(int volumeNo, bool creating);
    void Progress(int chunkNo);

private:
    Work& m_work;
    QString m_caption;
    int m_total = 0;
    int m_lastPercent = 0;
};

} // namespace qb
