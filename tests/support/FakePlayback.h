#pragma once

#include "SpeechRec/AudioPlayback.h"

#include <QFile>
#include <QList>
#include <QStringList>

// Plays nothing: keeps what the file held at each play, and ends a piece when told.
class FakePlayback : public AudioPlayback {
public:
    QList<QByteArray> played;
    QStringList files;
    bool playing = false;

    void play(const QString& file) override
    {
        QFile f(file);
        played << (f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray());
        files << file;
        playing = true;
    }
    void stop() override { finish(); }
    void clear() override {}
    bool isPlaying() const override { return playing; }
    void finish()
    {
        if (playing) {
            playing = false;
            emit signalStopped();
        }
    }
};
