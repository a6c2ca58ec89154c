#pragma once

#include <QList>
#include <QSaveFile>
#include <QString>
#include <QStringList>

namespace qb {

/// One thing that a program does with the files of a type.
struct FileCommand {
    QString Name;          ///< "open", "print", ..., unique in a type without case
    QString Caption;       ///< for menus; the first "&" stands before its access key
    QString Line;          ///< the command as a registry has it
    QString Program;       ///< the same in its parts
    QStringList Arguments; ///< "%1" in them stands for the file
};

/// A type of files and the program for it.
struct FileType {
    QString ClassName; ///< also the name of the files that describe the type
    QString Description;
    QString Extension;           ///< without its "."
    QString IconFile;            ///< for the desktop only with a path from the root; or empty
    QList<FileCommand> Commands; ///< the first one opens a file; the others are its program's actions

    /// Adds the command, in the place of one of its name.
    void SetCommand(const FileCommand& command);
};

/// What is said of a program and its type of files when it is registered. A caption that is empty
/// is the usual one.
struct EXEAssociation {
    QString Program; ///< path
    QString ClassName;
    QString Description;
    QString Extension; ///< without its "."
    bool Print = false;
    bool New = false;
    bool Install = false;
    QString OpenCaption;    ///< "&Open"
    QString PrintCaption;   ///< "&Print"
    QString NewCaption;     ///< "&New"
    QString InstallCaption; ///< "&Install " and the description
    QString IconFile;       ///< empty: the program
    int IconIndex = 0;
};

/// The type with a command "open" and those of "print", "new" and "add" that are asked for.
FileType FileTypeOf(const EXEAssociation& association);

/// A command by its line, in which '"' keeps words together.
FileCommand FileCommandOf(const QString& name, const QString& caption, const QString& line);

/// Makes a type of files known to the user's desktop: a type `application/x-<class name>` in
/// `mime/packages/<class name>.xml`, and the program as `applications/<class name>.desktop`, both
/// in the user's data folder. In two steps, so that what can fail fails before anything is in its
/// place; an object that goes without PutInPlace leaves both files as they were.
class FileAssociation {
public:
    /// Writes both files beside their places. Raises errors with @p source: 5 for names that can't
    /// be names of files and for commands that a desktop entry can't hold, before anything is
    /// written; 75 when a file can't be written.
    FileAssociation(const FileType& type, const QString& source);
    /// Replaces the files by the prepared ones, then has the desktop's programs, where there are
    /// any, read them. Raises RuntimeError 75 when a file can't be replaced.
    void PutInPlace();

    /// `application/x-` and the class name in lower case; what a type's name can't hold is written
    /// as "$" and two hexadecimal digits for each byte of its UTF-8.
    static QString TypeName(const QString& className);

private:
    [[noreturn]] void Fail(long number, const QString& reason) const;
    void Write(QSaveFile& file, const QByteArray& bytes);

    QString m_extension;
    QString m_source;
    QSaveFile m_package;
    QSaveFile m_entry;
};

} // namespace qb
