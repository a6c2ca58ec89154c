#include "web/PageEditing.h"

#include "platform/system/Prompts.h"
#include "platform/system/RuntimeError.h"

#include <QFileInfo>
#include <QJsonDocument>

namespace qb {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto PatienceWithThePane = 1s;

/// Halves of characters would change their length on the way.
QString WithoutHalves(QString text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        if (isPair)
            ++at;
        else if (text[at].isSurrogate())
            text[at] = QChar::ReplacementCharacter;
    }
    return text;
}

EditingState StateOf(const QJsonObject& value)
{
    const auto names = [&value](QLatin1StringView key) { return value[key].toVariant().toStringList(); };
    return {.On = names("on"_L1),
            .Block = value["block"_L1].toString(),
            .Lists = names("lists"_L1),
            .Language = value["language"_L1].toString(),
            .Link = value["link"_L1].toString(),
            .Text = value["text"_L1].toString(),
            .IsTable = value["isTable"_L1].toBool(),
            .CanUndo = value["canUndo"_L1].toBool(),
            .CanRedo = value["canRedo"_L1].toBool()};
}

QJsonObject ObjectOf(const QJsonValue& answer)
{
    return QJsonDocument::fromJson(answer.toString().toUtf8()).object();
}

} // namespace

PageEditing::PageEditing(const QString& path, PageEditingTools tools, Call call)
    : m_page(path), m_tools(std::move(tools)), m_call(std::move(call)), m_kept(m_page.Written())
{
    m_patience.setSingleShot(true);
    m_patience.callOnTimeout([this] {
        m_isSilent = m_isShown;
        RunAfterKeys();
    });
}

PicturePlace PageEditing::Pictures() const
{
    const QFileInfo page(m_page.Path());
    return {page.absolutePath() + u'/', page.completeBaseName()};
}

void PageEditing::Told(const QString& what, const QJsonObject& value)
{
    m_isSilent = false;
    if (what == u"ready"_s) {
        Open();
    } else if (what == u"state"_s) {
        m_revision = value["revision"_L1].toDouble();
        if (StateChanged)
            StateChanged(StateOf(value));
    } else if (what == u"kept"_s) {
        Keep(value);
    } else if (what == u"colour"_s) {
        Colour(value);
    } else if (what == u"picture"_s) {
        TakePicture(value);
    } else if (what == u"large_picture"_s) {
        Report([&] { RefuseLargePicture(value["name"_L1].toString()); });
    } else if (what == u"shown"_s) {
        m_isShown = true;
        if (Opened)
            Opened();
    } else if (what == u"after_keys"_s) {
        RunAfterKeys();
    } else if (what == u"found"_s && Found) {
        Found(value["at"_L1].toInt(), value["count"_L1].toInt());
    } else if (what == u"pasting"_s && Said) {
        Said(value["isDone"_L1].toBool() ? QString() : u"A large text is being pasted; this takes a while."_s);
    } else if (what == u"replaced"_s && Said) {
        Said(u"Replaced: %1"_s.arg(value["count"_L1].toInt()));
    } else if (what == u"open_picture"_s && PictureWanted) {
        PictureWanted();
    }
}

void PageEditing::Open()
{
    const int number = m_page.LastText();
    const QJsonObject page{
        {u"text"_s, WithoutHalves(m_page.Text(number))},
        {u"base"_s, number},
        {u"colourRules"_s, m_tools.ColourRules},
        {u"sheet"_s, QJsonObject{{u"light"_s, m_tools.PageColours}, {u"dark"_s, m_tools.DarkColours}}},
        {u"isDark"_s, m_tools.IsDark},
        {u"mostPicture"_s, double(MostPictureBytes)}};
    m_call(u"open"_s, page, [this](const QJsonValue& answer) {
        m_isOnlySource = answer.isBool() && !answer.toBool();
        if (m_isOnlySource && OnlySource)
            OnlySource();
    });
}

void PageEditing::Died()
{
    // Revisions begin anew with the pane; what was not saved stays so.
    const bool wasUnsaved = IsUnsaved();
    m_page.TakeBytes(m_kept);
    m_isSilent = m_isShown = false;
    m_revision = 0;
    m_savedRevision = wasUnsaved || m_kept != m_page.Written() ? -1 : 0;
    if (Said)
        Said(u"The editor's process ended and was started anew; the text is as it was a moment ago."_s);
    RunAfterKeys();
}

void PageEditing::AfterKeys(std::function<void()> then)
{
    RunAfterKeys(); // what waits already goes first
    m_afterKeys = std::move(then);
    m_patience.start(PatienceWithThePane);
    SendMark();
}

void PageEditing::RunAfterKeys()
{
    m_patience.stop();
    if (const auto then = std::exchange(m_afterKeys, {}))
        then();
}

/// What goes wrong is told; the editor goes on.
void PageEditing::Report(const std::function<void()>& act)
{
    try {
        act();
    } catch (const RuntimeError& error) {
        if (Failed)
            Failed(error.Description());
    }
}

void PageEditing::Keep(const QJsonObject& written)
{
    Report([&] { m_kept = m_page.Composed(written["pieces"_L1].toArray()); });
}

void PageEditing::Colour(const QJsonObject& code)
{
    QJsonArray pieces;
    const QString text = code["text"_L1].toString();
    const QString language = code["language"_L1].toString();
    for (const auto& [length, kind] : m_tools.Colour(text, language))
        pieces.append(QJsonArray{double(length), kind});
    m_call(u"coloured"_s, QJsonObject{{u"text"_s, text}, {u"language"_s, language}, {u"pieces"_s, pieces}}, {});
}

void PageEditing::TakePicture(const QJsonObject& picture)
{
    Report([&] {
        const QByteArray bytes = QByteArray::fromBase64(picture["data"_L1].toString().toLatin1());
        const KeptPicture kept = KeepPictureBytes(Pictures(), picture["name"_L1].toString(), bytes);
        PutPicture(kept, kept.Kind.Width, kept.Kind.Height, picture["place"_L1]);
    });
}

void PageEditing::PutPicture(const KeptPicture& picture, int width, int height, const QJsonValue& place)
{
    m_call(u"putPicture"_s,
           QJsonObject{{u"source"_s, picture.Source}, {u"width"_s, width}, {u"height"_s, height}, {u"place"_s, place}},
           {});
}

void PageEditing::Run(const QString& command, const QJsonValue& argument)
{
    m_call(u"run"_s, QJsonArray{command, argument}, {});
}

/// A page that could not be edited again is written only where that is wanted.
bool PageEditing::MayBeLarge(qint64 size) const
{
    const Message question{
        .Text = u"The page has become larger than %1 MB. It can be shown then, but no more be edited "
                "here. Save it all the same?"_s.arg(EditedPage::MostBytes >> 20),
        .Caption = ApplicationTitle,
        .Buttons = MsgBoxButtons::OkCancel,
        .Icon = MsgBoxIcon::Exclamation,
        .Default = MsgBoxResult::Cancel};
    return size <= EditedPage::MostBytes || Prompts::Current().MsgBox(question) == MsgBoxResult::Ok;
}

bool PageEditing::Write(const QByteArray& bytes)
{
    const bool isForeign = m_page.IsForeign();
    const QString name = QFileInfo(m_page.Path()).fileName();
    const Message question{.Text = u"The page %1 has been changed by somebody else since it was read here. Write it "
                                   "over with what stands in the editor?"_s.arg(name),
                           .Caption = ApplicationTitle,
                           .Buttons = MsgBoxButtons::OkCancel,
                           .Icon = MsgBoxIcon::Exclamation,
                           .Default = MsgBoxResult::Cancel};
    if (isForeign && Prompts::Current().MsgBox(question) != MsgBoxResult::Ok)
        return false;
    const bool isSame = bytes == m_page.Written() && !isForeign;
    if (!isSame && !MayBeLarge(bytes.size()))
        return false;
    if (const QString why = isSame ? QString() : m_page.Write(bytes); !why.isEmpty()) {
        if (Failed)
            Failed(
                u"The page could not be written: %1\n\nIts file is as it was, and your text is still here."_s.arg(why));
        return false;
    }
    m_kept = bytes;
    if (Said)
        Said(u"Saved"_s);
    return true;
}

void PageEditing::Save(const std::function<void(bool)>& done)
{
    if (m_isOnlySource) {
        const bool isWritten = Write(m_kept);
        if (isWritten)
            m_savedRevision = m_revision;
        return done(isWritten);
    }
    m_call(u"written"_s, {}, [this, done](const QJsonValue& answer) {
        bool isDone = false;
        Report([&] {
            const QJsonObject written = ObjectOf(answer);
            isDone = answer.isString() && Write(m_page.Composed(written["pieces"_L1].toArray()));
            if (!isDone)
                return;
            m_isEmpty = written["isEmpty"_L1].toBool();
            m_savedRevision = written["revision"_L1].toDouble();
        });
        done(isDone);
    });
}

void PageEditing::AskForSource(const std::function<void(const QString&)>& done)
{
    const auto give = [this, done] {
        m_source = m_kept;
        done(PageBytes(m_source).Text());
    };
    if (m_isOnlySource)
        return give();
    m_call(u"written"_s, {}, [this, give](const QJsonValue& answer) {
        if (answer.isString())
            Keep(ObjectOf(answer));
        give();
    });
}

void PageEditing::TakeSource(const QString& text, const std::function<void(bool)>& done)
{
    m_page.TakeText(m_source, text);
    const int number = m_page.LastText();
    m_call(u"takeSource"_s, QJsonObject{{u"text"_s, WithoutHalves(m_page.Text(number))}, {u"base"_s, number}},
           [this, number, done](const QJsonValue& answer) {
               m_isOnlySource = m_isOnlySource || !answer.toBool();
               m_kept = m_source = m_page.Bytes(number);
               if (m_isOnlySource)
                   m_revision = m_kept == m_page.Written() ? m_savedRevision : m_savedRevision + 1;
               done(answer.toBool());
           });
}

} // namespace qb
