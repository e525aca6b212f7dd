#pragma once

// Xlib helpers shared by the input backend and the caret search, each on its own connection.
// Include after Qt's headers: Xlib's macros clash with Qt's names.
#include <X11/Xlib.h>

#include <functional>

namespace X11Window {

// A window property of type WINDOW or CARDINAL, first item, or 0.
unsigned long property(Display* display, Window window, const char* name, Atom type);

// `window` or the nearest of its ancestors below the root for which `test` holds, looking at
// most 8 levels up (a window manager's frames sit between a client and the root); 0 if none.
Window findUpwards(Display* display, Window window, const std::function<bool(Window)>& test);

}  // namespace X11Window
