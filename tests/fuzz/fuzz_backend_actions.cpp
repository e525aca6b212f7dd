// What the backend's reading of a voice command makes the program open or start: replies to
// the semantic request (NUL bytes separate them; a reply may save a habit that a later one
// uses) read as the client reads them and acted on by the presenter. Oracle: only http and
// https pages are opened, and only the desktop entries of installed applications started.
#include "FuzzSupport.h"
#include "Http/JsonUtils.h"
#include "InputPresenterRig.h"
#include "Utils/PreferencesUtils.h"

#include <QFile>
#include <QFileInfo>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzSetUp();
    static InputPresenterRig* rig = new InputPresenterRig(false);
    // Each input starts without habits.
    QFile::remove(PreferencesUtils::habitPath());
    rig->restartPresenter();
    rig->launcher.log.clear();
    rig->launcher.urls.clear();
    for (const QByteArray& reply : fuzzSplit(fuzzBytes(data, size), '\0')) {
        SemanticParsingResult result;
        if (JsonUtils::parseSemanticParsingResult(reply, &result)) {
            rig->presenter->handleIntent(result);
        }
    }
    for (const QUrl& url : qAsConst(rig->launcher.urls)) {
        fuzzCheck(url.isValid() &&
                      (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")),
                  "the backend made the program open something other than a web page");
    }
    for (const QString& line : qAsConst(rig->launcher.log)) {
        if (line.startsWith(QLatin1String("path "))) {
            const QString entry = QFileInfo(line.mid(5)).canonicalFilePath();
            fuzzCheck(
                entry.endsWith(QLatin1String(".desktop")) && entry.contains(QLatin1String("/applications/")),
                "the backend made the program start something other than an installed application");
        } else {
            fuzzCheck(line.startsWith(QLatin1String("url ")),
                      "the backend made the program start an application");
        }
    }
    return 0;
}
