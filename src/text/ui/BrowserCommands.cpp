#include "text/ui/BrowserCommands.h"

#include "web/ui/BrowserView.h"
#include "web/ui/BusyLogo.h"

namespace qb {

using namespace Qt::StringLiterals;

BrowserCommands::BrowserCommands() : webLinks(new BrowserView), imgLabel(new BusyLogo)
{
    webLinks->setObjectName(u"webLinks"_s);
    imgLabel->setObjectName(u"imgLabel"_s);
}

void BrowserCommands::GoBack()
{
    webLinks->GoBack();
}

void BrowserCommands::GoForward()
{
    webLinks->GoForward();
}

void BrowserCommands::BrowserStop()
{
    webLinks->BrowserStop();
    imgLabel->SetBusy(false);
}

void BrowserCommands::Reload()
{
    webLinks->Reload();
}

} // namespace qb
