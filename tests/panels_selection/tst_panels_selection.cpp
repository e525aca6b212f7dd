#include "FakePlayback.h"
#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "LocalHttpServer.h"
#include "Platform/WinUtils.h"
#include "RecordingInputBackend.h"
#include "RecordingTextTranslateView.h"
#include "Screenshot.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/ComboBox.h"
#include "Widget/Common/TextEdit.h"
#include "Widget/Panels/ChangeSearchLanguageDialog.h"
#include "Widget/Panels/ChangeTranLanguageDialog.h"
#include "Widget/Panels/ChangeTranMoreLanguageDialog.h"
#include "Widget/Panels/PaddleWordsDialog.h"
#include "Widget/Panels/TextTranslateDialog.h"
#include "WidgetPresenter/TextTranslatePresenter.h"

#include <QClipboard>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QParallelAnimationGroup>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QtTest>

namespace {

const QString kTranslatePath = QStringLiteral("/api/trans/vip/translate");

QByteArray translation(const QStringList& lines)
{
    QByteArray rows;
    for (const QString& line : lines) {
        rows += (rows.isEmpty() ? "" : ",") + QByteArray("{\"src\":\"x\",\"dst\":\"") + line.toUtf8() + "\"}";
    }
    return "{\"from\":\"zh\",\"to\":\"en\",\"trans_result\":[" + rows + "]}";
}

// What went to the translation service, newest last (the backend hears of each answer too).
QList<QByteArray> translateRequests(const LocalHttpServer& server)
{
    QList<QByteArray> targets;
    for (const LocalHttpServer::Request& request : server.requests()) {
        if (request.target.startsWith(kTranslatePath.toUtf8())) {
            targets << request.target;
        }
    }
    return targets;
}

void savePreferences(const std::function<void(UserPreferences&)>& change)
{
    UserPreferences record = PreferencesUtils::getInstance()->getUserPreferences();
    change(record);
    PreferencesUtils::getInstance()->setUserPreferences(record);
}

}  // namespace

class TestPanelsSelection : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void presenterTranslatesAfterThePause();
    void presenterShowsFailures_data();
    void presenterShowsFailures();
    void presenterHintAndRetry();
    void presenterCantoneseInTraditionalScript();
    void presenterLanguageRules();
    void boxHeightsAndReadingPieces();

    void searchPickerSendsAndHides();
    void pairPickerChoicesAndCustomPair();
    void moreListPlacementAndLeave();

    void toolbarOutsideRule();
    void toolbarReading();

    void translationWindowShowsAndCopies();
    void translationWindowEditsAndReads();
    void translationWindowGrowsAndPlaces();
    void sharedWidgetsKeysAndMouse();

    void screenshots();

private:
    LocalHttpServer mServer;
    std::unique_ptr<HttpManager> mHttp;
    std::unique_ptr<BaiduTranslate> mTranslator;
    RecordingInputBackend mBackend;
    FakePlayback mPlayback;
    std::unique_ptr<SpeechSynthesisUtils> mSynthesis;
};

void TestPanelsSelection::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(mServer.start());
    mHttp = std::make_unique<HttpManager>(HttpRequest::getInstance(), mServer.url(), mServer.url());
    mHttp->setTimeout(800);
    mTranslator =
        std::make_unique<BaiduTranslate>(mServer.url(), QStringLiteral("app"), QStringLiteral("key"));
    mHttp->setTranslator(mTranslator.get());
    WinUtils::getInstance()->setBackend(&mBackend);
    // Nothing is fetched: the service answers 404 and only the requests are looked at.
    mSynthesis = std::make_unique<SpeechSynthesisUtils>(
        SpeechSynthesisWorker::Service{mServer.url(), mServer.url(), QString(), QString(), QString()},
        &mPlayback);
}

void TestPanelsSelection::init()
{
    PreferencesUtils::getInstance()->setUserPreferences(UserPreferences());
    mServer.setAnswer(kTranslatePath, {200, translation({QStringLiteral("hello")})});
}

void TestPanelsSelection::cleanupTestCase()
{
    TextTranslateDialog::resetInstanceForTest();
    PaddleWordsDialog::resetInstanceForTest();
    mSynthesis.reset();
    WinUtils::getInstance()->setBackend(nullptr);
}

void TestPanelsSelection::presenterTranslatesAfterThePause()
{
    RecordingTextTranslateView view;
    TextTranslatePresenter presenter(&view, mHttp.get());
    presenter.setCurrentIpId(42);

    presenter.translate(QString());
    QVERIFY(!presenter.timer(TextTranslatePresenter::TimerRequest).isActive());
    QVERIFY(presenter.isTranslateFinish());

    mServer.setAnswer(kTranslatePath,
                      {200, translation({QStringLiteral("first line"), QStringLiteral("second line")})});
    presenter.translate(QStringLiteral("第一行\n第二行"));
    QVERIFY(!presenter.isTranslateFinish());
    QVERIFY(presenter.timer(TextTranslatePresenter::TimerRequest).isActive());
    QVERIFY(view.calls.isEmpty());

    presenter.expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_VERIFY(presenter.isTranslateFinish());
    QCOMPARE(view.callsOf(QStringLiteral("setTargetText")),
             {QStringLiteral("setTargetText(first line\nsecond line)")});
    // The default text translation row 2 is Cantonese, "yue"; the source is detected.
    const QByteArray target = translateRequests(mServer).constLast();
    QVERIFY2(target.contains("from=auto") && target.contains("to=yue"), target.constData());
}

void TestPanelsSelection::presenterShowsFailures_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("delayMs");
    QTest::newRow("service error") << 200
                                   << QByteArray(R"({"error_code":"54001","error_msg":"Invalid Sign"})") << 0;
    QTest::newRow("no rows") << 200 << translation({}) << 0;
    QTest::newRow("http error") << 500 << QByteArray() << 0;
    QTest::newRow("timeout") << 200 << translation({QStringLiteral("late")}) << 2000;
}

void TestPanelsSelection::presenterShowsFailures()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(int, delayMs);
    mServer.setAnswer(kTranslatePath, {status, body, delayMs});
    RecordingTextTranslateView view;
    TextTranslatePresenter presenter(&view, mHttp.get());
    presenter.translate(QStringLiteral("原文"));
    presenter.expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_VERIFY_WITH_TIMEOUT(presenter.isTranslateFinish(), 3000);
    // A timeout may be reported twice, as such and as the aborted request.
    QStringList statuses = view.callsOf(QStringLiteral("setTranslateStatus"));
    statuses.removeDuplicates();
    QCOMPARE(statuses, {QStringLiteral("setTranslateStatus(2)")});
    QVERIFY(view.callsOf(QStringLiteral("setTargetText")).isEmpty());
    // Finished, so the pending hint does not claim a translation is under way.
    view.calls.clear();
    presenter.showRecHint();
    presenter.expireTimer(TextTranslatePresenter::TimerHint);
    QVERIFY(view.calls.isEmpty());
}

void TestPanelsSelection::presenterHintAndRetry()
{
    RecordingTextTranslateView view;
    TextTranslatePresenter presenter(&view, mHttp.get());

    // The hint is not pushed back by a second call.
    presenter.translate(QStringLiteral("原文"));
    presenter.showRecHint();
    QTest::qWait(300);
    presenter.showRecHint();
    QVERIFY(presenter.timer(TextTranslatePresenter::TimerHint).remainingTime() < 800);
    presenter.expireTimer(TextTranslatePresenter::TimerHint);
    QCOMPARE(view.takeCalls(), {QStringLiteral("setTranslateStatus(1)")});

    // Each keystroke of an edit pushes the retry back; it asks for the box's text then.
    presenter.toTranslate();
    QTest::qWait(300);
    presenter.toTranslate();
    QVERIFY(presenter.timer(TextTranslatePresenter::TimerRetry).remainingTime() > 800);
    view.answers[QStringLiteral("getSourceText")] = QString();
    presenter.expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_VERIFY(presenter.isTranslateFinish());
    const int requests = translateRequests(mServer).size();
    presenter.expireTimer(TextTranslatePresenter::TimerRetry);
    QVERIFY(!presenter.timer(TextTranslatePresenter::TimerRequest).isActive());

    view.answers[QStringLiteral("getSourceText")] = QStringLiteral("改过的原文");
    presenter.toTranslate();
    presenter.expireTimer(TextTranslatePresenter::TimerRetry);
    QVERIFY(presenter.timer(TextTranslatePresenter::TimerRequest).isActive());
    presenter.expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_COMPARE(translateRequests(mServer).size(), requests + 1);
    QVERIFY(QUrl::fromPercentEncoding(translateRequests(mServer).constLast())
                .contains(QStringLiteral("改过的原文")));
}

void TestPanelsSelection::presenterCantoneseInTraditionalScript()
{
    // Row 3 is Cantonese in the traditional script, which the service writes in the simplified
    // one: a second request asks for the traditional script, the local conversion stands in
    // when it fails, and each translation shown is reported to the backend as a text record.
    savePreferences([](UserPreferences& p) { p.textTranslateLanguage = 3; });
    RecordingTextTranslateView view;
    TextTranslatePresenter presenter(&view, mHttp.get());
    presenter.setCurrentIpId(7);
    auto records = [this] {
        QList<QJsonObject> out;
        for (const LocalHttpServer::Request& request : mServer.requests()) {
            const QJsonObject record = QJsonDocument::fromJson(request.body).object();
            if (request.target.endsWith("/textrecord/upload") &&
                record.value(QStringLiteral("type")).toInt() == 2 &&
                record.value(QStringLiteral("src")).toString() == QStringLiteral("later development")) {
                out << record;
            }
        }
        return out;
    };
    // Returns the second request, or nothing when the two did not both go out and end.
    auto translate = [&](const LocalHttpServer::Answer& second) {
        const int before = translateRequests(mServer).size();
        // The first answer is held back, so that the second request finds the second answer.
        mServer.setAnswer(kTranslatePath, {200, translation({QStringLiteral("后来的发展")}), 300});
        presenter.translate(QStringLiteral("later development"));
        presenter.expireTimer(TextTranslatePresenter::TimerRequest);
        if (!QTest::qWaitFor([&] { return translateRequests(mServer).size() == before + 1; })) {
            return QByteArray();
        }
        mServer.setAnswer(kTranslatePath, second);
        if (!QTest::qWaitFor([&] { return presenter.isTranslateFinish(); }, 3000) ||
            translateRequests(mServer).size() != before + 2) {
            return QByteArray();
        }
        return translateRequests(mServer).constLast();
    };
    const QByteArray second = translate({200, translation({QStringLiteral("後來的發展。")})});
    QVERIFY2(second.contains("from=yue") && second.contains("to=cht"), second.constData());
    QCOMPARE(view.callsOf(QStringLiteral("setTargetText")), {QStringLiteral("setTargetText(後來的發展。)")});
    view.calls.clear();
    QVERIFY(!translate({500, QByteArray()}).isEmpty());
    QCOMPARE(view.callsOf(QStringLiteral("setTargetText")), {QStringLiteral("setTargetText(後來的發展)")});

    QTRY_COMPARE(records().size(), 2);
    const QJsonObject record = records().constLast();
    QCOMPARE(record.value(QStringLiteral("dst")).toString(), QStringLiteral("後來的發展"));
    QCOMPARE(record.value(QStringLiteral("to")).toString(), QStringLiteral("yue"));
    QCOMPARE(record.value(QStringLiteral("ip")).toInt(), 7);
}

void TestPanelsSelection::presenterLanguageRules()
{
    RecordingTextTranslateView view;
    TextTranslatePresenter presenter(&view, mHttp.get());

    // A hidden window only follows the choice; a visible one translates its text anew.
    presenter.onTextTranslateLanguageChange(5);
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().textTranslateLanguage, 5);
    QVERIFY(presenter.isSupportFollowSpeak());
    QCOMPARE(view.takeCalls(), QStringList({QStringLiteral("setComboTextTranslateLanguage(5)"),
                                            QStringLiteral("isHiddenView()")}));
    QVERIFY(!presenter.timer(TextTranslatePresenter::TimerRequest).isActive());

    view.answers[QStringLiteral("isHiddenView")] = false;
    view.answers[QStringLiteral("getSourceText")] = QStringLiteral("原文");
    presenter.onTextTranslateLanguageChange(6);
    QVERIFY(!presenter.isSupportFollowSpeak());
    QCOMPARE(
        view.takeCalls(),
        QStringList({QStringLiteral("setComboTextTranslateLanguage(6)"), QStringLiteral("isHiddenView()"),
                     QStringLiteral("getSourceText()"), QStringLiteral("setTranslateStatus(1)")}));
    presenter.expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_VERIFY(presenter.isTranslateFinish());
    QVERIFY(translateRequests(mServer).constLast().contains("to=jp"));
}

void TestPanelsSelection::boxHeightsAndReadingPieces()
{
    int source = 0;
    int target = 0;
    QVERIFY(TextTranslatePresenter::grownBoxHeights(51, 137, &source, &target));
    QCOMPARE(QPair(source, target), QPair(51, 137));
    QVERIFY(TextTranslatePresenter::grownBoxHeights(139, 60, &source, &target));
    QCOMPARE(QPair(source, target), QPair(134, 60));
    QVERIFY(TextTranslatePresenter::grownBoxHeights(70, 900, &source, &target));
    QCOMPARE(QPair(source, target), QPair(70, 134));
    QVERIFY(TextTranslatePresenter::grownBoxHeights(400, 400, &source, &target));
    QCOMPARE(QPair(source, target), QPair(134, 134));
    // 138 falls between the rules; an empty target box (a short document) keeps the sizes too.
    QVERIFY(!TextTranslatePresenter::grownBoxHeights(138, 90, &source, &target));
    QVERIFY(!TextTranslatePresenter::grownBoxHeights(90, 138, &source, &target));
    QVERIFY(!TextTranslatePresenter::grownBoxHeights(90, 30, &source, &target));

    QCOMPARE(TextTranslatePresenter::readingPieces(QStringLiteral("a/b\\c*d<e>f,g?h\ni，j")),
             {QStringLiteral("abcdefghi，j")});
    QVERIFY(TextTranslatePresenter::readingPieces(QStringLiteral("/\n,")).isEmpty());
    QCOMPARE(TextTranslatePresenter::readingPieces(QString(2048, QLatin1Char('x'))).size(), 2);
    const QStringList pieces = TextTranslatePresenter::readingPieces(QString(2049, QLatin1Char('x')));
    QCOMPARE(pieces.size(), 3);
    QCOMPARE(pieces.constLast().size(), 1);
}

void TestPanelsSelection::searchPickerSendsAndHides()
{
    ChangeSearchLanguageDialog picker;
    QSignalSpy chosen(&picker, &ChangeSearchLanguageDialog::signalChangeLanguage);
    QStringList sent;
    for (QPushButton* button : picker.findChildren<QPushButton*>()) {
        picker.show();
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(picker.isHidden());
        sent << button->text() + QString::number(chosen.takeFirst().at(0).toInt());
    }
    QCOMPARE(sent, QStringList({QStringLiteral("中0"), QStringLiteral("粤1"), QStringLiteral("川2"),
                                QStringLiteral("英3")}));
}

void TestPanelsSelection::pairPickerChoicesAndCustomPair()
{
    ChangeTranMoreLanguageDialog more;
    ChangeTranLanguageDialog picker(nullptr, &more);
    QSignalSpy chosen(&picker, &ChangeTranLanguageDialog::signalChangeLanguage);

    // Default preferences remember Mandarin into Korean.
    QCOMPARE(picker.customButton()->text(), QStringLiteral("中-韩"));
    QCOMPARE(picker.customButton()->toolTip(), QStringLiteral("普通话-韩语"));
    picker.show();
    more.show();
    QTest::mouseClick(picker.customButton(), Qt::LeftButton);
    QCOMPARE(chosen.takeFirst(), QVariantList({0, 7}));
    QVERIFY(picker.isHidden());
    QVERIFY(more.isHidden());

    // A fixed pair leaves the remembered one as it was.
    picker.show();
    QTest::mouseClick(picker.pairButton(QStringLiteral("粤(繁)")), Qt::LeftButton);
    QCOMPARE(chosen.takeFirst(), QVariantList({1, 3}));
    QVERIFY(picker.isHidden());
    QCOMPARE(picker.customButton()->text(), QStringLiteral("中-韩"));

    // The remembered pair follows the store; a row past the tables shows an empty half.
    savePreferences([](UserPreferences& p) {
        p.lastVoiceTranslateSourceLanguage = 1;
        p.lastVoiceTranslateTargetLanguage = 14;
    });
    QCOMPARE(picker.customButton()->text(), QStringLiteral("粤-德"));
    QCOMPARE(picker.customButton()->toolTip(), QStringLiteral("粤语-德语"));
    UserPreferences broken;
    broken.lastVoiceTranslateTargetLanguage = 99;
    picker.setPreference(broken);
    QCOMPARE(picker.customButton()->text(), QStringLiteral("中-"));
}

void TestPanelsSelection::moreListPlacementAndLeave()
{
    mBackend.screen = QRect(0, 0, 1920, 1080);
    ChangeTranMoreLanguageDialog more;
    ChangeTranLanguageDialog picker(nullptr, &more);

    picker.move(600, 500);
    picker.show();
    QTest::mouseClick(picker.moreButton(), Qt::LeftButton);
    QVERIFY(more.isVisible());
    QCOMPARE(more.pos(), QPoint(600 + 360 - 252, 500 - 144));
    // A second press leaves the open list where it is.
    more.move(10, 10);
    QTest::mouseClick(picker.moreButton(), Qt::LeftButton);
    QCOMPARE(more.pos(), QPoint(10, 10));

    picker.moveChangeTranMoreLanguageDialog(1800, 100);
    QCOMPARE(more.pos(), QPoint(1920 - 252, 100));
    picker.moveChangeTranMoreLanguageDialog(-30, -144);
    QCOMPARE(more.pos(), QPoint(0, 0));

    // The lists start at the preferences and send their rows.
    savePreferences([](UserPreferences& p) {
        p.recognitionLanguage = 3;
        p.voiceTranslateTargetLanguage = 6;
    });
    QCOMPARE(more.sourceList()->currentIndex(), 3);
    QCOMPARE(more.targetList()->currentIndex(), 6);
    QSignalSpy chosen(&more, &ChangeTranMoreLanguageDialog::signalsChangeTranslateMoreLanguage);
    more.targetList()->setCurrentIndex(20);
    QTest::mouseClick(more.okButton(), Qt::LeftButton);
    QCOMPARE(chosen.takeFirst(), QVariantList({3, 20}));
    QVERIFY(more.isHidden());
    more.show();
    QTest::mouseClick(more.cancelButton(), Qt::LeftButton);
    QVERIFY(more.isHidden());
    QVERIFY(chosen.isEmpty());

    // An open list lies outside the card: leaving for it must not start the hide timer.
    QSignalSpy leave(&more, &FloatingCardDialog::signalsMouseLeave);
    more.show();
    QEvent out(QEvent::Leave);
    more.targetList()->showPopup();
    QVERIFY(more.targetList()->isShowPopup());
    QCoreApplication::sendEvent(&more, &out);
    QCOMPARE(leave.size(), 0);
    more.targetList()->hidePopup();
    QVERIFY(!more.targetList()->isShowPopup());
    QCoreApplication::sendEvent(&more, &out);
    QCOMPARE(leave.size(), 1);
}

void TestPanelsSelection::toolbarOutsideRule()
{
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    QVERIFY(toolbar.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    QCursor::setPos(400, 300);
    toolbar.startShow();
    QCOMPARE(toolbar.pos(), QPoint(400, 300 - 65));
    QVERIFY(toolbar.timer().isActive());

    // Resting on the toolbar keeps it; leaving counts, returning starts the count again.
    QCursor::setPos(toolbar.geometry().center());
    for (int tick = 0; tick < 60; ++tick) {
        toolbar.onTimeout();
    }
    QVERIFY(toolbar.isVisible());
    QCursor::setPos(10, 10);
    for (int tick = 0; tick < 24; ++tick) {
        toolbar.onTimeout();
    }
    QCursor::setPos(toolbar.geometry().center());
    toolbar.onTimeout();
    QCursor::setPos(10, 10);
    for (int tick = 0; tick < 24; ++tick) {
        toolbar.onTimeout();
    }
    QVERIFY(toolbar.isVisible());
    toolbar.onTimeout();
    QVERIFY(toolbar.isHidden());
    QVERIFY(!toolbar.timer().isActive());

    QSignalSpy translate(&toolbar, &PaddleWordsDialog::signalTranslateButtonPress);
    toolbar.startShow();
    QTest::mouseClick(toolbar.translateButton(), Qt::LeftButton);
    QCOMPARE(translate.size(), 1);
    QVERIFY(toolbar.isHidden());
    QVERIFY(!toolbar.timer().isActive());
}

void TestPanelsSelection::toolbarReading()
{
    savePreferences([](UserPreferences& p) { p.pronPerson = 1; });
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    QCOMPARE(toolbar.pronPerson(), 1);
    QSignalSpy reading(&toolbar, &PaddleWordsDialog::signalReadingButtonPress);
    QCursor::setPos(10, 10);
    toolbar.startShow();

    QTest::mouseClick(toolbar.readButton(), Qt::LeftButton);
    QCOMPARE(reading.takeFirst(), QVariantList({1}));
    QVERIFY(toolbar.isFollowSpeakPlaying());
    QVERIFY(!toolbar.timer().isActive());

    // A new reader restarts the reading with that voice and is kept.
    mPlayback.play(QString());
    QAction* lobi = toolbar.readerMenu()->actions().at(2);
    QCOMPARE(lobi->text(), QStringLiteral("洛比"));
    lobi->trigger();
    QVERIFY(!mPlayback.playing);
    QCOMPARE(reading.takeFirst(), QVariantList({3}));
    QVERIFY(toolbar.isFollowSpeakPlaying());
    QVERIFY(!toolbar.timer().isActive());
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().pronPerson, 3);
    int marked = 0;
    for (QAction* action : toolbar.readerMenu()->actions()) {
        marked += action->icon().isNull() ? 0 : 1;
    }
    QCOMPARE(marked, 1);
    QVERIFY(!lobi->icon().isNull());

    // The end of the reading gives the pointer rule back.
    emit mSynthesis->speechSynthesisOver();
    QVERIFY(!toolbar.isFollowSpeakPlaying());
    QVERIFY(toolbar.timer().isActive());

    // Pressed again while reading: stops, and the reader stays without a new reading.
    QTest::mouseClick(toolbar.readButton(), Qt::LeftButton);
    mPlayback.play(QString());
    QTest::mouseClick(toolbar.readButton(), Qt::LeftButton);
    QVERIFY(!mPlayback.playing);
    QVERIFY(!toolbar.isFollowSpeakPlaying());
    QVERIFY(toolbar.timer().isActive());
    QCOMPARE(reading.size(), 1);
    toolbar.readerMenu()->actions().at(0)->trigger();
    QCOMPARE(reading.size(), 1);
}

void TestPanelsSelection::translationWindowShowsAndCopies()
{
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    TextTranslateDialog window(nullptr, &toolbar, mSynthesis.get(), mHttp.get());

    // A translation that arrives for an emptied window is dropped.
    window.setTargetText(QStringLiteral("stale"));
    QVERIFY(window.targetBox()->toPlainText().isEmpty());

    mServer.setAnswer(kTranslatePath, {200, translation({QStringLiteral("good morning")})});
    window.setSourceText(QStringLiteral("早上好"));
    QVERIFY(window.isVisible());
    QVERIFY(window.sourceBox()->isReadOnly());
    QVERIFY(!window.readButton()->isHidden());
    window.presenter()->expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_COMPARE(window.targetBox()->toPlainText(), QStringLiteral("good morning"));
    QVERIFY(window.hintLabel()->isHidden());

    // Copy puts the translation on the clipboard and shows the hint for two ticks.
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    QTest::mouseClick(window.copyButton(), Qt::LeftButton);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("good morning"));
    QCOMPARE(window.hintLabel()->text(), QStringLiteral("复制成功!"));
    QVERIFY(window.hintTimer().isActive());
    window.onCloseLabel();
    QVERIFY(window.hintLabel()->isVisible());
    window.onCloseLabel();
    QVERIFY(window.hintLabel()->isHidden());
    QVERIFY(!window.hintTimer().isActive());

    window.targetBox()->clear();
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    QTest::mouseClick(window.copyButton(), Qt::LeftButton);
    window.onSelectAll();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    QVERIFY(window.hintLabel()->isHidden());
    QVERIFY(!window.hintTimer().isActive());

    window.toHide();
    QVERIFY(window.isHidden());
    QVERIFY(window.sourceBox()->toPlainText().isEmpty());
}

void TestPanelsSelection::translationWindowEditsAndReads()
{
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    TextTranslateDialog window(nullptr, &toolbar, mSynthesis.get(), mHttp.get());
    window.setSourceText(QStringLiteral("你好"));

    // A click into the source opens it for editing; typing asks again after the pause.
    QTest::mouseClick(window.sourceBox()->viewport(), Qt::LeftButton);
    QVERIFY(!window.sourceBox()->isReadOnly());
    window.presenter()->expireTimer(TextTranslatePresenter::TimerRequest);
    QTRY_VERIFY(window.presenter()->isTranslateFinish());
    window.sourceBox()->moveCursor(QTextCursor::End);
    window.sourceBox()->insertPlainText(QStringLiteral("吗"));
    QVERIFY(window.presenter()->timer(TextTranslatePresenter::TimerRetry).isActive());
    QCOMPARE(window.hintLabel()->text(), QStringLiteral("正在翻译中..."));
    QTest::keyClick(window.sourceBox(), Qt::Key_Return);
    QVERIFY(window.sourceBox()->isReadOnly());
    QCOMPARE(window.getSourceText(), QStringLiteral("你好吗"));

    // Reading: the marks go, per 0; a second press stops.
    window.setTargetText(QStringLiteral("hello, world/again"));
    QSignalSpy pieces(mSynthesis.get(), &SpeechSynthesisUtils::speechSynthesis);
    QTest::mouseClick(window.readButton(), Qt::LeftButton);
    QCOMPARE(pieces.takeFirst(), QVariantList({QStringLiteral("hello worldagain"), 0, 5, 5, 5}));
    QVERIFY(window.isPlaying());
    QTest::mouseClick(window.readButton(), Qt::LeftButton);
    QVERIFY(!window.isPlaying());
    QVERIFY(pieces.isEmpty());

    // Row 5 can be read, row 6 cannot; a change of language ends a reading.
    QTest::mouseClick(window.readButton(), Qt::LeftButton);
    window.onChangeLanguage(5);
    QVERIFY(!window.readButton()->isHidden());
    QVERIFY(!window.isPlaying());
    window.onChangeLanguage(6);
    QVERIFY(window.readButton()->isHidden());
    QCOMPARE(PreferencesUtils::getInstance()->getUserPreferences().textTranslateLanguage, 6);
    QCOMPARE(window.languageList()->currentIndex(), 6);

    // Shown again, the window keeps the choice: no read button for Japanese.
    window.toHide();
    window.setSourceText(QStringLiteral("再见"));
    QVERIFY(window.readButton()->isHidden());
}

void TestPanelsSelection::translationWindowGrowsAndPlaces()
{
    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    TextTranslateDialog window(nullptr, &toolbar, mSynthesis.get(), mHttp.get());
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();

    // Placed at the toolbar's point, kept on the screen.
    QCursor::setPos(area.width() / 2 + 10, area.height() / 2 + 20);
    toolbar.startShow();
    toolbar.toHide();
    window.moveWindow();
    auto expected = [](int at, int size, int room) {
        return at < size ? size : at >= room - size ? room - size : at;
    };
    QCOMPARE(window.pos(), QPoint(expected(area.width() / 2 + 10, 456, area.width()),
                                  expected(area.height() / 2 + 20, 361, area.height())));
    QCursor::setPos(area.width() - 1, area.height() - 1);
    toolbar.startShow();
    toolbar.toHide();
    window.moveWindow();
    QCOMPARE(window.pos(), QPoint(area.width() - 456, area.height() - 361));

    // Growing: the source by 44 moves everything below it; the target by 10 grows the rest.
    window.toShow();
    const QRect target = window.targetBox()->geometry();
    window.setNewTextTranslateView(134, 100);
    QCOMPARE(window.animation()->duration(), 5 * (44 + 10));
    window.animation()->setCurrentTime(window.animation()->duration());
    QCOMPARE(window.height(), 361 + 54);
    QCOMPARE(window.sourceBox()->height(), 134);
    QCOMPARE(window.targetBox()->geometry(), target.translated(0, 44).adjusted(0, 0, 0, 10));
    QCOMPARE(window.copyButton()->y(), target.bottom() + 1 + 2 + 54);
    // A visible window does not jump.
    const QPoint at = window.pos();
    window.moveWindow();
    QCOMPARE(window.pos(), at);
    // Shown again, it starts from its base size.
    window.toShow();
    QCOMPARE(window.height(), 361);
    QCOMPARE(window.sourceBox()->height(), 90);

    // A long text grows the window by itself, at most to two boxes of 134.
    window.setSourceText(QStringLiteral("很长的一段文字。").repeated(80));
    window.setTargetText(QStringLiteral("A long piece of text. ").repeated(80));
    QTRY_VERIFY(window.animation()->state() == QAbstractAnimation::Running);
    window.animation()->setCurrentTime(window.animation()->duration());
    QCOMPARE(window.sourceBox()->height(), 134);
    QCOMPARE(window.targetBox()->height(), 134);
    QCOMPARE(window.height(), 361 + 88);

    // Dragged by its body.
    const QPoint before = window.pos();
    QWidget* body = window.findChild<QLabel*>(QStringLiteral("title"));
    QTest::mousePress(body, Qt::LeftButton, {}, QPoint(5, 5));
    QMouseEvent move(QEvent::MouseMove, QPoint(35, 25), body->mapToGlobal(QPoint(35, 25)), Qt::NoButton,
                     Qt::LeftButton, {});
    QCoreApplication::sendEvent(body, &move);
    // The pointer is where the move left it, whatever the window did since.
    QMouseEvent release(QEvent::MouseButtonRelease, QPoint(35, 25), move.globalPos(), Qt::LeftButton,
                        Qt::NoButton, {});
    QCoreApplication::sendEvent(body, &release);
    QCOMPARE(window.pos(), before + QPoint(30, 20));
}

void TestPanelsSelection::sharedWidgetsKeysAndMouse()
{
    TextEdit box;
    QSignalSpy finish(&box, &TextEdit::signalEditFinish);
    QSignalSpy enter(&box, &TextEdit::signalEditEnterKey);
    QSignalSpy space(&box, &TextEdit::signalEditSpaceKey);
    QSignalSpy release(&box, &TextEdit::signalEditMouseButtonRelease);
    box.show();
    QTest::keyClicks(&box, QStringLiteral("a b"));
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClick(&box, Qt::Key_Enter);
    QCOMPARE(box.toPlainText(), QStringLiteral("ab"));
    QCOMPARE(finish.size(), 2);
    QCOMPARE(space.size(), 1);
    box.setReadOnly(true);
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClick(&box, Qt::Key_Space);
    QCOMPARE(enter.size(), 1);
    QCOMPARE(space.size(), 2);
    QCOMPARE(finish.size(), 2);
    QTest::mouseClick(box.viewport(), Qt::RightButton);
    QCOMPARE(release.size(), 0);
    QTest::mouseClick(box.viewport(), Qt::LeftButton);
    QCOMPARE(release.size(), 1);
}

void TestPanelsSelection::screenshots()
{
    SCREENSHOT_FOLDER_OR_SKIP(folder)
    // The window as a desktop shows it: what its cut or its translucency leaves of it.
    auto shoot = [&folder](QWidget* window, const QString& name) {
        QCoreApplication::processEvents();
        // render() draws the part its cut leaves, from that part's top left.
        const QRect shown = window->mask().isEmpty() ? window->rect() : window->mask().boundingRect();
        QImage image = screenshotCanvas(window, shown.size());
        QPainter painter(&image);
        if (!window->mask().isEmpty()) {
            painter.setClipRegion(window->mask().translated(-shown.topLeft()));
        }
        window->render(&painter, QPoint(), QRegion(), QWidget::DrawChildren);
        painter.end();
        QVERIFY(image.save(folder + QLatin1Char('/') + name + QStringLiteral(".png")));
    };
    ChangeSearchLanguageDialog search;
    search.show();
    shoot(&search, QStringLiteral("picker-search"));
    ChangeTranMoreLanguageDialog more;
    ChangeTranLanguageDialog pairs(nullptr, &more);
    pairs.show();
    shoot(&pairs, QStringLiteral("picker-translate"));
    more.show();
    shoot(&more, QStringLiteral("picker-more"));

    PaddleWordsDialog toolbar(nullptr, mSynthesis.get());
    QCursor::setPos(300, 300);
    toolbar.startShow();
    shoot(&toolbar, QStringLiteral("toolbar"));
    QTest::mouseClick(toolbar.readButton(), Qt::LeftButton);
    shoot(&toolbar, QStringLiteral("toolbar-reading"));
    toolbar.readerMenu()->popup(toolbar.mapToGlobal(QPoint(108, 32)));
    shoot(toolbar.readerMenu(), QStringLiteral("toolbar-readers"));
    toolbar.readerMenu()->hide();

    TextTranslateDialog window(nullptr, &toolbar, mSynthesis.get(), mHttp.get());
    window.setSourceText(QStringLiteral("今天天气很好，我们去公园散步吧。"));
    window.setTranslateStatus(1);
    shoot(&window, QStringLiteral("text-translate-waiting"));
    window.setTargetText(QStringLiteral("今天天氣很好，我哋去公園散步啦。"));
    shoot(&window, QStringLiteral("text-translate"));
    window.startShowCopySuccess();
    shoot(&window, QStringLiteral("text-translate-copied"));
    window.setTranslateStatus(2);
    shoot(&window, QStringLiteral("text-translate-error"));
    window.setTranslateStatus(0);
    QMouseEvent release(QEvent::MouseButtonRelease, QPoint(5, 5), Qt::LeftButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window.sourceBox()->viewport(), &release);
    shoot(&window, QStringLiteral("text-translate-editing"));
    window.setSourceTextIsOnlyRead(true);
    window.setSourceText(QStringLiteral("这是一段很长的文字，用来看看窗口怎样随着文字长高。").repeated(12));
    window.setTargetText(
        QStringLiteral("This is a long piece of text to see how the window grows with it. ").repeated(12));
    QTRY_VERIFY(window.animation()->state() == QAbstractAnimation::Running);
    window.animation()->setCurrentTime(window.animation()->duration());
    shoot(&window, QStringLiteral("text-translate-long"));
}

QTEST_MAIN(TestPanelsSelection)
#include "tst_panels_selection.moc"
