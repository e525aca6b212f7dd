#include "Widget/NotificationDialog.h"

#include "Widget/Common/WindowLook.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {
constexpr int kRadius = 10;
constexpr int kMargin = 24;
}  // namespace

NotificationDialog::NotificationDialog(QWidget* parent) : QDialog(parent), mLabel(new QLabel(this))
{
    // The plug strip's look and flags: a window the manager keeps below the focused one
    // would be a notice nobody sees.
    setWindowFlags(WindowLook::kFloatingFlags);
    setAttribute(Qt::WA_TranslucentBackground, WindowLook::compositing());
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(QStringLiteral("Zorvane"));
    mLabel->setStyleSheet(QStringLiteral("color: white; font-size: 16px; padding: 14px 22px;"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mLabel);
    mTimer.setSingleShot(true);
    mTimer.setInterval(kShowMs);
    connect(&mTimer, &QTimer::timeout, this, &NotificationDialog::hideAnimation);
}

void NotificationDialog::showMessage(const QString& text)
{
    mLabel->setText(text);
    adjustSize();
    move(WindowLook::bottomRight(size(), kMargin));
    show();
    mTimer.start();
}

QString NotificationDialog::text() const
{
    return mLabel->text();
}

void NotificationDialog::hideAnimation()
{
    mTimer.stop();
    close();
}

void NotificationDialog::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(40, 44, 52, WindowLook::compositing() ? 230 : 255));
    painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
}

void NotificationDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    WindowLook::shape(this, rect(), kRadius);
}
