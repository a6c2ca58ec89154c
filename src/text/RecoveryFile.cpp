#include "text/RecoveryFile.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct TextRow {
    const char* Name;
    std::optional<QString> UnsavedTexts::*Text;
};
constexpr TextRow TextRows[] = {{"code", &UnsavedTexts::Code},
                                {"notes", &UnsavedTexts::Notes},
                                {"usage", &UnsavedTexts::Usage},
                                {"info", &UnsavedTexts::Info}};

} // namespace

RecoveryFile::RecoveryFile(const QString& library)
    : m_library(QFileInfo(library).absoluteFilePath()),
      m_path(
          ApplicationFolder() + u"Unsaved-"_s
          + QString::fromLatin1(QCryptographicHash::hash(m_library.toUtf8(), QCryptographicHash::Sha1).toHex().left(16))
          + u".json"_s)
{
}

void RecoveryFile::Write(const UnsavedTexts& texts) const
{
    // Seconds as text: a number of JSON would do, but it is a double.
    QJsonObject object{{u"library"_s, m_library},
                       {u"item"_s, QString::number(texts.Item)},
                       {u"changed"_s, QString::number(texts.LastChanged.Seconds())}};
    for (const TextRow& row : TextRows) {
        if (const std::optional<QString>& text = texts.*row.Text)
            object.insert(QLatin1StringView(row.Name), *text);
    }
    // Nobody else is to read what the library's own rights may keep from them.
    ReplaceContents(m_path, QJsonDocument(object).toJson(QJsonDocument::Compact), QFile::ReadOwner | QFile::WriteOwner);
}

std::optional<UnsavedTexts> RecoveryFile::Read() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    if (object.value(u"library"_s).toString() != m_library)
        return std::nullopt;
    UnsavedTexts texts;
    texts.Item = object.value(u"item"_s).toString().toLongLong();
    // Older versions knew readings of a clock, under another name.
    texts.LastChanged = object.contains(u"changed"_s)
                            ? Date::FromSeconds(object.value(u"changed"_s).toString().toLongLong())
                            : Date::FromWallSeconds(object.value(u"lastChanged"_s).toString().toLongLong());
    for (const TextRow& row : TextRows) {
        const QJsonValue text = object.value(QLatin1StringView(row.Name));
        if (text.isString())
            texts.*row.Text = text.toString();
    }
    return texts;
}

void RecoveryFile::Remove() const
{
    QFile::remove(m_path);
}

std::vector<RecoveryFile> RecoveryFile::All(const QString& library)
{
    const RecoveryFile own(library);
    std::vector<RecoveryFile> all{own};
    const QFileInfo info(own.m_path);
    for (const QString& name :
         info.absoluteDir().entryList({info.completeBaseName() + u"(*).json"_s}, QDir::Files, QDir::Name)) {
        all.push_back(own);
        all.back().m_path = info.absoluteDir().filePath(name);
    }
    return all;
}

RecoveryFile RecoveryFile::RenamedTo(const QString& path) const
{
    RecoveryFile renamed(*this);
    if (QFile::rename(m_path, path))
        renamed.m_path = path;
    return renamed;
}

RecoveryFile RecoveryFile::SetAside() const
{
    const bool isOwn = m_path == RecoveryFile(m_library).m_path;
    return isOwn ? RenamedTo(NumberedPath(m_path)) : *this;
}

QString RecoveryFile::Keep() const
{
    return RenamedTo(NumberedPath(m_path + u".kept"_s)).m_path;
}

} // namespace qb
