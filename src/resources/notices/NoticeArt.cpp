// Paints the pictures of the notice panels into the folder given, for the resource file.
#include "NoticeArt.h"

#include <QDir>
#include <QFileInfo>
#include <QPainterPath>
#include <QtMath>

#include <cstdio>

namespace NoticeArt {

int scale = 1;

QImage canvas(int width, int height)
{
    QImage image(width * scale, height * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

void card(QPainter& painter, const QRectF& rect, const QColor& top, const QColor& bottom, qreal radius)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0, top);
    gradient.setColorAt(1, bottom);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(rect, radius, radius);
}

void mouse(QPainter& painter, const QPointF& centre, qreal height, const QColor& body)
{
    const qreal width = height * 0.62;
    const QRectF shell(centre.x() - width / 2, centre.y() - height / 2, width, height);
    painter.setPen(QPen(body.darker(140), height * 0.02));
    painter.setBrush(body);
    painter.drawRoundedRect(shell, width / 2, width / 2);
    // The seam between the two buttons, and the wheel.
    painter.drawLine(QPointF(centre.x(), shell.top()), QPointF(centre.x(), shell.top() + height * 0.38));
    painter.setBrush(body.darker(130));
    painter.drawRoundedRect(
        QRectF(centre.x() - width * 0.07, shell.top() + height * 0.12, width * 0.14, height * 0.16),
        width * 0.07, width * 0.07);
    // The voice key, the project's one accent.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x3D, 0x8B, 0xFF));
    painter.drawEllipse(QPointF(centre.x(), shell.top() + height * 0.55), width * 0.11, width * 0.11);
}

void waves(QPainter& painter, const QPointF& origin, qreal size, const QColor& colour)
{
    painter.setBrush(Qt::NoBrush);
    for (int ring = 1; ring <= 3; ++ring) {
        QColor faded = colour;
        faded.setAlphaF(1.0 - ring * 0.22);
        painter.setPen(QPen(faded, size * 0.08, Qt::SolidLine, Qt::RoundCap));
        const qreal r = size * ring / 3.0;
        painter.drawArc(QRectF(origin.x() - r, origin.y() - r, 2 * r, 2 * r), -45 * 16, 90 * 16);
    }
}

void bluetoothBadge(QPainter& painter, const QPointF& centre, qreal radius, const QColor& colour)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(centre, radius, radius);
    const qreal h = radius * 0.55;
    const qreal w = radius * 0.3;
    QPainterPath rune;
    rune.moveTo(centre.x() - w, centre.y() - h / 2);
    rune.lineTo(centre.x() + w, centre.y() + h / 2);
    rune.lineTo(centre.x(), centre.y() + h);
    rune.lineTo(centre.x(), centre.y() - h);
    rune.lineTo(centre.x() + w, centre.y() - h / 2);
    rune.lineTo(centre.x() - w, centre.y() + h / 2);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, radius * 0.12, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(rune);
}

bool save(const QImage& image, const QString& folder, const QString& name)
{
    QString path = folder + QLatin1Char('/') + name;
    if (scale != 1) {
        path.insert(path.lastIndexOf(QLatin1Char('.')), QStringLiteral("@%1x").arg(scale));
    }
    if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !image.save(path, "PNG")) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

}  // namespace NoticeArt

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <output folder>\n", argv[0]);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    for (NoticeArt::scale = 1; NoticeArt::scale <= 2; ++NoticeArt::scale) {
        if (!NoticeArt::paintRest(folder) || !NoticeArt::paintGuidance(folder)) {
            return 1;
        }
    }
    return 0;
}
