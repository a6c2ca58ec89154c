#include "session/FileDialogs.h"

#include "config/Remembered.h"
#include "platform/system/Prompts.h"

#include <QDir>
#include <QFileInfo>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// Where file dialogs start.
QString DialogFolder()
{
    const QString remembered = Remembered(Memory::InitDir);
    return QFileInfo(remembered).isDir() ? remembered : QDir::homePath();
}

void RememberDialogFolder(const QString& chosen)
{
    const QString folder = QFileInfo(chosen).absolutePath();
    if (folder != Remembered(Memory::InitDir))
        Remember(Memory::InitDir, folder);
}

} // namespace

QString GetFileName(bool save, const QString& title, const QString& filter, const QString& name)
{
    const QString path =
        Prompts::Current()
            .FileName({.Save = save, .Title = title, .Filter = filter, .Folder = DialogFolder(), .Name = name})
            .section(QChar(u'\0'), 0, 0);
    if (path.isEmpty())
        return {};
    RememberDialogFolder(path);
    if (!save && !QFileInfo::exists(path)) {
        Prompts::Current().MsgBox(
            {.Text = u"No file of the entered name exists in the selected directory. Please select an "
                     "existing file."_s,
             .Caption = u"File not found"_s,
             .Icon = MsgBoxIcon::Exclamation});
        return {};
    }
    return path;
}

QStringList GetFileNames(const QString& title, const QString& filter)
{
    const QStringList paths = Prompts::Current().FileNames(
        {.Save = false, .Title = title, .Filter = filter, .Folder = DialogFolder()});
    if (!paths.isEmpty())
        RememberDialogFolder(paths.first());
    return paths;
}

} // namespace qb
