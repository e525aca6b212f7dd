#pragma once

#include "Hid/BleAudioHandler.h"
#include "Hid/ClickClassifier.h"
#include "Hid/DeviceMessage.h"
#include "Hid/HidDevice.h"
#include "Utils/Singleton.h"

#include <QObject>

#include <atomic>

class BLEManager;
class HidManager;
class QTimer;

// The one face of the mouse: hides which link is in use, turns records into signals and
// requests into records, classifies voice-key clicks and decodes Bluetooth audio.
//
// Records from USB are handled on the HID read thread, Bluetooth packets and key ticks on
// the main thread, requests come from the main thread and the device controller's thread.
// The flags below are atomics and the key table guards itself, so any of them may run at
// the same time.
class DeviceManager : public QObject, public Singleton<DeviceManager> {
    Q_OBJECT

public:
    enum DeviceType { DeviceTypeHid = 0, DeviceTypeBle = 1 };

    // Tests hand in their links; not owned.
    DeviceManager(HidManager* hid, BLEManager* ble, QObject* parent = nullptr);

    // Link control.
    QList<HidDevice> enumerateHidDevice();
    bool openHidDevice(int vid, int pid);
    void openBLEDevice(const QString& uuid);
    void scanBleDevice();
    void cancelScan();
    bool isScan();
    bool isConnected();
    int state();
    void close();
    int getDeviceType() const;
    bool isReady() const;
    void deviceReady();

    // Requests.
    void getDpi();
    void setDpi(int level);
    void getCpi();
    void setCpi(int value);
    void getLowbatReport();
    void setLowbatReport(bool enable);
    void getShake();
    void setShake(bool enable);
    void getLamplight();
    void setLamplight(bool enable);
    void getSoundEffect();
    void setSoundEffect(bool enable);
    void getModule();
    void getActive();
    void getDongleFlashID();
    void getRemoteFlashID();
    void getDPILevelValue();
    void getDevicePowerPlugIn();
    void getAudioEnable();
    void setAudioEnable(bool enable);
    void audioEnable(bool enable);
    void getAudioVolume();
    void setAudioVolume(int volume);
    void getBLEAudioMode();
    void setBLEAudioMode(int mode);
    void responseAck(int type);

    // A received record, from either link.
    void handleMessage(st_small_base_com_msg msg);
    // A Bluetooth packet: audio, or a record.
    void handleBlePacket(const QByteArray& packet);

    void buildClickType(int key, int status);
    bool isAudioActive() const { return mAudioActive; }
    // Tests: whether the key timer is running (it runs only while a key is in progress).
    bool isKeyTimerActive() const;

signals:
    void signalScanFinished();
    void signalForeFinishKeyEvent(int key, int status);
    void signalKeyEvent(int key, int status);
    void signalClickListener(int key);
    void signalLongClickListener(int key, int status);
    void signalDoubleClickListener(int key, int status);
    void signalDeviceReady();
    void signalMouseActive(bool active);
    void signalModule(int lamplightModule, int shakeModule, int soundEffectModule, int keyType,
                      QString customerCode, int mouseWriedType);
    void signalDpi(int level);
    void signalChangeMouseDpiKey(int level);
    void signalDpiLevelValue(int value1, int value2, int value3);
    void signalDpiThreeLevelFunction();
    void signalCpi(int value);
    void signalLamplight(int enable);
    void signalLowbatReport(bool enable);
    void signalLowbat();
    void signalMinLowbat();
    void signalBatteryValue(int value);
    void signalMouseShutdown();
    void signalDevicePowerPlugIn(bool enable);
    void signalShake(bool enable);
    void signalSoundEffect(bool enable);
    void signalRemoteFlashID(QString id);
    void signalDongleFlashID(QString id);
    void signalAudioEnable(bool enable);
    void signalAudioVolume(int volume);
    void signalVolumeAdjust(bool enable, int max, int min);
    void signalUSBChange(int vid, int pid, bool enable);
    void signalOpenBLEDevice(QString uuid);
    void signalBLEDeviceConnectState(bool connected, QString name);
    void signalAudioData(QByteArray data);
    void signalAudioPacketMode(int mode);

public slots:
    void onKeyCheck();
    void onUSBChange(int vid, int pid, bool enable);
    void onScanFinished();

private slots:
    void startKeyTimer();

private:
    friend class Singleton<DeviceManager>;
    DeviceManager();

    void initData();
    void remoteMessageHandle(const st_small_base_com_msg& msg);
    void usbMessageHandle(const st_small_base_com_msg& msg);
    void interactiveMessageHandle(const st_small_base_com_msg& msg);
    void send(st_small_base_com_msg msg);
    void writeBLEMessage(const st_small_base_com_msg& msg);

    HidManager* mHidManager;
    BLEManager* mBleManager;
    std::atomic<bool> mReady{false};
    ClickClassifier mClassifier;
    QTimer* mKeyTimer = nullptr;
    std::atomic<bool> mAudioActive{false};
    std::atomic<bool> mVolumeEnable{false};
    std::atomic<int> mVolumeMax{0};
    std::atomic<int> mVolumeMin{0};
    BleAudioHandler mAudio;
    std::atomic<int> mDeviceType{DeviceTypeHid};
};
