#include "ScriptedEngine.h"

#include <QtEndian>

#include <cstdlib>

ScriptedEngine::ScriptedEngine(const QStringList& script, std::shared_ptr<std::atomic<int>> sentence)
    : mScript(script.isEmpty() ? defaultScript() : script), mSentence(std::move(sentence))
{
}

QStringList ScriptedEngine::defaultScript()
{
    return {QStringLiteral("我想|我想去北经|我想去北京看看|我想去北京看看。"),
            QStringLiteral("今天天气很好。"), QStringLiteral("Hello world, this is a test.")};
}

QStringList ScriptedEngine::stagesOf(const QString& line)
{
    if (line.contains(QLatin1Char('|'))) {
        return line.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    }
    // Prefixes ending after every second CJK character or after every word.
    QStringList stages;
    int cjk = 0;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        const bool wide = c.unicode() >= 0x2E80;
        const bool wordEnd =
            c.isLetterOrNumber() && !wide && (i + 1 == line.size() || !line.at(i + 1).isLetterOrNumber());
        if (wide && c.isLetterOrNumber() && ++cjk % 2 == 0) {
            stages << line.left(i + 1);
        } else if (wordEnd) {
            stages << line.left(i + 1);
        }
    }
    if (stages.isEmpty() || stages.last() != line) {
        stages << line;
    }
    return stages;
}

QList<RecognitionEngine::Result> ScriptedEngine::feed(const QByteArray& pcm)
{
    QList<Result> results;
    mPending.append(pcm);
    int offset = 0;
    for (; offset + kWindowBytes <= mPending.size(); offset += kWindowBytes) {
        long long sum = 0;
        for (int i = 0; i < kWindowBytes; i += 2) {
            sum += std::abs(qFromLittleEndian<qint16>(mPending.constData() + offset + i));
        }
        const bool loud = sum / (kWindowBytes / 2) >= kSpeechLevel;
        if (!mSpeaking) {
            if (!loud) {
                continue;
            }
            mSpeaking = true;
            mSpokenMs = 0;
            mQuietMs = 0;
            mStage = -1;
        }
        mSpokenMs += 20;
        mQuietMs = loud ? 0 : mQuietMs + 20;
        if (mQuietMs >= kEndQuietMs) {
            results << closeSentence();
            continue;
        }
        const QStringList stages = stagesOf(mScript.at(mSentence->load() % mScript.size()));
        const int stage = mSpokenMs / kStageMs - 1;
        if (stage > mStage && stage < stages.size() - 1) {
            mStage = stage;
            results << Result{false, stages.at(stage)};
        }
    }
    mPending.remove(0, offset);
    return results;
}

QList<RecognitionEngine::Result> ScriptedEngine::finish()
{
    mPending.clear();
    if (!mSpeaking) {
        return {};
    }
    return {closeSentence()};
}

RecognitionEngine::Result ScriptedEngine::closeSentence()
{
    const QStringList stages = stagesOf(mScript.at(mSentence->load() % mScript.size()));
    ++*mSentence;
    mSpeaking = false;
    return Result{true, stages.last()};
}
