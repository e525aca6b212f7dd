#pragma once

#include "WidgetPresenter/ConsoleNotices.h"

class QWidget;

// The console presenter's notices as windows: a new plug strip for each change of the
// receiver, the one Bluetooth hint.
class WidgetConsoleNotices : public ConsoleNotices {
public:
    explicit WidgetConsoleNotices(QWidget* parent = nullptr) : mParent(parent) {}

    void showDeviceChange(bool insert) override;
    void showBleConnected() override;

private:
    QWidget* mParent;
};
