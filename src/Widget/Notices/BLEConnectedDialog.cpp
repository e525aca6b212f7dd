#include "Widget/Notices/BLEConnectedDialog.h"

#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Notices/NoticeLook.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QTimer>

const QSize BLEConnectedDialog::kSize(312, 300);

namespace {
constexpr int kRadius = 16;
}

BLEConnectedDialog::BLEConnectedDialog(QWidget* parent) : QDialog(parent), mTimer(new QTimer(this))
{
    NoticeLook::loadArt();
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(tr("Zorvane 蓝牙已连接"));
    setFixedSize(kSize);

    auto* picture = new QLabel(this);
    picture->setGeometry(QRect(QPoint(0, 0), kSize));
    picture->setPixmap(Pictures::load(QStringLiteral(":/zh_res/res_1080/BLE/ble_connected.png"), picture));
    auto* text = new QLabel(tr("蓝牙鼠标已连接"), this);
    text->setObjectName(QStringLiteral("bleConnectedText"));
    text->setGeometry(0, 220, kSize.width(), 48);
    text->setAlignment(Qt::AlignCenter);
    text->setStyleSheet(QStringLiteral("color: white; font-size: 20px;"));
    WindowLook::shape(this, rect(), kRadius);

    mTimer->setSingleShot(true);
    mTimer->setInterval(kShowMs);
    connect(mTimer, &QTimer::timeout, this, &QWidget::hide);
}

void BLEConnectedDialog::showHint()
{
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        QRect place(QPoint(0, 0), kSize);
        place.moveCenter(screen->availableGeometry().center());
        move(place.topLeft());
    }
    show();
    mTimer->start();
}

void BLEConnectedDialog::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    if (!WindowLook::compositing()) {
        // Nothing blends the picture's rounded corners: give them an opaque ground.
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(30, 62, 140));
        painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    }
}
