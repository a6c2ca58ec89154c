#include "web/Download.h"

#include "platform/system/FileReplace.h"
#include "platform/system/Paths.h"
#include "web/DownloadAddress.h"

#include <QRegularExpression>
#include <QStorageInfo>
#include <QTimer>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 KeptFree = 200LL << 20; ///< bytes of the disk that a file without end must not take

constexpr int Whole = 200;
constexpr int InPart = 206;
constexpr int NoSuchRange = 416;

} // namespace

Download::Download(QUrl url, FetchMaker maker)
    : m_url(std::move(url)), m_maker(std::move(maker)), m_folder(CacheFolder() + u"download-XXXXXX"_s),
      m_name(DownloadName(m_url, {}))
{
    Room = [this] { return QStorageInfo(m_folder.path()).bytesAvailable() - KeptFree; };
}

Download::~Download()
{
    m_file.close();
}

void Download::Start()
{
    if (m_state != State::Stopped)
        return;
    m_hasRestarted = false;
    Ask();
}

void Download::Ask()
{
    if (const QString kept = WhyKeptOut(); !kept.isEmpty())
        return End(State::Stopped, u"files from the web are not loaded here: "_s + kept);
    if (m_validator.isEmpty())
        Restart(); // nobody can tell whether the rest would be of the same file
    QString reason;
    m_fetch = m_maker(reason);
    if (!m_fetch)
        return End(State::Refused, reason);
    m_fetch->Answered = std::bind_front(&Download::Answered, this);
    m_fetch->Received = [this](const QByteArray& piece) { return Received(piece); };
    m_fetch->Ended = std::bind_front(&Download::Ended, this);
    m_asked = m_received;
    m_state = State::Loading;
    m_why.clear();
    Q_EMIT Changed();
    m_fetch->Start(m_url, m_asked, m_validator);
}

void Download::Stop()
{
    if (m_state == State::Loading)
        End(State::Stopped, u"stopped"_s);
}

void Download::Cancel()
{
    if (m_state == State::Cancelled)
        return;
    if (m_fetch)
        m_fetch->Stop();
    RemoveFile();
    End(State::Cancelled, {});
}

// What the server says

bool Download::Answered(const FetchAnswer& answer)
{
    if (m_asked > 0 && answer.Status == InPart)
        return AnsweredInPart(answer);
    if (m_asked > 0 && answer.Status == NoSuchRange) { // the file is another one
        AskAnew();
        return false;
    }
    if (answer.Status != Whole) {
        End(State::Refused, u"the server says %1 %2"_s.arg(answer.Status).arg(answer.Reason).trimmed());
        return false;
    }
    return AnsweredWhole(answer);
}

/// It must be the rest of what is there: from the first byte that is missing, of a file of the same length.
bool Download::AnsweredInPart(const FetchAnswer& answer)
{
    static const QRegularExpression form(uR"(^bytes\s+(\d+)-(\d+)/(\d+|\*)$)"_s);
    const QRegularExpressionMatch range = form.match(QString::fromLatin1(answer.Range).trimmed());
    const qint64 total = range.captured(3) == u"*" ? m_total : range.captured(3).toLongLong();
    const bool fits = range.hasMatch() && range.captured(1).toLongLong() == m_received
                      && (m_total < 0 || total == m_total);
    if (fits && OpenFile()) {
        m_total = total;
        Q_EMIT Changed();
        return true;
    }
    if (m_state == State::Loading)
        AskAnew();
    return false;
}

/// For all of it, but not for ever. The fetch that has called goes with the next one, so that comes later.
void Download::AskAnew()
{
    Restart();
    if (std::exchange(m_hasRestarted, true))
        return End(State::Refused, u"the server's answers don't fit together"_s);
    QTimer::singleShot(0, this, [this] {
        if (m_state == State::Loading)
            Ask();
    });
}

bool Download::AnsweredWhole(const FetchAnswer& answer)
{
    const bool isHtml = answer.ContentType.startsWith("text/html")
                        || answer.ContentType.startsWith("application/xhtml");
    if (isHtml && !answer.Disposition.toLower().startsWith("attachment")) {
        End(State::Cancelled, {});
        Q_EMIT IsPage(m_url);
        return false;
    }
    Restart();
    if (!std::exchange(m_isNamed, true))
        m_name = DownloadName(answer.Url, answer.Disposition);
    m_validator = answer.Validator;
    m_total = answer.Length;
    if (m_total > Room()) {
        End(State::Stopped, u"there is no room for it on the disk"_s);
        return false;
    }
    Q_EMIT Changed();
    return OpenFile();
}

/// All of it has to come anew.
void Download::Restart()
{
    m_received = m_asked = 0;
    m_validator.clear();
    m_total = -1;
    RemoveFile();
}

void Download::RemoveFile()
{
    m_file.close();
    if (!m_file.fileName().isEmpty())
        m_file.remove();
    m_file.setFileName({});
}

bool Download::OpenFile()
{
    if (m_file.isOpen())
        return true;
    if (m_file.fileName().isEmpty())
        m_file.setFileName(m_folder.filePath(m_name));
    const bool opened = m_folder.isValid()
                        && m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
    if (!opened)
        End(State::Stopped,
            u"it can't be written: "_s + (m_folder.isValid() ? m_file.errorString() : m_folder.errorString()));
    return opened;
}

bool Download::Received(const QByteArray& piece)
{
    constexpr qint64 Step = 8LL << 20; // how often the room is looked at
    if (m_total >= 0 && m_received + piece.size() > m_total) {
        End(State::Refused, u"the server sends more than it has said"_s);
        return false;
    }
    const bool looks = m_received / Step != (m_received + piece.size()) / Step;
    const QString why = looks && Room() < 0 ? u"the disk is nearly full"_s
                                            : WriteAll(m_file, piece.constData(), piece.size());
    if (!why.isEmpty()) {
        m_received = m_file.size(); // of what was written in part
        End(State::Stopped, why);
        return false;
    }
    m_received += piece.size();
    Q_EMIT Changed();
    return true;
}

void Download::Ended(const QString& why)
{
    if (!why.isEmpty())
        return End(State::Stopped, why);
    if (m_total >= 0 && m_received < m_total)
        return End(State::Stopped, u"the connection was cut"_s);
    m_file.close();
    m_total = m_received;
    m_state = State::Loaded;
    m_why.clear();
    Q_EMIT Changed();
    Q_EMIT Loaded();
}

/// The fetch may be what calls, so it only stops and goes with the next one.
void Download::End(State state, const QString& why)
{
    if (m_fetch)
        m_fetch->Stop();
    m_file.close();
    m_state = state;
    m_why = why;
    Q_EMIT Changed();
}

} // namespace qb
