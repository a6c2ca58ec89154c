#pragma once

#include <QByteArrayView>
#include <QString>
#include <memory>

class QFile;

namespace qb {

/// A stretch of a file that is read as if it were memory. Somebody may cut the file short meanwhile: what is gone then
/// reads as zeros, and IsDamaged says so. Can be read by several threads.
class MappedFile {
public:
    /// Of a file that is open, and need not stay so. Nothing when it can't be mapped; @p reason says why then. @p
    /// offset is a multiple of 4096, and the stretch must
    /// lie within the file.
    static std::shared_ptr<const MappedFile> Map(QFile& file, qint64 offset, qint64 size, QString& reason);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    QByteArrayView Bytes() const { return {m_begin, m_size}; }
    /// Something of it was found missing when it was read.
    bool IsDamaged() const;

private:
    MappedFile(char* begin, qsizetype size, int slot) : m_begin(begin), m_size(size), m_slot(slot) {}

    char* m_begin;
    qsizetype m_size;
    int m_slot; ///< by which the handler of faults knows it
};

} // namespace qb
