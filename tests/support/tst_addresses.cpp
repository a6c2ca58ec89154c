#include "platform/system/Shell.h"
#include "support/Addresses.h"
#include "support/TestRun.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Links in notes and pages may come from strangers.
class TestAddresses : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnWarnings(); }

    void address_isOpenedAskedForOrRefused_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<AddressAnswer>("answer");
        const auto row = [](const QString& address, AddressAnswer answer) {
            QTest::addRow("%s", qPrintable(address)) << address << answer;
        };
        row(u"https://example.org/a?b=c"_s, AddressAnswer::Open);
        row(u"HTTP://example.org"_s, AddressAnswer::Open);
        row(u"mailto:a@example.org?subject=x"_s, AddressAnswer::Open);
        row(u"mailto:a@example.org?attach=/etc/passwd"_s, AddressAnswer::Refuse);
        row(u"mailto:a@example.org?%61ttachment=/etc/passwd"_s, AddressAnswer::Refuse);
        row(u"https://"_s, AddressAnswer::Refuse);
        row(u"--version"_s, AddressAnswer::Refuse);
        row(u" -x"_s, AddressAnswer::Refuse);
        row(u"ssh://-oProxyCommand=x/"_s, AddressAnswer::Refuse);
        row(u"ssh://host/"_s, AddressAnswer::Ask);
        row(u"file:///usr/bin/x.desktop"_s, AddressAnswer::Refuse);
        row(u"file:///tmp/x.desktop%20"_s, AddressAnswer::Refuse);
        row(u"file:///tmp/setup.sh"_s, AddressAnswer::Refuse);
        row(u"file:///tmp/text.txt"_s, AddressAnswer::Ask);
        row(u"/tmp/x.jnlp"_s, AddressAnswer::Refuse);
        row(u"smb://host/share"_s, AddressAnswer::Ask);
        row(u"javascript:alert(1)"_s, AddressAnswer::Ask);
        row(u"https://example.org/\nx"_s, AddressAnswer::Refuse);
        row(QString(), AddressAnswer::Refuse);
    }
    void address_isOpenedAskedForOrRefused()
    {
        QFETCH(QString, address);
        QTEST(AnswerAddress(address), "answer");
    }

    void shownAddress_hidesNothing()
    {
        QCOMPARE(ShownAddress(u"https://example.org/ä?b=c"_s), u"https://example.org/ä?b=c"_s);
        QCOMPARE(ShownAddress(u"https://a.org/\u202Egpj.exe\n"_s), u"https://a.org/\\u202egpj.exe\\u000a"_s);
        QCOMPARE(ShownAddress(QString(700, u'x')), QString(500, u'x') + u"..."_s);
    }

    void whatADesktopMayRun_isAProgram_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("program");
        for (const QString& name : {u"a.jnlp"_s, u"a.flatpakref"_s, u"a.url"_s, u"a.docm"_s, u"a.desktop "_s,
                                    u"a.exe."_s, u"a.desktop"_s, u"A.XLSM"_s})
            QTest::addRow("%s", qPrintable(name)) << name << true;
        for (const QString& name : {u"a.txt"_s, u"a.docx"_s, u"a.pdf"_s, u"url"_s, u"a.cpp "_s})
            QTest::addRow("%s", qPrintable(name)) << name << false;
    }
    void whatADesktopMayRun_isAProgram()
    {
        QFETCH(QString, name);
        QTEST(IsProgram(name), "program");
    }

    void targetThatIsAnOption_isNotOpened() { QVERIFY(!OpenTarget(u"--version"_s)); }
};

QB_TEST_MAIN(TestAddresses)
#include "tst_addresses.moc"
