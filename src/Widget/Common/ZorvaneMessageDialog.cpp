#include "Widget/Common/ZorvaneMessageDialog.h"

#include "Widget/Common/WindowLook.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>

ZorvaneMessageDialog::ZorvaneMessageDialog(QWidget* parent)
    : FramelessDialog(parent, WindowLook::kFloatingFlags), mLabel(new QLabel(this))
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setCardColor(QColor(0x33, 0x33, 0x33, 235));
    setStyleSheet(QStringLiteral("QLabel { color: white; font-size: 14px; }"));
    mLabel->setWordWrap(true);
    mLabel->setAlignment(Qt::AlignCenter);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(20, 12, 20, 12);
    layout->addWidget(mLabel);
    setFixedWidth(320);
    mTimer.setSingleShot(true);
    mTimer.setInterval(kShowMs);
    connect(&mTimer, &QTimer::timeout, this, &QWidget::hide);
}

void ZorvaneMessageDialog::setMessageText(const QString& text)
{
    mLabel->setText(text);
    adjustSize();
    // Placed again each time: the height follows the text.
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.right() + 1 - width(), area.bottom() + 1 - height());
    }
    show();
    mTimer.start();
}

QString ZorvaneMessageDialog::messageText() const
{
    return mLabel->text();
}
