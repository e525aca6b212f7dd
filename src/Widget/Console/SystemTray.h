#pragma once

#include <QColor>
#include <QIcon>
#include <QObject>
#include <QString>

class DeviceLifecycle;
class MainWindow;
class QAction;
class QMenu;
class QSystemTrayIcon;

// The tray icon: how the mouse is linked (receiver, Bluetooth, asleep, not found) and its
// battery in the picture and the tooltip, and a menu to open the console, pick the dictation
// language, start with the session and quit. The console's tray operations drive it; the
// device's own signals add what those do not carry (the link, sleep and the battery figure).
// On a desktop without a tray it stays hidden and the program works as before.
class SystemTray : public QObject {
    Q_OBJECT

public:
    enum Link { LinkNone, LinkReceiver, LinkBluetooth };
    // Steps of the console's charge animation, 0 to 23.
    static constexpr int kChargeSteps = 24;

    // Everything the picture and the tooltip show.
    struct State {
        Link link = LinkNone;
        bool asleep = false;
        int battery = -1;     // percent; -1 until the mouse tells
        int status = 0;       // the console's error status last told
        int chargeStep = -1;  // the charge or blink animation's step; -1 when none runs
        QString note;         // the console's extra status line
    };
    struct Look {
        QString base;    // the mouse picture
        int gauge = -1;  // battery fill in percent; -1 draws no battery
        QColor gaugeColor;
        bool bolt = false;  // charging
        QString tooltip;
    };
    static Look lookOf(const State& state);
    // The mouse's battery figure as a rough percentage.
    static int batteryPercent(int figure);
    static QIcon render(const Look& look);

    // Without a window the menu only emits its signals (tests); with one it drives the window.
    explicit SystemTray(MainWindow* window, QObject* parent = nullptr);
    ~SystemTray() override;

    // Follows the device's link, sleep and battery as the lifecycle passes them on; may be null.
    void watchDevice(DeviceLifecycle* lifecycle);

    const State& state() const { return mState; }
    QSystemTrayIcon* trayIcon() const { return mIcon; }
    QMenu* menu() const { return mMenu; }
    QAction* autoRunAction() const { return mAutoRun; }
    QList<QAction*> languageActions() const { return mLanguages; }

    // The console's three tray operations.
    void setStatus(int status);
    void setChargeStep(int step);
    void setNote(const QString& text);

    void setLink(Link link);
    void setAsleep(bool asleep);
    void setBatteryFigure(int figure);

signals:
    void signalOpenConsole();
    void signalDictationLanguage(int index);
    void signalAutoRun(bool enable);
    void signalQuit();

private:
    void buildMenu();
    void connectWindow(MainWindow* window);
    void refresh();
    Link linkOfDevice() const;

    State mState;
    Look mShown;
    bool mShownOnce = false;
    DeviceLifecycle* mDevice = nullptr;
    QSystemTrayIcon* mIcon = nullptr;
    QMenu* mMenu = nullptr;
    QMenu* mLanguageMenu = nullptr;
    QAction* mAutoRun = nullptr;
    QList<QAction*> mLanguages;
};
