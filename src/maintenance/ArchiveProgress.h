#pragma once

#include <QString>
#include <functional>

namespace qb {

/// Shows how far a work is: a line of status text and a percent, of which 100 and more say that it is
/// done.
using ShowProgress = std::function<void(const QString& text, int percent)>;

/// Turns the zip engine's lines into progress, while a library is packed into a container or unpacked.
class LibraryZipProgress {
public:
    explicit LibraryZipProgress(ShowProgress show) : m_show(std::move(show)) {}

    void SetExtracting(bool extracting) { m_extracting = extracting; }
    /// One line of the engine.
    void m_oZip_Progress(const QString& text);

private:
    ShowProgress m_show;
    bool m_extracting = false;
};

/// The same while items are exported or imported.
class ExportZipProgress {
public:
    /// @p hideBar takes the bar away once a file's figures are known.
    ExportZipProgress(ShowProgress show, std::function<void()> hideBar)
        : m_show(std::move(show)), m_hideBar(std::move(hideBar))
    {
    }

    void SetExtracting(bool extracting) { m_extracting = extracting; }
    void m_oZip_Progress(const QString& text);

private:
    ShowProgress m_show;
    std::function<void()> m_hideBar;
    bool m_extracting = false;
};

/// The same while stored files are packed or extracted. Percents come in steps of three or more, and
/// 100 only with the end.
class StoredFileZipProgress {
public:
    explicit StoredFileZipProgress(ShowProgress show) : m_show(std::move(show)) {}

    /// @p files is the number of files that are being added, or the engine's FileCount.
    void m_oZipUnzip_Progress(int fileNo, const QString& text, int files);

private:
    void Adding(int fileNo, const QString& text, int files);
    void Extracting(int fileNo, const QString& text, int files);
    void Report(const QString& caption, double part);
    void Finish();

    ShowProgress m_show;
    int m_total = 0;
    int m_count = 0;
    int m_lastPercent = 0;
};

/// Turns the file splitter's events into progress of one split or merge.
class VolumeProgress {
public:
    explicit VolumeProgress(ShowProgress show) : m_show(std::move(show)) {}

    void TotalChunks(int total) { m_total = total; }
    void NextVolume(int volumeNo, bool creating);
    void Progress(int chunkNo);

private:
    ShowProgress m_show;
    QString m_caption;
    int m_total = 0;
    int m_lastPercent = 0;
};

} // namespace qb
