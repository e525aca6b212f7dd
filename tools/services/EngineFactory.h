#pragma once

#include "RecognitionEngine.h"

#include <QStringList>

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
};
