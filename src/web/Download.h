#pragma once

#include "platform/system/Hook.h"
#include "web/FileFetch.h"

#include <QFile>
#include <QObject>
#include <QTemporaryDir>
#include <QUrl>

namespace qb {

/// A file that is being loaded from the web into a folder of its own, where nobody looks for it before it is whole. It
/// is written as it comes, so that memory does not grow with it, and is never run, opened or looked into.
class Download : public QObject {
    Q_OBJECT

public:
    enum class State {
        Loading,
        Stopped, ///< by the user, a cut connection, a full disk; it can go on
        Loaded,  ///< whole
        Refused, ///< there is no such file, or it is none to be loaded
        Cancelled
    };

    /// Nothing is asked for before Start. The maker is called for each try.
    Download(QUrl url, FetchMaker maker);
    ~Download() override;

    /// Begins, or goes on with what is missing, if the server allows that and has the same file still; else with all of
    /// it.
    void Start();
    /// Stops; what has come stays.
    void Stop();
    /// Ends it, and deletes what has come.
    void Cancel();

    State Now() const { return m_state; }
    const QUrl& Url() const { return m_url; }
    QString Name() const { return m_name; }        ///< safe, and without folders
    qint64 Received() const { return m_received; } ///< bytes that are there
    qint64 Total() const { return m_total; }       ///< -1: nobody knows
    const QString& Why() const { return m_why; }   ///< it was stopped or refused
    QString File() const { return m_file.fileName(); }
    /// Whether it would go on where it stopped.
    bool MayGoOn() const { return m_received > 0 && !m_validator.isEmpty(); }

    /// Asked before anything is asked for: why nothing is loaded from the web, or nothing.
    Hook<QString()> WhyKeptOut;
    /// How many bytes the disk has room for, beside what must stay free.
    std::function<qint64()> Room;

Q_SIGNALS:
    void Changed();
    /// It is whole; the folder and the file in it go with this object.
    void Loaded();
    /// The address is that of a page after all, which is not loaded.
    void IsPage(const QUrl& url);

private:
    bool Answered(const FetchAnswer& answer);
    bool AnsweredInPart(const FetchAnswer& answer);
    bool AnsweredWhole(const FetchAnswer& answer);
    bool Received(const QByteArray& piece);
    void Ended(const QString& why);
    void Ask();
    void AskAnew();
    void Restart();
    void RemoveFile();
    bool OpenFile();
    void End(State state, const QString& why);

    QUrl m_url;
    FetchMaker m_maker;
    std::unique_ptr<FileFetch> m_fetch;
    QTemporaryDir m_folder;
    QFile m_file;
    State m_state = State::Stopped;
    QString m_name;
    QString m_why;
    QByteArray m_validator; ///< of what has come so far
    qint64 m_received = 0;
    qint64 m_asked = 0; ///< from where on
    qint64 m_total = -1;
    bool m_hasRestarted = false;
    bool m_isNamed = false; ///< by a server that has answered
};

} // namespace qb
