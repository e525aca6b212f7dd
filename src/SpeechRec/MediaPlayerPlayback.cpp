#include "SpeechRec/MediaPlayerPlayback.h"

#include <QUrl>

MediaPlayerPlayback::MediaPlayerPlayback(QObject* parent) : AudioPlayback(parent)
{
    connect(&mPlayer, &QMediaPlayer::stateChanged, this, [this](QMediaPlayer::State state) {
        if (state == QMediaPlayer::StoppedState) {
            emit signalStopped();
        }
    });
}

void MediaPlayerPlayback::play(const QString& file)
{
    mPlayer.setMedia(QUrl::fromLocalFile(file));
    mPlayer.play();
}

void MediaPlayerPlayback::stop()
{
    mPlayer.stop();
}

void MediaPlayerPlayback::clear()
{
    mPlayer.setMedia(QMediaContent());
}

bool MediaPlayerPlayback::isPlaying() const
{
    return mPlayer.state() == QMediaPlayer::PlayingState;
}
