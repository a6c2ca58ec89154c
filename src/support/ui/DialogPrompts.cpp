#include "support/ui/DialogPrompts.h"

#include "support/ui/TextChoiceDialog.h"
#include "support/ui/frmError.h"
#include "support/ui/frmInfo.h"
#include "support/ui/frmMsgBox.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

struct ButtonPair {
    MsgBoxResult Result;
    QMessageBox::StandardButton Button;
};
constexpr ButtonPair ButtonPairs[] = {
    {MsgBoxResult::Ok, QMessageBox::Ok},       {MsgBoxResult::Cancel, QMessageBox::Cancel},
    {MsgBoxResult::Yes, QMessageBox::Yes},     {MsgBoxResult::No, QMessageBox::No},
    {MsgBoxResult::Retry, QMessageBox::Retry},
};

QMessageBox::StandardButtons ButtonsOf(MsgBoxButtons buttons)
{
    switch (buttons) {
    case MsgBoxButtons::OkOnly:
        return QMessageBox::Ok;
    case MsgBoxButtons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case MsgBoxButtons::RetryCancel:
        return QMessageBox::Retry | QMessageBox::Cancel;
    case MsgBoxButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MsgBoxButtons::YesNoCancel:
        break;
    }
    return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
}

QMessageBox::Icon IconOf(MsgBoxIcon icon)
{
    switch (icon) {
    case MsgBoxIcon::Information:
        return QMessageBox::Information;
    case MsgBoxIcon::Exclamation:
        return QMessageBox::Warning;
    case MsgBoxIcon::Critical:
        return QMessageBox::Critical;
    case MsgBoxIcon::Question:
        return QMessageBox::Question;
    case MsgBoxIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

/// "Name|*.a;*.b" as the file dialog wants it: "Name (*.a *.b)".
QStringList NameFilters(const QString& filter)
{
    QStringList filters;
    const QStringList parts = filter.split(u'|');
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        filters << u"%1 (%2)"_s.arg(parts[i], QString(parts[i + 1]).replace(u';', u' '));
    return filters;
}

/// A dialog must not stand under the wait cursor of the work that asks.
class PlainCursor {
public:
    PlainCursor() { QApplication::setOverrideCursor(Qt::ArrowCursor); }
    ~PlainCursor() { QApplication::restoreOverrideCursor(); }
    PlainCursor(const PlainCursor&) = delete;
    PlainCursor& operator=(const PlainCursor&) = delete;
};

/// A message box; a firm one is closed by its buttons alone.
class QuestionBox : public QMessageBox {
public:
    QuestionBox(const Message& message, QWidget* parent)
        : QMessageBox(IconOf(message.Icon), message.Caption, message.Text, ButtonsOf(message.Buttons), parent),
          m_firm(message.MustAnswer)
    {
        if (m_firm)
            setWindowFlag(Qt::WindowCloseButtonHint, false);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (!m_firm || !event->matches(QKeySequence::Cancel))
            QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent* event) override { m_firm ? event->ignore() : QMessageBox::closeEvent(event); }

private:
    bool m_firm;
};

/// A button that does what F1 does in the box. It is no answer.
void AddHelp(QMessageBox& box, const QString& name)
{
    box.setObjectName(name);
    box.setEscapeButton(box.escapeButton() ? box.escapeButton() : box.buttons().constFirst());
    QPushButton* help = box.addButton(QMessageBox::Help);
    QObject::disconnect(help, &QPushButton::clicked, nullptr, nullptr);
    QObject::connect(help, &QPushButton::clicked, &box, [&box] {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
        QApplication::sendEvent(&box, &press);
    });
}

/// What the user chooses in the file dialog.
QStringList Chosen(const FileQuestion& question, QFileDialog::FileMode mode)
{
    const PlainCursor cursor;
    QFileDialog dialog(QApplication::activeWindow(), question.Title, question.Folder);
    dialog.setObjectName(u"CommonDialog1"_s);
    dialog.setNameFilters(NameFilters(question.Filter));
    dialog.setAcceptMode(question.Save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(mode);
    dialog.setDefaultSuffix(question.Filter.section(u"*."_s, 1).section(u';', 0, 0));
    if (!question.Name.isEmpty())
        dialog.selectFile(question.Name);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

class InfoWindow : public Information {
public:
    explicit InfoWindow(const QString& text) : m_window(QApplication::activeWindow()) { m_window.InformUser(text); }

private:
    frmInfo m_window;
};

} // namespace

MsgBoxResult DialogPrompts::MsgBox(const Message& message)
{
    const PlainCursor cursor;
    QuestionBox box(message, QApplication::activeWindow());
    box.setObjectName(u"MsgBox"_s);
    box.setTextFormat(Qt::PlainText);
    const MsgBoxResult preset = message.DefaultAnswer();
    for (const ButtonPair& pair : ButtonPairs) {
        if (pair.Result == preset)
            box.setDefaultButton(pair.Button);
    }
    if (!message.HelpName.isEmpty())
        AddHelp(box, message.HelpName);
    const int answer = box.exec();
    for (const ButtonPair& pair : ButtonPairs) {
        if (pair.Button == answer)
            return pair.Result;
    }
    return message.Buttons == MsgBoxButtons::YesNo ? MsgBoxResult::No : MsgBoxResult::Cancel;
}

ChosenText DialogPrompts::ChooseText(const TextChoice& choice)
{
    const PlainCursor cursor;
    TextChoiceDialog dialog(choice, QApplication::activeWindow());
    dialog.exec();
    return dialog.Chosen();
}

std::optional<QString> DialogPrompts::InputBox(const QString& text, const QString& caption, const QString& preset)
{
    const PlainCursor cursor;
    bool ok = false;
    const QString answer = QInputDialog::getText(QApplication::activeWindow(), caption, text, QLineEdit::Normal, preset,
                                                 &ok);
    return ok ? std::optional(answer) : std::nullopt;
}

QString DialogPrompts::FileName(const FileQuestion& question)
{
    return Chosen(question, question.Save ? QFileDialog::AnyFile : QFileDialog::ExistingFile).value(0);
}

QStringList DialogPrompts::FileNames(const FileQuestion& question)
{
    return Chosen(question, QFileDialog::ExistingFiles);
}

bool DialogPrompts::ShowError(const QString& description)
{
    const PlainCursor cursor;
    QApplication::beep();
    frmError dialog(QApplication::activeWindow());
    dialog.SetMessage(description);
    dialog.exec();
    return dialog.ReportTheBug();
}

void DialogPrompts::OperationSuccessful(const QString& text, const QString& filePath)
{
    const PlainCursor cursor;
    frmMsgBox dialog(QApplication::activeWindow());
    dialog.SetMessage(text);
    dialog.SetFilePath(filePath);
    dialog.exec();
}

std::unique_ptr<Information> DialogPrompts::InformUser(const QString& text)
{
    return std::make_unique<InfoWindow>(text);
}

} // namespace qb
