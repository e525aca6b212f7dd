#include "Platform/X11KeyPresses.h"

#include "Utils/Logging.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace {

Display* dpy(void* handle)
{
    return static_cast<Display*>(handle);
}

}  // namespace

X11KeyPresses::X11KeyPresses()
{
    Display* d = XOpenDisplay(nullptr);
    if (d == nullptr) {
        return;
    }
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 1;
    if (!XQueryExtension(d, "XInputExtension", &mXiOpcode, &event, &error) ||
        XIQueryVersion(d, &major, &minor) != Success || (major == 2 && minor < 1)) {
        qCWarning(lcX11) << "no XInput 2.1: keys pressed while a text is corrected are not seen";
        XCloseDisplay(d);
        return;
    }
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawKeyPress);
    XIEventMask mask;
    mask.deviceid = XIAllMasterDevices;
    mask.mask_len = sizeof(bits);
    mask.mask = bits;
    XISelectEvents(d, DefaultRootWindow(d), &mask, 1);
    XSync(d, False);
    mDisplay = d;
}

X11KeyPresses::~X11KeyPresses()
{
    if (mDisplay != nullptr) {
        XCloseDisplay(dpy(mDisplay));
    }
}

quint64 X11KeyPresses::count()
{
    if (mDisplay == nullptr) {
        return mCount;
    }
    Display* d = dpy(mDisplay);
    // The reply comes after every event the server made before it.
    XSync(d, False);
    while (XPending(d) > 0) {
        XEvent event;
        XNextEvent(d, &event);
        XGenericEventCookie* cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != mXiOpcode || !XGetEventData(d, cookie)) {
            continue;
        }
        const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
        // A held key's repeats are not new presses.
        if (cookie->evtype == XI_RawKeyPress && (raw->flags & XIKeyRepeat) == 0) {
            ++mCount;
        }
        XFreeEventData(d, cookie);
    }
    return mCount;
}
