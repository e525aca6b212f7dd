#include "Hid/DeviceManager.h"

#include "Hid/BLEManager.h"
#include "Hid/HidManager.h"
#include "Hid/SbcDecoder.h"
#include "Utils/Logging.h"
#include "Utils/Trace.h"

#include <QTimer>

namespace DM = DeviceMessage;

namespace {
constexpr int kBleWriteLength = 20;

bool isVoiceKey(int key)
{
    return key >= 3 && key <= 6;
}
}  // namespace

DeviceManager::DeviceManager() : DeviceManager(HidManager::getInstance(), BLEManager::getInstance()) {}

DeviceManager::DeviceManager(HidManager* hid, BLEManager* ble, QObject* parent)
    : QObject(parent), mHidManager(hid), mBleManager(ble)
{
    initData();
}

void DeviceManager::initData()
{
    SBC_Init_Decoder();
    mAudioActive = false;
    mVolumeEnable = false;
    mVolumeMax = 0;
    mVolumeMin = 0;
    mReady = false;

    // Direct: the record lies on the read loop's stack and is copied before the signal returns.
    connect(
        mHidManager, &HidManager::signalReceiveMessage, this,
        [this](void* msg, int) {
            handleMessage(st_small_base_com_msg::fromBytes(static_cast<const char*>(msg), 32));
        },
        Qt::DirectConnection);
    connect(mHidManager, &HidManager::signalUSBChange, this, &DeviceManager::onUSBChange);

    connect(mBleManager, &BLEManager::signalScanFinished, this, &DeviceManager::onScanFinished);
    mBleManager->setDeviceTypeSource([this] { return getDeviceType(); });
    connect(this, &DeviceManager::signalOpenBLEDevice, mBleManager, &BLEManager::openDevice);
    connect(
        mBleManager, &BLEManager::signalConnectState, this,
        [this](bool connected, const QString& name) {
            // A link that dropped in mid-audio never saw the key's release: a new or failed
            // attach starts with the channel free.
            mAudioActive = false;
            emit signalBLEDeviceConnectState(connected, name);
        },
        Qt::DirectConnection);
    connect(mBleManager, &BLEManager::signalReceiverMessage, this, &DeviceManager::handleBlePacket,
            Qt::DirectConnection);

    connect(&mAudio, &BleAudioHandler::signalAudioData, this, &DeviceManager::signalAudioData);
    connect(&mAudio, &BleAudioHandler::signalAudioActive, this, [this] { mAudioActive = true; });

    // The 10 ms tick has work only while a key is in progress, so it runs only then; ticks
    // are still counted from each press.
    mKeyTimer = new QTimer(this);
    mKeyTimer->setInterval(ClickClassifier::kTickMs);
    connect(mKeyTimer, &QTimer::timeout, this, &DeviceManager::onKeyCheck, Qt::QueuedConnection);
}

QList<HidDevice> DeviceManager::enumerateHidDevice()
{
    return mHidManager->enumerate();
}

bool DeviceManager::openHidDevice(int vid, int pid)
{
    mDeviceType = DeviceTypeHid;
    return mHidManager->open(vid, pid);
}

void DeviceManager::openBLEDevice(const QString& uuid)
{
    mDeviceType = DeviceTypeBle;
    emit signalOpenBLEDevice(uuid);
}

void DeviceManager::scanBleDevice()
{
    mDeviceType = DeviceTypeBle;
    mBleManager->scanDevice();
}

void DeviceManager::cancelScan()
{
    mBleManager->scanCancel();
}

bool DeviceManager::isScan()
{
    return mBleManager->isScan();
}

bool DeviceManager::isConnected()
{
    return mBleManager->isConnected();
}

int DeviceManager::state()
{
    const bool open = mDeviceType == DeviceTypeBle ? mBleManager->isOpen() : mHidManager->isOpen();
    if (open) {
        return 1;
    }
    mReady = false;
    return 0;
}

void DeviceManager::close()
{
    if (mDeviceType == DeviceTypeBle) {
        mBleManager->closeDevice();
    } else {
        mHidManager->close();
    }
    mReady = false;
    mAudioActive = false;
}

int DeviceManager::getDeviceType() const
{
    return mDeviceType;
}

bool DeviceManager::isReady() const
{
    return mReady;
}

void DeviceManager::deviceReady()
{
    mReady = true;
    setBLEAudioMode(0);
    emit signalDeviceReady();
}

void DeviceManager::getDpi()
{
    send(DM::getDpi());
}

void DeviceManager::setDpi(int level)
{
    send(DM::setDpi(level));
}

void DeviceManager::getCpi()
{
    send(DM::getCpi());
}

void DeviceManager::setCpi(int value)
{
    send(DM::setCpi(value));
}

void DeviceManager::getLowbatReport()
{
    send(DM::getLowbatReport());
}

void DeviceManager::setLowbatReport(bool enable)
{
    send(DM::setLowbatReport(enable));
}

void DeviceManager::getShake()
{
    send(DM::getShake());
}

void DeviceManager::setShake(bool enable)
{
    send(DM::setShake(enable));
}

void DeviceManager::getLamplight()
{
    send(DM::getLamplight());
}

void DeviceManager::setLamplight(bool enable)
{
    send(DM::setLamplight(enable));
}

void DeviceManager::getSoundEffect()
{
    send(DM::getSoundEffect());
}

void DeviceManager::setSoundEffect(bool enable)
{
    send(DM::setSoundEffect(enable));
}

void DeviceManager::getModule()
{
    send(DM::getModule());
}

void DeviceManager::getActive()
{
    send(DM::getActive());
}

void DeviceManager::getDongleFlashID()
{
    send(DM::getDongleFlashID());
}

void DeviceManager::getRemoteFlashID()
{
    send(DM::getRemoteFlashID());
}

void DeviceManager::getDPILevelValue()
{
    send(DM::getDPILevelValue());
}

void DeviceManager::getDevicePowerPlugIn()
{
    send(DM::getDevicePowerPlugIn());
}

void DeviceManager::getAudioEnable()
{
    send(DM::getAudioEnable());
}

void DeviceManager::setAudioEnable(bool enable)
{
    // Always the Bluetooth path, whichever link is in use.
    writeBLEMessage(DM::setAudioEnable(enable));
}

void DeviceManager::audioEnable(bool enable)
{
    writeBLEMessage(DM::setAudioEnable(enable));
}

void DeviceManager::getAudioVolume()
{
    send(DM::getAudioVolume());
}

void DeviceManager::setAudioVolume(int volume)
{
    if (!DM::volumeInRange(volume, mVolumeEnable, mVolumeMin, mVolumeMax)) {
        return;
    }
    send(DM::setAudioVolume(volume));
}

void DeviceManager::getBLEAudioMode()
{
    if (mDeviceType == DeviceTypeBle) {
        send(DM::getBLEAudioMode());
    }
}

void DeviceManager::setBLEAudioMode(int mode)
{
    if (mDeviceType == DeviceTypeBle) {
        send(DM::setBLEAudioMode(mode));
    }
}

void DeviceManager::responseAck(int type)
{
    send(DM::responseAck(type));
}

void DeviceManager::send(st_small_base_com_msg msg)
{
    if (mDeviceType == DeviceTypeBle) {
        writeBLEMessage(msg);
    } else {
        mHidManager->write(msg.bytes);
    }
}

void DeviceManager::writeBLEMessage(const st_small_base_com_msg& msg)
{
    // The channel belongs to the audio while it streams.
    if (mAudioActive) {
        return;
    }
    mBleManager->serviceWriteMessage(msg.toByteArray(kBleWriteLength));
}

void DeviceManager::handleBlePacket(const QByteArray& packet)
{
    if (packet.isEmpty() || mAudio.handlePacket(packet)) {
        return;
    }
    handleMessage(st_small_base_com_msg::fromBytes(packet));
}

void DeviceManager::handleMessage(st_small_base_com_msg msg)
{
    switch (msg.route()) {
        case DM::RouteRemote:
            remoteMessageHandle(msg);
            break;
        case DM::RouteUsb:
            usbMessageHandle(msg);
            break;
        case DM::RouteInteractive:
            interactiveMessageHandle(msg);
            break;
        default:
            break;
    }
}

void DeviceManager::remoteMessageHandle(const st_small_base_com_msg& msg)
{
    const int cls = msg.configClass();
    const int type = msg.configType();
    // Without a result flag only the missing three-level values mean something.
    if (!msg.resultFlag()) {
        if (cls == 6 && type == DM::CFG_SET_REMOTE_DPI_LEVEL_VALUE) {
            emit signalDpiThreeLevelFunction();
        }
        return;
    }
    if (cls == 3 && type == 24) {
        const int volume = msg.u8(8);
        if (DM::volumeInRange(volume, mVolumeEnable, mVolumeMin, mVolumeMax)) {
            emit signalAudioVolume(volume);
        }
        return;
    }
    if (cls == 4) {
        if (type == DM::CFG_REMOTE_VERSION_MODULE) {
            const bool shake = msg.bit(11, 0);
            const bool lamplight = msg.bit(11, 1);
            const bool sound = msg.bit(11, 2);
            const bool volumeAdjust = msg.bit(11, 3);
            const bool wired = msg.bit(11, 5);
            emit signalModule(lamplight, shake, sound, msg.u8(12), msg.hex(8, 3), wired);
            mVolumeEnable = volumeAdjust;
            mVolumeMax = msg.u8(14);
            mVolumeMin = msg.u8(13);
            emit signalVolumeAdjust(volumeAdjust, msg.u8(14), msg.u8(13));
        } else if (type == DM::CFG_REMOTE_FLASH_ID) {
            emit signalRemoteFlashID(msg.hex(8, 8));
        }
        return;
    }
    if (cls != 6) {
        return;
    }
    switch (type) {
        case DM::CFG_SET_REMOTE_MOUSE_DPI:
            emit signalDpi(msg.u8(8));
            break;
        case DM::CFG_SET_REMOTE_MOUSE_LOWBAT_REPORT:
            emit signalLowbatReport(msg.bit(8, 0));
            break;
        case DM::CFG_SET_REMOTE_MOUSE_SHAKE:
            emit signalShake(msg.bit(8, 0));
            break;
        case DM::CFG_SET_REMOTE_MOUSE_LAMPLIGHT:
            emit signalLamplight(!msg.bit(8, 0));
            break;
        case DM::CFG_SET_REMOTE_MOUSE_SOUND_EFFECT:
            emit signalSoundEffect(msg.bit(8, 0));
            break;
        case DM::CFG_SET_REMOTE_OPTICAL_MOUSE_RESOLITION:
            emit signalCpi(msg.u16(8));
            break;
        case DM::CFG_SET_REMOTE_DPI_LEVEL_VALUE:
            emit signalDpiLevelValue(msg.u16(8), msg.u16(10), msg.u16(12));
            break;
        case DM::CFG_SET_REMOTE_MIC_PACKET_TYPE_FORCE:
            emit signalAudioPacketMode(msg.bit(8, 1));
            break;
        default:
            break;
    }
}

void DeviceManager::usbMessageHandle(const st_small_base_com_msg& msg)
{
    const int cls = msg.configClass();
    const int type = msg.configType();
    if (cls == 3 && type == DM::USB_CFG_MSG_RF_LINK_STATUS) {
        // Whatever byte 8 holds, and with or without a result flag.
        emit signalMouseActive(true);
        return;
    }
    if (!msg.resultFlag()) {
        return;
    }
    if (cls == 2 && type == DM::USB_CFG_DONGLE_FLASH_ID) {
        emit signalDongleFlashID(msg.hex(8, 8));
    } else if (cls == 8 && type == 6) {
        emit signalAudioEnable((msg.u16(8) & 1) != 0);
    }
}

void DeviceManager::interactiveMessageHandle(const st_small_base_com_msg& msg)
{
    switch (msg.interactiveType()) {
        case DM::TYPE_PC_REMOTE_ACTIVE_NOTICE:
            emit signalMouseActive(msg.bit(5, 0));
            break;
        case DM::TYPE_PC_KEY_PASSTHROUGH: {
            const int key = msg.u8(5);
            const int status = msg.u8(6);
            if (isVoiceKey(key)) {
                Trace::mark(status != 0 ? "voice-key-down" : "voice-key-up");
                if (status != 0) {
                    mAudio.reset();
                    setAudioEnable(true);
                } else {
                    mAudioActive = false;
                }
                buildClickType(key, status);
                emit signalKeyEvent(key, status);
            } else {
                emit signalForeFinishKeyEvent(key, status);
            }
            break;
        }
        case DM::TYPE_POWER_PLUG:
            emit signalDevicePowerPlugIn(msg.bit(7, 3));
            break;
        case DM::TYPE_REMOTE_CHANGE: {
            const int subType = msg.u8(5);
            const int value = msg.u8(6);
            if (subType == DM::REMOTE_SET_DPI) {
                emit signalChangeMouseDpiKey(value);
            } else if (subType == DM::REMOTE_SET_LAMPLIGHT) {
                emit signalLamplight(value);
            }
            // The only event the mouse wants acknowledged, whatever its sub-type.
            responseAck(subType);
            break;
        }
        case DM::TYPE_BATTERY_VALUE:
            emit signalBatteryValue(msg.u16(5));
            break;
        case DM::TYPE_LOW_BAT_LEVEL_REPORT_MSG: {
            const int level = msg.u16(5);
            if (level == 1) {
                emit signalLowbat();
            } else if (level == 2) {
                if (msg.bit(7, 2)) {
                    emit signalMouseShutdown();
                } else {
                    emit signalMinLowbat();
                }
            }
            break;
        }
        default:
            break;
    }
}

void DeviceManager::buildClickType(int key, int status)
{
    emitClickResults(this, mClassifier.buildClickType(key, status));
    if (status != 0) {
        // The timer lives on the main thread; presses may come from the read thread.
        QMetaObject::invokeMethod(this, "startKeyTimer", Qt::QueuedConnection);
    }
}

void DeviceManager::startKeyTimer()
{
    if (!mKeyTimer->isActive() && !mClassifier.isIdle()) {
        mKeyTimer->start();
    }
}

bool DeviceManager::isKeyTimerActive() const
{
    return mKeyTimer->isActive();
}

void DeviceManager::onKeyCheck()
{
    emitClickResults(this, mClassifier.onKeyCheck());
    if (mClassifier.isIdle()) {
        mKeyTimer->stop();
    }
}

void DeviceManager::onUSBChange(int vid, int pid, bool enable)
{
    emit signalUSBChange(vid, pid, enable);
}

void DeviceManager::onScanFinished()
{
    emit signalScanFinished();
}
