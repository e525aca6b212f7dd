#pragma once

#include <QRect>

class QPainter;
class QWidget;

// The floating notices are translucent only where a compositor blends them; on a plain X
// server the see-through corners would come out black, so there they are cut to a rounded
// shape and painted opaque.
namespace NoticeLook {

bool compositing();

// Cuts `widget` to the rounded `body` (in its own coordinates) when nothing blends it; clears
// the cut otherwise. Call again after each resize.
void shape(QWidget* widget, const QRect& body, int radius);

// The picture resources of the notices live in the widgets library and need registering once.
void loadArt();

}  // namespace NoticeLook
