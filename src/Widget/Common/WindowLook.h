#pragma once

#include <QRect>

class QWidget;

// Windows that draw their own rounded body are translucent only where a compositor blends
// them; on a plain X server the see-through corners would come out black, so there the window
// is cut to its rounded shape and painted opaque.
namespace WindowLook {

bool compositing();

// Cuts `widget` to the rounded `body` (in its own coordinates) when nothing blends it; clears
// the cut otherwise. Call again after each resize.
void shape(QWidget* widget, const QRect& body, int radius);

}  // namespace WindowLook
