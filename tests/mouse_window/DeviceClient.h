#pragma once

#include "Hid/VirtualDeviceConnection.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QtTest>

// The application's end of the virtual device socket, frame by frame, for checking what the
// virtual mouse sends.
class DeviceClient {
public:
    struct Frame {
        int channel;
        QByteArray payload;
    };

    bool connectTo(const QString& path)
    {
        mSocket.connectToServer(path);
        return mSocket.waitForConnected(2000);
    }
    void send(int channel, const QByteArray& payload)
    {
        mSocket.write(VirtualDeviceConnection::frame(channel, payload));
        mSocket.flush();
    }
    // Takes the first frame of the channel that matches, waiting for it; frames of other
    // channels stay for later.
    bool take(int channel, Frame* found, int timeoutMs = 3000,
              const std::function<bool(const QByteArray&)>& match = {})
    {
        QElapsedTimer clock;
        clock.start();
        do {
            read();
            for (int i = 0; i < mFrames.size(); ++i) {
                if (mFrames.at(i).channel == channel && (!match || match(mFrames.at(i).payload))) {
                    *found = mFrames.takeAt(i);
                    return true;
                }
            }
            QTest::qWait(10);
        } while (clock.elapsed() < timeoutMs);
        return false;
    }
    bool takePayload(int channel, const QByteArray& payload, int timeoutMs = 3000)
    {
        Frame frame;
        return take(channel, &frame, timeoutMs, [&](const QByteArray& p) { return p == payload; });
    }
    // Everything of a channel received so far, in order, removed.
    QByteArray drain(int channel)
    {
        read();
        QByteArray all;
        for (int i = 0; i < mFrames.size();) {
            if (mFrames.at(i).channel == channel) {
                all += mFrames.takeAt(i).payload;
            } else {
                ++i;
            }
        }
        return all;
    }
    void clear()
    {
        read();
        mFrames.clear();
    }

private:
    void read()
    {
        mBuffer += mSocket.readAll();
        while (mBuffer.size() >= 3) {
            const int length = static_cast<quint8>(mBuffer.at(1)) | (static_cast<quint8>(mBuffer.at(2)) << 8);
            if (mBuffer.size() < 3 + length) {
                break;
            }
            mFrames.append({static_cast<quint8>(mBuffer.at(0)), mBuffer.mid(3, length)});
            mBuffer.remove(0, 3 + length);
        }
    }

    QLocalSocket mSocket;
    QByteArray mBuffer;
    QList<Frame> mFrames;
};
