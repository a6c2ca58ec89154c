#pragma once

#include "web/PageBytes.h"

#include <QJsonArray>
#include <QString>
#include <vector>

namespace qb {

/// A page file while it is edited. What the editor writes comes as pieces, of which those that it has not touched
/// are ranges of a text that it was given; these keep their bytes.
class EditedPage {
public:
    static constexpr qint64 MostBytes = 8 << 20; ///< of a page that can be edited

    /// Reads the page. Raises an error for one that is no file of its folder, can't be read, or is too large.
    explicit EditedPage(const QString& path);

    const QString& Path() const { return m_path; }
    /// The texts that pieces may name, by number: that of the file, and what was typed in the source view.
    const QString& Text(int number) const { return m_texts[size_t(number)].Text(); }
    const QByteArray& Bytes(int number) const { return m_texts[size_t(number)].Bytes(); }
    int LastText() const { return int(m_texts.size()) - 1; }

    /// The bytes of a page made of pieces, each a new text or [number, begin, end]. Raises an error for any other.
    QByteArray Composed(const QJsonArray& pieces) const;
    /// Notes a text that was typed over that of @p before, a page's bytes; what is the same in both keeps its bytes.
    /// Line ends of the typed text are plain.
    void TakeText(const QByteArray& before, const QString& typed);
    /// Notes a page's bytes as a text to go on with.
    void TakeBytes(const QByteArray& bytes) { m_texts.emplace_back(bytes); }

    /// Whether the file is not what it was when it was read or written last.
    bool IsForeign() const;
    /// Writes the file whole. Returns why that could not be done, and leaves the file as it was then.
    QString Write(const QByteArray& bytes);
    /// Whether the file is another one than before the edit.
    bool IsChanged() const { return m_written != m_texts.front().Bytes(); }
    const QByteArray& Written() const { return m_written; }

private:
    QString m_path;
    std::vector<PageBytes> m_texts;
    QByteArray m_written;
    QString m_lineEnd; ///< as the page has them
};

} // namespace qb
