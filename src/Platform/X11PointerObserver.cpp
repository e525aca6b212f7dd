#include "Platform/X11PointerObserver.h"

#include "Utils/Logging.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace {

Display* display(void* handle)
{
    return static_cast<Display*>(handle);
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
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 1;  // raw events reach every client from 2.1 on
    if (!XQueryExtension(dpy, "XInputExtension", &mXiOpcode, &event, &error) ||
        XIQueryVersion(dpy, &major, &minor) != Success) {
        qCWarning(lcX11) << "XInput 2.1 is missing: mouse button gestures are off";
        XCloseDisplay(dpy);
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

    mDisplay = dpy;
    mNotifier = new QSocketNotifier(ConnectionNumber(dpy), QSocketNotifier::Read, this);
    connect(mNotifier, &QSocketNotifier::activated, this, &X11PointerObserver::processPendingEvents);
    qCInfo(lcX11) << "watching pointer buttons";
    return true;
}

void X11PointerObserver::stop()
{
    if (mDisplay == nullptr) {
        return;
    }
    delete mNotifier;
    mNotifier = nullptr;
    XCloseDisplay(display(mDisplay));
    mDisplay = nullptr;
}

void X11PointerObserver::processPendingEvents()
{
    Display* dpy = display(mDisplay);
    if (dpy == nullptr) {
        return;
    }
    while (XPending(dpy) > 0) {
        XEvent event;
        XNextEvent(dpy, &event);
        XGenericEventCookie* cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != mXiOpcode || !XGetEventData(dpy, cookie)) {
            continue;
        }
        const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
        const bool press = cookie->evtype == XI_RawButtonPress;
        int type = 0;
        if (raw->detail == Button1) {
            type = press ? LeftMouseDown : LeftMouseUp;
        } else if (raw->detail == Button3) {
            type = press ? RightMouseDown : RightMouseUp;
        }
        XFreeEventData(dpy, cookie);
        if (type == 0) {
            continue;  // wheel and other buttons
        }
        // Raw events carry no position. They are read as they come, so the pointer is still
        // where the button acted.
        Window root = 0;
        Window child = 0;
        int rootX = 0;
        int rootY = 0;
        int winX = 0;
        int winY = 0;
        unsigned int buttons = 0;
        XQueryPointer(dpy, DefaultRootWindow(dpy), &root, &child, &rootX, &rootY, &winX, &winY, &buttons);
        emit signalButton(type, rootX, rootY);
    }
}
