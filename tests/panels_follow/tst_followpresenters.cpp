#include "RecordingFollowViews.h"
#include "TranslationService.h"
#include "WidgetPresenter/FocusFollowPresenter.h"
#include "WidgetPresenter/NoFocusFollowPresenter.h"

#include <QUrlQuery>

namespace {

using Panel = FocusFollowPanelPresenter;
using Fo = FocusFollowPresenter;

const QString kTranslatePath = TranslationService::path();

QByteArray translation(const QStringList& lines)
{
    QStringList entries;
    for (const QString& line : lines) {
        entries << QStringLiteral("{\"src\":\"x\",\"dst\":\"%1\"}").arg(line);
    }
    return QStringLiteral("{\"from\":\"zh\",\"to\":\"en\",\"trans_result\":[%1]}")
        .arg(entries.join(QLatin1Char(',')))
        .toUtf8();
}

void setPreferences(const std::function<void(UserPreferences&)>& change)
{
    TranslationService::setPreferences(change);
}

}  // namespace

// The rules of the two voice panels, against recording views and a local translation service.
class TestFollowPresenters : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void placement_data();
    void placement();
    void moveTimerSkipsHiddenPanel();
    void levelTimerRestsWhileHidden();
    void translationIsDebounced();
    void traditionalScriptNeedsSecondRequest_data();
    void traditionalScriptNeedsSecondRequest();
    void signsRemovedOnArrivalAndDelivery();
    void failedTranslationHints();
    void focusPanelHidePlans();
    void fixedPanelHidePlansInSingleClickMode();
    void preferencesReachTheView();
    void boxGrowthAndReadingPieces();

private:
    std::unique_ptr<Fo> focus(RecordingFocusFollowView* view)
    {
        return std::make_unique<Fo>(view, Panel::Collaborators{mService.http.get(), nullptr, nullptr});
    }
    std::unique_ptr<NoFocusFollowPresenter> fixed(RecordingNoFocusFollowView* view)
    {
        return std::make_unique<NoFocusFollowPresenter>(
            view, Panel::Collaborators{mService.http.get(), nullptr, nullptr});
    }
    QList<QUrlQuery> translateRequests() const
    {
        QList<QUrlQuery> queries;
        for (const LocalHttpServer::Request& request : mService.server.requests()) {
            const QUrl url = QUrl::fromEncoded(request.target);
            if (url.path() == kTranslatePath) {
                queries << QUrlQuery(url);
            }
        }
        return queries;
    }

    TranslationService mService;
    LocalHttpServer& mServer = mService.server;
    RecordingInputBackend& mDesktop = mService.desktop;
};

void TestFollowPresenters::initTestCase()
{
    mService.start();
}

void TestFollowPresenters::init()
{
    mService.reset();
}

void TestFollowPresenters::placement_data()
{
    QTest::addColumn<QPoint>("caret");
    QTest::addColumn<int>("page");
    QTest::addColumn<bool>("moves");
    QTest::addColumn<QPoint>("panel");
    QTest::addColumn<int>("arrowX");
    QTest::addColumn<bool>("arrow");
    // Screen 1920 by 1080; translation page 360 by 215 with a 36 arrow, badge 124 by 131 with 22.
    QTest::newRow("caret x 0 stays") << QPoint(0, 300) << 1 << false << QPoint() << 0 << true;
    QTest::newRow("caret y 0 stays") << QPoint(500, 0) << 1 << false << QPoint() << 0 << true;
    QTest::newRow("left of half arrow") << QPoint(10, 300) << 1 << true << QPoint(2, 300) << 2 << true;
    QTest::newRow("left half, wide") << QPoint(100, 300) << 1 << true << QPoint(2, 300) << 82 << true;
    QTest::newRow("left half, badge") << QPoint(40, 300) << 0 << true << QPoint(2, 300) << 18 << true;
    QTest::newRow("middle, wide") << QPoint(800, 300) << 2 << true << QPoint(620, 300) << 162 << true;
    QTest::newRow("middle, badge") << QPoint(800, 300) << 0 << true << QPoint(738, 300) << 51 << true;
    QTest::newRow("right half") << QPoint(1800, 300) << 1 << true << QPoint(1560, 300) << 222 << true;
    QTest::newRow("last pixels") << QPoint(1910, 300) << 1 << true << QPoint(1558, 300) << 322 << true;
    QTest::newRow("beyond the screen") << QPoint(2500, 300) << 0 << true << QPoint(1794, 300) << 95 << true;
    QTest::newRow("near the bottom: corner, no arrow")
        << QPoint(800, 900) << 1 << true << QPoint(1558, 863) << 162 << false;
    QTest::newRow("above the screen") << QPoint(800, -40) << 1 << true << QPoint(620, 2) << 162 << true;
    QTest::newRow("mic page has no arrow")
        << QPoint(800, 300) << 3 << true << QPoint(738, 300) << 51 << false;
}

void TestFollowPresenters::placement()
{
    QFETCH(QPoint, caret);
    QFETCH(int, page);
    const bool wide = page == 1 || page == 2;
    const QSize size = wide ? QSize(360, 215) : QSize(124, 131);
    const int arrow = page == 3 ? 0 : wide ? 36 : 22;
    const Fo::Placement placement = Fo::place(caret, QRect(0, 0, 1920, 1080), size, arrow, page);
    QTEST(placement.move, "moves");
    if (placement.move) {
        QTEST(placement.panel, "panel");
        QTEST(placement.arrowX, "arrowX");
        QTEST(placement.arrowVisible, "arrow");
    }
}

void TestFollowPresenters::moveTimerSkipsHiddenPanel()
{
    RecordingFocusFollowView view;
    auto presenter = focus(&view);
    presenter->startMoveWindow();
    QVERIFY(presenter->moveTimer().isActive());
    view.answers[QStringLiteral("IsHidden")] = true;
    view.calls.clear();
    presenter->onMoveTimeout();
    QVERIFY(view.callsOf(QStringLiteral("moveWindow")).isEmpty());
    QVERIFY(presenter->moveTimer().isActive());
    view.answers[QStringLiteral("IsHidden")] = false;
    presenter->onMoveTimeout();
    QCOMPARE(view.callsOf(QStringLiteral("moveWindow")).size(), 1);
    presenter->stopMoveWindow();
    QVERIFY(!presenter->moveTimer().isActive());
}

void TestFollowPresenters::levelTimerRestsWhileHidden()
{
    // Both panels: the level ticks while shown, the first tick of a hidden panel stops it
    // without touching the view, and showing the panel starts it again.
    RecordingFocusFollowView focusView;
    RecordingNoFocusFollowView fixedView;
    std::unique_ptr<Panel> presenters[] = {focus(&focusView), fixed(&fixedView)};
    CallRecorder* views[] = {&focusView, &fixedView};
    for (int i = 0; i < 2; ++i) {
        Panel& presenter = *presenters[i];
        CallRecorder& view = *views[i];
        QVERIFY(presenter.isLevelTimerActive());
        view.answers[QStringLiteral("IsHidden")] = false;
        view.calls.clear();
        presenter.onUpdateVolume();
        QCOMPARE(view.callsOf(QStringLiteral("onUpdateVolume")).size(), 1);
        QVERIFY(presenter.isLevelTimerActive());
        view.answers[QStringLiteral("IsHidden")] = true;
        presenter.onUpdateVolume();
        QCOMPARE(view.callsOf(QStringLiteral("onUpdateVolume")).size(), 1);
        QVERIFY(!presenter.isLevelTimerActive());
        view.answers[QStringLiteral("IsHidden")] = false;
        presenter.onViewShown();
        QVERIFY(presenter.isLevelTimerActive());
    }
}

void TestFollowPresenters::translationIsDebounced()
{
    setPreferences([](UserPreferences& p) {
        p.voiceTranslateSourceLanguage = 3;
        p.voiceTranslateTargetLanguage = 0;
    });
    RecordingFocusFollowView view;
    auto presenter = focus(&view);
    view.calls.clear();
    presenter->translate(QString());
    QVERIFY(view.calls.isEmpty());
    presenter->translate(QStringLiteral("he"));
    presenter->translate(QStringLiteral("hello"));
    QVERIFY(!presenter->isTranslateFinish());
    QVERIFY(presenter->translateTimer().isActive());
    // The caret panel shows its hint before it stores the text; the fixed one after.
    QCOMPARE(view.calls.first(), QStringLiteral("setTranslateStatus(1)"));
    presenter->onTranslateTimeout();
    QTRY_COMPARE(view.callsOf(QStringLiteral("setVoiceTranslateTargetText")),
                 QStringList{QStringLiteral("setVoiceTranslateTargetText(Hello)")});
    QVERIFY(presenter->isTranslateFinish());
    const QList<QUrlQuery> requests = translateRequests();
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.first().queryItemValue(QStringLiteral("q")), QStringLiteral("hello"));
    QCOMPARE(requests.first().queryItemValue(QStringLiteral("from")), QStringLiteral("en_us"));
    QCOMPARE(requests.first().queryItemValue(QStringLiteral("to")), QStringLiteral("zh"));

    // The final result comes while the partial's request is out: its answer finishes nothing,
    // and a panel waiting to close waits for the final's.
    mServer.setAnswer(kTranslatePath, {200, translation({QStringLiteral("Hello")}), 300});
    presenter->translate(QStringLiteral("hell"));
    presenter->onTranslateTimeout();
    presenter->translate(QStringLiteral("hello."));
    presenter->setWaitingToHideStatus(true);
    QTest::qWait(500);
    QVERIFY(!presenter->isTranslateFinish());
    QVERIFY(view.callsOf(QStringLiteral("toWaitingHide")).isEmpty());
    presenter->setWaitingToHideStatus(false);
    mServer.setAnswer(kTranslatePath, {200, translation({QStringLiteral("Hello")})});

    // A late answer for a panel that was told to wait hands over to toWaitingHide().
    presenter->translate(QStringLiteral("again"));
    presenter->setWaitingToHideStatus(true);
    presenter->onTranslateTimeout();
    QTRY_COMPARE(view.callsOf(QStringLiteral("toWaitingHide")).size(), 1);

    RecordingNoFocusFollowView fixedView;
    auto other = fixed(&fixedView);
    fixedView.calls.clear();
    other->translate(QStringLiteral("hello"));
    QCOMPARE(fixedView.calls, QStringList{QStringLiteral("setTranslateStatus(1)")});
    QVERIFY(other->translateTimer().isActive());
}

void TestFollowPresenters::traditionalScriptNeedsSecondRequest_data()
{
    QTest::addColumn<bool>("caretPanel");
    QTest::addColumn<int>("target");
    QTest::addColumn<int>("requests");
    QTest::newRow("caret panel, Cantonese traditional") << true << 3 << 2;
    QTest::newRow("caret panel, Mandarin traditional") << true << 1 << 1;
    QTest::newRow("fixed panel, Mandarin traditional") << false << 1 << 2;
    QTest::newRow("fixed panel, English") << false << 4 << 1;
}

void TestFollowPresenters::traditionalScriptNeedsSecondRequest()
{
    QFETCH(bool, caretPanel);
    QFETCH(int, target);
    QFETCH(int, requests);
    setPreferences([target](UserPreferences& p) { p.voiceTranslateTargetLanguage = target; });
    RecordingFocusFollowView focusView;
    RecordingNoFocusFollowView fixedView;
    std::unique_ptr<Panel> presenter;
    if (caretPanel) {
        presenter = focus(&focusView);
    } else {
        presenter = fixed(&fixedView);
    }
    const int before = translateRequests().size();
    presenter->translate(QStringLiteral("你好"));
    presenter->onTranslateTimeout();
    QTRY_VERIFY(presenter->isTranslateFinish());
    const QList<QUrlQuery> all = translateRequests();
    QCOMPARE(all.size() - before, requests);
    if (requests == 2) {
        QCOMPARE(all.last().queryItemValue(QStringLiteral("to")), QStringLiteral("cht"));
        QCOMPARE(all.last().queryItemValue(QStringLiteral("q")), QStringLiteral("Hello"));
    }
}

void TestFollowPresenters::signsRemovedOnArrivalAndDelivery()
{
    setPreferences([](UserPreferences& p) {
        p.isDelAllSign = 1;
        p.voiceTranslateTargetLanguage = 4;
    });
    mServer.setAnswer(kTranslatePath, {200, translation({QStringLiteral("Hi. you。ok？yes!")})});
    RecordingFocusFollowView view;
    auto presenter = focus(&view);
    presenter->translate(QStringLiteral("你好"));
    presenter->onTranslateTimeout();
    QTRY_VERIFY(presenter->isTranslateFinish());
    QCOMPARE(presenter->translateResult(), QStringLiteral("Hi youokyes"));
    presenter->outputResult();
    QCOMPARE(mDesktop.typedText(), QStringLiteral("Hi youokyes"));
    QVERIFY(presenter->translateResult().isEmpty());
    QCOMPARE(view.callsOf(QStringLiteral("clearText")).size(), 1);

    // An empty answer is an error, and nothing is typed for it.
    mServer.setAnswer(kTranslatePath, {200, translation({})});
    view.calls.clear();
    presenter->translate(QStringLiteral("再见"));
    presenter->onTranslateTimeout();
    QTRY_VERIFY(presenter->isTranslateFinish());
    QCOMPARE(view.callsOf(QStringLiteral("setTranslateStatus")).last(),
             QStringLiteral("setTranslateStatus(2)"));
    mDesktop.takeLog();
    presenter->outputResult();
    QVERIFY(mDesktop.log.isEmpty());
}

void TestFollowPresenters::failedTranslationHints()
{
    mServer.setAnswer(kTranslatePath, {500, QByteArray()});
    RecordingFocusFollowView focusView;
    auto caret = focus(&focusView);
    caret->translate(QStringLiteral("你好"));
    caret->onTranslateTimeout();
    QTRY_COMPARE(focusView.callsOf(QStringLiteral("setTranslateStatus")).last(),
                 QStringLiteral("setTranslateStatus(2)"));
    focusView.answers[QStringLiteral("IsHidden")] = true;
    focusView.calls.clear();
    caret->onTranslateTimeout();
    QTRY_COMPARE(focusView.callsOf(QStringLiteral("setTranslateStatus")),
                 QStringList{QStringLiteral("setTranslateStatus(0)")});

    // The fixed panel leaves the hint of a hidden panel alone.
    RecordingNoFocusFollowView fixedView;
    auto other = fixed(&fixedView);
    fixedView.answers[QStringLiteral("IsHidden")] = true;
    other->translate(QStringLiteral("你好"));
    fixedView.calls.clear();
    const int before = translateRequests().size();
    other->onTranslateTimeout();
    QTRY_COMPARE(translateRequests().size(), before + 1);
    QTest::qWait(100);
    QVERIFY(fixedView.callsOf(QStringLiteral("setTranslateStatus")).isEmpty());
}

void TestFollowPresenters::focusPanelHidePlans()
{
    RecordingFocusFollowView view;
    auto presenter = focus(&view);
    QVERIFY(presenter->isAutoSendMode());

    // A reading holds the panel whatever else holds.
    Panel::HidePlan plan = presenter->planHide(true, Panel::ResultPage, false, true);
    QVERIFY(plan.stay && !plan.hideWindow && !plan.deliver);

    // Released while the translation is out: the panel stays, waiting for it.
    presenter->translate(QStringLiteral("你好"));
    plan = presenter->planHide(false, Panel::ResultPage, false, false);
    QVERIFY(plan.stay && !plan.hideWindow);
    QVERIFY(presenter->isWaitingToHide());
    // Sent by hand meanwhile: out of sight, delivered when the answer comes.
    plan = presenter->planHide(false, Panel::ResultPage, true, true);
    QVERIFY(plan.stay && plan.hideWindow && plan.clearEdit && !plan.deliver);

    presenter->clearTranslateResult();
    plan = presenter->planHide(false, Panel::ResultPage, false, false);
    QVERIFY(plan.hideWindow && plan.deliver && plan.clear);
    // Editing in auto-send mode delivers only on a send.
    plan = presenter->planHide(false, Panel::ResultPage, true, false);
    QVERIFY(plan.hideWindow && !plan.deliver);
    plan = presenter->planHide(false, Panel::DictationPage, false, true);
    QVERIFY(plan.hideWindow && !plan.deliver && plan.clear);

    presenter->setAutoSendMode(0);
    plan = presenter->planHide(false, Panel::ResultPage, false, false);
    QVERIFY(plan.hideWindow && !plan.deliver);
}

void TestFollowPresenters::fixedPanelHidePlansInSingleClickMode()
{
    setPreferences([](UserPreferences& p) { p.isClickMode = 1; });
    RecordingNoFocusFollowView view;
    auto presenter = fixed(&view);
    QVERIFY(presenter->isSupSingleClick());

    // A finished translation stays up and waits; a sent one goes out and is typed.
    Panel::HidePlan plan = presenter->planHide(false, Panel::ResultPage, false, false);
    QVERIFY(!plan.hideWindow && plan.waitingHide && !plan.deliver && !plan.clear);
    plan = presenter->planHide(false, Panel::ResultPage, false, true);
    QVERIFY(plan.hideWindow && plan.deliver && plan.clear);
    plan = presenter->planHide(false, Panel::DictationPage, false, false);
    QVERIFY(plan.hideWindow && plan.waitingHide);

    presenter->setSupSingleClick(0);
    presenter->setAutoSendMode(0);
    plan = presenter->planHide(false, Panel::ResultPage, false, false);
    QVERIFY(plan.hideWindow && !plan.deliver && plan.clear);
    presenter->translate(QStringLiteral("你好"));
    plan = presenter->planHide(false, Panel::ResultPage, false, false);
    QVERIFY(plan.stay && !plan.hideWindow && presenter->isWaitingToHide());
}

void TestFollowPresenters::preferencesReachTheView()
{
    RecordingFocusFollowView view;
    auto presenter = focus(&view);
    view.calls.clear();
    // Sichuanese is named by the speech, not by its written target.
    setPreferences([](UserPreferences& p) {
        p.recognitionLanguage = 2;
        p.voiceTranslateSourceLanguage = 2;
        p.voiceTranslateTargetLanguage = 0;
    });
    QCOMPARE(view.takeCalls(), QStringList({QStringLiteral("setDictationTextLanguageName(四川话)"),
                                            QStringLiteral("changeMenuEnterStatus(1)"),
                                            QStringLiteral("changeMenuSpaceStatus(1)"),
                                            QStringLiteral("changeMenuAutoSendStatus(1)")}));
    setPreferences([](UserPreferences& p) {
        p.recognitionLanguage = 0;
        p.voiceTranslateSourceLanguage = 0;
        p.voiceTranslateTargetLanguage = 7;
    });
    const QStringList calls = view.takeCalls();
    QVERIFY(calls.contains(QStringLiteral("setTranslateTextSourceLanguageName(中)")));
    QVERIFY(calls.contains(QStringLiteral("setInitTranslateDstLanguage(韩)")));
    QVERIFY(!presenter->isSupportFollowSpeak());

    // A menu switch is written to the store and comes back as marks.
    presenter->setEnterMode(0);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().isEnterSend, 0);
    QVERIFY(view.calls.contains(QStringLiteral("changeMenuEnterStatus(0)")));

    presenter->onRecVolume(30);
    QCOMPARE(presenter->getVolume(), 12);
    setPreferences([](UserPreferences& p) { p.voiceTranslateTargetLanguage = 4; });
    QVERIFY(presenter->isSupportFollowSpeak());
}

void TestFollowPresenters::boxGrowthAndReadingPieces()
{
    int s = 0;
    int t = 0;
    QVERIFY(Panel::boxHeights(60, 90, 28, 28, &s, &t));
    QCOMPARE(QPair(s, t), QPair(60, 90));
    QVERIFY(Panel::boxHeights(400, 90, 28, 28, &s, &t));
    QCOMPARE(QPair(s, t), QPair(134, 90));
    QVERIFY(Panel::boxHeights(60, 1000, 60, 28, &s, &t));
    QCOMPARE(QPair(s, t), QPair(60, 134));
    // Exactly at the limit nothing changes, nor when the boxes already fit.
    QVERIFY(!Panel::boxHeights(140, 60, 28, 28, &s, &t));
    QVERIFY(!Panel::boxHeights(60, 140, 28, 28, &s, &t));
    QVERIFY(!Panel::boxHeights(500, 500, 134, 134, &s, &t));

    QCOMPARE(Panel::readableText(QStringLiteral("a/b\\c*d<e>f,g?h\ni。")), QStringLiteral("abcdefghi。"));
    const QStringList pieces = Panel::readingPieces(QString(2500, QLatin1Char('x')));
    QCOMPARE(pieces.size(), 3);
    QCOMPARE(pieces.at(0).size(), 1024);
    QCOMPARE(pieces.at(2).size(), 452);
    QVERIFY(Panel::readingPieces(QString()).isEmpty());
}

QTEST_GUILESS_MAIN(TestFollowPresenters)
#include "tst_followpresenters.moc"
