#include "platform/system/SettingsStore.h"
#include "session/WindowLayout.h"
#include "support/TestRun.h"

#include <QTest>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The window's place and layout in the user's settings.
class TestWindowLayout : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home = std::make_unique<TemporaryHome>();
    }
    void cleanup() { m_home.reset(); }

    void freshStore_givesTheDefaults()
    {
        const WindowLayout layout = ReadAll();
        QCOMPARE(layout.Place(), QRect(2880, 1620, 23040, 12960));
        QCOMPARE(layout.Number(WindowLayout::WindowState), int(WindowLayout::Maximised));
        QCOMPARE(layout.Flag(WindowLayout::ViewBookMarks), true);
        QCOMPARE(layout.Flag(WindowLayout::FormatTlbrNewRow), false);
        QCOMPARE(layout.Number(WindowLayout::FormatTlbrPoss), 6405);
        QCOMPARE(layout.Number(WindowLayout::SmartTreeCoolBarBendWidth), 3165);
        QCOMPARE(layout.Flag(WindowLayout::AutoSave), true);
        QCOMPARE(layout.Flag(WindowLayout::BookmarkSingleClick), false);
        QCOMPARE(layout.Flag(WindowLayout::FindResultsSingleClick), false);
        QCOMPARE(layout.Number(WindowLayout::SearchResultsViewType), 0);
        QCOMPARE(layout.Number(WindowLayout::MainResizerSeparatorPos), 9000);
        QCOMPARE(layout.Number(WindowLayout::SubResizerSeparatorPos), 3000);
        QCOMPARE(layout.Number(WindowLayout::CodeItemsSeparatorPos), 6700);
        QCOMPARE(layout.Number(WindowLayout::FileSectionSeparatorPos), 4500);
    }

    void address_isAsWideAsItsRowOrBandLetsIt()
    {
        WindowLayout layout = ReadAll();
        QCOMPARE(layout.AddressWidth(12000, 5000), 5000);
        QCOMPARE(layout.AddressWidth(12000, 11000), 8335); // no wider than in a row of its own
        layout.SetFlag(WindowLayout::FormatTlbrNewRow, true);
        QCOMPARE(layout.AddressWidth(12000, 5000), 8335);
        QCOMPARE(layout.AddressWidth(3000, 5000), 0);
    }

    void everyKey_isWrittenAndReadBack()
    {
        WindowLayout layout = ReadAll();
        for (int key = 0; key < WindowLayout::KeyCount; ++key)
            layout.SetNumber(WindowLayout::Key(key), 100 + key);
        layout.SetNumber(WindowLayout::WindowState, WindowLayout::Normal);
        layout.SetFlag(WindowLayout::AutoSave, false);
        layout.Save(false);
        const WindowLayout again = ReadAll();
        for (int key = 0; key < WindowLayout::KeyCount; ++key) {
            if (key != WindowLayout::WindowState && key != WindowLayout::AutoSave)
                QCOMPARE(again.Number(WindowLayout::Key(key)), 100 + key);
        }
        QCOMPARE(again.Number(WindowLayout::WindowState), int(WindowLayout::Normal));
        QCOMPARE(again.Flag(WindowLayout::AutoSave), false);
        QCOMPARE(Stored(u"AutoSave"_s), u"False"_s);
        QCOMPARE(Stored(u"MainLeft"_s), u"100"_s);
    }

    void negativePlace_isSavedAsZero()
    {
        WindowLayout layout = ReadAll();
        layout.SetPlace({-3000, -15, 9000, 6000});
        layout.Save(false);
        QCOMPARE(ReadAll().Place(), QRect(0, 0, 9000, 6000));
    }

    void minimisedWindow_keepsPlaceAndSplitters()
    {
        WindowLayout layout = ReadAll();
        layout.SetPlace({1, 2, 3, 4});
        layout.Save(false);
        layout.SetPlace({5, 6, 7, 8});
        layout.SetNumber(WindowLayout::WindowState, WindowLayout::Minimised);
        layout.SetNumber(WindowLayout::SubResizerSeparatorPos, 1);
        layout.SetNumber(WindowLayout::FormatTlbrPoss, 77);
        layout.SetFlag(WindowLayout::AutoSave, false);
        layout.Save(false);
        const WindowLayout again = ReadAll();
        QCOMPARE(again.Place(), QRect(1, 2, 3, 4));
        QCOMPARE(again.Number(WindowLayout::WindowState), int(WindowLayout::Maximised));
        QCOMPARE(again.Number(WindowLayout::SubResizerSeparatorPos), 3000);
        QCOMPARE(again.Number(WindowLayout::FormatTlbrPoss), 77);
        QCOMPARE(again.Flag(WindowLayout::AutoSave), false);
    }

    void hiddenTree_keepsItsWidth()
    {
        WindowLayout layout = ReadAll();
        layout.SetNumber(WindowLayout::SubResizerSeparatorPos, 15);
        layout.SetNumber(WindowLayout::MainResizerSeparatorPos, 30);
        layout.Save(true);
        QCOMPARE(ReadAll().Number(WindowLayout::SubResizerSeparatorPos), 3000);
        QCOMPARE(ReadAll().Number(WindowLayout::MainResizerSeparatorPos), 30);
    }

    void noise_countsAsMissing()
    {
        SaveSetting(SettingsApplication, u"Settings"_s, u"MainWidth"_s, u"wide"_s);
        SaveSetting(SettingsApplication, u"Settings"_s, u"MainHeight"_s, u"99999999999"_s);
        QCOMPARE(ReadAll().Place(), QRect(2880, 1620, 23040, 12960));
    }

    void windowThatWasNeverShown_leavesTheSeparators()
    {
        WindowLayout layout;
        layout.Read({28800, 16200});
        layout.Save(false);
        QCOMPARE(Stored(u"SubResizerSeparatorPos"_s), u"none"_s);
        QCOMPARE(Stored(u"MainLeft"_s), u"2880"_s);
    }

private:
    static WindowLayout ReadAll()
    {
        WindowLayout layout;
        layout.Read({28800, 16200});
        layout.ReadSeparatorPositions({21000, 12000}, 8000);
        return layout;
    }
    static QString Stored(const QString& key) { return GetSetting(SettingsApplication, u"Settings"_s, key, u"none"_s); }

    std::unique_ptr<TemporaryHome> m_home;
};

QTEST_GUILESS_MAIN(TestWindowLayout)
#include "tst_window_layout.moc"
