// The pairing wizard's pictures: the steps as they look on a Linux desktop (the system's
// Bluetooth settings with its switch and device list), the three mouse models and their
// backgrounds.
#include "../NoticeArt.h"

#include <QPainterPath>

namespace NoticeArt {

namespace {

const QColor kBlue(0x3D, 0x8B, 0xFF);
const QColor kInk(0x33, 0x3B, 0x4A);
const QColor kPaper(0xF5, 0xF7, 0xFB);
const QColor kGreen(0x43, 0xA0, 0x47);

// A settings window: title bar, a side list with the Bluetooth row selected, and the
// content area handed back for the caller to fill.
QRectF settingsWindow(QPainter& painter, const QRectF& rect)
{
    painter.setPen(QPen(QColor(0xC9, 0xD1, 0xE0), 2));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(rect, 10, 10);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xE4, 0xE8, 0xF0));
    painter.drawRoundedRect(QRectF(rect.left(), rect.top(), rect.width(), 26), 10, 10);
    painter.drawRect(QRectF(rect.left(), rect.top() + 14, rect.width(), 12));
    const QRectF side(rect.left() + 8, rect.top() + 34, rect.width() * 0.3, rect.height() - 42);
    painter.setBrush(kPaper);
    painter.drawRoundedRect(side, 6, 6);
    for (int row = 0; row < 5; ++row) {
        const QRectF line(side.left() + 6, side.top() + 8 + row * 22, side.width() - 12, 16);
        if (row == 1) {
            painter.setBrush(kBlue);
            painter.drawRoundedRect(line.adjusted(-3, -3, 3, 3), 5, 5);
            bluetoothBadge(painter, QPointF(line.left() + 8, line.center().y()), 7, kBlue.darker(130));
            painter.setBrush(Qt::white);
        } else {
            painter.setBrush(QColor(0xC9, 0xD1, 0xE0));
        }
        painter.drawRoundedRect(QRectF(line.left() + 20, line.center().y() - 3, line.width() - 26, 6), 3, 3);
    }
    return QRectF(side.right() + 12, side.top(), rect.right() - side.right() - 20, side.height());
}

void toggle(QPainter& painter, const QPointF& centre, bool on)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(on ? kBlue : QColor(0xBD, 0xC3, 0xCF));
    painter.drawRoundedRect(QRectF(centre.x() - 22, centre.y() - 12, 44, 24), 12, 12);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(centre.x() + (on ? 10 : -10), centre.y()), 9, 9);
}

void stepNumber(QPainter& painter, const QPointF& centre, int number)
{
    // Dots rather than digits: the pictures carry no text.
    painter.setPen(Qt::NoPen);
    painter.setBrush(kBlue);
    painter.drawEllipse(centre, 16, 16);
    painter.setBrush(Qt::white);
    for (int dot = 0; dot < number; ++dot) {
        painter.drawEllipse(QPointF(centre.x() + (dot - (number - 1) / 2.0) * 8, centre.y()), 3, 3);
    }
}

void laptop(QPainter& painter, const QRectF& screen)
{
    painter.setPen(QPen(kInk, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(kPaper);
    painter.drawRoundedRect(screen, 8, 8);
    painter.setBrush(kInk);
    painter.drawRoundedRect(QRectF(screen.left() - 20, screen.bottom() + 4, screen.width() + 40, 12), 6, 6);
}

QImage pairing()
{
    QImage image = canvas(560, 240);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    laptop(painter, QRectF(40, 40, 200, 140));
    bluetoothBadge(painter, QPointF(140, 110), 32, kBlue);
    // Dashes between the two: the search under way.
    painter.setPen(Qt::NoPen);
    for (int dash = 0; dash < 6; ++dash) {
        QColor colour = kBlue;
        colour.setAlphaF(0.3 + dash * 0.12);
        painter.setBrush(colour);
        painter.drawEllipse(QPointF(280 + dash * 22, 120), 6, 6);
    }
    mouse(painter, QPointF(470, 120), 170, Qt::white);
    waves(painter, QPointF(500, 60), 40, kBlue);
    return image;
}

QImage steps()
{
    QImage image = canvas(900, 230);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // 1: the desktop's Bluetooth settings with the switch on.
    stepNumber(painter, QPointF(24, 24), 1);
    const QRectF content = settingsWindow(painter, QRectF(40, 20, 250, 190));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xC9, 0xD1, 0xE0));
    painter.drawRoundedRect(QRectF(content.left(), content.top() + 10, 70, 8), 4, 4);
    toggle(painter, QPointF(content.right() - 26, content.top() + 14), true);
    // 2: hold the pairing key until the light blinks.
    stepNumber(painter, QPointF(344, 24), 2);
    mouse(painter, QPointF(450, 120), 160, Qt::white);
    painter.setPen(QPen(kBlue, 4, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(450, 200), 14, 6);
    waves(painter, QPointF(490, 60), 40, kBlue);
    // 3: the mouse close to the computer while the wizard searches.
    stepNumber(painter, QPointF(634, 24), 3);
    laptop(painter, QRectF(670, 50, 150, 110));
    bluetoothBadge(painter, QPointF(745, 105), 24, kBlue);
    mouse(painter, QPointF(860, 160), 80, Qt::white);
    return image;
}

QImage connected()
{
    QImage image = canvas(560, 240);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF content = settingsWindow(painter, QRectF(20, 10, 520, 220));
    toggle(painter, QPointF(content.right() - 26, content.top() + 14), true);
    // The device list with the mouse in it, connected.
    const QRectF row(content.left(), content.top() + 44, content.width(), 48);
    painter.setPen(QPen(QColor(0xC9, 0xD1, 0xE0), 2));
    painter.setBrush(kPaper);
    painter.drawRoundedRect(row, 8, 8);
    mouse(painter, QPointF(row.left() + 26, row.center().y()), 34, Qt::white);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xC9, 0xD1, 0xE0));
    painter.drawRoundedRect(QRectF(row.left() + 52, row.center().y() - 4, 120, 8), 4, 4);
    painter.setBrush(kGreen);
    painter.drawEllipse(QPointF(row.right() - 24, row.center().y()), 12, 12);
    painter.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QPainterPath tick;
    tick.moveTo(row.right() - 30, row.center().y());
    tick.lineTo(row.right() - 25, row.center().y() + 5);
    tick.lineTo(row.right() - 17, row.center().y() - 5);
    painter.drawPath(tick);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xE4, 0xE8, 0xF0));
    painter.drawRoundedRect(QRectF(content.left(), row.bottom() + 10, content.width(), 40), 8, 8);
    return image;
}

QImage prompt(bool lost)
{
    QImage image = canvas(96, 96);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    mouse(painter, QPointF(40, 52), 72, Qt::white);
    bluetoothBadge(painter, QPointF(74, 24), 16, lost ? QColor(0xF5, 0x7C, 0x00) : kBlue);
    if (lost) {
        painter.setPen(QPen(QColor(0xF5, 0x7C, 0x00), 4, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(62, 42), QPointF(86, 42));
    }
    return image;
}

QImage background(const QColor& left, const QColor& right)
{
    QImage image = canvas(1156, 405);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, 1156, 405);
    gradient.setColorAt(0, left);
    gradient.setColorAt(1, right);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(QRectF(0, 0, 1156, 405), 16, 16);
    painter.setBrush(QColor(255, 255, 255, 25));
    painter.drawEllipse(QPointF(1060, 40), 160, 160);
    return image;
}

// The three models differ in size and colour of the shell.
QImage model(qreal height, const QColor& body)
{
    QImage image = canvas(200, 200);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    mouse(painter, QPointF(100, 100), height, body);
    return image;
}

}  // namespace

bool paintGuidance(const QString& folder)
{
    const QString dir = QStringLiteral("zh_res/res_1080/BLEGuidance/");
    return save(pairing(), folder, dir + QStringLiteral("ble_guidance_1.png")) &&
           save(steps(), folder, dir + QStringLiteral("ble_guidance_2.png")) &&
           save(connected(), folder, dir + QStringLiteral("ble_guidance_3.png")) &&
           save(prompt(false), folder, dir + QStringLiteral("ble_guidance_4.png")) &&
           save(prompt(true), folder, dir + QStringLiteral("ble_guidance_5.png")) &&
           save(background(QColor(0xE3, 0xF2, 0xFD), QColor(0xBB, 0xDE, 0xFB)), folder,
                dir + QStringLiteral("ble_btn_bg2.png")) &&
           save(background(QColor(0xE8, 0xF5, 0xE9), QColor(0xC8, 0xE6, 0xC9)), folder,
                dir + QStringLiteral("ble_btn_bg3.png")) &&
           save(background(QColor(0xF3, 0xE5, 0xF5), QColor(0xE1, 0xBE, 0xE7)), folder,
                dir + QStringLiteral("ble_btn_bg4.png")) &&
           save(model(150, QColor(0x37, 0x47, 0x4F)), folder, dir + QStringLiteral("rk02.png")) &&
           save(model(170, QColor(0xEC, 0xEF, 0xF1)), folder, dir + QStringLiteral("rk06.png")) &&
           save(model(135, QColor(0xF4, 0x8F, 0xB1)), folder, dir + QStringLiteral("rk08.png"));
}

}  // namespace NoticeArt
