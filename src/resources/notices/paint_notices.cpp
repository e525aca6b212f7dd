// Draws the pictures of the battery panel and the Bluetooth hint into PNG files and writes the
// resource list that names them, so that the build carries no binary art.
// Usage: paint_notices <output folder>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <QTextStream>

#include <cmath>
#include <cstdio>

namespace {

constexpr double kPi = 3.14159265358979323846;
const QSize kPage(282, 294);
const QRect kBattery(56, 92, 170, 84);  // where the panel shows the moving picture

// Each picture is painted twice: as is, and at twice the pixels for HiDPI screens ("@2x").
int gScale = 1;

QImage blank(const QSize& size)
{
    QImage image(size * gScale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(gScale);
    image.fill(Qt::transparent);
    return image;
}

void card(QPainter* p, const QRect& rect, const QColor& top, const QColor& bottom)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0, top);
    gradient.setColorAt(1, bottom);
    p->setPen(Qt::NoPen);
    p->setBrush(gradient);
    p->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 16, 16);
}

// A battery outline inside `box` with a bar filled to `level` (0 to 1).
void battery(QPainter* p, const QRectF& box, double level, const QColor& bar, const QColor& outline)
{
    const QRectF body(box.left() + 8, box.top() + 12, box.width() - 30, box.height() - 24);
    p->setBrush(Qt::NoBrush);
    p->setPen(QPen(outline, 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p->drawRoundedRect(body, 10, 10);
    p->setPen(Qt::NoPen);
    p->setBrush(outline);
    p->drawRoundedRect(QRectF(body.right() + 5, body.center().y() - 12, 9, 24), 3, 3);
    if (level > 0) {
        const QRectF inner = body.adjusted(9, 9, -9, -9);
        p->setBrush(bar);
        p->drawRoundedRect(QRectF(inner.left(), inner.top(), inner.width() * level, inner.height()), 5, 5);
    }
}

void bolt(QPainter* p, const QPointF& c, double s, const QColor& colour)
{
    QPainterPath path;
    path.moveTo(c + QPointF(0.15 * s, -0.5 * s));
    path.lineTo(c + QPointF(-0.3 * s, 0.08 * s));
    path.lineTo(c + QPointF(0.0, 0.08 * s));
    path.lineTo(c + QPointF(-0.15 * s, 0.5 * s));
    path.lineTo(c + QPointF(0.3 * s, -0.08 * s));
    path.lineTo(c + QPointF(0.0, -0.08 * s));
    path.closeSubpath();
    p->setPen(Qt::NoPen);
    p->setBrush(colour);
    p->drawPath(path);
}

void power(QPainter* p, const QPointF& c, double r, const QColor& colour)
{
    p->setBrush(Qt::NoBrush);
    p->setPen(QPen(colour, 7, Qt::SolidLine, Qt::RoundCap));
    const QRectF ring(c.x() - r, c.y() - r, 2 * r, 2 * r);
    p->drawArc(ring, 120 * 16, 300 * 16);
    p->drawLine(c + QPointF(0, -r - 4), c + QPointF(0, -r * 0.15));
}

bool save(const QImage& image, const QString& folder, QString name, QStringList* names)
{
    if (gScale != 1) {
        name.insert(name.lastIndexOf(QLatin1Char('.')), QStringLiteral("@%1x").arg(gScale));
    }
    const QString path = folder + QLatin1Char('/') + name;
    QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/'))));
    if (!image.save(path, "PNG", 9)) {
        std::fprintf(stderr, "paint_notices: cannot write %s\n", qPrintable(path));
        return false;
    }
    names->append(name);
    return true;
}

QImage background(const QColor& top, const QColor& bottom)
{
    QImage image = blank(kPage);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    card(&p, QRect(QPoint(0, 0), kPage), top, bottom);
    return image;
}

// One round of the low battery picture: the bar breathes between dim and bright.
QImage lowbatFrame(int frame, int frames)
{
    QImage image = blank(kBattery.size());
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double phase = 0.5 - 0.5 * std::cos(2 * kPi * (frame - 1) / frames);
    QColor bar(255, 170, 40);
    bar.setAlphaF(0.35 + 0.65 * phase);
    battery(&p, QRectF(QPointF(0, 0), kBattery.size()), 0.22, bar, QColor(255, 255, 255, 230));
    return image;
}

// The critical picture: a thin red bar that blinks twice a round and a red outline pulse.
QImage criticalFrame(int frame, int frames)
{
    QImage image = blank(kBattery.size());
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const double phase = 0.5 - 0.5 * std::cos(4 * kPi * (frame - 1) / frames);
    const QColor outline = QColor::fromRgbF(1.0, 1.0 - 0.6 * phase, 1.0 - 0.6 * phase);
    const bool lit = frame % (frames / 4) < frames / 8;
    battery(&p, QRectF(QPointF(0, 0), kBattery.size()), lit ? 0.08 : 0.0, QColor(240, 60, 50), outline);
    return image;
}

QImage shutDown()
{
    QImage image = background(QColor(92, 96, 104), QColor(52, 55, 62));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    power(&p, QPointF(kPage.width() / 2.0, 134), 34, QColor(235, 235, 235));
    return image;
}

QImage charging()
{
    QImage image = background(QColor(46, 150, 96), QColor(24, 96, 64));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    battery(&p, QRectF(kBattery), 0.7, QColor(170, 255, 190), QColor(255, 255, 255));
    bolt(&p, QRectF(kBattery).center() + QPointF(-11, 0), 52, QColor(255, 230, 90));
    return image;
}

// The cross of the no-longer-remind button.
QImage cross()
{
    QImage image = blank(QSize(32, 32));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 60));
    p.drawEllipse(QRectF(1, 1, 30, 30));
    p.setPen(QPen(QColor(255, 255, 255), 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(11, 11), QPointF(21, 21));
    p.drawLine(QPointF(21, 11), QPointF(11, 21));
    return image;
}

// The Bluetooth hint: a mouse with the Bluetooth rune and a tick.
QImage bleConnected()
{
    QImage image = blank(QSize(312, 300));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    card(&p, QRect(0, 0, 312, 300), QColor(52, 108, 214), QColor(30, 62, 140));
    const QRectF mouse(106, 46, 100, 150);
    p.setPen(QPen(QColor(255, 255, 255), 5));
    p.setBrush(QColor(255, 255, 255, 40));
    p.drawRoundedRect(mouse, 50, 50);
    p.drawLine(QPointF(mouse.center().x(), mouse.top() + 2), QPointF(mouse.center().x(), mouse.top() + 56));
    QPainterPath rune;
    const QPointF c(mouse.center().x(), mouse.top() + 104);
    rune.moveTo(c + QPointF(-14, -14));
    rune.lineTo(c + QPointF(14, 14));
    rune.lineTo(c + QPointF(0, 28));
    rune.lineTo(c + QPointF(0, -28));
    rune.lineTo(c + QPointF(14, -14));
    rune.lineTo(c + QPointF(-14, 14));
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(255, 255, 255), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(rune);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(60, 200, 110));
    p.drawEllipse(QPointF(mouse.right() + 4, mouse.top() + 10), 24, 24);
    p.setPen(QPen(QColor(255, 255, 255), 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QPainterPath tick;
    tick.moveTo(mouse.right() - 7, mouse.top() + 10);
    tick.lineTo(mouse.right() + 1, mouse.top() + 18);
    tick.lineTo(mouse.right() + 15, mouse.top() + 1);
    p.setBrush(Qt::NoBrush);
    p.drawPath(tick);
    return image;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: paint_notices <output folder>\n");
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    const QString lowbat = QStringLiteral("zh_res/res_1080/Lowbat/");
    QStringList names;
    bool ok = true;
    for (gScale = 1; ok && gScale <= 2; ++gScale) {
        ok = ok && save(background(QColor(58, 66, 84), QColor(30, 34, 46)), out,
                        lowbat + QStringLiteral("lowbat_panel_background.png"), &names);
        ok = ok && save(background(QColor(140, 40, 40), QColor(70, 20, 24)), out,
                        lowbat + QStringLiteral("lowbat_power_shortage_panel_background.png"), &names);
        ok = ok && save(shutDown(), out, lowbat + QStringLiteral("lowbat_shut_down.png"), &names);
        ok = ok && save(charging(), out, lowbat + QStringLiteral("lowbat_charging.png"), &names);
        ok = ok && save(cross(), out, lowbat + QStringLiteral("lowbat_close.png"), &names);
        for (int frame = 1; ok && frame <= 153; ++frame) {
            ok = save(lowbatFrame(frame, 153), out,
                      lowbat + QStringLiteral("lobat_animation/lobat_animation%1.png")
                                   .arg(frame, 4, 10, QLatin1Char('0')),
                      &names);
        }
        for (int frame = 1; ok && frame <= 109; ++frame) {
            ok = save(criticalFrame(frame, 109), out,
                      lowbat + QStringLiteral("lowbat_power_shortage_animation/lowbat_power_shortage%1.png")
                                   .arg(frame, 4, 10, QLatin1Char('0')),
                      &names);
        }
        ok = ok && save(bleConnected(), out, QStringLiteral("zh_res/res_1080/BLE/ble_connected.png"), &names);
    }
    if (!ok) {
        return 1;
    }
    QFile qrc(out + QStringLiteral("/notices.qrc"));
    if (!qrc.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        std::fprintf(stderr, "paint_notices: cannot write the resource list\n");
        return 1;
    }
    QTextStream stream(&qrc);
    stream << "<RCC>\n  <qresource prefix=\"/\">\n";
    for (const QString& name : names) {
        stream << "    <file>" << name << "</file>\n";
    }
    stream << "  </qresource>\n</RCC>\n";
    return 0;
}
