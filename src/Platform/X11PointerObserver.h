#pragma once

#include <QObject>

class QSocketNotifier;

// Watches the pointer buttons of the whole X11 session without taking them, read on the main
// thread from the connection's socket. The RECORD extension hands over each button event with
// the root position it had when it happened, so a busy main thread still places a quick drag
// right. Without RECORD, XInput2 raw events stand in; they carry no position, which is then
// asked for when the event is read. Without an X server or either extension it stays inert and
// says so once.
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

    // One recorded button event (RECORD's callback).
    void handleButton(bool press, int button, qint64 x, qint64 y);

signals:
    void signalButton(int type, qint64 x, qint64 y);

private:
    bool startRecord(void* dpy);
    bool startRawEvents(void* dpy);
    void processRawEvents();

    void* mDisplay = nullptr;  // Display*, kept opaque so that Xlib's macros stay out of headers
    // RECORD: a second connection to make the context on; mDisplay then receives the data.
    void* mControlDisplay = nullptr;
    unsigned long mRecordContext = 0;
    int mXiOpcode = 0;
    QSocketNotifier* mNotifier = nullptr;
};
