#pragma once

#include "panels/ui/StoredFileView.h"
#include "panels/ui/ctlFileDetails.h"
#include "store/CFileObject.h"
#include "store/Library.h"
#include "store/StoredFiles.h"
#include "support/EditingWindow.h"

#include <QDir>

namespace qb::test {

/// The main window with the page of stored files, and the ways to its parts.
class FilesWindow : protected EditingWindow {
protected:
    static constexpr int FilesTab = 3;

    QString In(const QString& name) const { return m_home->Path(u"in ß/"_s + name); }
    QString Place(qint64 id, const QString& title) const { return StoredFilePath(FilesFolder(), id, title); }
    /// Of the library that is open in the window, also while it is closed.
    QString FilesFolder() const { return FilesFolderOf(m_home->Path(u"data/QBLib.qbd"_s)); }
    QStringList Stored() const { return StoredNames(FilesFolder()); }
    /// Stores files with the item, without the window.
    void Store(const QStringList& names)
    {
        for (const QString& name : names) {
            CFileObject file;
            file.Initialise(*m_database, {});
            file.SetCodeID(QString::number(m_item));
            file.SetStoredFile(In(name));
            QVERIFY(file.Commit());
        }
    }
    /// The item's files, with the first selected.
    void OpenFiles()
    {
        Open();
        ClickOn(0);
        Tab(FilesTab);
        Files()->SelectFirstItem();
    }
    ctlFileDetails* Files() { return m_window->findChild<ctlFileDetails*>(); }
    StoredFileView* List() { return m_window->findChild<StoredFileView*>(); }
    RichTextBox* Box() { return m_window->findChild<RichTextBox*>(u"rtbFileNotes"_s); }
    void PressInList(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        List()->setFocus();
        QTest::keyClick(List(), key, modifiers);
    }
    void Select(int row) { List()->setCurrentIndex(List()->model()->index(row, 0)); }
    QStringList Titles()
    {
        QStringList titles;
        for (int row = 0; row < List()->model()->rowCount(); ++row)
            titles << List()->model()->index(row, 0).data().toString();
        return titles;
    }
    QString Described(qint64 id)
    {
        return m_database->QueryValue(u"SELECT Description FROM Files WHERE ID = ?"_s, {id}).ToText();
    }
    /// Runs @p act in the next dialog of its kind.
    template <class Dialog>
    void InDialog(const std::function<void(Dialog&)>& act)
    {
        QTimer::singleShot(0, m_window.get(), [act] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            act(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
    }
};

} // namespace qb::test
