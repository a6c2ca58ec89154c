#pragma once

#include "support/RegistryAccess.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>

namespace qb::test {

inline EXEAssociation Usual()
{
    EXEAssociation association;
    association.Program = u"/opt/Quill Base/quill"_s;
    association.ClassName = u"Quill.Note"_s;
    association.Description = u"Quill note"_s;
    association.Extension = u"qnote"_s;
    return association;
}

inline void Associate(const EXEAssociation& association)
{
    cRegistry().CreateEXEAssociation(association);
}

/// All sections below the classes that have a default, with it.
inline QMap<QString, QString> ClassTexts(RegistryHive hive = RegistryHive::CurrentUser)
{
    QMap<QString, QString> texts;
    const std::function<void(const QString&)> collect = [&](const QString& section) {
        const cRegistry registry = At(Classes + section, {}, hive);
        if (!registry.Value().IsNull())
            texts.insert(section, registry.Value().ToText());
        QStringList names;
        int count = 0;
        registry.EnumerateSections(names, count);
        for (const QString& name : names)
            collect(section.isEmpty() ? name : section + u'\\' + name);
    };
    collect({});
    return texts;
}

inline QString DataPath(const QString& name)
{
    return qEnvironmentVariable("XDG_DATA_HOME") + u'/' + name;
}
inline QString PackagePath(const QString& className)
{
    return DataPath(u"mime/packages/"_s + className + u".xml"_s);
}
inline QString EntryPath(const QString& className)
{
    return DataPath(u"applications/"_s + className + u".desktop"_s);
}

/// The files of the data folder with their bytes.
inline QMap<QString, QByteArray> DataFiles()
{
    QMap<QString, QByteArray> files;
    const std::function<void(const QString&)> collect = [&](const QString& folder) {
        const auto entries = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            if (entry.isDir())
                collect(entry.filePath());
            else
                files.insert(entry.filePath(), ReadFile(entry.filePath()));
        }
    };
    collect(DataPath({}));
    return files;
}

/// The values of a desktop entry as they stand there, by "group/key".
inline QMap<QString, QString> EntryOf(const QString& className)
{
    QMap<QString, QString> values;
    QString group;
    const QStringList lines = QString::fromUtf8(ReadFile(EntryPath(className))).split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const QString key = line.section(u'=', 0, 0);
        if (line.startsWith(u'['))
            group = line.mid(1).chopped(1);
        else if (line.contains(u'=') && !values.contains(group + u'/' + key))
            values.insert(group + u'/' + key, line.section(u'=', 1));
        else
            values.insert(u"(faulty)"_s, line);
    }
    return values;
}

inline QChar CharacterAt(const QString& text, qsizetype index)
{
    return index < text.size() ? text[index] : QChar(QChar::ReplacementCharacter);
}

/// A value without its escapes, as a desktop reads it.
inline QString Unescaped(const QString& value)
{
    const QMap<QChar, QChar> escapes{{u'n', u'\n'}, {u't', u'\t'}, {u'r', u'\r'}, {u's', u' '}, {u'\\', u'\\'}};
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i)
        text += value[i] == u'\\' ? escapes.value(CharacterAt(value, ++i), QChar::ReplacementCharacter) : value[i];
    return text;
}

/// The words of an Exec line, as a desktop reads them. A field code in quotes becomes "(code)".
inline QStringList WordsOf(const QString& value)
{
    const QString line = Unescaped(value);
    QStringList words;
    for (qsizetype i = 0; i < line.size(); ++i) {
        QString word;
        const bool isQuoted = line[i] == u'"';
        for (i += isQuoted ? 1 : 0; i < line.size() && line[i] != (isQuoted ? u'"' : u' '); ++i) {
            if (isQuoted && line[i] == u'\\')
                word += CharacterAt(line, ++i);
            else if (line[i] == u'%')
                word += CharacterAt(line, ++i) == u'%' ? u"%"_s : isQuoted ? u"(code)"_s : u'%' + line[i];
            else
                word += line[i];
        }
        i += isQuoted ? 1 : 0;
        words << word;
    }
    return words;
}

/// What a validator prints, with its exit status unless that is 0.
inline QByteArray Complaint(const QString& program, const QStringList& arguments)
{
    const QString path = QStandardPaths::findExecutable(program, {u"/usr/bin"_s, u"/usr/local/bin"_s});
    if (path.isEmpty())
        return program.toUtf8() + " is missing";
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(path, arguments);
    if (!process.waitForFinished())
        return "does not end";
    return process.readAll() + (process.exitCode() == 0 ? QByteArray() : QByteArray::number(process.exitCode()));
}

/// What is wrong with the files of a class.
inline QByteArray ComplaintsOf(const QString& className)
{
    return Complaint(u"xmllint"_s, {u"--noout"_s, PackagePath(className)})
           + Complaint(u"desktop-file-validate"_s, {EntryPath(className)});
}

} // namespace qb::test
