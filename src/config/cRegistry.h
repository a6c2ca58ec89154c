#pragma once

#include "config/FileAssociation.h"
#include "platform/dao/Value.h"

#include <QString>
#include <QStringList>
#include <utility>

namespace qb {

/// The type with which a value is written.
enum class RegistryType {
    String,
    Number, ///< whole
    Binary,
};

/// The hives: trees of their own.
enum class RegistryHive {
    ClassesRoot,
    CurrentUser,
    LocalMachine,
    Users,
};

/// A registry: hives of sections, one below another, with named values in each. It is a file of
/// the user, `Registry.json` in the ConfigFolder, which is read and written whole by each
/// operation. Names are found in any case and keep the one that they were made with; "\" stands
/// between the names of a section's path, and the value without a name is the section's default.
///
/// An operation that changes something raises RuntimeError 75 when it can't, with its own text, and
/// the file is then as it was. A file that is not understood is never overwritten: changes fail,
/// and reading finds nothing in it.
class cRegistry {
public:
    /// Whether there is the section; a hive itself always is.
    bool KeyExists() const;
    /// Makes the section and what is missing above it. True also when it was there.
    bool CreateKey();
    /// Removes the section with its values and everything below it. Raises an error when there is
    /// no such section, and for a hive itself.
    bool DeleteKey();
    /// Raises one error when there is no such section, another one when there is no such value.
    bool DeleteValue();
    /// With the type that it was written with; Default when there is no such value.
    qb::Value Value() const;
    /// Writes @p value as ValueType says, in a section that is made when it is missing. A text that
    /// is no whole number can't be written as one.
    void SetValue(const qb::Value& value);
    /// The names of the section's values, sorted, "" for its default. False when there is no such
    /// section; nothing is then found.
    bool EnumerateValues(QStringList& names, int& count) const;
    /// The same for the sections directly below.
    bool EnumerateSections(QStringList& names, int& count) const;

    /// Makes a program the one for files of an extension: in `SOFTWARE\Classes` of ClassKey, and
    /// for the user's desktop (see FileAssociation). Raises RuntimeError 5 for a class or an
    /// extension that can't be one, 75 when something can't be written.
    void CreateEXEAssociation(const EXEAssociation& association);
    /// Adds commands to the class that this object made last: name, caption, command line, in
    /// threes. A command of a name that is taken replaces it. Raises RuntimeError 5 for a list of
    /// another length, before there is a class, and for what can't be a name.
    void CreateAdditionalEXEAssociations(const QStringList& nameTextCommand);

    /// How SetValue writes; String at first. This and what follows holds for all operations until it is set anew.
    RegistryType ValueType() const { return m_valueType; }
    void SetValueType(RegistryType type) { m_valueType = type; }
    /// CurrentUser at first.
    RegistryHive ClassKey() const { return m_classKey; }
    void SetClassKey(RegistryHive hive) { m_classKey = hive; }
    /// The path below the hive; empty for the hive itself. Separators at its ends and repeated ones mean nothing.
    QString SectionKey() const { return m_sectionKey; }
    void SetSectionKey(const QString& path) { m_sectionKey = path; }
    /// Empty for the section's default.
    QString ValueKey() const { return m_valueKey; }
    void SetValueKey(const QString& name) { m_valueKey = name; }
    /// What Value() gives for a value or a section that is not there; Null at first.
    qb::Value Default() const { return m_default; }
    void SetDefault(const qb::Value& value) { m_default = value; }

private:
    /// Sections below `SOFTWARE\Classes` with the text of each.
    using Texts = QList<std::pair<QString, QString>>;
    static Texts TextsOf(const QString& className, const QList<FileCommand>& commands);
    void Register(const FileType& type, const Texts& texts);
    [[noreturn]] void Fail(const QString& start, const QString& section, const QString& end = {}) const;
    [[noreturn]] void FailToSet(const QString& section, const QString& name, const QString& text) const;

    RegistryType m_valueType = RegistryType::String;
    RegistryHive m_classKey = RegistryHive::CurrentUser;
    QString m_sectionKey;
    QString m_valueKey;
    qb::Value m_default;
    FileType m_fileType; ///< of the last CreateEXEAssociation and what was added to it
};

} // namespace qb
