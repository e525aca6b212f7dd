// The break reminder's four scenes and the calendar's five times of day. Text is laid over
// them by the panels, so the upper band of each rest scene stays quiet.
#include "../NoticeArt.h"

#include <QPainterPath>
#include <QtMath>

namespace NoticeArt {

namespace {

constexpr int kSize = 384;

void person(QPainter& painter, const QPointF& feet, qreal height, bool armsUp, const QColor& colour)
{
    painter.setPen(QPen(colour, height * 0.07, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    const QPointF hip(feet.x(), feet.y() - height * 0.45);
    const QPointF neck(feet.x(), feet.y() - height * 0.8);
    painter.drawLine(hip, neck);
    painter.drawLine(hip, feet + QPointF(-height * 0.15, 0));
    painter.drawLine(hip, feet + QPointF(height * 0.15, 0));
    const qreal armY = armsUp ? -height * 0.3 : height * 0.2;
    painter.drawLine(neck, neck + QPointF(-height * 0.22, armY));
    painter.drawLine(neck, neck + QPointF(height * 0.22, armY));
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(neck + QPointF(0, -height * 0.1), height * 0.09, height * 0.09);
}

QImage scene(const QColor& top, const QColor& bottom)
{
    QImage image = canvas(kSize, kSize);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    card(painter, QRectF(0, 0, kSize, kSize), top, bottom, 16);
    // Soft ground.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 255, 255, 40));
    painter.drawEllipse(QRectF(-60, 300, kSize + 120, 200));
    return image;
}

QImage stretching()
{
    QImage image = scene(QColor(0x4F, 0x8C, 0xF7), QColor(0x2C, 0x4F, 0xB8));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xFF, 0xD5, 0x4F));
    painter.drawEllipse(QPointF(300, 190), 30, 30);
    person(painter, QPointF(170, 330), 150, true, Qt::white);
    return image;
}

QImage water()
{
    QImage image = scene(QColor(0x3F, 0xB8, 0xAF), QColor(0x1F, 0x6F, 0x7A));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath cup;
    cup.moveTo(140, 200);
    cup.lineTo(244, 200);
    cup.lineTo(232, 330);
    cup.lineTo(152, 330);
    cup.closeSubpath();
    painter.setPen(QPen(Qt::white, 6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(255, 255, 255, 50));
    painter.drawPath(cup);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xB3, 0xE5, 0xFC, 200));
    painter.drawRect(QRectF(150, 250, 84, 74));
    painter.setPen(QPen(QColor(255, 255, 255, 160), 5, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    for (int i = 0; i < 3; ++i) {
        QPainterPath steam;
        const qreal x = 162 + i * 30;
        steam.moveTo(x, 185);
        steam.cubicTo(x - 12, 170, x + 12, 160, x, 140);
        painter.drawPath(steam);
    }
    return image;
}

QImage faraway()
{
    QImage image = scene(QColor(0x7E, 0x57, 0xC2), QColor(0x3A, 0x2A, 0x7A));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QPainterPath far;
    far.moveTo(0, 320);
    far.lineTo(90, 210);
    far.lineTo(170, 290);
    far.lineTo(260, 180);
    far.lineTo(384, 310);
    far.lineTo(384, 384);
    far.lineTo(0, 384);
    painter.setBrush(QColor(255, 255, 255, 70));
    painter.drawPath(far);
    QPainterPath near;
    near.moveTo(0, 384);
    near.lineTo(0, 340);
    near.quadTo(192, 280, 384, 350);
    near.lineTo(384, 384);
    painter.setBrush(QColor(0x66, 0xBB, 0x6A));
    painter.drawPath(near);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(260, 175), 8, 8);
    return image;
}

QImage plant()
{
    QImage image = scene(QColor(0xFF, 0x8A, 0x65), QColor(0xC6, 0x48, 0x3A));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x8D, 0x6E, 0x63));
    painter.drawRoundedRect(QRectF(160, 280, 64, 56), 8, 8);
    painter.setPen(QPen(QColor(0x43, 0xA0, 0x47), 6, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(192, 280), QPointF(192, 200));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x66, 0xBB, 0x6A));
    painter.drawEllipse(QRectF(150, 200, 42, 24));
    painter.drawEllipse(QRectF(192, 220, 42, 24));
    painter.drawEllipse(QRectF(174, 176, 36, 30));
    person(painter, QPointF(300, 330), 110, false, Qt::white);
    return image;
}

// The upper band shows the time of day, the lower one stays dark enough for white text.
QImage timeOfDay(const QColor& sky, const QColor& ground, qreal sunHeight, const QColor& sun, bool night)
{
    QImage image = canvas(kSize, kSize);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    card(painter, QRectF(0, 0, kSize, kSize), sky, ground, 16);
    painter.setPen(Qt::NoPen);
    if (night) {
        painter.setBrush(Qt::white);
        const QPointF stars[] = {{40, 30}, {90, 70}, {150, 25}, {210, 60}, {330, 40}, {60, 110}, {300, 100}};
        for (const QPointF& star : stars) {
            painter.drawEllipse(star, 2, 2);
        }
        painter.setBrush(sun);
        painter.drawEllipse(QPointF(270, 70), 30, 30);
        painter.setBrush(sky);
        painter.drawEllipse(QPointF(284, 60), 26, 26);
    } else {
        QRadialGradient glow(QPointF(270, sunHeight), 70);
        glow.setColorAt(0, QColor(sun.red(), sun.green(), sun.blue(), 150));
        glow.setColorAt(1, Qt::transparent);
        painter.setBrush(glow);
        painter.drawEllipse(QPointF(270, sunHeight), 70, 70);
        painter.setBrush(sun);
        painter.drawEllipse(QPointF(270, sunHeight), 28, 28);
    }
    // Hills along the band's lower edge.
    QPainterPath hills;
    hills.moveTo(0, 150);
    hills.quadTo(96, 105, 192, 140);
    hills.quadTo(288, 170, 384, 125);
    hills.lineTo(384, 160);
    hills.lineTo(0, 160);
    painter.setBrush(QColor(0, 0, 0, 50));
    painter.drawPath(hills);
    return image;
}

}  // namespace

bool paintRest(const QString& folder)
{
    const QString rest = QStringLiteral("zh_res/res_1080/Rest/bg%1.png");
    const QString calendar = QStringLiteral("zh_res/res_1080/CalendarPhrases/CalendarPhrases%1.png");
    return save(stretching(), folder, rest.arg(1, 4, 10, QLatin1Char('0'))) &&
           save(water(), folder, rest.arg(2, 4, 10, QLatin1Char('0'))) &&
           save(faraway(), folder, rest.arg(3, 4, 10, QLatin1Char('0'))) &&
           save(plant(), folder, rest.arg(4, 4, 10, QLatin1Char('0'))) &&
           save(timeOfDay(QColor(0xFF, 0xB7, 0x4D), QColor(0x5C, 0x4B, 0x8A), 130, QColor(0xFF, 0xE0, 0x82),
                          false),
                folder, calendar.arg(1, 2, 10, QLatin1Char('0'))) &&
           save(timeOfDay(QColor(0x42, 0xA5, 0xF5), QColor(0x1E, 0x4E, 0x8C), 55, QColor(0xFF, 0xF1, 0x76),
                          false),
                folder, calendar.arg(2, 2, 10, QLatin1Char('0'))) &&
           save(timeOfDay(QColor(0xFF, 0xCA, 0x28), QColor(0x8D, 0x4E, 0x2A), 85, QColor(0xFF, 0xF8, 0xE1),
                          false),
                folder, calendar.arg(3, 2, 10, QLatin1Char('0'))) &&
           save(timeOfDay(QColor(0xF0, 0x62, 0x92), QColor(0x3E, 0x27, 0x6B), 125, QColor(0xFF, 0x8A, 0x65),
                          false),
                folder, calendar.arg(4, 2, 10, QLatin1Char('0'))) &&
           save(timeOfDay(QColor(0x1A, 0x23, 0x7E), QColor(0x0D, 0x12, 0x3F), 0, QColor(0xFF, 0xF9, 0xC4),
                          true),
                folder, calendar.arg(5, 2, 10, QLatin1Char('0')));
}

}  // namespace NoticeArt
