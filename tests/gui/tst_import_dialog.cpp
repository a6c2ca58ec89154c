#include "session/ui/frmImport.h"
#include "support/EditingWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPushButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The preview of an import, and code that is copied in other forms.
class TestImportDialog : public QObject, EditingWindow {
    Q_OBJECT

    static std::vector<PreviewedItem> Branch()
    {
        std::vector<PreviewedItem> items;
        const auto add = [&items](const QString& title, int parent, qint64 bytes, int files, Presence there) {
            items.push_back({.Key = QString::number(items.size() + 1),
                             .Parent = parent,
                             .Title = title,
                             .Bytes = bytes,
                             .Files = files,
                             .There = there});
        };
        add(u"Containers"_s, -1, 1'200, 0, Presence::Here);
        add(u"Ring buffer <T>"_s, 0, 48'000, 2, Presence::Here);
        add(u"Übersicht"_s, 0, 3'400'000, 12, Presence::No);
        add(u"Small vector, with a title that is longer than any column of such a dialog can hold"_s, 2, 900, 0,
            Presence::Elsewhere);
        add(u"Flat map"_s, 2, 7'000, 0, Presence::No);
        add(u"Strings"_s, -1, 12'000, 1, Presence::No);
        return items;
    }
    static QStringList Ticks(const frmImport& dialog)
    {
        QStringList titles;
        for (QTreeWidgetItemIterator row(dialog.findChild<QTreeWidget*>(u"tvItems"_s)); *row; ++row) {
            if ((*row)->checkState(0) == Qt::Checked)
                titles << (*row)->text(0).section(u' ', 0, 0);
        }
        return titles;
    }

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void branches_areShownAndChosen()
    {
        const std::vector<PreviewedItem> items = Branch();
        frmImport dialog(nullptr, items, u"My <library>"_s);
        dialog.show();
        auto* tree = dialog.findChild<QTreeWidget*>(u"tvItems"_s);
        auto* chosen = dialog.findChild<QLabel*>(u"lblChosen"_s);
        auto* import = dialog.findChild<QPushButton*>(u"cmdImport"_s);
        QVERIFY(dialog.findChild<QLabel*>(u"lblTarget"_s)->text().contains(u"'My <library>'"_s));
        QCOMPARE(tree->topLevelItemCount(), 2);
        QTreeWidgetItem* top = tree->topLevelItem(0);
        QVERIFY(top->isExpanded());
        QCOMPARE(top->text(3), u"at this place"_s);
        QCOMPARE(top->child(1)->text(1), QLocale().formattedDataSize(3'400'000, 1));
        QCOMPARE(top->child(1)->text(2), u"12"_s);
        QCOMPARE(top->child(1)->text(3), QString());
        QCOMPARE(top->child(1)->child(0)->text(3), u"elsewhere"_s);
        QCOMPARE(Ticks(dialog).size(), 6);
        QCOMPARE(dialog.Keys(), QStringList());
        TakePicture(dialog, u"import-preview"_s);
        top->child(0)->setCheckState(0, Qt::Unchecked);
        QCOMPARE(Ticks(dialog), (QStringList{u"Übersicht"_s, u"Small"_s, u"Flat"_s, u"Strings"_s}));
        QCOMPARE(dialog.Keys(), (QStringList{u"3"_s, u"6"_s}));
        QVERIFY(chosen->text().startsWith(u"4 of 6 items, "_s));
        dialog.findChild<QPushButton*>(u"cmdSelectNone"_s)->click();
        QVERIFY(!import->isEnabled());
        QCOMPARE(Ticks(dialog), QStringList());
        dialog.findChild<QPushButton*>(u"cmdSelectAll"_s)->click();
        QVERIFY(import->isEnabled());
        QCOMPARE(dialog.Keys(), QStringList());
        import->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void dialog_isLegibleInTheDark()
    {
        const QPalette before = QApplication::palette();
        QApplication::setPalette(DarkPalette());
        const std::vector<PreviewedItem> items = Branch();
        frmImport dialog(nullptr, items, u"My library"_s);
        dialog.resize(460, 360);
        dialog.show();
        TakePicture(dialog, u"import-preview-dark-narrow"_s);
        QApplication::setPalette(before);
        QVERIFY(dialog.width() <= 460);
    }

    void code_isCopiedInForms()
    {
        Begin();
        Open();
        ClickOn(0);
        Tab(0);
        Code()->SetText(u"Dim x 'why"_s);
        Q_EMIT EditMenu()->aboutToShow();
        QVERIFY(Action(u"mnuCopyAsHtml"_s)->isEnabled());
        Action(u"mnuCopyAsHtml"_s)->trigger();
        const QMimeData* mime = QGuiApplication::clipboard()->mimeData();
        QVERIFY(mime->hasHtml());
        QVERIFY(mime->text().contains(u"&#39;why</span>"_s));
        Action(u"mnuCopyAsRtf"_s)->trigger();
        mime = QGuiApplication::clipboard()->mimeData();
        QVERIFY(mime->data(u"text/rtf"_s).startsWith("{\\rtf1"));
        QCOMPARE(mime->text(), u"Dim x 'why"_s);
        Code()->SetSelStart(4);
        Code()->SetSelLength(1);
        Action(u"mnuCopyAsMarkdown"_s)->trigger();
        QVERIFY(QGuiApplication::clipboard()->text().endsWith(u"\nx\n```\n"_s));
        Action(u"mnuCopyAsPlain"_s)->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"x"_s);
        QVERIFY(!QGuiApplication::clipboard()->mimeData()->hasHtml());
        Code()->SetText({});
        Q_EMIT EditMenu()->aboutToShow();
        QVERIFY(!Action(u"mnuCopyAsPlain"_s)->isEnabled());
        End();
    }

private:
    QMenu* EditMenu() { return m_window->findChild<QMenu*>(u"mnuEdit"_s); }
};

QB_GUI_TEST_MAIN(TestImportDialog)
#include "tst_import_dialog.moc"
