#pragma once

#include "Hid/DeviceMessage.h"

#include <QList>
#include <QString>

// The mouse and its receiver as the record protocol sees them: a state, the replies to every
// request, and the device's own events.
class SimDevice {
public:
    struct State {
        int dpiLevel = 2;
        bool hasLevelValues = true;
        int levelValues[3] = {800, 1600, 2400};
        int cpi = 1600;
        bool lowbatReport = true;
        bool shake = true;
        bool lamplight = true;
        bool soundEffect = true;
        bool shakeModule = true;
        bool lamplightModule = true;
        bool soundModule = true;
        bool volumeAdjust = false;
        bool wired = false;
        int keyType = 1;
        QString customerCode = QStringLiteral("0A0B0C");
        int volumeMin = 28;
        int volumeMax = 40;
        int volume = 34;
        QString remoteFlashId = QStringLiteral("1122334455667788");
        QString dongleFlashId = QStringLiteral("8877665544332211");
        bool audioEnabled = false;
        int audioPacketMode = 0;
        bool powerPlugged = false;
    };

    State& state() { return mState; }
    const State& state() const { return mState; }

    // The replies to one request; requests the device does not know get none.
    QList<st_small_base_com_msg> handleRequest(const st_small_base_com_msg& request);

    // A field of the state by name ("dpi", "cpi", "shake", ...); false for an unknown name or value.
    bool set(const QString& field, const QString& value);
    static QStringList fieldNames();

    // The device's own events.
    static st_small_base_com_msg keyEvent(int key, int status);
    static st_small_base_com_msg activeNotice(bool active);
    static st_small_base_com_msg powerPlug(bool plugged);
    static st_small_base_com_msg dpiKey(int level);
    static st_small_base_com_msg lamplightChange(int value);
    static st_small_base_com_msg batteryValue(int value);
    static st_small_base_com_msg lowBattery(int level, bool shutdown);

private:
    State mState;
};
