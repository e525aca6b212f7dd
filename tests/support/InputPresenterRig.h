#pragma once

#include "BaiduSpeech/BaiduSpeech.h"
#include "FakeBleTransport.h"
#include "FakeHidBackend.h"
#include "FakePlayback.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "LocalHttpServer.h"
#include "RecordingAppLauncher.h"
#include "RecordingInputBackend.h"
#include "RecordingInputView.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "WidgetPresenter/InputPresenter.h"

#include <QTcpServer>

#include <memory>

// Everything an InputPresenter talks to, over fakes: a device manager on an in-memory
// receiver (or Bluetooth), recognisers whose server takes the connection and never answers
// (tests emit their signals), a local backend that also plays the translation service, the
// recording view, desktop and launcher. Preferences and habits start from empty files.
class InputPresenterRig {
public:
    static constexpr int kVid = 0x3151;
    static constexpr int kPid = 0x4011;

    // Without the network side (backend, translation, synthesis) no network manager is made,
    // and with it none of Qt's bearer threads: the thread-checked suites run without them.
    explicit InputPresenterRig(bool network = true);
    ~InputPresenterRig();

    // Opens the receiver (or the Bluetooth link) and marks the device ready.
    void connectDevice(bool bluetooth = false);
    // Saves preferences changed by the function, as the console would.
    void setPreferences(const std::function<void(UserPreferences&)>& change);
    // A fresh presenter over the same fakes.
    void restartPresenter();

    FakeHidBackend hidBackend;
    FakeBleTransport bleTransport;
    HidManager hid{&hidBackend};
    BLEManager ble{&bleTransport, nullptr};
    DeviceManager device{&hid, &ble};
    QTcpServer silentServer;
    std::unique_ptr<BaiduSpeech> baidu;
    std::unique_ptr<IFlyWebSpeech> ifly;
    LocalHttpServer backend;
    std::unique_ptr<HttpManager> http;
    std::unique_ptr<BaiduTranslate> translator;
    FakePlayback playback;
    std::unique_ptr<SpeechSynthesisUtils> synthesis;
    RecordingInputView view;
    RecordingInputBackend desktop;
    RecordingAppLauncher launcher;
    std::unique_ptr<InputPresenter> presenter;
};
