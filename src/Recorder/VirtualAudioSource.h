#pragma once

#include "Recorder/AudioSource.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>

class VirtualDeviceConnection;

// The receiver's audio input as the virtual receiver (tools/mouse-sim) plays it, over the
// virtual device socket. Audio read on the socket's thread is queued and handed to this
// object's thread.
class VirtualAudioSource : public AudioSource {
    Q_OBJECT

public:
    explicit VirtualAudioSource(const QString& socketPath, QObject* parent = nullptr);
    ~VirtualAudioSource() override;

    QStringList inputNames() override;
    bool open(const QString& name) override;
    bool isOpen() const override;
    State state() const override;
    void start() override;
    void stop() override;
    void close() override;

private slots:
    void deliverPending();

private:
    void onFrame(int channel, const QByteArray& payload);

    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    QStringList mInputs;
    bool mHaveInputs = false;
    QList<QByteArray> mPending;
    QString mName;
    State mState = Stopped;
    std::unique_ptr<VirtualDeviceConnection> mConnection;
};
