#pragma once

#include "RecognitionEngine.h"

#include <QStringList>

#include <atomic>
#include <memory>

// Which engine the speech services hear with: "scripted" (deterministic, any language) or
// "sphinx" (offline English, when pocketsphinx was found at build time).
class EngineFactory {
public:
    static bool sphinxAvailable();
    // False with a reason for an unknown or unavailable engine.
    bool setEngine(const QString& name, QString* error);
    QString engine() const { return mEngine; }
    void setScript(const QStringList& script) { mScript = script; }

    std::unique_ptr<RecognitionEngine> create() const;

private:
    QString mEngine = QStringLiteral("scripted");
    QStringList mScript;
    // Shared by the scripted engines of all sessions, so that the script goes on from one to the next.
    std::shared_ptr<std::atomic<int>> mSentence = std::make_shared<std::atomic<int>>(0);
};
