#include "support/EditingWindow.h"

namespace qb::test {

void EditingWindow::Begin()
{
    m_home = std::make_unique<TemporaryHome>();
    m_prompts = std::make_unique<ScriptedPrompts>();
    m_database = MakeLibrary(m_home->Path(u"data/QBLib.qbd"_s), LanguageType::VB);
    m_item = AddItem(*m_database, 0, u"item"_s);
    AddItem(*m_database, 0, u"other"_s);
}

void EditingWindow::End()
{
    m_window.reset();
    m_database.reset();
    m_prompts.reset();
    m_home.reset();
}

void EditingWindow::Open()
{
    m_window.reset();
    m_window = std::make_unique<frmCodeLib>();
    m_window->Form_Load();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void EditingWindow::TypeAndDie(const QString& text)
{
    Open();
    ClickOn(0);
    QTest::keyClicks(Code(), text);
    QTRY_COMPARE(UnsavedFiles().size(), 1);
    m_window.reset();
}

QString EditingWindow::Read(const QString& column)
{
    return m_database->QueryValue(u"SELECT "_s + column + u" FROM Items WHERE ID = ?"_s, {m_item}).ToText();
}

void EditingWindow::Write(const QString& column, const QString& value)
{
    m_database->Execute(u"UPDATE Items SET "_s + column + u" = ? WHERE ID = ?"_s, {value, m_item});
}

void EditingWindow::Enter(QLineEdit* editor)
{
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
}

QAction* EditingWindow::ToolbarButton(const QString& toolbar, const QString& key)
{
    for (QAction* action : m_window->findChild<QToolBar*>(toolbar)->actions()) {
        if (action->property("key") == key)
            return action;
    }
    return nullptr;
}

bool EditingWindow::TabIcon(int index)
{
    const QIcon icon = m_window->findChild<QTabWidget*>(u"tbsTabs"_s)->tabIcon(index);
    const QString names[] = {u"CODE"_s, u"NOTES"_s, u"USAGE"_s};
    return icon.cacheKey() == IconNamed(names[index]).cacheKey();
}

void EditingWindow::ClickOn(int row)
{
    QTest::mouseClick(Tree()->viewport(), Qt::LeftButton, {}, Tree()->visualRect(Child(row)).center());
}

void EditingWindow::OpenMenu(const QString& name, const std::function<void()>& whileOpen)
{
    auto* menu = m_window->findChild<QMenu*>(name);
    QTimer::singleShot(0, menu, [menu, whileOpen] {
        whileOpen();
        menu->close();
    });
    menu->exec(m_window->mapToGlobal(QPoint(0, 0)));
}

} // namespace qb::test
