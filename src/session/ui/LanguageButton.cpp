#include "session/ui/LanguageButton.h"

#include "session/ui/LanguageChooser.h"

namespace qb {

using namespace Qt::StringLiterals;

LanguageButton::LanguageButton(QWidget* parent) : QToolButton(parent)
{
    setObjectName(u"cboItemLanguage"_s);
    setAutoRaise(true);
    setAccessibleName(u"Language of the item's code"_s);
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    connect(this, &QToolButton::clicked, this, &LanguageButton::OpenList);
}

void LanguageButton::ShowLanguage(const QString& item, const QString& library)
{
    m_item = item;
    m_library = library.isEmpty() ? u"no language"_s : library;
    QString shown = item.isEmpty() ? m_library : item;
    setText(shown.replace(u'&', u"&&"_s) + u" \u25be"_s);
    setToolTip(item.isEmpty()
                   ? u"The code of this item is in the language of the library. Click to choose another one."_s
                   : u"The code of this item is in a language of its own. Click to choose another one."_s);
}

void LanguageButton::OpenList()
{
    LanguageChooser::Popup(*this, u"Language of the library (%1)"_s.arg(m_library), m_item,
                           [this](const QString& name) {
                               if (name != m_item)
                                   Q_EMIT Chosen(name);
                           });
}

} // namespace qb
