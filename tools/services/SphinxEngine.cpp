#include "SphinxEngine.h"

#include <pocketsphinx.h>

#include <QVector>

#include <cstdio>

namespace {

QVector<ps_decoder_t*>& idleDecoders()
{
    static QVector<ps_decoder_t*> decoders;
    return decoders;
}

ps_decoder_t* loadDecoder()
{
    const QByteArray dir = ZORVANE_SPHINX_MODEL_DIR;
    const QByteArray hmm = dir + "/en-us";
    const QByteArray lm = dir + "/en-us.lm.bin";
    const QByteArray dict = dir + "/cmudict-en-us.dict";
    cmd_ln_t* config = cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", hmm.constData(), "-lm", lm.constData(),
                                   "-dict", dict.constData(), "-logfn", "/dev/null", nullptr);
    if (config == nullptr) {
        std::fprintf(stderr, "pocketsphinx: cannot read the model in %s\n", dir.constData());
        return nullptr;
    }
    ps_decoder_t* decoder = ps_init(config);
    cmd_ln_free_r(config);  // the decoder keeps its own reference
    if (decoder == nullptr) {
        std::fprintf(stderr, "pocketsphinx: cannot load the model in %s\n", dir.constData());
    }
    return decoder;
}

}  // namespace

bool SphinxEngine::preload()
{
    if (idleDecoders().isEmpty()) {
        ps_decoder_t* decoder = loadDecoder();
        if (decoder == nullptr) {
            return false;
        }
        idleDecoders().append(decoder);
    }
    return true;
}

SphinxEngine::SphinxEngine()
{
    if (!idleDecoders().isEmpty()) {
        mDecoder = idleDecoders().takeLast();
    } else {
        mDecoder = loadDecoder();
    }
    if (mDecoder != nullptr) {
        ps_start_utt(mDecoder);
    }
}

SphinxEngine::~SphinxEngine()
{
    if (mDecoder != nullptr) {
        ps_end_utt(mDecoder);
        idleDecoders().append(mDecoder);
    }
}

QList<RecognitionEngine::Result> SphinxEngine::feed(const QByteArray& pcm)
{
    QList<Result> results;
    if (mDecoder == nullptr || pcm.size() < 2) {
        return results;
    }
    ps_process_raw(mDecoder, reinterpret_cast<const int16*>(pcm.constData()),
                   static_cast<size_t>(pcm.size() / 2), FALSE, FALSE);
    const bool speaking = ps_get_in_speech(mDecoder) != 0;
    if (speaking) {
        mWasSpeaking = true;
        mSinceHypMs += pcm.size() / 32;
        if (mSinceHypMs >= 300) {
            mSinceHypMs = 0;
            const char* hyp = ps_get_hyp(mDecoder, nullptr);
            const QString text = hyp != nullptr ? QString::fromUtf8(hyp) : QString();
            if (!text.isEmpty() && text != mLastPartial) {
                mLastPartial = text;
                results << Result{false, text};
            }
        }
    } else if (mWasSpeaking) {
        results << closeUtterance();
        ps_start_utt(mDecoder);
    }
    return results;
}

QList<RecognitionEngine::Result> SphinxEngine::finish()
{
    if (mDecoder == nullptr || !mWasSpeaking) {
        return {};
    }
    QList<Result> results{closeUtterance()};
    ps_start_utt(mDecoder);
    return results;
}

RecognitionEngine::Result SphinxEngine::closeUtterance()
{
    ps_end_utt(mDecoder);
    const char* hyp = ps_get_hyp(mDecoder, nullptr);
    mWasSpeaking = false;
    mSinceHypMs = 0;
    mLastPartial.clear();
    return Result{true, hyp != nullptr ? QString::fromUtf8(hyp) : QString()};
}
