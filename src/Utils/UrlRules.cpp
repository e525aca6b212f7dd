#include "Utils/UrlRules.h"

namespace UrlRules {

bool isWebPage(const QUrl& url)
{
    if (!url.isValid() || url.isRelative() || url.host().isEmpty()) {
        return false;
    }
    const QString scheme = url.scheme().toLower();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https");
}

QString forLog(const QUrl& url)
{
    return url.toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

QString forLog(const QString& url)
{
    return forLog(QUrl(url));
}

}  // namespace UrlRules
