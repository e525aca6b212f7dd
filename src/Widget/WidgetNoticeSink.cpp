#include "Widget/WidgetNoticeSink.h"

#include "Widget/NotificationDialog.h"

void WidgetNoticeSink::showNotice(const QString& text)
{
    auto* dialog = new NotificationDialog();
    dialog->showMessage(text);
}
