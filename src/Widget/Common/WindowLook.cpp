#include "Widget/Common/WindowLook.h"

#include "WidgetPresenter/DesktopArea.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QRegion>
#include <QWidget>
#include <QX11Info>

namespace WindowLook {

bool compositing()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("xcb")) {
        return QX11Info::isCompositingManagerRunning();
    }
    // Wayland always composes; offscreen and the like draw into images where the opaque look
    // is the one to check.
    return platform.startsWith(QLatin1String("wayland"));
}

QRect workArea()
{
    return DesktopArea::workArea();
}

QPoint bottomRight(QSize size, int margin)
{
    const QRect area = workArea();
    return QPoint(area.x() + area.width() - size.width() - margin,
                  area.y() + area.height() - size.height() - margin);
}

void shape(QWidget* widget, const QRect& body, int radius)
{
    if (compositing()) {
        widget->clearMask();
        return;
    }
    cut(widget, body, radius);
}

void cut(QWidget* widget, const QRect& body, int radius)
{
    const QRect visible = body.intersected(widget->rect());
    if (visible.isEmpty()) {
        // An empty mask would mean "no mask": keep one pixel so nothing black shows.
        widget->setMask(QRegion(0, 0, 1, 1));
        return;
    }
    QPainterPath path;
    path.addRoundedRect(QRectF(body), radius, radius);
    widget->setMask(QRegion(path.toFillPolygon().toPolygon()).intersected(visible));
}

}  // namespace WindowLook
