#pragma once

#include <QObject>

class QSocketNotifier;

// Watches the pointer buttons of the whole X11 session without taking them: XInput2 raw
// button events on the root window, read on the main thread from the connection's socket.
// Without an X server or XInput 2 it stays inert and says so once.
class X11PointerObserver : public QObject {
    Q_OBJECT

public:
    // The button event types the hook understands, numbered as the pointer callbacks number them.
    enum EventType { LeftMouseDown = 1, LeftMouseUp = 2, RightMouseDown = 3, RightMouseUp = 4 };

    explicit X11PointerObserver(QObject* parent = nullptr);
    ~X11PointerObserver() override;

    bool start();
    void stop();
    bool isActive() const { return mDisplay != nullptr; }

    // Reads whatever the server has sent; the socket notifier calls it, tests may too.
    void processPendingEvents();

signals:
    void signalButton(int type, qint64 x, qint64 y);

private:
    void* mDisplay = nullptr;  // Display*, kept opaque so that Xlib's macros stay out of headers
    int mXiOpcode = 0;
    QSocketNotifier* mNotifier = nullptr;
};
