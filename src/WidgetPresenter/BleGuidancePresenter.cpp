#include "BleGuidancePresenter.h"

#include "Hid/DeviceManager.h"
#include "Platform/AppLauncher.h"
#include "Platform/DesktopLauncher.h"
#include "Utils/Logging.h"

#include <QTimer>

namespace {

// The mouse link as the wizard needs it, reached only when used.
class DeviceManagerGuidance : public BleGuidanceDevice {
public:
    bool isConnected() override { return DeviceManager::getInstance()->isConnected(); }
    void scanBleDevice() override { DeviceManager::getInstance()->scanBleDevice(); }
    void cancelScan() override { DeviceManager::getInstance()->cancelScan(); }
};

}  // namespace

BleGuidancePresenter::BleGuidancePresenter(BleGuidanceView* view, BleGuidanceDevice* device,
                                           AppLauncher* launcher, QObject* parent)
    : QObject(parent),
      mView(view),
      mDevice(device),
      mLauncher(launcher),
      mScanDelay(new QTimer(this)),
      mConnectTimeout(new QTimer(this))
{
    mScanDelay->setSingleShot(true);
    mScanDelay->setInterval(kScanDelayMs);
    connect(mScanDelay, &QTimer::timeout, this, &BleGuidancePresenter::onDelayDeviceScan);
    mConnectTimeout->setSingleShot(true);
    mConnectTimeout->setInterval(kConnectTimeoutMs);
    connect(mConnectTimeout, &QTimer::timeout, this, &BleGuidancePresenter::onConnectTimeout);
    if (mLauncher == nullptr) {
        mOwnLauncher = std::make_unique<DesktopLauncher>();
        mLauncher = mOwnLauncher.get();
    }
    if (mDevice == nullptr) {
        mOwnDevice = std::make_unique<DeviceManagerGuidance>();
        mDevice = mOwnDevice.get();
        connect(DeviceManager::getInstance(), &DeviceManager::signalScanFinished, this,
                &BleGuidancePresenter::onDeviceScanFinished);
    }
}

BleGuidancePresenter::~BleGuidancePresenter() = default;

void BleGuidancePresenter::showGuidance(const QString& savedDeviceUuid)
{
    // Asked again while up (the link's answer and the console's check both ask): the user's
    // page stays.
    if (!mView->isHidden()) {
        return;
    }
    changePage(savedDeviceUuid.isEmpty() ? PageFirstPairing : PageSavedLost);
    mView->toShow();
}

void BleGuidancePresenter::changePage(int page)
{
    if (page == PageRegistering) {
        mView->setRegisterFailed(false);
    }
    mView->setPage(page);
}

QString BleGuidancePresenter::modelBackground(int button)
{
    static const char* const backgrounds[] = {"ble_btn_bg2.png", "ble_btn_bg3.png", "ble_btn_bg4.png"};
    if (button < 0 || button > 2) {
        return QString();
    }
    return QStringLiteral(":/zh_res/res_1080/BLEGuidance/") + QLatin1String(backgrounds[button]);
}

bool BleGuidancePresenter::isOwnMouseAddress(const QString& address)
{
    return address.contains(QLatin1String("C8:47:8C"), Qt::CaseInsensitive) ||
           address.contains(QLatin1String("22:18:3A"), Qt::CaseInsensitive);
}

void BleGuidancePresenter::onClose()
{
    // A search still waiting to start must not start after the wizard is gone.
    mScanDelay->stop();
    mConnectTimeout->stop();
    mView->toClose();
    mDevice->cancelScan();
}

void BleGuidancePresenter::onDeviceScanFinished()
{
    // Keep looking while the user is still being told how to put the mouse in pairing mode.
    if (!mView->isHidden() && mView->currentPage() == PageModel) {
        mDevice->scanBleDevice();
    }
}

void BleGuidancePresenter::onDeviceRegister()
{
    changePage(mDevice->isConnected() ? PageConnected : PageChooseModel);
}

void BleGuidancePresenter::onStartRegister()
{
    if (mDevice->isConnected()) {
        changePage(PageConnected);
        return;
    }
    // The delay gives the user time to put the mouse into pairing mode.
    mScanDelay->start();
    changePage(PageRegistering);
}

void BleGuidancePresenter::onNext()
{
    changePage(PageChooseModel);
}

void BleGuidancePresenter::onDelayDeviceScan()
{
    mDevice->scanBleDevice();
    mConnectTimeout->start();
}

void BleGuidancePresenter::onConnectTimeout()
{
    mView->setRegisterFailed(true);
}

void BleGuidancePresenter::onChooseModel(int button)
{
    const QString background = modelBackground(button);
    if (background.isEmpty()) {
        return;
    }
    mView->setModelBackground(background);
    changePage(PageModel);
}

void BleGuidancePresenter::onSystemDeviceConnected(const QString& address)
{
    if (mView->currentPage() == PageModel && isOwnMouseAddress(address)) {
        changePage(PageConnected);
    }
}

void BleGuidancePresenter::onOpenBluetoothSettings()
{
    // GNOME's panel, KDE's module, then blueman; entries limited to one desktop are skipped
    // elsewhere by the launcher.
    AppChoice choice;
    choice.desktopIds =
        QStringList{QStringLiteral("gnome-bluetooth-panel.desktop"), QStringLiteral("kcm_bluetooth.desktop"),
                    QStringLiteral("blueman-manager.desktop")};
    if (!mLauncher->launchApplication(choice)) {
        qCWarning(lcConsole) << "no Bluetooth settings to open";
        mView->showSettingsMissing();
    }
}
