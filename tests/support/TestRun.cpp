#include "support/TestRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace qb::test {

using namespace Qt::StringLiterals;

namespace {
constexpr const char* DataVariable = "QUILLBASE_DATA_HOME";
constexpr const char* ConfigVariable = "QUILLBASE_CONFIG_HOME";
constexpr const char* CacheVariable = "QUILLBASE_CACHE_HOME";

void Restore(const char* variable, const QByteArray& value)
{
    value.isNull() ? qunsetenv(variable) : qputenv(variable, value);
}
} // namespace

TemporaryHome::TemporaryHome()
    : m_folder(QDir::tempPath() + u"/quill base ßé-XXXXXX"_s), m_dataBefore(qgetenv(DataVariable)),
      m_configBefore(qgetenv(ConfigVariable)),
      m_cacheBefore(qgetenv(CacheVariable))
{
    QDir().mkpath(Path(u"data"_s));
    QDir().mkpath(Path(u"config"_s));
    qputenv(DataVariable, QFile::encodeName(Path(u"data"_s)));
    qputenv(ConfigVariable, QFile::encodeName(Path(u"config"_s)));
    qputenv(CacheVariable, QFile::encodeName(Path(u"cache"_s)));
}

TemporaryHome::~TemporaryHome()
{
    Restore(DataVariable, m_dataBefore);
    Restore(ConfigVariable, m_configBefore);
    Restore(CacheVariable, m_cacheBefore);
}

QString TemporaryHome::Path(const QString& name) const
{
    return name.isEmpty() ? m_folder.path() : m_folder.filePath(name);
}

FixedClock::FixedClock(Date now) : m_now(now), m_before(Clock::SetSource([this] { return m_now; })) {}

FixedClock::~FixedClock()
{
    Clock::SetSource(std::move(m_before));
}

void FailOnWarnings()
{
    // The offscreen platform says of every dialog what it can't do for it.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support )"_s));
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        QTest::qFail(qPrintable(u"can't read "_s + path), __FILE__, __LINE__);
    return file.readAll();
}

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        QTest::qFail(qPrintable(u"can't write "_s + path), __FILE__, __LINE__);
}

} // namespace qb::test
