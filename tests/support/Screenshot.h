#pragma once

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
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

// The folder ZORVANE_SCREENSHOTS names, made if missing; empty when it names none.
inline QString screenshotFolder()
{
    const QString folder = qEnvironmentVariable("ZORVANE_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
    }
    return folder;
}

// Declares `folder` for a screenshot case (tools/screenshots/render), or skips the case.
#define SCREENSHOT_FOLDER_OR_SKIP(folder)             \
    const QString folder = screenshotFolder();        \
    if (folder.isEmpty()) {                           \
        QSKIP("ZORVANE_SCREENSHOTS names no folder"); \
    }

// Writes `window` as a desktop shows a rounded card: transparent outside its corners of `radius`.
inline bool saveRoundedScreenshot(QWidget* window, qreal radius, const QString& path)
{
    QImage image = screenshotCanvas(window, window->size());
    QPainter painter(&image);
    QPainterPath card;
    card.addRoundedRect(QRectF(window->rect()), radius, radius);
    painter.setClipPath(card);
    window->render(&painter);
    painter.end();
    return image.save(path);
}
