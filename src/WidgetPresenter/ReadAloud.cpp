#include "WidgetPresenter/ReadAloud.h"

#include "SpeechRec/SpeechSynthesisUtils.h"

ReadAloud::ReadAloud(SpeechSynthesisUtils* synthesis, Reach reach, QObject* parent) : QObject(parent)
{
    if (synthesis != nullptr || reach == ReachNow) {
        mSynthesis = synthesis != nullptr ? synthesis : SpeechSynthesisUtils::getInstance();
        connect(mSynthesis, &SpeechSynthesisUtils::speechSynthesisOver, this, &ReadAloud::onOver);
    }
}

SpeechSynthesisUtils* ReadAloud::service()
{
    if (mSynthesis == nullptr) {
        mSynthesis = SpeechSynthesisUtils::getInstance();
        connect(mSynthesis, &SpeechSynthesisUtils::speechSynthesisOver, this, &ReadAloud::onOver);
    }
    return mSynthesis;
}

bool ReadAloud::read(const QStringList& pieces, int reader)
{
    if (pieces.isEmpty()) {
        return false;
    }
    SpeechSynthesisUtils* synthesis = service();
    if (synthesis->isPlaying()) {
        synthesis->stop();
    }
    mReading = true;
    for (const QString& piece : pieces) {
        emit synthesis->speechSynthesis(piece, reader, 5, 5, 5);
    }
    return true;
}

void ReadAloud::stop()
{
    mReading = false;
    service()->stop();
}

void ReadAloud::stopPlaying()
{
    if (mSynthesis != nullptr && mSynthesis->isPlaying()) {
        mSynthesis->stop();
    }
}

void ReadAloud::stopAll()
{
    SpeechSynthesisUtils::getInstance()->stop();
}

void ReadAloud::onOver()
{
    const bool own = mReading;
    mReading = false;
    emit over(own);
}
