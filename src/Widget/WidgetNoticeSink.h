#pragma once

#include "Utils/Notice.h"

// Shows each notice of the logic in a new NotificationDialog.
class WidgetNoticeSink : public NoticeSink {
public:
    void showNotice(const QString& text) override;
};
