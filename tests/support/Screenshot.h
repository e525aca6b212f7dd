#pragma once

#include <QImage>
#include <QWidget>

// A transparent picture of `size` for a screenshot of `window`, at the window's pixel ratio: at
// scale 2 the file holds what a HiDPI screen shows, not a copy of it at half the pixels.
inline QImage screenshotCanvas(const QWidget* window, const QSize& size)
{
    const qreal ratio = window->devicePixelRatioF();
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    return image;
}
