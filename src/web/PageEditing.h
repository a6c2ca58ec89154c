#pragma once

#include "web/EditedPage.h"
#include "web/PageComponents.h"

#include <QJsonObject>
#include <QTimer>
#include <functional>
#include <vector>

namespace qb {

/// What the selection in the editor is like, as its buttons show it.
struct EditingState {
    QStringList On;    ///< marks of the text: "strong", "em", ...
    QString Block;     ///< "paragraph", "h2", "code_block", ...
    QStringList Lists; ///< what it stands in
    QString Language;  ///< of the code
    QString Link;      ///< the address of the link that it stands in
    QString Text;      ///< what is selected, or the text of the link
    bool IsTable = false;
    bool CanUndo = false;
    bool CanRedo = false;
};

/// Pieces of a code text in order, each with the name of its kind, which may be empty.
using ColouredPieces = std::vector<std::pair<qsizetype, QString>>;

/// What the editor uses of the rest of the program.
struct PageEditingTools {
    std::function<ColouredPieces(const QString& text, const QString& language)> Colour;
    QString ColourRules; ///< the style sheet of the colours on the screen
    QString PageColours; ///< the one that goes into pages ...
    QString DarkColours; ///< ... and what is added in those that have a dark look
    bool IsDark = false;
};

/// Edits a page: what lies between its file and the pane that shows it, which runs in the browser's engine and is
/// asked by calls that answer later.
class PageEditing {
public:
    using Answer = std::function<void(const QJsonValue& answer)>;
    /// A function of the pane with its argument; the answer comes later, and is undefined when the pane has died.
    using Call = std::function<void(const QString& function, const QJsonValue& argument, const Answer& answer)>;

    /// Raises an error for a page that can't be edited.
    PageEditing(const QString& path, PageEditingTools tools, Call call);

    /// The pane has said something.
    void Told(const QString& what, const QJsonObject& value);
    /// The pane has died: what it told last is what there is, and a new one goes on with it.
    void Died();

    /// Runs @p then when what was typed into the pane is known here; a pane that doesn't answer is not waited for.
    void AfterKeys(std::function<void()> then);
    /// Whether the pane has kept AfterKeys waiting in vain and is silent since: what was done in it last is not known.
    bool IsSilent() const { return m_isSilent; }
    /// Whether something is not in the file.
    bool IsUnsaved() const { return m_revision != m_savedRevision; }
    /// Writes the page; @p done hears whether it is written. What can't be written stays in the editor.
    void Save(const std::function<void(bool)>& done);
    PageOutcome Outcome() const { return {m_page.IsChanged() && m_isEmpty, m_page.IsChanged()}; }

    /// The text of the page as it would be written now.
    void AskForSource(const std::function<void(const QString& text)>& done);
    /// Goes on with a text that was typed over the one that AskForSource gave.
    void TakeSource(const QString& text, const std::function<void(bool isTaken)>& done);

    void Find(const QJsonObject& find) { m_call(QStringLiteral("find"), find, {}); }
    void Replace(const QJsonObject& replace) { m_call(QStringLiteral("replace"), replace, {}); }
    void Run(const QString& command, const QJsonValue& argument = {});
    void PutPicture(const KeptPicture& picture, int width, int height, const QJsonValue& place = {});
    PicturePlace Pictures() const;

    // Callbacks
    std::function<void(const EditingState& state)> StateChanged;
    std::function<void(const QString& text)> Said; ///< for the status line
    std::function<void(const QString& error)> Failed;
    std::function<void(int place, int count)> Found;
    std::function<void()> Opened;        ///< the page is shown and takes keys
    std::function<void()> SendMark;      ///< behind the keys that were typed: the pane says "after_keys" when it comes
    std::function<void()> PictureWanted; ///< a picture was double-clicked
    /// The page has no body that could be edited but as source.
    std::function<void()> OnlySource;

private:
    void Open();
    void Keep(const QJsonObject& written);
    void Colour(const QJsonObject& code);
    void TakePicture(const QJsonObject& picture);
    bool Write(const QByteArray& bytes);
    bool MayBeLarge(qint64 size) const;
    void Report(const std::function<void()>& act);
    void RunAfterKeys();

    EditedPage m_page;
    PageEditingTools m_tools;
    Call m_call;
    QByteArray m_kept;   ///< the page as it was told last
    QByteArray m_source; ///< what AskForSource gave
    double m_revision = 0;
    double m_savedRevision = 0;
    std::function<void()> m_afterKeys;
    QTimer m_patience; ///< with a pane that doesn't answer
    bool m_isEmpty = false;
    bool m_isOnlySource = false;
    bool m_isShown = false; ///< so that there may be something in the pane which is not known
    bool m_isSilent = false;
};

} // namespace qb
