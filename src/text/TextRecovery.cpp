#include "text/TextRecovery.h"

#include "platform/dao/Database.h"
#include "platform/system/Prompts.h"

#include <QDir>
#include <algorithm>
#include <chrono>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// How often unsaved texts are written while there is typing.
constexpr std::chrono::milliseconds Interval{500};

const QString Caption = u"Unsaved Changes"_s;

void Say(const QString& text)
{
    Prompts::Current().MsgBox({.Text = text, .Caption = Caption, .Icon = MsgBoxIcon::Exclamation});
}

MsgBoxResult AskForTexts(const QString& title, bool isOlder)
{
    const QString question =
        isOlder ? u"The program ended before the changes of the item '%1' were saved, and the item was changed by "
                  "another program since. Do you "
                  "wish to have them back? What is stored stays until you save."_s
                : u"The program ended before the changes of the item '%1' were saved. Do you wish to have them back?"_s;
    return Prompts::Current().MsgBox({.Text = question.arg(title),
                                      .Caption = Caption,
                                      .Buttons = MsgBoxButtons::YesNoCancel,
                                      .Icon = MsgBoxIcon::Question});
}

/// What nobody has declined is kept. True when the texts are shown.
bool Offer(Database& database, const RecoveryFile& file, const UnsavedTexts& unsaved,
           const std::function<void(qint64 item)>& goTo, const ShowUnsavedTexts& show)
{
    Statement row = database.Query(u"SELECT Title, LastChanged FROM Items WHERE ID = ?"_s, {unsaved.Item});
    if (!row.Step()) {
        Say(u"The program ended before the changes of the item %1 were saved, and the item is gone since. Its texts "
            "are kept in the file '%2'."_s.arg(unsaved.Item)
                .arg(QDir::toNativeSeparators(file.Keep())));
        return false;
    }
    const QString title = row.Text(0);
    const bool isOlder = row.Column(1).ToDate() != unsaved.LastChanged;
    row.Reset();
    const MsgBoxResult wanted = AskForTexts(title, isOlder);
    if (wanted == MsgBoxResult::No) {
        file.Remove();
        return false;
    }
    const RecoveryFile kept = file.SetAside(); // whatever is typed next
    if (wanted != MsgBoxResult::Yes)
        return false;
    goTo(unsaved.Item);
    if (!show(unsaved)) {
        Say(u"The item '%1' can't be changed now. Its changes are kept and will be offered again."_s.arg(title));
        return false;
    }
    kept.Remove();
    return true;
}

} // namespace

TextRecovery::TextRecovery(std::function<std::optional<UnsavedTexts>()> unsaved) : m_unsaved(std::move(unsaved))
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(Interval);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::bind_front(&TextRecovery::Keep, this));
}

void TextRecovery::Typed()
{
    if (!m_timer.isActive())
        m_timer.start();
}

void TextRecovery::Keep()
{
    constexpr int Share = 20; // a text of many megabytes takes its time, of which typing must notice little
    if (!m_file)
        return;
    const auto start = std::chrono::steady_clock::now();
    if (const std::optional<UnsavedTexts> unsaved = m_unsaved())
        m_file->Write(*unsaved);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    m_timer.setInterval(std::max(Interval, Share * took));
}

void TextRecovery::Forget()
{
    m_timer.stop();
    if (m_file)
        m_file->Remove();
}

void OfferUnsavedTexts(Database& database, const std::function<void(qint64 item)>& goTo, const ShowUnsavedTexts& show)
{
    for (const RecoveryFile& file : RecoveryFile::All(database.Name())) {
        if (const std::optional<UnsavedTexts> unsaved = file.Read();
            unsaved && Offer(database, file, *unsaved, goTo, show))
            return; // the next one at the next start
    }
}

} // namespace qb
