#include "store/ItemStatus.h"

#include <algorithm>

namespace qb {

namespace {

constexpr ItemStatusName Names[] = {
    {ItemStatus::Own, "own"},         {ItemStatus::Downloaded, "downloaded"},
    {ItemStatus::TestedOK, "tested"}, {ItemStatus::NotWorking, "not-working"},
    {ItemStatus::None, "none"},
};

} // namespace

std::span<const ItemStatusName> ItemStatusNames()
{
    return Names;
}

QString NameOfStatus(qint32 status)
{
    const auto* found = std::find_if(std::begin(Names), std::end(Names), [status](const ItemStatusName& one) {
        return one.Status != ItemStatus::None && qint32(one.Status) == status;
    });
    return found == std::end(Names) ? QString() : QString::fromLatin1(found->Name);
}

std::optional<ItemStatus> StatusNamed(const QString& name)
{
    const auto* found = std::find_if(std::begin(Names), std::end(Names), [&name](const ItemStatusName& one) {
        return name.compare(QLatin1StringView(one.Name), Qt::CaseInsensitive) == 0;
    });
    return found == std::end(Names) ? std::nullopt : std::optional(found->Status);
}

} // namespace qb
