#include "text/ui/FindBar.h"

#include "support/ui/Icons.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MostMarks = 2000; ///< more can't be told apart, and cost time

QToolButton* MakeButton(const QString& name, const QString& text, const QString& icon, const QString& tip,
                        bool checkable)
{
    auto* button = new QToolButton;
    button->setObjectName(name);
    button->setText(text);
    if (!icon.isEmpty())
        button->setIcon(IconNamed(icon));
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setAutoRaise(true);
    button->setCheckable(checkable);
    return button;
}

} // namespace

FindBar::FindBar(std::function<UserTextBox*()> box, QWidget* parent)
    : QWidget(parent), m_box(std::move(box)), txtFindText(new QLineEdit),
      chkMatchCase(MakeButton(u"chkMatchCase"_s, u"Aa"_s, {}, u"Match case"_s, true)),
      chkWholeWord(MakeButton(u"chkWholeWord"_s, u"W"_s, {}, u"Whole words only"_s, true)), lblFound(new QLabel)
{
    constexpr int Margin = 4;
    setObjectName(u"findBar"_s);
    txtFindText->setObjectName(u"txtFindText"_s);
    txtFindText->setPlaceholderText(u"Find in this text"_s);
    txtFindText->setClearButtonEnabled(true);
    lblFound->setObjectName(u"lblFound"_s);
    QToolButton* previous = MakeButton(u"cmdFindPrevious"_s, {}, u"go-up"_s, u"Previous (Shift+F3)"_s, false);
    QToolButton* next = MakeButton(u"cmdFindNext"_s, {}, u"go-down"_s, u"Next (F3)"_s, false);
    QToolButton* close = MakeButton(u"cmdFindClose"_s, {}, u"dialog-close"_s, u"Close (Esc)"_s, false);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->addWidget(txtFindText, 1);
    for (QWidget* widget : std::initializer_list<QWidget*>{previous, next, chkMatchCase, chkWholeWord, lblFound, close})
        layout->addWidget(widget);
    connect(txtFindText, &QLineEdit::textChanged, this, &FindBar::Refresh);
    for (QToolButton* option : {chkMatchCase, chkWholeWord})
        connect(option, &QToolButton::toggled, this, &FindBar::Refresh);
    connect(previous, &QToolButton::clicked, this, &FindBar::FindPrevious);
    connect(next, &QToolButton::clicked, this, &FindBar::FindNext);
    connect(close, &QToolButton::clicked, this, &FindBar::Close);
    constexpr int Pause = 200; // milliseconds
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(Pause);
    connect(&m_refresh, &QTimer::timeout, this, &FindBar::Refresh);
    hide();
}

void FindBar::Open()
{
    UserTextBox* box = m_box();
    if (!box)
        return;
    const QString selected = box->SelText();
    show();
    if (!selected.isEmpty() && !selected.contains(u'\n'))
        txtFindText->setText(selected);
    txtFindText->selectAll();
    txtFindText->setFocus();
    Refresh();
}

void FindBar::Close()
{
    hide();
    Mark({});
    if (UserTextBox* box = m_box())
        box->Widget().setFocus();
}

QList<qsizetype> FindBar::Places(const UserTextBox& box) const
{
    return box.FindAll(txtFindText->text(), chkMatchCase->isChecked(), chkWholeWord->isChecked());
}

void FindBar::Refresh()
{
    UserTextBox* box = m_box();
    if (!isVisible() || !box)
        return;
    const QList<qsizetype> places = Places(*box);
    Mark(places);
    ShowCount(places, -1);
}

void FindBar::RefreshSoon()
{
    if (isVisible())
        m_refresh.start();
}

void FindBar::Mark(const QList<qsizetype>& places)
{
    UserTextBox* box = m_box();
    if (m_marked && m_marked != box)
        m_marked->MarkPlaces({}, 0);
    m_marked = box;
    if (box)
        box->MarkPlaces(places.first(std::min(places.size(), MostMarks)), txtFindText->text().size());
}

void FindBar::Find(bool forward)
{
    UserTextBox* box = m_box();
    if (!box)
        return;
    if (!isVisible() && txtFindText->text().isEmpty())
        return Open();
    const QList<qsizetype> places = Places(*box);
    if (isVisible())
        Mark(places);
    if (places.isEmpty())
        return ShowCount(places, -1);
    qsizetype number = 0;
    if (forward) {
        const auto behind = std::lower_bound(places.begin(), places.end(), box->SelStart() + box->SelLength());
        number = behind == places.end() ? 0 : behind - places.begin(); // around the end
    } else {
        const auto before = std::lower_bound(places.begin(), places.end(), box->SelStart());
        number = (before == places.begin() ? places.end() : before) - places.begin() - 1;
    }
    box->SetSelStart(places[number]);
    box->SetSelLength(txtFindText->text().size());
    ShowCount(places, number);
}

void FindBar::ShowCount(const QList<qsizetype>& places, qsizetype current)
{
    if (txtFindText->text().isEmpty())
        lblFound->clear();
    else if (places.isEmpty())
        lblFound->setText(u"Not found"_s);
    else if (current < 0)
        lblFound->setText(places.size() == 1 ? u"1 place"_s : u"%1 places"_s.arg(places.size()));
    else
        lblFound->setText(u"%1 of %2"_s.arg(current + 1).arg(places.size()));
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        Close();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Find(!(event->modifiers() & Qt::ShiftModifier));
    else
        QWidget::keyPressEvent(event);
}

} // namespace qb
