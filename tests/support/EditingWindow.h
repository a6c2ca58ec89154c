#pragma once

#include "platform/richtext/RtfPlainText.h"
#include "platform/system/SettingsStore.h"
#include "session/ui/frmCodeLib.h"
#include "support/GuiRun.h"
#include "support/LibraryBuilder.h"
#include "support/ScriptedPrompts.h"
#include "support/TestRun.h"
#include "text/ui/CodeBox.h"
#include "text/ui/RichTextBox.h"
#include "text/ui/ctlCodeDetails.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <functional>

namespace qb::test {

using namespace Qt::StringLiterals;

/// The main window over a library of two items, "item" and "other", with data, settings and prompts
/// of its own, and the ways to its parts.
class EditingWindow {
protected:
    void Begin();
    /// A test can't fail in a destructor, so the end is one of its own.
    void End();

    void Open();

    /// The program ends in the middle of the work, as by a power cut.
    void TypeAndDie(const QString& text);
    QStringList UnsavedFiles() const { return QDir(m_home->Path(u"data"_s)).entryList({u"Unsaved-*"_s}); }

    QString Read(const QString& column);
    void Write(const QString& column, const QString& value);

    /// The tree takes the text once the key is done with.
    static void Enter(QLineEdit* editor);

    QTreeView* Tree() { return m_window->findChild<QTreeView*>(u"tvwTree"_s); }
    QModelIndex Root() { return Tree()->model()->index(0, 0); }
    QModelIndex Child(int row) { return Tree()->model()->index(row, 0, Root()); }
    CodeBox* Code() { return m_window->findChild<CodeBox*>(u"rtbCode"_s); }
    CodeBox* Usage() { return m_window->findChild<CodeBox*>(u"rtbUsage"_s); }
    RichTextBox* Notes() { return m_window->findChild<RichTextBox*>(u"rtbNotes"_s); }
    ctlCodeDetails* Details() { return m_window->findChild<ctlCodeDetails*>(u"ctlCodeItemDetails"_s); }
    QAction* Action(const QString& name) { return m_window->findChild<QAction*>(name); }
    QAction* Button(const QString& key) { return ToolbarButton(u"tlbTextFormat"_s, key); }
    QAction* CodeButton(const QString& key) { return ToolbarButton(u"tbrCode"_s, key); }
    QAction* ToolbarButton(const QString& toolbar, const QString& key);
    void Tab(int index) { m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->setCurrentIndex(index); }
    /// Whether the tab's image says that it has content.
    bool TabIcon(int index);
    void ClickOn(int row);
    void OpenMenu(
        const QString& name, const std::function<void()>& whileOpen = [] {});

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    qint64 m_item = 0;
    std::unique_ptr<frmCodeLib> m_window;
};

} // namespace qb::test
