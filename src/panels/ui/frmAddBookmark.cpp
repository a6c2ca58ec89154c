#include "panels/ui/frmAddBookmark.h"

#include "panels/ui/ElidedLabel.h"
#include "support/ui/Icons.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextDocument>
#include <QTimer>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

frmAddBookmark::frmAddBookmark(QWidget* parent)
    : QDialog(parent), m_title(new ElidedLabel(u"lblItem"_s)), cboGroups(new QComboBox), txtBookmark(new QPlainTextEdit)
{
    constexpr int Width = 420;
    constexpr int Lines = 4;
    constexpr int IconSize = 22;
    setObjectName(u"frmAddBookmark"_s);
    auto* image = new QLabel;
    image->setPixmap(IconNamed(u"BOOKMARKED_ITEM"_s).pixmap(IconSize));
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    auto* head = new QHBoxLayout;
    head->addWidget(image);
    head->addWidget(m_title, 1);
    cboGroups->setObjectName(u"cboGroups"_s);
    cboGroups->setEditable(true);
    cboGroups->setInsertPolicy(QComboBox::NoInsert);
    cboGroups->lineEdit()->setMaxLength(LongestGroupName);
    cboGroups->lineEdit()->setPlaceholderText(u"Choose a group, or type a new one"_s);
    cboGroups->installEventFilter(this);
    txtBookmark->setObjectName(u"txtBookmark"_s);
    txtBookmark->setTabChangesFocus(true);
    txtBookmark->setPlaceholderText(u"What it is for (Ctrl+Enter: OK)"_s);
    txtBookmark->setMinimumHeight(txtBookmark->fontMetrics().lineSpacing() * (Lines + 1));
    txtBookmark->installEventFilter(this);
    connect(txtBookmark, &QPlainTextEdit::textChanged, this, &frmAddBookmark::KeepToLength);
    auto* form = new QFormLayout;
    form->addRow(u"&Group:"_s, cboGroups);
    form->addRow(u"&Description:"_s, txtBookmark);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(u"cmdOK"_s);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(u"cmdCancel"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &frmAddBookmark::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addLayout(form, 1);
    layout->addWidget(buttons);
    resize(Width, sizeHint().height());
}

void frmAddBookmark::Initialise(BookmarkDraft& draft)
{
    m_draft = &draft;
    setWindowTitle(draft.IsNew() ? u"Add Bookmark"_s : u"Edit Bookmark"_s);
    m_title->setText(draft.Title());
    txtBookmark->setPlainText(draft.Text());
    FillGroups();
    cboGroups->setFocus();
    cboGroups->lineEdit()->selectAll();
}

void frmAddBookmark::FillGroups()
{
    cboGroups->clear();
    cboGroups->addItems(m_draft->Groups());
    cboGroups->setCurrentIndex(m_draft->GroupIndex());
    if (m_draft->GroupIndex() < 0)
        cboGroups->clearEditText();
}

/// The user goes on to the description. The buttons look at the group themselves, or need none.
void frmAddBookmark::cboGroups_Validate()
{
    if (!isVisible() || focusWidget() != txtBookmark)
        return;
    const QString typed = cboGroups->currentText();
    if (!m_draft->cboGroups_Validate(typed)) {
        cboGroups->setFocus();
        return cboGroups->lineEdit()->selectAll();
    }
    FillGroups();
}

bool frmAddBookmark::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == cboGroups && event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            QTimer::singleShot(0, this, &frmAddBookmark::cboGroups_Validate); // once the focus is where it goes
    }
    if (watched == txtBookmark && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isEnter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (isEnter && key->modifiers().testFlag(Qt::ControlModifier)) {
            accept();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

/// What does not fit into the library is not taken; the end of a line takes two characters there.
void frmAddBookmark::KeepToLength()
{
    const auto length = [](const QString& text) { return text.size() + text.count(u'\n'); };
    QString text = txtBookmark->toPlainText();
    if (length(text) <= CBookmark::LongestDescription)
        return;
    QTextCursor cursor = txtBookmark->textCursor();
    const int place = cursor.position();
    while (length(text) > CBookmark::LongestDescription)
        text.chop(1);
    if (!text.isEmpty() && text.back().isHighSurrogate())
        text.chop(1);
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    cursor.setPosition(qMin(place, int(text.size())));
    txtBookmark->setTextCursor(cursor);
}

void frmAddBookmark::accept()
{
    if (!m_draft->cmdOK_Click(cboGroups->currentText(), txtBookmark->toPlainText())) {
        if (m_draft->GroupIndex() < 0)
            return cboGroups->setFocus();
        return FillGroups(); // one may be new
    }
    QDialog::accept();
}

} // namespace qb
