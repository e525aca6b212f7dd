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

// The free part of the primary screen (the desktop backend's screen), left by panels and docks:
// notices sit at its right and bottom edges, which need not be its width and height (a left
// dock, a top bar, a primary screen that is not the leftmost one).
QRect workArea();

// Where a window of `size` sits in the work area's bottom right corner, `margin` pixels in.
QPoint bottomRight(QSize size, int margin = 0);

// Cuts `widget` to the rounded `body` (in its own coordinates) when nothing blends it; clears
// the cut otherwise. Call again after each resize.
void shape(QWidget* widget, const QRect& body, int radius);

// Cuts `widget` to the rounded `body` whatever draws it: where the window is see-through
// beside its body, a compositor would still hand the clicks there to this window.
void cut(QWidget* widget, const QRect& body, int radius);

}  // namespace WindowLook
