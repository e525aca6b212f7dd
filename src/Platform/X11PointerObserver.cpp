#include "Platform/X11PointerObserver.h"

#include "Utils/Logging.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>
#include <X11/Xproto.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/record.h>

namespace {

Display* display(void* handle)
{
    return static_cast<Display*>(handle);
}

void onRecordedEvent(XPointer closure, XRecordInterceptData* data)
{
    if (data->category == XRecordFromServer && data->data_len * 4 >= sizeof(xEvent)) {
        const auto* event = reinterpret_cast<const xEvent*>(data->data);
        const int type = event->u.u.type & 0x7F;
        if (type == ButtonPress || type == ButtonRelease) {
            reinterpret_cast<X11PointerObserver*>(closure)->handleButton(
                type == ButtonPress, event->u.u.detail, event->u.keyButtonPointer.rootX,
                event->u.keyButtonPointer.rootY);
        }
    }
    XRecordFreeData(data);
}

int eventType(bool press, int button)
{
    if (button == Button1) {
        return press ? X11PointerObserver::LeftMouseDown : X11PointerObserver::LeftMouseUp;
    }
    if (button == Button3) {
        return press ? X11PointerObserver::RightMouseDown : X11PointerObserver::RightMouseUp;
    }
    return 0;  // wheel and other buttons
}

}  // namespace

X11PointerObserver::X11PointerObserver(QObject* parent) : QObject(parent) {}

X11PointerObserver::~X11PointerObserver()
{
    stop();
}

bool X11PointerObserver::start()
{
    if (mDisplay != nullptr) {
        return true;
    }
    Display* dpy = XOpenDisplay(nullptr);
    if (dpy == nullptr) {
        qCWarning(lcX11) << "no X display: mouse button gestures are off";
        return false;
    }
    if (!startRecord(dpy) && !startRawEvents(dpy)) {
        qCWarning(lcX11) << "neither RECORD nor XInput 2.1 is there: mouse button gestures are off";
        XCloseDisplay(dpy);
        return false;
    }
    mDisplay = dpy;
    mNotifier = new QSocketNotifier(ConnectionNumber(dpy), QSocketNotifier::Read, this);
    connect(mNotifier, &QSocketNotifier::activated, this, &X11PointerObserver::processPendingEvents);
    qCInfo(lcX11) << "watching pointer buttons";
    return true;
}

bool X11PointerObserver::startRecord(void* handle)
{
    Display* dpy = display(handle);
    int major = 0;
    int minor = 0;
    if (!XRecordQueryVersion(dpy, &major, &minor)) {
        return false;
    }
    // The context is made on its own connection: the data connection is busy with the stream.
    Display* control = XOpenDisplay(DisplayString(dpy));
    if (control == nullptr) {
        return false;
    }
    XRecordRange* range = XRecordAllocRange();
    if (range == nullptr) {
        XCloseDisplay(control);
        return false;
    }
    range->device_events.first = ButtonPress;
    range->device_events.last = ButtonRelease;
    XRecordClientSpec clients = XRecordAllClients;
    const XRecordContext context = XRecordCreateContext(control, 0, &clients, 1, &range, 1);
    XFree(range);
    XSync(control, False);
    if (context == 0 ||
        !XRecordEnableContextAsync(dpy, context, onRecordedEvent, reinterpret_cast<XPointer>(this))) {
        if (context != 0) {
            XRecordFreeContext(control, context);
        }
        XCloseDisplay(control);
        return false;
    }
    XFlush(dpy);
    mControlDisplay = control;
    mRecordContext = context;
    return true;
}

bool X11PointerObserver::startRawEvents(void* handle)
{
    Display* dpy = display(handle);
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 1;  // raw events reach every client from 2.1 on
    if (!XQueryExtension(dpy, "XInputExtension", &mXiOpcode, &event, &error) ||
        XIQueryVersion(dpy, &major, &minor) != Success) {
        return false;
    }
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawButtonPress);
    XISetMask(bits, XI_RawButtonRelease);
    XIEventMask mask;
    mask.deviceid = XIAllMasterDevices;
    mask.mask_len = sizeof(bits);
    mask.mask = bits;
    XISelectEvents(dpy, DefaultRootWindow(dpy), &mask, 1);
    XFlush(dpy);
    return true;
}

void X11PointerObserver::stop()
{
    if (mDisplay == nullptr) {
        return;
    }
    delete mNotifier;
    mNotifier = nullptr;
    if (mControlDisplay != nullptr) {
        Display* control = display(mControlDisplay);
        XRecordDisableContext(control, mRecordContext);
        XRecordFreeContext(control, mRecordContext);
        XCloseDisplay(control);
        mControlDisplay = nullptr;
        mRecordContext = 0;
    }
    XCloseDisplay(display(mDisplay));
    mDisplay = nullptr;
}

void X11PointerObserver::handleButton(bool press, int button, qint64 x, qint64 y)
{
    const int type = eventType(press, button);
    if (type != 0) {
        emit signalButton(type, x, y);
    }
}

void X11PointerObserver::processPendingEvents()
{
    if (mDisplay == nullptr) {
        return;
    }
    if (mControlDisplay != nullptr) {
        // Each recorded event comes to onRecordedEvent, with its position.
        XRecordProcessReplies(display(mDisplay));
        return;
    }
    processRawEvents();
}

void X11PointerObserver::processRawEvents()
{
    Display* dpy = display(mDisplay);
    while (XPending(dpy) > 0) {
        XEvent event;
        XNextEvent(dpy, &event);
        XGenericEventCookie* cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != mXiOpcode || !XGetEventData(dpy, cookie)) {
            continue;
        }
        const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
        const bool press = cookie->evtype == XI_RawButtonPress;
        const int button = raw->detail;
        XFreeEventData(dpy, cookie);
        if (eventType(press, button) == 0) {
            continue;
        }
        // Raw events carry no position: the pointer is asked for where it is now.
        Window root = 0;
        Window child = 0;
        int rootX = 0;
        int rootY = 0;
        int winX = 0;
        int winY = 0;
        unsigned int buttons = 0;
        XQueryPointer(dpy, DefaultRootWindow(dpy), &root, &child, &rootX, &rootY, &winX, &winY, &buttons);
        handleButton(press, button, rootX, rootY);
    }
}
