#pragma once

#include <QString>
#include <QStringList>
#include <span>

namespace qb {

/// Which page of the handbook is about a part of the window, by its object name, or about a command, by its name.
struct HelpTopicRow {
    const char* Name;
    const char* Topic;
};
std::span<const HelpTopicRow> HelpTopicTable();

/// The topic of the first of @p names that has one; that of the handbook's first page where none has. The names of
/// what has the focus are those of the part itself, then of what it stands in, up to its window.
QString TopicOf(const QStringList& names);

} // namespace qb
