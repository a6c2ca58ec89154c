#include "components/ui/PageFindBar.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <functional>

namespace qb {

using namespace Qt::StringLiterals;

PageFindBar::PageFindBar(QWidget* parent) : QWidget(parent)
{
    constexpr int Narrow = 80;
    setObjectName(u"findBar"_s);
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(6, 2, 6, 2);
    const auto field = [&](const char* name, const QString& hint) {
        auto* box = new QLineEdit;
        box->setObjectName(QString::fromLatin1(name));
        box->setPlaceholderText(hint);
        box->setClearButtonEnabled(true);
        box->setMinimumWidth(Narrow);
        line->addWidget(box, 1);
        return box;
    };
    const auto button = [&](const char* name, const QString& caption, auto run) {
        auto* one = new QToolButton;
        one->setObjectName(QString::fromLatin1(name));
        one->setText(caption);
        connect(one, &QToolButton::clicked, this, run);
        line->addWidget(one);
        return one;
    };
    txtFind = field("txtFind", u"Find"_s);
    button("cmdFindBefore", u"▲"_s, std::bind_front(&PageFindBar::Find, this, -1))
        ->setToolTip(u"The place before (Shift+Enter)"_s);
    button("cmdFindNext", u"▼"_s, std::bind_front(&PageFindBar::Find, this, 1))
        ->setToolTip(u"The next place (Enter)"_s);
    chkCase = new QCheckBox(u"&Case"_s);
    chkCase->setObjectName(u"chkCase"_s);
    line->addWidget(chkCase);
    lblFound = new QLabel;
    lblFound->setObjectName(u"lblFound"_s);
    line->addWidget(lblFound);
    txtReplace = field("txtReplace", u"Replace by"_s);
    button("cmdReplace", u"Replace"_s, std::bind_front(&PageFindBar::Replace, this, false));
    button("cmdReplaceAll", u"All"_s, std::bind_front(&PageFindBar::Replace, this, true))
        ->setToolTip(u"Replace all places"_s);
    button("cmdLeave", u"✕"_s, [this] { Q_EMIT Left(); })->setToolTip(u"Close (Esc)"_s);
    connect(txtFind, &QLineEdit::textChanged, this, std::bind_front(&PageFindBar::Find, this, 0));
    connect(chkCase, &QCheckBox::toggled, this, std::bind_front(&PageFindBar::Find, this, 0));
    hide();
}

void PageFindBar::Begin(const QString& text)
{
    show();
    if (!text.isEmpty() && !text.contains(u'\n'))
        txtFind->setText(text);
    txtFind->setFocus();
    txtFind->selectAll();
    Find(0);
}

void PageFindBar::ShowFound(int place, int count)
{
    const QString text = count == 0  ? u"not found"_s
                         : place > 0 ? u"%1 of %2"_s.arg(place).arg(count)
                                     : u"%1 found"_s.arg(count);
    lblFound->setText(txtFind->text().isEmpty() ? QString() : text);
}

QJsonObject PageFindBar::Asked() const
{
    return {{u"text"_s, txtFind->text()}, {u"matchCase"_s, chkCase->isChecked()}};
}

void PageFindBar::Find(int step)
{
    QJsonObject asked = Asked();
    asked[u"step"_s] = step;
    Q_EMIT FindAsked(asked);
}

void PageFindBar::Replace(bool all)
{
    QJsonObject asked = Asked();
    asked[u"by"_s] = txtReplace->text();
    asked[u"all"_s] = all;
    Q_EMIT ReplaceAsked(asked);
}

void PageFindBar::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape)
        Q_EMIT Left();
    else if (isEnter && txtReplace->hasFocus())
        Replace(false);
    else if (isEnter)
        Find(event->modifiers() & Qt::ShiftModifier ? -1 : 1);
    else
        QWidget::keyPressEvent(event);
}

} // namespace qb
