#pragma once

#include <QString>
#include <QUrl>

// What the program does with URLs that come from outside: the backend's replies may only make
// it open web pages, and no log line carries a query (signatures, secrets, the user's text).
namespace UrlRules {

// An absolute http or https URL with a host. Anything else the backend names (file:,
// javascript:, a scheme of some installed handler, a relative path) is not a web page.
bool isWebPage(const QUrl& url);

// Scheme, host, port and path: no user info, query or fragment.
QString forLog(const QUrl& url);
QString forLog(const QString& url);

}  // namespace UrlRules
