#include "session/ui/BrowserToolbar.h"

#include "web/OpenedPages.h"

#include <QAction>
#include <QComboBox>
#include <QCompleter>
#include <QCursor>
#include <QHash>
#include <QLineEdit>
#include <QMenu>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The keys of the buttons, by the entries of the menu.
const QHash<QString, QString>& ButtonKeys()
{
    static const QHash<QString, QString> keys{
        {u"mnuWebEditPage"_s, u"EDIT"_s},
        {u"mnuWebInsertPicture"_s, u"INSERT_PICTURE"_s},
        {u"mnuWebInsertLink"_s, u"INSERT_LINK"_s},
        {u"mnuWebGoBack"_s, u"BACK"_s},
        {u"mnuWebGoForward"_s, u"FORWARD"_s},
        {u"mnuWebStop"_s, u"STOP"_s},
        {u"mnuWebReload"_s, u"RELOAD"_s},
        {u"mnuWebHome"_s, u"HOME"_s},
        {u"mnuWebOpenedBrowsers"_s, u"EXPLORERS"_s},
    };
    return keys;
}

} // namespace

BrowserToolbar::BrowserToolbar(const QList<QAction*>& commands, QWidget* parent)
    : QToolBar(parent), cboURL(new QComboBox)
{
    setObjectName(u"tbrBrowser"_s);
    for (QAction* command : commands) {
        const QString key = ButtonKeys().value(command->objectName());
        if (key.isEmpty() && !command->isSeparator())
            continue; // in the menu alone
        command->setProperty("key", key);
        addAction(command);
    }
    cboURL->setObjectName(u"cboURL"_s);
    cboURL->setAccessibleName(u"Address"_s);
    cboURL->setEditable(true);
    cboURL->setInsertPolicy(QComboBox::InsertAtTop);
    cboURL->setDuplicatesEnabled(false);
    cboURL->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    cboURL->lineEdit()->setPlaceholderText(u"This item has no web page. Type an address to visit one."_s);
    addWidget(cboURL);
    cboURL->completer()->setCompletionMode(QCompleter::PopupCompletion);
    connect(cboURL, &QComboBox::textActivated, this, [this](const QString& text) {
        if (!text.trimmed().isEmpty())
            Q_EMIT AddressEntered(text);
    });
}

QString BrowserToolbar::Address() const
{
    return cboURL->currentText();
}

void BrowserToolbar::SetAddress(const QString& address)
{
    cboURL->setEditText(address);
    cboURL->lineEdit()->setCursorPosition(0);
}

void BrowserToolbar::resizeEvent(QResizeEvent* event)
{
    if (AddressWidth)
        cboURL->setMaximumWidth(std::max(AddressWidth(width() - cboURL->x()), cboURL->minimumSizeHint().width()));
    QToolBar::resizeEvent(event);
}

void BrowserToolbar::OpenedExplorersPopup()
{
    QMenu mnuWebBrowser(this);
    mnuWebBrowser.setObjectName(u"mnuWebBrowser"_s);
    PopulateOpenedExplorers(mnuWebBrowser);
    mnuWebBrowser.exec(QCursor::pos());
}

void BrowserToolbar::PopulateOpenedExplorers(QMenu& menu)
{
    const std::vector<OpenedPage> pages = OpenedPages();
    for (const OpenedPage& page : pages) {
        QString caption = page.Title;
        connect(menu.addAction(caption.replace(u'&', u"&&"_s)), &QAction::triggered, this, [this, page] {
            SetAddress(page.Address);
            Q_EMIT AddressEntered(page.Address);
        });
    }
    if (pages.empty())
        menu.addAction(u"No Internet Explorers Opened"_s)->setEnabled(false);
}

} // namespace qb
