#pragma once

#include "FakeBleTransport.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidManager.h"
#include "RecordingMainWindowView.h"
#include "Utils/PreferencesUtils.h"
#include "WidgetPresenter/BackendLadder.h"
#include "WidgetPresenter/ConsoleNotices.h"
#include "WidgetPresenter/DeviceLifecycle.h"
#include "WidgetPresenter/MainWindowPresenter.h"

#include <QFile>
#include <QStringList>

#include <functional>
#include <memory>

class HidBackend;
class InternetUtils;
class HttpManager;
class DBManager;

// The device notices of the console, recorded: "change(true)", "bleConnected".
class RecordingConsoleNotices : public ConsoleNotices {
public:
    QStringList shown;
    void showDeviceChange(bool insert) override
    {
        shown << (insert ? QStringLiteral("change(true)") : QStringLiteral("change(false)"));
    }
    void showBleConnected() override { shown << QStringLiteral("bleConnected"); }
};

// A console presenter over the real device manager on the given USB backend (Bluetooth over
// a fake), with a recording view and notices. Preferences start from an empty file changed
// by prepare; the presenter is made by start(), so that a test can set things up first.
struct ConsoleRig {
    explicit ConsoleRig(HidBackend* hidBackend, int ticks = 0) : tickMs(ticks), hid(hidBackend)
    {
        QFile::remove(PreferencesUtils::preferencesPath());
    }
    ~ConsoleRig()
    {
        presenter.reset();  // its controller thread goes before the device
        hid.close();        // and the read thread, which calls into the device, before it too
    }

    void prepare(const std::function<void(UserPreferences&)>& change)
    {
        PreferencesUtils* preferences = PreferencesUtils::getInstance();
        UserPreferences p = preferences->getUserPreferences();
        change(p);
        preferences->setUserPreferences(p);
    }
    MainWindowPresenter* start(HttpManager* http = nullptr, DBManager* db = nullptr, int screenWidth = 1440)
    {
        MainWindowPresenter::Collaborators c;
        c.device = &device;
        c.db = db;
        c.http = http;
        c.notices = &notices;
        c.screenWidth = [screenWidth] { return screenWidth; };
        c.clockMs = clockMs;
        c.internet = internet;
        if (tickMs > 0) {
            c.deviceControllerMs = tickMs;
            c.deviceMessageMs = tickMs;
        }
        presenter = std::make_unique<MainWindowPresenter>(&view, c);
        return presenter.get();
    }
    QList<int> errors() const { return presenter->errorStatus(); }

    // The cadence of both device ladders; 0 keeps the product's.
    int tickMs = 0;
    InternetUtils* internet = nullptr;  // online when null
    // The clock of the backend's retry pauses; the real one when unset.
    std::function<qint64()> clockMs;
    HidManager hid;
    FakeBleTransport bleTransport;
    BLEManager ble{&bleTransport, nullptr};
    DeviceManager device{&hid, &ble};
    RecordingMainWindowView view;
    RecordingConsoleNotices notices;
    std::unique_ptr<MainWindowPresenter> presenter;
};
