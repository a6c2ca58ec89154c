#pragma once

#include <QString>
#include <QStringList>

namespace qb::bench {

/// A folder below the build folder for what the benchmarks make; it is kept between runs.
QString DataFolder(const QString& name);

/// Lets the program find its data and settings in a folder of the benchmarks' own.
class BenchHome {
public:
    explicit BenchHome(const QString& folder);
    ~BenchHome();
    BenchHome(const BenchHome&) = delete;
    BenchHome& operator=(const BenchHome&) = delete;
    QString Library() const { return m_folder + QStringLiteral("/QBLib.qbd"); }

private:
    QString m_folder;
};

/// Real source files of this machine, at most @p count; fewer when it has no more.
QStringList SourceFiles(int count);

/// Real C++ source, @p size characters.
QString CppSource(qsizetype size);

/// A library of @p items items in three levels, with the text of real source files as code, about
/// 3.5 kB each; made when it is not there yet.
QString BenchLibrary(int items);

/// A library of @p items items with the titles and the structure of this machine's real source folders, again and
/// again, and short texts; made when it is not there yet.
QString FolderLibrary(int items);

} // namespace qb::bench
