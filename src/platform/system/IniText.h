#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace qb {

/// A settings file as text: sections, keys and text values in the usual INI form. What is not set stays
/// as it stands, byte for byte, faulty lines too. Names compare without case.
class IniText {
public:
    /// @p bytes are a file's contents in UTF-8, empty for a file that is to be made. Anything is taken.
    explicit IniText(QByteArray bytes = {}) : m_bytes(std::move(bytes)) {}

    /// Nothing for a key that is not there.
    std::optional<QString> Value(const QString& section, const QString& key) const;
    void Set(const QString& section, const QString& key, const QString& value);
    const QByteArray& Bytes() const { return m_bytes; }

private:
    struct Place {
        qsizetype Begin; ///< of the line
        qsizetype End;   ///< behind its line end
        QByteArray Text; ///< behind the equals sign
    };
    /// Where the key stands; @p sectionEnd becomes the place for a new key, or stays -1.
    std::optional<Place> Find(const QString& section, const QString& key, qsizetype& sectionEnd) const;

    QByteArray m_bytes; ///< UTF-8
};

} // namespace qb
