#include "Utils/Notice.h"

#include "Utils/Logging.h"

namespace {
NoticeSink* gSink = nullptr;
}

namespace Notice {

void setSink(NoticeSink* sink)
{
    gSink = sink;
}

void show(const QString& text)
{
    qCInfo(lcApp).noquote() << "notice:" << text;
    if (gSink != nullptr) {
        gSink->showNotice(text);
    }
}

}  // namespace Notice
