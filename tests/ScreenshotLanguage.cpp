#include "Widget/Translations.h"

// ZORVANE_SCREENSHOTS_LANGUAGE=en builds a suite's windows in English, as the program comes up
// under an English locale: the screenshots in that language (tools/screenshots/render).
static void installScreenshotLanguage()
{
    if (qEnvironmentVariable("ZORVANE_SCREENSHOTS_LANGUAGE") == QLatin1String("en")) {
        Translations::install(Translations::English);
    }
}
Q_COREAPP_STARTUP_FUNCTION(installScreenshotLanguage)
