#include "panels/ui/BookmarkView.h"
#include "panels/ui/RatingStars.h"
#include "panels/ui/StoredFileView.h"
#include "session/Commands.h"
#include "support/EditingWindow.h"

#include <QRegularExpression>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Every key that the handbook names is a key of the program: pressed where the handbook says so, it is taken.
class TestHelpKeys : public QObject, private EditingWindow {
    Q_OBJECT

private:
    static QString Page(const QString& name)
    {
        return QString::fromUtf8(ReadFile(QStringLiteral(QUILLBASE_HANDBOOK) + u'/' + name));
    }

    /// The keys of a table of keys.md, by the title of its section.
    static QStringList KeysOf(const QString& section)
    {
        const QString text = Page(u"keys.md"_s).section(u"## "_s + section + u'\n', 1).section(u"\n## "_s, 0, 0);
        static const QRegularExpression cell(u"^\\| (`[^|]*`) \\|"_s, QRegularExpression::MultilineOption);
        static const QRegularExpression key(u"`([^`]+)`"_s);
        QStringList keys;
        for (auto cells = cell.globalMatch(text); cells.hasNext();) {
            const QString all = cells.next().captured(1);
            for (auto each = key.globalMatch(all); each.hasNext();)
                keys << each.next().captured(1);
        }
        return keys;
    }

    static QKeyCombination KeyOf(const QString& name)
    {
        return QKeySequence::fromString(name, QKeySequence::PortableText)[0];
    }

    /// Whether a key that is pressed in a part is taken: as a shortcut of its own, by itself, or by what filters
    /// its keys.
    static bool IsTaken(QWidget& part, const QString& name)
    {
        const QKeyCombination key = KeyOf(name);
        for (const QAction* action : part.actions()) {
            if (action->shortcuts().contains(QKeySequence(key)))
                return true;
        }
        for (QWidget* widget = &part; widget; widget = widget->parentWidget()) {
            for (const QAction* action : widget->findChildren<QAction*>()) {
                if (action->shortcutContext() == Qt::WindowShortcut && action->shortcut() == QKeySequence(key))
                    return true;
            }
        }
        const bool isCharacter = key.keyboardModifiers() == Qt::NoModifier && key.key() < Qt::Key_Escape;
        QKeyEvent press(QEvent::KeyPress, key.key(), key.keyboardModifiers(),
                        isCharacter ? QString(QChar(char16_t(key.key()))) : QString());
        QApplication::sendEvent(&part, &press);
        return press.isAccepted();
    }

    QWidget* PartOf(const QString& section)
    {
        const std::pair<QString, QString> parts[] = {
            {u"In the tree"_s, u"tvwTree"_s},
            {u"In quick open"_s, u"txtQuickOpen"_s},
            {u"In this window"_s, u"frmHelp"_s},
            {u"In code and usage"_s, u"rtbCode"_s},
            {u"In notes"_s, u"rtbNotes"_s},
            {u"In the list of files"_s, u"lvFiles"_s},
            {u"In the list of bookmarks"_s, u"lvBookMarks"_s},
            {u"In the list of links"_s, u"lvLinks"_s},
            {u"At the rating"_s, u"RatingStars"_s},
        };
        for (const auto& [title, name] : parts) {
            if (title == section)
                return m_window->findChild<QWidget*>(name);
        }
        return nullptr;
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void keysOfAPart_areTaken_data()
    {
        QTest::addColumn<QString>("section");
        static const QRegularExpression heading(u"^## (.*)$"_s, QRegularExpression::MultilineOption);
        const QString page = Page(u"keys.md"_s);
        for (auto all = heading.globalMatch(page); all.hasNext();) {
            const QString section = all.next().captured(1);
            if (section != u"In the menus"_s)
                QTest::newRow(qPrintable(section)) << section;
        }
    }
    void keysOfAPart_areTaken()
    {
        QFETCH(QString, section);
        AddStoredFile(*m_database, m_item, u"a.txt"_s, "a", Date::FromParts(2026, 3, 2));
        Open();
        m_window->show();
        ClickOn(0);
        m_window->findChild<QTreeView*>(u"lvFiles"_s)->selectAll();
        const QStringList keys = KeysOf(section);
        QVERIFY2(!keys.isEmpty(), qPrintable(section));
        for (const QString& key : keys) {
            QVERIFY2(KeyOf(key).key() != Qt::Key_unknown, qPrintable(key));
            if (section == u"In this window"_s || section == u"In quick open"_s)
                Action(section == u"In quick open"_s ? u"mnuQuickOpen"_s : u"mnuHelpItem"_s)->trigger();
            QWidget* part = PartOf(section);
            QVERIFY2(part, qPrintable(section));
            const QSignalBlocker blocker(part); // it is enough that a key is taken
            if (section == u"In the tree"_s)
                Tree()->setCurrentIndex(key == u"Right"_s ? Root() : Child(0)); // which has others to open
            QVERIFY2(IsTaken(*part, key), qPrintable(key));
        }
    }

    void keyThatIsNone_isNotTaken()
    {
        Open();
        m_window->show();
        ClickOn(0);
        for (const QString& section : {u"In the tree"_s, u"In the list of files"_s, u"At the rating"_s})
            QVERIFY2(!IsTaken(*PartOf(section), u"F11"_s), qPrintable(section));
        QVERIFY(!IsTaken(*PartOf(u"In code and usage"_s), u"F11"_s));
    }

    /// On all pages: a key is one of keys.md, which the rest of this test holds, or of the table of commands.
    void everyKeyThatIsNamed_isInTheTableOfKeys()
    {
        QSet<QString> known;
        static const QRegularExpression span(u"`([^`\\n]+)`"_s);
        const QString keys = Page(u"keys.md"_s);
        for (auto all = span.globalMatch(keys); all.hasNext();)
            known.insert(all.next().captured(1));
        for (const CommandRow& row : Commands::Table())
            known.insert(QString::fromLatin1(row.Shortcut));
        known.unite({u"Ctrl+Enter"_s, u"Alt+Enter"_s, u"Ctrl"_s}); // of dialogs; of the mouse
        static const QRegularExpression key(
            u"^((Ctrl|Alt|Shift)(\\+|$).*|F\\d+|Enter|Esc|Insert|Delete|Tab|Home|End|Up|Down|Left|Right|Backspace)$"_s);
        int count = 0;
        for (const QString& page : QDir(QStringLiteral(QUILLBASE_HANDBOOK)).entryList({u"*.md"_s})) {
            const QString text = Page(page);
            for (auto all = span.globalMatch(text); all.hasNext();) {
                const QString name = all.next().captured(1);
                if (!key.match(name).hasMatch())
                    continue;
                ++count;
                QVERIFY2(known.contains(name), qPrintable(page + u": "_s + name));
            }
        }
        QVERIFY(count > 40);
    }
};

QB_GUI_TEST_MAIN(TestHelpKeys)
#include "tst_help_keys.moc"
