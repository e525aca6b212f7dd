#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <mutex>
#include <thread>

// The application's end of the virtual device socket (docs/virtual-device.md): connects on
// demand, reads frames on its own thread and hands each to the frame handler; writes from any
// thread. If the simulator goes away, the next use connects again.
class VirtualDeviceConnection {
public:
    enum Channel {
        HidInterfaces = 0x01,
        HidOpen = 0x02,
        HidClose = 0x03,
        HidInput = 0x04,
        HidOutput = 0x05,
        HidGone = 0x06,
        AudioInputs = 0x20,
        AudioStart = 0x21,
        AudioStop = 0x22,
        AudioPcm = 0x23,
        BleSystemDevices = 0x30,
        BleScanStart = 0x31,
        BleAdvert = 0x32,
        BleScanDone = 0x33,
        BleConnect = 0x34,
        BleLinkUp = 0x35,
        BleLinkError = 0x36,
        BleDisconnect = 0x37,
        BleLinkDown = 0x38,
        BleEnableNotify = 0x39,
        BleNotify = 0x3A,
        BleWrite = 0x3B,
    };
    using FrameHandler = std::function<void(int channel, const QByteArray& payload)>;
    using DisconnectHandler = std::function<void()>;

    // Handlers run on the reading thread.
    VirtualDeviceConnection(const QString& socketPath, FrameHandler onFrame, DisconnectHandler onDisconnect);
    ~VirtualDeviceConnection();

    VirtualDeviceConnection(const VirtualDeviceConnection&) = delete;
    VirtualDeviceConnection& operator=(const VirtualDeviceConnection&) = delete;

    // Connected afterwards, or false (logged once per failure streak).
    bool ensureConnected();
    bool send(int channel, const QByteArray& payload);

    // One frame as it goes on the wire.
    static QByteArray frame(int channel, const QByteArray& payload);

private:
    void readLoop(int fd);
    void dropConnection();

    const QString mSocketPath;
    const FrameHandler mOnFrame;
    const DisconnectHandler mOnDisconnect;

    std::mutex mMutex;       // the descriptor, the reader and the failure note
    std::mutex mWriteMutex;  // one frame at a time; taken before mMutex
    int mFd = -1;
    std::thread mReader;
    bool mFailureLogged = false;
};
