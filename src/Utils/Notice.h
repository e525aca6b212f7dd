#pragma once

#include <QString>

// How the logic shows the user a short notice ("无法连接到服务!") without knowing about
// windows: the widgets install a sink at start; tests install a recording one.
class NoticeSink {
public:
    virtual ~NoticeSink() = default;
    virtual void showNotice(const QString& text) = 0;
};

namespace Notice {

// Not owned; null removes it. Main thread.
void setSink(NoticeSink* sink);
// Shows the text through the sink; without one it is logged.
void show(const QString& text);

}  // namespace Notice
