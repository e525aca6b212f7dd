#include "Widget/Panels/FloatingCardDialog.h"

#include "Widget/Common/WindowLook.h"

#include <QEvent>
#include <QPainter>
#include <QPushButton>

// The pictures live in a static library: nothing would pull them into the program otherwise.
static void initSelectionResources()
{
    Q_INIT_RESOURCE(selection);
}

FloatingCardDialog::FloatingCardDialog(QWidget* parent, Qt::WindowFlags extraFlags, QRect body)
    : QDialog(parent), mBody(body)
{
    static const bool resources = (initSelectionResources(), true);
    Q_UNUSED(resources);
    setWindowFlags(WindowLook::kFloatingFlags | extraFlags);
    setWindowTitle(QStringLiteral("Zorvane"));
    setAttribute(Qt::WA_TranslucentBackground, WindowLook::compositing());
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setStyleSheet(
        QStringLiteral("QPushButton { border: none; border-radius: 6px; background: #f1f3f7; color: #2b2f36;"
                       " font-size: 14px; }"
                       "QPushButton:hover { background: #2f7cf6; color: white; }"
                       "QPushButton:pressed { background: #1f64d6; color: white; }"));
    installEventFilter(this);
}

QPushButton* FloatingCardDialog::addButton(const QString& text, const QRect& geometry)
{
    auto* button = new QPushButton(text, this);
    button->setGeometry(geometry);
    button->setFocusPolicy(Qt::NoFocus);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

bool FloatingCardDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this) {
        if (event->type() == QEvent::Enter) {
            emit signalsMouseEnter();
        } else if (event->type() == QEvent::Leave && isLeaveReported()) {
            emit signalsMouseLeave();
        }
    }
    return QDialog::eventFilter(watched, event);
}

QRect FloatingCardDialog::body() const
{
    return mBody.isValid() ? mBody : rect();
}

void FloatingCardDialog::paintCard(QPainter* painter, const QRect& card, int radius)
{
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QColor(0, 0, 0, 50));
    painter->setBrush(Qt::white);
    painter->drawRoundedRect(QRectF(card).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

QPushButton* FloatingCardDialog::addIconButton(QWidget* parent, const QString& icon, const QString& tip,
                                               const QRect& geometry, int iconSize)
{
    auto* button = new QPushButton(parent);
    button->setGeometry(geometry);
    button->setIcon(QIcon(icon));
    button->setIconSize(QSize(iconSize, iconSize));
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setFocusPolicy(Qt::NoFocus);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

void FloatingCardDialog::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintCard(&painter, body(), kRadius);
}

void FloatingCardDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    // Cut whatever draws it: a part left see-through (below the 更多 picker's card) would
    // still take the clicks meant for the window under it.
    WindowLook::cut(this, body(), kRadius);
}
