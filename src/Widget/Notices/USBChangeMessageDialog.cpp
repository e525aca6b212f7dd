#include "Widget/Notices/USBChangeMessageDialog.h"

#include "Widget/Common/WindowLook.h"

#include <QLabel>
#include <QPainter>
#include <QPropertyAnimation>
#include <QTimer>

namespace {

constexpr int kRadius = 10;

// The plug drawn at run time, with a green plus when it comes and a red minus when it goes.
QPixmap plugPicture(bool insert)
{
    const qreal ratio = 2.0;  // sharp on HiDPI screens too
    QPixmap pixmap(QSize(40, 40) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawRect(QRectF(0, 17, 6, 4));
    p.drawRoundedRect(QRectF(6, 10, 18, 18), 4, 4);
    p.drawRect(QRectF(24, 12, 10, 4));
    p.drawRect(QRectF(24, 22, 10, 4));
    p.setBrush(insert ? QColor(70, 200, 110) : QColor(235, 85, 75));
    p.drawEllipse(QPointF(30, 31), 8, 8);
    p.setPen(QPen(Qt::white, 2.5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(26, 31), QPointF(34, 31));
    if (insert) {
        p.drawLine(QPointF(30, 27), QPointF(30, 35));
    }
    return pixmap;
}

}  // namespace

USBChangeMessageDialog::USBChangeMessageDialog(QWidget* parent)
    : QDialog(parent), mIcon(new QLabel(this)), mLabel(new QLabel(this)), mTimer(new QTimer(this))
{
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_MacAlwaysShowToolWindow);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(tr("Zorvane 设备提示"));

    // No layout: the strip grows from nothing and its content keeps the full width meanwhile.
    mIcon->setGeometry(20, (kHeight - 40) / 2, 40, 40);
    mLabel->setGeometry(76, 0, kWidth - 96, kHeight);
    mLabel->setStyleSheet(QStringLiteral("color: white; font-size: 18px;"));

    mTimer->setSingleShot(true);
    mTimer->setInterval(kStandMs);
    connect(mTimer, &QTimer::timeout, this, &USBChangeMessageDialog::hideAnimation);

    // Just outside the top right corner, so that the slide brings it in.
    const QRect area = WindowLook::workArea();
    resize(0, kHeight);
    move(area.x() + area.width(), area.y());
}

void USBChangeMessageDialog::showMessage(bool insert)
{
    mInsert = insert;
    mLabel->setText(insert ? tr("设备插入") : tr("设备拔出"));
    mIcon->setPixmap(plugPicture(insert));
    showAnimation();
}

QString USBChangeMessageDialog::text() const
{
    return mLabel->text();
}

void USBChangeMessageDialog::showAnimation()
{
    showNormal();
    const QRect from = geometry();
    QRect to = from;
    to.setLeft(from.left() - kWidth);
    auto* animation = new QPropertyAnimation(this, "geometry", this);
    animation->setDuration(kSlideMs);
    animation->setStartValue(from);
    animation->setEndValue(to);
    connect(animation, &QPropertyAnimation::finished, mTimer, qOverload<>(&QTimer::start));
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void USBChangeMessageDialog::hideAnimation()
{
    const QRect from = geometry();
    auto* animation = new QPropertyAnimation(this, "geometry", this);
    animation->setDuration(kSlideMs);
    animation->setStartValue(from);
    animation->setEndValue(from.translated(from.width(), 0));
    connect(animation, &QPropertyAnimation::finished, this, &QDialog::close);
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void USBChangeMessageDialog::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // See-through only where a compositor blends it.
    const QColor fill(40, 44, 52, WindowLook::compositing() ? 230 : 255);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(0, 0, kWidth, kHeight), kRadius, kRadius);
}

void USBChangeMessageDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    WindowLook::shape(this, QRect(0, 0, kWidth, kHeight), kRadius);
}
