#include "session/ui/LanguageChooser.h"

#include "session/ui/SampleBox.h"
#include "store/ShippedLanguages.h"
#include "support/ErrorRoutine.h"

#include <QCoreApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr int NameRole = Qt::UserRole;
constexpr int SearchRole = Qt::UserRole + 1; ///< what the search looks in: name, key, patterns

} // namespace

LanguageChooser::LanguageChooser(const QString& first, Sample sample, QWidget* parent)
    : QWidget(parent), txtLanguageSearch(new QLineEdit), lstLanguages(new QListWidget)
{
    constexpr int ListWidth = 220;
    txtLanguageSearch->setObjectName(u"txtLanguageSearch"_s);
    txtLanguageSearch->setPlaceholderText(u"Search: name or file, such as *.py"_s);
    txtLanguageSearch->setAccessibleName(u"Search for a language"_s);
    txtLanguageSearch->setClearButtonEnabled(true);
    txtLanguageSearch->installEventFilter(this);
    lstLanguages->setObjectName(u"lstLanguages"_s);
    lstLanguages->setAccessibleName(u"Languages that come with the program"_s);
    lstLanguages->setMinimumWidth(ListWidth);
    lstLanguages->setUniformItemSizes(true);
    if (!first.isEmpty())
        lstLanguages->addItem(first);
    for (const ShippedLanguage& language : ShippedLanguages()) {
        auto* item = new QListWidgetItem(language.Name, lstLanguages);
        item->setData(NameRole, language.Name);
        item->setData(SearchRole, QString(language.Name + u' ' + language.Key + u' ' + language.Files.join(u' ')));
        item->setToolTip(language.Files.join(u' '));
    }
    auto* column = new QVBoxLayout;
    column->addWidget(txtLanguageSearch);
    column->addWidget(lstLanguages, 1);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(column);
    if (sample == WithSample) {
        m_sample = new SampleBox;
        layout->addWidget(m_sample, 1);
    }
    connect(txtLanguageSearch, &QLineEdit::textChanged, this, &LanguageChooser::Search);
    connect(lstLanguages, &QListWidget::currentItemChanged, this, [this] {
        ShowSample();
        Q_EMIT CurrentChanged(Current());
    });
    connect(lstLanguages, &QListWidget::itemActivated, this, [this] { Q_EMIT Chosen(Current()); });
}

bool LanguageChooser::IsEmpty() const
{
    return ShippedLanguages().isEmpty();
}

QString LanguageChooser::Current() const
{
    const QListWidgetItem* item = lstLanguages->currentItem();
    return item ? item->data(NameRole).toString() : QString();
}

void LanguageChooser::SetCurrent(const QString& name)
{
    for (int row = 0; row < lstLanguages->count(); ++row) {
        if (lstLanguages->item(row)->data(NameRole).toString() == name)
            return lstLanguages->setCurrentRow(row);
    }
    lstLanguages->setCurrentRow(-1);
}

void LanguageChooser::Begin()
{
    txtLanguageSearch->clear();
    txtLanguageSearch->setFocus();
    if (lstLanguages->currentItem())
        lstLanguages->scrollToItem(lstLanguages->currentItem(), QAbstractItemView::PositionAtCenter);
}

void LanguageChooser::Popup(QWidget& button, const QString& first, const QString& current,
                            const std::function<void(const QString& name)>& chosen)
{
    constexpr int Height = 340;
    constexpr int Margin = 4;
    auto* popup = new QFrame(&button, Qt::Popup);
    popup->setObjectName(u"languagePopup"_s);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    popup->setFrameShape(QFrame::StyledPanel);
    auto* chooser = new LanguageChooser(first, WithoutSample);
    auto* layout = new QVBoxLayout(popup);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->addWidget(chooser);
    chooser->SetCurrent(current);
    connect(chooser, &LanguageChooser::Chosen, popup, [popup, chosen](const QString& name) {
        popup->close();
        chosen(name);
    });
    popup->resize(popup->sizeHint().width(), Height);
    popup->move(button.mapToGlobal(QPoint(button.width() - popup->width(), -popup->height())));
    popup->show();
    chooser->Begin();
}

/// What begins with the text comes into the current place, else the first that holds it.
void LanguageChooser::Search(const QString& text)
{
    QListWidgetItem* best = nullptr;
    bool bestBegins = false;
    for (int row = 0; row < lstLanguages->count(); ++row) {
        QListWidgetItem* item = lstLanguages->item(row);
        const bool holds = text.isEmpty() || item->data(SearchRole).toString().contains(text, Qt::CaseInsensitive);
        const bool begins = item->text().startsWith(text, Qt::CaseInsensitive);
        item->setHidden(!holds);
        if (holds && !text.isEmpty() && (!best || (begins && !bestBegins))) {
            best = item;
            bestBegins = begins;
        }
    }
    if (best)
        lstLanguages->setCurrentItem(best);
}

/// The keys that move in the list do so from the search line too.
bool LanguageChooser::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != txtLanguageSearch || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    static constexpr int moves[] = {Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown};
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (std::find(std::begin(moves), std::end(moves), key) != std::end(moves))
        return QCoreApplication::sendEvent(lstLanguages, event);
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && lstLanguages->currentItem()) {
        Q_EMIT Chosen(Current());
        return true;
    }
    return false;
}

void LanguageChooser::ShowSample()
{
    const ShippedLanguage* language = m_sample ? ShippedLanguageNamed(Current()) : nullptr;
    if (language)
        Guarded(u"LanguageChooser"_s, u"ShowSample"_s,
                [&] { m_sample->ShowLanguage(ReadLanguageFile(language->Path)); });
}

} // namespace qb
