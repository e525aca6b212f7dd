#pragma once

#include <QByteArray>
#include <QObject>
#include <QStringList>

// An audio input the recorder can open: the system's inputs through Qt Multimedia, or the
// virtual receiver's. Delivers 16 kHz mono 16-bit PCM (or the nearest the device offers).
class AudioSource : public QObject {
    Q_OBJECT

public:
    enum State { Stopped, Active, Suspended, Failed };

    using QObject::QObject;

    virtual QStringList inputNames() = 0;
    // Prepares the named input, replacing any earlier one; false if it cannot be used.
    virtual bool open(const QString& name) = 0;
    virtual bool isOpen() const = 0;
    virtual State state() const = 0;
    virtual void start() = 0;
    virtual void stop() = 0;
    // Stops and forgets the input.
    virtual void close() = 0;

signals:
    // Bytes as they come, at most 8192 at a time.
    void signalData(QByteArray data);
};
