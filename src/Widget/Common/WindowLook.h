#pragma once

#include <QRect>
#include <Qt>

class QWidget;

// Windows that draw their own rounded body are translucent only where a compositor blends
// them; on a plain X server the see-through corners would come out black, so there the window
// is cut to its rounded shape and painted opaque.
namespace WindowLook {

// A notice that floats over whatever the user works in and never takes the keyboard. The window
// manager is bypassed: one that keeps a window which is not given the focus below the focused
// one (openbox does so, whatever the window's layer) would hide the notice behind the very
// application the user is looking at.
constexpr Qt::WindowFlags kFloatingFlags = Qt::FramelessWindowHint | Qt::Tool | Qt::WindowDoesNotAcceptFocus |
                                           Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint;

bool compositing();

// Cuts `widget` to the rounded `body` (in its own coordinates) when nothing blends it; clears
// the cut otherwise. Call again after each resize.
void shape(QWidget* widget, const QRect& body, int radius);

}  // namespace WindowLook
