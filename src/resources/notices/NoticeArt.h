#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QString>

// Shared strokes of the notice pictures, painted at build time.
namespace NoticeArt {

// Pictures are painted at this many pixels per point: 1, then 2 for HiDPI screens ("@2x").
extern int scale;

QImage canvas(int width, int height);
// A rounded card with a vertical gradient.
void card(QPainter& painter, const QRectF& rect, const QColor& top, const QColor& bottom, qreal radius);
// The mouse seen from above, its nose at the top.
void mouse(QPainter& painter, const QPointF& centre, qreal height, const QColor& body);
// Radio waves to the right of a point.
void waves(QPainter& painter, const QPointF& origin, qreal size, const QColor& colour);
// The Bluetooth rune in a circle.
void bluetoothBadge(QPainter& painter, const QPointF& centre, qreal radius, const QColor& colour);
bool save(const QImage& image, const QString& folder, const QString& name);

bool paintRest(const QString& folder);
bool paintGuidance(const QString& folder);

}  // namespace NoticeArt
