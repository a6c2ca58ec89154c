#include "text/OpenAddress.h"

#include "platform/system/Prompts.h"
#include "platform/system/Shell.h"
#include "support/Addresses.h"
#include "support/ErrorRoutine.h"
#include "web/LocalPages.h"

namespace qb {

using namespace Qt::StringLiterals;

void OpenAddress(const QString& address, const std::function<void(const QString& page)>& navigate)
{
    if (address.startsWith("local://"_L1, Qt::CaseInsensitive) && IsLocalPage(UrlOfAddress(address)))
        return navigate(address);
    const AddressAnswer answer = AnswerAddress(address);
    if (answer == AddressAnswer::Refuse) {
        Prompts::Current().MsgBox(
            {.Text = u"'%1' is not opened: it would start a program, or is no address."_s.arg(ShownAddress(address)),
             .Caption = ApplicationTitle,
             .Icon = MsgBoxIcon::Exclamation});
        return;
    }
    const auto isWanted = [&] {
        return Prompts::Current().MsgBox(
                   {.Text = u"This link leads to\n%1\nDo you wish to open it?"_s.arg(ShownAddress(address)),
                    .Caption = u"Open Link"_s,
                    .Buttons = MsgBoxButtons::YesNo,
                    .Icon = MsgBoxIcon::Question,
                    .Default = MsgBoxResult::No})
               == MsgBoxResult::Yes;
    };
    if (answer == AddressAnswer::Ask && !isWanted())
        return;
    if (!OpenTarget(address))
        Prompts::Current().MsgBox({.Text = u"No application could be started for '%1'."_s.arg(address),
                                   .Caption = ApplicationTitle,
                                   .Icon = MsgBoxIcon::Information});
}

} // namespace qb
