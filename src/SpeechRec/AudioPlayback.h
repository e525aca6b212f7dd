#pragma once

#include <QObject>
#include <QString>

// Plays one local audio file at a time. The media player ships; tests record.
class AudioPlayback : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void play(const QString& file) = 0;
    virtual void stop() = 0;
    // Lets go of the file.
    virtual void clear() = 0;
    virtual bool isPlaying() const = 0;

signals:
    // The playback ended, by itself or by stop().
    void signalStopped();
};
