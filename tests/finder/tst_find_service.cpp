#include "find/FindCache.h"
#include "finder/FindService.h"
#include "store/CCodeItem.h"
#include "support/LibraryBuilder.h"
#include "support/TestRun.h"

#include <QSignalSpy>
#include <condition_variable>

using namespace qb;
using namespace qb::test;
using namespace Qt::StringLiterals;

/// Collects what a request tells.
class Answer {
public:
    explicit Answer(std::unique_ptr<FindRequest> request) : m_request(std::move(request))
    {
        QObject::connect(m_request.get(), &FindRequest::Found, [this](const std::vector<FindHit>& hits) {
            for (const FindHit& hit : hits)
                Ids.push_back(hit.Id);
            std::sort(Ids.begin(), Ids.end());
        });
        QObject::connect(m_request.get(), &FindRequest::Started, [this] { ++Starts; });
        QObject::connect(m_request.get(), &FindRequest::Failed, [this](const QString& reason) { Reason = reason; });
    }
    bool HasEnded() const { return m_request->HasEnded(); }
    FindRequest& Request() { return *m_request; }
    void Drop() { m_request.reset(); }

    std::vector<qint64> Ids;
    int Starts = 0;
    QString Reason;

private:
    std::unique_ptr<FindRequest> m_request;
};

class TestFindService : public QObject {
    Q_OBJECT

private:
    using Ids = std::vector<qint64>;

    static FindQuery QueryFor(const QString& text)
    {
        FindQuery query;
        query.Text = text;
        return query;
    }
    Answer Ask(FindService& service, const QString& text) { return Answer(service.Start(QueryFor(text))); }
    Ids Found(FindService& service, const QString& text)
    {
        Answer answer(service.Start(QueryFor(text)));
        [&] { QTRY_VERIFY(answer.HasEnded()); }();
        return answer.Ids;
    }
    void SetTitle(qint64 id, const QString& title)
    {
        CCodeItem item;
        item.Initialise(*m_library, QString::number(id));
        item.SetTitle(title);
        item.SetItemChanged(true);
        QVERIFY(item.Commit());
    }

    /// On which HopelessQuery would be busy for seconds.
    void AddHopelessTexts()
    {
        constexpr int Items = 3000;
        Transaction transaction(*m_library);
        for (int i = 0; i < Items; ++i)
            AddItem(*m_library, 0, u"long"_s, QString(300, u'x') + u" y"_s);
        transaction.Commit();
    }
    static FindQuery HopelessQuery()
    {
        FindQuery query = QueryFor(u"(x+x+)+y"_s);
        query.Mode = FindMode::Expression;
        return query;
    }

    std::optional<TemporaryHome> m_home;
    std::unique_ptr<Library> m_library;
    qint64 m_a = 0, m_b = 0;

private Q_SLOTS:
    void init()
    {
        FailOnWarnings();
        m_home.emplace();
        m_library = MakeLibrary(m_home->Path(u"service ä.qbd"_s), LanguageType::None);
        m_a = AddItem(*m_library, 0, u"alpha"_s, u"std::move(x) one"_s);
        m_b = AddItem(*m_library, m_a, u"beta"_s, u"one\r\nlines"_s);
    }
    void cleanup()
    {
        m_library.reset();
        m_home.reset();
    }

    void opened_readsTheTextsInTheBackground()
    {
        FindService service;
        QCOMPARE(service.CurrentState(), FindService::State::Closed);
        QSignalSpy texts(&service, &FindService::TextsChanged);
        service.Open(m_library->Name());
        QCOMPARE(service.CurrentState(), FindService::State::Reading);
        QCOMPARE(service.StateText(), u"Texts are being read"_s);
        QVERIFY(service.IsBusy());
        QTRY_VERIFY(!service.IsBusy());
        QCOMPARE(service.CurrentState(), FindService::State::Ready);
        QCOMPARE(texts.size(), 1);
        QCOMPARE(service.Texts()->Items(), size_t(2));
        QCOMPARE(service.StateText(), QString());
    }

    void search_tellsWhatItFindsAndItsEnd()
    {
        FindService service;
        service.Open(m_library->Name());
        Answer answer = Ask(service, u"one"_s);
        QVERIFY(!answer.HasEnded());
        QTRY_VERIFY(answer.HasEnded());
        QCOMPARE(answer.Ids, (Ids{m_a, m_b}));
        QCOMPARE(answer.Starts, 1);
        QVERIFY(answer.Request().Outcome().IsComplete());
        QVERIFY(answer.Request().Texts());
        QCOMPARE(Found(service, u"nothing of this"_s), Ids{});
    }

    void searchWithoutALibrary_isRefused()
    {
        FindService service;
        QB_VERIFY_RAISES((void)service.Start(QueryFor(u"one"_s)), ErrorNumber::ObjectNotSet);
        service.Open(m_library->Name());
        QB_VERIFY_RAISES((void)service.Start(QueryFor({})), ErrorNumber::InvalidCall);
        service.Close();
        QB_VERIFY_RAISES((void)service.Start(QueryFor(u"one"_s)), ErrorNumber::ObjectNotSet);
    }

    void whatWasSaved_isFoundByTheNextSearch()
    {
        FindService service;
        service.Open(m_library->Name());
        QTRY_VERIFY(!service.IsBusy());
        SetTitle(m_b, u"renamed"_s);
        service.Saved({m_b});
        QTRY_VERIFY(!service.IsBusy());
        QCOMPARE(service.Texts()->Title(*service.Texts()->Find(m_b)), u"renamed"_s);
        QCOMPARE(Found(service, u"renamed"_s), Ids{m_b});
        SetTitle(m_a, u"unsaid"_s); // a search brings the texts in step whoever has changed the library
        QCOMPARE(Found(service, u"unsaid"_s), Ids{m_a});
        SetTitle(m_a, u"again"_s);
        service.Update();
        QTRY_VERIFY(!service.IsBusy());
        QCOMPARE(service.Texts()->Title(*service.Texts()->Find(m_a)), u"again"_s);
    }

    void cancelledRequest_tellsNothingButItsEnd()
    {
        FindService service;
        service.Open(m_library->Name());
        Answer answer = Ask(service, u"one"_s);
        answer.Request().Cancel();
        QTRY_VERIFY(answer.HasEnded());
        QVERIFY(answer.Request().Outcome().IsCancelled);
        QCOMPARE(answer.Ids, Ids{});
    }

    void droppedRequest_isNotHeardOf()
    {
        FindService service;
        service.Open(m_library->Name());
        Answer answer = Ask(service, u"one"_s);
        answer.Drop();
        QTRY_VERIFY(!service.IsBusy());
        QCOMPARE(answer.Starts, 0);
        QCOMPARE(Found(service, u"lines"_s), Ids{m_b});
    }

    void hopelessExpression_endsWhenItIsCancelled()
    {
        AddHopelessTexts();
        FindService service;
        service.Open(m_library->Name());
        QTRY_VERIFY(!service.IsBusy());
        Answer answer(service.Start(HopelessQuery()));
        QTRY_COMPARE(answer.Starts, 1);
        answer.Request().Cancel();
        QTRY_VERIFY(answer.HasEnded()); // by itself it would go on for longer
        QVERIFY(answer.Request().Outcome().IsCancelled);
    }

    void closedInTheMiddleOfASearch_doesNotWaitForIt()
    {
        AddHopelessTexts();
        FindService service;
        service.Open(m_library->Name());
        Answer answer(service.Start(HopelessQuery()));
        QTRY_COMPARE(answer.Starts, 1);
        service.Close();
        QTRY_VERIFY(answer.HasEnded());
        QVERIFY(answer.Request().Outcome().IsCancelled);
    }

    void closed_nobodyHasTheLibraryOpen()
    {
        FindService service;
        service.Open(m_library->Name());
        Answer waiting = Ask(service, u"one"_s);
        service.Close();
        QCOMPARE(service.CurrentState(), FindService::State::Closed);
        QVERIFY(!service.Texts());
        QVERIFY(!service.IsBusy());
        const QString path = m_library->Name();
        m_library.reset();
        const QFileInfoList open =
            QDir(u"/proc/self/fd"_s).entryInfoList(QDir::NoDotAndDotDot | QDir::System | QDir::Files);
        for (const QFileInfo& file : open)
            QVERIFY(file.symLinkTarget() != path);
        QTRY_VERIFY(waiting.HasEnded());
        QVERIFY(waiting.Request().Outcome().IsCancelled);
        service.Close(); // nothing to do
    }

    void anotherLibrary_whatTheFirstHadToSayIsNotHeard()
    {
        const auto other = MakeLibrary(m_home->Path(u"other.qbd"_s), LanguageType::None);
        const qint64 only = AddItem(*other, 0, u"gamma"_s, u"one"_s);
        FindService service;
        service.Open(m_library->Name());
        service.Open(other->Name());
        QCOMPARE(Found(service, u"one"_s), Ids{only});
        QCOMPARE(service.Texts()->Items(), size_t(1));
        QTRY_VERIFY(!service.IsBusy());
    }

    void unreadableLibrary_isSaidAndTriedAgain()
    {
        const QString path = m_home->Path(u"not there.qbd"_s);
        FindService service;
        service.Open(path);
        QTRY_COMPARE(service.CurrentState(), FindService::State::Failed);
        QVERIFY2(service.StateText().contains(path), qPrintable(service.StateText()));
        Answer refused = Ask(service, u"one"_s);
        QTRY_VERIFY(refused.HasEnded());
        QCOMPARE(refused.Reason, service.Failure());
        const QString own = m_library->Name();
        m_library.reset();
        QVERIFY(QFile::copy(own, path));
        QCOMPARE(Found(service, u"one"_s).size(), size_t(2));
        QCOMPARE(service.CurrentState(), FindService::State::Ready);
        QCOMPARE(service.StateText(), QString());
    }

    void damagedTexts_areReadAgainAndWhatWasFoundCountsNoMore()
    {
        FindService service;
        service.Open(m_library->Name());
        QTRY_VERIFY(!service.IsBusy());
        QVERIFY(QFile::resize(FindCache(m_library->Name()).FilePath(), 0));
        Answer answer = Ask(service, u"lines"_s);
        QTRY_VERIFY(answer.HasEnded());
        QCOMPARE(answer.Ids, Ids{m_b});
        QCOMPARE(answer.Starts, 2);
        QVERIFY(answer.Request().Outcome().IsComplete());
    }

    void serviceThatGoes_leavesItsRequestsAlone()
    {
        auto service = std::make_unique<FindService>();
        service->Open(m_library->Name());
        Answer answer = Ask(*service, u"one"_s);
        service.reset();
        answer.Request().Cancel();
        QVERIFY(!answer.HasEnded());
    }
};

QB_TEST_MAIN(TestFindService)
#include "tst_find_service.moc"
