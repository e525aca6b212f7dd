#include "SimDevice.h"

#include <QStringList>

namespace DM = DeviceMessage;

namespace {

st_small_base_com_msg reply(const st_small_base_com_msg& request, bool result = true)
{
    st_small_base_com_msg msg =
        DM::request(request.route(), request.configClass(), request.configType(), false);
    msg.bytes[7] = result ? 0x10 : 0x00;
    return msg;
}

void put16(st_small_base_com_msg& msg, int offset, int value)
{
    msg.bytes[offset] = static_cast<quint8>(value & 0xFF);
    msg.bytes[offset + 1] = static_cast<quint8>((value >> 8) & 0xFF);
}

void putHex(st_small_base_com_msg& msg, int offset, const QString& hex, int count)
{
    const QByteArray bytes = QByteArray::fromHex(hex.toLatin1()).leftJustified(count, '\0', true);
    for (int i = 0; i < count; ++i) {
        msg.bytes[offset + i] = static_cast<quint8>(bytes.at(i));
    }
}

st_small_base_com_msg interactive(int type)
{
    st_small_base_com_msg msg;
    msg.bytes[0] = DM::RouteInteractive;
    msg.bytes[4] = static_cast<quint8>(type);
    return msg;
}

bool parseBool(const QString& value, bool* ok)
{
    if (value == QLatin1String("1") || value == QLatin1String("on") || value == QLatin1String("true")) {
        *ok = true;
        return true;
    }
    *ok = value == QLatin1String("0") || value == QLatin1String("off") || value == QLatin1String("false");
    return false;
}

}  // namespace

QList<st_small_base_com_msg> SimDevice::handleRequest(const st_small_base_com_msg& request)
{
    const int route = request.route();
    const int cls = request.configClass();
    const int type = request.configType();
    const bool read = request.readFlag();
    State& s = mState;
    st_small_base_com_msg out = reply(request);

    if (route == DM::RouteRemote && cls == 6) {
        switch (type) {
            case DM::CFG_SET_REMOTE_MOUSE_DPI:
                if (!read) {
                    s.dpiLevel = request.u8(8);
                }
                out.bytes[8] = static_cast<quint8>(s.dpiLevel);
                return {out};
            case DM::CFG_SET_REMOTE_MOUSE_LOWBAT_REPORT:
                if (!read) {
                    s.lowbatReport = request.bit(8, 0);
                }
                out.bytes[8] = s.lowbatReport ? 1 : 0;
                return {out};
            // Shake and sound read back 1 for on but are written 0 for on; the lamplight is
            // 0 for on both ways.
            case DM::CFG_SET_REMOTE_MOUSE_SHAKE:
                if (!read) {
                    s.shake = !request.bit(8, 0);
                }
                out.bytes[8] = s.shake ? 1 : 0;
                return {out};
            case DM::CFG_SET_REMOTE_MOUSE_LAMPLIGHT:
                if (!read) {
                    s.lamplight = !request.bit(8, 0);
                }
                out.bytes[8] = s.lamplight ? 0 : 1;
                return {out};
            case DM::CFG_SET_REMOTE_MOUSE_SOUND_EFFECT:
                if (!read) {
                    s.soundEffect = !request.bit(8, 0);
                }
                out.bytes[8] = s.soundEffect ? 1 : 0;
                return {out};
            case DM::CFG_SET_REMOTE_OPTICAL_MOUSE_RESOLITION:
                if (!read) {
                    s.cpi = request.u16(8);
                }
                put16(out, 8, s.cpi);
                return {out};
            case DM::CFG_SET_REMOTE_DPI_LEVEL_VALUE:
                if (!s.hasLevelValues) {
                    return {reply(request, false)};
                }
                for (int i = 0; i < 3; ++i) {
                    put16(out, 8 + 2 * i, s.levelValues[i]);
                }
                return {out};
            case DM::CFG_SET_REMOTE_MIC_PACKET_TYPE_FORCE:
                if (!read) {
                    s.audioPacketMode = request.bit(8, 1) ? 1 : 0;
                }
                out.bytes[8] = static_cast<quint8>(0x01 | (s.audioPacketMode << 1));
                return {out};
            default:
                return {};  // the acknowledgement and anything unknown: no answer
        }
    }
    if (route == DM::RouteRemote && cls == 4) {
        if (type == DM::CFG_REMOTE_VERSION_MODULE) {
            putHex(out, 8, s.customerCode, 3);
            out.bytes[11] = static_cast<quint8>((s.shakeModule ? 0x01 : 0) | (s.lamplightModule ? 0x02 : 0) |
                                                (s.soundModule ? 0x04 : 0) | (s.volumeAdjust ? 0x08 : 0) |
                                                (s.wired ? 0x20 : 0));
            out.bytes[12] = static_cast<quint8>(s.keyType);
            out.bytes[13] = static_cast<quint8>(s.volumeMin);
            out.bytes[14] = static_cast<quint8>(s.volumeMax);
            return {out};
        }
        if (type == DM::CFG_REMOTE_FLASH_ID) {
            putHex(out, 8, s.remoteFlashId, 8);
            return {out};
        }
        return {};
    }
    if (route == DM::RouteRemote && cls == 3 && type == 24) {
        if (!read) {
            s.volume = request.u8(8);
        }
        out.bytes[8] = static_cast<quint8>(s.volume);
        return {out};
    }
    if (route == DM::RouteUsb) {
        if (cls == 2 && type == DM::USB_CFG_DONGLE_FLASH_ID) {
            putHex(out, 8, s.dongleFlashId, 8);
            return {out};
        }
        if (cls == 3 && type == DM::USB_CFG_MSG_RF_LINK_STATUS) {
            out.bytes[8] = 1;
            return {out};
        }
        if (cls == 8 && type == 6) {
            s.audioEnabled = request.bit(8, 0);
            put16(out, 8, s.audioEnabled ? 1 : 0);
            return {out};
        }
        if (cls == 8 && type == 4) {
            put16(out, 8, s.audioEnabled ? 1 : 0);
            return {out};
        }
        if (cls == 8 && type == 2) {
            return {powerPlug(s.powerPlugged)};
        }
    }
    return {};
}

QStringList SimDevice::fieldNames()
{
    return {
        QStringLiteral("dpi"),           QStringLiteral("cpi"),           QStringLiteral("levels"),
        QStringLiteral("lowbat-report"), QStringLiteral("shake"),         QStringLiteral("lamplight"),
        QStringLiteral("sound"),         QStringLiteral("shake-module"),  QStringLiteral("lamplight-module"),
        QStringLiteral("sound-module"),  QStringLiteral("volume-adjust"), QStringLiteral("volume-min"),
        QStringLiteral("volume-max"),    QStringLiteral("volume"),        QStringLiteral("wired"),
        QStringLiteral("key-type"),      QStringLiteral("customer"),      QStringLiteral("remote-flash"),
        QStringLiteral("dongle-flash"),  QStringLiteral("power-plug")};
}

bool SimDevice::set(const QString& field, const QString& value)
{
    State& s = mState;
    bool ok = false;
    const int number = value.toInt(&ok);
    bool flagOk = false;
    const bool flag = parseBool(value, &flagOk);
    const auto hexOk = [&value](int digits) {
        return value.size() == digits && !QByteArray::fromHex(value.toLatin1()).isEmpty();
    };
    if (field == QLatin1String("levels")) {
        if (value == QLatin1String("none")) {
            s.hasLevelValues = false;
            return true;
        }
        const QStringList parts = value.split(QLatin1Char(','));
        if (parts.size() != 3) {
            return false;
        }
        for (int i = 0; i < 3; ++i) {
            s.levelValues[i] = parts.at(i).toInt(&ok);
            if (!ok) {
                return false;
            }
        }
        s.hasLevelValues = true;
        return true;
    }
    if (field == QLatin1String("customer") && hexOk(6)) {
        s.customerCode = value.toUpper();
        return true;
    }
    if (field == QLatin1String("remote-flash") && hexOk(16)) {
        s.remoteFlashId = value.toUpper();
        return true;
    }
    if (field == QLatin1String("dongle-flash") && hexOk(16)) {
        s.dongleFlashId = value.toUpper();
        return true;
    }
    struct IntField {
        const char* name;
        int* target;
    };
    const IntField ints[] = {{"dpi", &s.dpiLevel},         {"cpi", &s.cpi},
                             {"volume-min", &s.volumeMin}, {"volume-max", &s.volumeMax},
                             {"volume", &s.volume},        {"key-type", &s.keyType}};
    for (const IntField& f : ints) {
        if (field == QLatin1String(f.name)) {
            if (ok) {
                *f.target = number;
            }
            return ok;
        }
    }
    struct BoolField {
        const char* name;
        bool* target;
    };
    const BoolField bools[] = {{"lowbat-report", &s.lowbatReport},
                               {"shake", &s.shake},
                               {"lamplight", &s.lamplight},
                               {"sound", &s.soundEffect},
                               {"shake-module", &s.shakeModule},
                               {"lamplight-module", &s.lamplightModule},
                               {"sound-module", &s.soundModule},
                               {"volume-adjust", &s.volumeAdjust},
                               {"wired", &s.wired},
                               {"power-plug", &s.powerPlugged}};
    for (const BoolField& f : bools) {
        if (field == QLatin1String(f.name)) {
            if (flagOk) {
                *f.target = flag;
            }
            return flagOk;
        }
    }
    return false;
}

st_small_base_com_msg SimDevice::keyEvent(int key, int status)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_PC_KEY_PASSTHROUGH);
    msg.bytes[5] = static_cast<quint8>(key);
    msg.bytes[6] = static_cast<quint8>(status);
    return msg;
}

st_small_base_com_msg SimDevice::activeNotice(bool active)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_PC_REMOTE_ACTIVE_NOTICE);
    msg.bytes[5] = active ? 1 : 0;
    return msg;
}

st_small_base_com_msg SimDevice::powerPlug(bool plugged)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_POWER_PLUG);
    msg.bytes[7] = plugged ? 0x08 : 0x00;
    return msg;
}

st_small_base_com_msg SimDevice::dpiKey(int level)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_REMOTE_CHANGE);
    msg.bytes[5] = DM::REMOTE_SET_DPI;
    msg.bytes[6] = static_cast<quint8>(level);
    return msg;
}

st_small_base_com_msg SimDevice::lamplightChange(int value)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_REMOTE_CHANGE);
    msg.bytes[5] = DM::REMOTE_SET_LAMPLIGHT;
    msg.bytes[6] = static_cast<quint8>(value);
    return msg;
}

st_small_base_com_msg SimDevice::batteryValue(int value)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_BATTERY_VALUE);
    put16(msg, 5, value);
    return msg;
}

st_small_base_com_msg SimDevice::lowBattery(int level, bool shutdown)
{
    st_small_base_com_msg msg = interactive(DM::TYPE_LOW_BAT_LEVEL_REPORT_MSG);
    put16(msg, 5, level);
    msg.bytes[7] = shutdown ? 0x04 : 0x00;
    return msg;
}
