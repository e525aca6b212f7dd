#include "NoticePanel.h"

#include "Widget/Common/WindowLook.h"

#include <QCursor>
#include <QFrame>
#include <QPainter>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QTimer>

namespace {
constexpr int kCornerRadius = 12;
}  // namespace

NoticePanel::NoticePanel(int closeButtonSize, QWidget* parent)
    : QDialog(parent),
      mFrame(new QFrame(this)),
      mClose(new QPushButton(mFrame)),
      mTimerAutoHide(new QTimer(this)),
      mTranslucent(WindowLook::compositing())
{
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(QStringLiteral("Zorvane"));
    // Without a compositor a translucent window has black corners: paint it opaque and cut
    // the corners with a mask instead.
    setAttribute(Qt::WA_TranslucentBackground, mTranslucent);
    setFixedWidth(kSize);
    setMinimumHeight(0);
    setMaximumHeight(kSize);

    mFrame->setGeometry(0, 0, kSize, kSize);
    mClose->setGeometry(350, 10, closeButtonSize, closeButtonSize);
    mClose->setFocusPolicy(Qt::NoFocus);
    mClose->setCursor(Qt::PointingHandCursor);
    mClose->setText(QStringLiteral("✕"));
    // The cross is a picture to a screen reader.
    mClose->setAccessibleName(tr("关闭"));
    mClose->setStyleSheet(
        QStringLiteral("QPushButton { color: #FFFFFF; background: rgba(0, 0, 0, 60); border: none;"
                       " border-radius: %1px; font-size: 12px; }"
                       "QPushButton:hover { background: rgba(0, 0, 0, 120); }")
            .arg(closeButtonSize / 2));
    connect(mClose, &QPushButton::clicked, this, &NoticePanel::animationHide);

    mTimerAutoHide->setInterval(kTickMs);
    connect(mTimerAutoHide, &QTimer::timeout, this, &NoticePanel::onAutoHideTick);
}

void NoticePanel::placeAtBottomRight()
{
    stopAnimation();
    const QPoint corner = WindowLook::bottomRight(QSize(width(), 0), 2);
    setGeometry(corner.x(), corner.y(), width(), 0);
}

void NoticePanel::animationShow()
{
    // Already up: a new content keeps it there for another round.
    if (isVisible() && !mAnimation && height() >= mFrame->height()) {
        mOutsideCount = 0;
        mTimerAutoHide->start();
        return;
    }
    showNormal();
    animateTo(mFrame->height(), false);
}

void NoticePanel::animationHide()
{
    if (isHidden()) {
        return;
    }
    mTimerAutoHide->stop();
    animateTo(0, true);
}

void NoticePanel::stopAnimation()
{
    // Stopped, not finished: its end (hide, or the pointer watch) must not run.
    if (mAnimation) {
        mAnimation->stop();
        delete mAnimation;
    }
}

void NoticePanel::animateTo(int height, bool hideAtEnd)
{
    // One movement at a time, each from where the last one left the panel: a rise and a sink
    // running together would fight over the geometry, and the sink would hide a panel that
    // was just asked for again.
    stopAnimation();
    auto* animation = new QPropertyAnimation(this, "geometry", this);
    animation->setDuration(kAnimationMs);
    const QRect from = geometry();
    QRect to = from;
    to.setTop(from.bottom() + 1 - height);
    animation->setStartValue(from);
    animation->setEndValue(to);
    connect(animation, &QPropertyAnimation::finished, this, [this, hideAtEnd] {
        mAnimation = nullptr;
        if (hideAtEnd) {
            hide();
        } else {
            mOutsideCount = 0;
            mTimerAutoHide->start();
        }
    });
    mAnimation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void NoticePanel::onAutoHideTick()
{
    if (geometry().contains(QCursor::pos())) {
        mOutsideCount = 0;
        return;
    }
    if (++mOutsideCount >= kOutsideTicks) {
        mOutsideCount = 0;
        animationHide();
    }
}

void NoticePanel::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    mTimerAutoHide->stop();
}

void NoticePanel::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    if (!mTranslucent) {
        WindowLook::shape(this, rect(), kCornerRadius);
    }
}

void NoticePanel::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    if (mTranslucent) {
        return;
    }
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0x2B, 0x3A, 0x55));
}
