#include "config/FileAssociation.h"

#include "platform/system/RuntimeError.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QXmlStreamWriter>

#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

const QString FileMark = u"%1"_s; ///< stands for the file in a command

QString DataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

/// A control character that neither XML nor a desktop entry can express.
bool IsInexpressible(QChar character)
{
    return character.category() == QChar::Other_Control && !u"\t\n\r"_s.contains(character);
}

/// Whether a file can have the name, and the desktop's lists of files and patterns hold it.
bool IsFileName(const QString& name)
{
    const auto isForeign = [](QChar c) { return u"/\\;"_s.contains(c) || c.category() == QChar::Other_Control; };
    const bool isDots = std::all_of(name.begin(), name.end(),
                                    [](QChar c) { return c == u'.'; }); // so is the empty name
    return !isDots && std::none_of(name.begin(), name.end(), isForeign);
}

QString WhyNoType(const FileType& type)
{
    if (!IsFileName(type.ClassName))
        return u"'%1' can't be the name of a class."_s.arg(type.ClassName);
    if (!IsFileName(type.Extension))
        return u"'%1' can't be an extension."_s.arg(type.Extension);
    for (const FileCommand& command : type.Commands) {
        const QString line = command.Program + command.Arguments.join(u' ');
        if (std::any_of(line.begin(), line.end(), IsInexpressible))
            return u"The command '%1' has control characters."_s.arg(command.Name);
    }
    if (type.Commands.isEmpty() || type.Commands.constFirst().Program.isEmpty())
        return u"No program is given."_s;
    return {};
}

/// @p text with a mark in the place of each character that can't be expressed.
QString Expressible(const QString& text)
{
    QString result = QString::fromUtf8(text.toUtf8()); // no halves of surrogate pairs
    for (QChar& character : result) {
        if (IsInexpressible(character) || character.unicode() >= 0xfffe)
            character = QChar(QChar::ReplacementCharacter);
    }
    return result;
}

// The type

/// A pattern for the extension as it is: what is special in patterns stands in brackets.
QString PatternOf(const QString& extension)
{
    QString pattern = u"*."_s;
    for (const QChar character : Expressible(extension))
        pattern += u"*?["_s.contains(character) ? u"[%1]"_s.arg(character) : QString(character);
    return pattern;
}

QByteArray PackageOf(const FileType& type)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    xml.writeStartElement(u"mime-info"_s);
    xml.writeDefaultNamespace(u"http://www.freedesktop.org/standards/shared-mime-info"_s);
    xml.writeStartElement(u"mime-type"_s);
    xml.writeAttribute(u"type"_s, FileAssociation::TypeName(type.ClassName));
    xml.writeTextElement(u"comment"_s, Expressible(type.Description.isEmpty() ? type.ClassName : type.Description));
    xml.writeEmptyElement(u"glob"_s);
    xml.writeAttribute(u"pattern"_s, PatternOf(type.Extension));
    xml.writeEndDocument();
    return bytes;
}

// The desktop entry

/// A text as the value of a key.
QString EntryText(const QString& text)
{
    QString value = text;
    value.replace(u'\\', u"\\\\"_s).replace(u'\n', u"\\n"_s).replace(u'\t', u"\\t"_s).replace(u'\r', u"\\r"_s);
    return value.startsWith(u' ') ? u"\\s"_s + value.mid(1) : value;
}

bool NeedsQuotes(const QString& word)
{
    return word.isEmpty()
           || std::any_of(word.begin(), word.end(), [](QChar c) { return u" \t\n\r\"'\\><~|&;$*?#()`"_s.contains(c); });
}

/// A word of an Exec line that stands for itself; the escapes of EntryText are still to come.
QString ExecWord(const QString& word)
{
    QString quoted;
    for (const QChar character : word) {
        if (u"\"`$\\"_s.contains(character))
            quoted += u'\\';
        quoted += character == u'%' ? u"%%"_s : QString(character);
    }
    return NeedsQuotes(word) ? u'"' + quoted + u'"' : quoted;
}

/// A word of a shell's command in which @p mark stands for the shell's first argument.
QString ShellWord(QString word, const QString& mark)
{
    word.replace(u'\'', u"'\\''"_s);
    if (!mark.isEmpty())
        word.replace(mark, u"'\"$1\"'"_s);
    return u'\'' + word + u'\'';
}

/// What an Exec line can't say itself: a program with "=" or, for some desktops, "%" in its path, a
/// file that is part of a word or stands more than once.
bool NeedsShell(const FileCommand& command)
{
    const auto isPart = [](const QString& word) { return word.contains(FileMark) && word != FileMark; };
    return command.Program.contains(u'=') || command.Program.contains(u'%') || command.Arguments.count(FileMark) > 1
           || std::any_of(command.Arguments.begin(), command.Arguments.end(), isPart);
}

QString ExecOf(const FileCommand& command)
{
    QStringList words;
    if (NeedsShell(command)) {
        QString script = u"exec "_s + ShellWord(command.Program, {});
        for (const QString& argument : command.Arguments)
            script += u' ' + ShellWord(argument, FileMark);
        words = {u"sh"_s, u"-c"_s, ExecWord(script), u"sh"_s, u"%f"_s};
    } else {
        words << ExecWord(command.Program);
        for (const QString& argument : command.Arguments)
            words << (argument == FileMark ? u"%f"_s : ExecWord(argument));
    }
    return EntryText(words.join(u' '));
}

/// Letters and digits, everything else by its bytes.
QString ActionId(const QString& name)
{
    return QString::fromLatin1(name.toUtf8().toPercentEncoding({}, "-._~", '-'));
}

QString NameOf(const FileCommand& command)
{
    QString name = command.Caption;
    if (const qsizetype mark = name.indexOf(u'&'); mark >= 0)
        name.remove(mark, 1);
    return EntryText(Expressible(name.isEmpty() ? command.Name : name));
}

QByteArray EntryOf(const FileType& type)
{
    QStringList lines{u"[Desktop Entry]"_s, u"Type=Application"_s, u"Terminal=false"_s};
    lines << u"Name="_s + EntryText(Expressible(type.Description.isEmpty() ? type.ClassName : type.Description));
    lines << u"Exec="_s + ExecOf(type.Commands.constFirst());
    if (type.IconFile.startsWith(u'/')) // any other text would be taken as the name of a theme's icon
        lines << u"Icon="_s + EntryText(Expressible(type.IconFile));
    lines << u"MimeType="_s + FileAssociation::TypeName(type.ClassName) + u';';

    QString actions;
    QStringList groups;
    for (const FileCommand& command : type.Commands.mid(1)) {
        if (command.Program.isEmpty() || command.Name.isEmpty())
            continue; // nothing to start
        actions += ActionId(command.Name) + u';';
        groups << QString() << u"[Desktop Action "_s + ActionId(command.Name) + u']' << u"Name="_s + NameOf(command)
               << u"Exec="_s + ExecOf(command);
    }
    if (!actions.isEmpty())
        lines << u"Actions="_s + actions;
    return (lines + groups).join(u'\n').toUtf8() + '\n';
}

// Files

QString WhyNotWritten(const QSaveFile& file)
{
    return u"'%1' can't be written."_s.arg(QDir::toNativeSeparators(file.fileName()));
}

/// Waits for a program of the desktop; without it, or when it fails, the desktop learns of the
/// type the next time that somebody runs it.
void RunIfThere(const QString& program, const QString& folder)
{
    const QString path = QStandardPaths::findExecutable(program);
    if (path.isEmpty())
        return;
    constexpr int TimeLimit = 30000;
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(path, {folder});
    if (!process.waitForFinished(TimeLimit) && process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
}

} // namespace

void FileType::SetCommand(const FileCommand& command)
{
    const auto isNamed = [&](const FileCommand& other) {
        return other.Name.compare(command.Name, Qt::CaseInsensitive) == 0;
    };
    const auto taken = std::find_if(Commands.begin(), Commands.end(), isNamed);
    if (taken != Commands.end())
        *taken = command;
    else
        Commands << command;
}

FileType FileTypeOf(const EXEAssociation& association)
{
    const struct {
        bool IsWanted;
        QString Name;
        QString Caption;
        QString UsualCaption;
        QString Option;
    } commands[] = {
        {true, u"open"_s, association.OpenCaption, u"&Open"_s, {}},
        {association.Print, u"print"_s, association.PrintCaption, u"&Print"_s, u"/p"_s},
        {association.New, u"new"_s, association.NewCaption, u"&New"_s, u"/n"_s},
        {association.Install, u"add"_s, association.InstallCaption, u"&Install "_s + association.Description, u"/a"_s},
    };
    const QString& program = association.Program;
    FileType type{association.ClassName, association.Description, association.Extension, association.IconFile, {}};
    for (const auto& [isWanted, name, caption, usualCaption, option] : commands) {
        if (!isWanted)
            continue;
        // Only the command that opens has the program in quotes.
        const QString start = option.isEmpty() ? u'"' + program + u'"' : program + u' ' + option;
        const QStringList arguments = option.isEmpty() ? QStringList{FileMark} : QStringList{option, FileMark};
        type.Commands << FileCommand{name, caption.isEmpty() ? usualCaption : caption, start + u" \"%1\""_s, program,
                                     arguments};
    }
    return type;
}

FileCommand FileCommandOf(const QString& name, const QString& caption, const QString& line)
{
    const QStringList words = QProcess::splitCommand(line);
    return {name, caption, line, words.value(0), words.mid(1)};
}

QString FileAssociation::TypeName(const QString& className)
{
    const QByteArray name = className.toLower().toUtf8().toPercentEncoding("+", "~", '$');
    return u"application/x-"_s + QString::fromLatin1(name).toLower();
}

FileAssociation::FileAssociation(const FileType& type, const QString& source)
    : m_extension(type.Extension), m_source(source),
      m_package(DataFolder() + u"/mime/packages/"_s + type.ClassName + u".xml"_s),
      m_entry(DataFolder() + u"/applications/"_s + type.ClassName + u".desktop"_s)
{
    const QString reason = WhyNoType(type);
    if (!reason.isEmpty())
        Fail(ErrorNumber::InvalidCall, reason);
    Write(m_package, PackageOf(type));
    Write(m_entry, EntryOf(type));
}

void FileAssociation::PutInPlace()
{
    for (QSaveFile* file : {&m_package, &m_entry}) {
        if (!file->commit())
            Fail(ErrorNumber::PathAccess, WhyNotWritten(*file));
    }
    RunIfThere(u"update-mime-database"_s, DataFolder() + u"/mime"_s);
    RunIfThere(u"update-desktop-database"_s, DataFolder() + u"/applications"_s);
}

void FileAssociation::Write(QSaveFile& file, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(file.fileName()).absolutePath());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        Fail(ErrorNumber::PathAccess, WhyNotWritten(file));
}

void FileAssociation::Fail(long number, const QString& reason) const
{
    throw RuntimeError(number, u"Failed to register the file type '"_s + m_extension + u"'. "_s + reason, m_source);
}

} // namespace qb
