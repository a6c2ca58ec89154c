#include "maintenance/ArchiveProgress.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int Done = 100;
constexpr int Halfway = 50;
constexpr int LeastStep = 2; // a percent is shown when it has grown by more

// The forms of the engine's lines; see BrindletonZip.
bool IsTotal(const QString& text)
{
    return text.mid(1, 3) == u"(in"_s;
}

bool IsDeflated(const QString& text)
{
    return text.mid(1, 9) == u"(deflated"_s;
}

bool IsAdding(const QString& text)
{
    return text.mid(2, 6) == u"adding"_s;
}

bool IsInflating(const QString& text)
{
    return text.mid(2, 9) == u"inflating"_s;
}

bool IsExtracting(const QString& text)
{
    return text.mid(1, 10) == u"extracting"_s;
}

/// What stands from a place on, without its last characters.
QString Cut(const QString& text, int from, int fromEnd)
{
    QString piece = text.mid(from);
    piece.chop(fromEnd);
    return piece;
}

QString CompactedBy(const QString& text)
{
    return u"Compacted by "_s + Cut(text, 10, 3); // the bracket and the line's end
}

/// The name in an adding line without its extension and the blank behind.
QString AddedName(const QString& text)
{
    return Cut(text, 10, 4);
}

} // namespace

void LibraryZipProgress::m_oZip_Progress(const QString& text)
{
    if (IsTotal(text))
        m_work.Say({}, Done);
    else if (IsDeflated(text))
        m_work.Say(CompactedBy(text), 1);
    else if (IsAdding(text))
        m_work.Say((m_extracting ? u"Extracting "_s : u"Compacting "_s) + AddedName(text) + u"qrb"_s, Halfway);
}

void ExportZipProgress::m_oZip_Progress(const QString& text)
{
    if (IsTotal(text)) {
        m_work.Say({}, Done);
    } else if (IsDeflated(text)) {
        m_work.Say(CompactedBy(text), 1);
        m_work.Say({}, 0);
    } else if (IsAdding(text) || IsInflating(text)) {
        const QString name = m_extracting ? u"Extracting "_s + Cut(text, 13, 10) : u"Compacting "_s + AddedName(text);
        m_work.Say(name + u"qrx"_s, Halfway);
    }
}

void StoredFileZipProgress::m_oZipUnzip_Progress(int fileNo, const QString& text, int files)
{
    if (IsAdding(text))
        Adding(fileNo, text, files);
    else if (IsExtracting(text) || IsInflating(text))
        Extracting(fileNo, text, files);
    else if (m_count == m_total)
        Finish();
}

void StoredFileZipProgress::Adding(int fileNo, const QString& text, int files)
{
    const QString caption = u"Adding "_s + text.mid(10);
    if (m_total != 0 && m_count > 0)
        ++m_count;
    if (m_total == 0) {
        m_work.Say(caption, 1);
        m_total = files;
        m_count = 1;
        m_lastPercent = 0;
    }
    Report(caption, double(m_count == 0 ? fileNo : m_count) / m_total);
}

void StoredFileZipProgress::Extracting(int fileNo, const QString& text, int files)
{
    // The words are crossed, deliberately.
    const QString caption = (IsInflating(text) ? u"Compacting "_s : u"Extracting "_s) + text.section(u'\\', -1);
    m_total = files;
    Report(caption, double(fileNo) / m_total);
    if (fileNo == m_total)
        Finish();
}

void StoredFileZipProgress::Report(const QString& caption, double part)
{
    const int percent = qMin(qRound(part * Done), Done - 1);
    if (m_lastPercent + LeastStep >= percent)
        return;
    m_lastPercent = percent;
    m_work.Say(caption, percent);
}

void StoredFileZipProgress::Finish()
{
    m_total = m_count = m_lastPercent = 0;
    m_work.Say({}, Done);
}

void VolumeProgress::NextVolume(int volumeNo, bool creating)
{
    m_caption = creating ? u"Creating %1 Volume"_s.arg(volumeNo) : u"Merging Volume %1"_s.arg(volumeNo);
}

void VolumeProgress::Progress(int chunkNo)
{
    const int percent = m_total > 0 ? qRound(double(chunkNo) / m_total * Done) : Done;
    if (chunkNo == 1)
        m_work.Say(m_caption, 0);
    if (m_lastPercent + LeastStep < percent) {
        m_lastPercent = percent;
        m_work.Say(m_caption, percent);
    }
    if (chunkNo == m_total)
        m_work.Say({}, Done);
}

} // namespace qb
