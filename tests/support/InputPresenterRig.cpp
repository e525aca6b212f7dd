#include "InputPresenterRig.h"

#include "Hid/HookManager.h"
#include "Http/HttpRequest.h"
#include "Platform/WinUtils.h"
#include "Utils/PreferencesUtils.h"

#include <QFile>
#include <QStandardPaths>

InputPresenterRig::InputPresenterRig(bool network)
{
    QStandardPaths::setTestModeEnabled(true);
    QFile::remove(PreferencesUtils::habitPath());
    QFile::remove(PreferencesUtils::preferencesPath());
    PreferencesUtils::getInstance()->setUserPreferences(UserPreferences());
    hidBackend.setInterfaces({HidBackend::Interface{QStringLiteral("/dev/hidraw3"), kVid, kPid, 0xFF00}});
    silentServer.listen(QHostAddress::LocalHost);
    baidu = std::make_unique<BaiduSpeech>(QStringLiteral("127.0.0.1"), silentServer.serverPort());
    const IFlyWebSpeech::Service service{
        QUrl(QStringLiteral("ws://127.0.0.1:%1/v2/iat").arg(silentServer.serverPort())),
        QStringLiteral("app"), QStringLiteral("key"), QStringLiteral("secret")};
    ifly = std::make_unique<IFlyWebSpeech>(service, [] { return 0; });
    WinUtils::getInstance()->setBackend(&desktop);
    if (!network) {
        restartPresenter();
        return;
    }
    backend.start();
    http = std::make_unique<HttpManager>(HttpRequest::getInstance(), backend.url(), backend.url());
    translator =
        std::make_unique<BaiduTranslate>(backend.url(), QStringLiteral("app"), QStringLiteral("key"));
    http->setTranslator(translator.get());
    const QUrl nowhere(QStringLiteral("http://127.0.0.1:1/"));
    synthesis = std::make_unique<SpeechSynthesisUtils>(
        SpeechSynthesisWorker::Service{nowhere, nowhere, QString(), QString(), QString()}, &playback);
    restartPresenter();
}

InputPresenterRig::~InputPresenterRig()
{
    presenter.reset();
    WinUtils::getInstance()->setBackend(nullptr);
    device.close();
}

void InputPresenterRig::restartPresenter()
{
    presenter.reset();
    const InputPresenter::Collaborators collaborators{
        &device,    baidu.get(),      ifly.get(),     HookManager::getInstance(),
        http.get(), translator.get(), synthesis.get()};
    presenter = std::make_unique<InputPresenter>(&view, collaborators);
    presenter->setLauncher(&launcher);
    view.calls.clear();
}

void InputPresenterRig::connectDevice(bool bluetooth)
{
    if (bluetooth) {
        bleTransport.systemConnected = QStringList{QStringLiteral("C8:47:8C:00:11:22")};
        device.openBLEDevice(QStringLiteral("C8:47:8C:00:11:22"));
        bleTransport.answerAttach();
    } else {
        device.openHidDevice(kVid, kPid);
    }
    device.deviceReady();
}

void InputPresenterRig::setPreferences(const std::function<void(UserPreferences&)>& change)
{
    PreferencesUtils* preferences = PreferencesUtils::getInstance();
    UserPreferences record = preferences->getUserPreferences();
    change(record);
    preferences->setUserPreferences(record);
}
