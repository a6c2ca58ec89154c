#include "help/ShowHelp.h"

#include "help/Links.h"
#include "platform/system/Prompts.h"

namespace qb {

using namespace Qt::StringLiterals;

void ShowHelp(const QString& topic, const std::function<void(const QString&)>& show, const QString& folder)
{
    if (Handbook::Exists(folder))
        return show(topic);
    const bool isWanted = Prompts::Current().MsgBox(
                              {.Text = u"The help file was not found. You have probably installed Quillbase without "
                                       "the help file. However, you can view help on-line. To do that you have to be "
                                       "connected to the Internet.\r\nDo you wish to open the on-line help now?"_s,
                               .Caption = u"Help file not found"_s,
                               .Buttons = MsgBoxButtons::YesNo,
                               .Icon = MsgBoxIcon::Question})
                          == MsgBoxResult::Yes;
    if (isWanted)
        OpenNamedLink(u"Quillbase Help"_s);
}

} // namespace qb
