#pragma once

namespace qb {

/// How the next click in the tree links the item that it names with the current one.
enum class LinkMode {
    None = 0,
    OneWayFrom = 1,    ///< from the current item to an existing one
    OneWayTo = 2,      ///< from an existing item to the current one
    OneWayNewFrom = 3, ///< from the current item to a new one
    OneWayNewTo = 4,   ///< from a new item to the current one
    TwoWay = 5,        ///< with an existing item
    TwoWayNew = 6,     ///< with a new item
    Advanced = 7,      ///< with an existing item; the direction is asked for each time
};

/// Whether the second step names the parent of a new item.
constexpr bool MakesNewItem(LinkMode mode)
{
    return mode == LinkMode::OneWayNewFrom || mode == LinkMode::OneWayNewTo || mode == LinkMode::TwoWayNew;
}

} // namespace qb
