#include "replication/ui/frmMergeReport.h"
#include "support/EditingWindow.h"
#include "support/ui/Appearance.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// What a synchronization would do, and what the last ones did.
class TestMergeReport : public QObject, private EditingWindow {
    Q_OBJECT

    static MergeReport Report(int lines)
    {
        MergeReport report{.AsMother = true,
                           .Replica = u"Laptop"_s,
                           .File = u"/home/me/changes.qbs"_s,
                           .Made = Date::FromParts(2026, 3, 2, 14, 30, 5),
                           .Lines = {{MergeEvent::ItemAdded, 17, u"Reading a file line by line"_s, {}},
                                     {MergeEvent::ItemMoved, 4, u"Strings"_s, u"Text"_s},
                                     {MergeEvent::Conflict, 5, u"Trim"_s, u"the version here is the later one"_s},
                                     {MergeEvent::ItemDeleted, 0, u"An old way"_s, {}},
                                     {MergeEvent::SetAside, 0, u"Splitting"_s,
                                      u"deleted here after the child had changed it"_s}},
                           .Faults = {{u"An item record is missing for a current file record!"_s, u"Error"_s}}};
        for (int i = int(report.Lines.size()); i < lines; ++i)
            report.Lines.push_back({MergeEvent::ItemChanged, i, u"Item number %1"_s.arg(i), {}});
        return report;
    }
    template <class Widget>
    static Widget* Find(QWidget& dialog, const QString& name)
    {
        return dialog.findChild<Widget*>(name);
    }

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        Begin();
    }
    void cleanup() { End(); }

    void preview_showsWhatWillBeDone()
    {
        frmMergeReport dialog(frmMergeReport::Purpose::Preview);
        dialog.SetReports({Report(5)});
        dialog.show();
        auto* lines = Find<QTreeWidget>(dialog, u"lvLines"_s);
        QCOMPARE(lines->topLevelItemCount(), 6);
        QCOMPARE(lines->topLevelItem(0)->text(0), u"Added"_s);
        QCOMPARE(lines->topLevelItem(5)->text(2), u"An item record is missing for a current file record!"_s);
        QCOMPARE(Find<QLabel>(dialog, u"lblSummary"_s)->text(),
                 u"With 'Laptop': 1 item added, 1 item moved, 1 item deleted, 1 conflict, 1 version set aside."_s);
        QVERIFY(!Find<QComboBox>(dialog, u"cboReports"_s)->isVisible());
        QVERIFY(!Find<QPushButton>(dialog, u"cmdShow"_s));
        QVERIFY(dialog.ShowsAgain());
        Find<QCheckBox>(dialog, u"chkShowAgain"_s)->click();
        QVERIFY(!dialog.ShowsAgain());
        TakePicture(dialog, u"merge-preview"_s);
        Find<QPushButton>(dialog, u"cmdSynchronize"_s)->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void report_leadsToItems()
    {
        frmMergeReport dialog(frmMergeReport::Purpose::Report);
        MergeReport other = Report(2);
        other.AsMother = false;
        dialog.SetReports({Report(400), other});
        dialog.show();
        auto* lines = Find<QTreeWidget>(dialog, u"lvLines"_s);
        auto* reports = Find<QComboBox>(dialog, u"cboReports"_s);
        QCOMPARE(reports->count(), 2);
        QCOMPARE(reports->itemText(0), u"2026-03-02 14:30, changes of Laptop"_s);
        QCOMPARE(reports->itemText(1), u"2026-03-02 14:30, answer of Laptop"_s);
        TakePicture(dialog, u"merge-report"_s);
        Find<QLineEdit>(dialog, u"txtFilter"_s)->setText(u"item number 399"_s);
        QCOMPARE(lines->topLevelItem(0)->text(1), u"Item number 399"_s);
        Find<QPushButton>(dialog, u"cmdShow"_s)->click();
        QCOMPARE(dialog.ChosenItem(), 399);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void lineWithoutAnItem_leadsNowhere()
    {
        frmMergeReport dialog(frmMergeReport::Purpose::Report);
        dialog.SetReports({Report(5)});
        auto* lines = Find<QTreeWidget>(dialog, u"lvLines"_s);
        lines->setCurrentItem(lines->topLevelItem(3));
        QVERIFY(!Find<QPushButton>(dialog, u"cmdShow"_s)->isEnabled());
        lines->setCurrentItem(lines->topLevelItem(1));
        QVERIFY(Find<QPushButton>(dialog, u"cmdShow"_s)->isEnabled());
    }

    void nothingYet_isSaid()
    {
        frmMergeReport dialog(frmMergeReport::Purpose::Report);
        dialog.SetReports({});
        dialog.show();
        QCOMPARE(Find<QLabel>(dialog, u"lblSummary"_s)->text(), u"This library has not been synchronized yet."_s);
        QVERIFY(!Find<QComboBox>(dialog, u"cboReports"_s)->isVisible());
        TakePicture(dialog, u"merge-report-empty"_s);
    }
};

QB_GUI_TEST_MAIN(TestMergeReport)
#include "tst_merge_report.moc"
