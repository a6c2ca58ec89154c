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
    void Begin()
    {
        m_home = std::make_unique<TemporaryHome>();
        m_prompts = std::make_unique<ScriptedPrompts>();
        m_database = MakeLibrary(m_home->Path(u"data/QBLib.qbd"_s), LanguageType::VB);
        m_item = AddItem(*m_database, 0, u"item"_s);
        AddItem(*m_database, 0, u"other"_s);
    }
    /// A test can't fail in a destructor, so the end is one of its own.
    void End()
    {
        m_window.reset();
        m_database.reset();
        m_prompts.reset();
        m_home.reset();
    }

    void Open()
    {
        m_window.reset();
        m_window = std::make_unique<frmCodeLib>();
        m_window->Form_Load();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    /// The program ends in the middle of the work, as by a power cut.
    void TypeAndDie(const QString& text)
    {
        Open();
        ClickOn(0);
        QTest::keyClicks(Code(), text);
        QTRY_COMPARE(UnsavedFiles().size(), 1);
        m_window.reset();
    }
    QStringList UnsavedFiles() const { return QDir(m_home->Path(u"data"_s)).entryList({u"Unsaved-*"_s}); }

    QString Read(const QString& column)
    {
        return m_database->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE ID = ?"_s, {m_item}).ToText();
    }
    void Write(const QString& column, const QString& value)
    {
        m_database->Execute(u"UPDATE Items SET "_s + column + u" = ? WHERE ID = ?"_s, {value, m_item});
    }

    /// The tree takes the text once the key is done with.
    static void Enter(QLineEdit* editor)
    {
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();
    }

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
    QAction* ToolbarButton(const QString& toolbar, const QString& key)
    {
        for (QAction* action : m_window->findChild<QToolBar*>(toolbar)->actions()) {
            if (action->property("key") == key)
                return action;
        }
        return nullptr;
    }
    void Tab(int index) { m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->setCurrentIndex(index); }
    /// Whether the tab's image says that it has content.
    bool TabIcon(int index)
    {
        const QIcon icon = m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->tabIcon(index);
        const QString names[] = {u"CODE"_s, u"NOTES"_s, u"USAGE"_s};
        return icon.cacheKey() == IconNamed(names[index]).cacheKey();
    }
    void ClickOn(int row)
    {
        QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Child(row)).center());
    }
    void OpenMenu(
        const QString& name, const std::function<void()>& whileOpen = [] {})
    {
        auto* menu = m_window->findChild<QMenu*>(name);
        QTimer::singleShot(0, menu, [menu, whileOpen] {
            whileOpen();
            menu->close();
        });
        menu->exec(m_window->mapToGlobal(QPoint(0, 0)));
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<Library> m_database;
    qint64 m_item = 0;
    std::unique_ptr<frmCodeLib> m_window;
};

} // namespace qb::test
