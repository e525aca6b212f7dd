#pragma once

#include "Hid/HidBackend.h"
#include "Hid/VirtualDeviceConnection.h"

#include <QByteArray>
#include <QList>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

// The USB receiver played by tools/mouse-sim over the virtual device socket.
class VirtualHidBackend : public HidBackend {
public:
    explicit VirtualHidBackend(const QString& socketPath);
    ~VirtualHidBackend() override;

    bool init() override;
    QList<Interface> enumerate() override;
    Handle openPath(const QString& path) override;
    int readTimeout(Handle handle, unsigned char* buffer, int length, int milliseconds) override;
    int write(Handle handle, const unsigned char* data, int length) override;
    void close(Handle handle) override;
    QString error(Handle handle) override;
    bool canWake(Handle) override { return true; }
    void wake(Handle handle) override;

    // The interface list of a HidInterfaces payload; malformed entries end the list.
    static QList<Interface> parseInterfaces(const QByteArray& payload);

private:
    void onFrame(int channel, const QByteArray& payload);
    void onDisconnect();

    std::mutex mMutex;
    std::condition_variable mChanged;
    QList<Interface> mInterfaces;
    bool mHaveInterfaces = false;
    std::deque<QByteArray> mInput;
    QString mOpenPath;
    bool mGone = false;
    bool mWoken = false;
    int mHandleTag = 0;
    // Last, so that its reading thread ends before the state above goes.
    std::unique_ptr<VirtualDeviceConnection> mConnection;
};
