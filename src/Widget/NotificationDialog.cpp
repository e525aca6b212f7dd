#include "Widget/NotificationDialog.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>

NotificationDialog::NotificationDialog(QWidget* parent) : QDialog(parent), mLabel(new QLabel(this))
{
    setWindowFlags(Qt::FramelessWindowHint | Qt::Tool | Qt::WindowDoesNotAcceptFocus |
                   Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(QStringLiteral("Zorvane"));
    setStyleSheet(
        QStringLiteral("QDialog { background: #333333; border-radius: 8px; }"
                       "QLabel { color: white; font-size: 14px; padding: 12px 20px; }"));
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
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.right() - width() - 24, area.bottom() - height() - 24);
    }
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
