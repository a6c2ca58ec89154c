#include "text/ui/WelcomeView.h"

#include "store/Library.h"
#include "support/ui/Icons.h"
#include "text/ui/PlainLabel.h"
#include "web/WebPages.h"
#include "web/ui/LocalPage.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QTextDocument>
#include <QVBoxLayout>

namespace qb {

using namespace Qt::StringLiterals;

WelcomeView::WelcomeView(QWidget* parent)
    : QWidget(parent), m_facts(MakePlainLabel(u"lblLibraryFacts"_s, 0.9, false)), webWelcome(new LocalPage)
{
    constexpr int Gap = 12;
    constexpr int IconSize = 64;
    setObjectName(u"welcome"_s);
    auto* icon = new QLabel;
    icon->setPixmap(IconNamed(u"quillbase"_s).pixmap(IconSize));
    QLabel* title = MakePlainLabel(u"Label1"_s, 1.5, true);
    title->setText(u"Welcome to the KT Quillbase Code Library"_s);
    webWelcome->setObjectName(u"webWelcome"_s);
    webWelcome->document()->setDocumentMargin(Gap);
    connect(webWelcome, &LocalPage::AddressActivated, this, &WelcomeView::AddressActivated);
    auto* words = new QVBoxLayout;
    words->addWidget(title);
    words->addWidget(m_facts);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(Gap, Gap, Gap, Gap);
    header->setSpacing(Gap);
    header->addWidget(icon);
    header->addLayout(words, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(header);
    layout->addWidget(webWelcome, 1);
}

void WelcomeView::ShowPage(const QString& page)
{
    webWelcome->ShowPage(m_htmlFolder, page, BuiltInPage(page));
}

void WelcomeView::ShowLibrary(Library* library)
{
    m_htmlFolder = library ? library->HTMLFolder() : QString();
    webWelcome->setVisible(library);
    if (!library) {
        m_facts->setText(u"No library is open. The File menu makes a new one or adds an existing one."_s);
        return;
    }
    if (qb::DefaultPagesMissing(m_htmlFolder))
        Q_EMIT DefaultPagesMissing(m_htmlFolder);
    ShowPage(qb::WelcomePage);
    const qint64 items = library->QueryValue(u"SELECT count(*) FROM Items"_s).ToLong();
    m_facts->setText(u"%1\n%2 items, %3"_s.arg(QDir::toNativeSeparators(library->Name()), QLocale().toString(items),
                                               QLocale().formattedDataSize(QFileInfo(library->Name()).size())));
}

} // namespace qb
