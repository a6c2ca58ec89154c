#include "support/CliRun.h"
#include "support/TestRun.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>

using namespace qb::test;
using namespace Qt::StringLiterals;

/// The Markdown of the handbook against the command line: what it names is there, and its examples do what they show.
class TestHandbookTexts : public QObject {
    Q_OBJECT

private:
    static QString Folder() { return QStringLiteral(QUILLBASE_HANDBOOK); }
    static QStringList Pages() { return QDir(Folder()).entryList({u"*.md"_s}); }
    static QString Text(const QString& page) { return QString::fromUtf8(ReadFile(Folder() + u'/' + page)); }

    /// The commands that the program lists, with their options.
    static QMap<QString, QSet<QString>> Commands()
    {
        static const QRegularExpression line(u"^quillbase-cli (\\S+) (.*)$"_s, QRegularExpression::MultilineOption);
        static const QRegularExpression option(u"--[a-z0-9-]+"_s);
        QMap<QString, QSet<QString>> commands;
        const QString help = Cli({u"--help"_s}).Out;
        for (auto lines = line.globalMatch(help); lines.hasNext();) {
            const QRegularExpressionMatch match = lines.next();
            QSet<QString>& options = commands[match.captured(1)];
            for (auto all = option.globalMatch(match.captured(2)); all.hasNext();)
                options.insert(all.next().captured());
        }
        return commands;
    }

    /// Everything that stands between backquotes, or is a line typed at the prompt of an example.
    static QStringList Spans(const QString& text)
    {
        static const QRegularExpression span(u"`([^`\\n]+)`|^\\$ (.*)$"_s, QRegularExpression::MultilineOption);
        QStringList spans;
        for (auto all = span.globalMatch(text); all.hasNext();) {
            const QRegularExpressionMatch match = all.next();
            spans << (match.captured(1).isEmpty() ? match.captured(2) : match.captured(1));
        }
        return spans;
    }

    // Examples

    struct Example {
        QString Command;
        QStringList Expected;
    };

    static std::vector<Example> ExamplesOf(const QString& page)
    {
        std::vector<Example> examples;
        bool isInside = false;
        const QStringList lines = Text(page).split(u'\n');
        for (const QString& line : lines) {
            if (line.startsWith(u"```"_s))
                isInside = line == u"```console"_s;
            else if (isInside && line.startsWith(u"$ "_s))
                examples.push_back({line.mid(2), {}});
            else if (isInside && !examples.empty())
                examples.back().Expected << line;
        }
        return examples;
    }

    /// "…" stands for what is another at each run; a line of it alone for any number of lines.
    static bool Fits(const QStringList& expected, const QStringList& lines)
    {
        QString pattern;
        for (const QString& line : expected) {
            if (line == u"…"_s)
                pattern += u"(?:.*\\n)*"_s;
            else
                pattern += QRegularExpression::escape(line).replace(QRegularExpression::escape(u"…"_s), u".*"_s)
                           + u"\\n"_s;
        }
        const QString text = lines.isEmpty() ? QString() : lines.join(u'\n') + u'\n';
        return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
    }

    static QStringList RunOf(const QString& command, const QString& folder)
    {
        QProcess shell;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const QString programs = QFileInfo(qEnvironmentVariable("QUILLBASE_CLI")).absolutePath();
        environment.insert(u"PATH"_s, programs + u':' + environment.value(u"PATH"_s));
        shell.setProcessEnvironment(environment);
        shell.setWorkingDirectory(folder);
        shell.start(u"/bin/sh"_s, {u"-c"_s, command});
        if (!shell.waitForFinished(60000))
            return {u"it does not end"_s};
        QString out = QString::fromUtf8(shell.readAllStandardOutput());
        if (shell.exitCode() != 0)
            out += QString::fromUtf8(shell.readAllStandardError());
        if (out.endsWith(u'\n'))
            out.chop(1);
        out.remove(u'\r'); // a page has lines of another kind
        return out.isEmpty() ? QStringList() : out.split(u'\n');
    }

    /// The folder of sources that the examples speak of.
    static void MakeProject(const QString& folder)
    {
        QVERIFY(QDir(folder).mkpath(u"project/src"_s));
        WriteFile(folder + u"/project/src/trim.h"_s,
                  "#include <string>\n\n// Removes blanks.\nstd::string trim(const std::string& text);\n");
        WriteFile(folder + u"/project/clamp.py"_s, "def clamp(x, low, high):\n    return max(low, min(x, high))\n");
        WriteFile(folder + u"/project/notes.txt"_s, "hello\n");
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void everyCommand_isInTheHandbook()
    {
        const QString page = Text(u"command-line.md"_s);
        const QMap<QString, QSet<QString>> commands = Commands();
        QVERIFY(commands.size() > 30);
        for (const QString& command : commands.keys()) {
            const QRegularExpression named(u"`%1[ `]"_s.arg(QRegularExpression::escape(command)));
            QVERIFY2(page.contains(named), qPrintable(u"command-line.md says nothing of "_s + command));
        }
    }

    void everyCommandThatIsNamed_isACommand()
    {
        const QMap<QString, QSet<QString>> commands = Commands();
        static const QRegularExpression named(u"quillbase-cli ([a-z][a-z0-9-]*)"_s);
        for (const QString& page : Pages()) {
            for (const QString& span : Spans(Text(page))) {
                for (auto all = named.globalMatch(span); all.hasNext();) {
                    const QString command = all.next().captured(1);
                    QVERIFY2(commands.contains(command), qPrintable(page + u": "_s + command));
                }
            }
        }
    }

    void everyOption_isOneOfTheProgram()
    {
        static const QRegularExpression option(u"--[a-z0-9-]+"_s);
        QSet<QString> options{u"--help"_s, u"--json"_s, u"--version"_s};
        for (const QSet<QString>& some : Commands())
            options.unite(some);
        for (const QString& page : Pages()) {
            for (const QString& span : Spans(Text(page))) {
                if (span.startsWith(u"systemctl"_s))
                    continue;
                for (auto all = option.globalMatch(span); all.hasNext();) {
                    const QString one = all.next().captured();
                    QVERIFY2(options.contains(one), qPrintable(page + u": "_s + one));
                }
            }
        }
    }

    void everyPage_isInTheContents()
    {
        const QString contents = Text(u"README.md"_s);
        for (const QString& page : Pages())
            QVERIFY2(page == u"README.md"_s || contents.contains(u"]("_s + page + u')'), qPrintable(page));
    }

    void everyLink_leadsToAHeading()
    {
        static const QRegularExpression link(u"\\]\\(([^)#\\s]*)(?:#([^)\\s]*))?\\)"_s);
        static const QRegularExpression heading(u"^#+ (.*)$"_s, QRegularExpression::MultilineOption);
        static const QRegularExpression dropped(u"[^\\w -]"_s, QRegularExpression::UseUnicodePropertiesOption);
        int count = 0;
        for (const QString& page : Pages()) {
            for (auto links = link.globalMatch(Text(page)); links.hasNext(); ++count) {
                const QRegularExpressionMatch match = links.next();
                const QString target = match.captured(1).isEmpty() ? page : match.captured(1);
                if (target.endsWith(u".svg"_s)) { // a picture
                    QVERIFY2(QFileInfo::exists(Folder() + u'/' + target), qPrintable(page + u": "_s + target));
                    continue;
                }
                QVERIFY2(Pages().contains(target), qPrintable(page + u": "_s + match.captured()));
                QStringList anchors{QString()};
                for (auto all = heading.globalMatch(Text(target)); all.hasNext();)
                    anchors << all.next().captured(1).toLower().remove(dropped).replace(u' ', u'-');
                QVERIFY2(anchors.contains(match.captured(2)), qPrintable(page + u": "_s + match.captured()));
            }
        }
        QVERIFY(count > 20);
    }

    void examples_doWhatTheyShow_data()
    {
        QTest::addColumn<QString>("page");
        for (const QString& page : Pages()) {
            if (!ExamplesOf(page).empty())
                QTest::newRow(qPrintable(page)) << page;
        }
    }
    void examples_doWhatTheyShow()
    {
        QFETCH(QString, page);
        const TemporaryHome home;
        const QString folder = home.Path(u"work"_s);
        MakeProject(folder);
        for (const Example& example : ExamplesOf(page)) {
            const QStringList lines = RunOf(example.Command, folder);
            QVERIFY2(Fits(example.Expected, lines),
                     qPrintable(u"%1\n$ %2\n%3\nThe program says:\n%4"_s.arg(
                         page, example.Command, example.Expected.join(u'\n'), lines.join(u'\n'))));
        }
    }

    void settingsThatAreNamed_areSettings()
    {
        const TemporaryHome home;
        const QString settings = Cli({u"settings"_s, u"list"_s}).Out;
        static const QRegularExpression named(u"settings (?:get|set) ([A-Za-z]+)"_s);
        for (const QString& page : Pages()) {
            for (auto all = named.globalMatch(Text(page)); all.hasNext();) {
                const QString name = all.next().captured(1);
                QVERIFY2(name == u"NAME"_s || settings.contains(name + u'='), qPrintable(page + u": "_s + name));
            }
        }
    }
};

QB_TEST_MAIN(TestHandbookTexts)
#include "tst_handbook_texts.moc"
