#include "web/OpenedPages.h"

#include <utility>

namespace qb {

namespace {

OpenedPagesSource& TheSource()
{
    static OpenedPagesSource source;
    return source;
}

} // namespace

std::vector<OpenedPage> OpenedPages()
{
    std::vector<OpenedPage> pages = TheSource() ? TheSource()() : std::vector<OpenedPage>();
    std::erase_if(pages, [](const OpenedPage& page) { return page.Title.isEmpty(); });
    return pages;
}

OpenedPagesSource SetOpenedPagesSource(OpenedPagesSource source)
{
    return std::exchange(TheSource(), std::move(source));
}

} // namespace qb
