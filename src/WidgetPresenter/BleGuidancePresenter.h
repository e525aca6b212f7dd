#pragma once

#include "WidgetPresenter/BleGuidanceView.h"

#include <QObject>

#include <memory>

class AppLauncher;
class QTimer;

// The pairing wizard's flow. The view, device and launcher are not owned; without a device
// the process's own mouse link is used, and the end of its scan reaches onDeviceScanFinished.
// The launcher opens the desktop's own Bluetooth settings; without one the desktop's.
class BleGuidancePresenter : public QObject {
    Q_OBJECT

public:
    enum Page {
        PageRegistering = 0,
        PageChooseModel = 1,
        PageModel = 2,
        PageConnected = 3,
        PageFirstPairing = 4,
        PageSavedLost = 5
    };

    static constexpr int kScanDelayMs = 6000;
    static constexpr int kConnectTimeoutMs = 30000;

    BleGuidancePresenter(BleGuidanceView* view, BleGuidanceDevice* device, AppLauncher* launcher,
                         QObject* parent = nullptr);
    ~BleGuidancePresenter() override;

    // Opens on page 4 when no mouse was ever saved, else on page 5.
    void showGuidance(const QString& savedDeviceUuid);
    void changePage(int page);

    // Background of page 2 for the model button (0, 1, 2), or empty.
    static QString modelBackground(int button);
    // Whether a Bluetooth address belongs to one of our mice.
    static bool isOwnMouseAddress(const QString& address);

    QTimer* scanDelayTimer() const { return mScanDelay; }
    QTimer* connectTimeoutTimer() const { return mConnectTimeout; }

public slots:
    void onClose();
    void onDeviceScanFinished();
    void onDeviceRegister();
    void onStartRegister();
    void onNext();
    void onDelayDeviceScan();
    void onConnectTimeout();
    void onChooseModel(int button);
    void onSystemDeviceConnected(const QString& address);
    void onOpenBluetoothSettings();

private:
    BleGuidanceView* mView;
    std::unique_ptr<BleGuidanceDevice> mOwnDevice;
    BleGuidanceDevice* mDevice;
    std::unique_ptr<AppLauncher> mOwnLauncher;
    AppLauncher* mLauncher;
    QTimer* mScanDelay;
    QTimer* mConnectTimeout;
};
