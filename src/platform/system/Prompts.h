#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace qb {

enum class MsgBoxButtons { OkOnly, OkCancel, RetryCancel, YesNo, YesNoCancel };
enum class MsgBoxIcon { None, Information, Exclamation, Critical, Question };
enum class MsgBoxResult { Ok, Cancel, Yes, No, Retry };

/// A question or message for the user.
struct Message {
    QString Text;
    QString Caption;
    MsgBoxButtons Buttons = MsgBoxButtons::OkOnly;
    MsgBoxIcon Icon = MsgBoxIcon::None;
    /// The button that Enter presses, and the answer where nobody can be asked. Unset: the first.
    std::optional<MsgBoxResult> Default = {};
    /// Neither Escape nor the close button is an answer, since No loses something.
    bool MustAnswer = false;
    /// By what name the handbook's topics have it: the box has a Help button then, which leaves it open.
    QString HelpName = {};

    MsgBoxResult DefaultAnswer() const; ///< where Default is unset: the first button
};

/// What a file dialog asks for.
struct FileQuestion {
    bool Save = false;
    QString Title;
    /// Pairs of a name and its patterns, separated by "|": "Libraries|*.qbd;*.qbr".
    QString Filter;
    QString Folder;
    QString Name = {}; ///< proposed for saving
};

/// Two versions of a text, of which one is to stay.
struct TextChoice {
    QString Caption;
    QString Text; ///< the question
    QString Own;
    QString Theirs;
};
enum class ChosenText { Own, Theirs, Cancel };

/// A short message that stays on screen until the object goes.
class Information {
public:
    virtual ~Information() = default;
};

/// The only door to the user for code that knows no window. The window answers with dialogs,
/// the command line with defaults, tests with a script.
class Prompts {
public:
    virtual ~Prompts() = default;

    /// Returns with the answer. A question that is closed without one is answered by Cancel, or by No where there is no
    /// Cancel.
    virtual MsgBoxResult MsgBox(const Message& message) = 0;
    /// Shows both versions side by side.
    virtual ChosenText ChooseText(const TextChoice& choice) = 0;
    /// The text entered, or nothing when the user cancelled.
    virtual std::optional<QString> InputBox(const QString& text, const QString& caption, const QString& preset) = 0;
    /// The path chosen, or an empty text when the user cancelled. Saving asks before it
    /// accepts the name of an existing file.
    virtual QString FileName(const FileQuestion& question) = 0;
    /// The paths of the existing files chosen, of one folder; empty when the user cancelled.
    virtual QStringList FileNames(const FileQuestion& question) = 0;
    /// Shows an error; true when the user wants to report it.
    virtual bool ShowError(const QString& description) = 0;
    /// Says that an operation succeeded and offers to open the folder of @p filePath.
    virtual void OperationSuccessful(const QString& text, const QString& filePath) = 0;
    virtual std::unique_ptr<Information> InformUser(const QString& text) = 0;

    /// The prompts in use: those last set, or a set that answers every question with its default.
    static Prompts& Current();
    /// Replaces the prompts in use (not owned; null for the defaults) and returns the ones before.
    static Prompts* SetCurrent(Prompts* prompts);
};

/// Prompts for programs without a user at hand: messages are printed to standard error and
/// every question is answered by its default button, every dialog cancelled.
class SilentPrompts : public Prompts {
public:
    MsgBoxResult MsgBox(const Message& message) override;
    ChosenText ChooseText(const TextChoice& choice) override;
    std::optional<QString> InputBox(const QString& text, const QString& caption, const QString& preset) override;
    QString FileName(const FileQuestion& question) override;
    QStringList FileNames(const FileQuestion& question) override;
    bool ShowError(const QString& description) override;
    void OperationSuccessful(const QString& text, const QString& filePath) override;
    std::unique_ptr<Information> InformUser(const QString& text) override;
};

/// The program's title, the caption of messages that have none of their own.
inline const QString ApplicationTitle = QStringLiteral("KT Quillbase");

} // namespace qb
