#include "Platform/X11Window.h"

namespace X11Window {

unsigned long property(Display* display, Window window, const char* name, Atom type)
{
    Atom actualType = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    unsigned long value = 0;
    if (XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, 1, False, type, &actualType,
                           &format, &items, &after, &data) == Success &&
        data != nullptr) {
        if (items > 0 && format == 32) {
            value = reinterpret_cast<unsigned long*>(data)[0];
        }
        XFree(data);
    }
    return value;
}

Window findUpwards(Display* display, Window window, const std::function<bool(Window)>& test)
{
    for (int depth = 0; depth < 8 && window > PointerRoot; ++depth) {
        if (test(window)) {
            return window;
        }
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(display, window, &root, &parent, &children, &count)) {
            break;
        }
        if (children != nullptr) {
            XFree(children);
        }
        window = parent == root ? 0 : parent;
    }
    return 0;
}

}  // namespace X11Window
