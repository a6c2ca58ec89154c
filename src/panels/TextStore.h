#pragma once

#include <QByteArrayView>
#include <QString>
#include <memory>
#include <vector>

namespace qb {

/// A text in a TextStore, in UTF-8, in the room of a pointer. It lives as long as the store holds it.
class KeptText {
public:
    bool IsEmpty() const { return !m_at; }
    QByteArrayView Utf8() const;
    QString ToString() const { return QString::fromUtf8(Utf8()); }
    /// The same in @p room, for a look at many of them one after the other.
    QStringView In(std::vector<QChar>& room) const;

private:
    friend class TextStore;
    const char* m_at = nullptr; ///< four bytes of length, then the text; null is the empty one
};

/// Keeps many short texts one behind the other. One that is replaced leaves its room unused until all is cleared.
class TextStore {
public:
    KeptText Keep(QByteArrayView utf8);
    /// Takes all texts away; those who hold one may not read it any more.
    void Clear();

private:
    char* Room(size_t size);

    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_next = nullptr; ///< in the block that is being filled
    size_t m_left = 0;      ///< bytes behind it
};

} // namespace qb
