#pragma once

#include "SpeechRec/AudioPlayback.h"

#include <QMediaPlayer>

// AudioPlayback through QMediaPlayer.
class MediaPlayerPlayback : public AudioPlayback {
    Q_OBJECT

public:
    explicit MediaPlayerPlayback(QObject* parent = nullptr);

    void play(const QString& file) override;
    void stop() override;
    void clear() override;
    bool isPlaying() const override;

private:
    QMediaPlayer mPlayer;
};
