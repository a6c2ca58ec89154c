#include "session/ItemLinking.h"
#include "support/TestSession.h"

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// The link modes: two clicks make a link.
class TestItemLinking : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        s = std::make_unique<TestSession>();
        Library& database = s->OpenLibrary();
        for (const QString& title : {u"source"_s, u"target"_s, u"folder"_s})
            m_ids[title] = AddItem(database, 0, title);
        s->State.oCodeItem = std::make_unique<CCodeItem>();
        s->Tree.FillTree();
        m_linking = std::make_unique<ItemLinking>(s->State, s->View, s->CommandStates);
        s->Items.AddNewLinkToSelectedItem = [this](const QString& title) {
            m_linking->AddNewLinkToSelectedItem(title);
        };
        s->Tree.ItemShown = [this] { m_linking->ShowLinks(); };
        s->Click(u"source"_s);
    }
    void cleanup()
    {
        m_linking.reset();
        s.reset();
    }

    void mode_startsForAnItemOnly()
    {
        m_linking->CreateNewLink(LinkMode::TwoWay);
        QCOMPARE(s->View.Mode, LinkMode::TwoWay);
        m_linking->EndLinkMode();
        QCOMPARE(s->View.Mode, LinkMode::None);
        QCOMPARE(s->State.Mode, LinkMode::None);
        s->Select(u"Ali äs Library"_s);
        m_linking->CreateNewLink(LinkMode::TwoWay);
        QCOMPARE(s->State.Mode, LinkMode::None);
        s->View.Selected = -1;
        m_linking->CreateNewLink(LinkMode::TwoWay);
        QCOMPARE(s->State.Mode, LinkMode::None);
    }

    void secondClick_makesTheLink_data()
    {
        QTest::addColumn<LinkMode>("mode");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QStringList>("listed");
        QTest::addColumn<bool>("described");
        QTest::newRow("from") << LinkMode::OneWayFrom << u"source>target"_s << QStringList{u"target>"_s} << true;
        QTest::newRow("to") << LinkMode::OneWayTo << u"target>source"_s << QStringList() << false;
        QTest::newRow("two way") << LinkMode::TwoWay << u"source>target target>source"_s << QStringList{u"target<>"_s}
                                 << true;
    }
    void secondClick_makesTheLink()
    {
        QFETCH(LinkMode, mode);
        QFETCH(QString, rows);
        QFETCH(QStringList, listed);
        QFETCH(bool, described);
        Link(mode, u"target"_s,
             u"A new link has been successfully created."_s
                 + (described ? u"\r\nNow you can enter a description of the link if you wish."_s : QString()));
        QCOMPARE(s->View.Links, listed);
        QCOMPARE(s->State.Mode, LinkMode::None);
        QCOMPARE(s->View.Mode, LinkMode::None);
        QCOMPARE(s->Selected(), u"source"_s); // again
        QCOMPARE(s->State.oCodeItem->Title(), u"source"_s);
        QVERIFY(s->State.oCodeItem->LinksChanged());
        QCOMPARE(Rows(), QString()); // until it is saved
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), rows);
    }

    void linkThatIsThere_isKeptOrExtended_data()
    {
        QTest::addColumn<LinkMode>("first");
        QTest::addColumn<LinkMode>("second");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("rows");
        const QString exists = u"This link already exists."_s;
        const QString both = u"source>target target>source"_s;
        QTest::newRow("1, 1") << LinkMode::OneWayFrom << LinkMode::OneWayFrom << exists << u"source>target"_s;
        QTest::newRow("1, 2") << LinkMode::OneWayFrom << LinkMode::OneWayTo
                              << u"Right side or the link (target to source) has been added."_s << both;
        QTest::newRow("1, 5") << LinkMode::OneWayFrom << LinkMode::TwoWay
                              << u"Right side or the link (target to source) has been added."_s << both;
        QTest::newRow("2, 2") << LinkMode::OneWayTo << LinkMode::OneWayTo << exists << u"target>source"_s;
        QTest::newRow("2, 1") << LinkMode::OneWayTo << LinkMode::OneWayFrom
                              << u"Left side of the link (source to target) has been added."_s << both;
        QTest::newRow("3, 1") << LinkMode::TwoWay << LinkMode::OneWayFrom << exists << both;
        QTest::newRow("3, 2") << LinkMode::TwoWay << LinkMode::OneWayTo << exists << both;
        QTest::newRow("3, 3") << LinkMode::TwoWay << LinkMode::TwoWay << exists << both;
    }
    void linkThatIsThere_isKeptOrExtended()
    {
        QFETCH(LinkMode, first);
        QFETCH(LinkMode, second);
        QFETCH(QString, message);
        QFETCH(QString, rows);
        Link(first, u"target"_s);
        Link(second, u"target"_s, message);
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), rows);
        QCOMPARE(s->View.Links.size(), rows.startsWith(u"source"_s) ? 1 : 0);
    }

    void permanentMode_stays()
    {
        s->View.Permanent = true;
        m_linking->CreateNewLink(LinkMode::OneWayFrom);
        ClickInMode(u"target"_s);
        QCOMPARE(s->State.Mode, LinkMode::OneWayFrom);
        ClickInMode(u"folder"_s);
        QCOMPARE(s->View.Links, (QStringList{u"target>"_s, u"folder>"_s}));
        m_linking->EndLinkMode();
        QCOMPARE(s->View.Mode, LinkMode::None);
    }

    void mode_endsWhenAnotherItemIsCurrent()
    {
        m_linking->CreateNewLink(LinkMode::TwoWay);
        s->Tree.GoToNode(s->Node(u"folder"_s).Key());
        QCOMPARE(s->State.Mode, LinkMode::None);
        QCOMPARE(s->View.Mode, LinkMode::None);
    }

    void itemItselfAndRoot_areNoTargets()
    {
        for (const QString& title : {u"source"_s, u"Ali äs Library"_s}) {
            Link(LinkMode::OneWayFrom, title, u"An item can be linked with another item only."_s);
            QVERIFY(!s->State.oCodeItem->LinksChanged());
        }
    }

    void newItem_isLinkedOnceItHasItsTitle_data()
    {
        QTest::addColumn<LinkMode>("mode");
        QTest::addColumn<QString>("rows");
        QTest::newRow("from") << LinkMode::OneWayNewFrom << u"source>fresh"_s;
        QTest::newRow("two way") << LinkMode::TwoWayNew << u"source>fresh fresh>source"_s;
        QTest::newRow("to") << LinkMode::OneWayNewTo << u"fresh>source"_s;
    }
    void newItem_isLinkedOnceItHasItsTitle()
    {
        QFETCH(LinkMode, mode);
        QFETCH(QString, rows);
        m_linking->CreateNewLink(mode);
        if (mode == LinkMode::OneWayNewTo)
            s->Script.ExpectMsgBox(u"Pure Link Item?"_s, MsgBoxResult::No);
        ClickOnly(u"folder"_s);
        QCOMPARE(s->Selected(), u"New Code item"_s);
        QCOMPARE(s->View.Edited, s->View.Selected);
        QCOMPARE(s->State.oCodeItem->Title(), u"source"_s);
        s->Script.ExpectMsgBox(u"New Link Creation"_s);
        QVERIFY(s->Items.AfterLabelEdit(s->Node(u"New Code item"_s), u"fresh"_s));
        s->Items.LabelEditEnded(s->Node(u"fresh"_s));
        s->Items.LabelEditEnded(s->Node(u"fresh"_s)); // once
        QCOMPARE(s->Selected(), u"source"_s);
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), rows);
        QCOMPARE(s->Shape(), u"Ali äs Library(folder(fresh) source target)"_s);
        QCOMPARE(ItemStatus(u"fresh"_s), 2);
    }

    void newItemWithItsPresetTitle_isLinkedToo()
    {
        m_linking->CreateNewLink(LinkMode::TwoWayNew);
        ClickOnly(u"folder"_s);
        s->Script.ExpectMsgBox(u"New Link Creation"_s);
        s->Items.LabelEditEnded(s->Node(u"New Code item"_s));
        QCOMPARE(s->View.Links, QStringList{u"New Code item<>"_s});
        QCOMPARE(s->State.Mode, LinkMode::None);
    }

    void pureLinkItem_isLinkedAtOnce()
    {
        m_linking->CreateNewLink(LinkMode::OneWayNewTo);
        s->Script.ExpectMsgBox(u"Pure Link Item?"_s, MsgBoxResult::Yes);
        s->Script.ExpectMsgBox(u"New Link Creation"_s);
        ClickOnly(u"folder"_s);
        QCOMPARE(s->Script.Messages[0].Text, u"Are you creating a 'pure link item'?"_s);
        QCOMPARE(s->View.Edited, -1);
        QCOMPARE(s->Selected(), u"source"_s);
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), u"source (LINK)>source"_s);
        QCOMPARE(s->Node(u"source (LINK)"_s).Tag(), u"*** LINK ITEM ONLY ***"_s);
        QCOMPARE(s->State.CurrentDatabase->QueryValue(u"SELECT Description FROM Items WHERE Title = 'source (LINK)'"_s)
                     .ToText(),
                 u"*** LINK ITEM ONLY ***"_s);
        QVERIFY(ItemStatus(u"source (LINK)"_s) != 2);
    }

    void advancedMode_asksForTheDirection()
    {
        std::optional<LinkDirection> answer = LinkDirection::Right;
        m_linking->AskDirection = [&answer] { return answer; };
        Link(LinkMode::Advanced, u"target"_s, u"A new link has been successfully created."_s);
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), u"target>source"_s);
        answer.reset(); // cancelled
        m_linking->CreateNewLink(LinkMode::Advanced);
        ClickOnly(u"folder"_s);
        QCOMPARE(s->State.Mode, LinkMode::None);
        QVERIFY(!s->State.oCodeItem->LinksChanged());
    }

    void link_isRemovedAsAsked_data()
    {
        QTest::addColumn<LinkDirection>("left");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QStringList>("listed");
        QTest::newRow("all") << LinkDirection::None << QString() << QStringList();
        QTest::newRow("left side") << LinkDirection::Right << u"target>source"_s << QStringList();
        QTest::newRow("right side") << LinkDirection::Left << u"source>target"_s << QStringList{u"target>"_s};
    }
    void link_isRemovedAsAsked()
    {
        QFETCH(LinkDirection, left);
        QFETCH(QString, rows);
        QFETCH(QStringList, listed);
        Link(LinkMode::TwoWay, u"target"_s);
        QVERIFY(s->Items.SaveItem());
        s->State.oCodeItem->LoadLinks();
        const QString key = CLinks::KeyOf(m_ids[u"target"_s]);
        m_linking->AskRelationshipDelete = [](LinkDirection) { return std::optional<LinkDirection>(); };
        m_linking->DeleteLink(key);
        QVERIFY(!s->State.oCodeItem->LinksChanged());
        LinkDirection shown{};
        m_linking->AskRelationshipDelete = [&](LinkDirection direction) {
            shown = direction;
            return std::optional(left);
        };
        m_linking->DeleteLink(key);
        QCOMPARE(shown, LinkDirection::Both);
        QCOMPARE(s->View.Links, listed);
        QVERIFY(s->State.oCodeItem->Links().DirtyFlag);
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), rows);
    }

    void removedLink_canBeMadeAgainBeforeItIsSaved()
    {
        Link(LinkMode::OneWayFrom, u"target"_s);
        QVERIFY(s->Items.SaveItem());
        s->State.oCodeItem->LoadLinks();
        m_linking->AskRelationshipDelete = [](LinkDirection) { return std::optional(LinkDirection::None); };
        m_linking->DeleteLink(CLinks::KeyOf(m_ids[u"target"_s]));
        Link(LinkMode::OneWayFrom, u"target"_s, u"A new link has been successfully created."_s);
        QVERIFY(s->Items.SaveItem());
        QCOMPARE(Rows(), u"source>target"_s);
    }

    void unsavedLink_isAskedAbout()
    {
        s->Items.SetAutoSaveOn(false);
        Link(LinkMode::OneWayFrom, u"target"_s);
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::No);
        s->Click(u"target"_s);
        QCOMPARE(Rows(), QString());
        s->Click(u"source"_s);
        QCOMPARE(s->View.Links, QStringList());
        Link(LinkMode::OneWayFrom, u"target"_s);
        s->Script.ExpectMsgBox(u"Save Item"_s, MsgBoxResult::Yes);
        s->Click(u"target"_s);
        QCOMPARE(Rows(), u"source>target"_s);
        s->Click(u"source"_s);
        QCOMPARE(s->View.Links, QStringList{u"target>"_s});
    }

    void listOfLinks_isToldOfThoseThatLeadFromTheItem()
    {
        QStringList told;
        m_linking->AddNewLinkToList = [&](const CLink& link) { told << u"new "_s + link.LinkedItemTitle; };
        m_linking->UpdateItemLinkInList = [&](const CLink& link) { told << u"both "_s + link.LinkedItemTitle; };
        Link(LinkMode::OneWayTo, u"target"_s); // leads to it
        QCOMPARE(told, QStringList());
        Link(LinkMode::OneWayFrom, u"target"_s);
        QCOMPARE(told, QStringList{u"both target"_s});
        Link(LinkMode::OneWayFrom, u"folder"_s);
        QCOMPARE(told, (QStringList{u"both target"_s, u"new folder"_s}));
    }

    void linkOfAnotherItem_isRemovedWithoutATouchOfTheCurrentOne()
    {
        Link(LinkMode::OneWayFrom, u"target"_s);
        QVERIFY(s->Items.SaveItem());
        s->Click(u"target"_s);
        CCodeItem other;
        other.Initialise(*s->State.CurrentDatabase, QString::number(s->Node(u"source"_s).Id));
        const QString key = CLinks::KeyOf(s->Node(u"target"_s).Id);
        m_linking->AskRelationshipDelete = [](LinkDirection) -> std::optional<LinkDirection> { return {}; };
        QVERIFY(!m_linking->DeleteLinkOf(other, key));
        m_linking->AskRelationshipDelete = [](LinkDirection) { return std::optional(LinkDirection::None); };
        QVERIFY(!m_linking->DeleteLinkOf(other, u"L99"_s));
        QVERIFY(!other.LinksChanged());
        QVERIFY(m_linking->DeleteLinkOf(other, key));
        QVERIFY(!s->State.oCodeItem->LinksChanged());
        QVERIFY(other.Commit());
        QCOMPARE(Rows(), QString());
    }

private:
    void Link(LinkMode mode, const QString& title, const QString& message = {})
    {
        m_linking->CreateNewLink(mode);
        ClickInMode(title);
        if (!message.isEmpty())
            QCOMPARE(s->Script.Messages.last().Text, message);
        QCOMPARE(s->Script.Messages.last().Icon, MsgBoxIcon::Information);
    }
    void ClickInMode(const QString& title)
    {
        s->Script.ExpectMsgBox(u"New Link Creation"_s);
        ClickOnly(title);
    }
    void ClickOnly(const QString& title)
    {
        s->Select(title);
        s->Items.tvCodeItems_NodeClick(s->Node(title));
    }
    QString Rows()
    {
        return Texts(*s->State.CurrentDatabase,
                     u"SELECT a.Title || '>' || b.Title FROM ItemLinks JOIN Items a ON a.ID = ItemID "
                     "JOIN Items b ON b.ID = LinkItemID ORDER BY ItemLinks.ID"_s)
            .join(u' ');
    }
    qint64 ItemStatus(const QString& title)
    {
        return s->State.CurrentDatabase->QueryValue(u"SELECT ItemStatus FROM Items WHERE Title = ?"_s, {title})
            .ToLong();
    }

    std::unique_ptr<TestSession> s;
    std::unique_ptr<ItemLinking> m_linking;
    QHash<QString, qint64> m_ids;
};

QTEST_GUILESS_MAIN(TestItemLinking)
#include "tst_item_linking.moc"
