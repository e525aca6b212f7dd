#include "Hid/DeviceMessage.h"

#include <algorithm>
#include <cstring>

st_small_base_com_msg::st_small_base_com_msg()
{
    std::memset(bytes, 0, sizeof(bytes));
}

st_small_base_com_msg st_small_base_com_msg::fromBytes(const char* data, int length)
{
    st_small_base_com_msg msg;
    if (data != nullptr && length > 0) {
        std::memcpy(msg.bytes, data, static_cast<size_t>(std::min(length, 32)));
    }
    return msg;
}

st_small_base_com_msg st_small_base_com_msg::fromBytes(const QByteArray& data)
{
    return fromBytes(data.constData(), data.size());
}

QByteArray st_small_base_com_msg::toByteArray(int length) const
{
    return QByteArray(reinterpret_cast<const char*>(bytes), std::clamp(length, 0, 32));
}

QString st_small_base_com_msg::hex(int offset, int count) const
{
    QString text;
    for (int i = 0; i < count; ++i) {
        text += QStringLiteral("%1").arg(bytes[offset + i], 2, 16, QLatin1Char('0')).toUpper();
    }
    return text;
}

namespace DeviceMessage {

namespace {

constexpr int kVolumeMin = 28;
constexpr int kVolumeMax = 40;

st_small_base_com_msg remoteMouse(int type, bool read)
{
    return request(RouteRemote, 6, type, read);
}

// Shake, lamplight and sound effect write 0 to switch on.
st_small_base_com_msg writeInvertedSwitch(int type, bool enable)
{
    st_small_base_com_msg msg = remoteMouse(type, false);
    msg.bytes[8] = enable ? 0 : 1;
    return msg;
}

void put16(st_small_base_com_msg& msg, int offset, int value)
{
    msg.bytes[offset] = static_cast<quint8>(value & 0xFF);
    msg.bytes[offset + 1] = static_cast<quint8>((value >> 8) & 0xFF);
}

}  // namespace

st_small_base_com_msg request(int route, int configClass, int configType, bool read)
{
    st_small_base_com_msg msg;
    msg.bytes[0] = static_cast<quint8>(route & 0x1F);
    msg.bytes[5] = static_cast<quint8>(configClass & 0x0F);
    msg.bytes[6] = static_cast<quint8>(configType);
    msg.bytes[7] = read ? 1 : 0;
    return msg;
}

st_small_base_com_msg getDpi()
{
    return remoteMouse(CFG_SET_REMOTE_MOUSE_DPI, true);
}

st_small_base_com_msg setDpi(int level)
{
    st_small_base_com_msg msg = remoteMouse(CFG_SET_REMOTE_MOUSE_DPI, false);
    msg.bytes[8] = static_cast<quint8>(level & 0xFF);
    return msg;
}

st_small_base_com_msg getCpi()
{
    return remoteMouse(CFG_SET_REMOTE_OPTICAL_MOUSE_RESOLITION, true);
}

st_small_base_com_msg setCpi(int value)
{
    st_small_base_com_msg msg = remoteMouse(CFG_SET_REMOTE_OPTICAL_MOUSE_RESOLITION, false);
    put16(msg, 8, value);
    return msg;
}

st_small_base_com_msg getLowbatReport()
{
    return remoteMouse(CFG_SET_REMOTE_MOUSE_LOWBAT_REPORT, true);
}

st_small_base_com_msg setLowbatReport(bool enable)
{
    st_small_base_com_msg msg = remoteMouse(CFG_SET_REMOTE_MOUSE_LOWBAT_REPORT, false);
    msg.bytes[8] = enable ? 1 : 0;
    return msg;
}

st_small_base_com_msg getShake()
{
    return remoteMouse(CFG_SET_REMOTE_MOUSE_SHAKE, true);
}

st_small_base_com_msg setShake(bool enable)
{
    return writeInvertedSwitch(CFG_SET_REMOTE_MOUSE_SHAKE, enable);
}

st_small_base_com_msg getLamplight()
{
    return remoteMouse(CFG_SET_REMOTE_MOUSE_LAMPLIGHT, true);
}

st_small_base_com_msg setLamplight(bool enable)
{
    return writeInvertedSwitch(CFG_SET_REMOTE_MOUSE_LAMPLIGHT, enable);
}

st_small_base_com_msg getSoundEffect()
{
    return remoteMouse(CFG_SET_REMOTE_MOUSE_SOUND_EFFECT, true);
}

st_small_base_com_msg setSoundEffect(bool enable)
{
    return writeInvertedSwitch(CFG_SET_REMOTE_MOUSE_SOUND_EFFECT, enable);
}

st_small_base_com_msg responseAck(int type)
{
    st_small_base_com_msg msg = remoteMouse(CFG_SET_REMOTE_ACK, false);
    msg.bytes[8] = static_cast<quint8>(type & 0xFF);
    return msg;
}

st_small_base_com_msg getDPILevelValue()
{
    return remoteMouse(CFG_SET_REMOTE_DPI_LEVEL_VALUE, true);
}

st_small_base_com_msg getBLEAudioMode()
{
    return remoteMouse(CFG_SET_REMOTE_MIC_PACKET_TYPE_FORCE, true);
}

st_small_base_com_msg setBLEAudioMode(int mode)
{
    st_small_base_com_msg msg = remoteMouse(CFG_SET_REMOTE_MIC_PACKET_TYPE_FORCE, false);
    // Bit 0 always; bit 1 and the two-bit field at bits 2-3 carry mode 1.
    msg.bytes[8] = static_cast<quint8>(mode == 1 ? (0x01 | 0x02 | (1 << 2)) : 0x01);
    return msg;
}

st_small_base_com_msg getModule()
{
    return request(RouteRemote, 4, CFG_REMOTE_VERSION_MODULE, true);
}

st_small_base_com_msg getRemoteFlashID()
{
    return request(RouteRemote, 4, CFG_REMOTE_FLASH_ID, true);
}

st_small_base_com_msg getAudioVolume()
{
    return request(RouteRemote, 3, 24, true);
}

st_small_base_com_msg setAudioVolume(int volume)
{
    st_small_base_com_msg msg = request(RouteRemote, 3, 24, false);
    msg.bytes[8] = static_cast<quint8>(volume & 0xFF);
    return msg;
}

st_small_base_com_msg getDongleFlashID()
{
    return request(RouteUsb, 2, USB_CFG_DONGLE_FLASH_ID, true);
}

st_small_base_com_msg getActive()
{
    return request(RouteUsb, 3, USB_CFG_MSG_RF_LINK_STATUS, true);
}

st_small_base_com_msg getDevicePowerPlugIn()
{
    // The read flag stays 0 on this one.
    return request(RouteUsb, 8, 2, false);
}

st_small_base_com_msg getAudioEnable()
{
    return request(RouteUsb, 8, 4, true);
}

st_small_base_com_msg setAudioEnable(bool enable)
{
    st_small_base_com_msg msg = request(RouteUsb, 8, 6, false);
    put16(msg, 8, enable ? 1 : 0);
    return msg;
}

bool isAudioPacket(quint8 firstByte)
{
    switch (firstByte) {
        case 7:
        case 15:  // group A
        case 38:  // group B
        case 18:
        case 50:
        case 82:
        case 114:  // group C
        case 14:
        case 46:
        case 78:  // group D
            return true;
        default:
            return false;
    }
}

bool volumeInRange(int volume, bool adjustEnabled, int reportedMin, int reportedMax)
{
    if (adjustEnabled) {
        return volume >= reportedMin && volume <= reportedMax;
    }
    return volume >= kVolumeMin && volume <= kVolumeMax;
}

}  // namespace DeviceMessage
