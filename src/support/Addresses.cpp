#include "support/Addresses.h"

#include "platform/system/SettingsStore.h"
#include "platform/system/Shell.h"

#include <QRegularExpression>
#include <QUrl>
#include <algorithm>

namespace qb {

QString BugReportAddress()
{
    return GetSetting(SettingsApplication, QStringLiteral("Settings"), QStringLiteral("BugReportAddress"));
}

QString ShownAddress(const QString& address)
{
    constexpr qsizetype Longest = 500;
    constexpr int Hexadecimal = 16;
    QString shown;
    for (const QChar character : address.left(Longest)) {
        const bool isHidden = character.category() == QChar::Other_Control
                              || character.category() == QChar::Other_Format
                              || character.category() == QChar::Separator_Line
                              || character.category() == QChar::Separator_Paragraph;
        if (isHidden)
            shown += QStringLiteral("\\u%1").arg(int(character.unicode()), 4, Hexadecimal, QLatin1Char('0'));
        else
            shown += character;
    }
    return address.size() > Longest ? shown + QStringLiteral("...") : shown;
}

AddressAnswer AnswerAddress(const QString& address)
{
    const QUrl url(address, QUrl::TolerantMode);
    const bool hasControl = std::any_of(address.begin(), address.end(),
                                        [](QChar character) { return character.category() == QChar::Other_Control; });
    // Programs behind other schemes take a name that begins with a dash for an option.
    static const QRegularExpression option(QStringLiteral("^\\s*([A-Za-z][A-Za-z0-9+.-]*:(//)?([^/@]*@)?)?-"));
    const bool isOption = option.match(address).hasMatch();
    if (address.trimmed().isEmpty() || hasControl || isOption)
        return AddressAnswer::Refuse;
    const QString scheme = url.scheme().toLower();
    if (scheme == QLatin1StringView("http") || scheme == QLatin1StringView("https"))
        return url.host().isEmpty() ? AddressAnswer::Refuse : AddressAnswer::Open;
    if (scheme == QLatin1StringView("mailto")) {
        const QString fields = url.query(QUrl::FullyDecoded).toLower();
        return fields.contains(QLatin1StringView("attach")) ? AddressAnswer::Refuse : AddressAnswer::Open;
    }
    return IsProgram(url.isLocalFile() ? url.toLocalFile() : address) ? AddressAnswer::Refuse : AddressAnswer::Ask;
}

} // namespace qb
