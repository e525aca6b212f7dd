#include "EngineFactory.h"

#include "ScriptedEngine.h"

#ifdef ZORVANE_HAVE_POCKETSPHINX
#include "SphinxEngine.h"
#endif

bool EngineFactory::sphinxAvailable()
{
#ifdef ZORVANE_HAVE_POCKETSPHINX
    return true;
#else
    return false;
#endif
}

bool EngineFactory::setEngine(const QString& name, QString* error)
{
    if (name == QLatin1String("scripted") || (name == QLatin1String("sphinx") && sphinxAvailable())) {
        mEngine = name;
#ifdef ZORVANE_HAVE_POCKETSPHINX
        // A model that cannot be loaded shows on stderr; sessions then hear with the script.
        if (name == QLatin1String("sphinx")) {
            SphinxEngine::preload();
        }
#endif
        return true;
    }
    *error = name == QLatin1String("sphinx") ? QStringLiteral("this build has no pocketsphinx")
                                             : QStringLiteral("unknown engine: %1").arg(name);
    return false;
}

std::unique_ptr<RecognitionEngine> EngineFactory::create() const
{
#ifdef ZORVANE_HAVE_POCKETSPHINX
    if (mEngine == QLatin1String("sphinx")) {
        auto sphinx = std::make_unique<SphinxEngine>();
        if (sphinx->isReady()) {
            return sphinx;
        }
    }
#endif
    return std::make_unique<ScriptedEngine>(mScript, mSentence);
}
