#pragma once

#include <QString>
#include <functional>

/// What the program remembers of its own from one session to the next, beside the settings: name, section and
/// key in the store, and what it is before anything has been remembered.
#define QB_MEMORIES(ROW)                                                                                               \
    ROW(LastDB, "Settings", "LastDB", "")                                                                              \
    ROW(InitDir, "Settings", "InitDir", "C:\\")                                                                        \
    ROW(FileImportOperation, "Settings", "FileImportOperation", "1")                                                   \
    ROW(PreviousExportPaths, "StoredData", "PreviousExportPaths", "C:\\")                                              \
    ROW(FindHistory, "StoredData", "FindHistory", "")                                                                  \
    ROW(SavedFinds, "StoredData", "SavedFinds", "")                                                                    \
    ROW(RulesOffered, "StoredData", "RulesOffered", "")                                                                \
    ROW(PrintSetup, "Printing", "Setup", "")                                                                           \
    ROW(Printer, "Printing", "Printer", "")                                                                            \
    ROW(KeywordDefinerColours, "Colours", "KeywordDefiner", "33280,8650752")                                           \
    ROW(ChosenDatabases, "Databases", "ChosenDatabases", "")

namespace qb {

#define QB_NAME(name, ...) name,
enum class Memory { QB_MEMORIES(QB_NAME) Count };
#undef QB_NAME

/// What is remembered, as text.
QString Remembered(Memory what);

/// Writes it at once, where it is something else than before. An error is reported and stops nothing else: that
/// something can't be kept for another time is no reason not to do it now. False then.
bool Remember(Memory what, const QString& value);
/// The same with a value that is made from what is remembered when it is written: another program may have changed it.
bool RememberMerged(Memory what, const std::function<QString(const QString& stored)>& merged);

} // namespace qb
