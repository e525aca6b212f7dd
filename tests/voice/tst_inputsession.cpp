#include "Hid/DeviceMessage.h"
#include "InputPresenterRig.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QWebSocket>
#include <QWebSocketServer>
#include <QtTest>

namespace {

using P = InputPresenter;

}  // namespace

// Voice keys to sessions: engines, panels, click verdicts, stops, silence and the device's
// microphone volume.
class TestInputSession : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void holdModeShortClickClosesAtTheVerdict();
    void holdModeVerdictKeepsPanelsUnderThePointer();
    void mouseGoneMidSessionEndsIt();
    void pickerOpenGivesStopStatus();
    void clickModeRelease();
    void bluetoothClickModeClosesLikeHoldMode();
    void keysWithoutAReadyDevice();
    void singleKeyShortPressAbandonsRecognition();
    void singleKeyLongPress_data();
    void singleKeyLongPress();
    void singleKeyDoubleClickTakesOver();
    void silenceEndsOnlyAShortClickVoiceCommand();
    void volumeTimersRunOnlyWithWork();
    void deviceMicrophoneVolume();
    void delayedHideAndClosePanelTimer();
    void engineChoice_data();
    void engineChoice();

private:
    P* presenter() { return mRig->presenter.get(); }
    RecordingInputView& view() { return mRig->view; }
    void expire(P::TimerId id) { presenter()->expireTimer(id); }
    // The verdict and the end of the minimum listening time, which run out together.
    void verdict()
    {
        expire(P::TimerMinListen);
        expire(P::TimerCheckIsLongClick);
    }
    // A press released before the verdict, and the verdict.
    void shortClick(int key)
    {
        presenter()->onKeyEvent(key, 1);
        presenter()->onKeyEvent(key, 0);
        verdict();
    }

    std::unique_ptr<InputPresenterRig> mRig;
};

void TestInputSession::init()
{
    mRig = std::make_unique<InputPresenterRig>(false);
    mRig->connectDevice();
}

void TestInputSession::cleanup()
{
    mRig.reset();
}

void TestInputSession::holdModeShortClickClosesAtTheVerdict()
{
    // Real time: the minimum listening time and the verdict run out together, so the hard stop
    // of the verdict is what stops the recogniser.
    mRig->desktop.caret = QPoint(100, 200);
    QCOMPARE(presenter()->timer(P::TimerMinListen).interval(), 790);
    QCOMPARE(presenter()->timer(P::TimerCheckIsLongClick).interval(), 790);
    QElapsedTimer clock;
    clock.start();
    presenter()->onKeyEvent(6, 1);
    QVERIFY(view().calls.contains(QStringLiteral("hideMainWindows()")));
    QVERIFY(view().calls.contains(QStringLiteral("initFoDictationView()")));
    QVERIFY(mRig->baidu->isRunning());
    QCOMPARE(presenter()->status().type, int(P::Dictation));
    view().answers[QStringLiteral("isHiddenFocusView")] = false;
    QTest::qWait(300);
    presenter()->onKeyEvent(6, 0);
    QVERIFY(presenter()->status().isListening);
    QTRY_VERIFY_WITH_TIMEOUT(!mRig->baidu->isRunning(), 2000);
    QVERIFY(clock.elapsed() >= 790);
    QVERIFY(!presenter()->status().isListening);
    QVERIFY(presenter()->status().isRunning);  // a final result may still finish it
    QVERIFY(view().calls.contains(QStringLiteral("toHideFocusView()")));
    QVERIFY(view().calls.contains(QStringLiteral("setMicStatus(false)")));
}

void TestInputSession::mouseGoneMidSessionEndsIt()
{
    presenter()->onKeyEvent(6, 1);
    QVERIFY(mRig->baidu->isRunning());
    QVERIFY(presenter()->isVoiceKeyPressing());
    view().answers[QStringLiteral("isHiddenNoFocusView")] = false;
    view().calls.clear();
    // The receiver is pulled while the key is held: no release will ever come. The session
    // ends as at a release: the final asked for is still typed, and the end closes the panel.
    emit mRig->device.signalUSBChange(0x3151, 0x4011, false);
    QVERIFY(!presenter()->isVoiceKeyPressing());
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(!presenter()->status().isListening);
    emit mRig->baidu->signalResult(QStringLiteral("最后一句"));
    QCOMPARE(mRig->desktop.typedText(), QStringLiteral("最后一句"));
    QVERIFY(!view().calls.contains(QStringLiteral("toHideNoFocusView()")));
    // Nothing running: a later loss does nothing.
    view().calls.clear();
    emit mRig->device.signalBLEDeviceConnectState(false, QString());
    QVERIFY(view().calls.isEmpty());

    // A single-key mouse lost in a double-click hold, or while listening ahead of a gesture:
    // the listening stops, and the next press after the mouse is back is not swallowed.
    mRig->setPreferences([](UserPreferences& p) { p.keyType = 1; });
    mRig->connectDevice();
    presenter()->onKeyEvent(6, 1);
    presenter()->onKeyEvent(6, 0);
    presenter()->onDoubleClickListener(6, 1);
    emit mRig->device.signalUSBChange(0x3151, 0x4011, false);
    QVERIFY(!mRig->baidu->isRunning());
    mRig->connectDevice();
    view().calls.clear();
    presenter()->onKeyEvent(6, 1);
    QVERIFY(view().calls.contains(QStringLiteral("setNoFoMicView(false)")));
    QVERIFY(mRig->baidu->isRunning());
    emit mRig->device.signalUSBChange(0x3151, 0x4011, false);
    QVERIFY(!mRig->baidu->isRunning());
}

void TestInputSession::holdModeVerdictKeepsPanelsUnderThePointer()
{
    presenter()->onKeyEvent(6, 1);  // no caret: the no-focus panel
    QVERIFY(view().calls.contains(QStringLiteral("initNoFoDictationView()")));
    view().answers[QStringLiteral("isHiddenNoFocusView")] = false;
    view().answers[QStringLiteral("isNoFocusOnMouseEnter")] = true;
    view().takeCalls();
    presenter()->onKeyEvent(6, 0);
    verdict();
    QVERIFY(mRig->baidu->isRunning());
    QVERIFY(!view().calls.contains(QStringLiteral("toHideNoFocusView()")));

    // Voice command: the search strip under the pointer stays, elsewhere it closes.
    view().answers[QStringLiteral("isViewHidden")] = false;
    view().answers[QStringLiteral("isOnMouseEnter")] = true;
    shortClick(5);
    QCOMPARE(presenter()->status().type, int(P::VoiceCommand));
    QVERIFY(presenter()->status().isListening);
    view().answers[QStringLiteral("isOnMouseEnter")] = false;
    shortClick(5);
    QVERIFY(!presenter()->status().isListening);
    QVERIFY(view().calls.contains(QStringLiteral("toHide()")));
}

void TestInputSession::pickerOpenGivesStopStatus()
{
    presenter()->onKeyEvent(5, 1);
    verdict();
    view().answers[QStringLiteral("isHiddenChangeSearchLanguageView")] = false;
    view().takeCalls();
    presenter()->onKeyEvent(5, 0);
    QVERIFY(view().calls.contains(QStringLiteral("setMuteVolume()")));
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(!presenter()->status().isListening);
    QVERIFY(presenter()->status().isRunning);
}

void TestInputSession::clickModeRelease()
{
    mRig->setPreferences([](UserPreferences& p) { p.isClickMode = 1; });
    view().answers[QStringLiteral("isHiddenNoFocusView")] = false;
    presenter()->onKeyEvent(6, 1);  // held through the verdict
    verdict();
    presenter()->onKeyEvent(6, 0);
    QVERIFY(presenter()->status().isListening);
    QVERIFY(mRig->baidu->isRunning());
    // A short click leaves the dictation running with the key up, until a press elsewhere.
    shortClick(6);
    QVERIFY(presenter()->status().isListening);
    QVERIFY(!view().calls.contains(QStringLiteral("toHideNoFocusView()")));
    presenter()->onForceFinshView(1, 1);
    QVERIFY(view().calls.contains(QStringLiteral("forceFinish()")));
}

void TestInputSession::bluetoothClickModeClosesLikeHoldMode()
{
    mRig->device.close();
    mRig->connectDevice(true);
    QCOMPARE(mRig->device.getDeviceType(), 1);
    mRig->setPreferences([](UserPreferences& p) { p.isClickMode = 1; });
    view().answers[QStringLiteral("isHiddenNoFocusView")] = false;
    shortClick(6);
    QVERIFY(!presenter()->status().isListening);
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(view().calls.contains(QStringLiteral("toHideNoFocusView()")));
}

void TestInputSession::keysWithoutAReadyDevice()
{
    mRig->device.close();
    presenter()->onKeyEvent(6, 1);
    QVERIFY(view().calls.isEmpty());
    QVERIFY(!presenter()->timer(P::TimerCheckIsLongClick).isActive());
    // Ready but the link gone: the start check fails, the verdict timer still runs.
    mRig->device.deviceReady();
    presenter()->onKeyEvent(6, 1);
    QVERIFY(!presenter()->status().isRunning);
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(presenter()->timer(P::TimerCheckIsLongClick).isActive());
}

void TestInputSession::singleKeyShortPressAbandonsRecognition()
{
    mRig->setPreferences([](UserPreferences& p) { p.keyType = 1; });
    presenter()->onKeyEvent(6, 1);
    QVERIFY(view().calls.contains(QStringLiteral("setNoFoMicView(false)")));
    QVERIFY(mRig->baidu->isRunning());
    QVERIFY(!presenter()->status().isRunning);
    view().answers[QStringLiteral("isHiddenNoFocusView")] = false;
    view().answers[QStringLiteral("getCurrentNoFocusViewStatus")] = 3;
    presenter()->onKeyEvent(6, 0);
    QVERIFY(view().calls.contains(QStringLiteral("toHideNoFocusView()")));
    QVERIFY(presenter()->timer(P::TimerSingleKeyStop).isActive());
    // Unclaimed: results before the gesture are dropped, and the expiry stops the engine.
    emit mRig->baidu->signalResult(QStringLiteral("迟到"));
    expire(P::TimerSingleKeyStop);
    emit mRig->baidu->signalResult(QStringLiteral("迟到"));
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(!presenter()->status().isRecogning);
    QVERIFY(mRig->desktop.log.isEmpty());
    QVERIFY(presenter()->timer(P::TimerCloseTranslateView).isActive());
}

void TestInputSession::singleKeyLongPress_data()
{
    QTest::addColumn<int>("target");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("panelCall");
    QTest::newRow("dictation") << 0 << int(P::Dictation) << QStringLiteral("startFoDictationAnimation()");
    QTest::newRow("translation") << 4 << int(P::VoiceTranslate) << QStringLiteral("initFoTranslateView()");
}

void TestInputSession::singleKeyLongPress()
{
    QFETCH(int, target);
    QFETCH(int, type);
    QFETCH(QString, panelCall);
    mRig->setPreferences([target](UserPreferences& p) {
        p.keyType = 1;
        p.voiceTranslateTargetLanguage = target;
    });
    presenter()->onKeyEvent(6, 1);
    view().answers[QStringLiteral("isHiddenFocusView")] = false;
    presenter()->onLongClickListener(6, 1);
    QVERIFY(view().calls.contains(panelCall));
    QCOMPARE(presenter()->status().type, type);
    QVERIFY(presenter()->status().isRunning);
    QVERIFY(presenter()->isVoiceKeyPressing());
    // Key 5 is not this mouse's, and a two-key mouse ignores the gesture.
    presenter()->onLongClickListener(5, 0);
    QVERIFY(mRig->baidu->isRunning());
    presenter()->onLongClickListener(6, 0);
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(!presenter()->status().isListening);
}

void TestInputSession::singleKeyDoubleClickTakesOver()
{
    mRig->setPreferences([](UserPreferences& p) { p.keyType = 1; });
    presenter()->onKeyEvent(6, 1);
    presenter()->onKeyEvent(6, 0);
    view().answers[QStringLiteral("isHiddenFocusView")] = false;  // a dictation panel is up
    view().takeCalls();
    // The gesture comes before the key event of the second press.
    presenter()->onDoubleClickListener(6, 1);
    presenter()->onKeyEvent(6, 1);
    const QStringList calls = view().takeCalls();
    QVERIFY(calls.indexOf(QStringLiteral("forceFinishFoView()")) <
            calls.indexOf(QStringLiteral("toHideFocusView()")));
    QVERIFY(calls.contains(QStringLiteral("setInitVoiceSearchView()")));
    QVERIFY(!presenter()->timer(P::TimerSingleKeyStop).isActive());
    QCOMPARE(presenter()->status().type, int(P::VoiceCommand));
    QVERIFY(mRig->baidu->isRunning());  // the recogniser of the first press goes on
    emit mRig->baidu->signalResult(QStringLiteral("打开计算器"));
    QCOMPARE(presenter()->results(), QList<QString>{QStringLiteral("打开计算器")});
    presenter()->onDoubleClickListener(6, 0);
    presenter()->onKeyEvent(6, 0);
    QVERIFY(!mRig->baidu->isRunning());
    QVERIFY(!presenter()->isVoiceKeyPressing());
}

void TestInputSession::silenceEndsOnlyAShortClickVoiceCommand()
{
    shortClick(5);
    presenter()->onRecVolume(1);
    presenter()->onRecVolume(2);  // 2 is voice, though the animation waits for 3
    QCOMPARE(presenter()->status().silentCount, 0);
    for (int i = 0; i < 49; ++i) {
        presenter()->onRecVolume(i % 2);
    }
    QVERIFY(mRig->baidu->isRunning());
    presenter()->onRecVolume(0);
    QVERIFY(!mRig->baidu->isRunning());
    QCOMPARE(presenter()->status().silentCount, 0);

    // A long press, or a dictation, is not ended by silence.
    presenter()->onKeyEvent(5, 1);
    verdict();
    for (int i = 0; i < 60; ++i) {
        presenter()->onRecVolume(0);
    }
    QVERIFY(mRig->baidu->isRunning());
    presenter()->onKeyEvent(5, 0);
    shortClick(6);
    for (int i = 0; i < 50; ++i) {
        presenter()->onRecVolume(0);
    }
    QCOMPARE(presenter()->status().silentCount, 0);
    QVERIFY(presenter()->status().isListening);

    // The first voice of a session starts the strip's animation, once; volumes clamp at 12.
    view().answers[QStringLiteral("isViewHidden")] = false;
    presenter()->onKeyEvent(5, 1);
    view().takeCalls();
    presenter()->onRecVolume(30);
    presenter()->onRecVolume(5);
    QCOMPARE(presenter()->status().volume, 5);
    QCOMPARE(view().callsOf(QStringLiteral("startVoiceSearchAnimation")).size(), 1);
    QVERIFY(presenter()->timer(P::TimerRecogningAnimation).isActive());
    for (const char* dots : {".", "..", "...", "....", "."}) {
        presenter()->onRecogningAnimation();
        QCOMPARE(view().calls.last(), QStringLiteral("setContent(正在识别中%1)").arg(QLatin1String(dots)));
    }
}

void TestInputSession::volumeTimersRunOnlyWithWork()
{
    QVERIFY(presenter()->timer(P::TimerSyncDeviceVolume).isActive());
    QVERIFY(!presenter()->timer(P::TimerUpdateVolume).isActive());
    presenter()->onKeyEvent(5, 1);
    QVERIFY(presenter()->timer(P::TimerUpdateVolume).isActive());
    presenter()->onRecVolume(7);
    presenter()->onUpdateVolume();
    QCOMPARE(view().calls.last(), QStringLiteral("changeVolume(7)"));
    presenter()->stopStatus();
    presenter()->onUpdateVolume();
    QCOMPARE(view().calls.last(), QStringLiteral("changeVolume(0)"));
    // Not listening any more, the tick rests even while the session waits (a command that
    // was not understood stays on the strip).
    QVERIFY(!presenter()->timer(P::TimerUpdateVolume).isActive());
    emit mRig->baidu->signalEnd();  // no result: the session closes
    QVERIFY(!presenter()->status().isRunning);
    presenter()->onUpdateVolume();
    QVERIFY(!presenter()->timer(P::TimerUpdateVolume).isActive());
    // The device gone, the sync tick stops itself; a ready device starts it again.
    mRig->device.close();
    presenter()->onSyncDeviceVolume();
    QVERIFY(!presenter()->timer(P::TimerSyncDeviceVolume).isActive());
    mRig->connectDevice();
    QTRY_VERIFY(presenter()->timer(P::TimerSyncDeviceVolume).isActive());
}

void TestInputSession::deviceMicrophoneVolume()
{
    namespace DM = DeviceMessage;
    const auto lastWrite = [this] {
        const QList<QByteArray> writes = mRig->hidBackend.writes();
        return writes.isEmpty() ? QByteArray()
                                : st_small_base_com_msg::fromBytes(writes.last().mid(1)).toByteArray();
    };
    // No device value yet: the change only repeats 0, which the device layer refuses.
    emit mRig->baidu->signalChangeVolume(3);
    QCOMPARE(presenter()->dynamicVolume(), 0);
    presenter()->onSyncDeviceVolume();
    QTRY_COMPARE(lastWrite(), DM::getAudioVolume().toByteArray());

    // The device's answer arrives on the read thread while the main thread syncs.
    st_small_base_com_msg answer = DM::request(1, 3, 24, false);
    answer.bytes[7] = 0x10;
    answer.bytes[8] = 33;
    mRig->hidBackend.pushReport(answer.toByteArray());
    QTRY_COMPARE(presenter()->getCurVolume(), 33);
    QCOMPARE(presenter()->dynamicVolume(), 33);
    emit mRig->baidu->signalChangeVolume(20);  // clamped to 28..40 without a reported range
    QCOMPARE(presenter()->dynamicVolume(), 40);
    QTRY_COMPARE(lastWrite(), DM::setAudioVolume(40).toByteArray());
    emit mRig->device.signalAudioVolume(36);  // the device's own value no longer leads
    QCOMPARE(presenter()->dynamicVolume(), 40);
    // Writes reach the receiver a moment later, and the 200 ms tick may add its own meanwhile.
    QTest::qWait(50);
    const int before = mRig->hidBackend.writes().size();
    presenter()->onSyncDeviceVolume();
    QTRY_VERIFY(mRig->hidBackend.writes().size() > before);
    QCOMPARE(lastWrite(), DM::setAudioVolume(40).toByteArray());
    emit mRig->device.signalAudioVolume(40);
    QTest::qWait(50);
    const int inStep = mRig->hidBackend.writes().size();
    presenter()->onSyncDeviceVolume();  // in step: nothing to send, and the tick rests
    QTest::qWait(50);
    QCOMPARE(mRig->hidBackend.writes().size(), inStep);
    QVERIFY(!presenter()->timer(P::TimerSyncDeviceVolume).isActive());
    // The device reports another value (from its read thread): the tick runs and writes ours.
    emit mRig->device.signalAudioVolume(35);
    QTRY_VERIFY(presenter()->timer(P::TimerSyncDeviceVolume).isActive());
    QTRY_COMPARE(lastWrite(), DM::setAudioVolume(40).toByteArray());

    emit mRig->device.signalVolumeAdjust(true, 38, 30);
    emit mRig->baidu->signalChangeVolume(-20);
    QCOMPARE(presenter()->dynamicVolume(), 30);
}

void TestInputSession::delayedHideAndClosePanelTimer()
{
    // Dictation ends: the focus-follow panel closes 200 ms after, unless the pointer is on it.
    presenter()->onKeyEvent(6, 1);
    view().answers[QStringLiteral("isHiddenFocusView")] = false;
    presenter()->onKeyEvent(6, 0);
    verdict();
    view().answers[QStringLiteral("isFoMouseEnter")] = true;
    emit mRig->baidu->signalEnd();
    QCOMPARE(presenter()->timer(P::TimerDelayHide).interval(), 200);
    expire(P::TimerDelayHide);
    QVERIFY(presenter()->timer(P::TimerCloseTranslateView).isActive());
    presenter()->onCloseTranslateView();  // still on it: keeps ticking
    QVERIFY(presenter()->timer(P::TimerCloseTranslateView).isActive());
    view().answers[QStringLiteral("isFoMouseEnter")] = false;
    view().takeCalls();
    presenter()->onCloseTranslateView();
    QVERIFY(view().calls.contains(QStringLiteral("toHideFocusView()")));
    QVERIFY(!presenter()->timer(P::TimerCloseTranslateView).isActive());

    // A translation result waiting to be sent by hand stays.
    view().answers[QStringLiteral("getCurrentFocusViewStatus")] = 1;
    mRig->setPreferences([](UserPreferences& p) { p.isAutoSendMode = 0; });
    view().takeCalls();
    expire(P::TimerDelayHide);
    QVERIFY(!view().calls.contains(QStringLiteral("toHideFocusView()")));

    // A recogniser error soft-stops and closes by the delayed hide; a voice command waits 2 s.
    presenter()->onKeyEvent(5, 1);
    presenter()->onRecError(3, QStringLiteral("无法连接到服务!"));
    QVERIFY(mRig->baidu->isRunning());  // the minimum listening time holds the soft stop
    QCOMPARE(presenter()->timer(P::TimerDelayHide).interval(), 2000);

    // An error within the minimum listening time, from a recogniser that then never ends (a
    // dictation service that hung up): once the key is let go the panel closes all the same.
    presenter()->onKeyEvent(6, 1);
    view().answers[QStringLiteral("isHiddenFocusView")] = false;
    view().answers[QStringLiteral("isFoMouseEnter")] = false;
    view().answers[QStringLiteral("getCurrentFocusViewStatus")] = 0;
    presenter()->onRecError(1, QString());
    expire(P::TimerDelayHide);  // still listening: nothing yet
    QVERIFY(!presenter()->timer(P::TimerDelayHide).isActive());
    presenter()->onKeyEvent(6, 0);
    verdict();
    QVERIFY(presenter()->timer(P::TimerDelayHide).isActive());
    view().takeCalls();
    expire(P::TimerDelayHide);
    QVERIFY(view().calls.contains(QStringLiteral("toHideFocusView()")));
}

void TestInputSession::engineChoice_data()
{
    QTest::addColumn<int>("recognition");
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("target");
    QTest::addColumn<bool>("iflyCustomer");
    QTest::addColumn<QString>("language");  // empty: the gateway client
    QTest::addColumn<QString>("rlang");     // empty: none sent
    QTest::newRow("Mandarin") << 0 << 0 << 0 << true << QStringLiteral("zh_cn/mandarin") << QString();
    QTest::newRow("English") << 3 << 3 << 4 << true << QStringLiteral("en_us/mandarin") << QString();
    QTest::newRow("traditional Mandarin")
        << 0 << 0 << 1 << true << QStringLiteral("zh_cn/mandarin") << QStringLiteral("zh-hk");
    // A translation into traditional Chinese is written by the translation, not the recogniser.
    QTest::newRow("English into traditional")
        << 3 << 3 << 1 << true << QStringLiteral("en_us/mandarin") << QString();
    // The recognition row picks the engine, the source row the language it hears.
    QTest::newRow("heard as English") << 0 << 3 << 4 << true << QStringLiteral("en_us/mandarin") << QString();
    QTest::newRow("Cantonese") << 1 << 1 << 2 << true << QString() << QString();
    QTest::newRow("Sichuanese") << 2 << 2 << 0 << true << QString() << QString();
    QTest::newRow("another customer") << 0 << 0 << 0 << false << QString() << QString();
}

void TestInputSession::engineChoice()
{
    QFETCH(int, recognition);
    QFETCH(int, source);
    QFETCH(int, target);
    QFETCH(bool, iflyCustomer);
    QFETCH(QString, language);
    QFETCH(QString, rlang);
    // A dictation service that keeps the first frame it is sent.
    QWebSocketServer service(QStringLiteral("iat"), QWebSocketServer::NonSecureMode);
    QVERIFY(service.listen(QHostAddress::LocalHost));
    QJsonObject first;
    connect(&service, &QWebSocketServer::newConnection, [&] {
        QWebSocket* socket = service.nextPendingConnection();
        socket->setParent(&service);
        connect(socket, &QWebSocket::textMessageReceived, [&first](const QString& text) {
            if (first.isEmpty()) {
                first = QJsonDocument::fromJson(text.toUtf8()).object();
            }
        });
    });
    mRig->presenter.reset();
    mRig->ifly = std::make_unique<IFlyWebSpeech>(
        IFlyWebSpeech::Service{QUrl(QStringLiteral("ws://127.0.0.1:%1/v2/iat").arg(service.serverPort())),
                               QStringLiteral("app"), QStringLiteral("key"), QStringLiteral("secret")},
        [] { return 1; });
    mRig->restartPresenter();
    mRig->setPreferences([=](UserPreferences& p) {
        p.recognitionLanguage = recognition;
        p.voiceTranslateSourceLanguage = source;
        p.voiceTranslateTargetLanguage = target;
        p.isIFlySpeech = iflyCustomer;
    });

    presenter()->onKeyEvent(6, 1);
    QCOMPARE(mRig->ifly->isRunning(), !language.isEmpty());
    QCOMPARE(mRig->baidu->isRunning(), language.isEmpty());
    if (language.isEmpty()) {
        return;
    }
    const QByteArray audio(640, '\1');
    QTRY_VERIFY((mRig->ifly->onAudioData(audio), !first.isEmpty()));
    const QJsonObject business = first.value(QLatin1String("business")).toObject();
    QCOMPARE(business.value(QLatin1String("language")).toString() + QLatin1Char('/') +
                 business.value(QLatin1String("accent")).toString(),
             language);
    QCOMPARE(business.value(QLatin1String("rlang")).toString(), rlang);
    QCOMPARE(business.contains(QLatin1String("rlang")), !rlang.isEmpty());
    presenter()->onKeyEvent(6, 0);
}

QTEST_MAIN(TestInputSession)
#include "tst_inputsession.moc"
