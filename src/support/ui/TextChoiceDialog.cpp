#include "support/ui/TextChoiceDialog.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

TextChoiceDialog::TextChoiceDialog(const TextChoice& choice, QWidget* parent) : QDialog(parent)
{
    constexpr int Width = 900;
    constexpr int Height = 500;
    setObjectName(u"TextChoiceDialog"_s);
    setWindowTitle(choice.Caption);
    const QString own = QString(choice.Own).replace("\r\n"_L1, "\n"_L1); // lines count as one position here
    const QString theirs = QString(choice.Theirs).replace("\r\n"_L1, "\n"_L1);
    // What is the same at the begin and at the end is not what the question is about.
    const auto first = std::mismatch(own.begin(), own.end(), theirs.begin(), theirs.end());
    const int from = int(first.first - own.begin());
    const auto last = std::mismatch(own.rbegin(), own.rend() - from, theirs.rbegin(), theirs.rend() - from);
    const int same = int(last.first - own.rbegin());
    auto* question = new QLabel(choice.Text);
    question->setObjectName(u"lblQuestion"_s);
    question->setTextFormat(Qt::PlainText);
    question->setWordWrap(true);
    QPlainTextEdit* ownText = MakeText(u"txtOwn"_s, own, from, int(own.size()) - same);
    QPlainTextEdit* theirText = MakeText(u"txtTheirs"_s, theirs, from, int(theirs.size()) - same);
    connect(ownText->verticalScrollBar(), &QScrollBar::valueChanged, theirText->verticalScrollBar(),
            &QScrollBar::setValue);
    connect(theirText->verticalScrollBar(), &QScrollBar::valueChanged, ownText->verticalScrollBar(),
            &QScrollBar::setValue);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton* keep = buttons->addButton(u"Keep &Mine"_s, QDialogButtonBox::AcceptRole);
    keep->setObjectName(u"cmdOwn"_s);
    QPushButton* take = buttons->addButton(u"Take &Theirs"_s, QDialogButtonBox::AcceptRole);
    take->setObjectName(u"cmdTheirs"_s);
    connect(keep, &QPushButton::clicked, this, std::bind_front(&TextChoiceDialog::Choose, this, ChosenText::Own));
    connect(take, &QPushButton::clicked, this, std::bind_front(&TextChoiceDialog::Choose, this, ChosenText::Theirs));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QGridLayout(this);
    layout->addWidget(question, 0, 0, 1, 2);
    layout->addWidget(new QLabel(u"As it is here"_s), 1, 0);
    layout->addWidget(new QLabel(u"As the other program has stored it"_s), 1, 1);
    layout->addWidget(ownText, 2, 0);
    layout->addWidget(theirText, 2, 1);
    layout->addWidget(buttons, 3, 0, 1, 2);
    keep->setDefault(true); // once it is the dialog's, which looks for one by itself otherwise
    resize(Width, Height);
}

/// A text with what differs selected.
QPlainTextEdit* TextChoiceDialog::MakeText(const QString& name, const QString& text, int from, int to)
{
    auto* box = new QPlainTextEdit;
    box->setObjectName(name);
    box->setReadOnly(true);
    box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    box->setPlainText(text);
    QTextCursor cursor = box->textCursor();
    cursor.setPosition(to);
    cursor.setPosition(from, QTextCursor::KeepAnchor);
    box->setTextCursor(cursor);
    return box;
}

void TextChoiceDialog::Choose(ChosenText chosen)
{
    m_chosen = chosen;
    accept();
}

} // namespace qb
