#pragma once

#include "HttpService.h"

// The web search page: any path answers with a page that shows the path and the query, so a
// person can see what the application searched for or opened.
class SearchService : public HttpService {
public:
    explicit SearchService(const Fault* fault);

protected:
    void addRoutes(httplib::Server& server) override;
    QByteArray errorBody(int code) const override;
};
