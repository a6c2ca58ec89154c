#pragma once

#include <QString>
#include <QStringList>

namespace qb {

/// The common file dialog; it starts where the last one ended. @p name is proposed for saving. Empty when
/// cancelled, or when a file to be opened does not exist.
QString GetFileName(bool save, const QString& title, const QString& filter, const QString& name = {});
/// The same for existing files, several of one folder.
QStringList GetFileNames(const QString& title, const QString& filter);

} // namespace qb
