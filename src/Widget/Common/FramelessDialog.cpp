#include "Widget/Common/FramelessDialog.h"

#include "Widget/Common/WindowLook.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>

// The images live in static libraries: nothing would pull them into the program otherwise.
static void initResources()
{
    Q_INIT_RESOURCE(common);
    Q_INIT_RESOURCE(console);
}

FramelessDialog::FramelessDialog(QWidget* parent, Qt::WindowFlags extraFlags)
    : QDialog(parent), mTranslucent(WindowLook::compositing())
{
    setWindowFlags(Qt::FramelessWindowHint | Qt::Dialog | extraFlags);
    setWindowTitle(QStringLiteral("Zorvane"));
    setAttribute(Qt::WA_TranslucentBackground, mTranslucent);
    static const bool resources = (initResources(), true);
    Q_UNUSED(resources);
}

QHBoxLayout* FramelessDialog::titleBar(const QString& text)
{
    auto* row = new QHBoxLayout;
    auto* heading = new QLabel(text, this);
    heading->setObjectName(QStringLiteral("headingLabel"));
    auto* close = new QPushButton(this);
    close->setObjectName(QStringLiteral("closeButton"));
    close->setIcon(
        QIcon::fromTheme(QStringLiteral("window-close"), QIcon(QStringLiteral(":/console/close.svg"))));
    close->setToolTip(tr("关闭"));
    close->setAccessibleName(close->toolTip());
    close->setFocusPolicy(Qt::NoFocus);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    row->addWidget(heading);
    row->addStretch();
    row->addWidget(close);
    return row;
}

QHBoxLayout* FramelessDialog::buttonRow(std::initializer_list<QWidget*> buttons)
{
    auto* row = new QHBoxLayout;
    row->addStretch();
    for (QWidget* button : buttons) {
        row->addWidget(button);
    }
    return row;
}

void FramelessDialog::centreOver(const QWidget* window)
{
    QRect area;
    if (window != nullptr && window->isVisible()) {
        // Asked of the X server: the position Qt keeps for a window the window manager placed
        // by itself may be stale.
        area = QRect(window->mapToGlobal(QPoint(0, 0)), window->size());
    } else if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        area = screen->availableGeometry();
    }
    if (area.isValid()) {
        QRect own = frameGeometry();
        own.moveCenter(area.center());
        move(own.topLeft());
    }
}

void FramelessDialog::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0, 0, 0, 40));
    painter.setBrush(mCardColor);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

void FramelessDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    WindowLook::shape(this, rect(), kRadius);
}

void FramelessDialog::mousePressEvent(QMouseEvent* event)
{
    if (!mDraggable || !mDrag.press(this, event)) {
        QDialog::mousePressEvent(event);
    }
}

void FramelessDialog::mouseMoveEvent(QMouseEvent* event)
{
    if (!mDraggable || !mDrag.move(this, event)) {
        QDialog::mouseMoveEvent(event);
    }
}

void FramelessDialog::mouseReleaseEvent(QMouseEvent* event)
{
    if (!mDraggable || !mDrag.release(this, event)) {
        QDialog::mouseReleaseEvent(event);
    }
}
