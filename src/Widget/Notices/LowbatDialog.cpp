#include "Widget/Notices/LowbatDialog.h"

#include "Utils/Logging.h"
#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Notices/NoticeLook.h"
#include "WidgetPresenter/LowbatPresenter.h"

#include <QCursor>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>

namespace {

const QSize kDialogSize(298, 308);
const QSize kFrameSize(282, 294);
const QRect kButtonRect(86, 250, 110, 28);
const QRect kCloseRect(201, 14, 36, 36);
const QRect kPicture(56, 92, 170, 84);
constexpr int kRadius = 16;

const QString kArt = QStringLiteral(":/zh_res/res_1080/Lowbat/");

QString framePath(const QString& folder, const QString& stem, int frame)
{
    return kArt + folder + QLatin1Char('/') + stem +
           QStringLiteral("%1.png").arg(frame, 4, 10, QLatin1Char('0'));
}

struct PageLook {
    const char* background;
    const char* text;
};

const PageLook kPages[] = {
    {"lowbat_panel_background.png", QT_TRANSLATE_NOOP("LowbatDialog", "鼠标电量低，请及时充电")},
    {"lowbat_power_shortage_panel_background.png", QT_TRANSLATE_NOOP("LowbatDialog", "鼠标电量严重不足")},
    {"lowbat_shut_down.png", QT_TRANSLATE_NOOP("LowbatDialog", "鼠标电量耗尽，已关机")},
    {"lowbat_charging.png", QT_TRANSLATE_NOOP("LowbatDialog", "鼠标正在充电")},
};

}  // namespace

LowbatDialog::LowbatDialog(QWidget* parent) : QDialog(parent)
{
    NoticeLook::loadArt();
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_MacAlwaysShowToolWindow);
    setAttribute(Qt::WA_TranslucentBackground);
    // The panel pops up while the user types elsewhere: it must not take the keyboard.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(tr("Zorvane 电量提醒"));
    setupUi();

    mPresenter = new LowbatPresenter(this, this);
    mTimerAutoHide = new QTimer(this);
    mTimerAutoHide->setInterval(kAutoHideTickMs);
    connect(mTimerAutoHide, &QTimer::timeout, this, &LowbatDialog::onAutoHideTick);
}

void LowbatDialog::setupUi()
{
    mStack = new QStackedWidget(this);
    mStack->setGeometry(QRect(QPoint(0, 0), kFrameSize));
    for (const PageLook& look : kPages) {
        auto* frame = new QFrame;
        frame->setObjectName(QStringLiteral("lowbatFrame"));
        auto* background = new QLabel(frame);
        background->setGeometry(QRect(QPoint(0, 0), kFrameSize));
        background->setPixmap(Pictures::load(kArt + QLatin1String(look.background), background));
        auto* text = new QLabel(tr(look.text), frame);
        text->setGeometry(16, 200, kFrameSize.width() - 32, 40);
        text->setAlignment(Qt::AlignCenter);
        text->setWordWrap(true);
        text->setStyleSheet(QStringLiteral("color: white; font-size: 17px;"));
        mFrames << frame;
        mStack->addWidget(frame);
    }
    mLowbatAnimation = new QLabel(mFrames[LowbatPage]);
    mLowbatAnimation->setGeometry(kPicture);
    mMinLowbatAnimation = new QLabel(mFrames[MinLowbatPage]);
    mMinLowbatAnimation->setGeometry(kPicture);
    setLowbatAnimationImage(1);
    setMinLowbatAnimationImage(1);

    // A cross only closes, as everywhere else; silencing is a button that says so.
    mClose = new QToolButton(this);
    mClose->setObjectName(QStringLiteral("closeButton"));
    mClose->setFocusPolicy(Qt::NoFocus);
    mClose->setCursor(Qt::PointingHandCursor);
    mClose->setToolTip(tr("关闭"));
    mClose->setAccessibleName(mClose->toolTip());
    mClose->setIcon(QIcon(kArt + QStringLiteral("lowbat_close.png")));
    mClose->setIconSize(QSize(28, 28));
    mClose->setGeometry(kCloseRect);
    mClose->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; }"));
    connect(mClose, &QToolButton::clicked, this, &LowbatDialog::animationHide);

    mButton = new QPushButton(tr("不再提醒"), this);
    mButton->setObjectName(QStringLiteral("noLongerRemind"));
    mButton->setFocusPolicy(Qt::NoFocus);
    mButton->setCursor(Qt::PointingHandCursor);
    mButton->setStyleSheet(QStringLiteral(
        "QPushButton { border: 1px solid rgba(255, 255, 255, 150); border-radius: 14px;"
        " background: rgba(255, 255, 255, 30); color: white; font-size: 13px; padding: 0 14px; }"
        "QPushButton:hover { background: rgba(255, 255, 255, 70); }"));
    connect(mButton, &QPushButton::clicked, this, &LowbatDialog::onNoLongerRemind);
}

void LowbatDialog::setLowbatAnimationView()
{
    changeView(LowbatPage);
}

void LowbatDialog::setMinLowAnimationView()
{
    changeView(MinLowbatPage);
}

void LowbatDialog::setMouseShutdownView()
{
    changeView(ShutdownPage);
}

void LowbatDialog::setMouseChargingView()
{
    changeView(ChargingPage);
}

void LowbatDialog::changeView(int index)
{
    mStack->setCurrentIndex(index);
    if (index == LowbatPage) {
        mPresenter->startLowbatAnimation();
    } else if (index == MinLowbatPage) {
        mPresenter->stopLowbatAnimation();
        mPresenter->startMinLowbatAnimation();
    } else {
        mPresenter->stopLowbatAnimation();
        mPresenter->stopMinLowbatAnimation();
    }
    toShow();
}

int LowbatDialog::currentPage() const
{
    return mStack->currentIndex();
}

bool LowbatDialog::IsHidden()
{
    return isHidden();
}

void LowbatDialog::toShow()
{
    // A panel still shrinking away is coming back: its animation must not finish the job.
    if (mHiding) {
        mHiding->stop();
        mHiding->deleteLater();
        mHiding = nullptr;
    }
    resize(kDialogSize);
    // As wide as its words need (English is longer), centred where the pill stands.
    const int width = qBound(kButtonRect.width(), mButton->sizeHint().width(), kDialogSize.width() - 32);
    mButton->setGeometry(kButtonRect.center().x() - width / 2, kButtonRect.y(), width, kButtonRect.height());
    mClose->setGeometry(kCloseRect);
    for (QWidget* frame : qAsConst(mFrames)) {
        frame->setGeometry(QRect(QPoint(0, 0), kFrameSize));
    }
    mButton->setVisible(currentPage() == LowbatPage || currentPage() == MinLowbatPage);
    move(WindowLook::bottomRight(size()));
    showNormal();
    mOutsideCount = 0;
    mTimerAutoHide->start();
}

void LowbatDialog::setLowbatAnimationImage(int frame)
{
    mLowbatAnimation->setPixmap(
        Pictures::load(framePath(QStringLiteral("lobat_animation"), QStringLiteral("lobat_animation"), frame),
                       mLowbatAnimation));
}

void LowbatDialog::setMinLowbatAnimationImage(int frame)
{
    mMinLowbatAnimation->setPixmap(Pictures::load(framePath(QStringLiteral("lowbat_power_shortage_animation"),
                                                            QStringLiteral("lowbat_power_shortage"), frame),
                                                  mMinLowbatAnimation));
}

QPixmap LowbatDialog::lowbatFrame() const
{
    return mLowbatAnimation->pixmap(Qt::ReturnByValue);
}

QPixmap LowbatDialog::minLowbatFrame() const
{
    return mMinLowbatAnimation->pixmap(Qt::ReturnByValue);
}

void LowbatDialog::onAutoHideTick()
{
    if (geometry().contains(QCursor::pos())) {
        mOutsideCount = 0;
        return;
    }
    mOutsideCount += 1;
    if (mOutsideCount >= kAutoHideTicks) {
        animationHide();
        mTimerAutoHide->stop();
        mOutsideCount = 0;
    }
}

void LowbatDialog::animationHide()
{
    const QRect from = geometry();
    QRect to = from;
    to.setTop(from.top() + from.height());
    auto* animation = new QPropertyAnimation(this, "geometry", this);
    animation->setDuration(kHideMs);
    animation->setStartValue(from);
    animation->setEndValue(to);
    connect(animation, &QPropertyAnimation::finished, this, [this] {
        if (currentPage() == LowbatPage) {
            emit signalLowbatViewAutoHide();
        } else if (currentPage() == MinLowbatPage) {
            emit signalMinLowbatViewAutoHide();
        }
        hide();
    });
    mHiding = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void LowbatDialog::onNoLongerRemind()
{
    if (currentPage() == LowbatPage) {
        mPresenter->stopLowbatAnimation();
        emit signalLowbatNoLongerRemind();
    } else if (currentPage() == MinLowbatPage) {
        mPresenter->stopMinLowbatAnimation();
        emit signalMinLowbatNoLongerRemind();
    }
    qCInfo(lcConsole) << "battery panel: no longer remind, page" << currentPage();
    close();
}

void LowbatDialog::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    // However it went (shrunk away, closed by hand, hidden by its owner), nobody sees the
    // pictures any more: they stop loading, and the pointer watch stops with them.
    mPresenter->stopLowbatAnimation();
    mPresenter->stopMinLowbatAnimation();
    mTimerAutoHide->stop();
}

void LowbatDialog::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    if (WindowLook::compositing()) {
        return;
    }
    // Nothing blends the rounded corners of the pictures: give them an opaque ground.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(30, 34, 46));
    painter.drawRoundedRect(QRectF(QPoint(0, 0), kFrameSize), kRadius, kRadius);
}

void LowbatDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    WindowLook::shape(this, QRect(QPoint(0, 0), kFrameSize), kRadius);
}

void LowbatDialog::mousePressEvent(QMouseEvent* event)
{
    mDragPoint = event->globalPos();
    mDragging = true;
}

void LowbatDialog::mouseMoveEvent(QMouseEvent* event)
{
    if (mDragging) {
        move(pos() + event->globalPos() - mDragPoint);
        mDragPoint = event->globalPos();
    }
}

void LowbatDialog::mouseReleaseEvent(QMouseEvent* event)
{
    if (mDragging) {
        move(pos() + event->globalPos() - mDragPoint);
    }
    mDragging = false;
}
