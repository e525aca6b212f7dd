#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// The one record the application and the mouse exchange: 32 bytes, little-endian.
//
//  byte 0    bits 0-4 route (1 remote, 6 USB receiver, 11 interactive), bits 5-7 zero
//  bytes 1-3 reserved, zero
//  byte 4    interactive type (route 11)
//  byte 5    bits 0-3 configuration class (routes 1 and 6); route 11: payload from here
//  byte 6    configuration type
//  byte 7    bit 0 read flag (requests), bit 4 result flag (replies)
//  bytes 8-31 payload
//
// Over USB a record travels as a 32-byte report with report number 0 (bytes 0-30 reach the
// device); over Bluetooth LE bytes 0-19 go as one characteristic write.
struct st_small_base_com_msg {
    quint8 bytes[32];

    // A zeroed record; every request starts from one.
    st_small_base_com_msg();

    // A received packet: missing bytes read as 0, bytes beyond 32 are ignored.
    static st_small_base_com_msg fromBytes(const char* data, int length);
    static st_small_base_com_msg fromBytes(const QByteArray& data);

    QByteArray toByteArray(int length = 32) const;

    int route() const { return bytes[0] & 0x1F; }
    int configClass() const { return bytes[5] & 0x0F; }
    int configType() const { return bytes[6]; }
    bool readFlag() const { return (bytes[7] & 0x01) != 0; }
    bool resultFlag() const { return (bytes[7] & 0x10) != 0; }
    int interactiveType() const { return bytes[4]; }
    int u8(int offset) const { return bytes[offset]; }
    int u16(int offset) const { return bytes[offset] | (bytes[offset + 1] << 8); }
    bool bit(int offset, int bitIndex) const { return ((bytes[offset] >> bitIndex) & 1) != 0; }

    // n bytes from offset rendered "%02X" each: flash ids, customer codes.
    QString hex(int offset, int count) const;
};
static_assert(sizeof(st_small_base_com_msg) == 32, "the device record is 32 bytes");

namespace DeviceMessage {

enum Route { RouteRemote = 1, RouteUsb = 6, RouteInteractive = 11 };

enum InteractiveType {
    TYPE_PC_REMOTE_ACTIVE_NOTICE = 11,
    TYPE_PC_KEY_PASSTHROUGH = 16,
    TYPE_POWER_PLUG = 111,
    TYPE_REMOTE_CHANGE = 120,
    TYPE_BATTERY_VALUE = 123,
    TYPE_LOW_BAT_LEVEL_REPORT_MSG = 124,
};

enum RemoteChange { REMOTE_SET_DPI = 1, REMOTE_SET_LAMPLIGHT = 3 };

// Route 1 class 6 types.
enum RemoteMouseType {
    CFG_SET_REMOTE_MOUSE_DPI = 2,
    CFG_SET_REMOTE_MOUSE_LOWBAT_REPORT = 3,
    CFG_SET_REMOTE_MOUSE_SHAKE = 4,
    CFG_SET_REMOTE_MOUSE_LAMPLIGHT = 5,
    CFG_SET_REMOTE_MOUSE_SOUND_EFFECT = 6,
    CFG_SET_REMOTE_ACK = 7,
    CFG_SET_REMOTE_OPTICAL_MOUSE_RESOLITION = 9,
    CFG_SET_REMOTE_DPI_LEVEL_VALUE = 10,
    CFG_SET_REMOTE_MIC_PACKET_TYPE_FORCE = 11,
};

// Route 1 class 4 types.
enum RemoteVersionType { CFG_REMOTE_VERSION_MODULE = 10, CFG_REMOTE_FLASH_ID = 11 };

// Route 6 class/type pairs.
enum UsbType {
    USB_CFG_MSG_RF_LINK_STATUS = 10,  // class 3
    USB_CFG_DONGLE_FLASH_ID = 11,     // class 2
};

// A request on zeroed storage with route, class, type and read flag set.
st_small_base_com_msg request(int route, int configClass, int configType, bool read);

// Every request the application sends.
st_small_base_com_msg getDpi();
st_small_base_com_msg setDpi(int level);
st_small_base_com_msg getCpi();
st_small_base_com_msg setCpi(int value);
st_small_base_com_msg getLowbatReport();
st_small_base_com_msg setLowbatReport(bool enable);
st_small_base_com_msg getShake();
st_small_base_com_msg setShake(bool enable);
st_small_base_com_msg getLamplight();
st_small_base_com_msg setLamplight(bool enable);
st_small_base_com_msg getSoundEffect();
st_small_base_com_msg setSoundEffect(bool enable);
st_small_base_com_msg responseAck(int type);
st_small_base_com_msg getDPILevelValue();
st_small_base_com_msg getBLEAudioMode();
st_small_base_com_msg setBLEAudioMode(int mode);
st_small_base_com_msg getModule();
st_small_base_com_msg getRemoteFlashID();
st_small_base_com_msg getAudioVolume();
st_small_base_com_msg setAudioVolume(int volume);
st_small_base_com_msg getDongleFlashID();
st_small_base_com_msg getActive();
st_small_base_com_msg getDevicePowerPlugIn();
st_small_base_com_msg getAudioEnable();
st_small_base_com_msg setAudioEnable(bool enable);

// Whether a Bluetooth packet is SBC audio rather than a record, by its first byte.
bool isAudioPacket(quint8 firstByte);

// The volume range rule: the reported range when the device reported adjustment,
// else 28 to 40, both ends included.
bool volumeInRange(int volume, bool adjustEnabled, int reportedMin, int reportedMax);

}  // namespace DeviceMessage
