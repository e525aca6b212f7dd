#include "SearchService.h"

#include <httplib.h>

SearchService::SearchService(const Fault* fault) : HttpService(QStringLiteral("search"), fault) {}

QByteArray SearchService::errorBody(int code) const
{
    return "<html><body><h1>stand-in error " + QByteArray::number(code) + "</h1></body></html>";
}

void SearchService::addRoutes(httplib::Server& server)
{
    server.Get(".*", [this](const httplib::Request& req, httplib::Response& res) {
        QString items;
        for (const auto& [key, value] : req.params) {
            items += QStringLiteral("<li><b>%1</b>: %2</li>")
                         .arg(QString::fromStdString(key).toHtmlEscaped(),
                              QString::fromStdString(value).toHtmlEscaped());
        }
        const QString page =
            QStringLiteral(
                "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Zorvane stand-in: %1</title>"
                "</head><body><h1>%1</h1><ul>%2</ul></body></html>")
                .arg(QString::fromStdString(req.path).toHtmlEscaped(), items);
        answer(res, page.toUtf8(), "text/html; charset=utf-8");
    });
}
