#pragma once

#include <QPixmap>
#include <QSize>
#include <QString>

class QWidget;

// Pictures as sharp as the screen can show them: at scale 2 a picture loaded at its own size
// would be stretched and blurred.
namespace Pictures {

// Before the application object is made: every size counts in device-independent pixels, so
// windows, fonts and margins grow with the screen's scale, and icons are drawn at its density.
void enableHighDpiScaling();

// The picture at `path` for `widget`'s screen, `size` pixels (its own size when empty): a
// vector picture drawn at the screen's density, a bitmap from its "@2x" twin when there is one.
QPixmap load(const QString& path, const QWidget* widget, QSize size = QSize());

}  // namespace Pictures
